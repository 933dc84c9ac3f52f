// How one goes about in the remote tree.
#include "ftp/Session.h"
#include "ftppane/RemoteBrowser.h"
#include "shared/Flags.h"
#include "shared/RemotePath.h"
#include "shared/WindowDesk.h"
#include "views/PaneView.h"

namespace venlo
{

bool RemoteBrowser::goTo(const QString &path)
{
    const QString target = normalisedRemoteDir(path);
    if (!m_nodes.root().isValid())
        return false;
    if (!isBelowOrSameFolded(target, dirOf(m_nodes.root())))
        showPath(m_nodes.text(m_nodes.root()).section(QLatin1Char('/'), 0, 0));
    const FlagScope busy(m_busy);
    QPersistentModelIndex at = m_nodes.root();
    const QString start = dirOf(at);
    const QString inside = start == QLatin1String("/") ? target : target.mid(start.size());
    bool found = true;
    bool known = true;
    for (const QString &name : inside.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        const bool read = !m_nodes.isUnread(at) || readNode(at);
        const QModelIndex next = m_nodes.child(at, name, Qt::CaseInsensitive);
        found = next.isValid();
        known = read && at.isValid() && !isDoubtful(dirOf(at));
        if (!found)
            break;
        m_tree.expand(at);
        at = next;
    }
    if (!at.isValid())
        return false;
    show(at);
    if (!found && known)
        m_rooms.desk.message(path + QStringLiteral("  が存在しません"));
    else if (!found)
        sayUnlisted(path);
    return found;
}

void RemoteBrowser::sayUnlisted(const QString &path)
{
    if (m_rooms.session.connected() && !m_rooms.desk.cancelled())
        m_rooms.desk.message(path + QStringLiteral(" の一覧を取得できませんでした"));
}

void RemoteBrowser::enter(const QString &name)
{
    const FlagScope busy(m_busy);
    const QPersistentModelIndex at = m_shown;
    if (m_nodes.isUnread(at) && !readNode(at))
        return;
    QModelIndex child = m_nodes.child(at, name, Qt::CaseSensitive);
    if (!child.isValid() && at.isValid()) {
        syncNode(at);
        child = m_nodes.child(at, name, Qt::CaseSensitive);
    }
    if (!child.isValid())
        return;
    m_tree.expand(at);
    show(child);
}

void RemoteBrowser::toParent()
{
    const QModelIndex parent = m_shown.parent();
    if (parent.isValid())
        show(parent);
}

} // namespace venlo
