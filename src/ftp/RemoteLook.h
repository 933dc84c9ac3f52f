#pragma once

#include "ftp/OperationContext.h"

#include <QDeadlineTimer>
#include <QSet>
#include <QString>

namespace venlo
{

/// A last look at the server before something is deleted because the server did not show it. A
/// data connection that is closed early leaves a listing that nothing tells from a whole one; only
/// a second one does. Owned by RemoteOperations.
class RemoteLook
{
public:
    explicit RemoteLook(OperationContext &context) : m_context(context) {}

    /// Whether the directory holds an entry of this name, letter case ignored. A directory that the
    /// server refuses holds none. An error: there is no whole listing to tell by.
    [[nodiscard]] Result<bool> shows(const QString &dir, const QString &name);
    /// What was seen may not be so any more.
    void forget() { m_fresh = QDeadlineTimer(0); }

private:
    [[nodiscard]] Result<void> look(const QString &dir);

    OperationContext &m_context;
    QString m_dir;
    int m_connects = 0;    ///< see Session: another connect may have been to another server
    QSet<QString> m_names; ///< folded
    QDeadlineTimer m_fresh = QDeadlineTimer(0);
};

} // namespace venlo
