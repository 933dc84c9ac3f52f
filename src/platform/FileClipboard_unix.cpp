#include "platform/FileClipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

namespace venlo
{

void putFilesOnClipboard(const QStringList &paths, quint32 effect)
{
    QClipboard *clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setMimeData(fileClipData(paths, effect).release()); // the clipboard owns it
}

FileClip filesOnClipboard()
{
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    return data == nullptr ? FileClip() : readFileClipData(*data);
}

} // namespace venlo
