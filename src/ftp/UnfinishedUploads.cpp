#include "ftp/UnfinishedUploads.h"

#include "db/Database.h"
#include "db/Store.h"
#include "shared/RemotePath.h"

namespace venlo
{

UnfinishedUploads::UnfinishedUploads(Database &database) : m_database(database) {}

void UnfinishedUploads::makeTable()
{
    if (m_made)
        return;
    m_database.store().exec(
        QStringLiteral("CREATE TABLE IF NOT EXISTS \"unfinished uploads\" (site TEXT NOT NULL, "
                       "dir TEXT NOT NULL, name TEXT NOT NULL, PRIMARY KEY (site, dir, name))"));
    m_made = true;
}

void UnfinishedUploads::begin(const QString &site, const QString &dir, const QString &name)
{
    if (noted(site, dir, name))
        return;
    makeTable();
    m_database.store().exec(
        QStringLiteral("INSERT OR REPLACE INTO \"unfinished uploads\" (site, dir, name) "
                       "VALUES (?, ?, ?)"),
        {site, dir, name});
    m_known.insert({dir, name});
}

void UnfinishedUploads::end(const QString &site, const QString &dir, const QString &name)
{
    if (!noted(site, dir, name))
        return;
    m_database.store().exec(
        QStringLiteral(
            "DELETE FROM \"unfinished uploads\" WHERE site = ? AND dir = ? AND name = ?"),
        {site, dir, name});
    m_known.remove({dir, name});
}

bool UnfinishedUploads::noted(const QString &site, const QString &dir, const QString &name)
{
    if (m_site.isNull() || m_site != site) {
        m_known.clear();
        for (auto &note : under(site, QStringLiteral("/")))
            m_known.insert(std::move(note));
        m_site = site;
    }
    return m_known.contains({dir, name});
}

std::vector<std::pair<QString, QString>> UnfinishedUploads::under(const QString &site,
                                                                  const QString &dir)
{
    // To look needs no table, and makes none.
    if (m_database.store().table(QStringLiteral("unfinished uploads")) == nullptr)
        return {};
    const Rows rows = m_database.store().query(
        QStringLiteral("SELECT dir, name FROM \"unfinished uploads\" WHERE site = ?"), {site});
    std::vector<std::pair<QString, QString>> notes;
    for (int row = 0; row < rows.count(); ++row) {
        if (isBelowOrSameFolded(rows.at(0, row).toString(), dir))
            notes.emplace_back(rows.at(0, row).toString(), rows.at(1, row).toString());
    }
    return notes;
}

} // namespace venlo
