#include "sync/LocalGathering.h"

#include <limits>

#include <QDir>

#include "db/Database.h"
#include "db/DisplayFormat.h"
#include "platform/EntryLook.h"
#include "platform/TemporaryName.h"
#include "shared/FrontEnd.h"
#include "sync/ComparisonWork.h"
#include "sync/FoldCase.h"
#include "sync/LocalFolder.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char slash('/');
constexpr QLatin1Char dot('.');
constexpr qint64 largestSize = std::numeric_limits<qint32>::max();

QString noTime()
{
    return QStringLiteral("更新日時が読み取れないため");
}
} // namespace

LocalGathering::LocalGathering(ComparisonWork &work, const QString &root)
    : m_work(work), m_root(QDir::fromNativeSeparators(root))
{
    while (m_root.endsWith(slash))
        m_root.chop(1);
}

QString LocalGathering::relativeTo(const QString &current) const
{
    QString relative = QDir::fromNativeSeparators(current).mid(m_root.size());
    while (relative.endsWith(slash))
        relative.chop(1);
    return relative.isEmpty() ? QString(dot) : relative;
}

bool LocalGathering::walk(const QString &current)
{
    if (m_work.stopped())
        return false;
    const auto entries = m_work.local.take(current);
    if (!entries) {
        m_work.frontEnd.message(entries.error().words +
                                QStringLiteral("\nﾌｫﾙﾀﾞが読み取れないため比較できません"));
        return false;
    }
    const QString relative = relativeTo(current);
    if (!addFolder(current, relative))
        return false;
    blockTwins(relative, entries.value());
    if (!addFiles(current, relative, entries.value()))
        return false;
    for (const LocalEntry &entry : entries.value()) {
        if (entry.kind != LocalEntry::Kind::Folder)
            continue;
        if (!walk(entryPath(current, entry)))
            return false;
    }
    return true;
}

bool LocalGathering::refuse(const QString &path, const QString &why)
{
    m_work.frontEnd.message(QDir::toNativeSeparators(path) + QLatin1Char('\n') + why +
                            QStringLiteral("比較できません"));
    return false;
}

/// What no statement could hold ends the comparison.
void LocalGathering::requireFits(const QString &text)
{
    if (text.contains(QLatin1Char('\'')))
        throw DbError(text, text);
    if (!text.isValidUtf16())
        throw DbError(QStringLiteral("文字列に文字でないものがあります"));
}

/// In the tables an empty time means that a side lacks the item, which would have it deleted.
bool LocalGathering::addFolder(const QString &current, const QString &relative)
{
    const QString time = FormatMinuteText(EntryLook(current).lastModified());
    if (time.isEmpty())
        return refuse(current, noTime());
    if (relative != dot) {
        m_work.blockIfStripped(relative);
        requireFits(relative);
    }
    m_work.rows.mergeLocalFolder(relative, time);
    return true;
}

bool LocalGathering::addFiles(const QString &current, const QString &relative,
                              const std::vector<LocalEntry> &entries)
{
    for (const LocalEntry &entry : entries) {
        if (m_work.stopped())
            return false;
        const QString path = relativeFile(relative, entry.name);
        if (entry.kind == LocalEntry::Kind::Passed) {
            pass(path, entry);
            continue;
        }
        if (isTemporaryName(entry.name))
            continue;
        compareSpelling(current, path, entry);
        if (entry.kind == LocalEntry::Kind::Folder)
            continue;
        m_work.blockIfStripped(path);
        if (!addFile(current, relative, entry))
            return false;
    }
    return true;
}

/// What has no row is in no review: down, a folder that holds it must not be deleted as a whole.
void LocalGathering::pass(const QString &path, const LocalEntry &entry)
{
    const QString key = foldCase(path);
    if (entry.unread && !m_work.remoteFiles.contains(key) && !m_work.remoteFolders.contains(key))
        m_work.result.unreliable = true;
    m_work.block(path, entry.why, m_work.result.pair.down);
}

bool LocalGathering::addFile(const QString &current, const QString &relative,
                             const LocalEntry &entry)
{
    const auto path = [&] { return current + slash + entry.name; };
    if (entry.size > largestSize)
        return refuse(path(), QStringLiteral("2,147,483,647 ﾊﾞｲﾄを超えるﾌｧｲﾙは"));
    const QString time = FormatMinuteText(entry.modified);
    if (time.isEmpty())
        return refuse(path(), noTime());
    requireFits(entry.name);
    m_work.rows.mergeLocalFile(relative, entry.name, time, entry.size);
    return true;
}

/// The rows do not tell letter case apart, file systems may: what only differs in case is one row,
/// and what that row cannot address is blocked.
void LocalGathering::compareSpelling(const QString &current, const QString &path,
                                     const LocalEntry &entry)
{
    const QString key = foldCase(path);
    const bool folder = entry.kind == LocalEntry::Kind::Folder;
    if ((folder ? m_work.remoteFiles : m_work.remoteFolders).contains(key)) {
        m_work.block(path, QStringLiteral("一方ではﾌｧｲﾙ、もう一方ではﾌｫﾙﾀﾞです"));
        return;
    }
    const QString remote = (folder ? m_work.remoteFolders : m_work.remoteFiles).value(key, path);
    if (remote == path)
        return;
    if (folder) {
        m_work.result.localSpelling.insert(key, path);
        return;
    }
    const QString remoteName = remote.mid(remote.lastIndexOf(slash) + 1);
    if (remoteName != entry.name && !EntryLook(current + slash + remoteName).exists())
        m_work.block(path, QStringLiteral("名前の大文字と小文字が両側で異なります"), false);
}

/// Names of one folder that the rows cannot tell apart.
void LocalGathering::blockTwins(const QString &relative, const std::vector<LocalEntry> &entries)
{
    QHash<QString, QString> seen;
    seen.reserve(static_cast<int>(entries.size()));
    for (const LocalEntry &entry : entries) {
        const QString key = foldCase(entry.name);
        const auto twin = seen.constFind(key);
        if (twin == seen.constEnd()) {
            seen.insert(key, entry.name);
            continue;
        }
        m_work.result.unreliable = true;
        m_work.block(relativeFile(relative, entry.name),
                     QStringLiteral("大文字と小文字だけが異なる名前があります: ") + *twin);
    }
}

} // namespace venlo
