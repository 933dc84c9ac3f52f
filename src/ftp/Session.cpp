#include "ftp/Session.h"

#include "db/Database.h"
#include "db/Store.h"
#include "ftp/CertificatePins.h"
#include "ftp/ErrorLog.h"
#include "ftp/SiteTable.h"
#include "ftp/protocol/ServerAddress.h"
#include "ftp/protocol/Waiter.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/ShownAddress.h"

#include <QStringList>

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

struct Session::Data {
    Data(FrontEnd &person, Database &store, ErrorLog &errors, EventLog &events, ClientLimits limits)
        : frontEnd(person), database(store), errorLog(errors), eventLog(events),
          clientLimits(limits), judge(person, events),
          waiter([&person] { return person.cancelled(); })
    {
        waiter.setMeanwhile([&events] { events.flush(); });
    }

    void setState(State next, const QString &why);
    /// True, and noted, when an operation waits for the network: only an event of its own nested
    /// loop can have asked for this one.
    [[nodiscard]] bool insideWait(const char *operation);
    void tableRefused(const QString &siteName, const DbError &error);
    void closeConnection();
    [[nodiscard]] Result<void> open(const ConnectOptions &options);

    FrontEnd &frontEnd;
    Database &database;
    ErrorLog &errorLog;
    EventLog &eventLog;
    ClientLimits clientLimits;
    CertificateJudge judge;
    Waiter waiter;
    std::unique_ptr<FtpClient> client;
    bool opening = false; ///< the client logs in, or asks about a certificate meanwhile
    State state = Closed;
    QString proxy;
    QString server;
    QString homeDirectory;
    QString currentRemoteDir;
    QString currentSite;
    QString reconnectInformation; ///< user, tab, password, tab, connect flags as decimal text
    int connects = 0;
    bool activeUnusable = false; ///< active mode was tried and cannot work with this server
};

Session::Session(FrontEnd &frontEnd, Database &database, ErrorLog &errorLog, EventLog &eventLog,
                 ClientLimits limits)
    : m(std::make_unique<Data>(frontEnd, database, errorLog, eventLog, limits))
{
    database.store().onGroupLost([&eventLog](const QString &words) {
        eventLog.note(QStringLiteral("cache not in step: ") + words);
    });
}

Session::~Session()
{
    m->database.store().endGroup();
    m->database.store().onGroupLost({});
    if (m->client)
        m->client->close();
}

void Session::Data::setState(State next, const QString &why)
{
    const QString line = QStringLiteral("session %1 -> %2: %3").arg(state).arg(next).arg(why);
    eventLog.note(client ? client->withoutSecret(line) : line);
    state = next;
    if (next != Connected)
        homeDirectory.clear();
}

bool Session::Data::insideWait(const char *operation)
{
    if (!waiter.busy() && !opening)
        return false;
    eventLog.note(QStringLiteral("%1 left out: another operation waits for the server")
                      .arg(QLatin1String(operation)));
    return true;
}

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

void Session::OpenInternet(const QString &proxy, bool &ok, bool reopen)
{
    if (m->insideWait("OpenInternet")) {
        ok = false;
        return;
    }
    if (!reopen)
        m->proxy = proxy;
    if (m->state == Open)
        return;
    if (m->state == Connected) {
        Disconnect();
        ok = true;
        return;
    }
    if (!reopen)
        m->errorLog.StartErrorLog();
    const auto parsed = parseProxy(m->proxy);
    ok = parsed.ok();
    if (ok) {
        m->setState(Open, QStringLiteral("opened"));
        return;
    }
    m->errorLog.LogError(QStringLiteral("InternetOpen"));
    m->eventLog.note(QStringLiteral("proxy refused: ") + parsed.error().words);
}

void Session::CloseInternet()
{
    if (m->state == Closed || m->insideWait("CloseInternet"))
        return;
    m->closeConnection();
    m->setState(Closed, QStringLiteral("closed"));
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

Session::State Session::state() const
{
    return m->state;
}

QString Session::server() const
{
    return m->server;
}

QString Session::security() const
{
    return m->client && m->state == Connected ? m->client->security() : QString();
}

void Session::setTrust(TrustStore &store, const Flags &flags)
{
    m->judge.use(store, flags);
}

QString Session::proxy() const
{
    return m->proxy;
}

QString Session::homeDirectory() const
{
    return m->homeDirectory;
}

QString Session::currentRemoteDir() const
{
    return m->currentRemoteDir;
}

void Session::setCurrentRemoteDir(const QString &dir)
{
    m->currentRemoteDir = dir;
}

QString Session::currentSite() const
{
    return m->currentSite;
}

int Session::connects() const
{
    return m->connects;
}

void Session::aside(const std::function<void()> &work)
{
    m->waiter.aside(work);
}

FtpClient &Session::client()
{
    return *m->client;
}

const ClientLimits &Session::limits() const
{
    return m->clientLimits;
}

FrontEnd &Session::frontEnd()
{
    return m->frontEnd;
}

ErrorLog &Session::errorLog()
{
    return m->errorLog;
}

EventLog &Session::eventLog()
{
    return m->eventLog;
}

} // namespace venlo
