#include "ftp/SteadyFolder.h"

#include <QFileInfo>

namespace venlo
{

namespace
{
QString realPath(const QString &folder)
{
    return QFileInfo(folder).canonicalFilePath();
}
} // namespace

SteadyFolder::SteadyFolder(const QString &folder) : m_path(folder), m_real(realPath(folder)) {}

bool SteadyFolder::leadsAway() const
{
    const QString now = realPath(m_path);
    return !now.isEmpty() && now != m_real;
}

QString SteadyFolder::words()
{
    return QStringLiteral("ﾌｫﾙﾀﾞがﾘﾝｸに変わりました");
}

} // namespace venlo
