#include "sync/WorkRows.h"

#include <QSet>

#include "db/Database.h"
#include "sync/FoldCase.h"

namespace venlo
{

namespace
{
QString stripped(const QString &text)
{
    constexpr QLatin1Char placeholder('?');
    return text.contains(placeholder) ? QString(text).remove(placeholder) : text;
}

/// The roots' "." is kept: with the server's root there may be rows of a folder without a name,
/// where a "?" was dropped.
QString fileKey(const QString &sPh, const QString &sFL)
{
    return foldCase(sPh + QLatin1Char('/') + sFL);
}

QString markOf(const QString &sUL, const QString &sUF, bool down)
{
    const QString &master = down ? sUF : sUL;
    const QString &other = down ? sUL : sUF;
    if (master.isEmpty())
        return QStringLiteral("削除");
    return other.isEmpty() ? QStringLiteral("追加") : QStringLiteral("比較");
}

bool holds(Database &database, const std::vector<WorkRows::Folder> &folders)
{
    const Rows rows = database.query(QStringLiteral("Select sPh, sUL, sUF, sEd From tbFold"));
    if (static_cast<size_t>(rows.count()) != folders.size())
        return false;
    for (int i = 0; i < rows.count(); ++i) {
        const WorkRows::Folder stored{rows.at(0, i).toString(), rows.at(1, i).toString(),
                                      rows.at(2, i).toString(), rows.at(3, i).toString()};
        if (!(stored == folders[static_cast<size_t>(i)]))
            return false;
    }
    return true;
}

bool isRow(const Rows &rows, int i, const WorkRows::File &file)
{
    const WorkRows::File stored{rows.at(0, i).toString(), rows.at(1, i).toString(),
                                rows.at(2, i).toString(), rows.at(3, i).toLongLong(),
                                rows.at(4, i).toString(), rows.at(5, i).toLongLong(),
                                rows.at(6, i).toString()};
    return stored == file;
}

/// Folder by folder: all rows at a time would be as large as the files themselves.
bool holds(Database &database, const std::vector<WorkRows::File> &files)
{
    const Rows all = database.query(QStringLiteral("Select Count(*) From tbFile"));
    if (all.at(0, 0).toLongLong() != static_cast<qint64>(files.size()))
        return false;
    QSet<QString> asked;
    for (size_t next = 0; next < files.size();) {
        const QString folder = foldCase(files[next].sPh);
        if (asked.contains(folder))
            return false; // its rows lie in two places, and the table's would count twice
        asked.insert(folder);
        const Rows rows =
            database.query(QStringLiteral("Select sPh, sFL, sUL, nSL, sUF, nSF, sEd From tbFile"
                                          " Where sPh='?' Order By sFL"),
                           {files[next].sPh});
        for (int i = 0; i < rows.count(); ++i, ++next) {
            if (next == files.size() || !isRow(rows, i, files[next]))
                return false;
        }
        if (rows.count() == 0)
            return false;
    }
    return true;
}
} // namespace

void WorkRows::Index::add(const QString &key, size_t row)
{
    size_t &place = first[key];
    if (place == 0)
        place = row + 1;
    else
        others.insert(key, row);
}

std::vector<size_t> WorkRows::Index::find(const QString &key) const
{
    const size_t place = first.value(key, 0);
    if (place == 0)
        return {};
    std::vector<size_t> rows{place - 1};
    for (auto other = others.constFind(key); other != others.constEnd() && other.key() == key;
         ++other)
        rows.push_back(*other);
    return rows;
}

void WorkRows::addRemoteFolder(const QString &sPh, const QString &sUF)
{
    const QString path = stripped(sPh);
    m_folderIndex.add(foldCase(path), m_folders.size());
    m_folders.push_back({path, {}, sUF, {}});
}

void WorkRows::addRemoteFile(const QString &sPh, const QString &sFL, const QString &sUF, qint64 nSF)
{
    QString path = stripped(sPh);
    const QString name = stripped(sFL);
    m_fileIndex.add(fileKey(path, name), m_files.size());
    if (!m_files.empty() && m_files.back().sPh == path)
        path = m_files.back().sPh; // one text for all files of a folder
    m_files.push_back({path, name, {}, 0, sUF, nSF, {}});
}

void WorkRows::mergeLocalFolder(const QString &sPh, const QString &sUL)
{
    const QString path = stripped(sPh);
    const QString key = foldCase(path);
    const auto same = m_folderIndex.find(key);
    for (const size_t row : same)
        m_folders[row].sUL = sUL;
    if (!same.empty())
        return;
    m_folderIndex.add(key, m_folders.size());
    m_folders.push_back({path, sUL, {}, {}});
}

void WorkRows::mergeLocalFile(const QString &sPh, const QString &sFL, const QString &sUL,
                              qint64 nSL)
{
    const QString path = stripped(sPh);
    const QString name = stripped(sFL);
    const QString key = fileKey(path, name);
    const auto same = m_fileIndex.find(key);
    for (const size_t row : same) {
        m_files[row].nSL = nSL;
        m_files[row].sUL = sUL;
    }
    if (!same.empty())
        return;
    m_fileIndex.add(key, m_files.size());
    m_files.push_back({path, name, sUL, nSL, {}, 0, {}});
}

std::vector<WorkRows::File *> WorkRows::files(const QString &sPh, const QString &sFL)
{
    std::vector<File *> found;
    for (const size_t row : m_fileIndex.find(fileKey(stripped(sPh), stripped(sFL))))
        found.push_back(&m_files[row]);
    return found;
}

void WorkRows::mark(bool down)
{
    m_folderIndex = {};
    m_fileIndex = {};
    for (Folder &row : m_folders)
        row.sEd = markOf(row.sUL, row.sUF, down);
    for (File &row : m_files)
        row.sEd = markOf(row.sUL, row.sUF, down);
}

void WorkRows::store(Database &database) const
{
    if (!holds(database, m_folders)) {
        database.run(QStringLiteral("Delete From tbFold"));
        for (const Folder &row : m_folders)
            database.run(QStringLiteral("Insert Into tbFold (sPh, sUL, sUF, sEd)"
                                        " Values ('?', '?', '?', '?')"),
                         {row.sPh, row.sUL, row.sUF, row.sEd});
    }
    if (!holds(database, m_files)) {
        database.run(QStringLiteral("Delete From tbFile"));
        for (const File &row : m_files)
            database.run(QStringLiteral("Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd)"
                                        " Values ('?', '?', '?', ?, '?', ?, '?')"),
                         {row.sPh, row.sFL, row.sUL, row.nSL, row.sUF, row.nSF, row.sEd});
    }
}

} // namespace venlo
