#pragma once

#include <functional>

#include <QList>
#include <QString>

#include "views/RemoteEntries.h"

namespace venlo
{

class RemoteOperations;
class sfMsg;

/// Fetches remote entries into a local folder, grouped by the directory they lie in: the folders of
/// a directory one by one, then its files in one go. Runs within its caller's turn; showing the
/// message window and resetting the standing answer are its caller's too.
class Download
{
public:
    /// say: the message text of each directory, "remote path > folder Down Loading････".
    Download(RemoteOperations &operations, sfMsg &window, std::function<void(const QString &)> say);
    [[nodiscard]] static QString textFor(const QString &dir, const QString &localFolder);
    /// False when the session was lost or the person cancelled: what is left was not tried.
    [[nodiscard]] bool run(const QList<RemoteEntry> &entries, const QString &localFolder);

private:
    RemoteOperations &m_operations;
    sfMsg &m_window;
    std::function<void(const QString &)> m_say;
};

} // namespace venlo
