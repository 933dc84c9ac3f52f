#pragma once

#include <QString>

namespace venlo
{

/// Opens a file or folder with its associated program (the shell verb "open"). False, as in all of
/// these, when there is no such path or nothing to open it with; the program itself runs on its
/// own.
[[nodiscard]] bool openWithAssociated(const QString &path);
/// Shows a folder in the system's file manager (the shell verb "explore").
[[nodiscard]] bool exploreFolder(const QString &path);
/// Starts the system's file search on a folder; elsewhere than on Windows the file manager.
[[nodiscard]] bool searchFolder(const QString &path);

/// Command of the text editor: on Windows the one registered for viewing sources, otherwise
/// "notepad.exe"; elsewhere the system's handler for plain text. Read when the window loads.
[[nodiscard]] QString textEditorCommand();
/// The editor that a registered viewer command names: what stands before the last "/", where the
/// command has one (an option); "notepad.exe" for none.
[[nodiscard]] QString editorOfRegistered(const QString &command);
/// One command line for an editor and a file; the path is quoted when it holds a blank.
[[nodiscard]] QString editorCommandLine(const QString &editor, const QString &path);
/// Starts the editor on one file: on Windows with editorCommandLine; elsewhere the command is the
/// Exec line of a desktop entry, whose file codes (%f, %F, %u, %U) take the path.
[[nodiscard]] bool openInTextEditor(const QString &editor, const QString &path);

/// Writes a shortcut file that leads to target: a ".lnk" on Windows; elsewhere a ".desktop" file of
/// Type=Link (the suffix is replaced). The path written, empty when it failed.
[[nodiscard]] QString writeShortcut(const QString &path, const QString &target);
/// Opens a shortcut that writeShortcut made: itself on Windows, its target elsewhere. target is a
/// path or an absolute address.
[[nodiscard]] bool openShortcut(const QString &written, const QString &target);

} // namespace venlo
