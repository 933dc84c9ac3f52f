#include "sync/LookAgain.h"

#include <QDir>
#include <QHash>

#include "db/DisplayFormat.h"
#include "platform/TemporaryName.h"
#include "sync/LocalFolder.h"
#include "sync/SyncReview.h"

namespace venlo
{

namespace
{
QString changed()
{
    return QStringLiteral("比較の後に変わりました");
}

bool timed(const FileCopy &copy, const EntryLook &now)
{
    return !copy.time.isEmpty() && copy.time == FormatMinuteText(now.lastModified());
}

/// A listed size is kept one byte larger than it was listed.
bool sizedAsListed(const FileCopy &listed, const EntryLook &now)
{
    return listed.size == now.size() || listed.size == now.size() + 1;
}

bool isThere(const EntryLook &item)
{
    return item.exists() || item.isSymbolicLink() || item.isJunction();
}
} // namespace

QString LookAgain::why() const
{
    const bool removes = m_review.plannedAction(m_row) == Action::Remove;
    if (m_review.pair().down)
        return removes ? whyNotRemoved() : whyNotReplaced();
    if (removes && isThere(EntryLook(m_review.localPath(m_row))))
        return QStringLiteral("比較の後に作成されました");
    return {};
}

QString LookAgain::whyNotReplaced() const
{
    bool may = mayReplace(m_row);
    for (const int covered : m_review.coveredBy(m_row))
        may = may && mayReplace(covered);
    return may ? QString() : changed();
}

bool LookAgain::mayReplace(int index) const
{
    const SyncRow &row = m_review.row(index);
    const EntryLook now(m_review.localPath(index));
    if (!isThere(now))
        return true;
    if (row.folder)
        return now.isDir() && !now.isSymbolicLink() && !now.isJunction();
    if (!now.isFile())
        return false;
    // An earlier attempt may have put it there; listings need not show the time it then has.
    const bool put =
        sizedAsListed(row.master, now) && (m_review.row(m_row).tried || timed(row.master, now));
    return put || asCompared(index, now);
}

QString LookAgain::whyNotRemoved() const
{
    const EntryLook now(m_review.localPath(m_row));
    if (!isThere(now))
        return {};
    const bool same = m_review.row(m_row).folder ? holdsOnlyRows(now.filePath())
                                                 : now.isFile() && asCompared(m_row, now);
    return same ? QString() : changed();
}

/// A whole folder takes everything with it, also what came after the comparison or never was in
/// it: then it stays.
bool LookAgain::holdsOnlyRows(const QString &folder) const
{
    QHash<QString, int> rows;
    for (const int covered : m_review.coveredBy(m_row))
        rows.insert(QDir::fromNativeSeparators(m_review.localPath(covered)), covered);
    QStringList folders{QDir::fromNativeSeparators(folder)};
    while (!folders.isEmpty()) {
        const QString current = folders.takeLast();
        const auto entries = readLocalFolder(current);
        if (!entries)
            return false;
        for (const LocalEntry &entry : entries.value()) {
            const QString path = entryPath(current, entry);
            const int row = rows.value(path, -1);
            const bool isFolder = entry.kind == LocalEntry::Kind::Folder;
            if (row < 0 && entry.kind == LocalEntry::Kind::File && isTemporaryName(entry.name))
                continue;
            if (row < 0 || entry.kind == LocalEntry::Kind::Passed ||
                m_review.row(row).folder != isFolder)
                return false;
            if (isFolder)
                folders += path;
            else if (!asCompared(row, EntryLook(path)))
                return false;
        }
    }
    return true;
}

bool LookAgain::asCompared(int index, const EntryLook &now) const
{
    const FileCopy &local = m_review.row(index).other;
    return timed(local, now) && local.size == now.size();
}

} // namespace venlo
