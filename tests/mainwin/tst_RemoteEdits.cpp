#include "mainwin/RemoteEdits.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "mainwin/MainWorld.h"
#include "support/RawFiles.h"
#include "support/ScriptedServer.h"

namespace venlo::test
{

namespace
{
// An editor that ends at once and changes nothing.
#ifdef Q_OS_WIN
constexpr const char *tempVariable = "TMP";
constexpr const char *editor = "attrib.exe";
#else
constexpr const char *tempVariable = "TMPDIR";
constexpr const char *editor = "true";
#endif
} // namespace

/// Remote files that are opened for editing: their copies, and the way back.
class tst_RemoteEdits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void fetchesAndOpens();
    void unchangedCopiesGo();
    void savedCopyIsOffered();
    void declinedUntilTheNextSave();
    void changedCopyStays();
    void savedAsBesideStays();
    void renamedCopyStays();
    void ownerFileIsNotNamed();
    void changedOnTheServerToo_data();
    void changedOnTheServerToo();
    void notConnectedAnyMore();
    void missingFile();
    void unusableNameIsSaid();
    void waitsForAnOpenMenu();
    void waitsForARunningOperation();

private:
    /// The one copy there is.
    [[nodiscard]] QString copy() const;
    /// A name in the copy's folder.
    [[nodiscard]] QString beside(const QString &name) const;
    void save(const QByteArray &bytes);
    /// The looks until a change that stood still is offered.
    void lookTwice();
    void open();

    QString m_question;
    std::unique_ptr<QTemporaryDir> m_temp;
    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<MainWorld> m_world;
    std::unique_ptr<MainRooms> m_rooms;
    FileOpener m_opener{QString::fromLatin1(editor)};
    std::unique_ptr<RemoteEdits> m_edits;
};

void tst_RemoteEdits::init()
{
    m_temp.reset();
    qunsetenv(tempVariable);
    m_temp = std::make_unique<QTemporaryDir>();
    qputenv(tempVariable, QFile::encodeName(m_temp->path()));
    m_server = std::make_unique<ScriptedServer>();
    m_server->put("/pub/a.txt", "before");
    QVERIFY(m_server->start());
    m_world = std::make_unique<MainWorld>();
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    QVERIFY(m_world->connectToSite());
    m_rooms = std::make_unique<MainRooms>(m_world->rooms());
    m_edits = std::make_unique<RemoteEdits>(*m_rooms, m_opener);
    m_question = QStringLiteral("a.txt が変更されました /pub/a.txt にｱｯﾌﾟﾛｰﾄﾞします");
}

void tst_RemoteEdits::cleanup()
{
    QVERIFY(m_world->person.verify());
    QVERIFY(!m_world->flags.unattendedTransfer);
    m_edits.reset();
    m_rooms.reset();
    m_world.reset();
    m_server.reset();
}

QString tst_RemoteEdits::copy() const
{
    const QDir temp(m_temp->path());
    const QStringList folders = temp.entryList({QStringLiteral("VenloFtp-*")}, QDir::Dirs);
    return folders.size() == 1 ? temp.filePath(folders.at(0) + QStringLiteral("/a.txt"))
                               : QString();
}

QString tst_RemoteEdits::beside(const QString &name) const
{
    return QFileInfo(copy()).dir().filePath(name);
}

void tst_RemoteEdits::save(const QByteArray &bytes)
{
    QFile file(copy());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

void tst_RemoteEdits::lookTwice()
{
    m_edits->look();
    m_edits->look();
}

void tst_RemoteEdits::open()
{
    m_edits->open(QStringLiteral("/pub"), QStringLiteral("a.txt"), true);
    QCOMPARE(m_world->person.messages(), QStringList());
}

void tst_RemoteEdits::fetchesAndOpens()
{
    open();
    QFile file(copy());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("before"));
#ifdef Q_OS_UNIX // elsewhere the folder for temporary files is the user's own
    QCOMPARE(QFileInfo(QFileInfo(copy()).path()).permissions() &
                 (QFile::ReadGroup | QFile::ReadOther | QFile::ExeOther),
             QFile::Permissions());
#endif
    QVERIFY(m_world->person.messages().isEmpty());
    lookTwice();
}

void tst_RemoteEdits::unchangedCopiesGo()
{
    open();
    m_edits.reset();
    QVERIFY(copy().isEmpty());
}

void tst_RemoteEdits::savedCopyIsOffered()
{
    const QSignalSpy uploaded(m_edits.get(), &RemoteEdits::uploaded);
    open();
    save("after, and longer");
    m_world->person.expectQuestion(m_question, true);
    lookTwice();
    QCOMPARE(m_server->file("/pub/a.txt"), QByteArray("after, and longer"));
    QCOMPARE(uploaded.size(), 1);
    lookTwice(); // nothing new, nothing asked
    QVERIFY(m_edits->changedCopies().isEmpty());
}

void tst_RemoteEdits::declinedUntilTheNextSave()
{
    open();
    save("first");
    m_world->person.expectQuestion(m_question, false);
    lookTwice();
    lookTwice();
    QCOMPARE(m_server->file("/pub/a.txt"), QByteArray("before"));
    save("the second one");
    m_world->person.expectQuestion(m_question, true);
    lookTwice();
    QCOMPARE(m_server->file("/pub/a.txt"), QByteArray("the second one"));
}

void tst_RemoteEdits::changedCopyStays()
{
    open();
    save("mine alone");
    m_world->person.expectQuestion(m_question, false);
    lookTwice();
    QCOMPARE(m_edits->changedCopies(), QStringList{QDir::toNativeSeparators(copy())});
    m_edits.reset();
    QFile file(copy());
    QVERIFY(file.open(QIODevice::ReadOnly));
    QCOMPARE(file.readAll(), QByteArray("mine alone"));
}

void tst_RemoteEdits::savedAsBesideStays()
{
    open();
    const QString fetched = copy();
    const QString report = beside(QStringLiteral("a.xlsx"));
    QVERIFY(writeFile(rawPath(report), "hours of work"));
    lookTwice(); // the copy is as it was: nothing is offered
    QCOMPARE(m_edits->changedCopies(), QStringList{QDir::toNativeSeparators(report)});
    m_edits.reset();
    QCOMPARE(readFile(rawPath(report)), QByteArray("hours of work"));
    QVERIFY(!QFileInfo::exists(fetched));
}

void tst_RemoteEdits::renamedCopyStays()
{
    open();
    const QString mine = beside(QStringLiteral("mine.txt"));
    QVERIFY(QFile::rename(copy(), mine));
    lookTwice();
    QCOMPARE(m_edits->changedCopies(), QStringList{QDir::toNativeSeparators(mine)});
    m_edits.reset();
    QCOMPARE(readFile(rawPath(mine)), QByteArray("before"));
}

/// An office program's mark that the document is open holds no work; it is its program's to remove.
void tst_RemoteEdits::ownerFileIsNotNamed()
{
    open();
    const QString mark = beside(QStringLiteral("~$a.txt"));
    QVERIFY(writeFile(rawPath(mark), "somebody"));
    QCOMPARE(m_edits->changedCopies(), QStringList());
    m_edits.reset();
    QVERIFY(QFileInfo::exists(mark));
}

void tst_RemoteEdits::changedOnTheServerToo_data()
{
    QTest::addColumn<bool>("replace");
    QTest::newRow("replaced") << true;
    QTest::newRow("left alone") << false;
}

void tst_RemoteEdits::changedOnTheServerToo()
{
    QFETCH(bool, replace);
    open();
    m_server->put("/pub/a.txt", "somebody else wrote this");
    save("mine");
    m_world->person.expectQuestion(m_question, true);
    m_world->person.expectQuestion(
        QStringLiteral("/pub/a.txt はｻｰﾊﾞｰ側でも変更されています 上書きします"), replace);
    lookTwice();
    QCOMPARE(m_server->file("/pub/a.txt"),
             replace ? QByteArray("mine") : QByteArray("somebody else wrote this"));
    QCOMPARE(m_edits->changedCopies().isEmpty(), replace);
}

void tst_RemoteEdits::notConnectedAnyMore()
{
    open();
    m_world->session.CloseInternet();
    save("mine");
    m_world->person.expectQuestion(m_question, true);
    m_world->person.expectMessage(QStringLiteral("接続されていないためｱｯﾌﾟﾛｰﾄﾞできません\r") +
                                  QDir::toNativeSeparators(copy()) +
                                  QStringLiteral(" に保存されています"));
    lookTwice();
    QCOMPARE(m_edits->changedCopies().size(), 1);
}

void tst_RemoteEdits::missingFile()
{
    // The main window tells what was given up; nothing is said twice.
    m_edits->open(QStringLiteral("/pub"), QStringLiteral("gone.txt"), false);
    QCOMPARE(m_world->person.outcomes(Outcome::Kind::GivenUp).size(), 1);
    QVERIFY(QDir(m_temp->path()).entryList({QStringLiteral("VenloFtp-*")}, QDir::Dirs).isEmpty());
}

void tst_RemoteEdits::unusableNameIsSaid()
{
    m_world->person.expectMessage(QStringLiteral("a/b をﾀﾞｳﾝﾛｰﾄﾞできませんでした"));
    m_edits->open(QStringLiteral("/pub"), QStringLiteral("a/b"), false);
}

void tst_RemoteEdits::waitsForAnOpenMenu()
{
    open();
    save("mine");
    QMenu menu;
    menu.addAction(QStringLiteral("a"));
    menu.popup(QPoint(10, 10));
    QTRY_VERIFY(QApplication::activePopupWidget() != nullptr);
    lookTwice();
    QTest::keyClick(&menu, Qt::Key_Escape);
    QTRY_VERIFY(QApplication::activePopupWidget() == nullptr);
    m_world->person.expectQuestion(m_question, false);
    lookTwice();
}

void tst_RemoteEdits::waitsForARunningOperation()
{
    open();
    save("mine");
    {
        const auto turn = m_world->gate.begin();
        lookTwice();
        lookTwice();
    }
    m_world->person.expectQuestion(m_question, true);
    lookTwice();
    QCOMPARE(m_server->file("/pub/a.txt"), QByteArray("mine"));
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_RemoteEdits)
#include "tst_RemoteEdits.moc"
