#include "mainwin/FileOpener.h"

#include <utility>

#include <QFileInfo>

#include "platform/ShellOpen.h"

namespace venlo
{

FileOpener::FileOpener() : FileOpener(textEditorCommand()) {}

QStringList FileOpener::paths(const QString &selection)
{
    if (QFileInfo::exists(selection))
        return {selection};
    QStringList found;
    for (const QString &part : selection.split(QLatin1Char(','), Qt::SkipEmptyParts)) {
        const QFileInfo info(part);
        if (info.isAbsolute() && info.exists())
            found += part;
    }
    return found;
}

QStringList FileOpener::open(const QString &selection, int mode) const
{
    QStringList failed;
    for (const QString &path : paths(selection)) {
        if (!openOne(path, static_cast<OpenMode>(mode)))
            failed += path;
    }
    return failed;
}

bool FileOpener::openOne(const QString &path, OpenMode mode) const
{
    const bool folder = QFileInfo(path).isDir();
    switch (mode) {
    case OpenMode::Explore:
        return folder ? exploreFolder(path) : openWithAssociated(path);
    case OpenMode::Open:
        return openWithAssociated(path);
    case OpenMode::Editor:
        return folder || openInTextEditor(m_editor, path); // a folder is not for the editor
    }
    return true;
}

} // namespace venlo
