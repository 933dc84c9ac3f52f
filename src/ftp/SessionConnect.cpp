#include "ftp/SessionData.h"

#include "db/Database.h"
#include "ftp/SiteTable.h"
#include "ftp/protocol/ServerAddress.h"
#include "shared/Flags.h"
#include "shared/ShownAddress.h"

#include <QStringList>
#include <QVariant>

namespace venlo
{

namespace
{
constexpr int reconnectAttempts = 5;
constexpr quint32 passiveFlag = 0x08000000;
constexpr qsizetype longestRemoteDir = 1023; ///< characters

/// Whether the store refused for a reason that has nothing to do with the site's name: another
/// program holds it.
bool saysBusy(const DbError &error)
{
    return error.words().contains(QLatin1String("database is locked")) ||
           error.words().contains(QLatin1String("database table is locked"));
}
} // namespace

void Session::Data::closeConnection()
{
    if (!client)
        return;
    activeUnusable = activeUnusable || client->activeUnusable();
    client->close();
}

Result<void> Session::Data::open(const ConnectOptions &options)
{
    ConnectOptions effective = options;
    effective.passive = options.passive || activeUnusable;
    effective.accepts = [this](const ServerCertificate &shown) { return judge.accepts(shown); };
    // A tab would take the stored information for a reconnect apart in the wrong place.
    const bool storable =
        !options.user.contains(QLatin1Char('\t')) && !options.password.contains(QLatin1Char('\t'));
    const FlagScope scope(opening);
    auto result =
        storable ? client->open(effective)
                 : Error{ErrorClass::Local, QStringLiteral("a name or password holds a tab"), 0};
    if (!result)
        eventLog.note(
            client->withoutSecret(QStringLiteral("connect to %1 failed: %2")
                                      .arg(shownAddress(options.server), result.error().words)));
    return result;
}

void Session::Connect(const QString &siteName, const QString &server, const QString &user,
                      const QString &password, bool passive, bool &ok)
{
    ok = false;
    if (m->insideWait("Connect") || m->state != Open)
        return;
    if (server.isEmpty()) {
        m->frontEnd.message(QStringLiteral("Please enter a server name!"));
        return;
    }
    if (isReservedSite(siteName)) {
        m->frontEnd.message(siteName + QStringLiteral(" は接続先の登録名に使用できません"));
        m->errorLog.LogError(QStringLiteral("InternetConnect"));
        return;
    }
    m->client = std::make_unique<FtpClient>(m->waiter, m->clientLimits);
    m->client->setTrace([log = &m->eventLog](const QString &line) { log->noteSoon(line); });
    m->activeUnusable = false;
    const auto address = ServerAddress::parse(server);
    m->judge.begin(address && address.value().tls != TlsUse::Offered);
    listOffset.reset();
    ++m->connects;
    const auto opened = m->open({server, user, password, m->proxy, passive});
    ok = opened.ok();
    if (ok) {
        m->setState(Connected, QStringLiteral("connected to ") + shownAddress(server));
        m->server = server;
        m->homeDirectory = GetRemoteDir();
        m->currentRemoteDir = m->homeDirectory;
        m->frontEnd.addStatus(server + QStringLiteral(" へ接続しました"));
        m->reconnectInformation = user + QLatin1Char('\t') + password + QLatin1Char('\t') +
                                  QString::number(passive ? passiveFlag : 0);
    } else {
        m->frontEnd.message(shownAddress(server) +
                            QStringLiteral(" へ接続できません 設定を確認して下さい"));
        m->errorLog.LogError(QStringLiteral("InternetConnect"));
    }
    try {
        m->currentSite = caOpenTbl(m->database, siteName);
        if (!SiteKeepsCache())
            emptySiteTable(m->database, m->currentSite);
    } catch (const DbError &error) {
        m->tableRefused(siteName, error);
        m->closeConnection();
        if (ok)
            m->setState(Open, QStringLiteral("no cache table"));
        ok = false;
    }
}

void Session::Data::tableRefused(const QString &siteName, const DbError &error)
{
    if (saysBusy(error))
        frontEnd.message(error.words());
    else
        frontEnd.message(siteName + QStringLiteral(" は接続先の登録名に使用できません\r") +
                         error.words());
}

void Session::Disconnect()
{
    if (m->insideWait("Disconnect"))
        return;
    m->closeConnection();
    m->frontEnd.addStatus(m->server + QStringLiteral(" へ接続を切断しました"));
    m->setState(Open, QStringLiteral("disconnected"));
    if (m->currentSite.isEmpty() || SiteKeepsCache())
        return;
    try {
        emptySiteTable(m->database, m->currentSite);
    } catch (const DbError &error) {
        m->eventLog.note(QStringLiteral("cache not emptied: ") + error.words());
    }
}

void Session::ftReConect(bool &ok)
{
    const QStringList pieces = m->reconnectInformation.split(QLatin1Char('\t'));
    if (pieces.size() < 3 || !m->client)
        return;
    if (m->insideWait("ftReConect")) {
        ok = false;
        return;
    }
    const QString &user = pieces.at(0);
    const QString &password = pieces.at(1);
    const bool passive = (pieces.at(2).toUInt() & passiveFlag) != 0;
    ok = false;
    m->closeConnection();
    m->setState(Open, QStringLiteral("reconnecting"));
    for (int attempt = 1; attempt <= reconnectAttempts; ++attempt) {
        const auto opened = m->open({m->server, user, password, m->proxy, passive});
        if (opened) {
            m->setState(Connected, QStringLiteral("reconnected"));
            ok = true;
            return;
        }
        const bool cancelled = opened.error().kind == ErrorClass::Cancelled;
        if (!cancelled)
            m->errorLog.LogError(QStringLiteral("ftReConect Err sUsr=") + user +
                                 QStringLiteral(" sPwd=") + password);
        CloseInternet();
        bool reopened = true;
        OpenInternet(m->proxy, reopened, true);
        if (cancelled)
            return;
        if (!reopened)
            break;
    }
    m->frontEnd.message(m->server +
                        QStringLiteral(" へ接続が切断されました　再度起動後実行して下さい"));
}

QString Session::GetRemoteDir()
{
    if (!m->client)
        return {};
    const auto printed = m->client->printDirectory();
    if (!printed)
        return {};
    QString dir = printed.value();
    if (dir.size() > longestRemoteDir)
        return {};
    if (dir.endsWith(QLatin1Char('\\')))
        dir.chop(1);
    return dir;
}

bool Session::SiteKeepsCache()
{
    QVariant keeps;
    m->database.SelectValues(QStringLiteral("Select bSvDb From msSite Where sName='") +
                                 m->currentSite + QStringLiteral("'"),
                             {&keeps});
    return keeps.toLongLong() != 0;
}

} // namespace venlo
