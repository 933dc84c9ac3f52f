#pragma once

#include <QString>

namespace venlo
{

/// A local folder in use for longer than a moment. It tells whether its path leads somewhere else
/// by now: a link put in the place of the folder, or of one above it, would have files read and
/// written that nobody chose.
class SteadyFolder
{
public:
    /// folder: without a trailing separator.
    explicit SteadyFolder(const QString &folder);

    [[nodiscard]] const QString &path() const { return m_path; }
    /// Links in the path from the beginning are what the person wanted.
    [[nodiscard]] bool leadsAway() const;
    [[nodiscard]] static QString words();

private:
    QString m_path;
    QString m_real; ///< empty while there is no folder
};

} // namespace venlo
