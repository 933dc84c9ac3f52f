#pragma once

#include "support/ScriptedTree.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <map>
#include <vector>

namespace venlo::test
{

/// One row of a tree that a test writes down. A path that ends with "/" is a folder; folders on the
/// way are made. Paths are relative raw bytes ("a/b.txt").
struct TreeRow {
    QByteArray path;
    QByteArray bytes = {};
    QDateTime modified = {}; ///< invalid: now
};

/// A tree as a value: relative path (folders end with "/") to what is there.
struct TreeItem {
    QByteArray bytes;
    QDateTime modified; ///< UTC; of files only
};
using TreeSnapshot = std::map<QByteArray, TreeItem>;

enum class Times {
    Ignore,
    Minutes, ///< within a minute, which is what LIST shows
    Seconds
};

/// Writes the rows below a local folder; false when one of them cannot be written.
[[nodiscard]] bool makeTree(const QString &root, const std::vector<TreeRow> &rows);
/// The same for a scripted server, below an absolute folder.
void makeTree(ScriptedTree &tree, const QByteArray &folder, const std::vector<TreeRow> &rows);
/// Folders "d0000/" with so many files each, for measurements.
[[nodiscard]] std::vector<TreeRow> manyFiles(int folders, int filesInEach, int size,
                                             const QDateTime &modified = {});

[[nodiscard]] TreeSnapshot snapshot(const QString &root);
[[nodiscard]] TreeSnapshot snapshot(const ScriptedTree &tree, const QByteArray &folder);
[[nodiscard]] TreeSnapshot snapshot(const std::vector<TreeRow> &rows);

/// What differs, one readable line each; empty when the trees are equal:
///     QCOMPARE(difference(snapshot(local), snapshot(daemon.root())), QStringList());
[[nodiscard]] QStringList difference(const TreeSnapshot &expected, const TreeSnapshot &actual,
                                     Times times = Times::Ignore);

} // namespace venlo::test
