#include "hostile/HostileWorld.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

#include "db/JetCatalogue.h"
#include "db/Store.h"
#include "ftp/IncompleteMarks.h"
#include "ftp/SiteTable.h"
#include "shared/NameList.h"
#include "sync/WorkTables.h"

namespace venlo::test
{

namespace
{
const QString site = QStringLiteral("site");

bool isOurs(const QByteArray &path)
{
    return path == "pub/" || path.startsWith("pub/");
}

/// Commands that change something, by their first word.
bool changesSomething(const QByteArray &verb)
{
    static const QList<QByteArray> verbs{"DELE", "RMD", "MKD", "STOR", "RNFR", "RNTO", "MFMT"};
    return verbs.contains(verb);
}

bool isKnown(const QByteArray &verb)
{
    static const QList<QByteArray> verbs{
        "AUTH", "USER", "PASS", "FEAT", "OPTS", "TYPE", "PWD",  "CWD",  "EPSV", "PASV", "PORT",
        "EPRT", "MLSD", "LIST", "RETR", "STOR", "DELE", "RMD",  "MKD",  "RNFR", "RNTO", "SIZE",
        "MDTM", "MFMT", "ABOR", "NOOP", "QUIT", "SYST", "STAT", "PBSZ", "PROT"};
    return verbs.contains(verb);
}

QString contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}
} // namespace

void HostileWorld::useMemory()
{
    if (QFileInfo(QStringLiteral("/dev/shm")).isWritable())
        qputenv("TMPDIR", "/dev/shm");
}

HostileWorld::HostileWorld(ClientLimits limits)
    : engine(limits), m_workingDirectory(QDir::currentPath())
{
    server.options().agreesToAll = true;
    server.makeFolder("/pub");
    if (!makeTree(around(), {{"outside.txt", "outside"},
                             {"evil.txt", "ours"},
                             {"neighbour/secret.txt", "secret"},
                             {"here/", {}},
                             {"pub/keep.txt", "keep"},
                             {"pub/inner/keep.txt", "inner"}}))
        qFatal("the test's folders cannot be made");
    QDir::setCurrent(around() + QStringLiteral("/here"));
}

ClientLimits HostileWorld::hastyLimits()
{
    using std::chrono_literals::operator""s;
    ClientLimits limits;
    limits.connect = 2s;
    limits.reply = 1s;
    limits.idleData = 1s;
    limits.listing = 2s;
    return limits;
}

HostileWorld::~HostileWorld()
{
    QDir::setCurrent(m_workingDirectory);
}

bool HostileWorld::start()
{
    if (!server.start())
        return false;
    engine.registerSite(server.server(), server.user(), server.password(), true);
    addPattern(engine.database,
               {QStringLiteral("pattern"), chosen(), site, QStringLiteral("/pub")});
    addBystanders();
    m_outside = outside();
    m_otherRows = otherRows();
    m_time.start();
    return true;
}

void HostileWorld::addBystanders()
{
    Database &db = engine.database;
    db.run(QStringLiteral("Insert Into msSite (sName, sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb)"
                          " Values ('other', 'other.example', 'u', 'p', '', 1, 1)"));
    addPattern(db, {QStringLiteral("theirs"), QStringLiteral("/home/them"), QStringLiteral("other"),
                    QStringLiteral("/pub"), true, true});
    (void)caOpenTbl(db, site);
    (void)caOpenTbl(db, QStringLiteral("other"));
    db.run(QStringLiteral("Insert Into other (sDir, bFd, sName, dDate, nSize)"
                          " Values ('/pub', 0, 'evil.txt', #24/01/02 03:04:05#, 5)"));
    IncompleteMarks(db).set(QStringLiteral("other"),
                            {QStringLiteral("/pub"), QStringLiteral("theirs"), false});
}

TreeSnapshot HostileWorld::outside() const
{
    TreeSnapshot all = snapshot(around());
    std::erase_if(all, [](const auto &item) { return isOurs(item.first); });
    return all;
}

QStringList HostileWorld::otherRows()
{
    Store &store = engine.database.store();
    const Rows tables =
        store.query(QStringLiteral("SELECT name, sql FROM sqlite_master ORDER BY type, name"), {});
    QStringList lines;
    for (int i = 0; i < tables.count(); ++i) {
        const QString name = tables.at(0, i).toString();
        const QString sql = tables.at(1, i).toString();
        if (name == site || sql.contains(QStringLiteral("\"site\"(")))
            continue;                                    // comes with the connection
        if (name != QLatin1String("unfinished uploads")) // made when it is needed
            lines.append(name + QLatin1Char('|') + sql);
        if (!sql.startsWith(QLatin1String("CREATE TABLE"), Qt::CaseInsensitive) ||
            name == QLatin1String("tbFold") || name == QLatin1String("tbFile"))
            continue;
        const bool ofSites = name == QLatin1String("incomplete directories") ||
                             name == QLatin1String("unfinished uploads");
        const Rows rows =
            store.query(QStringLiteral("SELECT * FROM ") + quotedName(name) +
                            (ofSites ? QStringLiteral(" WHERE site <> 'site'") : QString()),
                        {});
        for (int row = 0; row < rows.count(); ++row) {
            QStringList fields;
            for (int field = 0; field < rows.fields(); ++field)
                fields.append(rows.at(field, row).toString());
            lines.append(name + QLatin1Char('|') + fields.join(QLatin1Char('|')));
        }
    }
    return lines;
}

/// Commands that change something elsewhere than below "/pub", and such that nobody meant.
QStringList HostileWorld::strayCommands() const
{
    QStringList strays;
    QByteArray directory = "/";
    for (const QByteArray &command : server.commands()) {
        const auto blank = command.indexOf(' ');
        const QByteArray verb = blank < 0 ? command : command.left(blank);
        QByteArray argument = blank < 0 ? QByteArray() : command.mid(blank + 1);
        if (verb == "CWD")
            directory = ScriptedTree::resolve(directory, argument);
        if (verb == "MFMT")
            argument = argument.mid(argument.indexOf(' ') + 1);
        const bool stray = changesSomething(verb) &&
                           !ScriptedTree::resolve(directory, argument).startsWith("/pub/");
        if (stray || !isKnown(verb))
            strays.append(QStringLiteral("asked for in %1: %2")
                              .arg(QString::fromUtf8(directory.left(200)),
                                   QString::fromUtf8(command.left(200).toPercentEncoding())));
    }
    return strays;
}

QString HostileWorld::broken(int limitMs)
{
    QStringList wrong;
    if (m_time.elapsed() > limitMs)
        wrong << QStringLiteral("took %1 ms").arg(m_time.elapsed());
    const int state = engine.session.state();
    if (state < Session::Closed || state > Session::Connected)
        wrong << QStringLiteral("session state %1").arg(state);
    if (engine.person.openWaits() != 0)
        wrong << QStringLiteral("a wait window stays");
    wrong += difference(m_outside, outside());
    wrong += strayCommands();
    const QStringList rows = otherRows();
    for (const QString &row : rows) {
        if (!m_otherRows.contains(row))
            wrong << QStringLiteral("new in the database: ") + row;
    }
    for (const QString &row : std::as_const(m_otherRows)) {
        if (!rows.contains(row))
            wrong << QStringLiteral("gone from the database: ") + row;
    }
    static const QStringList known{QStringLiteral("dbFtp.mdb"),    QStringLiteral("FtpErr.Log"),
                                   QStringLiteral("FtpEvent.Log"), QStringLiteral("FtpEvent.1.Log"),
                                   QStringLiteral("Downloads-"),   QStringLiteral("Upload.note")};
    for (const QString &file :
         QDir(engine.userData())
             .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)) {
        const bool fits = std::any_of(known.begin(), known.end(), [&file](const QString &name) {
            return file.startsWith(name);
        });
        if (!fits)
            wrong << QStringLiteral("in the user data folder: ") + file;
    }
    return wrong.join(QLatin1Char('\n'));
}

QString HostileWorld::said() const
{
    QStringList all =
        engine.person.messages() + engine.person.warnings() + engine.person.statusLines();
    for (const Outcome &outcome : engine.person.outcomes())
        all << outcome.from + QLatin1Char(' ') + outcome.to + QLatin1Char(' ') + outcome.why;
    engine.eventLog.flush();
    all << QString::fromLatin1(engine.errorLogText()) << contentOf(engine.eventLog.path());
    return all.join(QLatin1Char('\n'));
}

QStringList HostileWorld::cached(const QString &dir)
{
    QString folders;
    QString files;
    engine.cache.cachedNames(dir, folders, files);
    QStringList names = splitNames(files);
    for (const QString &folder : splitNames(folders))
        names.append(folder + QLatin1Char('/'));
    return names;
}

} // namespace venlo::test
