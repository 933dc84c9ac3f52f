#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace venlo
{

/// Name for a download that is not complete yet: ".venlo-", eight hexadecimal digits, ".part".
/// It begins with "." so that neither servers nor folders show it.
[[nodiscard]] QString newTemporaryName();

/// True for a name of that form; such a file is never published, compared or kept.
[[nodiscard]] bool isTemporaryName(const QString &fileName);

/// Deletes the files of that form that were last written before a time in this one folder, links
/// themselves and not what they point to, but not the given ones (absolute paths), which somebody
/// still writes; the number deleted.
int sweepTemporaryNames(const QString &folder, const QDateTime &before,
                        const QStringList &live = {});

} // namespace venlo
