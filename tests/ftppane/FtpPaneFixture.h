#pragma once

#include "ftp/FetchFolder.h"
#include "ftp/OperationsFixture.h"
#include "ftppane/uFtp.h"
#include "mainwin/popup/pfFtp.h"
#include "mainwin/popup/sfMsg.h"
#include "shared/OperationGate.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"

#include <memory>
#include <vector>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QSplitter>
#include <QTest>
#include <QTimer>

namespace venlo::test
{

/// Names with "," between them.
inline QStringList words(const char *names)
{
    return QString::fromUtf8(names).split(QLatin1Char(','));
}

/// The FTP pane in a window of its own, with a scripted server that the site "web" names. Nothing
/// is connected before open().
struct FtpPaneFixture : OperationsFixture {
    FtpPaneFixture()
    {
        server.put("/index.html", "<html>");
        server.put("/news.txt", QByteArray(1200, 'n'));
        server.put("/docs/a.txt", "aaa");
        server.put("/docs/deep/b.txt", "bbb");
        server.put("/img/logo.png", "png");
    }
    ~FtpPaneFixture() { pane.reset(); }

    /// Nothing runs any more, and no wait cursor stays.
    [[nodiscard]] bool isAtRest() const
    {
        return QGuiApplication::overrideCursor() == nullptr && !gate.busy();
    }

    /// Starts the server, registers "web" (and another site) and shows a pane.
    [[nodiscard]] bool begin()
    {
        if (!server.start())
            return false;
        registerSite(QStringLiteral("web"), server.server(), server.user(), server.password());
        registerSite(QStringLiteral("another"), server.server(), server.user(), server.password());
        registerSite(QStringLiteral("empty"), QString(), QStringLiteral("u"), QStringLiteral("p"));
        build();
        return true;
    }
    void build()
    {
        pane.reset();
        testers.clear();
        pane = std::make_unique<uFtp>(uFtp::Rooms{person, flags, gate, database, session, cache,
                                                  operations, menus, window, handedOut});
        testers.push_back(std::make_unique<QAbstractItemModelTester>(&tree()));
        testers.push_back(std::make_unique<QAbstractItemModelTester>(&rows()));
        pane->resize(600, 620);
        pane->show();
        pane->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(pane.get()));
    }
    /// begin(), then "web" picked and connected by its button.
    [[nodiscard]] bool open()
    {
        if (!begin())
            return false;
        connectBy(QStringLiteral("web"));
        forget();
        return pane->cOn();
    }
    void connectBy(const QString &site)
    {
        pick(site);
        QTest::mouseClick(&imOpn(), Qt::LeftButton);
    }
    /// Picks a site as a person does, with the keyboard.
    void pick(const QString &site)
    {
        const int wanted = cbSvr().findText(site);
        cbSvr().setFocus();
        for (int turns = 0; cbSvr().currentIndex() != wanted && turns < 20; ++turns)
            QTest::keyClick(&cbSvr(), cbSvr().currentIndex() < wanted ? Qt::Key_Down : Qt::Key_Up);
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
    [[nodiscard]] QComboBox &cbSvr() const { return child<QComboBox>("cbSvr"); }
    [[nodiscard]] QPushButton &imOpn() const { return child<QPushButton>("imOpn"); }
    [[nodiscard]] QPushButton &imElse() const { return child<QPushButton>("imElse"); }
    [[nodiscard]] QString caption() const { return child<QLabel>("Label1").text(); }
    /// What the line below the list says, empty when it is hidden.
    [[nodiscard]] QString note() const
    {
        const auto &label = child<QLabel>("lbNote");
        return label.isHidden() ? QString() : label.text();
    }

    [[nodiscard]] QStringList names() const
    {
        QStringList all;
        for (int row = 0; row < rows().count(); ++row)
            all << rows().text(row, 0);
        return all;
    }
    /// The node below the root by its names ("docs/deep"); the root for an empty text.
    [[nodiscard]] QModelIndex node(const QString &names) const
    {
        QModelIndex at = tree().root();
        for (const QString &name : names.split(QLatin1Char('/'), Qt::SkipEmptyParts))
            at = tree().child(at, name, Qt::CaseSensitive);
        return at;
    }
    [[nodiscard]] QStringList childrenOf(const QString &names) const
    {
        const QModelIndex at = node(names);
        QStringList all;
        for (int row = 0; row < tree().rowCount(at); ++row)
            all << tree().text(tree().index(row, 0, at));
        return all;
    }
    void click(const QString &name, Qt::KeyboardModifiers modifiers = {}) const
    {
        const QModelIndex index = rows().index(static_cast<int>(names().indexOf(name)), 0);
        listView().scrollTo(index);
        QTest::mouseClick(listView().viewport(), Qt::LeftButton, modifiers,
                          listView().visualRect(index).center());
    }
    void doubleClick(const QString &name) const
    {
        click(name);
        const QModelIndex index = rows().index(static_cast<int>(names().indexOf(name)), 0);
        QTest::mouseDClick(listView().viewport(), Qt::LeftButton, {},
                           listView().visualRect(index).center());
    }
    void clickNode(const QString &names) const
    {
        treeView().scrollTo(node(names));
        QTest::mouseClick(treeView().viewport(), Qt::LeftButton, {},
                          treeView().visualRect(node(names)).center());
    }
    /// Clicks the arrow of a node.
    void clickArrow(const QString &names) const
    {
        treeView().scrollTo(node(names));
        const QRect rect = treeView().visualRect(node(names));
        QTest::mouseClick(treeView().viewport(), Qt::LeftButton, {},
                          QPoint(rect.left() - treeView().indentation() / 2, rect.center().y()));
    }
    [[nodiscard]] QLineEdit *editor(PaneView &view) const
    {
        return view.findChild<QLineEdit *>(QStringLiteral("nameEditor"));
    }
    void type(PaneView &view, const QString &name) const
    {
        QLineEdit *line = editor(view);
        line->setText(name);
        QTest::keyClick(line, Qt::Key_Return);
    }
    /// Once the next menu shows: clicks the entry, or dismisses it for null.
    void whenMenu(QAction *entry) const
    {
        auto *timer = new QTimer(pane.get());
        QObject::connect(timer, &QTimer::timeout, timer, [timer, entry] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            if (menu == nullptr)
                return;
            timer->stop();
            timer->deleteLater();
            if (entry == nullptr)
                QTest::keyClick(menu, Qt::Key_Escape);
            else
                QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(entry).center());
        });
        timer->start(10);
    }
    /// Right-clicks a row (none for an empty name) and picks an entry of the menu.
    void pickForRow(const QString &name, int index) const
    {
        const QModelIndex at = rows().index(static_cast<int>(names().indexOf(name)), 0);
        popUp(listView(),
              name.isEmpty() ? QPoint(20, listView().viewport()->height() - 5)
                             : listView().visualRect(at).center(),
              index);
    }
    void pickForNode(const QString &names, int index) const
    {
        treeView().scrollTo(node(names));
        popUp(treeView(), treeView().visualRect(node(names)).center(), index);
    }
    void popUp(PaneView &view, QPoint at, int index) const
    {
        whenMenu(index < 0 ? nullptr : menus.entry(pfFtp::FTP, index));
        QContextMenuEvent event(QContextMenuEvent::Mouse, at, view.viewport()->mapToGlobal(at));
        QApplication::sendEvent(view.viewport(), &event);
    }
    void pickElse(int index) const
    {
        whenMenu(menus.entry(pfFtp::ELSE, index));
        QTest::mouseClick(&imElse(), Qt::LeftButton);
    }

    OperationGate gate{person};
    pfFtp menus{database};
    sfMsg window{person};
    std::vector<std::unique_ptr<FetchFolder>> handedOut;
    std::unique_ptr<uFtp> pane;
    std::vector<std::unique_ptr<QAbstractItemModelTester>> testers;
};

} // namespace venlo::test
