#include "ftp/IncompleteMarks.h"

#include "db/Database.h"
#include "db/Store.h"
#include "shared/RemotePath.h"

namespace venlo
{

IncompleteMarks::IncompleteMarks(Database &database) : m_database(database) {}

void IncompleteMarks::set(const QString &site, const Mark &mark)
{
    m_database.store().exec(
        QStringLiteral("INSERT OR REPLACE INTO \"incomplete directories\" "
                       "(site, dir, why, refused) VALUES (?, ?, ?, ?)"),
        {site, mark.dir, mark.why.isNull() ? QStringLiteral("") : mark.why, mark.refused ? 1 : 0});
}

void IncompleteMarks::clear(const QString &site, const QString &dir)
{
    m_database.store().exec(
        QStringLiteral("DELETE FROM \"incomplete directories\" WHERE site = ? AND dir = ?"),
        {site, dir});
}

void IncompleteMarks::clearPrefix(const QString &site, const QString &prefix)
{
    for (const Mark &mark : under(site, QStringLiteral("/"))) {
        if (mark.dir.startsWith(prefix, Qt::CaseInsensitive))
            clear(site, mark.dir);
    }
}

void IncompleteMarks::movePrefix(const QString &site, const QString &prefix,
                                 const QString &newPrefix)
{
    for (const Mark &mark : under(site, QStringLiteral("/"))) {
        if (!mark.dir.startsWith(prefix, Qt::CaseInsensitive))
            continue;
        clear(site, mark.dir);
        set(site, {newPrefix + mark.dir.mid(prefix.size()), mark.why, mark.refused});
    }
}

std::vector<IncompleteMarks::Mark> IncompleteMarks::under(const QString &site, const QString &dir)
{
    const Rows rows = m_database.store().query(
        QStringLiteral("SELECT dir, why, refused FROM \"incomplete directories\" WHERE site = ? "
                       "ORDER BY dir"),
        {site});
    std::vector<Mark> marks;
    for (int row = 0; row < rows.count(); ++row) {
        Mark mark{rows.at(0, row).toString(), rows.at(1, row).toString(),
                  rows.at(2, row).toLongLong() != 0};
        if (isBelowOrSameFolded(mark.dir, dir))
            marks.push_back(std::move(mark));
    }
    return marks;
}

} // namespace venlo
