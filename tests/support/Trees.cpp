#include "support/Trees.h"

#include "support/RawFiles.h"

#include <cstdlib>
#include <filesystem>

namespace venlo::test
{

namespace
{

namespace fs = std::filesystem;

QByteArray parentOf(const QByteArray &path)
{
    return path.left(path.lastIndexOf('/', path.size() - 2) + 1);
}

void addParents(TreeSnapshot &tree, const QByteArray &path)
{
    for (QByteArray parent = parentOf(path); !parent.isEmpty(); parent = parentOf(parent))
        tree.try_emplace(parent);
}

QString printable(const QByteArray &path)
{
    const QString text = QString::fromUtf8(path);
    return text.toUtf8() == path ? text : QString::fromLatin1(path.toPercentEncoding("/ "));
}

QString describe(const TreeItem &item)
{
    constexpr int shown = 40;
    QString text = QStringLiteral("%1 bytes \"").arg(item.bytes.size());
    text += printable(item.bytes.left(shown));
    return text + (item.bytes.size() > shown ? QLatin1String("...\"") : QLatin1String("\""));
}

bool sameTime(const QDateTime &a, const QDateTime &b, Times times)
{
    const qint64 limit = times == Times::Minutes ? 60 : 1;
    return times == Times::Ignore || std::llabs(a.secsTo(b)) < limit;
}

void compare(const QByteArray &path, const TreeItem &expected, const TreeItem &actual, Times times,
             QStringList &lines)
{
    if (expected.bytes != actual.bytes)
        lines << QStringLiteral("differs: %1: expected %2, is %3")
                     .arg(printable(path), describe(expected), describe(actual));
    if (!path.endsWith('/') && !sameTime(expected.modified, actual.modified, times))
        lines << QStringLiteral("time: %1: expected %2, is %3")
                     .arg(printable(path), expected.modified.toString(Qt::ISODate),
                          actual.modified.toString(Qt::ISODate));
}

} // namespace

bool makeTree(const QString &root, const std::vector<TreeRow> &rows)
{
    for (const TreeRow &row : rows) {
        const QByteArray path = rawPath(root) + '/' + row.path;
        if (!makeFolders(path.left(path.lastIndexOf('/'))))
            return false;
        if (!row.path.endsWith('/') && !writeFile(path, row.bytes, row.modified))
            return false;
    }
    return true;
}

void makeTree(ScriptedTree &tree, const QByteArray &folder, const std::vector<TreeRow> &rows)
{
    for (const TreeRow &row : rows) {
        const QByteArray path = ScriptedTree::resolve(folder, row.path);
        const QDateTime modified =
            row.modified.isValid() ? row.modified : QDateTime::currentDateTimeUtc();
        if (row.path.endsWith('/'))
            tree.makeFolder(path, modified);
        else
            tree.put(path, row.bytes, modified);
    }
}

std::vector<TreeRow> manyFiles(int folders, int filesInEach, int size, const QDateTime &modified)
{
    std::vector<TreeRow> rows;
    for (int folder = 0; folder < folders; ++folder) {
        const QByteArray prefix = 'd' + QByteArray::number(folder).rightJustified(4, '0') + "/f";
        for (int file = 0; file < filesInEach; ++file)
            rows.push_back({prefix + QByteArray::number(file).rightJustified(4, '0') + ".txt",
                            QByteArray(size, static_cast<char>('a' + file % 26)), modified});
    }
    return rows;
}

TreeSnapshot snapshot(const QString &root)
{
    TreeSnapshot tree;
    std::error_code error;
    const fs::path top = diskPath(rawPath(root));
    for (const auto &entry : fs::recursive_directory_iterator(top, error)) {
        const QByteArray path = rawPath(entry.path().lexically_relative(top));
        if (entry.is_directory() && !entry.is_symlink())
            tree.try_emplace(path + '/');
        else
            tree[path] = {readFile(rawPath(entry.path())), modifiedTime(rawPath(entry.path()))};
    }
    return tree;
}

TreeSnapshot snapshot(const ScriptedTree &tree, const QByteArray &folder)
{
    TreeSnapshot found;
    const QByteArray prefix = folder == "/" ? folder : folder + '/';
    const QList<QByteArray> paths = tree.paths();
    for (const QByteArray &path : paths) {
        if (!path.startsWith(prefix) || path == prefix)
            continue;
        const QByteArray relative = path.mid(prefix.size());
        if (path.endsWith('/'))
            found.try_emplace(relative);
        else
            found[relative] = {tree.file(path), tree.modified(path)};
    }
    return found;
}

TreeSnapshot snapshot(const std::vector<TreeRow> &rows)
{
    TreeSnapshot tree;
    for (const TreeRow &row : rows) {
        addParents(tree, row.path);
        tree[row.path] = {row.bytes, row.modified.toUTC()};
    }
    return tree;
}

QStringList difference(const TreeSnapshot &expected, const TreeSnapshot &actual, Times times)
{
    QStringList lines;
    for (const auto &[path, item] : expected) {
        const auto other = actual.find(path);
        if (other == actual.end())
            lines << QLatin1String("missing: ") + printable(path);
        else
            compare(path, item, other->second, times, lines);
    }
    for (const auto &[path, item] : actual) {
        if (expected.count(path) == 0)
            lines << QLatin1String("too much: ") + printable(path);
    }
    return lines;
}

} // namespace venlo::test
