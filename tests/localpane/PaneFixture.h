#pragma once

#include "ftp/OperationsFixture.h"
#include "localpane/uFile.h"
#include "mainwin/popup/pfFtp.h"
#include "mainwin/popup/sfMsg.h"
#include "shared/OperationGate.h"
#include "support/OnWindows.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"

#include <filesystem>
#include <memory>

#include <QAbstractItemModelTester>
#include <QComboBox>
#include <QLineEdit>
#include <QSplitter>
#include <QTest>
#include <QTimer>
#include <QToolButton>

namespace venlo::test
{

/// The local pane in a window of its own over a throwaway folder. The server is there, but only
/// connected after start().
struct PaneFixture : OperationsFixture {
    PaneFixture() { build(); }
    ~PaneFixture()
    {
        pane.reset();
        // Names that are no text are not found again by Qt.
        std::error_code error;
        std::filesystem::remove_all(here().toStdString(), error);
    }

    /// A new pane, as the host builds one, shown; its models are watched.
    void build()
    {
        pane.reset();
        pane = std::make_unique<uFile>(
            uFile::Rooms{person, flags, gate, session, operations, menus, window});
        testers.clear();
        testers.push_back(std::make_unique<QAbstractItemModelTester>(&tree()));
        testers.push_back(std::make_unique<QAbstractItemModelTester>(&rows()));
        pane->resize(550, 620);
        pane->show();
    }

    template <typename T>
    [[nodiscard]] T &child(const char *name) const
    {
        return *pane->findChild<T *>(QLatin1String(name));
    }
    [[nodiscard]] PaneView &treeView() const { return child<PaneView>("TrView"); }
    [[nodiscard]] PaneView &listView() const { return child<PaneView>("LsView"); }
    [[nodiscard]] FolderTree &tree() const
    {
        return *qobject_cast<FolderTree *>(treeView().model());
    }
    [[nodiscard]] RowList &rows() const { return *qobject_cast<RowList *>(listView().model()); }
    [[nodiscard]] QComboBox &cbRoot() const { return child<QComboBox>("cbRoot"); }

    /// Names of the rows in the order they are shown in.
    [[nodiscard]] QStringList names() const
    {
        QStringList all;
        for (int row = 0; row < rows().count(); ++row)
            all << rows().text(row, 0);
        return all;
    }
    [[nodiscard]] int rowOf(const QString &name) const
    {
        return static_cast<int>(names().indexOf(name));
    }
    [[nodiscard]] QString cell(const QString &name, int column) const
    {
        return rows().text(rowOf(name), column);
    }
    [[nodiscard]] QString rowKey(const QString &name) const { return rows().row(rowOf(name)).key; }
    /// What everything here lies below, a drive on Windows.
    [[nodiscard]] static QString top() { return QDir::toNativeSeparators(QDir::rootPath()); }
    /// The node of a path, by what is in the tree now.
    [[nodiscard]] QModelIndex node(const QString &path) const
    {
        QModelIndex at = tree().root();
        const QString inside = QDir::fromNativeSeparators(path.mid(tree().text(at).size()));
        for (const QString &name : inside.split(QLatin1Char('/'), Qt::SkipEmptyParts))
            at = tree().child(at, name, Qt::CaseSensitive);
        return at;
    }
    [[nodiscard]] QStringList childrenOf(const QString &path) const
    {
        const QModelIndex at = node(path);
        QStringList all;
        for (int row = 0; row < tree().rowCount(at); ++row)
            all << tree().text(tree().index(row, 0, at));
        return all;
    }
    void click(const QString &name, Qt::KeyboardModifiers modifiers = {}) const
    {
        const QModelIndex index = rows().index(rowOf(name), 0);
        listView().scrollTo(index);
        QTest::mouseClick(listView().viewport(), Qt::LeftButton, modifiers,
                          listView().visualRect(index).center());
    }
    void doubleClick(const QString &name) const
    {
        click(name);
        const QModelIndex index = rows().index(rowOf(name), 0);
        QTest::mouseDClick(listView().viewport(), Qt::LeftButton, {},
                           listView().visualRect(index).center());
    }
    void clickNode(const QString &path) const
    {
        treeView().scrollTo(node(path));
        QTest::mouseClick(treeView().viewport(), Qt::LeftButton, {},
                          treeView().visualRect(node(path)).center());
    }
    void typeInto(QWidget &box, const QString &text) const
    {
        box.setFocus();
        auto *line = qobject_cast<QLineEdit *>(&box);
        QLineEdit &edit = line != nullptr ? *line : *cbRoot().lineEdit();
        edit.selectAll();
        QTest::keyClicks(&edit, text);
        QTest::keyClick(&edit, Qt::Key_Return);
    }
    /// The watch's next look, at once.
    void tick() const
    {
        QVERIFY(QMetaObject::invokeMethod(timer(), "timeout", Qt::DirectConnection));
    }
    [[nodiscard]] QTimer *timer() const
    {
        return pane->findChild<QTimer *>(QStringLiteral("Timer1"));
    }

    OperationGate gate{person};
    pfFtp menus{database};
    sfMsg window{person};
    std::unique_ptr<uFile> pane;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
};

} // namespace venlo::test
