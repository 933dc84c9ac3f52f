#include "ftp/UnfinishedUploads.h"

#include <algorithm>

#include <QFileInfo>
#include <QStringList>

#include "db/Database.h"
#include "db/DbError.h"
#include "db/Store.h"
#include "platform/Files.h"
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

bool UnfinishedUploads::openNote()
{
    if (m_note.isOpen())
        return true;
    m_note.setFileName(QFileInfo(m_database.path()).path() + QStringLiteral("/Upload.note"));
    if (!m_note.open(QIODevice::ReadWrite | QIODevice::Unbuffered))
        return false;
    (void)makePrivateFile(m_note.fileName());
    return true;
}

/// Without a note a killed upload is not known for one; that is no reason not to upload.
void UnfinishedUploads::sending(const QString &site, const QString &dir, const QString &name)
{
    try {
        recover();
    } catch (const DbError &) {
        m_kept = m_note.size();
    }
    if (m_sending)
        settled();
    if (!openNote())
        return;
    write(site, dir, name);
    m_sending = true;
}

/// Behind the notes that are kept.
void UnfinishedUploads::write(const QString &site, const QString &dir, const QString &name)
{
    if (m_note.seek(m_kept))
        m_note.write(QStringList{site, dir, name, QString()}.join(QLatin1Char('\n')).toUtf8());
}

void UnfinishedUploads::settled()
{
    m_sending = false;
    if (m_note.isOpen())
        m_note.resize(m_kept);
}

void UnfinishedUploads::recover()
{
    if (m_sending || !openNote())
        return;
    m_kept = std::min(m_kept, m_note.size()); // another process may have taken them over
    if (m_note.size() == 0 || !m_note.seek(0))
        return;
    const QStringList parts = QString::fromUtf8(m_note.readAll()).split(QLatin1Char('\n'));
    // Three texts and the end; less was cut off while it was written, before anything was sent.
    for (qsizetype i = 0; i + 3 < parts.size(); i += 3)
        store(parts.at(i), parts.at(i + 1), parts.at(i + 2));
    m_kept = 0;
    settled();
}

void UnfinishedUploads::begin(const QString &site, const QString &dir, const QString &name)
{
    try {
        if (!noted(site, dir, name))
            store(site, dir, name);
    } catch (const DbError &) {
        keep(site, dir, name);
        throw;
    }
}

void UnfinishedUploads::keep(const QString &site, const QString &dir, const QString &name)
{
    if (!openNote())
        return;
    write(site, dir, name); // upon its own, while it is being sent
    m_sending = false;
    m_kept = m_note.size();
    if (site == m_site)
        m_known.insert({dir, name});
}

void UnfinishedUploads::store(const QString &site, const QString &dir, const QString &name)
{
    makeTable();
    m_database.store().exec(
        QStringLiteral("INSERT OR REPLACE INTO \"unfinished uploads\" (site, dir, name) "
                       "VALUES (?, ?, ?)"),
        {site, dir, name});
    if (site == m_site)
        m_known.insert({dir, name});
}

void UnfinishedUploads::end(const QString &site, const QString &dir, const QString &name)
{
    if (m_kept > 0)
        recover();
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
    recover();
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
