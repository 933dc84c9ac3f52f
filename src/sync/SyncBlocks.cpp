#include "sync/SyncBlocks.h"

#include "sync/FoldCase.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char slash('/');

/// The folder above a key; empty above the root.
QString above(const QString &key)
{
    if (key == slash)
        return {};
    const auto last = key.lastIndexOf(slash);
    return last == 0 ? QString(slash) : key.left(last);
}
} // namespace

void SyncBlocks::add(const QString &relative, const QString &why, bool throughParents)
{
    const QString key = pathKey(relative);
    m_items.insert(key, why);
    if (!throughParents)
        return;
    for (QString folder = above(key); !folder.isEmpty(); folder = above(folder)) {
        if (!m_holders.contains(folder))
            m_holders.insert(folder, why);
    }
}

QString SyncBlocks::why(const QString &relative) const
{
    if (m_items.isEmpty())
        return {};
    for (QString key = pathKey(relative); !key.isEmpty(); key = above(key)) {
        const auto found = m_items.constFind(key);
        if (found != m_items.constEnd())
            return *found;
    }
    return {};
}

QString SyncBlocks::whyWhole(const QString &relative) const
{
    const QString own = why(relative);
    return own.isEmpty() ? m_holders.value(pathKey(relative)) : own;
}

} // namespace venlo
