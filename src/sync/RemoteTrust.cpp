#include "sync/RemoteTrust.h"

#include "db/Database.h"
#include "shared/FrontEnd.h"
#include "shared/NameList.h"
#include "shared/RemotePath.h"
#include "sync/ComparisonWork.h"
#include "sync/FoldCase.h"

namespace venlo
{

bool RemoteTrust::judge(bool connected)
{
    const QString root = m_work.result.pair.sFph;
    if (!connected) {
        doubt(root, QStringLiteral("FTPｻｰﾊﾞｰへ接続されていません"));
        return true;
    }
    for (const DirectoryCache::Incomplete &mark : m_cache.incompleteUnder(root)) {
        const bool isRoot = mark.dir.compare(root, Qt::CaseInsensitive) == 0;
        if (!isRoot || !mark.refused || !knownAbsent(root)) {
            doubt(mark.dir, mark.why);
        } else if (m_work.result.pair.down) {
            m_work.frontEnd.message(root + QStringLiteral("  が存在しません"));
            return false;
        }
    }
    return true;
}

QString RemoteTrust::below(const QString &dir) const
{
    const QString root = m_work.result.pair.sFph;
    const QString inside = root == QLatin1String("/") ? dir : dir.mid(root.size());
    return inside.isEmpty() ? QStringLiteral("/") : inside;
}

void RemoteTrust::noteUnfinished()
{
    for (const auto &[dir, name] : m_cache.unfinishedUnder(m_work.result.pair.sFph)) {
        const QString inside = below(dir);
        const QString folder = inside == QLatin1String("/") ? QStringLiteral(".") : inside;
        if (!hasRow(folder, name))
            continue;
        const QString relative = relativeFile(folder, name);
        m_work.result.unfinished.insert(pathKey(relative));
        if (!m_work.result.pair.down)
            continue;
        m_work.result.unreliable = true;
        m_work.block(relative, QStringLiteral("送信が途中で切れたﾌｧｲﾙです"));
    }
}

/// With the server's root, its deeper rows come without their leading "/".
bool RemoteTrust::hasRow(const QString &folder, const QString &name)
{
    const QString cut = folder.startsWith(QLatin1Char('/')) ? folder.mid(1) : folder;
    return !m_work.rows.files(folder, name).empty() || !m_work.rows.files(cut, name).empty();
}

void RemoteTrust::doubt(const QString &dir, const QString &why)
{
    m_work.result.unreliable = true;
    m_work.result.blocks.add(below(dir), QStringLiteral("FTP側の一覧が不完全です: ") + dir);
    const QString line = dir + QStringLiteral(" の一覧が不完全なため同期しません: ") + why;
    m_work.frontEnd.setMessageLine(line);
    m_work.frontEnd.warn(line);
}

bool RemoteTrust::knownAbsent(const QString &dir)
{
    if (dir == QLatin1String("/"))
        return false;
    QString parent;
    QString leaf;
    sjSplitPath(dir, parent, leaf);
    QString ignored;
    bool listed = false;
    m_cache.caLoadDir(parent, DirectoryCache::Replace, ignored, listed);
    for (const DirectoryCache::Incomplete &mark : m_cache.incompleteUnder(parent)) {
        if (mark.dir.compare(parent, Qt::CaseInsensitive) == 0)
            return mark.refused && knownAbsent(parent);
    }
    if (!listed)
        return false;
    QString folders;
    QString files;
    m_cache.caDirNames(parent, folders, files);
    return !splitNames(folders).contains(leaf, Qt::CaseInsensitive) &&
           !splitNames(files).contains(leaf, Qt::CaseInsensitive);
}

} // namespace venlo
