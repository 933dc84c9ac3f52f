#include "localpane/LocalListFill.h"

#include <algorithm>

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

RowList::Layout LocalListFill::layout()
{
    const QStringList headings{QStringLiteral("名前"),
                               QStringLiteral("更新日時"),
                               QStringLiteral("ｻｲｽﾞ"),
                               QStringLiteral("拡張子"),
                               QStringLiteral("種類"),
                               QStringLiteral("属性"),
                               QString()};
    return {headings, Type, SortKey, {Size}};
}

LocalListFill::LocalListFill(RowList &rows, PaneView &view, FrontEnd &frontEnd)
    : m_rows(rows), m_view(view), m_frontEnd(frontEnd)
{
    connect(&m_sizes, &FolderSizes::measured, this, &LocalListFill::showSize);
}

bool LocalListFill::changed() const
{
    return QFileInfo(m_folder).lastModified() != m_stamp.date;
}

RowList::Row LocalListFill::rowFor(const DiskEntry &entry, bool open)
{
    const auto day = [](const QDateTime &time) {
        return time.toString(QStringLiteral("yyyy/MM/dd"));
    };
    RowList::Row row;
    row.tag = entry.folder ? EntryTag::FD : EntryTag::FL;
    row.texts = QStringList(Columns);
    row.texts[Name] = entry.name;
    row.texts[Modified] = FormatDateText(entry.modified);
    row.texts[Letters] = entry.letters;
    row.texts[SortKey] = (entry.folder ? QLatin1Char('D') : QLatin1Char('L')) + entry.name;
    // The labels stand the other way round on purpose.
    row.toolTip = QStringLiteral("更新:") + day(entry.created) + QStringLiteral(" 作成:") +
                  day(entry.modified);
    row.pale = open && entry.hidden;
    row.viewOnly = entry.viewOnly;
    return row;
}

void LocalListFill::AddFolderRow(Rows &rows, const DiskEntry &entry, bool open)
{
    RowList::Row row = rowFor(entry, open);
    // What is never walked has no size; the others follow when they were measured.
    if (entry.link || entry.viewOnly)
        row.texts[Size] = FormatSizeText(0);
    row.texts[Type] = QStringLiteral("ﾌｧｲﾙﾌｫﾙﾀﾞ");
    row.lateKnown = true;
    rows.push_back(std::move(row));
}

void LocalListFill::AddFileRow(Rows &rows, const DiskEntry &entry, const QString &extension,
                               bool open)
{
    RowList::Row row = rowFor(entry, open);
    row.texts[Size] = FormatSizeText(entry.size);
    row.texts[Extension] = extension;
    row.toolTip += QStringLiteral(" ｻｲｽﾞ:") + row.texts.at(Size);
    rows.push_back(std::move(row));
}

void LocalListFill::FillList(const QString &folder)
{
    if (!folderExists(folder))
        return;
    const int fill = ++m_fill;
    const bool again = isSameFolder(folder, m_folder);
    const Kept kept = again ? keep() : Kept();
    // A bare drive keeps no date worth watching: the first look reads it once more.
    m_stamp =
        isBareDrive(folder) ? FolderStamp{QDateTime::currentDateTime()} : FolderStamp::of(folder);
    const auto entries = readFolder(folder);
    Rows folders;
    Rows files;
    if (entries) {
        for (const DiskEntry &entry : entries.value()) {
            if (entry.folder)
                AddFolderRow(folders, entry, true);
            else if (passesFilter(entry.name, m_filter))
                AddFileRow(files, entry, extensionOf(entry.name), true);
        }
    }
    m_sizes.stop();
    // Nobody needs to see a list that is read again jump to its top and back.
    m_view.setUpdatesEnabled(!again);
    m_rows.clear();
    m_folder = folder;
    if (!entries) {
        m_view.setUpdatesEnabled(true);
        m_frontEnd.message(entries.error().words);
        return;
    }
    if (appendAndYield(std::move(folders), fill) && appendAndYield(std::move(files), fill))
        finishFill(entries.value(), kept);
}

void LocalListFill::refill()
{
    const QString folder = m_folder;
    const FolderStamp stamp = FolderStamp::of(folder);
    const QPointer<LocalListFill> self(this);
    FillList(folder);
    if (self != nullptr && m_folder == folder)
        m_stamp = stamp;
}

bool LocalListFill::appendAndYield(Rows rows, int fill)
{
    const bool atOnce = m_rows.keys().exhausted();
    if (!m_rows.append(std::move(rows))) {
        m_view.setUpdatesEnabled(true);
        Q_EMIT ranOut(atOnce);
        return false;
    }
    const QPointer<LocalListFill> self(this);
    ++m_filling;
    m_frontEnd.yield();
    if (self == nullptr)
        return false;
    --m_filling;
    return fill == m_fill;
}

void LocalListFill::finishFill(const std::vector<DiskEntry> &entries, const Kept &kept)
{
    restore(kept);
    m_view.setUpdatesEnabled(true);
    measure(entries);
    tellOdd(entries);
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

void LocalListFill::restore(const Kept &kept)
{
    QItemSelection selection;
    QModelIndex current;
    for (int row = 0; row < m_rows.count(); ++row) {
        const QString key = m_rows.row(row).texts.value(SortKey);
        const QModelIndex index = m_rows.index(row, 0);
        if (kept.selected.contains(key))
            selection.select(index, m_rows.index(row, Columns - 1));
        if (!kept.current.isEmpty() && key == kept.current)
            current = index;
    }
    if (current.isValid())
        m_view.selectionModel()->setCurrentIndex(current, QItemSelectionModel::NoUpdate);
    if (!selection.isEmpty())
        m_view.selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    m_view.verticalScrollBar()->setValue(kept.scroll);
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
