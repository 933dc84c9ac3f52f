// The upload that a menu command of the local pane asks for.
#include <algorithm>

#include <QItemSelectionModel>

#include "ftp/LocalPath.h"
#include "ftp/RemoteOperations.h"
#include "localpane/FolderReader.h"
#include "localpane/Upload.h"
#include "localpane/uFileParts.h"
#include "mainwin/popup/sfMsg.h"
#include "platform/EntryLook.h"
#include "shared/OperationGate.h"
#include "shared/WindowDesk.h"

namespace venlo
{

namespace
{
/// Whatever ends an upload, the message window goes and the watch runs again.
class UploadScope
{
public:
    UploadScope(LocalViews &views, sfMsg &window) : m_views(views), m_window(window)
    {
        m_views.setBusy(true);
        m_window.cOn();
    }
    ~UploadScope()
    {
        m_window.cOff();
        m_views.setBusy(false);
    }
    UploadScope(const UploadScope &) = delete;
    UploadScope &operator=(const UploadScope &) = delete;

private:
    LocalViews &m_views;
    sfMsg &m_window;
};

/// The selected rows as they are on the disk now; the list shows it too.
Upload::Group selectedRows(RowList &rows, const PaneView &view, const QString &folder)
{
    Upload::Group group{folder, {}, {}};
    QModelIndexList selected = view.selectionModel()->selectedRows();
    std::sort(selected.begin(), selected.end()); // not as they were clicked one by one
    for (const QModelIndex &index : selected) {
        const int at = index.row();
        const QString name = rows.text(at, LocalListFill::Name);
        if (rows.row(at).tag == EntryTag::FD) {
            group.folders.append(name);
        } else if (rows.row(at).tag == EntryTag::FL) {
            const QString path = localChild(folder, name);
            if (EntryLook(path).exists()) {
                const UploadLine now = Upload::lineFor(path);
                rows.setText(at, LocalListFill::Modified, now.dateText);
                rows.setText(at, LocalListFill::Size, now.sizeText);
            }
            group.files.append(
                {name, rows.text(at, LocalListFill::Modified), rows.text(at, LocalListFill::Size)});
        }
    }
    return group;
}
} // namespace

void uFile::Parts::requestUpload(bool wholeFolder)
{
    const QString source = NodePath();
    if (source.isEmpty() || (!wholeFolder && !listView->selectionModel()->hasSelection()))
        return;
    const OperationGate::Turn turn = rooms.gate.begin();
    if (!turn)
        return;
    bool goAhead = false;
    QString target;
    Q_EMIT q.eBfrPut(goAhead, target);
    if (!goAhead || target.isEmpty())
        return;
    rooms.operations.standingAnswer = OverwriteMode::Ask;
    rooms.operations.resetCounts();
    const UploadScope scope(*this, rooms.window);
    listFill->setMeasuring(true); // sending only reads
    upload(wholeFolder, source, target);
    Q_EMIT q.eEndPut();
}

void uFile::Parts::upload(bool wholeFolder, const QString &source, const QString &target)
{
    // A folder that is gone is no upload of nothing.
    if (!fileNames(rooms.desk, source, QString()))
        return;
    Upload work(rooms.operations, rooms.window,
                [this](const QString &text) { Q_EMIT q.eMsg(text); });
    if (wholeFolder)
        static_cast<void>(work.runFolder(source, target));
    else
        static_cast<void>(work.runRows(selectedRows(*list, *listView, source), target));
}

} // namespace venlo
