#include "sync/RemoteGathering.h"

#include <cmath>

#include <QDate>

#include "db/Database.h"
#include "db/DisplayFormat.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "platform/TemporaryName.h"
#include "shared/FrontEnd.h"
#include "shared/RemotePath.h"
#include "sync/ComparisonWork.h"
#include "sync/FoldCase.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char slash('/');

QString minuteText(const QVariant &dDate)
{
    return FormatMinuteText(fromDayCount(dDate.toDouble()));
}

/// Such a name is in no row: the statement that is meant for it is logged.
bool breaksStatements(const QString &relative)
{
    return relative.contains(QLatin1Char('\''));
}

/// Days between two "yy/MM/dd hh:mm" texts.
qint64 daysApart(const QString &one, const QString &other)
{
    const auto day = [](const QString &text) {
        return QDate::fromString(text.left(8), QStringLiteral("yy/MM/dd"));
    };
    return std::abs(day(one).daysTo(day(other)));
}
} // namespace

RemoteGathering::RemoteGathering(ComparisonWork &work, DirectoryCache &cache, const QString &site,
                                 ErrorLog &errorLog)
    : m_work(work), m_cache(cache), m_site(site), m_errorLog(errorLog),
      m_root(work.result.pair.sFph)
{
}

bool RemoteGathering::gather()
{
    addRoot();
    addFolders();
    addFiles();
    if (!m_broken.isEmpty())
        m_work.tellBroken(m_broken);
    return m_ok && !m_work.result.cancelled;
}

QString RemoteGathering::below(const QString &path) const
{
    return path.mid(m_root.size());
}

void RemoteGathering::addRoot()
{
    QString parent;
    QString leaf;
    sjSplitPath(m_root, parent, leaf);
    const Rows rows = ask(QStringLiteral("Select sDir, sName, dDate From ?"
                                         " Where bFd = 1 And sDir= '?' And sName='?'"),
                          {m_site, parent, leaf});
    if (rows.count() == 0)
        return;
    m_work.rows.addRemoteFolder(QStringLiteral("."), minuteText(rows.at(2, 0)));
}

void RemoteGathering::addFolders()
{
    const Rows rows = ask(QStringLiteral("Select sDir, sName, dDate From ?"
                                         " Where bFd = 1 And (sDir Like '?*')"
                                         " Order By sDir, sName"),
                          {m_site, m_root});
    for (int i = 0; i < rows.count() && !m_work.stopped(); ++i) {
        const QString path = rows.at(0, i).toString() + slash + rows.at(1, i).toString();
        const QString relative = below(path);
        m_work.blockIfStripped(relative);
        m_work.remoteFolders.insert(foldCase(relative), relative);
        const QString time = minuteText(rows.at(2, i));
        if (breaksStatements(relative))
            failed(filled(QStringLiteral("Insert Into tbFold (sPh, sUL, sUF, sEd)"
                                         " Values ('?', '', '?', '') "),
                          {relative, time}),
                   {}, path);
        else
            m_work.rows.addRemoteFolder(relative, time);
    }
}

void RemoteGathering::addFiles()
{
    const Rows rows = ask(QStringLiteral("Select sDir, sName, dDate, nSize From ?"
                                         " Where bFd = 0 And sDir Like '?*' Order By sDir, sName"),
                          {m_site, m_root});
    for (int i = 0; i < rows.count() && !m_work.stopped(); ++i) {
        const QString dir = rows.at(0, i).toString();
        const QString name = rows.at(1, i).toString();
        if (isTemporaryName(name))
            continue;
        const QString inside = below(dir);
        const QString folder = inside.isEmpty() ? QStringLiteral(".") : inside;
        const QString relative = relativeFile(folder, name);
        m_work.blockIfStripped(relative);
        m_work.remoteFiles.insert(foldCase(relative), relative);
        const QString time = minuteText(rows.at(2, i));
        if (breaksStatements(relative))
            failed(filled(QStringLiteral("Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd)"
                                         " Values ('?', '?', '', 0, '?', ?, '') "),
                          {folder, name, time, rows.at(3, i)}),
                   {}, remoteChild(dir, name));
        else
            m_work.rows.addRemoteFile(folder, name, time, rows.at(3, i).toLongLong());
    }
}

Rows RemoteGathering::ask(const QString &sql, const QVariantList &values)
{
    try {
        return m_work.database.query(sql, values);
    } catch (const DbError &error) {
        const bool quote = error.brokenBy().contains(QLatin1Char('\''));
        failed(filled(sql, values), error.words(), quote ? error.brokenBy() : QString());
        return {};
    }
}

void RemoteGathering::failed(const QString &statement, const QString &words, const QString &path)
{
    m_ok = false;
    m_errorLog.LogError(QStringLiteral("ftSync Err SQL=") + statement);
    if (path.isEmpty())
        m_work.frontEnd.warn(words);
    else
        m_broken.append(path);
}

void RemoteGathering::refineDays()
{
    for (const auto &[dir, name] : m_cache.dayOnlyUnder(m_root)) {
        if (m_work.stopped())
            return;
        refine(dir, name);
    }
}

void RemoteGathering::refine(const QString &dir, const QString &name)
{
    const QString inside = below(dir);
    const QString folder = inside.isEmpty() ? QStringLiteral(".") : inside;
    const auto rows = m_work.rows.files(folder, name);
    if (rows.empty() || rows.front()->sUL.isEmpty() ||
        daysApart(rows.front()->sUL, rows.front()->sUF) > 1)
        return;
    const auto day = m_cache.refineTime(dir, name);
    if (!day)
        return;
    for (WorkRows::File *row : rows)
        row->sUF = minuteText(*day);
}

} // namespace venlo
