#pragma once

#include <utility>

#include <QString>
#include <QStringList>

namespace venlo
{

/// What the local pane's menu entries open files with.
enum class OpenMode {
    Explore = 0, ///< a folder in the file manager, a file with its associated program
    Open = 1,    ///< with the associated program
    Editor = 2   ///< each file in the text editor
};

/// Opens local files for the main window. The text editor is looked up once.
class FileOpener
{
public:
    FileOpener();
    explicit FileOpener(QString editor) : m_editor(std::move(editor)) {}

    /// selection: one path, or several separated by ",". What could not be opened.
    [[nodiscard]] QStringList open(const QString &selection, int mode) const;

    /// A text that names an existing entry is one path; otherwise its parts are, where they are
    /// absolute paths of existing entries (names may hold ",").
    [[nodiscard]] static QStringList paths(const QString &selection);

private:
    [[nodiscard]] bool openOne(const QString &path, OpenMode mode) const;

    QString m_editor;
};

} // namespace venlo
