// What must hold after a run.
#include "trouble/TroubleRun.h"

#include <algorithm>

#include <QFile>
#include <QFileInfo>

namespace venlo::test
{

namespace
{
const QString pub = QStringLiteral("/pub");

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

} // namespace

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
    m_world->eventLog.flush();
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
