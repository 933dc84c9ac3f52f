// What the cache answers from its rows; listing.cpp fills them, upkeep.cpp keeps them in step.
#include "ftp/DirectoryCache.h"

#include "db/DisplayFormat.h"
#include "db/JetCatalogue.h"
#include "db/Recordset.h"
#include "db/Store.h"
#include "ftp/DirectoryCacheWalk.h"
#include "ftp/ErrorLog.h"
#include "shared/NameList.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
bool isAscii(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
}
} // namespace

DirectoryCache::DirectoryCache(Session &session, Database &database, FrontEnd &frontEnd,
                               Flags &flags)
    : m_session(session), m_database(database), m_frontEnd(frontEnd), m_flags(flags),
      m_current(session, *this, frontEnd, flags), m_marks(database), m_unfinished(database)
{
}

void DirectoryCache::sjNormDir(QString &dir) const
{
    const QString server = m_session.server();
    if (!server.isEmpty() && dir.contains(server, Qt::CaseInsensitive))
        dir = dir.mid(server.size());
    dir = normalisedRemoteDir(dir);
}

QString DirectoryCache::normalised(const QString &dir) const
{
    QString normal = dir;
    sjNormDir(normal);
    return normal;
}

bool DirectoryCache::refusesPath(const QString &dir)
{
    const QString server = m_session.server();
    // At the very front it is cut off; anywhere else the cut would leave the path of another
    // directory.
    const bool refused = !server.isEmpty() && dir.indexOf(server, 0, Qt::CaseInsensitive) > 0;
    if (refused)
        m_session.eventLog().note(QStringLiteral("refused, the path holds the server's name: ") +
                                  dir);
    return refused;
}

Rows DirectoryCache::ask(const QString &sql, const QVariantList &values)
{
    if (goesIntoShape(values))
        return m_database.query(ofSite(sql), values);
    Rows rows;
    int count = 0;
    m_database.SelectRows(statement(sql, values), rows, count);
    return rows;
}

bool DirectoryCache::change(const QString &sql, const QVariantList &values)
{
    bool ok = false;
    if (goesIntoShape(values))
        m_database.ExecSql(ofSite(sql), values, ok);
    else
        m_database.ExecSql(statement(sql, values), ok);
    return ok;
}

/// Whether a statement's text with placeholders means the same as the one with values in it. Only
/// the first is known to the store from the last time.
bool DirectoryCache::goesIntoShape(const QVariantList &values) const
{
    const auto holds = [](const QString &text) {
        return text.contains(QLatin1Char('\'')) || text.contains(QLatin1Char('?'));
    };
    return !holds(m_session.currentSite()) &&
           std::none_of(values.begin(), values.end(),
                        [&](const QVariant &value) { return holds(value.toString()); });
}

/// The statement with the name of the site's table in its first place.
QString DirectoryCache::ofSite(const QString &sql) const
{
    QString text = sql;
    const auto at = text.indexOf(QLatin1Char('?'));
    return text.replace(at, 1, m_session.currentSite());
}

void DirectoryCache::tryChange(const QString &sql, const QVariantList &values)
{
    if (!change(sql, values))
        m_session.eventLog().note(QStringLiteral("cache not in step: ") + m_database.lastError());
}

QString DirectoryCache::statement(const QString &sql, const QVariantList &values) const
{
    const QStringList parts = sql.split(QLatin1Char('?'));
    QString text = parts.value(0) + m_session.currentSite();
    for (qsizetype i = 0; i < values.size(); ++i) {
        text += parts.value(i + 1);
        text += values.at(i).toString().replace(QLatin1Char('\''), QStringLiteral("''"));
    }
    return text + parts.value(values.size() + 1);
}

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

std::optional<DirectoryCache::FileRow> DirectoryCache::fileRow(const QString &dir,
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
    return FileRow{rows.at(0, 0).toDouble(), rows.at(1, 0).toLongLong() - 1, // see cachedSizeOf
                   rows.at(2, 0).toLongLong() == 1};
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

void DirectoryCache::noticeSite()
{
    const int lostGroups = m_database.store().lostGroups();
    if (std::exchange(m_lostGroups, lostGroups) != lostGroups)
        m_madeHere.clear(); // the rows of what came into them may be gone
    if (m_site == m_session.currentSite() && m_connects == m_session.connects())
        return;
    m_connects = m_session.connects();
    forgetPaths();
    m_offsetSamples = 0;
    m_stat = StatTrust();
    m_statLosses = 0;
    m_site.clear();
    if (!m_session.currentSite().isEmpty())
        Walk::dropUnfinished(*this);
    m_site = m_session.currentSite();
}

bool DirectoryCache::isCached(const QString &dir, const QString &name)
{
    const auto table = m_database.openTable(m_session.currentSite());
    return !table
                ->find({QStringLiteral("bFd")}, {QStringLiteral("sDir"), QStringLiteral("sName")},
                       {normalised(dir), name})
                .isEmpty();
}

std::optional<QByteArray> DirectoryCache::cachedRawName(const QString &dir, const QString &name)
{
    if (isAscii(name))
        return name.toLatin1();
    const auto table = m_database.openTable(m_session.currentSite());
    const QVariantList fields =
        table->find({QStringLiteral("raw name")}, {QStringLiteral("sDir"), QStringLiteral("sName")},
                    {normalised(dir), name});
    if (fields.isEmpty())
        return std::nullopt;
    return fields.at(0).isNull() ? name.toUtf8() : fields.at(0).toByteArray();
}

QByteArray DirectoryCache::rawName(const QString &dir, const QString &name)
{
    const auto cached = cachedRawName(dir, name);
    return cached ? *cached : m_session.client().codec().encode(name);
}

std::optional<QByteArray> DirectoryCache::knownRawPath(const QString &dir)
{
    if (isAscii(dir))
        return dir.toLatin1();
    noticeSite();
    if (const auto known = m_rawPaths.constFind(dir); known != m_rawPaths.constEnd())
        return *known;
    QString parent;
    QString leaf;
    sjSplitPath(dir, parent, leaf);
    const auto above = knownRawPath(parent);
    const auto name = cachedRawName(parent, leaf);
    if (!above || !name)
        return std::nullopt;
    const QByteArray raw = (parent == QLatin1String("/") ? QByteArray() : *above) + '/' + *name;
    m_rawPaths.insert(dir, raw);
    return raw;
}

bool DirectoryCache::knowsRawPath(const QString &dir)
{
    return knownRawPath(dir).has_value();
}

void DirectoryCache::learnRawPath(const QString &dir, const QByteArray &rawName)
{
    QString parent;
    QString leaf;
    sjSplitPath(dir, parent, leaf);
    noticeSite();
    m_rawPaths.insert(dir, (parent == QLatin1String("/") ? QByteArray() : rawPath(parent)) + '/' +
                               rawName);
}

QByteArray DirectoryCache::rawPath(const QString &dir)
{
    if (const auto known = knownRawPath(dir))
        return *known;
    QString parent;
    QString leaf;
    sjSplitPath(dir, parent, leaf);
    return (parent == QLatin1String("/") ? QByteArray() : rawPath(parent)) + '/' +
           rawName(parent, leaf);
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
