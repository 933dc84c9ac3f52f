#include <QDir>
#include <QFileInfo>
#include <QLabel>

#include "e2e/DesktopMain.h"
#include "e2e/OfficeDesktop.h"
#include "startup/WindowRun.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"

namespace venlo::test
{

/// The main window in daily use: both panes together, the keyboard alone, the verbs that open it,
/// and its end in the middle of something.
class tst_DailyUse : public QObject
{
    Q_OBJECT

public:
    explicit tst_DailyUse(WindowApplication &application) : m_office(application) {}

private Q_SLOTS:
    void init();
    void cleanup();

    void betweenThePanes();
    void tabGoesAsTheEyeDoes();
    void byKeyboardAlone();
    void fromTheCommandLine_data();
    void fromTheCommandLine();
    void closedDuringADownload();
    void cancelAndALostServer();
    void comparisonThatIsDeclined();

private:
    OfficeDesktop m_office;
    DesktopPerson &m_person = m_office.person;
};

void tst_DailyUse::init()
{
    QString why;
    QVERIFY2(m_office.start(&why), qPrintable(why));
}

void tst_DailyUse::cleanup()
{
    m_office.end();
}

/// Drags and the clipboard from one pane to the other, both ways.
void tst_DailyUse::betweenThePanes()
{
    m_office.settle();
    const int status = m_office.run(QStringLiteral("openp|") + OfficeDesktop::pattern(), [this] {
        const QString folder = m_office.local(QStringLiteral("報告書"));
        m_person.drag(m_person.rowPoint(ftpList, QStringLiteral("notes.txt")),
                      m_person.rowPoint(localList, QStringLiteral("報告書")));
        m_person.answer(folder + QStringLiteral("にﾀﾞｳﾝﾛｰﾄﾞします"));
        m_person.waitOutside(QStringLiteral("the file in the folder it was dropped on"), [&] {
            return QFileInfo::exists(folder + QStringLiteral("/notes.txt"));
        });

        m_person.clickRow(ftpList, QStringLiteral("old"));
        m_person.key(QStringLiteral("ctrl+c"));
        m_person.clickRow(localList, QStringLiteral("readme.txt"));
        m_person.key(QStringLiteral("ctrl+v"));
        m_person.answer(m_office.world().localFolder() + QStringLiteral("にﾀﾞｳﾝﾛｰﾄﾞします"));
        m_person.waitForRow(localList, QStringLiteral("old"));

        m_person.clickRow(localList, QStringLiteral("readme.txt"));
        m_person.key(QStringLiteral("ctrl+x"));
        m_person.clickRow(ftpList, QStringLiteral("notes.txt"));
        m_person.key(QStringLiteral("ctrl+v"));
        m_person.answer(QStringLiteral("/publicにｱｯﾌﾟﾛｰﾄﾞします"));
        m_person.waitForRow(ftpList, QStringLiteral("readme.txt"));

        m_person.drag(m_person.rowPoint(localTree, QStringLiteral("報告書")),
                      m_person.rowPoint(ftpTree, QStringLiteral("public")));
        m_person.answer(QStringLiteral("/publicにｱｯﾌﾟﾛｰﾄﾞします"));
        m_person.waitForRow(ftpList, QStringLiteral("報告書"));
        m_person.key(QStringLiteral("ctrl+q"));
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QVERIFY(QFileInfo::exists(m_office.local(QStringLiteral("old/away.txt"))));
    // A cut that is pasted on the server deletes nothing here.
    QVERIFY(QFileInfo::exists(m_office.local(QStringLiteral("readme.txt"))));
    const FtpDaemon &daemon = m_office.daemon();
    QVERIFY(daemon.exists("public/notes.txt"));
    QVERIFY(daemon.exists("public/old/away.txt"));
    QCOMPARE(daemon.file("public/報告書/notes.txt"), QByteArray("some notes"));
}

void tst_DailyUse::tabGoesAsTheEyeDoes()
{
    m_office.settle();
    const QStringList order{localTree,
                            localList,
                            QStringLiteral("uFtp/cbSvr"),
                            QStringLiteral("uFtp/imOpn"),
                            QStringLiteral("uFtp/imElse"),
                            ftpTree,
                            ftpList,
                            QStringLiteral("ffMain/ltMsg"),
                            QStringLiteral("uFile/cbRoot"),
                            QStringLiteral("uFile/imFnd"),
                            QStringLiteral("uFile/txFilter")};
    const int status = m_office.run(QStringLiteral("openp|") + OfficeDesktop::pattern(), [&] {
        m_person.waitForRow(ftpList, QStringLiteral("notes.txt"));
        for (const QString &widget : order) {
            m_person.waitForFocus(widget);
            m_person.key(QStringLiteral("Tab"));
        }
        m_person.waitForFocus(order.constFirst());
        m_person.key(QStringLiteral("shift+Tab"));
        m_person.waitForFocus(order.constLast());
        m_person.closeWindow();
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
}

void tst_DailyUse::byKeyboardAlone()
{
    m_office.settle();
    const int status = m_office.run(QString(), [this] {
        m_person.waitForRow(localList, QStringLiteral("報告書"));
        m_person.tabTo(QStringLiteral("uFtp/imOpn"));
        m_person.key(QStringLiteral("space"));
        m_person.waitForRow(ftpList, QStringLiteral("public"));

        m_person.tabTo(ftpList);
        m_person.key(QStringLiteral("Home"));
        m_person.picture(QStringLiteral("keys-01-list"));
        m_person.key(QStringLiteral("Return"));
        m_person.waitForRow(ftpList, QStringLiteral("notes.txt"));

        m_person.tabTo(localList);
        m_person.key(QStringLiteral("Home"));
        m_person.key(QStringLiteral("Menu"));
        m_person.picture(QStringLiteral("keys-02-menu"));
        m_person.key(QStringLiteral("u"));
        m_person.answerByKey(QStringLiteral("にｱｯﾌﾟﾛｰﾄﾞします"), QStringLiteral("Return"));
        m_person.waitForRow(ftpList, QStringLiteral("報告書"));

        m_person.check(m_office.daemon().put("public/arrived.txt", "from somewhere else"),
                       QStringLiteral("no file on the server"));
        m_person.tabTo(ftpList);
        m_person.key(QStringLiteral("F5"));
        m_person.waitForRow(ftpList, QStringLiteral("arrived.txt"));

        m_person.key(QStringLiteral("End"));
        m_person.key(QStringLiteral("shift+F10"));
        m_person.pickByKeys({QStringLiteral("削除")});
        m_person.picture(QStringLiteral("keys-03-delete"));
        m_person.answerByKey(QStringLiteral("削除します"), QStringLiteral("Escape"));
        m_person.waitForRow(ftpList, QStringLiteral("notes.txt"));
        m_person.key(QStringLiteral("Menu"));
        m_person.pickByKeys({QStringLiteral("削除")});
        m_person.answerByKey(QStringLiteral("削除します"), QStringLiteral("Return"));
        m_person.waitForNoRow(ftpList, QStringLiteral("notes.txt"));

        m_person.key(QStringLiteral("BackSpace"));
        m_person.waitForRow(ftpList, QStringLiteral("welcome.txt"));
        m_person.key(QStringLiteral("alt+f"));
        m_person.pickByKeys({QStringLiteral("終了")});
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    const FtpDaemon &daemon = m_office.daemon();
    QVERIFY(daemon.exists("public/報告書/図/概要.png"));
    QVERIFY(!daemon.exists("public/notes.txt"));
    QVERIFY(daemon.exists("public/arrived.txt"));
}

void tst_DailyUse::fromTheCommandLine_data()
{
    QTest::addColumn<QString>("commandLine");
    QTest::addColumn<QString>("expectedRow");
    QTest::newRow("pattern") << QStringLiteral("openp|") + OfficeDesktop::pattern()
                             << QStringLiteral("notes.txt");
    QTest::newRow("site") << QStringLiteral("open|office") << QStringLiteral("welcome.txt");
}

void tst_DailyUse::fromTheCommandLine()
{
    QFETCH(QString, commandLine);
    QFETCH(QString, expectedRow);
    m_office.settle();
    const int status = m_office.run(commandLine, [&] {
        m_person.waitForRow(ftpList, expectedRow);
        m_person.waitForRow(localList, QStringLiteral("index.html"));
        m_person.waitFor(QStringLiteral("the connected site"), [this] {
            return shown<QLabel>(QStringLiteral("uFtp/Label1")).text() ==
                   m_office.daemon().server();
        });
        m_person.picture(QStringLiteral("open-") + QString::fromLatin1(QTest::currentDataTag()));
        m_person.closeWindow();
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
}

void tst_DailyUse::closedDuringADownload()
{
    ScriptedServer server;
    server.put("/files/large.bin", QByteArray(8'000'000, 'n'));
    server.on("RETR").slow(20'000, 20);
    QVERIFY(server.start());
    const QString target = m_office.local(QStringLiteral("large.bin"));
    QVERIFY(makeTree(m_office.world().localFolder(), {{"large.bin", "the old content"}}));
    m_office.world().registerSite(QStringLiteral("slow"), server.server(), server.user(),
                                  server.password());
    m_office.world().registerPattern(OfficeDesktop::pattern(), QStringLiteral("slow"),
                                     QStringLiteral("/files"));
    m_office.world().writeLayout(1100, 720);
    const int status =
        m_office.run(QStringLiteral("openp|") + OfficeDesktop::pattern(), [this, &server] {
            m_person.rightClickRow(ftpList, QStringLiteral("large.bin"));
            m_person.pickPopup({QStringLiteral("ﾀﾞｳﾝﾛｰﾄﾞ")});
            m_person.answer(QStringLiteral("にﾀﾞｳﾝﾛｰﾄﾞします"));
            m_person.waitForFocus(QStringLiteral("sfOwt"));
            m_person.pictureOf(QStringLiteral("sfOwt"), QStringLiteral("overwrite"));
            m_person.key(QStringLiteral("alt+y"));
            m_person.waitOutside(QStringLiteral("the transfer"),
                                 [&server] { return server.count("RETR") > 0; });
            m_person.waitForWindow(QStringLiteral("sfMsg"));
            QThread::msleep(1500); // so that the picture shows a rate
            m_person.picture(QStringLiteral("story-15-download"));
            m_person.pictureOf(QStringLiteral("sfMsg"), QStringLiteral("message"));
            m_person.click(QStringLiteral("uFile/txFilter"));
            m_person.closeWindow();
        });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QFile file(target);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("the old content"));
    QCOMPARE(m_office.world().setting(QStringLiteral("Width")).toInt(), 1100);
    QCOMPARE(m_office.world().setting(QStringLiteral("ActPh")).toString(),
             m_office.world().localFolder());
    // Nothing half done is left beside it.
    QCOMPARE(QDir(m_office.world().localFolder())
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                 .size(),
             4);
}

/// Cancel hands the pane back as it is, and a server that is gone is never shown as connected.
void tst_DailyUse::cancelAndALostServer()
{
    ScriptedServer server;
    server.put("/files/b.txt", "b");
    QVERIFY(server.start());
    m_office.world().registerSite(QStringLiteral("slow"), server.server(), server.user(),
                                  server.password());
    m_office.world().registerPattern(OfficeDesktop::pattern(), QStringLiteral("slow"),
                                     QStringLiteral("/files"));
    m_office.world().writeLayout(1100, 720);
    const QString status = QStringLiteral("uFtp/Label1");
    const auto idle = [] { // Cancel shows for as long as something runs
        return !shownWidget(QStringLiteral("stBar"))
                    .findChild<QWidget *>(QStringLiteral("stCancel"))
                    ->isVisible();
    };
    const int end = m_office.run(QStringLiteral("openp|") + OfficeDesktop::pattern(), [&] {
        m_person.waitForRow(ftpList, QStringLiteral("b.txt"));
        server.on("MLSD").delay(1500);
        m_person.clickRow(ftpTree, QStringLiteral("files"));
        m_person.key(QStringLiteral("F5"));
        m_person.click(QStringLiteral("stBar/stCancel"));
        m_person.waitFor(QStringLiteral("the end of the listing"), idle);
        m_person.waitForFocus(ftpTree);
        m_person.picture(QStringLiteral("cancelled"));
        server.script().clear();
        m_person.key(QStringLiteral("F5"));
        m_person.waitForRow(ftpList, QStringLiteral("b.txt"));
        m_person.waitFor(QStringLiteral("the end of the listing"), idle);

        server.stop();
        m_person.clickRow(ftpList, QStringLiteral("b.txt"));
        m_person.key(QStringLiteral("F5"));
        m_person.answer(QStringLiteral("接続が切断されました"));
        m_person.waitFor(QStringLiteral("an unconnected pane"), [&] {
            return shown<QLabel>(status).text() == QStringLiteral("未接続") &&
                   !shownWidget(ftpList).isEnabled();
        });
        m_person.waitForNoRow(ftpList, QStringLiteral("b.txt"));
        m_person.check(server.start(), QStringLiteral("the server does not start again"));
        m_person.click(QStringLiteral("uFtp/imOpn"));
        m_person.waitForRow(ftpTree, QStringLiteral("files"));
        m_person.waitFor(QStringLiteral("a connected pane"), idle);
        m_person.key(QStringLiteral("ctrl+q"));
    });
    QVERIFY2(end == 0, qPrintable(m_person.failure()));
}

void tst_DailyUse::comparisonThatIsDeclined()
{
    ScriptedServer server;
    server.put("/files/a.txt", "a");
    server.makeFolder("/files/sub");
    QVERIFY(server.start());
    m_office.world().registerSite(QStringLiteral("slow"), server.server(), server.user(),
                                  server.password());
    m_office.world().registerPattern(OfficeDesktop::pattern(), QStringLiteral("slow"),
                                     QStringLiteral("/files"));
    m_office.world().writeLayout(1100, 720);
    const int status =
        m_office.run(QStringLiteral("openp|") + OfficeDesktop::pattern(), [this, &server] {
            m_person.waitForRow(ftpList, QStringLiteral("a.txt"));
            server.on("MLSD").delay(1200);
            m_person.rightClickRow(ftpTree, QStringLiteral("files"));
            m_person.pickPopup({QStringLiteral("同期(FTP⇒ﾏｲｺﾝﾋﾟｭｰﾀｰ)")});
            m_person.answer(QStringLiteral("同期を実行します"));
            m_person.pictureOf(QStringLiteral("sfWait"), QStringLiteral("wait"));
            m_person.waitForFocus(QStringLiteral("sfSync"));
            m_person.key(QStringLiteral("Escape"));
            m_person.waitFor(QStringLiteral("the review to go"),
                             [] { return QApplication::activeModalWidget() == nullptr; });
            m_person.click(QStringLiteral("ffMain/ltMsg"));
            m_person.closeWindow();
        });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QVERIFY(QFileInfo::exists(m_office.local(QStringLiteral("index.html"))));
    QVERIFY(!QFileInfo::exists(m_office.local(QStringLiteral("a.txt"))));
}

} // namespace venlo::test

int main(int argc, char **argv)
{
    return venlo::test::runOnDisplay<venlo::test::tst_DailyUse, venlo::WindowApplication>(argc,
                                                                                          argv);
}

#include "tst_DailyUse.moc"
