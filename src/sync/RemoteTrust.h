#pragma once

#include <QString>

#include "ftp/DirectoryCache.h"

namespace venlo
{

class ComparisonWork;

/// Decides after a refresh what of the remote tree can be relied on. Directories that were not
/// listed whole are blocked; a root that the server refuses and that its parent's whole listing
/// does not show is known not to exist.
class RemoteTrust
{
public:
    RemoteTrust(ComparisonWork &work, DirectoryCache &cache) : m_work(work), m_cache(cache) {}

    /// False, after a message, when the root of a download does not exist. Throws DbError.
    [[nodiscard]] bool judge(bool connected);
    /// Notes files whose upload was cut: up they are sent again, down they are blocked. To be
    /// called once both sides are gathered. Throws DbError.
    void noteUnfinished();

private:
    void doubt(const QString &dir, const QString &why);
    [[nodiscard]] QString below(const QString &dir) const;
    [[nodiscard]] bool hasRow(const QString &folder, const QString &name);
    [[nodiscard]] bool knownAbsent(const QString &dir);

    ComparisonWork &m_work;
    DirectoryCache &m_cache;
};

} // namespace venlo
