#include "sync/ReviewLoader.h"

#include "db/Database.h"
#include "sync/FoldCase.h"
#include "sync/SyncReview.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char slash('/');
constexpr QLatin1Char dot('.');

Mark markOf(const QVariant &sEd)
{
    const QString text = sEd.toString();
    if (text == QStringLiteral("追加"))
        return Mark::Add;
    return text == QStringLiteral("削除") ? Mark::Remove : Mark::Compare;
}

QString foldersSql(bool down)
{
    return down ? QStringLiteral("Select sPh, sUF, sUL, sEd From tbFold Order By sPh")
                : QStringLiteral("Select sPh, sUL, sUF, sEd From tbFold Order By sPh");
}

QString filesSql(bool down)
{
    return down ? QStringLiteral("Select sFL, nSF, sUF, nSL, sUL, sEd  From tbFile"
                                 " Where sPh='?' Order By sFL")
                : QStringLiteral("Select sFL, nSL, sUL, nSF, sUF, sEd  From tbFile"
                                 " Where sPh='?' Order By sFL");
}

/// The only whole-folder operation on the server's root that deletes nothing below it.
bool addsFirstLevel(const SyncRow &row)
{
    return row.folder && row.sPh.lastIndexOf(slash) == 0 && row.mark != Mark::Remove;
}
} // namespace

void ReviewLoader::load(Database &database)
{
    m_review.m_rows.clear();
    m_review.m_covered.clear();
    m_review.m_remoteSpelling.clear();
    const bool down = m_review.pair().down;
    Rows folders;
    int count = 0;
    database.SelectRows(foldersSql(down), folders, count);
    for (int i = 0; i < count; ++i) {
        SyncRow row;
        row.folder = true;
        row.sPh = folders.at(0, i).toString();
        row.name = row.sPh.mid(row.sPh.lastIndexOf(slash) + 1);
        row.master.time = folders.at(1, i).toString();
        row.other.time = folders.at(2, i).toString();
        row.mark = markOf(folders.at(3, i));
        addFolder(row);
        addFiles(database, m_review.count() - 1);
    }
    holdBack();
    m_review.decideAll(false);
}

void ReviewLoader::add(SyncRow row)
{
    const int index = m_review.count();
    if (row.owner >= 0)
        m_review.m_covered[static_cast<size_t>(row.owner)].push_back(index);
    m_review.m_rows.push_back(std::move(row));
    m_review.m_covered.emplace_back();
}

void ReviewLoader::addFolder(SyncRow row)
{
    if (row.sPh == dot)
        row.mark = Mark::Compare;
    const int parent = m_folders.value(foldCase(relativeParent(row.sPh)), -1);
    if (parent >= 0) {
        const SyncRow &above = m_review.row(parent);
        if (above.owner >= 0)
            row.owner = above.owner;
        else if (above.mark != Mark::Compare)
            row.owner = parent;
    }
    noteRemoteSpelling(row);
    m_folders.insert(foldCase(row.sPh), m_review.count());
    add(std::move(row));
}

/// A folder that the FTP side lacks is spelled as the local side has it, its parents as well;
/// on the server it must land in the folders that are there.
void ReviewLoader::noteRemoteSpelling(const SyncRow &row)
{
    const FileCopy &remote = m_review.pair().down ? row.master : row.other;
    if (row.sPh == dot || !remote.time.isEmpty())
        return;
    const QString parent = relativeParent(row.sPh);
    const int above = m_folders.value(foldCase(parent), -1);
    const QString known = above >= 0 ? m_review.row(above).sPh : parent;
    const QString spelled =
        relativeFile(SyncReview::spelled(known, m_review.m_remoteSpelling), row.name);
    if (spelled != row.sPh)
        m_review.m_remoteSpelling.insert(foldCase(row.sPh), spelled);
}

void ReviewLoader::addFiles(Database &database, int folder)
{
    const SyncRow above = m_review.row(folder);
    const QSet<QString> &unfinished = m_review.m_comparison.unfinished;
    const Rows files = database.query(filesSql(m_review.pair().down), {above.sPh});
    for (int i = 0; i < files.count(); ++i) {
        SyncRow row;
        row.sPh = above.sPh;
        row.name = files.at(0, i).toString();
        row.master = {files.at(2, i).toString(), files.at(1, i).toLongLong()};
        row.other = {files.at(4, i).toString(), files.at(3, i).toLongLong()};
        row.mark = markOf(files.at(5, i));
        row.unfinished =
            !unfinished.isEmpty() && unfinished.contains(pathKey(relativeFile(row.sPh, row.name)));
        if (above.owner >= 0)
            row.owner = above.owner;
        else if (above.mark != Mark::Compare)
            row.owner = folder;
        add(std::move(row));
    }
}

void ReviewLoader::holdBack()
{
    for (SyncRow &row : m_review.m_rows)
        holdRow(row);
    holdMixedFolders();
    if (m_review.pair().sFph == slash)
        holdDoubles();
    if (m_review.pair().down)
        holdDotNames();
}

void ReviewLoader::holdRow(SyncRow &row) const
{
    const SyncBlocks &blocks = m_review.m_comparison.blocks;
    const bool rootPair = m_review.pair().sFph == slash;
    const bool whole = row.folder && row.mark != Mark::Compare;
    QString why;
    if (!blocks.isEmpty()) {
        why = whole ? blocks.whyWhole(row.sPh)
                    : blocks.why(row.folder ? row.sPh : relativeFile(row.sPh, row.name));
    }
    if (why.isEmpty() && !rootPair && row.sPh != dot && !row.sPh.startsWith(slash))
        why = QStringLiteral("同期するﾌｫﾙﾀﾞの外にあります");
    if (!why.isEmpty()) {
        row.hold = Hold::Blocked;
        row.why = why;
    } else if (rootPair && row.sPh != dot && !addsFirstLevel(row)) {
        row.hold = Hold::NotUnattended;
        row.rootPair = true;
        row.why = QStringLiteral("FTPｻｰﾊﾞｰのﾙｰﾄとの同期では下の階層は無人で実行されません");
    }
}

/// A folder that one side lacks holds nothing of that side; where the rows say otherwise, an
/// operation on the whole folder would do to them what their own rows do not show.
void ReviewLoader::holdMixedFolders()
{
    for (const SyncRow &row : m_review.m_rows) {
        if (row.owner < 0)
            continue;
        SyncRow &owner = m_review.m_rows[static_cast<size_t>(row.owner)];
        if (row.mark == owner.mark || owner.hold == Hold::Blocked)
            continue;
        owner.hold = Hold::Blocked;
        owner.why = QStringLiteral("両側で一致しない項目を含むﾌｫﾙﾀﾞです: ") + row.name;
    }
}

/// With the server's root one item may have two rows, one a side: what either does is done to
/// both.
void ReviewLoader::holdDoubles()
{
    QHash<QString, SyncRow *> seen;
    for (SyncRow &row : m_review.m_rows) {
        const QString key = pathKey(row.folder ? row.sPh : relativeFile(row.sPh, row.name));
        SyncRow *&first = seen[key];
        if (first == nullptr) {
            first = &row;
            continue;
        }
        for (SyncRow *twin : {first, &row}) {
            twin->hold = Hold::Blocked;
            twin->why = QStringLiteral("FTPｻｰﾊﾞｰのﾙｰﾄとの同期では両側の同じ項目を見分けられません");
        }
    }
}

/// Servers hide names that begin with ".", so their absence from a listing proves nothing.
void ReviewLoader::holdDotNames()
{
    for (const SyncRow &row : m_review.m_rows) {
        if (row.mark != Mark::Remove || !row.name.startsWith(dot) || row.name == dot)
            continue;
        const auto own = static_cast<size_t>(&row - m_review.m_rows.data());
        const bool covered = row.owner >= 0;
        SyncRow &held = m_review.m_rows[covered ? static_cast<size_t>(row.owner) : own];
        if (held.hold != Hold::Free)
            continue;
        held.hold = Hold::NotUnattended;
        held.owed = covered;
        held.why = covered ? QStringLiteral("FTPｻｰﾊﾞｰが隠す名前を含むﾌｫﾙﾀﾞです: ") + row.name
                           : QStringLiteral("FTPｻｰﾊﾞｰが隠す名前です");
    }
}

} // namespace venlo
