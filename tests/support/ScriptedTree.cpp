#include "support/ScriptedTree.h"

namespace venlo::test
{

namespace
{

QDateTime usualTime()
{
    return {QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC};
}

QDateTime timeOr(const QDateTime &modified)
{
    return modified.isValid() ? modified.toUTC() : usualTime();
}

QByteArray below(const QByteArray &folder)
{
    return folder == "/" ? folder : folder + '/';
}

} // namespace

QByteArray ScriptedTree::parentOf(const QByteArray &path)
{
    const auto slash = path.lastIndexOf('/');
    return slash <= 0 ? QByteArray("/") : path.left(slash);
}

QByteArray ScriptedTree::resolve(const QByteArray &folder, const QByteArray &argument)
{
    const QByteArray whole = argument.startsWith('/') ? argument : folder + '/' + argument;
    QList<QByteArray> kept;
    const QList<QByteArray> parts = whole.split('/');
    for (const QByteArray &part : parts) {
        if (part == "..") {
            if (!kept.isEmpty())
                kept.removeLast();
        } else if (!part.isEmpty() && part != ".") {
            kept << part;
        }
    }
    return '/' + kept.join('/');
}

bool ScriptedTree::isFolder(const QByteArray &path) const
{
    if (path == "/")
        return true;
    const auto found = m_nodes.find(path);
    return found != m_nodes.end() && found->second.kind == Kind::Folder;
}

void ScriptedTree::makeParents(const QByteArray &path)
{
    for (QByteArray parent = parentOf(path); parent != "/"; parent = parentOf(parent))
        m_nodes.try_emplace(parent, Node{Kind::Folder, {}, usualTime()});
}

void ScriptedTree::put(const QByteArray &path, const QByteArray &bytes, const QDateTime &modified)
{
    const std::scoped_lock lock(m_mutex);
    makeParents(path);
    m_nodes[path] = {Kind::File, bytes, timeOr(modified)};
}

void ScriptedTree::makeFolder(const QByteArray &path, const QDateTime &modified)
{
    const std::scoped_lock lock(m_mutex);
    makeParents(path);
    m_nodes[path] = {Kind::Folder, {}, timeOr(modified)};
}

void ScriptedTree::makeLink(const QByteArray &path, const QByteArray &target)
{
    const std::scoped_lock lock(m_mutex);
    makeParents(path);
    m_nodes[path] = {Kind::Link, target, usualTime()};
}

void ScriptedTree::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_nodes.clear();
}

bool ScriptedTree::exists(const QByteArray &path) const
{
    return node(path).has_value();
}

std::optional<ScriptedTree::Node> ScriptedTree::node(const QByteArray &path) const
{
    const std::scoped_lock lock(m_mutex);
    if (path == "/")
        return Node{Kind::Folder, {}, usualTime()};
    const auto found = m_nodes.find(path);
    return found == m_nodes.end() ? std::nullopt : std::optional(found->second);
}

QByteArray ScriptedTree::file(const QByteArray &path) const
{
    const auto found = node(path);
    if (!found || found->kind != Kind::File)
        return {};
    return found->bytes.isNull() ? QByteArray("") : found->bytes;
}

QDateTime ScriptedTree::modified(const QByteArray &path) const
{
    const auto found = node(path);
    return found ? found->modified : QDateTime();
}

std::vector<ScriptedTree::Item> ScriptedTree::list(const QByteArray &folder) const
{
    const std::scoped_lock lock(m_mutex);
    const QByteArray prefix = below(folder);
    std::vector<Item> items;
    for (auto it = m_nodes.lower_bound(prefix); it != m_nodes.end(); ++it) {
        if (!it->first.startsWith(prefix))
            break;
        const QByteArray name = it->first.mid(prefix.size());
        if (!name.isEmpty() && !name.contains('/'))
            items.push_back({name, it->second});
    }
    return items;
}

QList<QByteArray> ScriptedTree::paths() const
{
    const std::scoped_lock lock(m_mutex);
    QList<QByteArray> all;
    for (const auto &[path, node] : m_nodes)
        all << (node.kind == Kind::Folder ? path + '/' : path);
    return all;
}

bool ScriptedTree::store(const QByteArray &path, const QByteArray &bytes)
{
    const std::scoped_lock lock(m_mutex);
    if (!isFolder(parentOf(path)) || isFolder(path))
        return false;
    m_nodes[path] = {Kind::File, bytes, QDateTime::currentDateTimeUtc()};
    return true;
}

bool ScriptedTree::make(const QByteArray &path)
{
    const std::scoped_lock lock(m_mutex);
    if (path == "/" || !isFolder(parentOf(path)))
        return false;
    return m_nodes.try_emplace(path, Node{Kind::Folder, {}, QDateTime::currentDateTimeUtc()})
        .second;
}

bool ScriptedTree::removeFile(const QByteArray &path)
{
    const std::scoped_lock lock(m_mutex);
    return !isFolder(path) && m_nodes.erase(path) == 1;
}

bool ScriptedTree::removeFolder(const QByteArray &path)
{
    const std::scoped_lock lock(m_mutex);
    if (path == "/" || !isFolder(path))
        return false;
    const auto inside = m_nodes.lower_bound(below(path));
    if (inside != m_nodes.end() && inside->first.startsWith(below(path)))
        return false;
    return m_nodes.erase(path) == 1;
}

bool ScriptedTree::rename(const QByteArray &from, const QByteArray &to)
{
    const std::scoped_lock lock(m_mutex);
    if (m_nodes.count(from) == 0 || !isFolder(parentOf(to)) || isFolder(to) ||
        to.startsWith(below(from)))
        return false;
    std::map<QByteArray, Node> moved;
    for (auto it = m_nodes.lower_bound(from); it != m_nodes.end() && it->first.startsWith(from);) {
        const bool inside = it->first == from || it->first.startsWith(below(from));
        if (inside)
            moved[to + it->first.mid(from.size())] = it->second;
        it = inside ? m_nodes.erase(it) : std::next(it);
    }
    for (auto &[path, node] : moved)
        m_nodes[path] = node;
    return true;
}

bool ScriptedTree::setModified(const QByteArray &path, const QDateTime &utc)
{
    const std::scoped_lock lock(m_mutex);
    const auto found = m_nodes.find(path);
    if (found == m_nodes.end() || !utc.isValid())
        return false;
    found->second.modified = utc;
    return true;
}

} // namespace venlo::test
