#include "localpane/IconList.h"

#include "platform/FileLook.h"

namespace venlo
{

QString IconList::trIcnToPic(const QString &path)
{
    const FileIcon found = fileIcon(path);
    const QString number = QString::number(found.number);
    const QString key = QStringLiteral("ICON:") + number;
    const QChar dot = QLatin1Char('.');
    // What the system could not draw this time it may draw the next.
    if (!found.icon.isNull() && !m_loaded.contains(dot + number + dot)) {
        m_images.insert(key, found.icon);
        m_loaded += number + dot;
    }
    return key;
}

} // namespace venlo
