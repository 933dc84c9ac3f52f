// How a whole subtree is listed anew.
#include "ftp/DirectoryCacheWalk.h"
#include "ftp/ErrorLog.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr int maxDepth = 128;

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
    caRecTree(dir);
    walk.ended();
}

void DirectoryCache::caRecTree(const QString &dir)
{
    std::vector<Pending> pending{{dir, {}, 0}};
    while (!pending.empty()) {
        std::vector<Pending> oneByOne;
        if (m_stat.trust() == StatTrust::Trust::Yes && m_session.connected() &&
            !m_frontEnd.cancelled()) {
            oneByOne = listByStat(pending);
            m_frontEnd.yield();
        } else {
            oneByOne.push_back(std::move(pending.back()));
            pending.pop_back();
        }
        for (const Pending &one : oneByOne)
            listOne(one, pending);
        if (!pending.empty() && m_walk->isTooLarge(m_session.limits())) {
            m_walk->stop(QStringLiteral("the tree is too large"));
            return;
        }
    }
}

void DirectoryCache::listOne(const Pending &one, std::vector<Pending> &pending)
{
    if (!mayList(one))
        return;
    tellListing(one.dir);
    QStringList subFolders;
    QString misfits;
    (void)load(one.dir, WithSubFolders, subFolders, misfits);
    m_frontEnd.yield();
    for (auto name = subFolders.crbegin(); name != subFolders.crend(); ++name)
        pending.push_back({remoteChild(one.dir, *name), {}, one.depth + 1});
}

bool DirectoryCache::mayList(const Pending &one)
{
    const bool tooDeep = one.depth > maxDepth;
    if (tooDeep)
        m_walk->leaveOut(one.dir, QStringLiteral("nested too deeply"));
    else if (m_frontEnd.cancelled() || !m_session.connected())
        m_walk->leaveOut(one.dir, QStringLiteral("not listed"));
    else
        return true;
    return false;
}

void DirectoryCache::tellListing(const QString &dir)
{
    if (!m_flags.unattendedTransfer)
        m_frontEnd.setMessageLine(dir + QStringLiteral(" ﾌｫﾙﾀﾞとﾌｧｲﾙ情報を記録しています･･･"));
}

} // namespace venlo
