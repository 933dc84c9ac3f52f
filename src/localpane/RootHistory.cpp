#include "localpane/RootHistory.h"

#include "localpane/FolderPaths.h"

namespace venlo
{

void RootHistory::enter(const QString &root)
{
    const QChar comma = QLatin1Char(',');
    // The last entry has no "," behind it.
    QString text = m_text + comma;
    const qsizetype at = text.indexOf(comma + root + comma, 0, nameCase());
    if (at >= 0)
        text.remove(at + 1, root.size() + 1);
    text.chop(1);
    m_text = comma + root + text;
}

QStringList RootHistory::roots() const
{
    return m_text.split(QLatin1Char(','), Qt::SkipEmptyParts);
}

} // namespace venlo
