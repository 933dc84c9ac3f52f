#pragma once

#include <functional>

#include <QString>
#include <QStringList>

namespace venlo
{

class RemoteOperations;
class sfMsg;

/// Uploads local files and folders into a remote directory, grouped by the folder they lie in: the
/// folders of a folder one by one, then its files in one go. Links to folders and names that no
/// operation may touch are left out with a status line. Runs within its caller's turn.
class Upload
{
public:
    /// say: the message text of each folder, "folder > target Up Loading････".
    Upload(RemoteOperations &operations, sfMsg &window, std::function<void(const QString &)> say);
    /// remoteDir: normal form. False when the session was lost or the person cancelled.
    [[nodiscard]] bool run(const QStringList &localPaths, const QString &remoteDir);

private:
    RemoteOperations &m_operations;
    sfMsg &m_window;
    std::function<void(const QString &)> m_say;
};

} // namespace venlo
