#pragma once

#include <vector>

#include <QHash>
#include <QString>

namespace venlo
{

class ComparisonWork;
struct LocalEntry;

/// Merges the local tree into the work rows, depth first: a row that the FTP side made takes the
/// local columns, anything else becomes a row of its own. Links to folders are never walked, since
/// they may lead anywhere and round in circles.
class LocalGathering
{
public:
    LocalGathering(ComparisonWork &work, const QString &root);

    /// False when a folder cannot be read or a file cannot be recorded, after the person was told,
    /// and when the person stopped it. Throws DbError.
    [[nodiscard]] bool walk(const QString &current);

private:
    [[nodiscard]] QString relativeTo(const QString &current) const;
    [[nodiscard]] bool addFiles(const QString &current, const QString &relative,
                                const std::vector<LocalEntry> &entries);
    [[nodiscard]] bool addFolder(const QString &current, const QString &relative);
    [[nodiscard]] bool addFile(const QString &current, const QString &relative,
                               const LocalEntry &entry);
    static void requireFits(const QString &text);
    void pass(const QString &path, const LocalEntry &entry);
    [[nodiscard]] bool refuse(const QString &path, const QString &why);
    /// path: relative to the root.
    void compareSpelling(const QString &current, const QString &path, const LocalEntry &entry);
    void blockTwins(const QString &relative, const std::vector<LocalEntry> &entries);

    ComparisonWork &m_work;
    QString m_root; ///< "/" separators, none at the end
};

} // namespace venlo
