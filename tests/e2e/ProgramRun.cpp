#include "e2e/ProgramRun.h"

#include "db/DatabaseFile.h"
#include "db/Recordset.h"
#include "platform/CodePage.h"

#include <QDir>
#include <QFile>
#include <QProcess>

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
} // namespace

ProgramRun::ProgramRun() : environment(QProcessEnvironment::systemEnvironment())
{
    environment.insert(QStringLiteral("HOME"), m_home.path());
    environment.insert(QStringLiteral("XDG_DATA_HOME"), m_home.filePath(QStringLiteral("data")));
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"),
                       m_home.filePath(QStringLiteral("config")));
    environment.insert(QStringLiteral("TZ"), QStringLiteral("Asia/Tokyo"));
    for (const char *display : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
        environment.remove(QLatin1String(display));
    QDir().mkpath(localFolder());
}

bool ProgramRun::prepare()
{
    if (!QDir().mkpath(userData()))
        return false;
    createInitialDatabase(userData() + QStringLiteral("/dbFtp.mdb"));
    return true;
}

std::unique_ptr<Database> ProgramRun::open()
{
    auto database = std::make_unique<Database>(m_person, userData() + QLatin1Char('/'));
    bool ok = false;
    database->OpenDb(ok);
    Q_ASSERT(ok);
    return database;
}

void ProgramRun::registerSite(const QString &name, const QString &server, const QString &user,
                              const QString &password, bool passive, bool keepsCache)
{
    open()
        ->openTable(QStringLiteral("msSite"))
        ->add(columns({"sName", "sSvr", "sUsr", "sPwd", "sPxy", "bPsv", "bSvDb"}),
              {name, server, user, password, QString(), passive ? -1 : 0, keepsCache ? -1 : 0});
}

void ProgramRun::registerPattern(const QString &name, const QString &local, const QString &site,
                                 const QString &remote)
{
    open()
        ->openTable(QStringLiteral("msSync"))
        ->add(columns({"sSync", "sLph", "sName", "sFph", "bCfl", "bCfd"}),
              {name, local, site, remote, 0, 0});
}

RunResult ProgramRun::run(const QString &argument, int limitMs) const
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(m_home.path());
    process.start(QStringLiteral(VENLO_PROGRAM), {argument});
    RunResult result;
    if (!process.waitForFinished(limitMs)) {
        process.kill();
        process.waitForFinished(5'000);
    } else if (process.exitStatus() == QProcess::NormalExit) {
        result.status = process.exitCode();
    }
    result.output = QString::fromUtf8(process.readAllStandardOutput());
    result.errors = QString::fromUtf8(process.readAllStandardError());
    return result;
}

QString ProgramRun::errorLog() const
{
    QFile log(userData() + QStringLiteral("/FtpErr.Log"));
    if (!log.open(QIODevice::ReadOnly))
        return {};
    const QByteArray bytes = log.readAll();
    const qsizetype stampEnd = bytes.indexOf(QByteArray("\r\0\n\0", 4));
    return fromSystemText(stampEnd < 0 ? bytes : bytes.mid(stampEnd + 4));
}

} // namespace venlo::test
