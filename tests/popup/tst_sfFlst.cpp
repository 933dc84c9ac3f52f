#include <array>

#include <QAbstractItemModelTester>
#include <QApplication>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

#include "db/Recordset.h"
#include "db/Store.h"
#include "gui/WindowDriver.h"
#include "mainwin/popup/FileListModel.h"
#include "mainwin/popup/sfFlst.h"
#include "popup/RegistryFixture.h"
#include "support/ScriptedServer.h"
#include "support/ShownToolTip.h"
#include "sync/SyncWorld.h"

namespace venlo::test
{

namespace
{
QTableView &grid(QWidget &window)
{
    return part<QTableView>(window, "vSpr");
}

QLineEdit &filter(QWidget &window)
{
    return part<QLineEdit>(window, "txFlt");
}

QString listed(QWidget &window)
{
    QStringList paths;
    const QAbstractItemModel &model = *grid(window).model();
    for (int row = 0; row < model.rowCount(); ++row)
        paths.append(model.index(row, FileListModel::Directory).data().toString() +
                     QLatin1Char('|') + model.index(row, FileListModel::Name).data().toString());
    return paths.join(QLatin1Char('\n'));
}

void filterBy(QWidget &window, const QString &text)
{
    QLineEdit &line = filter(window);
    line.setFocus();
    line.selectAll();
    QTest::keyClick(&line, Qt::Key_Delete);
    if (!text.isEmpty()) {
        QTest::keyClick(&line, Qt::Key_A); // the box's own pattern
        line.selectAll();
        QTest::keyClicks(&line, text);
    }
    QTest::keyClick(&line, Qt::Key_Return);
}
} // namespace

/// The list of every file below a remote path.
class tst_sfFlst : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void listsFilesAtAndBelow();
    void pathIsCut_data();
    void pathIsCut();
    void emptyPathIsTheLastOne();
    void emptyBoxTakesThePattern();
    void filters_data();
    void filters();
    void cells();
    void headingsSort();
    void rowsAreCopiedAsText();
    void firstRowIsCopiedByKeyboard();
    void menuCopies();
    void arrowPointsUpForAscending();
    void longPathKeepsItsEnds();
    void enterCloses();
    void pathsOfAnyLetters_data();
    void pathsOfAnyLetters();
    void notConnected();
    void refusedStatement();
    void escapeCloses();
    void modelIsSound();
    void manyFiles();
    void everythingHasAName();

private:
    void act(const QString &path, const std::function<void(QWidget &)> &action);
    void add(const QString &dir, const QString &name, int size = 0, double day = 45000.5,
             bool folder = false);

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<SyncWorld> m_world;
    std::unique_ptr<sfFlst> m_window;
};

void tst_sfFlst::init()
{
    m_server = std::make_unique<ScriptedServer>();
    QVERIFY(m_server->start());
    m_world = std::make_unique<SyncWorld>();
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    QVERIFY(m_world->connectToSite());
    m_window = std::make_unique<sfFlst>(m_world->database, m_world->session, m_world->person);
    add(QStringLiteral("/"), QStringLiteral("pub"), 0, 45000, true);
    add(QStringLiteral("/"), QStringLiteral("root.txt"), 1);
    add(QStringLiteral("/pub"), QStringLiteral("b.html"), 1'234'567, 45001.25);
    add(QStringLiteral("/pub"), QStringLiteral("A.TXT"), 3, 45003.75);
    add(QStringLiteral("/pub/sub"), QStringLiteral("README"), 500, 45002);
    add(QStringLiteral("/public"), QStringLiteral("other.txt"), 5);
}

void tst_sfFlst::cleanup()
{
    m_window.reset();
    m_world.reset();
    m_server.reset();
}

void tst_sfFlst::add(const QString &dir, const QString &name, int size, double day, bool folder)
{
    m_world->database.openTable(m_world->session.currentSite())
        ->add({QStringLiteral("sDir"), QStringLiteral("bFd"), QStringLiteral("sName"),
               QStringLiteral("dDate"), QStringLiteral("nSize")},
              {dir, folder ? 1 : 0, name, day, size});
}

void tst_sfFlst::act(const QString &path, const std::function<void(QWidget &)> &action)
{
    bool acted = false;
    whileShown(QStringLiteral("sfFlst"), [&](QWidget &window) {
        action(window);
        acted = true;
    });
    m_window->Act(path);
    QVERIFY(acted);
}

void tst_sfFlst::listsFilesAtAndBelow()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QVERIFY(window.isModal());
        QCOMPARE(listed(window), QStringLiteral("/pub|A.TXT\n/pub|b.html\n/pub/sub|README"));
        QCOMPARE(part<QLabel>(window, "lbCount").text(), QStringLiteral("3 件"));
        QCOMPARE(part<QLabel>(window, "lbPath").text(), QStringLiteral("/pub"));
    });
}

void tst_sfFlst::pathIsCut_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<int>("files");
    QTest::newRow("server in front")
        << QStringLiteral("ftp.example.jp/pub/sub") << QStringLiteral("/pub/sub") << 1;
    QTest::newRow("bare server") << QStringLiteral("ftp.example.jp") << QStringLiteral("/") << 5;
    QTest::newRow("root") << QStringLiteral("/") << QStringLiteral("/") << 5;
    QTest::newRow("trailing separator") << QStringLiteral("/pub/") << QStringLiteral("/pub") << 3;
}

void tst_sfFlst::pathIsCut()
{
    QFETCH(QString, path);
    QFETCH(QString, shown);
    QFETCH(int, files);
    act(path, [=](QWidget &window) {
        QCOMPARE(part<QLabel>(window, "lbPath").text(), shown);
        QCOMPARE(grid(window).model()->rowCount(), files);
    });
}

void tst_sfFlst::emptyPathIsTheLastOne()
{
    act({}, [](QWidget &window) { QCOMPARE(grid(window).model()->rowCount(), 0); });
    act(QStringLiteral("/pub/sub"), [](QWidget &) {});
    add(QStringLiteral("/pub/sub"), QStringLiteral("new"));
    act({}, [](QWidget &window) {
        QCOMPARE(listed(window), QStringLiteral("/pub/sub|new\n/pub/sub|README"));
    });
}

void tst_sfFlst::emptyBoxTakesThePattern()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QVERIFY(filter(window).hasFocus());
        QVERIFY(filter(window).text().isEmpty());
        QTest::keyClick(&filter(window), Qt::Key_X);
        QCOMPARE(filter(window).text(), QStringLiteral("*.*"));
        QTest::keyClick(&filter(window), Qt::Key_X);
        QCOMPARE(filter(window).text(), QStringLiteral("*.*x"));
    });
}

void tst_sfFlst::filters_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("names");
    QTest::newRow("none") << QString()
                          << QStringLiteral("/pub|A.TXT\n/pub|b.html\n/pub/sub|README");
    QTest::newRow("*.*") << QStringLiteral("*.*") << QStringLiteral("/pub|A.TXT\n/pub|b.html");
    QTest::newRow("letter case") << QStringLiteral("a.txt") << QStringLiteral("/pub|A.TXT");
    QTest::newRow("one character") << QStringLiteral("?.t?t") << QStringLiteral("/pub|A.TXT");
    QTest::newRow("no name") << QStringLiteral("zzz") << QString();
    QTest::newRow("brackets are letters") << QStringLiteral("[ab]*") << QString();
}

void tst_sfFlst::filters()
{
    QFETCH(QString, pattern);
    QFETCH(QString, names);
    act(QStringLiteral("/pub"), [=](QWidget &window) {
        filterBy(window, pattern);
        QCOMPARE(listed(window), names);
        const bool all = pattern.isEmpty();
        QCOMPARE(part<QLabel>(window, "lbCount").text().contains(QStringLiteral("全 3 件中")),
                 !all);
        QVERIFY(window.isVisible());
    });
}

void tst_sfFlst::cells()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        const QAbstractItemModel &model = *grid(window).model();
        QStringList headings;
        QStringList cells;
        for (int column = 0; column < model.columnCount(); ++column) {
            headings.append(model.headerData(column, Qt::Horizontal).toString());
            cells.append(model.index(1, column).data().toString());
        }
        QCOMPARE(headings.join(QLatin1Char('|')), QStringLiteral("ﾃﾞｨﾚｸﾄﾘ|名前|ｻｲｽﾞ|更新日時"));
        QCOMPARE(cells.join(QLatin1Char('|')),
                 QStringLiteral("/pub|b.html|1,235KB|23/03/16 06:00:00"));
    });
}

void tst_sfFlst::headingsSort()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        const QHeaderView &header = *grid(window).horizontalHeader();
        const auto clickOn = [&](int column) {
            QTest::mouseClick(
                header.viewport(), Qt::LeftButton, {},
                QPoint(header.sectionViewportPosition(column) + 20, header.height() / 2));
        };
        const auto first = [&] { return listed(window).section(QLatin1Char('\n'), 0, 0); };
        clickOn(FileListModel::Size);
        QCOMPARE(first(), QStringLiteral("/pub|A.TXT"));
        clickOn(FileListModel::Size);
        QCOMPARE(first(), QStringLiteral("/pub|b.html"));
        clickOn(FileListModel::Date);
        QCOMPARE(first(), QStringLiteral("/pub|b.html"));
        clickOn(FileListModel::Name);
        QCOMPARE(listed(window), QStringLiteral("/pub|A.TXT\n/pub|b.html\n/pub/sub|README"));
        clickOn(FileListModel::Directory);
        clickOn(FileListModel::Directory);
        QCOMPARE(first(), QStringLiteral("/pub/sub|README"));
        // A fill keeps the order.
        filterBy(window, QStringLiteral("*"));
        QCOMPARE(first(), QStringLiteral("/pub/sub|README"));
    });
}

void tst_sfFlst::rowsAreCopiedAsText()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QTableView &view = grid(window);
        clickCell(view, 2, 1);
        QTest::mouseClick(view.viewport(), Qt::LeftButton, Qt::ControlModifier,
                          view.visualRect(view.model()->index(0, 1)).center());
        QTest::keyClick(&view, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(),
                 QStringLiteral("/pub\tA.TXT\t3B\t23/03/18 18:00:00\r\n"
                                "/pub/sub\tREADME\t500B\t23/03/17 00:00:00\r\n"));
    });
}

void tst_sfFlst::firstRowIsCopiedByKeyboard()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QTest::keyClick(&filter(window), Qt::Key_Tab);
        QVERIFY(grid(window).hasFocus());
        const auto copied = [&] {
            QTest::keyClick(&grid(window), Qt::Key_C, Qt::ControlModifier);
            return QApplication::clipboard()->text().section(QLatin1Char('\t'), 1, 1);
        };
        QCOMPARE(copied(), QStringLiteral("A.TXT"));
        QTest::keyClick(&grid(window), Qt::Key_Down);
        QCOMPARE(copied(), QStringLiteral("b.html"));
        // Copying in the box is the box's own.
        filterBy(window, QStringLiteral("*.*"));
        filter(window).selectAll();
        QTest::keyClick(&filter(window), Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), QStringLiteral("*.*"));
    });
}

void tst_sfFlst::menuCopies()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QTableView &view = grid(window);
        clickCell(view, 1, 1);
        QTimer::singleShot(50, &view, [] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            QVERIFY(menu != nullptr);
            QCOMPARE(menu->actions().size(), 1);
            QTest::keyClick(menu, Qt::Key_C);
        });
        const QPoint at = view.visualRect(view.model()->index(1, 1)).center();
        QContextMenuEvent event(QContextMenuEvent::Mouse, at, view.viewport()->mapToGlobal(at));
        QApplication::sendEvent(view.viewport(), &event);
        QVERIFY(QApplication::clipboard()->text().startsWith(QStringLiteral("/pub\tb.html\t")));
    });
}

void tst_sfFlst::arrowPointsUpForAscending()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QHeaderView &header = *grid(window).horizontalHeader();
        // Where the arrow is drawn, the way up has its point above its base.
        const auto widthAt = [](const QImage &image, const QRect &arrow, int y) {
            int dark = 0;
            for (int x = arrow.left(); x <= arrow.right(); ++x)
                dark += qGray(image.pixel(x, y)) < 128 ? 1 : 0;
            return dark;
        };
        const auto pointsUp = [&] {
            const QImage image = header.viewport()->grab().toImage();
            const int right = header.sectionSize(FileListModel::Directory);
            const QRect arrow(right - 22, 2, 20, header.height() - 4);
            QList<int> widths;
            for (int y = arrow.top(); y <= arrow.bottom(); ++y) {
                if (const int width = widthAt(image, arrow, y); width > 0)
                    widths.append(width);
            }
            if (widths.size() < 2)
                qFatal("no arrow");
            return widths.constFirst() < widths.constLast();
        };
        QVERIFY(pointsUp());
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, QPoint(20, header.height() / 2));
        QVERIFY(!pointsUp());
    });
}

void tst_sfFlst::longPathKeepsItsEnds()
{
    const QString path =
        QStringLiteral("/first/R&D") + QString(300, u'x') + QStringLiteral("/last");
    act(path, [&](QWidget &window) {
        const auto &label = part<QLabel>(window, "lbPath");
        QVERIFY(label.text().startsWith(QStringLiteral("/first/")));
        QVERIFY(label.text().endsWith(QStringLiteral("/last")));
        QVERIFY(label.fontMetrics().horizontalAdvance(label.text()) <= label.width());
        QCOMPARE(shownToolTip(label.toolTip()), path);
        const auto shown = label.text().size();
        window.resize(window.width() + 200, window.height());
        QVERIFY(label.text().size() > shown);
    });
}

void tst_sfFlst::enterCloses()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QTest::keyClick(&filter(window), Qt::Key_Return);
        QVERIFY(window.isVisible());
        QTest::keyClick(&filter(window), Qt::Key_Tab, Qt::ShiftModifier);
        auto &button = part<QPushButton>(window, "cmClose");
        QVERIFY(button.hasFocus());
        QTest::keyClick(&button, Qt::Key_Return);
        QVERIFY(!window.isVisible());
    });
}

void tst_sfFlst::pathsOfAnyLetters_data()
{
    QTest::addColumn<QString>("path");
    for (const char *path : {"/it's", "/a*c", "/a?c", "/a[b]c", "/a#c", "/50%", "/日本 語"})
        QTest::newRow(path) << QString::fromUtf8(path);
}

void tst_sfFlst::pathsOfAnyLetters()
{
    QFETCH(QString, path);
    add(path, QStringLiteral("in"));
    add(path + QStringLiteral("/deep"), QStringLiteral("in2"));
    add(QStringLiteral("/abc"), QStringLiteral("out"));
    act(path, [path](QWidget &window) {
        QCOMPARE(listed(window),
                 path + QStringLiteral("|in\n") + path + QStringLiteral("/deep|in2"));
    });
}

void tst_sfFlst::notConnected()
{
    act(QStringLiteral("/pub"), [](QWidget &) {});
    m_world->session.Disconnect();
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QCOMPARE(grid(window).model()->rowCount(), 0);
        QCOMPARE(part<QLabel>(window, "lbCount").text(), QStringLiteral("接続していません"));
    });
}

void tst_sfFlst::refusedStatement()
{
    m_world->database.CloseDb();
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QCOMPARE(part<QLabel>(window, "lbCount").text(), QStringLiteral("一覧を読めません"));
    });
    QCOMPARE(m_world->person.messages().size(), 1);
    QVERIFY(QApplication::overrideCursor() == nullptr);
}

void tst_sfFlst::escapeCloses()
{
    act(QStringLiteral("/pub"), [](QWidget &window) {
        QTest::keyClick(&filter(window), Qt::Key_Escape);
        QVERIFY(!window.isVisible());
        QVERIFY(filter(window).text().isEmpty());
    });
}

void tst_sfFlst::modelIsSound()
{
    FileListModel model;
    const QAbstractItemModelTester tester(&model,
                                          QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setFiles({{QStringLiteral("/"), QStringLiteral("b"), 1, 2},
                    {QStringLiteral("/"), QStringLiteral("c"), 3, 1},
                    {QStringLiteral("/a"), QStringLiteral("A"), 2, 3}});
    const QPersistentModelIndex kept(model.index(2, 1));
    for (int column = 0; column < FileListModel::Columns; ++column) {
        model.sort(column, Qt::AscendingOrder);
        model.sort(column, Qt::DescendingOrder);
        QCOMPARE(kept.data().toString(), QStringLiteral("A"));
    }
    model.setFiles({});
    QCOMPARE(model.rowCount(), 0);
}

/// A figure for the reader of the log; the limit only catches what grows faster than the rows.
void tst_sfFlst::manyFiles()
{
    constexpr int many = 200'000;
    {
        Transaction transaction(m_world->database);
        m_world->database.store().exec(
            QStringLiteral("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i+1 FROM n WHERE "
                           "i < %1) INSERT INTO \"%2\" (sDir, bFd, sName, dDate, nSize) "
                           "SELECT '/big/d' || (i / 100), 0, 'f' || i || '.txt', 45000.5, i FROM n")
                .arg(many)
                .arg(m_world->session.currentSite()));
        transaction.commit();
    }
    QElapsedTimer time;
    time.start();
    act(QStringLiteral("/big"), [&](QWidget &window) {
        qInfo("shown after %lld ms", time.restart());
        QCOMPARE(grid(window).model()->rowCount(), many);
        grid(window).sortByColumn(FileListModel::Name, Qt::DescendingOrder);
        qInfo("sorted by name after %lld ms", time.restart());
        grid(window).scrollToBottom();
        window.grab();
        qInfo("scrolled and drawn after %lld ms", time.restart());
        grid(window).setFocus();
        QVERIFY(grid(window).hasFocus());
        grid(window).selectAll();
        QTest::keyClick(&grid(window), Qt::Key_C, Qt::ControlModifier);
        qInfo("copied after %lld ms", time.restart());
        QCOMPARE(QApplication::clipboard()->text().count(QLatin1Char('\n')), many);
        time.restart();
        filterBy(window, QStringLiteral("*9.txt"));
        qInfo("filtered after %lld ms", time.restart());
        QCOMPARE(grid(window).model()->rowCount(), many / 10);
    });
}

void tst_sfFlst::everythingHasAName()
{
    QCOMPARE(unnamed(*m_window, std::array{"QLineEdit", "QPushButton", "QTableView"}), QString());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_sfFlst)
#include "tst_sfFlst.moc"
