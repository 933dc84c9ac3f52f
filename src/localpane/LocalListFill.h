#pragma once

#include <QDeadlineTimer>
#include <QObject>
#include <QSet>

#include "localpane/FolderPaths.h"
#include "localpane/FolderSizes.h"
#include "views/RowList.h"

namespace venlo
{

struct DiskEntry;
class FrontEnd;
class PaneView;

/// Reads a local folder into the list. A fill lets events run in between; a newer one makes an
/// older one end. Reading the same folder again keeps the selection and the scroll position.
class LocalListFill : public QObject
{
    Q_OBJECT

public:
    /// Columns of the list, counted from 0.
    enum Column { Name, Modified, Size, Extension, Type, Letters, SortKey, Columns };

    LocalListFill(RowList &rows, PaneView &view, FrontEnd &frontEnd);
    [[nodiscard]] static RowList::Layout layout();

    /// Replaces the list by the folder's content; a folder that does not exist leaves it as it is.
    void FillList(const QString &folder);
    /// The same for the folder that shows, whose own date counts from now on.
    void refill();
    /// Brings the list up to date without clearing it.
    void UpdateList();
    /// The same for a look in the middle of an operation: it says nothing, measures nothing, and
    /// leaves the list as it is when the folder cannot be read by then.
    void updateQuietly(QDeadlineTimer limit);
    /// "" or "*.*" shows every file.
    void setFilter(const QString &filter) { m_filter = filter; }
    /// Folder sizes are measured unless something of the disk is being moved or deleted.
    void setMeasuring(bool measuring) { m_sizes.setResting(!measuring); }
    /// Puts the selection on one row.
    void selectName(EntryTag tag, const QString &name);

    [[nodiscard]] const QString &folder() const { return m_folder; }
    [[nodiscard]] bool filling() const { return m_filling > 0; }
    /// True when the folder's own date is no longer the one it was read at.
    [[nodiscard]] bool changed() const;
    /// True when the date could not tell of a change that came right behind the last look.
    [[nodiscard]] bool unsure() const { return m_stamp.fresh; }

Q_SIGNALS:
    /// The keys of the rows ran out. atOnce: not one was left when the fill began.
    void ranOut(bool atOnce);

private:
    /// What reading again must not lose.
    struct Kept {
        QSet<QString> selected; ///< sort keys
        QString current;
        int scroll = 0;
    };
    using Rows = std::vector<RowList::Row>;
    /// open: hidden entries are drawn paler.
    static void AddFolderRow(Rows &rows, const DiskEntry &entry, bool open);
    static void AddFileRow(Rows &rows, const DiskEntry &entry, const QString &extension, bool open);
    [[nodiscard]] static RowList::Row rowFor(const DiskEntry &entry, bool open);
    [[nodiscard]] static QString toolTipFor(const DiskEntry &entry);

    [[nodiscard]] bool putOff();
    void empty();
    void addEntries(const std::vector<DiskEntry> &entries, int fill);
    // Each lets events run; false when a newer fill has begun or the list is gone.
    [[nodiscard]] bool yield(int fill);
    [[nodiscard]] bool appendAndYield(Rows rows, int fill);
    [[nodiscard]] Kept keep() const;
    void restore();
    /// False when the keys ran out.
    [[nodiscard]] bool update(const std::vector<DiskEntry> &entries);
    void updateRow(int row, const DiskEntry &entry);
    void measure(const std::vector<DiskEntry> &entries);
    void showSize(const QString &key, qint64 bytes);
    void sizesComplete();
    void tellOdd(const std::vector<DiskEntry> &entries);

    RowList &m_rows;
    PaneView &m_view;
    FrontEnd &m_frontEnd;
    FolderSizes m_sizes;
    QString m_folder;
    QString m_filter;
    FolderStamp m_stamp;
    Kept m_kept;
    bool m_unrestored = false; ///< the rows are gone, m_kept waits for the new ones
    QString m_toldOdd;
    int m_fill = 0;
    int m_filling = 0;
};

} // namespace venlo
