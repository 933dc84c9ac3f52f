// How the cache keeps in step with what the server confirmed.
#include "db/DisplayFormat.h"
#include "db/Recordset.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/ListingTime.h"
#include "shared/RemotePath.h"

#include <QFileInfo>

namespace venlo
{

namespace
{
const QStringList &keyColumns()
{
    static const QStringList columns{QStringLiteral("sDir"), QStringLiteral("sName")};
    return columns;
}

/// A "?" is dropped on the way into a statement, which would then name another entry.
bool losesText(const QString &text)
{
    return text.contains(QLatin1Char('?'));
}
} // namespace

void DirectoryCache::dropPrefix(const QString &statement, const QString &prefix)
{
    if (!change(statement, {prefix}))
        throw DbError(m_database.lastError());
    m_marks.clearPrefix(m_session.currentSite(), prefix);
}

void DirectoryCache::caAddFile(const QString &localPath, const QString &dir, const QString &name)
{
    addRow(localPath, dir, name, false);
}

void DirectoryCache::caAddFold(const QString &localPath, const QString &dir, const QString &name)
{
    addRow(localPath, dir, name, true);
}

void DirectoryCache::addRow(const QString &localPath, const QString &path, const QString &name,
                            bool folder)
{
    const QString dir = normalised(path);
    const QFileInfo local(localPath);
    const QDateTime modified = local.lastModified();
    const qint64 size = folder ? 0 : local.size();
    const QByteArray raw = rawName(dir, name); // an entry that was there keeps its bytes
    const bool loses = losesText(dir + name);
    const QString statement = folder
                                  ? QStringLiteral("Insert Into ? (sDir, bFd, sName, dDate, nSize)"
                                                   " Values ('?', ?, '?', #?#, 0)")
                                  : QStringLiteral("Insert Into ? (sDir, bFd, sName, dDate, nSize)"
                                                   " Values ('?', ?, '?', #?#, ?)");
    QVariantList values{dir, folder ? 1 : 0, name, FormatDateText(modified)};
    if (!folder)
        values.append(size);
    if (loses || !change(statement, values)) {
        // The row is there already, or the statement cannot name it: it takes the new values.
        const double day = toDayCount(QDateTime(modified.date(), modified.time(), Qt::UTC));
        try {
            const auto table = m_database.openTable(m_session.currentSite());
            (void)table->remove(keyColumns(), {dir, name});
            table->add({QStringLiteral("sDir"), QStringLiteral("bFd"), QStringLiteral("sName"),
                        QStringLiteral("dDate"), QStringLiteral("nSize")},
                       {dir, folder ? 1 : 0, name, day, size});
        } catch (const DbError &error) {
            // The file is on the server: a row that does not fit is no failed upload.
            m_session.eventLog().note(
                QStringLiteral("not cached: %1: %2").arg(remoteChild(dir, name), error.words()));
            return;
        }
    }
    rememberRawName(dir, name, raw);
}

void DirectoryCache::rememberRawName(const QString &dir, const QString &name,
                                     const QByteArray &bytes)
{
    const QVariant raw = bytes == name.toUtf8() ? QVariant() : QVariant(bytes);
    const auto table = m_database.openTable(m_session.currentSite());
    (void)table->change({QStringLiteral("raw name"), QStringLiteral("day only")}, {raw, 0},
                        keyColumns(), {dir, name});
}

void DirectoryCache::forgetFile(const QString &dir, const QString &name)
{
    const QVariantList entry{normalised(dir), name};
    if (losesText(dir + name))
        (void)m_database.openTable(m_session.currentSite())->remove(keyColumns(), entry);
    else
        (void)change(QStringLiteral("Delete From ? Where sDir='?' And sName='?' And bFd=0"), entry);
}

void DirectoryCache::forgetFolder(const QString &path, const QString &name)
{
    const QString dir = normalised(path);
    (void)change(QStringLiteral("Delete From ? Where sDir='?' And sName='?' And bFd=1"),
                 {dir, name});
    dropPrefix(QStringLiteral("Delete From ? Where sDir Like '?*'"), remoteChild(dir, name));
    m_rawPaths.clear();
}

void DirectoryCache::renamed(const QString &path, const QString &oldName, const QString &newName,
                             bool folder)
{
    const QString dir = normalised(path);
    if (folder) {
        const QString oldPath = remoteChild(dir, oldName);
        (void)change(
            QStringLiteral("Update ? Set sName='?' Where sDir='?' And sName='?' And bFd=1"),
            {newName, dir, oldName});
        (void)change(
            QStringLiteral("Update ? Set sDir='?' + Mid(sDir,?) Where sDir Like '?*'"),
            {remoteChild(dir, newName), static_cast<qlonglong>(oldPath.size() + 1), oldPath});
        m_marks.movePrefix(m_session.currentSite(), oldPath, remoteChild(dir, newName));
    } else {
        (void)change(
            QStringLiteral("Update ? Set sName='?' Where sDir='?' And sName='?' And bFd=0"),
            {newName, dir, oldName});
    }
    m_rawPaths.clear();
    rememberRawName(dir, newName, m_session.client().codec().encode(newName));
}

void DirectoryCache::folderMade(const QString &path, const QString &name)
{
    const QString dir = normalised(path);
    const QDateTime now = QDateTime::currentDateTime();
    try {
        const auto table = m_database.openTable(m_session.currentSite());
        (void)table->remove(keyColumns(), {dir, name});
        table->add({QStringLiteral("sDir"), QStringLiteral("bFd"), QStringLiteral("sName"),
                    QStringLiteral("dDate"), QStringLiteral("nSize")},
                   {dir, 1, name, toDayCount(QDateTime(now.date(), now.time(), Qt::UTC)), 0});
        rememberRawName(dir, name, m_session.client().codec().encode(name));
    } catch (const DbError &error) {
        m_session.eventLog().note(
            QStringLiteral("not cached: %1: %2").arg(remoteChild(dir, name), error.words()));
    }
}

} // namespace venlo
