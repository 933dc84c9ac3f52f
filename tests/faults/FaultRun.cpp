#include "faults/FaultRun.h"

#include "db/DisplayFormat.h"

#include <QFile>
#include <QFileInfo>

namespace venlo::test
{

namespace
{
const QString pub = QStringLiteral("/pub");
const QString pattern = QStringLiteral("p");
constexpr int recoveries = 3;

QDateTime day(int number)
{
    return {QDate(2024, 3, number), QTime(12, 34)};
}

QByteArray text(char letter, int size = 5000)
{
    QByteArray bytes;
    while (bytes.size() < size)
        bytes += QByteArray(60, letter) + '\n';
    return bytes;
}

struct Rows {
    std::vector<TreeRow> local;
    std::vector<TreeRow> remote;
};

Rows rowsOf(FaultOperation operation)
{
    const std::vector<TreeRow> newer{{"1.txt", text('1'), day(9)},
                                     {"2.txt", text('2', 7000), day(9)},
                                     {"both.txt", text('b'), day(5)},
                                     {"in/3.txt", text('3'), day(9)}};
    const std::vector<TreeRow> older{{"2.txt", text('o'), day(3)},
                                     {"both.txt", text('b'), day(5)},
                                     {"gone.txt", text('g'), day(4)},
                                     {"old/f.txt", text('f'), day(4)}};
    const std::vector<TreeRow> remote{{"a.txt", text('a'), day(2)},
                                      {"b.txt", text('b'), day(3)},
                                      {"old/f.txt", text('f'), day(4)},
                                      {"old/in/g.txt", text('g'), day(4)}};
    switch (operation) {
    case FaultOperation::SyncUp:
        return {newer, older};
    case FaultOperation::SyncDown:
        return {older, newer};
    case FaultOperation::Get:
        return {{{"a.txt", "what was here", day(1)}, {"mine.txt", "mine", day(1)}}, remote};
    case FaultOperation::Put:
        return {{{"a.txt", text('A', 7000), day(9)}, {"c.txt", text('C'), day(9)}}, remote};
    default:
        return {{{"mine.txt", "mine", day(1)}}, remote};
    }
}

bool isHalfOf(const QByteArray &bytes, const QByteArray &whole)
{
    return bytes.size() < whole.size() && whole.startsWith(bytes);
}

QString shown(const QByteArray &path)
{
    return QString::fromUtf8(path);
}

const TreeItem *find(const TreeSnapshot &tree, const QByteArray &path)
{
    const auto found = tree.find(path);
    return found == tree.end() ? nullptr : &found->second;
}

/// The paths of all three, once.
QList<QByteArray> pathsOf(const TreeSnapshot &one, const TreeSnapshot &two,
                          const TreeSnapshot &three)
{
    TreeSnapshot all = one;
    all.insert(two.begin(), two.end());
    all.insert(three.begin(), three.end());
    QList<QByteArray> paths;
    for (const auto &item : all)
        paths.append(item.first);
    return paths;
}
} // namespace

FaultRun::FaultRun(FaultBackend &backend, FaultRelay &relay, FaultOperation operation,
                   ClientLimits limits)
    : m_backend(backend), m_relay(relay), m_operation(operation), m_world(limits)
{
    m_world.registerSite(relay.server(), backend.user(), backend.password());
    m_world.registerPattern(pattern, pub);
}

bool FaultRun::synchronises() const
{
    return m_operation == FaultOperation::SyncUp || m_operation == FaultOperation::SyncDown;
}

bool FaultRun::prepare()
{
    const Rows rows = rowsOf(m_operation);
    m_relay.setFault({});
    if (!m_backend.fill(rows.remote) || !makeTree(m_world.local(), rows.local))
        return false;
    m_before = trees();
    if (synchronises() || m_operation == FaultOperation::Connect)
        return true;
    for (int attempt = 0; attempt < recoveries; ++attempt) {
        if (getReady())
            return true;
    }
    return false;
}

/// The waits are so short that a busy machine may pass them without any fault.
bool FaultRun::getReady()
{
    m_world.session.CloseInternet();
    if (!m_world.connectToSite())
        return false;
    if (m_operation != FaultOperation::List)
        m_world.cache.caRefresh(pub);
    m_world.person.clear();
    return m_world.session.state() == Session::Connected && errorLines().isEmpty();
}

bool FaultRun::act(const std::optional<RelayFault> &fault)
{
    m_fault = fault;
    m_relay.setFault(fault);
    m_saysDone = carryOut();
    return m_saysDone;
}

bool FaultRun::carryOut()
{
    bool ok = true;
    RemoteOperations &operations = m_world.operations;
    operations.resetCounts();
    switch (m_operation) {
    case FaultOperation::Connect:
        return m_world.connectToSite();
    case FaultOperation::List:
        m_world.cache.caRefresh(pub);
        return m_world.cache.incompleteUnder(pub).empty();
    case FaultOperation::Get: {
        const FlagScope unattended(m_world.flags.unattendedTransfer);
        operations.ftGetFile(pub, QStringLiteral("a.txt\rb.txt"), m_world.local(), ok);
        break;
    }
    case FaultOperation::Put:
        return put();
    case FaultOperation::Rename:
        operations.ftRename(pub, QStringLiteral("a.txt"), QStringLiteral("z.txt"), false, ok);
        break;
    case FaultOperation::Delete:
        operations.ftDelFile(pub, QStringLiteral("a.txt"), ok);
        break;
    case FaultOperation::Make:
        operations.ftMakeDir(pub, QStringLiteral("new"), ok);
        break;
    case FaultOperation::Remove:
        operations.ftRemDir(pub, QStringLiteral("old"), ok);
        break;
    case FaultOperation::SyncUp:
    case FaultOperation::SyncDown:
        return m_world.batch().RunSyncPattern(pattern, m_operation == FaultOperation::SyncUp) == 0;
    }
    return ok && operations.counts().givenUp == 0 && errorLines().isEmpty();
}

bool FaultRun::put()
{
    const FlagScope unattended(m_world.flags.unattendedTransfer);
    QStringList lines;
    for (const char *name : {"a.txt", "c.txt"}) {
        const QFileInfo file(m_world.local() + QLatin1Char('/') + QLatin1String(name));
        lines.append(file.fileName() + QLatin1Char('\t') + FormatDateText(file.lastModified()) +
                     QLatin1Char('\t') + QString::number(file.size()));
    }
    bool ok = true;
    m_world.operations.ftPutFile(pub, lines.join(QLatin1Char('\r')), m_world.local(), ok);
    return ok && m_world.operations.counts().givenUp == 0;
}

bool FaultRun::recover(const FaultTrees &asked)
{
    m_relay.setFault({});
    for (int attempt = 0; attempt < recoveries; ++attempt) {
        m_backend.endSessions();
        if (again() && trees() == asked)
            return true;
    }
    return false;
}

bool FaultRun::again()
{
    m_world.session.CloseInternet();
    if (synchronises())
        return carryOut();
    if (!m_world.connectToSite())
        return false;
    if (m_operation == FaultOperation::Connect)
        return true;
    m_world.cache.caRefresh(pub);
    const TreeSnapshot now = m_backend.content();
    const bool done = (m_operation == FaultOperation::Rename && now.count("z.txt") > 0) ||
                      (m_operation == FaultOperation::Delete && now.count("a.txt") == 0) ||
                      (m_operation == FaultOperation::Make && now.count("new/") > 0) ||
                      (m_operation == FaultOperation::Remove && now.count("old/") == 0);
    return done || carryOut();
}

FaultTrees FaultRun::trees() const
{
    return {snapshot(m_world.local()), m_backend.content()};
}

bool FaultRun::reported() const
{
    return !errorLines().isEmpty() || !m_world.person.messages().isEmpty() ||
           !m_world.person.warnings().isEmpty() ||
           !m_world.person.outcomes(Outcome::Kind::GivenUp).empty();
}

QStringList FaultRun::errorLines() const
{
    QStringList lines;
    for (const QByteArray &line : m_world.errorLogText().split('\n')) {
        const QByteArray trimmed = line.trimmed();
        if (!trimmed.isEmpty())
            lines.append(QString::fromLatin1(trimmed.mid(trimmed.indexOf(" : ") + 3)));
    }
    return lines;
}

QString FaultRun::story() const
{
    m_world.eventLog.flush();
    QFile events(m_world.eventLog.path());
    const QString dialogue =
        events.open(QIODevice::ReadOnly) ? QString::fromUtf8(events.readAll()) : QString();
    return QStringLiteral("said done: %1\nmessages: %2\nerror log: %3\n%4")
        .arg(m_saysDone)
        .arg(m_world.person.messages().join(QLatin1Char('|')), errorLines().join(QLatin1Char('|')),
             dialogue.right(12'000));
}

QStringList FaultRun::broken(const FaultTrees &asked)
{
    QStringList wrong;
    const int state = m_world.session.state();
    if (state < Session::Closed || state > Session::Connected)
        wrong << QStringLiteral("session state %1").arg(state);
    if (m_world.person.openWaits() != 0)
        wrong << QStringLiteral("a wait window stays");
    checkLocal(asked, wrong);
    checkRemote(asked, wrong);
    if (m_operation == FaultOperation::List)
        checkCache(asked, wrong);
    checkWords(asked, wrong);
    return wrong;
}

/// On this side every entry is as it was or as asked, in whole.
void FaultRun::checkLocal(const FaultTrees &asked, QStringList &wrong) const
{
    const TreeSnapshot now = snapshot(m_world.local());
    for (const QByteArray &path : pathsOf(now, m_before.local, asked.local)) {
        const TreeItem *was = find(m_before.local, path);
        const TreeItem *wanted = find(asked.local, path);
        const TreeItem *is = find(now, path);
        if (is == nullptr && was != nullptr && wanted != nullptr)
            wrong << QStringLiteral("gone here: ") + shown(path);
        if (is == nullptr)
            continue;
        const bool asBefore = was != nullptr && is->bytes == was->bytes;
        const bool asAsked = wanted != nullptr && is->bytes == wanted->bytes;
        if (!asBefore && !asAsked)
            wrong << QStringLiteral("neither as before nor as asked here: ") + shown(path);
    }
}

/// On the server there may be remnants of uploads besides, as long as they are noted.
void FaultRun::checkRemote(const FaultTrees &asked, QStringList &wrong)
{
    const TreeSnapshot now = m_backend.content();
    const auto notes = m_world.cache.unfinishedUnder(pub);
    for (const QByteArray &path : pathsOf(now, m_before.remote, asked.remote)) {
        const TreeItem *was = find(m_before.remote, path);
        const TreeItem *wanted = find(asked.remote, path);
        const TreeItem *is = find(now, path);
        if (is == nullptr && was != nullptr && wanted != nullptr)
            wrong << QStringLiteral("gone there: ") + shown(path);
        if (is == nullptr || (was != nullptr && is->bytes == was->bytes) ||
            (wanted != nullptr && is->bytes == wanted->bytes))
            continue;
        const bool noted = std::any_of(notes.begin(), notes.end(), [&path](const auto &note) {
            return note.first + QLatin1Char('/') + note.second ==
                   QStringLiteral("/pub/") + shown(path);
        });
        if (wanted == nullptr || !isHalfOf(is->bytes, wanted->bytes))
            wrong << QStringLiteral("neither as before nor as asked there: ") + shown(path);
        else if (!noted)
            wrong << QStringLiteral("a remnant that nobody noted: ") + shown(path);
        else
            ++m_remnants;
    }
}

/// Sub-folders (with "/") and files that the cache shows.
QStringList FaultRun::cachedBelow(const QString &dir)
{
    QString folders;
    QString files;
    m_world.cache.cachedNames(dir, folders, files);
    QStringList names = files.split(QLatin1Char('\r'), Qt::SkipEmptyParts);
    for (const QString &folder : folders.split(QLatin1Char('\r'), Qt::SkipEmptyParts))
        names.append(folder + QLatin1Char('/'));
    names.sort();
    return names;
}

/// A directory that the cache does not show whole carries the mark of it, or one above it does.
void FaultRun::checkCache(const FaultTrees &asked, QStringList &wrong)
{
    std::map<QString, QStringList> folders{{pub, {}}};
    for (const auto &[path, item] : asked.remote) {
        const bool folder = path.endsWith('/');
        const QString full = QStringLiteral("/pub/") + shown(folder ? path.chopped(1) : path);
        const QString parent = full.section(QLatin1Char('/'), 0, -2);
        folders[parent].append(full.section(QLatin1Char('/'), -1) +
                               (folder ? QStringLiteral("/") : QString()));
        if (folder)
            (void)folders[full];
    }
    const auto marks = m_world.cache.incompleteUnder(pub);
    if (emptyListing())
        return; // nothing tells it from an empty directory; nothing is deleted by it either
    for (auto &[dir, names] : folders) {
        names.sort();
        if (cachedBelow(dir) == names)
            continue;
        const QString below = dir + QLatin1Char('/');
        const bool marked = std::any_of(marks.begin(), marks.end(), [&below](const auto &mark) {
            return below.startsWith(mark.dir + QLatin1Char('/'));
        });
        if (!marked)
            wrong << QStringLiteral("not the whole directory, and no mark: ") + dir;
    }
}

/// A listing that was closed before its first byte, with 226. What lies there then stays for the
/// next run.
bool FaultRun::emptyListing() const
{
    return m_fault && m_fault->kind == RelayFault::Kind::DataTruncate && m_fault->bytes == 0 &&
           (m_fault->verb == "MLSD" || m_fault->verb == "LIST");
}

void FaultRun::checkWords(const FaultTrees &asked, QStringList &wrong) const
{
    static const QStringList known{
        QStringLiteral("InternetOpen"),
        QStringLiteral("InternetConnect"),
        QStringLiteral("ftReConect Err sUsr="),
        QStringLiteral("sjCrntDir Err: "),
        QStringLiteral("sjMakePrDir Err: "),
        QStringLiteral("FtpFindFirstFile"),
        QStringLiteral("InternetFindNextFile"),
        QStringLiteral("FtpGetFile Err:"),
        QStringLiteral("FtpPutFile Err:"),
        QStringLiteral("FtpRenameFile Err: "),
        QStringLiteral("FtpDeleteFile Err: "),
        QStringLiteral("FtpCreateDirectory Err: "),
        QStringLiteral("FtpRemoveDirectory Err:"),
        QStringLiteral("sjEmpDir DeleteFile Err: "),
        QStringLiteral("ftGetFold Err:"),
        QStringLiteral("ftPutFold Err:"),
    };
    for (const QString &line : errorLines()) {
        const bool fits = std::any_of(known.begin(), known.end(), [&line](const QString &words) {
            return line.startsWith(words);
        });
        if (!fits)
            wrong << QStringLiteral("unknown log line: ") + line;
    }
    const FaultTrees now = trees();
    const bool same = now == asked;
    if (!same && m_saysDone && !emptyListing())
        wrong << QStringLiteral("says it is done, and is not: ") +
                     (difference(asked.local, now.local) + difference(asked.remote, now.remote))
                         .join(QLatin1String("; "));
    if (((!same && !emptyListing()) || !m_saysDone) && !reported())
        wrong << QStringLiteral("given up without a word");
}

} // namespace venlo::test
