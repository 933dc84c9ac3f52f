#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char slash('/');

bool below(const QString &path, const QString &dir, Qt::CaseSensitivity sensitivity)
{
    if (dir == slash || path.compare(dir, sensitivity) == 0)
        return true;
    return path.startsWith(dir + slash, sensitivity);
}
} // namespace

QString normalisedRemoteDir(const QString &dir)
{
    if (dir.isEmpty() || dir == slash)
        return QString(slash);
    QString normal = dir;
    if (normal.endsWith(slash))
        normal.chop(1);
    if (!normal.startsWith(slash))
        normal.prepend(slash);
    return normal;
}

QString remoteChild(const QString &dir, const QString &name)
{
    return (dir == slash ? QString() : dir) + slash + name;
}

void sjSplitPath(const QString &path, QString &dir, QString &name)
{
    const auto last = path.lastIndexOf(slash);
    dir = last <= 0 ? QString(slash) : path.left(last);
    name = path.mid(last + 1);
}

bool isBelowOrSame(const QString &path, const QString &dir)
{
    return below(path, dir, Qt::CaseSensitive);
}

bool isBelowOrSameFolded(const QString &path, const QString &dir)
{
    return below(path, dir, Qt::CaseInsensitive);
}

} // namespace venlo
