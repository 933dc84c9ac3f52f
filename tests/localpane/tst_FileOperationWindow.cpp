// What a person sees of a file operation: its window and its questions.
#include "localpane/CommandsFixture.h"

#include <QLabel>
#include <QMessageBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>

#include "gui/WindowDriver.h"
#include "localpane/FileOperationWatcher.h"
#include "platform/FileClipboard.h"

namespace venlo
{

using test::CommandsFixture;
using test::press;
using test::ScriptedPerson;
using test::whenShown;

class tst_FileOperationWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void comesAfterAMoment();
    void cancelIsHeard_data();
    void cancelIsHeard();
    void overwriteQuestion_data();
    void overwriteQuestion();
    void escapeCancelsEverything();
    void mergeQuestion();
    void wordsOfDeleteQuestions();
    void failures();
};

namespace
{
ShellFileProgress at(qint64 done)
{
    return {ShellVerb::Copy, QStringLiteral("写真.jpg"), done, 1000, true};
}
} // namespace

void tst_FileOperationWindow::comesAfterAMoment()
{
    QWidget pane;
    FileOperationWindow window(&pane);
    window.showProgress(at(100));
    QVERIFY(!window.isVisible());
    QTest::qWait(600);
    window.showProgress(at(250));
    QVERIFY(window.isVisible());
    QVERIFY(!window.isModal());
    QCOMPARE(window.objectName(), QStringLiteral("sfOpr"));
    QCOMPARE(window.windowTitle(), QStringLiteral("複写しています"));
    QCOMPARE(window.findChild<QLabel *>(QStringLiteral("lbName"))->text(),
             QStringLiteral("写真.jpg"));
    auto *bar = window.findChild<QProgressBar *>();
    QCOMPARE(bar->value() * 4, bar->maximum());
    ShellFileProgress unknown = at(3);
    unknown.total = 0;
    window.showProgress(unknown);
    QCOMPARE(bar->maximum(), 0); // runs to and fro
}

void tst_FileOperationWindow::cancelIsHeard_data()
{
    QTest::addColumn<QString>("how");
    for (const char *how : {"button", "escape", "close", "desk"})
        QTest::newRow(how) << QString::fromLatin1(how);
}

void tst_FileOperationWindow::cancelIsHeard()
{
    QFETCH(const QString, how);
    QWidget pane;
    ScriptedPerson person;
    FileOperationWatcher watcher(person, pane);
    QVERIFY(watcher.goOn(at(1)));
    QTest::qWait(600);
    QVERIFY(watcher.goOn(at(2)));
    auto *window = pane.findChild<QDialog *>(QStringLiteral("sfOpr"));
    QVERIFY(window != nullptr && window->isVisible());
    if (how == QLatin1String("button"))
        QTest::mouseClick(window->findChild<QPushButton *>(QStringLiteral("cmCancel")),
                          Qt::LeftButton);
    else if (how == QLatin1String("escape"))
        QTest::keyClick(window, Qt::Key_Escape);
    else if (how == QLatin1String("close"))
        window->close();
    else
        person.requestCancel();
    QVERIFY(!watcher.goOn(at(3)));
    QVERIFY(person.yields() > 0); // the windows were let draw
}

void tst_FileOperationWindow::overwriteQuestion_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<QByteArray>("a");
    QTest::addColumn<QByteArray>("b");
    QTest::newRow("yes, then no") << QStringLiteral("はい(&Y)") << QByteArray("new")
                                  << QByteArray("old");
    QTest::newRow("yes to all") << QStringLiteral("すべてはい") << QByteArray("new")
                                << QByteArray("new");
    QTest::newRow("no, twice") << QStringLiteral("いいえ(&N)") << QByteArray("old")
                               << QByteArray("old");
    QTest::newRow("cancel") << QStringLiteral("ｷｬﾝｾﾙ") << QByteArray("old") << QByteArray("old");
}

void tst_FileOperationWindow::overwriteQuestion()
{
    if (venlo::test::onWindows)
        QSKIP(venlo::test::shellsOwn);
    QFETCH(const QString, button);
    QFETCH(const QByteArray, a);
    QFETCH(const QByteArray, b);
    CommandsFixture f;
    const QDateTime then(QDate(2021, 2, 3), QTime(14, 5, 6));
    f.show({{"to/a.txt", "old", then},
            {"to/b.txt", "old"},
            {"a.txt", "new", then.addDays(1)},
            {"b.txt", "new"}});
    putFilesOnClipboard({f.at(QStringLiteral("a.txt")), f.at(QStringLiteral("b.txt"))}, copyEffect);
    f.chooseNode(QStringLiteral("to"));
    QString text;
    QString details;
    whenShown(QStringLiteral("sfRpl"), [&](QWidget &window) {
        const auto &box = static_cast<const QMessageBox &>(window);
        text = box.text();
        details = box.informativeText();
        press(window, button);
        if (button == QStringLiteral("はい(&Y)") || button == QStringLiteral("いいえ(&N)"))
            whenShown(QStringLiteral("sfRpl"),
                      [](QWidget &second) { press(second, QStringLiteral("いいえ(&N)")); });
    });
    f.menu(7, true);
    QCOMPARE(text, QStringLiteral("このﾌｫﾙﾀﾞには既に 'a.txt' ﾌｧｲﾙが存在します｡\n上書きしますか ?"));
    QCOMPARE(details, QStringLiteral("現在のﾌｧｲﾙ  3B  更新日時 21/02/03 14:05:06\n"
                                     "新しいﾌｧｲﾙ  3B  更新日時 21/02/04 14:05:06"));
    QCOMPARE(f.read(QStringLiteral("to/a.txt")), a);
    QCOMPARE(f.read(QStringLiteral("to/b.txt")), b);
    QVERIFY(f.person.verify());
}

void tst_FileOperationWindow::escapeCancelsEverything()
{
    CommandsFixture f;
    f.show({{"to/a.txt", "old"}, {"a.txt", "new"}, {"b.txt", "new"}});
    putFilesOnClipboard({f.at(QStringLiteral("a.txt")), f.at(QStringLiteral("b.txt"))}, cutEffect);
    f.chooseNode(QStringLiteral("to"));
    whenShown(QStringLiteral("sfRpl"),
              [](QWidget &window) { QTest::keyClick(&window, Qt::Key_Escape); });
    f.menu(7, true);
    QCOMPARE(f.read(QStringLiteral("to/a.txt")), QByteArray("old"));
    QVERIFY(!f.has(QStringLiteral("to/b.txt")));
    QVERIFY(f.has(QStringLiteral("a.txt")) && f.has(QStringLiteral("b.txt")));
    QVERIFY(!f.gate.busy());
    QCOMPARE(f.busy, 0);
}

void tst_FileOperationWindow::mergeQuestion()
{
    if (venlo::test::onWindows)
        QSKIP(venlo::test::shellsOwn);
    CommandsFixture f;
    f.show({{"to/d/old.txt", "old"}, {"d/new.txt", "new"}});
    putFilesOnClipboard({f.at(QStringLiteral("d"))}, copyEffect);
    f.chooseNode(QStringLiteral("to"));
    QString text;
    whenShown(QStringLiteral("sfRpl"), [&text](QWidget &window) {
        text = static_cast<const QMessageBox &>(window).text();
        QTest::keyClick(&window, Qt::Key_Return); // yes is the default
    });
    f.menu(7, true);
    QCOMPARE(text,
             QStringLiteral("このﾌｫﾙﾀﾞには既に 'd' ﾌｫﾙﾀﾞが存在します｡\n中のﾌｧｲﾙをまとめますか ?"));
    QVERIFY(f.has(QStringLiteral("to/d/old.txt")) && f.has(QStringLiteral("to/d/new.txt")));
}

void tst_FileOperationWindow::wordsOfDeleteQuestions()
{
    QWidget pane;
    ScriptedPerson person;
    FileOperationWatcher watcher(person, pane);
    const QStringList one{QStringLiteral("/tmp/a.txt")};
    const QStringList two{QStringLiteral("/tmp/a.txt"), QStringLiteral("/tmp/b")};
    person.expectQuestion(QStringLiteral("'a.txt' をごみ箱に移動します"), true);
    QVERIFY(watcher.confirmDelete(one, false));
    person.expectQuestion(
        QStringLiteral("ごみ箱がないため､'a.txt' を完全に削除します｡元に戻すことはできません"),
        false);
    QVERIFY(!watcher.confirmDelete(one, true));
    person.expectQuestion(QStringLiteral("ごみ箱がないため､選択した 2 個のﾌｫﾙﾀﾞ･ﾌｧｲﾙを"
                                         "完全に削除します｡元に戻すことはできません"),
                          true);
    QVERIFY(watcher.confirmDelete(two, true));
    QVERIFY(person.verify());
}

void tst_FileOperationWindow::failures()
{
    QWidget pane;
    ScriptedPerson person;
    FileOperationWatcher watcher(person, pane);
    person.expectQuestion(QStringLiteral("/a\nwhy\n\n残りの処理を続けますか ?"), false);
    QVERIFY(!watcher.failed(QStringLiteral("/a"), QStringLiteral("why"), true));
    person.expectMessage(QStringLiteral("/a\nwhy"));
    QVERIFY(watcher.failed(QStringLiteral("/a"), QStringLiteral("why"), false));
    QVERIFY(person.verify());
}

} // namespace venlo

QTEST_MAIN(venlo::tst_FileOperationWindow)
#include "tst_FileOperationWindow.moc"
