#include "trouble/TroubleRun.h"

#include <algorithm>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QListWidget>

#include "db/DisplayFormat.h"
#include "ftppane/Download.h"
#include "localpane/Upload.h"
#include "mainwin/popup/sfMsg.h"
#include "platform/ScriptedShellPerson.h"
#include "shared/NameList.h"
#include "trouble/OrdinaryUser.h"

namespace venlo::test
{

namespace
{
const QString pub = QStringLiteral("/pub");
const QString pattern = QStringLiteral("p");

QByteArray text(char letter, int size = 5000)
{
    QByteArray bytes;
    while (bytes.size() < size)
        bytes += QByteArray(60, letter) + '\n';
    return bytes;
}

QByteArray longName()
{
    return QStringLiteral("あ").repeated(200).toUtf8();
}

/// Day of a month that is long gone, or will be long in coming.
QDateTime day(int number, Trouble trouble)
{
    const int years = trouble == Trouble::ClockSetBack ? 10 : 0;
    return {QDate(2024 + years, 3, number), QTime(12, 34)};
}

struct Rows {
    std::vector<TreeRow> master;
    std::vector<TreeRow> other; ///< the side that is made equal
};

Rows rowsFor(Trouble trouble)
{
    const auto at = [trouble](int number) { return day(number, trouble); };
    Rows rows{{{"1.txt", text('1'), at(9)},
               {"2.txt", text('2', 7000), at(9)},
               {"both.txt", text('b'), at(5)},
               {"in/3.txt", text('3'), at(9)},
               {"in/deep/4.txt", text('4'), at(9)},
               {"in/then.txt", text('t'), at(9)},
               {"last/5.txt", text('5', 6000), at(9)},
               {"zz.txt", text('z'), at(9)}},
              {{"2.txt", text('o'), at(3)},
               {"both.txt", text('b'), at(5)},
               {"gone.txt", text('g'), at(4)},
               {"last/5.txt", text('o'), at(3)},
               {"last/gone.txt", text('g'), at(4)},
               {"old/f.txt", text('f'), at(4)}}};
    return rows;
}

bool isPrefixOf(const QByteArray &bytes, const QByteArray &whole)
{
    return bytes.size() < whole.size() && whole.startsWith(bytes);
}

const TreeItem *find(const TreeSnapshot &tree, const QByteArray &path)
{
    const auto found = tree.find(path);
    return found == tree.end() ? nullptr : &found->second;
}

QList<QByteArray> pathsOf(const TreeSnapshot &one, const TreeSnapshot &two,
                          const TreeSnapshot &three)
{
    QList<QByteArray> paths;
    for (const TreeSnapshot *tree : {&one, &two, &three}) {
        for (const auto &[path, item] : *tree) {
            if (!paths.contains(path))
                paths.append(path);
        }
    }
    return paths;
}

bool isVictim(const QByteArray &path, const QList<QByteArray> &victims)
{
    return std::any_of(victims.begin(), victims.end(), [&path](const QByteArray &victim) {
        return victim.isEmpty() || path == victim || path + '/' == victim ||
               (victim.endsWith('/') && path.startsWith(victim));
    });
}

bool isOurs(const QByteArray &path)
{
    const QByteArray name = path.mid(path.lastIndexOf('/') + 1);
    return name.startsWith(".venlo-") && name.endsWith(".part");
}

bool same(const TreeItem *one, const TreeItem *other)
{
    return one == nullptr || other == nullptr ? one == other : one->bytes == other->bytes;
}

QString lineOf(const QFileInfo &file)
{
    return file.fileName() + QLatin1Char('\t') + FormatDateText(file.lastModified()) +
           QLatin1Char('\t') + QString::number(file.size());
}
} // namespace

TroubleRun::TroubleRun(TroubleOperation operation, Trouble trouble)
    : m_operation(operation), m_trouble(trouble),
      m_top((trouble == Trouble::DiskFull ? smallDisk() : QDir::tempPath()) +
            QStringLiteral("/trouble-XXXXXX"))
{
}

TroubleRun::~TroubleRun() = default;

QByteArray TroubleRun::nameOf(TroubleOperation operation)
{
    switch (operation) {
    case TroubleOperation::Put:
        return "put";
    case TroubleOperation::Get:
        return "get";
    case TroubleOperation::DragUp:
        return "drag up";
    case TroubleOperation::DragDown:
        return "drag down";
    case TroubleOperation::Delete:
        return "delete";
    case TroubleOperation::SyncUp:
        return "synchronise up";
    case TroubleOperation::SyncDown:
        return "synchronise down";
    case TroubleOperation::CompareUp:
        return "compare up";
    case TroubleOperation::CompareDown:
        return "compare down";
    }
    return {};
}

TroubleSpots TroubleRun::spotsOf(TroubleOperation operation)
{
    switch (operation) {
    case TroubleOperation::Put:
        return {"in", {"2.txt"}, "1.txt"};
    case TroubleOperation::Get:
        return {"last", {"2.txt"}, "1.txt"};
    case TroubleOperation::SyncDown:
    case TroubleOperation::CompareDown:
        return {"last", {"2.txt", "last/5.txt"}, "5.txt"};
    case TroubleOperation::DragDown:
        return {"last", {"2.txt", "last/5.txt"}, "5.txt"};
    default:
        return {"in", {"2.txt", "in/3.txt"}, "3.txt"};
    }
}

bool TroubleRun::up() const
{
    return m_operation == TroubleOperation::Put || m_operation == TroubleOperation::DragUp ||
           m_operation == TroubleOperation::SyncUp || m_operation == TroubleOperation::CompareUp ||
           m_operation == TroubleOperation::Delete;
}

/// The engine makes its folders where temporary folders are made.
bool TroubleRun::makeWorld()
{
    const QByteArray before = qgetenv("TMPDIR");
    if (m_trouble == Trouble::UserDataFull)
        qputenv("TMPDIR", QFile::encodeName(smallDisk()));
    m_world = std::make_unique<SyncWorld>();
    if (before.isEmpty())
        qunsetenv("TMPDIR");
    else
        qputenv("TMPDIR", before);
    return true;
}

bool TroubleRun::prepare()
{
    m_maker = std::make_unique<TroubleMaker>(m_trouble, spotsOf(m_operation), m_top.path());
    Rows rows = rowsFor(m_trouble);
    if (m_trouble == Trouble::LinkInRemoval) { // nothing but a removal is to be done there
        const auto fifth = [](const TreeRow &row) { return row.path == "last/5.txt"; };
        *std::find_if(rows.other.begin(), rows.other.end(), fifth) =
            *std::find_if(rows.master.begin(), rows.master.end(), fifth);
    }
    std::vector<TreeRow> remote = up() ? rows.other : rows.master;
    std::vector<TreeRow> local = up() ? rows.master : rows.other;
    if (m_trouble == Trouble::NameTooLong && !up())
        remote.push_back({longName(), text('l'), day(9, m_trouble)});
    if (m_trouble == Trouble::Leftover || m_trouble == Trouble::ClockSetBack) {
        for (const char *folder : {"", "last/"})
            local.push_back(
                {QByteArray(folder) + ".venlo-0123abcd.part", text('p'), day(1, m_trouble)});
    }
    // What a link may lead to looks like what is behind it.
    const std::vector<TreeRow> foreign{{"5.txt", text('o'), day(3, m_trouble)},
                                       {"gone.txt", text('g'), day(4, m_trouble)},
                                       {"3.txt", text('p'), day(9, m_trouble)},
                                       {"deep/4.txt", text('p'), day(9, m_trouble)}};
    m_server.makeFolder("/pub");
    makeTree(m_server.tree(), "/pub", remote);
    const bool made = m_top.isValid() && makeTree(here(), local) &&
                      makeTree(m_maker->outside(), foreign) && makeWorld() && m_server.start();
    m_before = trees();
    m_outside = snapshot(m_maker->outside());
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_top.filePath(QStringLiteral("share"))));
    return made && getReady();
}

bool TroubleRun::getReady()
{
    m_world->registerSite(m_server.server(), m_server.user(), m_server.password());
    m_world->database.run(QStringLiteral("Insert Into msSync (sSync, sLph, sName, sFph, bCfl, bCfd)"
                                         " Values ('?', '?', 'site', '?', ?, ?)"),
                          {pattern, here(), pub, false, false});
    m_world->operations.standingAnswer = OverwriteMode::OverwriteAll;
    if (m_operation == TroubleOperation::SyncUp || m_operation == TroubleOperation::SyncDown)
        return true;
    if (!m_world->connectToSite())
        return false;
    m_world->cache.caRefresh(pub);
    m_world->person.clear();
    return errorLines().isEmpty();
}

bool TroubleRun::act()
{
    m_maker->begin(m_server, up() ? "STOR" : "RETR");
    if (m_trouble == Trouble::NameTooLong && up())
        m_server.on("STOR", "2.txt").reply(553, "File name too long");
    m_saysDone = carryOut();
    return m_saysDone;
}

void TroubleRun::relieve()
{
    m_maker->relieve(m_server);
    if (m_trouble == Trouble::NameTooLong)
        (void)m_server.tree().removeFile("/pub/" + longName());
}

bool TroubleRun::again()
{
    if (m_operation != TroubleOperation::SyncUp && m_operation != TroubleOperation::SyncDown) {
        m_world->session.CloseInternet();
        if (!m_world->connectToSite())
            return false;
        m_world->cache.caRefresh(pub);
    }
    if (!QFileInfo(here()).isDir() && !QDir().mkpath(here()))
        return false;
    return carryOut();
}

bool TroubleRun::carryOut()
{
    m_refused.clear();
    m_world->operations.resetCounts();
    switch (m_operation) {
    case TroubleOperation::Put:
        return put();
    case TroubleOperation::Get:
        return get();
    case TroubleOperation::DragUp:
        return dragUp();
    case TroubleOperation::DragDown:
        return dragDown();
    case TroubleOperation::Delete:
        return deleteHere();
    case TroubleOperation::SyncUp:
    case TroubleOperation::SyncDown:
        return synchronise();
    case TroubleOperation::CompareUp:
    case TroubleOperation::CompareDown:
        return compare();
    }
    return false;
}

bool TroubleRun::put()
{
    const FlagScope unattended(m_world->flags.unattendedTransfer);
    QStringList lines;
    for (const char *name : {"1.txt", "2.txt", "zz.txt"}) {
        const QFileInfo file(here() + QLatin1Char('/') + QLatin1String(name));
        QString line = lineOf(file);
        if (!file.exists()) // chosen while it was there
            line = file.fileName() + QStringLiteral("\t30/01/01 00:00:00\t1");
        lines.append(line);
    }
    bool ok = true;
    m_world->operations.ftPutFile(pub, joinNames(lines), here(), ok);
    return ok && m_world->operations.counts().givenUp == 0;
}

bool TroubleRun::get()
{
    const FlagScope unattended(m_world->flags.unattendedTransfer);
    bool ok = true;
    QStringList names{QStringLiteral("1.txt"), QStringLiteral("2.txt"), QStringLiteral("zz.txt")};
    if (m_server.exists("/pub/" + longName()))
        names.insert(1, QString::fromUtf8(longName()));
    m_world->operations.ftGetFile(pub, joinNames(names), here(), ok);
    return ok && m_world->operations.counts().givenUp == 0;
}

bool TroubleRun::dragUp()
{
    sfMsg window(m_world->person);
    Upload upload(m_world->operations, window, [](const QString &) {});
    QStringList paths;
    for (const char *name : {"in", "last", "1.txt", "2.txt", "zz.txt"})
        paths.append(here() + QLatin1Char('/') + QLatin1String(name));
    const bool ok = upload.run(paths, pub);
    const auto *lines = window.findChild<QListWidget *>(QStringLiteral("ltMsg"));
    for (int row = 0; row < lines->count(); ++row) {
        if (lines->item(row)->text().contains(QLatin1String(" : ")))
            m_refused.append(lines->item(row)->text());
    }
    return ok && m_refused.isEmpty() && m_world->operations.counts().givenUp == 0;
}

bool TroubleRun::dragDown()
{
    sfMsg window(m_world->person);
    Download download(m_world->operations, window, [](const QString &) {});
    QList<RemoteEntry> entries;
    for (const char *name : {"in", "last"})
        entries.append({pub, QLatin1String(name), EntryTag::FD});
    for (const char *name : {"1.txt", "2.txt", "zz.txt"})
        entries.append({pub, QLatin1String(name), EntryTag::FL});
    if (m_server.exists("/pub/" + longName()))
        entries.insert(2, {pub, QString::fromUtf8(longName()), EntryTag::FL});
    const bool ok = download.run(entries, here());
    return ok && m_world->operations.counts().givenUp == 0;
}

bool TroubleRun::deleteHere()
{
    ScriptedShellPerson person;
    person.deletes = {true};
    ShellFileOrder order;
    order.verb = ShellVerb::Delete;
    for (const char *name : {"in", "1.txt", "2.txt"}) {
        const QString path = here() + QLatin1Char('/') + QLatin1String(name);
        if (m_trouble != Trouble::None || QFileInfo::exists(path))
            order.from << path;
    }
    const ShellFileReport report = runShellFileOperation(order, person);
    m_refused = person.failures;
    for (const auto &asked : person.askedDeletes) {
        if (asked.forGood) // nobody said yes
            m_refused += asked.paths;
    }
    return report.complete;
}

bool TroubleRun::synchronise()
{
    return m_world->batch().RunSyncPattern(pattern, up()) == 0;
}

bool TroubleRun::compare()
{
    bool ok = false;
    const bool down = m_operation == TroubleOperation::CompareDown;
    return m_world->comparison.ftSync(here(), pub, down, ok).ok && ok;
}

BothTrees TroubleRun::trees() const
{
    return {snapshot(here()), snapshot(m_server.tree(), "/pub")};
}

bool TroubleRun::told() const
{
    return !errorLines().isEmpty() || !m_refused.isEmpty() ||
           !m_world->person.messages().isEmpty() || !m_world->person.warnings().isEmpty() ||
           !m_world->person.outcomes(Outcome::Kind::GivenUp).empty();
}

QStringList TroubleRun::errorLines() const
{
    QStringList lines;
    for (const QByteArray &line : m_world->errorLogText().split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (!trimmed.isEmpty())
            lines.append(QString::fromLocal8Bit(trimmed.mid(trimmed.indexOf(" : ") + 3)));
    }
    return lines;
}

QString TroubleRun::story() const
{
    QFile events(m_world->eventLog.path());
    const QString dialogue =
        events.open(QIODevice::ReadOnly) ? QString::fromUtf8(events.readAll()) : QString();
    return QStringLiteral("said done: %1\nmessages: %2\nwarnings: %3\nerror log: %4\nrefused: "
                          "%5\n%6")
        .arg(m_saysDone)
        .arg(m_world->person.messages().join(QLatin1Char('|')),
             m_world->person.warnings().join(QLatin1Char('|')), errorLines().join(QLatin1Char('|')),
             m_refused.join(QLatin1Char('|')), dialogue.right(9000));
}

QStringList TroubleRun::broken(const BothTrees &asked, const QList<QByteArray> &victims)
{
    QStringList wrong;
    const int state = m_world->session.state();
    if (state < Session::Closed || state > Session::Connected)
        wrong << QStringLiteral("session state %1").arg(state);
    if (m_world->person.openWaits() != 0)
        wrong << QStringLiteral("a wait window stays");
    checkLocal(asked, victims, wrong);
    checkRemote(asked, victims, wrong);
    checkElsewhere(wrong);
    checkWords(asked, wrong);
    return wrong;
}

void TroubleRun::checkLocal(const BothTrees &asked, const QList<QByteArray> &victims,
                            QStringList &wrong) const
{
    const TreeSnapshot now = snapshot(here());
    const bool leftovers = m_trouble == Trouble::Leftover || m_trouble == Trouble::ClockSetBack;
    // Trouble changes these itself.
    const bool changes = m_trouble == Trouble::Grows || m_trouble == Trouble::Shrinks ||
                         m_trouble == Trouble::ShrinksAlways ||
                         m_trouble == Trouble::VanishedEntries ||
                         m_trouble == Trouble::VanishesMeanwhile ||
                         m_trouble == Trouble::VanishedRoot || m_trouble == Trouble::LinkInstead;
    for (const QByteArray &path : pathsOf(now, m_before.local, asked.local)) {
        const TreeItem *was = find(m_before.local, path);
        const TreeItem *wanted = find(asked.local, path);
        const TreeItem *is = find(now, path);
        const QString name = QString::fromUtf8(path);
        if (isOurs(path)) {
            if (is != nullptr && !(leftovers && was != nullptr))
                wrong << QStringLiteral("a temporary file stays: ") + name;
        } else if (!isVictim(path, victims)) {
            if (!same(is, wanted))
                wrong << QStringLiteral("not as asked here: ") + name;
        } else if (!changes && !same(is, was) && !same(is, wanted) && !inTheBin(path)) {
            wrong << QStringLiteral("neither as before nor as asked here: ") + name;
        }
    }
}

/// What was to be deleted may be in the recycle bin, which is as good.
bool TroubleRun::inTheBin(const QByteArray &path) const
{
    return m_operation == TroubleOperation::Delete &&
           QFileInfo::exists(m_top.filePath(QStringLiteral("share/Trash/files/")) +
                             QFile::decodeName(path));
}

/// There a remnant of an upload may lie besides, as long as it is noted; and what the files have
/// become here meanwhile.
void TroubleRun::checkRemote(const BothTrees &asked, const QList<QByteArray> &victims,
                             QStringList &wrong)
{
    const BothTrees now = trees();
    const auto notes = m_world->cache.unfinishedUnder(pub);
    for (const QByteArray &path : pathsOf(now.remote, m_before.remote, asked.remote)) {
        const TreeItem *was = find(m_before.remote, path);
        const TreeItem *wanted = find(asked.remote, path);
        const TreeItem *is = find(now.remote, path);
        const QString name = QString::fromUtf8(path);
        if (isOurs(path))
            wrong << QStringLiteral("a temporary file went there: ") + name;
        if (same(is, wanted))
            continue;
        if (!isVictim(path, victims)) {
            wrong << QStringLiteral("not as asked there: ") + name;
            continue;
        }
        const bool noted = std::any_of(notes.begin(), notes.end(), [&name](const auto &note) {
            return note.first + QLatin1Char('/') + note.second == QStringLiteral("/pub/") + name;
        });
        const TreeItem *local = find(now.local, path);
        const bool half = is != nullptr && local != nullptr && isPrefixOf(is->bytes, local->bytes);
        if (!same(is, was) && !(up() && same(is, local)) && !noted)
            wrong << QStringLiteral("neither as before nor as asked there: ") + name +
                         (half ? QStringLiteral(" (a remnant that nobody noted)") : QString());
    }
}

void TroubleRun::checkElsewhere(QStringList &wrong) const
{
    for (const QString &line : difference(m_outside, snapshot(m_maker->outside())))
        wrong << QStringLiteral("changed elsewhere: ") + line;
    const QString moved = m_top.filePath(QStringLiteral("moved"));
    for (const auto &[path, item] : snapshot(moved)) {
        if (isOurs(path))
            wrong << QStringLiteral("a temporary file stays in the moved folder");
    }
}

void TroubleRun::checkWords(const BothTrees &asked, QStringList &wrong) const
{
    static const QStringList known{
        QStringLiteral("FtpFindFirstFile"), QStringLiteral("FtpGetFile Err:"),
        QStringLiteral("FtpPutFile Err:"),  QStringLiteral("ftGetFold Err:"),
        QStringLiteral("ftPutFold Err:"),   QStringLiteral("ftSync Err SQL="),
        QStringLiteral("ftSync Err"),       QStringLiteral("sySync Err"),
    };
    for (const QString &line : errorLines()) {
        const bool fits = std::any_of(known.begin(), known.end(), [&line](const QString &words) {
            return line.startsWith(words);
        });
        if (!fits)
            wrong << QStringLiteral("unknown log line: ") + line;
    }
    if (!m_saysDone && !told())
        wrong << QStringLiteral("given up without a word");
    const BothTrees now = trees();
    const QStringList left =
        difference(asked.local, now.local) + difference(asked.remote, now.remote);
    const bool asIs = m_trouble == Trouble::Leftover || m_trouble == Trouble::ClockSetBack ||
                      m_trouble == Trouble::LinkInstead || m_trouble == Trouble::LinkInRemoval ||
                      m_trouble == Trouble::LinkMeanwhile || m_trouble == Trouble::Shrinks ||
                      m_trouble == Trouble::VanishedRoot;
    if (m_saysDone && !asIs && !left.isEmpty())
        wrong << QStringLiteral("says it is done, and is not: ") + left.join(QLatin1String("; "));
}

} // namespace venlo::test
