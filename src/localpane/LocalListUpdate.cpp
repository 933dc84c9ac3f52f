// How the list is brought up to date in place.
#include <QHash>

#include "db/DisplayFormat.h"
#include "localpane/FolderPaths.h"
#include "localpane/FolderReader.h"
#include "localpane/LocalListFill.h"
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
    if (!entries) {
        m_frontEnd.message(entries.error().words);
        return;
    }
    ++m_fill; // a fill that waits would add every row once more
    m_view.setUpdatesEnabled(true);
    QHash<QString, QString> left; // kind and name to the row's key
    for (int at = 0; at < m_rows.count(); ++at) {
        const RowList::Row &row = m_rows.row(at);
        if (row.tag != EntryTag::NW)
            left.insert(keyOf(row.tag == EntryTag::FD, row.texts.value(Name)), row.key);
    }
    Rows added;
    for (const DiskEntry &entry : entries.value()) {
        const QString known = left.take(keyOf(entry.folder, entry.name));
        if (!known.isEmpty())
            updateRow(m_rows.rowOfKey(known), entry);
        else if (entry.folder)
            AddFolderRow(added, entry, true);
        else if (passesFilter(entry.name, m_filter))
            AddFileRow(added, entry, extensionOf(entry.name), true);
    }
    std::vector<int> gone;
    for (const QString &key : left)
        gone.push_back(m_rows.rowOfKey(key));
    m_rows.remove(std::move(gone));
    m_stamp = stamp;
    const bool atOnce = m_rows.keys().exhausted();
    const bool fits = m_rows.append(std::move(added));
    measure(entries.value());
    tellOdd(entries.value());
    if (!fits)
        Q_EMIT ranOut(atOnce);
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
}

} // namespace venlo
