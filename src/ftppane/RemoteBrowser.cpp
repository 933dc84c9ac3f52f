#include "ftppane/RemoteBrowser.h"

#include <utility>

#include "db/DbError.h"
#include "ftp/DirectoryCache.h"
#include "ftppane/OperationScopes.h"
#include "ftppane/RemoteRows.h"
#include "shared/Flags.h"
#include "shared/NameList.h"
#include "shared/RemotePath.h"
#include "shared/WindowDesk.h"
#include "views/PaneView.h"

namespace venlo
{

RemoteBrowser::RemoteBrowser(Rooms rooms, Views views, QObject *parent)
    : QObject(parent), m_rooms(rooms), m_nodes(views.nodes), m_tree(views.tree), m_rows(views.rows),
      m_list(views.list)
{
}

QString RemoteBrowser::dirOf(const QModelIndex &node) const
{
    const QString path = m_nodes.path(node);
    const auto slash = path.indexOf(QLatin1Char('/'));
    return slash < 0 ? QStringLiteral("/") : normalisedRemoteDir(path.mid(slash));
}

void RemoteBrowser::clear()
{
    const FlagScope busy(m_busy);
    ++m_fill;
    m_shown = QPersistentModelIndex();
    m_nodes.clear();
    m_rows.clear();
    Q_EMIT noted(QString());
}

void RemoteBrowser::tolerant(const std::function<void()> &ask)
{
    try {
        ask();
        return;
    } catch (const DbError &error) {
        m_misfits = error.words();
    }
    try {
        ask();
    } catch (const DirectoryCache::Misfits &) {
        // Nothing of the folder fits, so that it is listed each time.
    }
}

void RemoteBrowser::sayMisfits()
{
    const QString words = std::exchange(m_misfits, {});
    if (!words.isEmpty())
        m_rooms.desk.message(words);
}

bool RemoteBrowser::isDoubtful(const QString &dir) const
{
    if (!m_rooms.session.connected())
        return true;
    for (const auto &mark : m_rooms.cache.incompleteUnder(dir)) {
        if (mark.dir.compare(dir, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

QStringList RemoteBrowser::subFolders(const QString &dir)
{
    QString names;
    if (m_rooms.desk.cancelled()) {
        QString files;
        m_rooms.cache.cachedNames(dir, names, files);
    } else {
        tolerant([&] { names = m_rooms.cache.caSubFolds(dir); });
    }
    return splitNames(names);
}

void RemoteBrowser::showPath(const QString &path)
{
    if (path.isEmpty())
        return;
    const WaitCursor cursor;
    const FlagScope busy(m_busy);
    ++m_fill;
    m_shown = QPersistentModelIndex();
    const QPersistentModelIndex root =
        m_nodes.setRoot(path.endsWith(QLatin1Char('/')) ? path.chopped(1) : path);
    m_nodes.keys().restart(1);
    if (!readNode(root))
        m_nodes.markUnread(root);
    if (!root.isValid())
        return;
    m_tree.setExpanded(root, !m_nodes.isUnread(root));
    show(root);
}

bool RemoteBrowser::readNode(const QModelIndex &node)
{
    const WaitCursor cursor;
    const FlagScope busy(m_busy);
    const QPersistentModelIndex at(node);
    const QString dir = dirOf(node);
    const QStringList names = subFolders(dir);
    if (!at.isValid() || (names.isEmpty() && (isDoubtful(dir) || m_rooms.desk.cancelled())))
        return false;
    m_nodes.removeChildren(at);
    const bool all = addChildren(at, dir, names);
    sayMisfits();
    if (!all)
        Q_EMIT ranOut();
    return at.isValid();
}

void RemoteBrowser::show(const QModelIndex &node)
{
    const FlagScope busy(m_busy);
    m_shown = node;
    m_tree.setCurrentIndex(node);
    m_tree.scrollTo(node);
    fillList(node);
}

/// Closed, so that nobody looks at the marker; opening it asks again.
void RemoteBrowser::markUnread(const QModelIndex &node)
{
    const FlagScope busy(m_busy);
    m_nodes.markUnread(node);
    m_tree.collapse(node);
}

void RemoteBrowser::selectShown()
{
    const FlagScope busy(m_busy);
    if (m_shown.isValid())
        m_tree.setCurrentIndex(m_shown);
}

void RemoteBrowser::fillList(const QModelIndex &node)
{
    const WaitCursor cursor;
    const int fill = ++m_fill;
    m_shown = node;
    m_nodes.setOpenNode(node);
    m_rows.clear();
    std::vector<RowList::Row> rows = readRows(dirOf(node));
    if (fill == m_fill)
        addRows(std::move(rows));
}

std::vector<RowList::Row> RemoteBrowser::readRows(const QString &dir)
{
    const int fill = m_fill;
    QString folders;
    QString files;
    tolerant([&] { m_rooms.cache.caDirList(dir, folders, files); });
    std::vector<RowList::Row> rows = remoteRows(folders, files);
    if (fill == m_fill)
        noteTrust(dir, rows.empty());
    return rows;
}

void RemoteBrowser::addRows(std::vector<RowList::Row> rows)
{
    const bool all = m_rows.append(std::move(rows));
    sayMisfits();
    if (!all)
        Q_EMIT ranOut();
}

void RemoteBrowser::noteTrust(const QString &dir, bool empty)
{
    QString text;
    if (isDoubtful(dir))
        text = empty ? QStringLiteral("一覧を取得できませんでした (F5で再表示)")
                     : QStringLiteral("一覧の一部を取得できませんでした (F5で再表示)");
    Q_EMIT noted(text);
}

} // namespace venlo
