// How the list is brought up to date in place.
#include <QHash>

#include "db/DisplayFormat.h"
#include "localpane/FolderPaths.h"
#include "localpane/FolderReader.h"
#include "localpane/LocalListFill.h"
#include "platform/TemporaryName.h"
#include "shared/FrontEnd.h"
#include "views/PaneView.h"

namespace venlo
{

namespace
{
QString keyOf(bool folder, const QString &name)
{
    return (folder ? QStringLiteral("FD:") : QStringLiteral("FL:")) + name + QLatin1Char('>');
}
} // namespace

void LocalListFill::UpdateList()
{
    if (!folderExists(m_folder))
        return;
    const FolderStamp stamp = FolderStamp::of(m_folder);
    const auto entries = readFolder(m_folder);
    m_stamp = stamp; // first: what cannot be read is said once
    if (!entries) {
        m_frontEnd.message(entries.error().words);
        return;
    }
    const bool atOnce = m_rows.keys().exhausted();
    const bool fits = update(entries.value());
    measure(entries.value());
    tellOdd(entries.value());
    if (!fits)
        Q_EMIT ranOut(atOnce);
}

void LocalListFill::updateQuietly(QDeadlineTimer limit)
{
    const FolderStamp stamp = FolderStamp::of(m_folder);
    auto entries = readFolder(m_folder, [limit] { return !limit.hasExpired(); });
    if (!entries || limit.hasExpired())
        return;
    m_stamp = stamp;
    // What is still arriving comes and goes with every look.
    std::erase_if(entries.value(),
                  [](const DiskEntry &entry) { return isTemporaryName(entry.name); });
    static_cast<void>(update(entries.value())); // the keys that are missing are missed again
}

bool LocalListFill::update(const std::vector<DiskEntry> &entries)
{
    ++m_fill; // a fill that waits would add every row once more
    m_view.setUpdatesEnabled(true);
    // Kind and name to the row's key; names that are no text may look the same.
    QMultiHash<QString, QString> left;
    for (int at = 0; at < m_rows.count(); ++at) {
        const RowList::Row &row = m_rows.row(at);
        if (row.tag != EntryTag::NW)
            left.insert(keyOf(row.tag == EntryTag::FD, row.texts.value(Name)), row.key);
    }
    Rows added;
    for (const DiskEntry &entry : entries) {
        if (!entry.folder && !passesFilter(entry.name, m_filter))
            continue;
        const QString known = left.take(keyOf(entry.folder, entry.name));
        if (!known.isEmpty())
            updateRow(m_rows.rowOfKey(known), entry);
        else if (entry.folder)
            AddFolderRow(added, entry, true);
        else
            AddFileRow(added, entry, extensionOf(entry.name), true);
    }
    std::vector<int> gone;
    for (const QString &key : left)
        gone.push_back(m_rows.rowOfKey(key));
    m_rows.remove(std::move(gone));
    const bool fits = m_rows.append(std::move(added));
    if (m_unrestored)
        restore();
    return fits;
}

void LocalListFill::updateRow(int row, const DiskEntry &entry)
{
    const QString date = FormatDateText(entry.modified);
    if (m_rows.text(row, Modified) != date) {
        m_rows.setText(row, Modified, date);
        // Its content may have changed too.
        if (entry.folder && !entry.link && !entry.viewOnly)
            m_rows.setText(row, Size, QString());
    }
    if (!entry.folder)
        m_rows.setText(row, Size, FormatSizeText(entry.size));
    m_rows.setText(row, Letters, entry.letters);
    m_rows.setToolTip(row, toolTipFor(entry));
}

} // namespace venlo
