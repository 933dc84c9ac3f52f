#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include "e2e/DesktopMain.h"
#include "e2e/DesktopWorld.h"
#include "startup/WindowRun.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"

namespace venlo::test
{

/// What a new user does, from the first start on: by mouse, by keyboard alone, and from the
/// command line. Leaves pictures of every window for a person to look at.
class tst_NewUser : public QObject
{
    Q_OBJECT

public:
    explicit tst_NewUser(WindowApplication &application) : m_application(application) {}

private Q_SLOTS:
    void init();
    void cleanup();

    void aFirstDay();
    void betweenThePanes();
    void byKeyboardAlone();
    void tabGoesAsTheEyeDoes();
    void fromTheCommandLine_data();
    void fromTheCommandLine();
    void closedDuringADownload();
    void overwriteAndWaitWindows();

private:
    void fillBothSides();
    [[nodiscard]] int run(const QString &commandLine, std::function<void()> script);
    [[nodiscard]] QStringList savedLayout() const;
    void registersASite();
    void connectsAndBrowses();
    void uploadsByDrag();
    void renamesAndDeletes();
    void looksAtTheFileList();
    void registersAPattern();
    void synchronises();
    void findsEverythingAgain();

    WindowApplication &m_application;
    DesktopPerson m_person{QStringLiteral(VENLO_SCREENSHOTS)};
    std::unique_ptr<DesktopWorld> m_world;
};

namespace
{
const QString localList = QStringLiteral("uFile/LsView");
const QString ftpTree = QStringLiteral("uFtp/TrView");
const QString ftpList = QStringLiteral("uFtp/LsView");
const QString pairName = QStringLiteral("office_pair");
constexpr int chosenWidth = 1180;
constexpr int chosenHeight = 790;

QString text(const char *widget)
{
    return shown<QLineEdit>(QLatin1String(widget)).text();
}
} // namespace

void tst_NewUser::init()
{
    m_world = std::make_unique<DesktopWorld>();
    QString why;
    QVERIFY2(m_world->start(&why), qPrintable(why));
    fillBothSides();
}

void tst_NewUser::cleanup()
{
    m_world.reset();
}

void tst_NewUser::fillBothSides()
{
    const QDateTime lastWeek(QDate::currentDate().addDays(-7), QTime(9, 30, 0));
    QVERIFY(makeTree(m_world->localFolder(),
                     {{"index.html", "<html>our pages</html>", lastWeek},
                      {"readme.txt", "read me first", lastWeek},
                      {"報告書/計画.txt", "the plan", lastWeek},
                      {"報告書/図/概要.png", QByteArray(2000, 'p'), lastWeek}}));
    FtpDaemon &daemon = m_world->daemon();
    QVERIFY(daemon.put("public/notes.txt", "some notes", lastWeek));
    QVERIFY(daemon.put("public/old/away.txt", "no longer wanted", lastWeek));
    QVERIFY(daemon.put("public/過去の資料/一覧.csv", "a,b,c", lastWeek));
    QVERIFY(daemon.put("welcome.txt", "welcome", lastWeek));
    daemon.own();
}

int tst_NewUser::run(const QString &commandLine, std::function<void()> script)
{
    return m_world->run(m_application, m_person, commandLine, std::move(script));
}

void tst_NewUser::aFirstDay()
{
    int status = run(QString(), [this] {
        m_person.waitForWindow(QStringLiteral("ffMain"));
        m_person.picture(QStringLiteral("story-01-first-start"));
        registersASite();
        connectsAndBrowses();
        uploadsByDrag();
        renamesAndDeletes();
        looksAtTheFileList();
        registersAPattern();
        synchronises();
        m_person.click(QStringLiteral("ffMain/ltMsg"));
        m_person.resizeWindow(chosenWidth, chosenHeight);
        m_person.pickMenuBar(QStringLiteral("FTP"), QStringLiteral("終了"));
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    const QStringList layout = savedLayout();
    status = run(QString(), [this] {
        findsEverythingAgain();
        m_person.pickMenuBar(QStringLiteral("FTP"), QStringLiteral("終了"));
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QCOMPARE(savedLayout(), layout);
}

/// What nobody changed must not creep from start to start.
QStringList tst_NewUser::savedLayout() const
{
    QStringList lines;
    for (const char *key : {"Left", "Top", "Width", "Height", "Root", "ActPh", "WdFL", "HiFL",
                            "TrvHi", "LsCwd", "TrHiF", "LsWdF", "CbSvr"})
        lines +=
            QLatin1String(key) + QLatin1Char('=') + m_world->setting(QLatin1String(key)).toString();
    return lines;
}

void tst_NewUser::registersASite()
{
    m_person.doubleClick(QStringLiteral("uFile/cbRoot"));
    m_person.key(QStringLiteral("ctrl+a"));
    m_person.type(m_world->localFolder());
    m_person.key(QStringLiteral("Return"));
    m_person.waitForRow(localList, QStringLiteral("報告書"));

    m_person.click(QStringLiteral("uFtp/imElse"));
    m_person.picture(QStringLiteral("story-02-else-menu"));
    m_person.pickPopup({QStringLiteral("接続先登録の編集")});
    m_person.waitForFocus(QStringLiteral("sfSite/txSite0"));
    const FtpDaemon &daemon = m_world->daemon();
    for (const QString &value :
         {QStringLiteral("office"), daemon.server(), daemon.user(), daemon.password()}) {
        m_person.type(value);
        m_person.key(QStringLiteral("Tab"));
    }
    m_person.pictureOf(QStringLiteral("sfSite"), QStringLiteral("site"));
    m_person.click(QStringLiteral("sfSite/cmSite0"));
    m_person.waitForRow(QStringLiteral("sfSite/lsSite"), QStringLiteral("office"));
    m_person.clickRow(QStringLiteral("sfSite/lsSite"), QStringLiteral("office"));
    m_person.waitFor(QStringLiteral("the site's boxes"), [&] {
        return text("sfSite/txSite1") == daemon.server() && text("sfSite/txSite2") == daemon.user();
    });
    m_person.picture(QStringLiteral("story-03-site"));
    m_person.click(QStringLiteral("sfSite/cmSite4"));
}

void tst_NewUser::connectsAndBrowses()
{
    m_person.chooseInBox(QStringLiteral("uFtp/cbSvr"), QStringLiteral("office"));
    m_person.waitFor(QStringLiteral("the caption"), [] {
        return shown<QLabel>(QStringLiteral("uFtp/Label1")).text() ==
               QStringLiteral("[未接続]office");
    });
    m_person.click(QStringLiteral("uFtp/imOpn"));
    m_person.waitForRow(ftpTree, QStringLiteral("public"));
    m_person.waitForRow(ftpList, QStringLiteral("welcome.txt"));
    m_person.picture(QStringLiteral("story-04-connected"));
    m_person.doubleClickRow(ftpList, QStringLiteral("public"));
    m_person.waitForRow(ftpList, QStringLiteral("notes.txt"));
    m_person.clickArrow(ftpTree, QStringLiteral("public"));
    m_person.waitForRow(ftpTree, QStringLiteral("過去の資料"));
    m_person.picture(QStringLiteral("story-05-folder"));
}

void tst_NewUser::uploadsByDrag()
{
    m_person.drag(m_person.rowPoint(localList, QStringLiteral("報告書")),
                  m_person.spacePoint(ftpList),
                  [this] { m_person.picture(QStringLiteral("story-06-drag")); });
    m_person.waitFor(QStringLiteral("the question"),
                     [] { return shownWidget(QStringLiteral("messageBox")).isVisible(); });
    m_person.picture(QStringLiteral("story-07-upload-question"));
    m_person.answer(QStringLiteral("にｱｯﾌﾟﾛｰﾄﾞします"));
    m_person.waitForRow(ftpList, QStringLiteral("報告書"));
    m_person.check(m_world->daemon().file("public/報告書/図/概要.png").size() == 2000,
                   QStringLiteral("the folder was not uploaded whole"));
    m_person.check(QFileInfo::exists(m_world->localFolder() + QStringLiteral("/報告書/計画.txt")),
                   QStringLiteral("the drag took the folder away"));
}

void tst_NewUser::renamesAndDeletes()
{
    m_person.clickRow(ftpList, QStringLiteral("notes.txt"));
    m_person.key(QStringLiteral("F2"));
    m_person.picture(QStringLiteral("story-08-rename"));
    m_person.key(QStringLiteral("ctrl+a"));
    m_person.type(QStringLiteral("memo.txt"));
    m_person.key(QStringLiteral("Return"));
    m_person.waitForRow(ftpList, QStringLiteral("memo.txt"));
    m_person.check(m_world->daemon().file("public/memo.txt") == "some notes" &&
                       !m_world->daemon().exists("public/notes.txt"),
                   QStringLiteral("the server's file was not renamed"));

    m_person.rightClickRow(ftpList, QStringLiteral("old"));
    m_person.picture(QStringLiteral("story-09-ftp-menu"));
    m_person.pickPopup({QStringLiteral("削除")});
    m_person.answer(QStringLiteral("指定したﾌｫﾙﾀﾞ･ﾌｧｲﾙを削除します"));
    m_person.waitForNoRow(ftpList, QStringLiteral("old"));
    m_person.check(!m_world->daemon().exists("public/old"),
                   QStringLiteral("the server's folder was not deleted"));
}

void tst_NewUser::looksAtTheFileList()
{
    m_person.rightClickSpace(ftpList);
    m_person.pickPopup({QStringLiteral("ﾌｧｲﾙ一覧")});
    m_person.waitForRow(QStringLiteral("sfFlst/vSpr"), QStringLiteral("/public"));
    m_person.pictureOf(QStringLiteral("sfFlst"), QStringLiteral("filelist"));
    m_person.key(QStringLiteral("Escape"));
    m_person.waitFor(QStringLiteral("the list to go"),
                     [] { return QApplication::activeModalWidget() == nullptr; });
}

void tst_NewUser::registersAPattern()
{
    m_person.click(QStringLiteral("uFtp/imElse"));
    m_person.pickPopup({QStringLiteral("同期ﾊﾟﾀｰﾝへ登録")});
    m_person.waitForFocus(QStringLiteral("textBox"));
    m_person.picture(QStringLiteral("story-10-name"));
    m_person.key(QStringLiteral("ctrl+a"));
    m_person.type(pairName);
    m_person.key(QStringLiteral("Return"));
    m_person.waitFor(QStringLiteral("the pattern's boxes"), [&] {
        return text("sfSPtn/txSite0") == pairName &&
               text("sfSPtn/txSite1") == m_world->localFolder() &&
               text("sfSPtn/txSite2") == QLatin1String("office") &&
               text("sfSPtn/txSite3") == QLatin1String("/public");
    });
    m_person.pictureOf(QStringLiteral("sfSPtn"), QStringLiteral("pattern"));
    m_person.click(QStringLiteral("sfSPtn/cmSite4"));
}

void tst_NewUser::synchronises()
{
    m_person.rightClickSpace(localList);
    m_person.picture(QStringLiteral("story-11-local-menu"));
    m_person.pickPopup({QStringLiteral("同期(ﾏｲｺﾝﾋﾟｭｰﾀｰ⇒FTP)")});
    m_person.answer(QStringLiteral("へ同期を実行します"));
    m_person.pictureOf(QStringLiteral("sfSync"), QStringLiteral("sync"));
    m_person.click(QStringLiteral("sfSync/cmRet"));
    m_person.waitFor(QStringLiteral("the end"),
                     [] { return shownWidget(QStringLiteral("messageBox")).isVisible(); });
    m_person.picture(QStringLiteral("story-12-synchronised"));
    m_person.answer(QStringLiteral("同期が終了しました"));
    m_person.waitForRow(ftpList, QStringLiteral("index.html"));
    // A synchronisation leaves the cached rows of files that it deleted.
    m_person.clickRow(ftpList, QStringLiteral("index.html"));
    m_person.key(QStringLiteral("F5"));
    m_person.waitForNoRow(ftpList, QStringLiteral("memo.txt"));
    const QStringList differences =
        difference(snapshot(m_world->localFolder()),
                   snapshot(m_world->daemon().root() + QStringLiteral("/public")), Times::Seconds);
    m_person.check(differences.isEmpty(), differences.join(QLatin1Char('\n')));
    m_person.check(m_world->daemon().exists("welcome.txt"),
                   QStringLiteral("what lies outside the pattern was touched"));
    m_person.pictureOf(QStringLiteral("ffMain"), QStringLiteral("main"));
}

void tst_NewUser::findsEverythingAgain()
{
    m_person.waitForWindow(QStringLiteral("ffMain"));
    m_person.waitFor(QStringLiteral("the size of last time"), [] {
        return shownWidget(QStringLiteral("ffMain")).size() == QSize(chosenWidth, chosenHeight);
    });
    m_person.waitFor(QStringLiteral("the folder and the site of last time"), [this] {
        return shown<QComboBox>(QStringLiteral("uFile/cbRoot")).currentText() ==
                   m_world->localFolder() &&
               shown<QComboBox>(QStringLiteral("uFtp/cbSvr")).currentText() ==
                   QLatin1String("office");
    });
    m_person.waitForRow(localList, QStringLiteral("報告書"));
    m_person.picture(QStringLiteral("story-13-next-start"));
    m_person.click(QStringLiteral("uFtp/imElse"));
    m_person.pickPopup({QStringLiteral("同期ﾊﾟﾀｰﾝをｾｯﾄ"), pairName});
    m_person.waitForRow(ftpList, QStringLiteral("index.html"));
    m_person.waitForRow(ftpTree, QStringLiteral("public"));
    m_person.picture(QStringLiteral("story-14-pattern-shown"));
}

/// Drags and the clipboard from one pane to the other, both ways.
void tst_NewUser::betweenThePanes()
{
    m_world->registerSite(QStringLiteral("office"));
    m_world->registerPattern(pairName, QStringLiteral("office"), QStringLiteral("/public"));
    m_world->writeLayout(1100, 720);
    const int status = run(QStringLiteral("openp|") + pairName, [this] {
        const QString folder = m_world->localFolder() + QStringLiteral("/報告書");
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
        m_person.answer(m_world->localFolder() + QStringLiteral("にﾀﾞｳﾝﾛｰﾄﾞします"));
        m_person.waitForRow(localList, QStringLiteral("old"));

        m_person.clickRow(localList, QStringLiteral("readme.txt"));
        m_person.key(QStringLiteral("ctrl+x"));
        m_person.clickRow(ftpList, QStringLiteral("notes.txt"));
        m_person.key(QStringLiteral("ctrl+v"));
        m_person.answer(QStringLiteral("/publicにｱｯﾌﾟﾛｰﾄﾞします"));
        m_person.waitForRow(ftpList, QStringLiteral("readme.txt"));

        m_person.drag(m_person.rowPoint(QStringLiteral("uFile/TrView"), QStringLiteral("報告書")),
                      m_person.rowPoint(ftpTree, QStringLiteral("public")));
        m_person.answer(QStringLiteral("/publicにｱｯﾌﾟﾛｰﾄﾞします"));
        m_person.waitForRow(ftpList, QStringLiteral("報告書"));
        m_person.key(QStringLiteral("ctrl+q"));
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QVERIFY(QFileInfo::exists(m_world->localFolder() + QStringLiteral("/old/away.txt")));
    // A cut that is pasted on the server deletes nothing here.
    QVERIFY(QFileInfo::exists(m_world->localFolder() + QStringLiteral("/readme.txt")));
    const FtpDaemon &daemon = m_world->daemon();
    QVERIFY(daemon.exists("public/notes.txt"));
    QVERIFY(daemon.exists("public/old/away.txt"));
    QCOMPARE(daemon.file("public/報告書/notes.txt"), QByteArray("some notes"));
}

void tst_NewUser::tabGoesAsTheEyeDoes()
{
    m_world->registerSite(QStringLiteral("office"));
    m_world->registerPattern(pairName, QStringLiteral("office"), QStringLiteral("/public"));
    m_world->writeLayout(1100, 720);
    const QStringList order{QStringLiteral("uFile/TrView"),  QStringLiteral("uFile/LsView"),
                            QStringLiteral("uFtp/cbSvr"),    QStringLiteral("uFtp/imOpn"),
                            QStringLiteral("uFtp/imElse"),   QStringLiteral("uFtp/TrView"),
                            QStringLiteral("uFtp/LsView"),   QStringLiteral("ffMain/ltMsg"),
                            QStringLiteral("uFile/cbRoot"),  QStringLiteral("uFile/imFnd"),
                            QStringLiteral("uFile/txFilter")};
    const int status = run(QStringLiteral("openp|") + pairName, [&] {
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

void tst_NewUser::byKeyboardAlone()
{
    m_world->registerSite(QStringLiteral("office"));
    m_world->writeLayout(1100, 720);
    const int status = run(QString(), [this] {
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

        m_person.check(m_world->daemon().put("public/arrived.txt", "from somewhere else"),
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
    const FtpDaemon &daemon = m_world->daemon();
    QVERIFY(daemon.exists("public/報告書/図/概要.png"));
    QVERIFY(!daemon.exists("public/notes.txt"));
    QVERIFY(daemon.exists("public/arrived.txt"));
}

void tst_NewUser::fromTheCommandLine_data()
{
    QTest::addColumn<QString>("commandLine");
    QTest::addColumn<QString>("expectedRow");
    QTest::newRow("pattern") << QStringLiteral("openp|") + pairName << QStringLiteral("notes.txt");
    QTest::newRow("site") << QStringLiteral("open|office") << QStringLiteral("welcome.txt");
}

void tst_NewUser::fromTheCommandLine()
{
    QFETCH(QString, commandLine);
    QFETCH(QString, expectedRow);
    m_world->registerSite(QStringLiteral("office"));
    m_world->registerPattern(pairName, QStringLiteral("office"), QStringLiteral("/public"));
    m_world->writeLayout(1100, 720);
    const int status = run(commandLine, [&] {
        m_person.waitForRow(ftpList, expectedRow);
        m_person.waitForRow(localList, QStringLiteral("index.html"));
        m_person.waitFor(QStringLiteral("the connected site"), [this] {
            return shown<QLabel>(QStringLiteral("uFtp/Label1")).text() ==
                   m_world->daemon().server();
        });
        m_person.picture(QStringLiteral("open-") + QString::fromLatin1(QTest::currentDataTag()));
        m_person.closeWindow();
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
}

void tst_NewUser::closedDuringADownload()
{
    ScriptedServer server;
    server.put("/files/large.bin", QByteArray(8'000'000, 'n'));
    server.on("RETR").slow(20'000, 20);
    QVERIFY(server.start());
    const QString target = m_world->localFolder() + QStringLiteral("/large.bin");
    QVERIFY(makeTree(m_world->localFolder(), {{"large.bin", "the old content"}}));
    m_world->registerSite(QStringLiteral("slow"), server.server(), server.user(),
                          server.password());
    m_world->registerPattern(pairName, QStringLiteral("slow"), QStringLiteral("/files"));
    m_world->writeLayout(1100, 720);
    const int status = run(QStringLiteral("openp|") + pairName, [this, &server] {
        m_person.rightClickRow(ftpList, QStringLiteral("large.bin"));
        m_person.pickPopup({QStringLiteral("ﾀﾞｳﾝﾛｰﾄﾞ")});
        m_person.answer(QStringLiteral("にﾀﾞｳﾝﾛｰﾄﾞします"));
        m_person.waitForWindow(QStringLiteral("sfOwt"));
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
    QCOMPARE(m_world->setting(QStringLiteral("Width")).toInt(), 1100);
    QCOMPARE(m_world->setting(QStringLiteral("ActPh")).toString(), m_world->localFolder());
    // Nothing half done is left beside it.
    QCOMPARE(QDir(m_world->localFolder())
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot)
                 .size(),
             4);
}

void tst_NewUser::overwriteAndWaitWindows()
{
    ScriptedServer server;
    server.put("/files/a.txt", "a");
    server.makeFolder("/files/sub");
    QVERIFY(server.start());
    m_world->registerSite(QStringLiteral("slow"), server.server(), server.user(),
                          server.password());
    m_world->registerPattern(pairName, QStringLiteral("slow"), QStringLiteral("/files"));
    m_world->writeLayout(1100, 720);
    const int status = run(QStringLiteral("openp|") + pairName, [this, &server] {
        m_person.waitForRow(ftpList, QStringLiteral("a.txt"));
        server.on("MLSD").delay(1200);
        m_person.rightClickRow(ftpTree, QStringLiteral("files"));
        m_person.pickPopup({QStringLiteral("同期(FTP⇒ﾏｲｺﾝﾋﾟｭｰﾀｰ)")});
        m_person.answer(QStringLiteral("同期を実行します"));
        m_person.pictureOf(QStringLiteral("sfWait"), QStringLiteral("wait"));
        m_person.waitForWindow(QStringLiteral("sfSync"));
        m_person.key(QStringLiteral("Escape"));
        m_person.waitFor(QStringLiteral("the review to go"),
                         [] { return QApplication::activeModalWidget() == nullptr; });
        m_person.click(QStringLiteral("ffMain/ltMsg"));
        m_person.closeWindow();
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QVERIFY(QFileInfo::exists(m_world->localFolder() + QStringLiteral("/index.html")));
    QVERIFY(!QFileInfo::exists(m_world->localFolder() + QStringLiteral("/a.txt")));
}

} // namespace venlo::test

int main(int argc, char **argv)
{
    return venlo::test::runOnDisplay<venlo::test::tst_NewUser, venlo::WindowApplication>(argc,
                                                                                         argv);
}

#include "tst_NewUser.moc"
