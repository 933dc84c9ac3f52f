// measureViews
//
// Fills the tree and the list of a pane with as many entries as their keys allow, each with a view
// on it, and prints what filling, sorting and bringing up to date cost, as shares of the time that
// a plain sort of the same texts takes. Only the shares of one run mean something.
#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <tuple>

#include <QApplication>
#include <QElapsedTimer>
#include <QRandomGenerator>

using namespace venlo;

namespace
{

constexpr int entries = 30000;

qint64 nanoseconds(const std::function<void()> &work)
{
    QElapsedTimer timer;
    timer.start();
    work();
    return std::max<qint64>(timer.nsecsElapsed(), 1);
}

/// Names in no order, the same ones in every run.
QStringList names()
{
    QRandomGenerator random(1);
    QStringList names;
    for (int i = 0; i < entries; ++i)
        names += QStringLiteral("File %1 %2.txt").arg(random.bounded(1000000)).arg(i);
    return names;
}

std::vector<RowList::Row> rowsOf(const QStringList &names)
{
    std::vector<RowList::Row> rows;
    for (const QString &name : names) {
        RowList::Row row;
        row.texts = {name, QStringLiteral("24/01/02 03:04:05"), QStringLiteral("1KB"),
                     QStringLiteral("L") + name};
        rows.push_back(std::move(row));
    }
    return rows;
}

void report(const char *what, qint64 time, qint64 unit)
{
    std::printf("%-44s %8.2f  (%.1f ms)\n", what,
                static_cast<double>(time) / static_cast<double>(unit),
                static_cast<double>(time) / 1e6);
}

void measureList(const QStringList &names, qint64 unit)
{
    RowList list(
        {{QStringLiteral("名前"), QStringLiteral("更新日時"), QStringLiteral("ｻｲｽﾞ"), QString()},
         -1,
         3,
         {2}});
    PaneView view(PaneView::Kind::List);
    view.setModel(&list);
    view.resize(600, 800);
    view.show();
    list.sort(3, Qt::AscendingOrder);
    const auto fill = [&] { return list.append(rowsOf(names)); };
    report("list: first fill, sorted", nanoseconds([&] { std::ignore = fill(); }), unit);
    report("list: drawn once", nanoseconds([&] { std::ignore = view.grab(); }), unit);
    report("list: sorted by another column",
           nanoseconds([&] { list.sort(0, Qt::DescendingOrder); }), unit);
    report("list: all selected, then sorted", nanoseconds([&] {
               view.selectAll();
               list.sort(0, Qt::AscendingOrder);
           }),
           unit);
    view.clearSelection();
    report("list: every row found by tag and name", nanoseconds([&] {
               int found = 0;
               for (const QString &name : names)
                   found += list.rowOf(EntryTag::FL, name) >= 0 ? 1 : 0;
               if (found != entries)
                   std::puts("rows are missing");
           }),
           unit);
    std::vector<int> half;
    for (int row = 0; row < list.count(); row += 2)
        half.push_back(row);
    report("list: every other row removed", nanoseconds([&] { list.remove(half); }), unit);
    list.keys().restart(0);
    report("list: as many rows merged in",
           nanoseconds([&] { std::ignore = list.append(rowsOf(names.mid(entries / 2))); }), unit);
}

/// The model alone, beyond what a pane's keys allow: they begin anew for every part.
void measureLargeModel(const QStringList &names, qint64 unit)
{
    constexpr int parts = 4;
    constexpr int inEach = 25'000;
    RowList list(
        {{QStringLiteral("名前"), QStringLiteral("更新日時"), QStringLiteral("ｻｲｽﾞ"), QString()},
         -1,
         3,
         {2}});
    list.sort(3, Qt::AscendingOrder);
    report("model of 100,000 rows: filled in four parts", nanoseconds([&] {
               for (int part = 0; part < parts; ++part) {
                   list.keys().restart(0);
                   std::ignore = list.append(rowsOf(names.mid(0, inEach)));
               }
           }),
           unit);
    if (list.count() != parts * inEach)
        std::puts("rows are missing");
    report("model of 100,000 rows: sorted by another column",
           nanoseconds([&] { list.sort(0, Qt::DescendingOrder); }), unit);
}

void measureTree(const QStringList &names, qint64 unit)
{
    FolderTree tree(QLatin1Char('/'));
    PaneView view(PaneView::Kind::Tree);
    view.setModel(&tree);
    view.resize(300, 800);
    view.show();
    tree.setRoot(QStringLiteral("/"));
    view.expand(tree.root());
    std::vector<FolderTree::Entry> folders;
    for (const QString &name : names)
        folders.push_back({name, false, false, EntryTag::FD});
    report("tree: children of one node",
           nanoseconds([&] { std::ignore = tree.addChildren(tree.root(), folders); }), unit);
    report("tree: drawn once", nanoseconds([&] { std::ignore = view.grab(); }), unit);
    report("tree: scrolled to the end", nanoseconds([&] {
               view.scrollToBottom();
               std::ignore = view.grab();
           }),
           unit);
    report("tree: all children removed", nanoseconds([&] { tree.removeChildren(tree.root()); }),
           unit);
}

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList texts = names();
    const qint64 unit = nanoseconds([&texts] {
        QStringList copy = texts;
        std::sort(copy.begin(), copy.end(), [](const QString &left, const QString &right) {
            return left.compare(right, Qt::CaseInsensitive) < 0;
        });
    });
    std::printf("%d entries; 1.00 is a plain sort of their names\n", entries);
    measureList(texts, unit);
    measureLargeModel(texts, unit);
    measureTree(texts, unit);
    return 0;
}
