#pragma once

#include <utility>
#include <vector>

#include <QFile>
#include <QSet>
#include <QString>

namespace venlo
{

class Database;

/// Uploads that were begun and have not been confirmed whole, kept in the database across runs.
/// The remnant on the server is newer than the local file and may be nearly as large: nothing in a
/// listing tells it from a good copy. Emptying a cache leaves the notes alone; a confirmed upload
/// or deletion of the file removes its note.
///
/// The upload in hand is noted in a small file beside the database ("Upload.note") for as long as
/// it runs: a commit a file would double the time of small files, and a killed process loses
/// nothing that it wrote. The next use takes such a note into the database.
class UnfinishedUploads
{
public:
    explicit UnfinishedUploads(Database &database);

    /// The upload in hand; settled() once it is complete, noted or known not to have begun.
    void sending(const QString &site, const QString &dir, const QString &name);
    void settled();
    /// Where the database refuses (DbError), the note file keeps it until the database takes it.
    void begin(const QString &site, const QString &dir, const QString &name);
    /// Costs nothing when there is no note.
    void end(const QString &site, const QString &dir, const QString &name);
    /// Asks the store at the first use of a site only.
    [[nodiscard]] bool noted(const QString &site, const QString &dir, const QString &name);
    /// (directory, name) of the notes at or below dir, letter case ignored.
    [[nodiscard]] std::vector<std::pair<QString, QString>> under(const QString &site,
                                                                 const QString &dir);

private:
    void makeTable();
    [[nodiscard]] bool openNote();
    /// Takes over what a killed process was sending, and what the database refused before.
    void recover();
    void keep(const QString &site, const QString &dir, const QString &name);
    void write(const QString &site, const QString &dir, const QString &name);
    void store(const QString &site, const QString &dir, const QString &name);

    Database &m_database;
    QFile m_note;
    bool m_sending = false; ///< the note behind those that are kept is this process's own
    qint64 m_kept = 0;      ///< bytes of the notes that the database has not taken
    bool m_made = false;
    QString m_site; ///< whose notes are known
    QSet<std::pair<QString, QString>> m_known;
};

} // namespace venlo
