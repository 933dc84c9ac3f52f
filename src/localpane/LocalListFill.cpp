#include "localpane/LocalListFill.h"

#include <algorithm>
#include <utility>

#include <QElapsedTimer>
#include <QFileInfo>
#include <QPointer>
#include <QScrollBar>

#include "db/DisplayFormat.h"
#include "ftp/LocalPath.h"
#include "localpane/FolderPaths.h"
#include "localpane/FolderReader.h"
#include "shared/FrontEnd.h"
#include "views/PaneView.h"

namespace venlo
{

LocalListFill::LocalListFill(RowList &rows, PaneView &view, FrontEnd &frontEnd)
    : m_rows(rows), m_view(view), m_frontEnd(frontEnd)
{
    connect(&m_sizes, &FolderSizes::measured, this, &LocalListFill::showSize);
    connect(&m_sizes, &FolderSizes::ended, this, &LocalListFill::sizesComplete);
}

bool LocalListFill::changed() const
{
    return QFileInfo(m_folder).lastModified() != m_stamp.date;
}

void LocalListFill::FillList(const QString &folder)
{
    constexpr qint64 unnoticed = 50; // milliseconds without events
    if (!folderExists(folder))
        return;
    const bool again = isSameFolder(folder, m_folder);
    if (again && putOff())
        return;
    const int fill = ++m_fill;
    // A bare drive keeps no date worth watching: the first look reads it once more.
    m_stamp =
        isBareDrive(folder) ? FolderStamp{QDateTime::currentDateTime()} : FolderStamp::of(folder);
    if (!again) {
        // While events run the rows must be those of the folder that is selected.
        m_kept = Kept();
        m_toldOdd.clear();
        empty();
        m_folder = folder;
    }
    bool wanted = true;
    QElapsedTimer clock;
    clock.start();
    const auto entries = readFolder(folder, [this, fill, &clock, &wanted] {
        if (clock.elapsed() >= unnoticed) {
            wanted = yield(fill);
            clock.start();
        }
        return wanted;
    });
    if (!wanted || (again && putOff()))
        return;
    if (again) {
        if (!m_unrestored)
            m_kept = keep();
        // Nobody needs to see a list that is read again jump to its top and back.
        m_view.setUpdatesEnabled(!entries);
        empty();
    }
    if (entries) {
        addEntries(entries.value(), fill);
        return;
    }
    restore();
    m_frontEnd.message(entries.error().words);
}

/// While a name of the list is edited its row stays; the watch's next look reads the folder.
bool LocalListFill::putOff()
{
    if (!m_view.editingName())
        return false;
    m_stamp = FolderStamp();
    return true;
}

void LocalListFill::empty()
{
    m_sizes.stop();
    m_rows.clear();
    m_unrestored = true;
}

void LocalListFill::addEntries(const std::vector<DiskEntry> &entries, int fill)
{
    Rows folders;
    Rows files;
    for (const DiskEntry &entry : entries) {
        if (entry.folder)
            AddFolderRow(folders, entry, true);
        else if (passesFilter(entry.name, m_filter))
            AddFileRow(files, entry, extensionOf(entry.name), true);
    }
    if (!appendAndYield(std::move(folders), fill) || !appendAndYield(std::move(files), fill))
        return;
    restore();
    measure(entries);
    tellOdd(entries);
}

void LocalListFill::refill()
{
    const QString folder = m_folder;
    const FolderStamp stamp = FolderStamp::of(folder);
    const QPointer<LocalListFill> self(this);
    FillList(folder);
    if (self != nullptr && m_folder == folder && m_stamp.date.isValid())
        m_stamp = stamp;
}

bool LocalListFill::yield(int fill)
{
    const QPointer<LocalListFill> self(this);
    ++m_filling;
    m_frontEnd.yield();
    if (self == nullptr)
        return false;
    --m_filling;
    return fill == m_fill;
}

bool LocalListFill::appendAndYield(Rows rows, int fill)
{
    const bool atOnce = m_rows.keys().exhausted();
    if (m_rows.append(std::move(rows)))
        return yield(fill);
    restore();
    Q_EMIT ranOut(atOnce);
    return false;
}

LocalListFill::Kept LocalListFill::keep() const
{
    Kept kept;
    for (const QModelIndex &index : m_view.selectionModel()->selectedRows())
        kept.selected.insert(m_rows.row(index.row()).texts.value(SortKey));
    if (m_view.currentIndex().isValid())
        kept.current = m_rows.row(m_view.currentIndex().row()).texts.value(SortKey);
    kept.scroll = m_view.verticalScrollBar()->value();
    return kept;
}

void LocalListFill::restore()
{
    const Kept kept = std::exchange(m_kept, Kept());
    m_unrestored = false;
    QItemSelection selection;
    QModelIndex current;
    int first = -1; // of the selected rows that lie together: thousands of ranges would be slow
    for (int row = 0; row < m_rows.count(); ++row) {
        const QString key = m_rows.row(row).texts.value(SortKey);
        if (!kept.current.isEmpty() && key == kept.current)
            current = m_rows.index(row, 0);
        if (!kept.selected.contains(key)) {
            first = -1;
            continue;
        }
        if (first < 0)
            first = row;
        const bool isLast = row + 1 == m_rows.count() ||
                            !kept.selected.contains(m_rows.row(row + 1).texts.value(SortKey));
        if (isLast)
            selection.select(m_rows.index(first, 0), m_rows.index(row, Columns - 1));
    }
    if (current.isValid())
        m_view.selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    if (!selection.isEmpty())
        m_view.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    m_view.verticalScrollBar()->setValue(kept.scroll);
    m_view.setUpdatesEnabled(true);
}

void LocalListFill::selectName(EntryTag tag, const QString &name)
{
    const int row = m_rows.rowOf(tag, name);
    if (row < 0)
        return;
    m_view.setCurrentIndex(m_rows.index(row, 0));
    m_view.scrollTo(m_rows.index(row, 0));
}

void LocalListFill::measure(const std::vector<DiskEntry> &entries)
{
    QSet<QString> links;
    for (const DiskEntry &entry : entries) {
        if (entry.folder && (entry.link || entry.viewOnly))
            links.insert(entry.name);
    }
    std::deque<FolderSizes::Job> jobs;
    for (int at = 0; at < m_rows.count(); ++at) {
        const RowList::Row &row = m_rows.row(at);
        const QString name = row.texts.value(Name);
        if (row.tag == EntryTag::FD && row.texts.value(Size).isEmpty() && !links.contains(name))
            jobs.push_back({row.key, localChild(m_folder, name)});
    }
    m_sizes.start(std::move(jobs));
}

void LocalListFill::showSize(const QString &key, qint64 bytes)
{
    const int row = m_rows.rowOfKey(key);
    if (row >= 0)
        m_rows.setText(row, Size, FormatSizeText(bytes));
}

/// The sizes came behind the sort, which counts once they are all there.
void LocalListFill::sizesComplete()
{
    if (m_rows.sortColumn() == Size && !m_view.inHand())
        m_rows.resort();
}

void LocalListFill::tellOdd(const std::vector<DiskEntry> &entries)
{
    const auto odd = std::count_if(entries.begin(), entries.end(),
                                   [](const DiskEntry &entry) { return entry.viewOnly; });
    if (odd == 0)
        return;
    const QString line = m_folder + QStringLiteral(" : 名前に使用できない文字があるため､%1 個の"
                                                   "項目は転送も削除もできません")
                                        .arg(odd);
    // The watch reads again and again.
    if (line != m_toldOdd)
        m_frontEnd.addStatus(line);
    m_toldOdd = line;
}

} // namespace venlo
