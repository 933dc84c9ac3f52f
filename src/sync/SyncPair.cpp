#include "sync/SyncPair.h"

#include <QDir>

#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char slash('/');
constexpr QLatin1Char dot('.');

/// With the remote root "/", deeper rows come without their leading "/".
QString withSlash(const QString &relative)
{
    return relative.startsWith(slash) ? relative : slash + relative;
}
} // namespace

QString SyncPair::localPath(const QString &relative) const
{
    QString root = QDir::fromNativeSeparators(sLph);
    if (relative != dot) {
        while (root.endsWith(slash))
            root.chop(1);
        root += withSlash(relative);
    }
    return QDir::toNativeSeparators(root);
}

QString SyncPair::remotePath(const QString &relative) const
{
    return relative == dot ? sFph : remoteChild(sFph, withSlash(relative).mid(1));
}

QString relativeFile(const QString &sPh, const QString &sFL)
{
    QString relative;
    relative.reserve(sPh.size() + 1 + sFL.size());
    if (sPh != dot)
        relative += sPh;
    relative += slash;
    relative += sFL;
    return relative;
}

QString relativeParent(const QString &sPh)
{
    const auto last = sPh.lastIndexOf(slash);
    return last <= 0 ? QString(dot) : sPh.left(last);
}

} // namespace venlo
