#include "ftp/SessionData.h"

#include "db/Database.h"
#include "db/Store.h"
#include "ftp/protocol/ServerAddress.h"

namespace venlo
{

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

void Session::whileServerWorks(std::function<void()> bookkeeping)
{
    catchUp();
    m->postponed = std::move(bookkeeping);
}

void Session::catchUp()
{
    m->catchUp();
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
