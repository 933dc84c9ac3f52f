#include "e2e/DesktopWorld.h"

#include <QDir>
#include <QFileInfo>

#include "db/Database.h"
#include "db/DatabaseFile.h"
#include "db/Recordset.h"
#include "platform/Process.h"
#include "shared/Flags.h"
#include "startup/CommandLine.h"
#include "startup/WindowRun.h"
#include "startup/settings/SettingsFile.h"
#include "support/DaemonProcess.h"
#include "support/ScriptedPerson.h"

namespace venlo::test
{

namespace
{
QStringList columns(std::initializer_list<const char *> names)
{
    QStringList list;
    for (const char *name : names)
        list.append(QLatin1String(name));
    return list;
}

QString settingsGroup()
{
    return QStringLiteral("設定");
}
} // namespace

DesktopWorld::DesktopWorld() : m_daemon(std::make_unique<FtpDaemon>(FtpDaemon::Kind::Proftpd))
{
    // They are looked for below the home that is about to change.
    qputenv("VENLO_FTPD", unpackedDaemons().folder.toUtf8());
    qputenv("HOME", m_home.path().toUtf8());
    for (const char *kind : {"DATA", "CONFIG", "CACHE", "STATE"}) {
        const QString folder =
            m_home.filePath(QStringLiteral("xdg-") + QString::fromLatin1(kind).toLower());
        QDir().mkpath(folder);
        qputenv(QByteArray("XDG_") + kind + "_HOME", folder.toUtf8());
    }
    QDir().mkpath(localFolder());
}

DesktopWorld::~DesktopWorld() = default;

bool DesktopWorld::start(QString *why)
{
    return m_daemon->start(why);
}

QString DesktopWorld::userData() const
{
    return m_home.filePath(QStringLiteral("xdg-data/Venlo/") + executableBaseName());
}

void DesktopWorld::makeUserData() const
{
    const QString file = userData() + QStringLiteral("/dbFtp.mdb");
    if (QFileInfo::exists(file))
        return;
    QDir().mkpath(userData());
    createInitialDatabase(file);
}

void DesktopWorld::registerSite(const QString &name) const
{
    registerSite(name, m_daemon->server(), m_daemon->user(), m_daemon->password());
}

void DesktopWorld::registerSite(const QString &name, const QString &server, const QString &user,
                                const QString &password) const
{
    makeUserData();
    ScriptedPerson person;
    Database database(person, userData() + QLatin1Char('/'));
    bool ok = false;
    database.OpenDb(ok);
    Q_ASSERT(ok);
    database.openTable(QStringLiteral("msSite"))
        ->add(columns({"sName", "sSvr", "sUsr", "sPwd", "sPxy", "bPsv", "bSvDb"}),
              {name, server, user, password, QString(), -1, 0});
}

void DesktopWorld::registerPattern(const QString &name, const QString &site,
                                   const QString &remote) const
{
    makeUserData();
    ScriptedPerson person;
    Database database(person, userData() + QLatin1Char('/'));
    bool ok = false;
    database.OpenDb(ok);
    Q_ASSERT(ok);
    database.openTable(QStringLiteral("msSync"))
        ->add(columns({"sSync", "sLph", "sName", "sFph", "bCfl", "bCfd"}),
              {name, localFolder(), site, remote, 0, 0});
}

void DesktopWorld::writeLayout(int width, int height) const
{
    makeUserData();
    ScriptedPerson person;
    yIni settings(person);
    bool ok = false;
    settings.GetTxt(userData() + QStringLiteral("/User.xml"), ok);
    settings.GetGtx(settingsGroup());
    settings.SetVal(QStringLiteral("Left"), 0);
    settings.SetVal(QStringLiteral("Top"), 0);
    settings.SetVal(QStringLiteral("Width"), width);
    settings.SetVal(QStringLiteral("Height"), height);
    settings.SetVal(QStringLiteral("Root"), localFolder());
    settings.SetVal(QStringLiteral("ActPh"), localFolder());
    settings.SetVal(QStringLiteral("CbSvr"), 0);
    settings.SetGtx();
    settings.SetTxt(ok);
    Q_ASSERT(ok);
}

QVariant DesktopWorld::setting(const QString &key) const
{
    ScriptedPerson person;
    yIni settings(person);
    bool ok = false;
    settings.GetTxt(userData() + QStringLiteral("/User.xml"), ok);
    settings.GetGtx(settingsGroup());
    return settings.vGtVal(key, QString()).value();
}

int DesktopWorld::run(WindowApplication &application, DesktopPerson &person,
                      const QString &commandLine, std::function<void()> script) const
{
    const CommandLine command = CommandLine::parse(commandLine);
    Flags flags;
    flags.batch = command.batch;
    person.start(std::move(script));
    const int status = runWithWindows(command, flags, application);
    return person.finished() ? status : -1;
}

} // namespace venlo::test
