#include <QDir>
#include <QFile>
#include <QUrl>

#include "e2e/DesktopMain.h"
#include "e2e/DesktopWorld.h"
#include "e2e/Neighbour.h"
#include "startup/WindowRun.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"

namespace venlo::test
{

/// Clipboard and drags between the program and another one on the same desktop.
class tst_Neighbours : public QObject
{
    Q_OBJECT

public:
    explicit tst_Neighbours(WindowApplication &application) : m_application(application) {}

private Q_SLOTS:
    void init();
    void cleanup();

    void pastesFromAnother_data();
    void pastesFromAnother();
    void anotherPastes();
    void dropsFromAnother_data();
    void dropsFromAnother();
    void uploadsWhatAnotherDrops_data();
    void uploadsWhatAnotherDrops();
    void remoteFilesGoToAnother();
    void cancelledFetchGivesNothing();
    void localFilesGoToAnother();

private:
    [[nodiscard]] int run(std::function<void()> script);
    [[nodiscard]] QString foreign(const QString &name) const;
    [[nodiscard]] QString local(const QString &name) const;

    WindowApplication &m_application;
    DesktopPerson m_person{QStringLiteral(VENLO_SCREENSHOTS)};
    std::unique_ptr<DesktopWorld> m_world;
};

namespace
{
const QString localList = QStringLiteral("uFile/LsView");
const QString ftpList = QStringLiteral("uFtp/LsView");
const QString pairName = QStringLiteral("pair");
// The other program's window stands below ours.
const QString neighbourX = QStringLiteral("400");
const QString neighbourY = QStringLiteral("800");
constexpr int windowHeight = 680;
constexpr int windowWidth = 1100;

QByteArray content(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
} // namespace

void tst_Neighbours::init()
{
    m_world = std::make_unique<DesktopWorld>();
    QString why;
    QVERIFY2(m_world->start(&why), qPrintable(why));
    QVERIFY(makeTree(m_world->home(), {{"local/ours.txt", "ours"},
                                       {"local/二つ目.txt", "the second"},
                                       {"other/theirs.txt", "theirs"},
                                       {"other/資料/表.csv", "1,2,3"}}));
    QVERIFY(m_world->daemon().put("public/remote.txt", "from the server"));
    m_world->daemon().own();
    m_world->registerSite(QStringLiteral("site"));
    m_world->registerPattern(pairName, QStringLiteral("site"), QStringLiteral("/public"));
    m_world->writeLayout(windowWidth, windowHeight);
}

void tst_Neighbours::cleanup()
{
    m_world.reset();
}

QString tst_Neighbours::foreign(const QString &name) const
{
    return m_world->home() + QStringLiteral("/other/") + name;
}

QString tst_Neighbours::local(const QString &name) const
{
    return m_world->localFolder() + QLatin1Char('/') + name;
}

/// The program on the pattern, both panes filled; closed behind the script.
int tst_Neighbours::run(std::function<void()> script)
{
    return m_world->run(m_application, m_person, QStringLiteral("openp|") + pairName,
                        [this, script = std::move(script)] {
                            m_person.waitForRow(ftpList, QStringLiteral("remote.txt"));
                            m_person.waitForRow(localList, QStringLiteral("ours.txt"));
                            script();
                            m_person.click(QStringLiteral("ffMain/ltMsg"));
                            m_person.closeWindow();
                        });
}

void tst_Neighbours::pastesFromAnother_data()
{
    QTest::addColumn<QString>("marker");
    QTest::addColumn<bool>("arrives");
    QTest::addColumn<bool>("stays");
    QTest::newRow("copy") << QStringLiteral("copy") << true << true;
    QTest::newRow("cut") << QStringLiteral("cut") << true << false;
    QTest::newRow("no marker") << QStringLiteral("none") << false << true;
}

void tst_Neighbours::pastesFromAnother()
{
    QFETCH(QString, marker);
    QFETCH(bool, arrives);
    QFETCH(bool, stays);
    const int status = run([&] {
        const Neighbour neighbour({QStringLiteral("copy"), marker,
                                   foreign(QStringLiteral("theirs.txt")),
                                   foreign(QStringLiteral("資料"))});
        m_person.clickRow(localList, QStringLiteral("ours.txt"));
        m_person.key(QStringLiteral("ctrl+v"));
        if (arrives) {
            m_person.waitForRow(localList, QStringLiteral("theirs.txt"));
            m_person.waitForRow(localList, QStringLiteral("資料"));
        } else {
            // What follows shows that the paste was done with.
            m_person.key(QStringLiteral("F5"));
            QThread::msleep(500);
        }
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QCOMPARE(QFileInfo::exists(local(QStringLiteral("theirs.txt"))), arrives);
    QCOMPARE(content(local(QStringLiteral("資料/表.csv"))),
             arrives ? QByteArray("1,2,3") : QByteArray());
    QCOMPARE(QFileInfo::exists(foreign(QStringLiteral("theirs.txt"))), stays);
    QCOMPARE(QFileInfo::exists(foreign(QStringLiteral("資料/表.csv"))), stays);
}

void tst_Neighbours::anotherPastes()
{
    QStringList copied;
    QStringList cut;
    const int status = run([&] {
        m_person.clickRow(localList, QStringLiteral("二つ目.txt"));
        m_person.key(QStringLiteral("ctrl+c"));
        QThread::msleep(300);
        copied = Neighbour::paste();
        m_person.rightClickRow(localList, QStringLiteral("ours.txt"));
        m_person.pickPopup({QStringLiteral("切り取り")});
        QThread::msleep(300);
        cut = Neighbour::paste();
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QCOMPARE(copied,
             QStringList({QStringLiteral("marker copy"),
                          QStringLiteral("uri file://") + local(QStringLiteral("二つ目.txt"))}));
    QCOMPARE(cut, QStringList({QStringLiteral("marker cut"),
                               QStringLiteral("uri file://") + local(QStringLiteral("ours.txt"))}));
    QVERIFY(QFileInfo::exists(local(QStringLiteral("ours.txt"))));
}

void tst_Neighbours::dropsFromAnother_data()
{
    QTest::addColumn<QString>("heldKey");
    QTest::addColumn<QString>("action");
    QTest::addColumn<bool>("stays");
    QTest::newRow("no key copies") << QString() << QStringLiteral("dragged copy") << true;
    QTest::newRow("Shift moves") << QStringLiteral("shift") << QStringLiteral("dragged move")
                                 << false;
    QTest::newRow("Ctrl copies") << QStringLiteral("ctrl") << QStringLiteral("dragged copy")
                                 << true;
}

void tst_Neighbours::dropsFromAnother()
{
    QFETCH(QString, heldKey);
    QFETCH(QString, action);
    QFETCH(bool, stays);
    QString said;
    const int status = run([&] {
        Neighbour neighbour({QStringLiteral("source"), neighbourX, neighbourY,
                             foreign(QStringLiteral("theirs.txt")),
                             foreign(QStringLiteral("資料"))});
        m_person.drag(neighbour.middle(), m_person.spacePoint(localList), heldKey);
        said = neighbour.linesUntil(QStringLiteral("dragged")).constLast();
        m_person.waitForRow(localList, QStringLiteral("theirs.txt"));
        m_person.waitForRow(localList, QStringLiteral("資料"));
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QCOMPARE(said, action);
    QCOMPARE(content(local(QStringLiteral("theirs.txt"))), QByteArray("theirs"));
    QCOMPARE(content(local(QStringLiteral("資料/表.csv"))), QByteArray("1,2,3"));
    QCOMPARE(QFileInfo::exists(foreign(QStringLiteral("theirs.txt"))), stays);
    QCOMPARE(QFileInfo::exists(foreign(QStringLiteral("資料"))), stays);
}

void tst_Neighbours::uploadsWhatAnotherDrops_data()
{
    QTest::addColumn<QString>("answer");
    QTest::addColumn<bool>("arrives");
    QTest::newRow("OK") << QStringLiteral("OK") << true;
    QTest::newRow("cancel") << QStringLiteral("ｷｬﾝｾﾙ") << false;
}

void tst_Neighbours::uploadsWhatAnotherDrops()
{
    QFETCH(QString, answer);
    QFETCH(bool, arrives);
    const int status = run([&] {
        Neighbour neighbour({QStringLiteral("source"), neighbourX, neighbourY,
                             foreign(QStringLiteral("theirs.txt")),
                             foreign(QStringLiteral("資料"))});
        m_person.drag(neighbour.middle(), m_person.spacePoint(ftpList));
        m_person.answer(m_world->daemon().server() + QStringLiteral("/publicにｱｯﾌﾟﾛｰﾄﾞします"),
                        answer);
        if (arrives) {
            m_person.waitForRow(ftpList, QStringLiteral("theirs.txt"));
            m_person.waitForRow(ftpList, QStringLiteral("資料"));
        }
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    const FtpDaemon &daemon = m_world->daemon();
    QCOMPARE(daemon.file("public/資料/表.csv"), arrives ? QByteArray("1,2,3") : QByteArray());
    QCOMPARE(daemon.file("public/theirs.txt"), arrives ? QByteArray("theirs") : QByteArray());
    QVERIFY(QFileInfo::exists(foreign(QStringLiteral("theirs.txt"))));
}

void tst_Neighbours::remoteFilesGoToAnother()
{
    QStringList said;
    const int status = run([&] {
        Neighbour neighbour({QStringLiteral("target"), neighbourX, neighbourY});
        m_person.drag(m_person.rowPoint(ftpList, QStringLiteral("remote.txt")), neighbour.middle());
        said = neighbour.linesUntil(QStringLiteral("dropped"));
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QCOMPARE(said.size(), 3);
    QVERIFY2(said.at(0).startsWith(QStringLiteral("uri file:///")) &&
                 said.at(0).endsWith(QStringLiteral("/remote.txt")),
             qPrintable(said.at(0)));
    QCOMPARE(said.at(1), QStringLiteral("content from the server"));
    QVERIFY(m_world->daemon().exists("public/remote.txt"));
    QVERIFY(!QFileInfo::exists(local(QStringLiteral("remote.txt"))));
}

void tst_Neighbours::cancelledFetchGivesNothing()
{
    ScriptedServer server;
    server.put("/files/remote.txt", QByteArray(4'000'000, 's'));
    server.on("RETR").slow(10'000, 20);
    QVERIFY(server.start());
    m_world->registerSite(QStringLiteral("slow"), server.server(), server.user(),
                          server.password());
    m_world->registerPattern(QStringLiteral("slow_pair"), QStringLiteral("slow"),
                             QStringLiteral("/files"));
    QStringList said;
    const int status =
        m_world->run(m_application, m_person, QStringLiteral("openp|slow_pair"), [&] {
            const QPoint from = m_person.rowPoint(ftpList, QStringLiteral("remote.txt"));
            Neighbour neighbour({QStringLiteral("target"), neighbourX, neighbourY});
            m_person.drag(from, neighbour.middle());
            m_person.click(QStringLiteral("sfMsg/cmCancel"));
            said = neighbour.linesUntil(QStringLiteral("dropped"));
            m_person.waitForRow(ftpList, QStringLiteral("remote.txt"));
            m_person.click(QStringLiteral("ffMain/ltMsg"));
            m_person.closeWindow();
        });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QCOMPARE(said, QStringList(QStringLiteral("dropped")));
}

void tst_Neighbours::localFilesGoToAnother()
{
    QStringList said;
    const int status = run([&] {
        Neighbour neighbour({QStringLiteral("target"), neighbourX, neighbourY});
        m_person.drag(m_person.rowPoint(localList, QStringLiteral("二つ目.txt")),
                      neighbour.middle());
        said = neighbour.linesUntil(QStringLiteral("dropped"));
    });
    QVERIFY2(status == 0, qPrintable(m_person.failure()));
    QCOMPARE(said, QStringList({QStringLiteral("uri file://") + local(QStringLiteral("二つ目.txt")),
                                QStringLiteral("content the second"), QStringLiteral("dropped")}));
    QVERIFY(QFileInfo::exists(local(QStringLiteral("二つ目.txt"))));
}

} // namespace venlo::test

int main(int argc, char **argv)
{
    return venlo::test::runOnDisplay<venlo::test::tst_Neighbours, venlo::WindowApplication>(argc,
                                                                                            argv);
}
#include "tst_Neighbours.moc"
