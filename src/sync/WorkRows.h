#pragma once

#include <vector>

#include <QHash>
#include <QString>

namespace venlo
{

class Database;

/// The rows of the work tables tbFold and tbFile while both sides are gathered: what either side
/// has of an item meets in one row, letter case aside, as a statement on the tables would match
/// it. Owned by the comparison; the tables see the rows once they are complete and marked.
class WorkRows
{
public:
    struct Folder {
        QString sPh;
        QString sUL;
        QString sUF;
        QString sEd;
        bool operator==(const Folder &) const = default;
    };
    struct File {
        QString sPh;
        QString sFL;
        QString sUL;
        qint64 nSL = 0; ///< bytes
        QString sUF;
        qint64 nSF = 0; ///< as cached
        QString sEd;
        bool operator==(const File &) const = default;
    };

    /// Rows of the FTP side; each becomes a row of its own. As with every value of a statement, a
    /// "?" is dropped from paths and names.
    void addRemoteFolder(const QString &sPh, const QString &sUF);
    void addRemoteFile(const QString &sPh, const QString &sFL, const QString &sUF, qint64 nSF);
    /// The local side: into the rows of that name, or a row of its own.
    void mergeLocalFolder(const QString &sPh, const QString &sUL);
    void mergeLocalFile(const QString &sPh, const QString &sFL, const QString &sUL, qint64 nSL);

    /// The rows of that name. Good until a row is added.
    [[nodiscard]] std::vector<File *> files(const QString &sPh, const QString &sFL);

    /// Marks every row with what has to happen to it; no more rows are added or looked for.
    void mark(bool down);

    /// Puts the rows in the place of what the tables hold; a table that holds just these rows is
    /// left alone, so that nothing to do costs the disk nothing. Throws DbError.
    void store(Database &database) const;

private:
    /// Where the rows of one name are.
    struct Index {
        QHash<QString, size_t> first;       ///< counted from 1
        QMultiHash<QString, size_t> others; ///< behind the first: a dropped "?" makes names one
        void add(const QString &key, size_t row);
        [[nodiscard]] std::vector<size_t> find(const QString &key) const; ///< counted from 0
    };

    std::vector<Folder> m_folders;
    std::vector<File> m_files;
    Index m_folderIndex;
    Index m_fileIndex;
};

} // namespace venlo
