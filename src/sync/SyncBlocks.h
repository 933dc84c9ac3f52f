#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace venlo
{

/// Places of a pair that a synchronisation must keep its hands off, and why: what cannot be relied
/// on is neither ticked nor executed. Filled by the comparison; letter case does not count. Paths
/// are relative to the roots with a leading "/"; "/" is the root itself.
class SyncBlocks
{
public:
    /// Blocks the item and everything below it. With throughParents, an operation on a whole
    /// folder that holds the item is blocked too.
    void add(const QString &relative, const QString &why, bool throughParents = true);

    /// Why the item must not be touched, empty when it may.
    [[nodiscard]] QString why(const QString &relative) const;
    /// Why an operation on the whole folder must not run, empty when it may.
    [[nodiscard]] QString whyWhole(const QString &relative) const;
    [[nodiscard]] bool isEmpty() const { return m_items.isEmpty(); }

private:
    QHash<QString, QString> m_items;   ///< folded path -> why
    QHash<QString, QString> m_holders; ///< folded path of a folder that holds one -> why
};

} // namespace venlo
