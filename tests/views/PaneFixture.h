#pragma once

#include <memory>

#include <QVBoxLayout>
#include <QWidget>

#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"

namespace venlo::test
{

/// A shown window with a list and a tree as a pane has them.
///
/// List: a folder "docs", the files "a.txt" and "b.tar.gz", a file "view" that no operation may
/// touch. Tree: "/" with the folders "docs" (holding "old") and "web".
template <typename View = PaneView>
class PaneFixture
{
public:
    PaneFixture()
        : rows({{QStringLiteral("名前"), QStringLiteral("ｻｲｽﾞ")}, -1, -1, {1}}),
          folders(QLatin1Char('/'))
    {
        auto *const layout = new QVBoxLayout(&window);
        tree = new View(PaneView::Kind::Tree, &window);
        list = new View(PaneView::Kind::List, &window);
        layout->addWidget(tree);
        layout->addWidget(list);
        fill();
        tree->setModel(&folders);
        list->setModel(&rows);
        tree->expandAll();
        window.resize(400, 500);
        window.show();
        window.activateWindow();
        list->setFocus();
    }

    [[nodiscard]] QModelIndex row(int number) const { return rows.index(number, 0); }
    [[nodiscard]] QModelIndex folder(const QString &name) const
    {
        return folders.child(folders.root(), name, Qt::CaseSensitive);
    }
    /// The middle of an entry's text.
    [[nodiscard]] static QPoint middle(const QTreeView &view, const QModelIndex &index)
    {
        const QRect rect = view.visualRect(index);
        return {rect.left() + 30, rect.center().y()};
    }
    /// A place of the list below its last row.
    [[nodiscard]] QPoint emptySpace() const
    {
        return {30, list->visualRect(row(rows.count() - 1)).bottom() + 20};
    }

    RowList rows;
    FolderTree folders;
    QWidget window;
    View *tree = nullptr;
    View *list = nullptr;

private:
    void fill()
    {
        static_cast<void>(rows.append({made(QStringLiteral("docs"), EntryTag::FD),
                                       made(QStringLiteral("a.txt"), EntryTag::FL),
                                       made(QStringLiteral("b.tar.gz"), EntryTag::FL),
                                       made(QStringLiteral("view"), EntryTag::FL, true)}));
        const QModelIndex root = folders.setRoot(QStringLiteral("/"));
        folders.addChild(root, {QStringLiteral("docs"), false, false, EntryTag::FD});
        folders.addChild(root, {QStringLiteral("web"), false, false, EntryTag::FD});
        folders.addChild(folder(QStringLiteral("docs")),
                         {QStringLiteral("old"), false, false, EntryTag::FD});
    }
    [[nodiscard]] static RowList::Row made(const QString &name, EntryTag tag, bool viewOnly = false)
    {
        RowList::Row row;
        row.tag = tag;
        row.texts = {name, QStringLiteral("1KB")};
        row.viewOnly = viewOnly;
        return row;
    }
};

} // namespace venlo::test
