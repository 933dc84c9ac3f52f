// How the cache keeps in step with what the server confirmed.
#include "db/DisplayFormat.h"
#include "db/JetCatalogue.h"
#include "db/Recordset.h"
#include "db/Store.h"
#include "db/TextFold.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/FileStamp.h"
#include "ftp/ListingTime.h"
#include "platform/EntryLook.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
const QStringList &keyColumns()
{
    static const QStringList columns{QStringLiteral("sDir"), QStringLiteral("sName")};
    return columns;
}

QStringList firstColumn(const Rows &rows)
{
    QStringList texts;
    for (int row = 0; row < rows.count(); ++row)
        texts.append(rows.at(0, row).toString());
    return texts;
}

/// Wildcards of "Like" would reach other directories.
bool hasWildcard(const QString &text)
{
    return text.contains(QLatin1Char('?')) || text.contains(QLatin1Char('*'));
}
} // namespace

QStringList DirectoryCache::directoriesFrom(const QString &prefix)
{
    const QString pattern = prefix + QLatin1Char('*');
    const QString site = quotedName(m_session.currentSite());
    if (const auto bounds = likeBounds(pattern); bounds && !hasWildcard(prefix)) {
        // From one directory to the next in the index, past the rows of each.
        const QString sql = QStringLiteral(
            "WITH RECURSIVE d(dir) AS (SELECT min(sDir) FROM %1 WHERE sDir >= ?1 AND sDir < ?2 "
            "UNION ALL SELECT (SELECT min(sDir) FROM %1 WHERE sDir > dir AND sDir < ?2) FROM d "
            "WHERE dir IS NOT NULL) SELECT dir FROM d WHERE dir IS NOT NULL AND venlo_like(dir, "
            "?3)");
        return firstColumn(
            m_database.store().query(sql.arg(site), {bounds->low, bounds->high, pattern}));
    }
    QStringList dirs;
    for (const QString &dir : firstColumn(
             m_database.store().query(QStringLiteral("SELECT DISTINCT sDir FROM ") + site))) {
        if (dir.startsWith(prefix, Qt::CaseInsensitive))
            dirs.append(dir);
    }
    return dirs;
}

bool DirectoryCache::mayHaveRowsFrom(const QString &prefix)
{
    const auto bounds = likeBounds(prefix + QLatin1Char('*'));
    if (!bounds)
        return true;
    const Rows rows = m_database.store().query(
        QStringLiteral("SELECT EXISTS (SELECT 1 FROM %1 WHERE sDir >= ? AND sDir < ?)")
            .arg(quotedName(m_session.currentSite())),
        {bounds->low, bounds->high});
    return rows.at(0, 0).toInt() == 1;
}

void DirectoryCache::dropRows(const QString &dir)
{
    const auto table = m_database.openTable(m_session.currentSite());
    (void)table->remove({QStringLiteral("sDir")}, {dir});
}

void DirectoryCache::dropPrefix(const QString &prefix)
{
    if (hasWildcard(prefix)) {
        for (const QString &dir : directoriesFrom(prefix))
            dropRows(dir);
    } else if (!change(QStringLiteral("Delete From ? Where sDir Like '?*'"), {prefix})) {
        throw DbError(m_database.lastError());
    }
    m_marks.clearPrefix(m_session.currentSite(), prefix);
    forgetPaths();
}

void DirectoryCache::caAddFile(const QString &localPath, const QString &dir, const QString &name)
{
    const EntryLook local(localPath);
    addRow(local.lastModified(), local.size(), dir, name, false);
}

void DirectoryCache::caAddFile(const FileStamp &sent, const QString &dir, const QString &name)
{
    addRow(sent.modified, sent.size, dir, name, false);
}

void DirectoryCache::caAddFold(const QString &localPath, const QString &dir, const QString &name)
{
    addRow(EntryLook(localPath).lastModified(), 0, dir, name, true);
}

void DirectoryCache::addRow(const QDateTime &modified, qint64 size, const QString &path,
                            const QString &name, bool folder)
{
    const QString dir = normalised(path);
    const QByteArray raw = rawName(dir, name); // an entry that was there keeps its bytes
    const QString sql = folder ? QStringLiteral("Insert Into ? (sDir, bFd, sName, dDate, nSize)"
                                                " Values ('?', ?, '?', #?#, 0)")
                               : QStringLiteral("Insert Into ? (sDir, bFd, sName, dDate, nSize)"
                                                " Values ('?', ?, '?', #?#, ?)");
    QVariantList values{dir, folder ? 1 : 0, name, FormatDateText(modified)};
    if (!folder)
        values.append(size);
    const double day = toDayCount(QDateTime(modified.date(), modified.time(), Qt::UTC));
    // The row is there already, or the statement cannot name it: it takes the new values.
    const bool made = change(sql, values) || replaceRow(dir, name, folder, day, size);
    if (made && raw != name.toUtf8()) // a new row stands for the name's own bytes
        rememberRawName(dir, name, raw);
}

bool DirectoryCache::replaceRow(const QString &dir, const QString &name, bool folder, double day,
                                qint64 size)
{
    try {
        Transaction transaction(m_database);
        const auto table = m_database.openTable(m_session.currentSite());
        (void)table->remove(keyColumns(), {dir, name});
        table->add({QStringLiteral("sDir"), QStringLiteral("bFd"), QStringLiteral("sName"),
                    QStringLiteral("dDate"), QStringLiteral("nSize")},
                   {dir, folder ? 1 : 0, name, day, size});
        transaction.commit();
        return true;
    } catch (const DbError &error) {
        // The entry is on the server: a row that does not fit is no failed operation.
        m_session.eventLog().note(QStringLiteral("not cached: ") + remoteChild(dir, name) +
                                  QStringLiteral(": ") + error.words());
        return false;
    }
}

void DirectoryCache::rememberRawName(const QString &dir, const QString &name,
                                     const QByteArray &bytes)
{
    const QVariant raw = bytes == name.toUtf8() ? QVariant() : QVariant(bytes);
    const auto table = m_database.openTable(m_session.currentSite());
    (void)table->change({QStringLiteral("raw name"), QStringLiteral("day only")}, {raw, 0},
                        keyColumns(), {dir, name});
}

void DirectoryCache::forgetFile(const QString &path, const QString &name)
{
    const QString dir = normalised(path);
    tryChange(QStringLiteral("Delete From ? Where sDir='?' And sName='?' And bFd=0"), {dir, name});
    m_unfinished.end(m_session.currentSite(), dir, name);
}

void DirectoryCache::forgetFolder(const QString &path, const QString &name)
{
    const QString dir = normalised(path);
    const QString folder = remoteChild(dir, name);
    Transaction transaction(m_database);
    tryChange(QStringLiteral("Delete From ? Where sDir='?' And sName='?' And bFd=1"), {dir, name});
    dropPrefix(folder);
    for (const auto &[below, file] : unfinishedUnder(folder))
        m_unfinished.end(m_session.currentSite(), below, file);
    transaction.commit();
}

void DirectoryCache::renamed(const QString &path, const QString &oldName, const QString &newName,
                             bool folder)
{
    const QString dir = normalised(path);
    Transaction transaction(m_database);
    tryChange(QStringLiteral("Update ? Set sName='?' Where sDir='?' And sName='?' And bFd=?"),
              {newName, dir, oldName, folder ? 1 : 0});
    const QString site = m_session.currentSite();
    if (folder) {
        movePrefix(remoteChild(dir, oldName), remoteChild(dir, newName));
    } else if (m_unfinished.noted(site, dir, oldName)) {
        m_unfinished.end(site, dir, oldName);
        m_unfinished.begin(site, dir, newName);
    }
    forgetPaths();
    rememberRawName(dir, newName, m_session.client().codec().encode(newName));
    transaction.commit();
}

void DirectoryCache::movePrefix(const QString &oldPath, const QString &newPath)
{
    const QString site = m_session.currentSite();
    if (hasWildcard(oldPath)) {
        const auto table = m_database.openTable(site);
        for (const QString &dir : directoriesFrom(oldPath))
            (void)table->change({QStringLiteral("sDir")}, {newPath + dir.mid(oldPath.size())},
                                {QStringLiteral("sDir")}, {dir});
    } else {
        tryChange(QStringLiteral("Update ? Set sDir='?' + Mid(sDir,?) Where sDir Like '?*'"),
                  {newPath, static_cast<qlonglong>(oldPath.size() + 1), oldPath});
    }
    m_marks.movePrefix(site, oldPath, newPath);
    for (const auto &[dir, file] : m_unfinished.under(site, oldPath)) {
        m_unfinished.end(site, dir, file);
        m_unfinished.begin(site, newPath + dir.mid(oldPath.size()), file);
    }
}

void DirectoryCache::grouped(const std::function<void()> &upkeep)
{
    m_database.store().grouped(upkeep);
}

void DirectoryCache::madeEmpty(const QString &dir)
{
    noticeSite();
    m_madeHere.insert(dir);
}

void DirectoryCache::folderMade(const QString &path, const QString &name)
{
    const QString dir = normalised(path);
    const QDateTime now = QDateTime::currentDateTime();
    if (replaceRow(dir, name, true, toDayCount(QDateTime(now.date(), now.time(), Qt::UTC)), 0))
        rememberRawName(dir, name, m_session.client().codec().encode(name));
}

} // namespace venlo
