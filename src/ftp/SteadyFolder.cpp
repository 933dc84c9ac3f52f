#include "ftp/SteadyFolder.h"

#include "platform/Files.h"

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

SteadyFolder::SteadyFolder(const QString &folder)
    : m_path(folder), m_real(realPath(folder)), m_identity(folderIdentity(folder))
{
}

bool SteadyFolder::leadsAway() const
{
    // Asked twice for every file; the same folder needs no look at each link of its path.
    if (!m_identity.isEmpty() && folderIdentity(m_path) == m_identity)
        return false;
    const QString now = realPath(m_path);
    return !now.isEmpty() && now != m_real;
}

QString SteadyFolder::words()
{
    return QStringLiteral("ﾌｫﾙﾀﾞがﾘﾝｸに変わりました");
}

} // namespace venlo
