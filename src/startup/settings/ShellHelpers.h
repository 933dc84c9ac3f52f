#pragma once

#include <QString>

#include "startup/settings/UserDataFolder.h"

namespace venlo
{

class FrontEnd;

/// Hands things to the desktop's shell: a help page, an HTML file, the SendTo shortcut, a folder.
/// Errors end an operation quietly. Owned by the main window.
class ShellHelpers
{
public:
    /// userDataFolder ends with a separator. helpAddress: base address of the help pages; empty for
    /// the manual installed with the program.
    ShellHelpers(ProgramPlaces places, QString userDataFolder, QString helpAddress,
                 FrontEnd &frontEnd);

    /// Opens a help page; without "." in the name it is an ".htm" page. The page is opened through
    /// a shortcut file in the user data folder, as an HTML file is.
    void W_Help(const QString &page);
    /// Opens an HTML file through a shortcut in "Wrk", which is made when it is missing.
    void W_HtmView(const QString &path);
    /// Puts a shortcut to the program where the desktop's "send to" looks, and says where.
    void W_SendTo();
    /// Opens the path, or explores a folder; on something that is no folder, the one that holds it.
    void W_ExpFd(const QString &path, bool open);
    /// Lets the person pick a folder, starting at path where that exists; path is empty after
    /// Cancel. An empty title gets the default one.
    void BrowseFolder(QString &path, QString &title);

private:
    [[nodiscard]] QString helpBase() const;

    ProgramPlaces m_places;
    QString m_userDataFolder;
    QString m_helpAddress;
    FrontEnd &m_frontEnd;
};

} // namespace venlo
