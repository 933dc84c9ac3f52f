// How a whole subtree is listed anew.
#include "ftp/DirectoryCacheStat.h"
#include "ftp/DirectoryCacheWalk.h"
#include "ftp/ErrorLog.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
/// Closes the wait window whatever ends the work.
class WaitWindow
{
public:
    WaitWindow(FrontEnd &frontEnd, const QString &text) : m_frontEnd(frontEnd)
    {
        m_frontEnd.showWait(text);
    }
    ~WaitWindow() { m_frontEnd.closeWait(); }
    WaitWindow(const WaitWindow &) = delete;
    WaitWindow &operator=(const WaitWindow &) = delete;

private:
    FrontEnd &m_frontEnd;
};

/// Empties the message line whatever ends the work.
class MessageLine
{
public:
    MessageLine(FrontEnd &frontEnd, bool shown) : m_frontEnd(frontEnd), m_shown(shown) {}
    ~MessageLine()
    {
        if (m_shown)
            m_frontEnd.setMessageLine(QString());
    }
    MessageLine(const MessageLine &) = delete;
    MessageLine &operator=(const MessageLine &) = delete;

private:
    FrontEnd &m_frontEnd;
    bool m_shown;
};
} // namespace

void DirectoryCache::caRefresh(const QString &path)
{
    if (!m_session.connected())
        return;
    if (refusesPath(path)) {
        m_session.errorLog().LogError(QStringLiteral("sjCrntDir Err: ") + path);
        mark(path, QStringLiteral("the path holds the server's name"), false);
        return;
    }
    const QString dir = normalised(path);
    const WaitWindow wait(m_frontEnd, QStringLiteral("FTP側のﾃﾞｨﾚｸﾄﾘ情報を更新しています"));
    const MessageLine messageLine(m_frontEnd, !m_flags.unattendedTransfer);
    noticeSite();
    forgetPaths();
    Walk walk(*this, dir);
    std::vector<Pending> pending{{dir, {}, 0}};
    while (!pending.empty()) {
        listSome(pending);
        if (!pending.empty() && walk.isTooLarge(m_session.limits())) {
            walk.stop(QStringLiteral("the tree is too large"));
            break;
        }
    }
    walk.ended();
}

void DirectoryCache::listSome(std::vector<Pending> &pending)
{
    std::vector<Pending> oneByOne;
    if (m_stat->trust() == StatTrust::Trust::Yes && m_session.connected() &&
        !m_frontEnd.cancelled()) {
        oneByOne = m_stat->list(pending);
        m_frontEnd.yield();
    } else {
        oneByOne.push_back(std::move(pending.back()));
        pending.pop_back();
    }
    for (const Pending &one : oneByOne)
        listOne(one, pending);
}

void DirectoryCache::listOne(const Pending &one, std::vector<Pending> &pending)
{
    if (!m_gathering->mayList(one))
        return;
    m_gathering->tell(one.dir);
    QStringList subFolders;
    QString misfits;
    (void)load(one.dir, WithSubFolders, subFolders, misfits);
    m_frontEnd.yield();
    for (auto name = subFolders.crbegin(); name != subFolders.crend(); ++name)
        pending.push_back({remoteChild(one.dir, *name), {}, one.depth + 1});
}

} // namespace venlo
