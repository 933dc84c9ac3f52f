#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QDrag>
#include <QDragEnterEvent>
#include <QFile>
#include <QFileInfo>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QMimeData>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>
#include <QVBoxLayout>

#include "ftp/EngineFixture.h"
#include "ftp/LocalPath.h"
#include "localpane/FolderPaths.h"
#include "localpane/LocalCommands.h"
#include "localpane/LocalListFill.h"
#include "localpane/LocalTreeFill.h"
#include "localpane/LocalViews.h"
#include "shared/OperationGate.h"
#include "support/OnWindows.h"
#include "support/Trees.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"

namespace venlo::test
{

/// Why a test is left out on Windows whose operation needs somebody to answer, or names its results
/// as this program's own worker does.
constexpr const char *shellsOwn = "the shell asks, tells and names there by itself";

/// A view whose drags run what the test says instead of waiting for a pointer.
class TestView final : public PaneView
{
public:
    using PaneView::PaneView;
    std::function<Qt::DropAction(const QMimeData &)> whileDragging;
    Qt::DropActions offered;

protected:
    Qt::DropAction runDrag(QDrag &drag, Qt::DropActions actions) override
    {
        offered = actions;
        return whileDragging ? whileDragging(*drag.mimeData()) : Qt::IgnoreAction;
    }
};

/// The commands' pane without its host: a tree and a list over a real folder, and what was raised.
class CommandsFixture : public EngineFixture, public LocalViews
{
public:
    CommandsFixture()
        : m_list(LocalListFill::layout()), trView(PaneView::Kind::Tree),
          lsView(PaneView::Kind::List), treeFill(m_tree, trView, person),
          listFill(m_list, lsView, person), gate(person),
          commands(
              std::make_unique<LocalCommands>(*this, LocalCommands::Rooms{person, gate, session}))
    {
        qputenv("XDG_DATA_HOME", QFile::encodeName(share.path()));
        testers.push_back(std::make_unique<QAbstractItemModelTester>(&m_tree));
        testers.push_back(std::make_unique<QAbstractItemModelTester>(&m_list));
        auto *layout = new QVBoxLayout(&window);
        trView.setModel(&m_tree);
        lsView.setModel(&m_list);
        lsView.setColumnHidden(LocalListFill::SortKey, true);
        m_list.setLateSource([](const RowList::Row &) { return QStringLiteral("種類"); });
        m_list.sort(LocalListFill::SortKey, Qt::AscendingOrder);
        connectView(trView, true);
        connectView(lsView, false);
        layout->addWidget(&trView);
        layout->addWidget(&lsView);
        window.resize(600, 600);
        window.show();
        window.activateWindow();
    }
    ~CommandsFixture() override
    {
        QApplication::clipboard()->clear();
        commands.reset();
    }

    /// Makes the entries below the root and shows it.
    void show(const std::vector<TreeRow> &entries)
    {
        QVERIFY(makeTree(here(), entries));
        treeFill.showRoot(here());
        listFill.FillList(here());
    }
    void menu(int index, bool forTree)
    {
        commands->RunMenuCommand(QStringLiteral("Fold"), index, forTree);
    }
    [[nodiscard]] QString here() const { return QDir::toNativeSeparators(local.path()); }
    [[nodiscard]] QString at(const QString &name) const
    {
        return QDir::toNativeSeparators(local.filePath(name));
    }
    [[nodiscard]] bool has(const QString &name) const
    {
        const QFileInfo info(at(name));
        return info.exists() || info.isSymLink();
    }
    [[nodiscard]] QByteArray read(const QString &name) const
    {
        QFile file(at(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
    }
    [[nodiscard]] QString binned(const QString &name) const
    {
        return share.filePath(QStringLiteral("Trash/files/")) + name;
    }
    [[nodiscard]] QStringList names() const
    {
        QStringList all;
        for (int row = 0; row < m_list.count(); ++row)
            all << m_list.text(row, 0);
        return all;
    }
    [[nodiscard]] int rowOf(const QString &name) const
    {
        return static_cast<int>(names().indexOf(name));
    }
    [[nodiscard]] QModelIndex rowIndex(const QString &name) const
    {
        return m_list.index(rowOf(name), 0);
    }
    /// "" is the root.
    [[nodiscard]] QModelIndex node(const QString &path) const
    {
        QModelIndex found = m_tree.root();
        for (const QString &name : path.split(QLatin1Char('/'), Qt::SkipEmptyParts))
            found = m_tree.child(found, name, Qt::CaseSensitive);
        return found;
    }
    void choose(const QStringList &rowNames)
    {
        lsView.selectionModel()->clear();
        for (const QString &name : rowNames)
            lsView.selectionModel()->setCurrentIndex(rowIndex(name), QItemSelectionModel::Select |
                                                                         QItemSelectionModel::Rows);
        lsView.setFocus();
    }
    void chooseNode(const QString &path)
    {
        select(node(path));
        trView.setFocus();
    }
    [[nodiscard]] QLineEdit *editor() const { return window.findChild<QLineEdit *>(); }
    void type(const QString &text) const
    {
        QLineEdit *line = editor();
        QVERIFY(line != nullptr);
        line->selectAll();
        QInputMethodEvent typed; // keys have no kana
        typed.setCommitString(text);
        QApplication::sendEvent(line, &typed);
        QTest::keyClick(line, Qt::Key_Return);
    }
    /// Enters and moves a drag of files over an entry (an invalid one: the empty space).
    Qt::DropAction hover(PaneView &view, const QModelIndex &under, const QMimeData &data,
                         Qt::KeyboardModifiers modifiers = {},
                         Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction)
    {
        const QPoint spot = spotOf(view, under);
        QDragEnterEvent enter(spot, offered, &data, Qt::LeftButton, modifiers);
        QApplication::sendEvent(view.viewport(), &enter);
        QDragMoveEvent move(spot, offered, &data, Qt::LeftButton, modifiers);
        QApplication::sendEvent(view.viewport(), &move);
        return move.isAccepted() ? move.dropAction() : Qt::IgnoreAction;
    }
    Qt::DropAction drop(PaneView &view, const QModelIndex &under, const QMimeData &data,
                        Qt::KeyboardModifiers modifiers = {},
                        Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction)
    {
        (void)hover(view, under, data, modifiers, offered);
        QDropEvent event(spotOf(view, under), offered, &data, Qt::LeftButton, modifiers);
        QApplication::sendEvent(view.viewport(), &event);
        return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
    }
    [[nodiscard]] static std::unique_ptr<QMimeData> files(const QStringList &paths)
    {
        auto data = std::make_unique<QMimeData>();
        QList<QUrl> urls;
        for (const QString &path : paths)
            urls << QUrl::fromLocalFile(path);
        data->setUrls(urls);
        return data;
    }
    [[nodiscard]] static QPoint spotOf(const PaneView &view, const QModelIndex &under)
    {
        return under.isValid()
                   ? view.visualRect(under).center()
                   : QPoint(view.viewport()->width() / 2, view.viewport()->height() - 3);
    }

    [[nodiscard]] QWidget &pane() override { return window; }
    [[nodiscard]] FolderTree &tree() override { return m_tree; }
    [[nodiscard]] PaneView &TrView() override { return trView; }
    [[nodiscard]] RowList &rows() override { return m_list; }
    [[nodiscard]] PaneView &LsView() override { return lsView; }
    [[nodiscard]] QString NodePath() const override { return treeFill.selectedPath(); }
    [[nodiscard]] QString pathIn(const QString &into, const QString &name) const override
    {
        return localChild(into, name);
    }
    void select(const QModelIndex &index) override
    {
        treeFill.select(index);
        listFill.FillList(NodePath());
    }
    void readNode(const QModelIndex &index) override { treeFill.readNode(index); }
    void ExpandNode(const QModelIndex &index) override { treeFill.ExpandNode(index); }
    void UpdateList() override
    {
        treeFill.readNode(trView.currentIndex());
        listFill.UpdateList();
    }
    void ShowRoot(const QString &root) override { roots << root; }
    void setBusy(bool on) override
    {
        busy += on ? 1 : -1;
        mostBusy = std::max(mostBusy, busy);
    }
    void expandSoon(const QString &nodeKey) override { expandKey = nodeKey; }
    void requestUpload(bool wholeFolder) override
    {
        raised << QStringLiteral("upload %1").arg(QLatin1String(wholeFolder ? "folder" : "rows"));
    }
    void raiseEAct(const QString &job) override { raised << QStringLiteral("eAct ") + job; }
    void raiseEOpnFL(int mode, const QString &selection) override
    {
        raised << QStringLiteral("eOpnFL %1 %2").arg(mode).arg(selection);
    }
    void raiseFetchWanted(const QList<RemoteEntry> &entries, const QString &into) override
    {
        for (const RemoteEntry &entry : entries)
            raised << QStringLiteral("fetch %1 %2 > %3").arg(entry.dir, entry.name, into);
    }

private:
    FolderTree m_tree{QDir::separator()};
    RowList m_list;

public:
    QTemporaryDir local;
    QTemporaryDir share; ///< holds the recycle bin
    QWidget window;
    TestView trView;
    TestView lsView;
    LocalTreeFill treeFill;
    LocalListFill listFill;
    OperationGate gate;
    std::unique_ptr<LocalCommands> commands;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
    QStringList raised;
    QStringList roots;
    QString expandKey;
    int busy = 0;
    int mostBusy = 0;

private:
    void connectView(PaneView &view, bool isTree)
    {
        QObject::connect(&view, &PaneView::keyWanted, &window,
                         [this, isTree](PaneKey key) { commands->keyWanted(key, isTree); });
        view.setNameEditing(
            [this, isTree](const QModelIndex &index, const QString &text) {
                return commands->nameEntered(index, text, isTree);
            },
            [this, isTree](const QModelIndex &index) { commands->nameAbandoned(index, isTree); });
        view.setDragPartner(commands.get());
    }
};

} // namespace venlo::test
