// What the cache answers from its rows.
#include "ftp/DirectoryCache.h"

#include "db/DisplayFormat.h"
#include "db/JetCatalogue.h"
#include "db/Recordset.h"
#include "db/Store.h"
#include "ftp/DirectoryCacheStat.h"
#include "shared/NameList.h"

namespace venlo
{

namespace
{
/// Of a row that begins with the time, the size and whether the time is a day's only.
DirectoryCache::CachedFile fileOf(const Rows &rows, int row)
{
    return {rows.at(0, row).toDouble(), rows.at(1, row).toLongLong() - 1, // see cachedSizeOf
            rows.at(2, row).toLongLong() == 1};
}
} // namespace

DirectoryCache::DirectoryCache(Session &session, Database &database, FrontEnd &frontEnd,
                               Flags &flags)
    : m_session(session), m_database(database), m_frontEnd(frontEnd), m_flags(flags),
      m_current(session, *this, frontEnd, flags), m_marks(database), m_unfinished(database),
      m_stat(std::make_unique<StatLister>(*this))
{
}

DirectoryCache::~DirectoryCache() = default;

bool DirectoryCache::isLoaded(const QString &dir)
{
    noticeSite();
    if (m_madeHere.contains(dir))
        return true;
    const Rows rows = ask(QStringLiteral("Select Count(*) From ? Where sDir='?'"), {dir});
    return rows.count() > 0 && rows.at(0, 0).toLongLong() > 0;
}

QString DirectoryCache::names(const QString &sql, const QString &dir)
{
    bool ok = false;
    QString ignored;
    caLoadDir(dir, IfAbsent, ignored, ok);
    if (!ok)
        return {};
    const Rows rows = ask(sql, {normalised(dir)});
    QStringList list;
    for (int row = 0; row < rows.count(); ++row)
        list.append(rows.at(0, row).toString());
    return joinNames(list);
}

QString DirectoryCache::caSubFolds(const QString &dir)
{
    return names(QStringLiteral("Select sName From ? Where sDir='?' And bFd=1 Order By sName"),
                 dir);
}

QString DirectoryCache::caFileNames(const QString &dir)
{
    return names(QStringLiteral("Select sName From ? Where sDir='?' And bFd=0 Order By sName"),
                 dir);
}

void DirectoryCache::caDirList(const QString &dir, QString &folderLines, QString &fileLines)
{
    folderLines.clear();
    fileLines.clear();
    bool ok = false;
    QString ignored;
    caLoadDir(dir, IfAbsent, ignored, ok);
    if (!ok)
        return;
    const Rows rows =
        ask(QStringLiteral("Select bFd, sName, dDate, nSize From ? Where sDir='?' Order By sName"),
            {normalised(dir)});
    QStringList folders;
    QStringList files;
    for (int row = 0; row < rows.count(); ++row) {
        const QString line = rows.at(1, row).toString() + QLatin1Char('\t') +
                             FormatDateText(fromDayCount(rows.at(2, row).toDouble()));
        if (rows.at(0, row).toLongLong() == 1)
            folders.append(line);
        else
            files.append(line + QLatin1Char('\t') + FormatSizeText(rows.at(3, row).toLongLong()));
    }
    folderLines = joinNames(folders);
    fileLines = joinNames(files);
}

void DirectoryCache::caDirNames(const QString &dir, QString &folderNames, QString &fileNames)
{
    folderNames.clear();
    fileNames.clear();
    bool ok = false;
    QString ignored;
    caLoadDir(dir, IfAbsent, ignored, ok);
    if (ok)
        cachedNames(dir, folderNames, fileNames);
}

void DirectoryCache::cachedNames(const QString &dir, QString &folderNames, QString &fileNames)
{
    const Rows rows = ask(QStringLiteral("Select bFd, sName From ? Where sDir='?' Order By sName"),
                          {normalised(dir)});
    QStringList folders;
    QStringList files;
    for (int row = 0; row < rows.count(); ++row)
        (rows.at(0, row).toLongLong() == 1 ? folders : files).append(rows.at(1, row).toString());
    folderNames = joinNames(folders);
    fileNames = joinNames(files);
}

bool DirectoryCache::caHasSub(const QString &dir)
{
    bool ok = false;
    QString ignored;
    caLoadDir(dir, IfAbsent, ignored, ok);
    return ok && hasSubFolderRows(normalised(dir));
}

bool DirectoryCache::hasSubFolderRows(const QString &dir)
{
    const Rows rows = ask(QStringLiteral("Select Count(*) From ? Where sDir='?' And bFd=1"), {dir});
    return rows.count() > 0 && rows.at(0, 0).toLongLong() >= 1;
}

void DirectoryCache::caEntInfo(const QString &dir, const QString &name, bool folder,
                               QString &dateText, QString &sizeText)
{
    dateText.clear();
    sizeText.clear();
    bool ok = false;
    QString ignored;
    caLoadDir(dir, IfAbsent, ignored, ok);
    if (!ok)
        return;
    const QVariantList entry{normalised(dir), name, folder ? 1 : 0};
    const Rows found =
        ask(QStringLiteral("Select Count(*) From ? Where sDir='?' And sName='?' And bFd=?"), entry);
    if (found.count() == 0 || found.at(0, 0).toLongLong() < 1)
        return;
    const Rows rows = ask(
        QStringLiteral("Select dDate, nSize From ? Where sDir='?' And sName='?' And bFd=?"), entry);
    if (rows.count() == 0)
        return;
    dateText = FormatDateText(fromDayCount(rows.at(0, 0).toDouble()));
    sizeText = FormatSizeText(rows.at(1, 0).toLongLong()) + QLatin1Char('|');
}

std::optional<DirectoryCache::CachedFile> DirectoryCache::fileRow(const QString &dir,
                                                                  const QString &name)
{
    // A file's row is asked for before every transfer.
    const Rows rows =
        m_database.store().query(QStringLiteral("SELECT dDate, nSize, \"day only\" FROM ") +
                                     quotedName(m_session.currentSite()) +
                                     QStringLiteral(" WHERE sDir=? AND sName=? AND bFd=0 LIMIT 1"),
                                 {normalised(dir), name});
    if (rows.count() == 0)
        return std::nullopt;
    return fileOf(rows, 0);
}

QHash<QString, DirectoryCache::CachedFile> DirectoryCache::cachedFiles(const QString &dir)
{
    const Rows rows = m_database.store().query(
        QStringLiteral("SELECT dDate, nSize, \"day only\", sName FROM ") +
            quotedName(m_session.currentSite()) + QStringLiteral(" WHERE sDir=? AND bFd=0"),
        {normalised(dir)});
    QHash<QString, CachedFile> files;
    files.reserve(rows.count());
    for (int row = 0; row < rows.count(); ++row)
        files.insert(rows.at(3, row).toString(), fileOf(rows, row));
    return files;
}

bool DirectoryCache::cachedFile(const QString &dir, const QString &name, double &day, qint64 &size)
{
    const auto row = fileRow(dir, name);
    if (!row)
        return false;
    day = row->day;
    size = row->size;
    return true;
}

bool DirectoryCache::refinedFile(const QString &dir, const QString &name, double &day, qint64 &size)
{
    const auto row = fileRow(dir, name);
    if (!row)
        return false;
    day = row->day;
    size = row->size;
    if (row->dayOnly)
        day = refineTime(dir, name).value_or(day);
    return true;
}

bool DirectoryCache::isCached(const QString &dir, const QString &name)
{
    const auto table = m_database.openTable(m_session.currentSite());
    return !table
                ->find({QStringLiteral("bFd")}, {QStringLiteral("sDir"), QStringLiteral("sName")},
                       {normalised(dir), name})
                .isEmpty();
}

std::vector<DirectoryCache::Incomplete> DirectoryCache::incompleteUnder(const QString &dir)
{
    return m_marks.under(m_session.currentSite(), normalised(dir));
}

std::vector<std::pair<QString, QString>> DirectoryCache::unfinishedUnder(const QString &dir)
{
    return m_unfinished.under(m_session.currentSite(), normalised(dir));
}

} // namespace venlo
