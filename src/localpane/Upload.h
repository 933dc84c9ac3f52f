#pragma once

#include <functional>

#include <QDeadlineTimer>
#include <QString>
#include <QStringList>

#include "shared/NameList.h"

namespace venlo
{

class RemoteOperations;
class sfMsg;

/// Uploads local files and folders into a remote directory, grouped by the folder they lie in: the
/// folders of a folder one by one, then its files in one go. Links to folders and names that no
/// operation may touch are left out with a status line, which stays to be read behind the upload.
/// Runs within its caller's turn.
class Upload
{
public:
    /// say: the message text of each folder, "folder > target Up Loading････".
    Upload(RemoteOperations &operations, sfMsg &window, std::function<void(const QString &)> say);
    /// remoteDir: normal form. False when the session was lost or the person cancelled.
    [[nodiscard]] bool run(const QStringList &localPaths, const QString &remoteDir);

    /// What one folder holds of an upload.
    struct Group {
        QString folder;
        QStringList folders;     ///< names
        QList<UploadLine> files; ///< with texts as the person saw them
    };
    /// One folder's part: its folders, the message text, its files.
    [[nodiscard]] bool runRows(const Group &group, const QString &remoteDir);
    /// A whole folder tree; no message text.
    [[nodiscard]] bool runFolder(const QString &folder, const QString &remoteDir);

    /// An entry's line as it is on the disk now.
    [[nodiscard]] static UploadLine lineFor(const QString &path);

private:
    [[nodiscard]] bool runGroup(const Group &group, const QString &remoteDir);
    [[nodiscard]] QList<Group> groupsOf(const QStringList &localPaths);
    /// False, after a status line, for what must not be uploaded.
    [[nodiscard]] bool mayGo(const QString &path);
    [[nodiscard]] static QString textFor(const QString &folder, const QString &remoteDir);
    [[nodiscard]] static qint64 bytesOf(const Group &group, QDeadlineTimer inTime);

    RemoteOperations &m_operations;
    sfMsg &m_window;
    std::function<void(const QString &)> m_say;
};

} // namespace venlo
