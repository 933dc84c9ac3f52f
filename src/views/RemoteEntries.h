#pragma once

#include <optional>

#include <QList>
#include <QString>

#include "views/EntryTag.h"

class QMimeData;

namespace venlo
{

/// One entry of the connected site as drags and the clipboard carry it between the panes.
struct RemoteEntry {
    QString dir; ///< normal form
    QString name;
    EntryTag tag = EntryTag::FL; ///< FD or FL
    bool operator==(const RemoteEntry &) const = default;
};

/// Entries of one site under the program's private type, which nobody else reads. The process and
/// the site are carried along: entries of another process or an earlier connection are not read.
void setRemoteEntries(QMimeData &data, const QString &site, const QList<RemoteEntry> &entries);
[[nodiscard]] bool hasRemoteEntries(const QMimeData &data);
/// Nothing when the data holds none of this process and site, or is damaged.
[[nodiscard]] std::optional<QList<RemoteEntry>> remoteEntries(const QMimeData &data,
                                                              const QString &site);

} // namespace venlo
