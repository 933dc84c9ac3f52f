#include <QComboBox>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>

#include "e2e/DesktopMain.h"
#include "e2e/OfficeDesktop.h"
#include "startup/WindowRun.h"
#include "support/Trees.h"

namespace venlo::test
{

namespace
{
constexpr int chosenWidth = 1180;
constexpr int chosenHeight = 790;

QString text(const char *widget)
{
    return shown<QLineEdit>(QLatin1String(widget)).text();
}
} // namespace

/// What a new user does on the first day, by mouse, and finds again at the next start. Leaves
/// pictures of the windows for a person to look at.
class tst_NewUser : public QObject
{
    Q_OBJECT

public:
    explicit tst_NewUser(WindowApplication &application) : m_office(application) {}

private Q_SLOTS:
    void init();
    void cleanup();

    void aFirstDay();

private:
    [[nodiscard]] QStringList savedLayout();
    void registersASite();
    void connectsAndBrowses();
    void uploadsByDrag();
    void renamesAndDeletes();
    void looksAtTheFileList();
    void registersAPattern();
    void synchronises();
    void findsEverythingAgain();
    OfficeDesktop m_office;
    DesktopPerson &m_person = m_office.person;
};

void tst_NewUser::init()
{
    QString why;
    QVERIFY2(m_office.start(&why), qPrintable(why));
}

void tst_NewUser::cleanup()
{
    m_office.end();
}

void tst_NewUser::aFirstDay()
{
    int status = m_office.run(QString(), [this] {
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
    status = m_office.run(QString(), [this] {
        findsEverythingAgain();
        m_person.pickMenuBar(QStringLiteral("FTP"), QStringLiteral("終了"));
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QCOMPARE(savedLayout(), layout);
}

/// What nobody changed must not creep from start to start.
QStringList tst_NewUser::savedLayout()
{
    QStringList lines;
    for (const char *key : {"Left", "Top", "Width", "Height", "Root", "ActPh", "WdFL", "HiFL",
                            "TrvHi", "LsCwd", "TrHiF", "LsWdF", "CbSvr"})
        lines += QLatin1String(key) + QLatin1Char('=') +
                 m_office.world().setting(QLatin1String(key)).toString();
    return lines;
}

void tst_NewUser::registersASite()
{
    m_person.doubleClick(QStringLiteral("uFile/cbRoot"));
    m_person.key(QStringLiteral("ctrl+a"));
    m_person.type(m_office.world().localFolder());
    m_person.key(QStringLiteral("Return"));
    m_person.waitForRow(localList, QStringLiteral("報告書"));

    m_person.click(QStringLiteral("uFtp/imElse"));
    m_person.picture(QStringLiteral("story-02-else-menu"));
    m_person.pickPopup({QStringLiteral("接続先登録の編集")});
    m_person.waitForFocus(QStringLiteral("sfSite/txSite0"));
    const FtpDaemon &daemon = m_office.daemon();
    for (const QString &value :
         {OfficeDesktop::site(), daemon.server(), daemon.user(), daemon.password()}) {
        m_person.type(value);
        m_person.key(QStringLiteral("Tab"));
    }
    m_person.pictureOf(QStringLiteral("sfSite"), QStringLiteral("site"));
    m_person.click(QStringLiteral("sfSite/cmSite0"));
    m_person.waitForRow(QStringLiteral("sfSite/lsSite"), OfficeDesktop::site());
    m_person.clickRow(QStringLiteral("sfSite/lsSite"), OfficeDesktop::site());
    m_person.waitFor(QStringLiteral("the site's boxes"), [&] {
        return text("sfSite/txSite1") == daemon.server() && text("sfSite/txSite2") == daemon.user();
    });
    m_person.picture(QStringLiteral("story-03-site"));
    m_person.click(QStringLiteral("sfSite/cmSite4"));
}

void tst_NewUser::connectsAndBrowses()
{
    m_person.chooseInBox(QStringLiteral("uFtp/cbSvr"), OfficeDesktop::site());
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
    m_person.check(m_office.daemon().file("public/報告書/図/概要.png").size() == 2000,
                   QStringLiteral("the folder was not uploaded whole"));
    m_person.check(QFileInfo::exists(m_office.local(QStringLiteral("報告書/計画.txt"))),
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
    m_person.check(m_office.daemon().file("public/memo.txt") == "some notes" &&
                       !m_office.daemon().exists("public/notes.txt"),
                   QStringLiteral("the server's file was not renamed"));

    m_person.rightClickRow(ftpList, QStringLiteral("old"));
    m_person.picture(QStringLiteral("story-09-ftp-menu"));
    m_person.pickPopup({QStringLiteral("削除")});
    m_person.answer(QStringLiteral("指定したﾌｫﾙﾀﾞ･ﾌｧｲﾙを削除します"));
    m_person.waitForNoRow(ftpList, QStringLiteral("old"));
    m_person.check(!m_office.daemon().exists("public/old"),
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
    m_person.type(OfficeDesktop::pattern());
    m_person.key(QStringLiteral("Return"));
    m_person.waitFor(QStringLiteral("the pattern's boxes"), [&] {
        return text("sfSPtn/txSite0") == OfficeDesktop::pattern() &&
               text("sfSPtn/txSite1") == m_office.world().localFolder() &&
               text("sfSPtn/txSite2") == OfficeDesktop::site() &&
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
    m_person.waitForNoRow(ftpList, QStringLiteral("memo.txt"));
    const QStringList differences =
        difference(snapshot(m_office.world().localFolder()),
                   snapshot(m_office.daemon().root() + QStringLiteral("/public")), Times::Seconds);
    m_person.check(differences.isEmpty(), differences.join(QLatin1Char('\n')));
    m_person.check(m_office.daemon().exists("welcome.txt"),
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
                   m_office.world().localFolder() &&
               shown<QComboBox>(QStringLiteral("uFtp/cbSvr")).currentText() ==
                   OfficeDesktop::site();
    });
    m_person.waitForRow(localList, QStringLiteral("報告書"));
    m_person.picture(QStringLiteral("story-13-next-start"));
    m_person.click(QStringLiteral("uFtp/imElse"));
    m_person.pickPopup({QStringLiteral("同期ﾊﾟﾀｰﾝをｾｯﾄ"), OfficeDesktop::pattern()});
    m_person.waitForRow(ftpList, QStringLiteral("index.html"));
    m_person.waitForRow(ftpTree, QStringLiteral("public"));
    m_person.picture(QStringLiteral("story-14-pattern-shown"));
}

} // namespace venlo::test

int main(int argc, char **argv)
{
    return venlo::test::runOnDisplay<venlo::test::tst_NewUser, venlo::WindowApplication>(argc,
                                                                                         argv);
}

#include "tst_NewUser.moc"
