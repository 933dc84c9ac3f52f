// How a node of the remote tree gets the folders of its directory.
#include "ftppane/RemoteBrowser.h"

#include <algorithm>
#include <optional>
#include <utility>

#include <QElapsedTimer>

#include "ftp/DirectoryCache.h"
#include "ftp/Session.h"
#include "shared/RemotePath.h"
#include "shared/WindowDesk.h"

namespace venlo
{

namespace
{
constexpr int showEvery = 200;       // ms between two looks at a slow reading
constexpr qsizetype mostAhead = 500; // folders that are asked about at a time
} // namespace

/// What is found out about the folders of a directory, one behind the other, with the message line
/// counting along where it takes long.
class RemoteBrowser::Children
{
public:
    Children(RemoteBrowser &browser, const QString &dir, const QStringList &names)
        : m_browser(browser), m_desk(browser.m_rooms.desk), m_dir(dir), m_names(names)
    {
        m_since.start();
    }
    ~Children()
    {
        if (m_told > 0)
            m_desk.setMessageLine(QString());
    }
    Children(const Children &) = delete;
    Children &operator=(const Children &) = delete;

    [[nodiscard]] bool atEnd() const { return m_next == m_names.size(); }
    [[nodiscard]] FolderTree::Entry next();
    /// True where what is known by now is to be shown, for it takes long.
    [[nodiscard]] bool showsNow() const { return m_since.elapsed() >= showEvery; }
    void shown()
    {
        tell(m_next);
        m_since.start();
    }

private:
    void lookAhead();
    void tell(qsizetype known);

    RemoteBrowser &m_browser;
    WindowDesk &m_desk;
    const QString &m_dir;
    const QStringList &m_names;
    qsizetype m_next = 0;
    std::vector<std::optional<bool>> m_ahead; ///< whether those that follow have sub-folders
    size_t m_used = 0;
    QElapsedTimer m_since;
    qsizetype m_told = 0; ///< how many were known when the message line said so last
};

FolderTree::Entry RemoteBrowser::Children::next()
{
    if (m_used == m_ahead.size())
        lookAhead();
    FolderTree::Entry entry;
    entry.text = m_names.at(m_next++);
    const QString dir = remoteChild(m_dir, entry.text);
    const std::optional<bool> has = m_ahead.at(m_used++);
    if (has)
        entry.hasSubFolders = *has || m_browser.isDoubtful(dir);
    else
        entry.hasSubFolders = m_browser.mayHaveSubFolders(dir);
    return entry;
}

void RemoteBrowser::Children::lookAhead()
{
    QStringList dirs;
    for (const QString &name : m_names.mid(m_next, mostAhead))
        dirs.append(remoteChild(m_dir, name));
    QElapsedTimer since;
    since.start();
    m_used = 0;
    const auto heard = [&](qsizetype directories) {
        if (since.elapsed() < showEvery)
            return;
        tell(m_next + directories);
        since.start();
    };
    QString misfits;
    m_ahead = m_browser.m_rooms.cache.caHasSubs(dirs, heard, misfits);
    if (!misfits.isEmpty())
        m_browser.m_misfits = misfits;
}

void RemoteBrowser::Children::tell(qsizetype known)
{
    m_told = std::max(m_told, known);
    m_desk.setMessageLine(
        m_dir + QStringLiteral(" のﾌｫﾙﾀﾞを調べています･･･ %1/%2").arg(m_told).arg(m_names.size()));
}

bool RemoteBrowser::mayHaveSubFolders(const QString &dir)
{
    if (m_rooms.desk.cancelled() || !m_rooms.session.connected()) {
        QString folders;
        QString files;
        m_rooms.cache.cachedNames(dir, folders, files);
        return !folders.isEmpty() || files.isEmpty() || isDoubtful(dir);
    }
    bool has = false;
    tolerant([&] { has = m_rooms.cache.caHasSub(dir); });
    return has || isDoubtful(dir);
}

/// Sub-folders appear as they become known: each one that was never listed costs the server's
/// answer. After a Cancel the rest appears unread.
bool RemoteBrowser::addChildren(const QPersistentModelIndex &parent, const QString &dir,
                                const QStringList &names)
{
    std::vector<FolderTree::Entry> ready;
    Children children(*this, dir, names);
    while (!children.atEnd()) {
        ready.push_back(children.next());
        if (!parent.isValid())
            break;
        if (!children.atEnd() && !children.showsNow())
            continue;
        if (!m_nodes.addChildren(parent, std::exchange(ready, {})))
            return false;
        if (!children.atEnd()) {
            children.shown();
            m_rooms.desk.yield();
        }
    }
    return true;
}

} // namespace venlo
