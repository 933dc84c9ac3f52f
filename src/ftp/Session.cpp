#include "ftp/Session.h"

#include "db/Database.h"
#include "ftp/ErrorLog.h"
#include "ftp/SiteTable.h"
#include "ftp/protocol/ServerAddress.h"
#include "ftp/protocol/Waiter.h"
#include "shared/FrontEnd.h"

#include <QStringList>

namespace venlo
{

namespace
{
constexpr int reconnectAttempts = 5;
constexpr quint32 passiveFlag = 0x08000000;
} // namespace

struct Session::Data {
    Data(FrontEnd &person, Database &store, ErrorLog &errors, EventLog &events, ClientLimits limits)
        : frontEnd(person), database(store), errorLog(errors), eventLog(events),
          clientLimits(limits), waiter([&person] { return person.cancelled(); })
    {
    }

    void setState(State next, const QString &why);
    void closeConnection();
    [[nodiscard]] Result<void> open(const ConnectOptions &options);
    void makeCurrent(const QString &siteName);

    FrontEnd &frontEnd;
    Database &database;
    ErrorLog &errorLog;
    EventLog &eventLog;
    ClientLimits clientLimits;
    Waiter waiter;
    std::unique_ptr<FtpClient> client;
    State state = Closed;
    QString proxy;
    QString server;
    QString homeDirectory;
    QString currentRemoteDir;
    QString currentSite;
    QString reconnectInformation; ///< user, tab, password, tab, connect flags as decimal text
    bool activeUnusable = false;  ///< active mode was tried and cannot work with this server
};

Session::Session(FrontEnd &frontEnd, Database &database, ErrorLog &errorLog, EventLog &eventLog,
                 ClientLimits limits)
    : m(std::make_unique<Data>(frontEnd, database, errorLog, eventLog, limits))
{
}

Session::~Session()
{
    if (m->client)
        m->client->close();
}

void Session::Data::setState(State next, const QString &why)
{
    eventLog.note(QStringLiteral("session %1 -> %2: %3").arg(state).arg(next).arg(why));
    state = next;
    if (next != Connected)
        homeDirectory.clear();
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
    auto result = client->open(effective);
    if (!result)
        eventLog.note(
            QStringLiteral("connect to %1 failed: %2").arg(options.server, result.error().words));
    return result;
}

void Session::OpenInternet(const QString &proxy, bool &ok, bool reopen)
{
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
    if (m->state == Closed)
        return;
    m->closeConnection();
    m->setState(Closed, QStringLiteral("closed"));
}

void Session::Connect(const QString &siteName, const QString &server, const QString &user,
                      const QString &password, bool passive, bool &ok)
{
    ok = false;
    if (m->state != Open)
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
    m->client->setTrace([log = &m->eventLog](const QString &line) { log->note(line); });
    m->activeUnusable = false;
    listOffset.reset();
    const auto opened = m->open({server, user, password, m->proxy, passive});
    ok = opened.ok();
    if (ok) {
        m->setState(Connected, QStringLiteral("connected to ") + server);
        m->server = server;
        m->homeDirectory = GetRemoteDir();
        m->currentRemoteDir = m->homeDirectory;
        m->frontEnd.addStatus(server + QStringLiteral(" へ接続しました"));
        m->reconnectInformation = user + QLatin1Char('\t') + password + QLatin1Char('\t') +
                                  QString::number(passive ? passiveFlag : 0);
    } else {
        m->frontEnd.message(server + QStringLiteral(" へ接続できません 設定を確認して下さい"));
        m->errorLog.LogError(QStringLiteral("InternetConnect"));
    }
    try {
        m->currentSite = caOpenTbl(m->database, siteName);
        if (!SiteKeepsCache())
            emptySiteTable(m->database, m->currentSite);
    } catch (const DbError &error) {
        m->frontEnd.message(siteName + QStringLiteral(" は接続先の登録名に使用できません\r") +
                            error.words());
        m->closeConnection();
        if (ok)
            m->setState(Open, QStringLiteral("no cache table"));
        ok = false;
    }
}

void Session::Disconnect()
{
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
        m->errorLog.LogError(QStringLiteral("ftReConect Err sUsr=") + user +
                             QStringLiteral(" sPwd=") + password);
        CloseInternet();
        bool reopened = true;
        OpenInternet(m->proxy, reopened, true);
        if (opened.error().kind == ErrorClass::Cancelled)
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

FtpClient &Session::client()
{
    return *m->client;
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
