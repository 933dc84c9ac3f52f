#include <memory>

#include <QDir>
#include <QFile>
#include <QTest>

#include "platform/FakeDesktop.h"
#include "startup/settings/ShellHelpers.h"
#include "support/ScriptedPerson.h"

namespace venlo
{

/// What a person gets to see of the desktop's shell, and the shortcut files that lead there.
class tst_ShellHelpers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void helpPages_data();
    void helpPages();
    void installedManual();
    void helpEndsQuietly_data();
    void helpEndsQuietly();
    void htmlFile();
    void sendTo();
    void sendToWithWindowsName();
    void sendToRefused();
    void folders_data();
    void folders();
    void picks_data();
    void picks();

private:
    ShellHelpers helpers(const QString &address = {});
    QByteArray contentOf(const QString &relative) const;
    QString path(const QString &relative) const { return m_desktop->path(relative); }

    std::unique_ptr<test::FakeDesktop> m_desktop;
    std::unique_ptr<test::ScriptedPerson> m_person;
};

void tst_ShellHelpers::init()
{
    m_desktop = std::make_unique<test::FakeDesktop>();
    m_desktop->addProgram(QStringLiteral("xdg-open"));
    m_person = std::make_unique<test::ScriptedPerson>();
    m_desktop->write(QStringLiteral("user/User.xml"), "");
    m_desktop->write(QStringLiteral("program/VenloFtp"), "");
    m_desktop->write(QStringLiteral("program/apData/help/main.htm"), "<p>main");
}

void tst_ShellHelpers::cleanup()
{
    QVERIFY(m_person->verify());
    m_desktop.reset();
}

ShellHelpers tst_ShellHelpers::helpers(const QString &address)
{
    return ShellHelpers({QStringLiteral("VenloFtp"), path(QStringLiteral("program/")),
                         path(QStringLiteral("data")), path(QStringLiteral("documents"))},
                        path(QStringLiteral("user/")), address, *m_person);
}

QByteArray tst_ShellHelpers::contentOf(const QString &relative) const
{
    QFile file(path(relative));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_ShellHelpers::helpPages_data()
{
    QTest::addColumn<QString>("base");
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("opened");
    const auto row = [](const char *name, const char *base, const char *page, const char *opened) {
        QTest::newRow(name) << QString::fromLatin1(base) << QString::fromLatin1(page)
                            << QString::fromLatin1(opened);
    };
    row("a name", "https://help.invalid/ftp/", "main", "https://help.invalid/ftp/main.htm");
    row("lower case", "https://help.invalid/", "MaIn", "https://help.invalid/main.htm");
    row("with a dot it stays", "https://help.invalid/", "Top.HTML",
        "https://help.invalid/top.html");
    row("the slash is put in", "https://help.invalid", "main", "https://help.invalid/main.htm");
}

void tst_ShellHelpers::helpPages()
{
    QFETCH(QString, base);
    QFETCH(QString, page);
    QFETCH(QString, opened);
    helpers(base).W_Help(page);
    QCOMPARE(m_desktop->lastCall(QStringLiteral("xdg-open")), QStringList{opened});
    const QByteArray shortcut = contentOf(QStringLiteral("user/VenloFtp_help.desktop"));
    QVERIFY(shortcut.contains("\nType=Link\n"));
    QVERIFY(shortcut.contains("\nURL=" + opened.toUtf8() + '\n'));
}

void tst_ShellHelpers::installedManual()
{
    helpers().W_Help(QStringLiteral("Main"));
    const QString page = path(QStringLiteral("program/apData/help/main.htm"));
    QCOMPARE(m_desktop->lastCall(QStringLiteral("xdg-open")), QStringList{page});
}

void tst_ShellHelpers::helpEndsQuietly_data()
{
    QTest::addColumn<QString>("page");
    QTest::addColumn<bool>("userFolder");
    QTest::newRow("no such page") << QStringLiteral("nowhere") << true;
    QTest::newRow("no place for the shortcut") << QStringLiteral("main") << false;
}

void tst_ShellHelpers::helpEndsQuietly()
{
    QFETCH(QString, page);
    QFETCH(bool, userFolder);
    if (!userFolder)
        QVERIFY(QDir(path(QStringLiteral("user"))).removeRecursively());
    helpers().W_Help(page);
    QVERIFY(!m_desktop->wasCalled(QStringLiteral("xdg-open")));
    QVERIFY(m_person->events().empty());
}

void tst_ShellHelpers::htmlFile()
{
    QVERIFY(!QFile::exists(path(QStringLiteral("user/Wrk"))));
    m_desktop->write(QStringLiteral("files/一覧 1.html"), "<p>x");
    const QString page = path(QStringLiteral("files/一覧 1.html"));
    helpers().W_HtmView(page);
    QCOMPARE(m_desktop->lastCall(QStringLiteral("xdg-open")), QStringList{page});
    QVERIFY(contentOf(QStringLiteral("user/Wrk/htm_view.desktop")).contains("\nURL=file://"));
}

/// The folder is made where the desktop has none yet.
void tst_ShellHelpers::sendTo()
{
    const QString folder = path(QStringLiteral("data/applications"));
    QVERIFY(!QFile::exists(folder));
    m_person->expectMessage(path(QStringLiteral("program/VenloFtp.exe のｼｮｰﾄｶｯﾄを ")) + folder +
                            QStringLiteral(" に作成しました"));
    helpers().W_SendTo();
    const QByteArray shortcut = contentOf(QStringLiteral("data/applications/VenloFtp.desktop"));
    const QString program = path(QStringLiteral("program/VenloFtp"));
    QVERIFY(shortcut.contains("\nURL=file://" + program.toUtf8() + '\n'));
    QVERIFY(!m_desktop->wasCalled(QStringLiteral("xdg-open")));
}

void tst_ShellHelpers::sendToWithWindowsName()
{
    m_desktop->write(QStringLiteral("program/VenloFtp.exe"), "");
    m_person->allowMessages();
    helpers().W_SendTo();
    QCOMPARE(m_person->messages().size(), 1);
    QVERIFY(contentOf(QStringLiteral("data/applications/VenloFtp.desktop"))
                .contains("/program/VenloFtp.exe\n"));
}

/// A file stands where the folder belongs: no shortcut, no message.
void tst_ShellHelpers::sendToRefused()
{
    m_desktop->write(QStringLiteral("data/applications"), "");
    helpers().W_SendTo();
    QVERIFY(m_person->events().empty());
}

void tst_ShellHelpers::folders_data()
{
    QTest::addColumn<QString>("given"); // below the folder "files"; "-" is an empty path
    QTest::addColumn<bool>("open");
    QTest::addColumn<QString>("shown"); // the same; "-" when nothing is
    const auto row = [](const char *name, const char *given, bool open, const char *shown) {
        QTest::newRow(name) << QString::fromLatin1(given) << open << QString::fromLatin1(shown);
    };
    row("a folder is explored", "files/sub", false, "files/sub");
    row("a folder is opened", "files/sub", true, "files/sub");
    row("a file is opened", "files/a.txt", true, "files/a.txt");
    row("a file's folder is explored", "files/sub/b.txt", false, "files/sub");
    row("what is gone: the folder that held it", "files/sub/gone", false, "files/sub");
    row("a folder that is gone too", "files/gone/gone", false, "-");
    row("what is gone is not opened", "files/gone", true, "-");
    row("an empty path, explored", "-", false, "-");
    row("an empty path, opened", "-", true, "-");
}

void tst_ShellHelpers::folders()
{
    QFETCH(QString, given);
    QFETCH(bool, open);
    QFETCH(QString, shown);
    const QString none = QStringLiteral("-");
    m_desktop->write(QStringLiteral("files/a.txt"), "a");
    m_desktop->write(QStringLiteral("files/sub/b.txt"), "b");
    helpers().W_ExpFd(given == none ? QString() : path(given), open);
    if (shown == none)
        QVERIFY(!m_desktop->wasCalled(QStringLiteral("xdg-open")));
    else
        QCOMPARE(m_desktop->lastCall(QStringLiteral("xdg-open")), QStringList{path(shown)});
    QVERIFY(m_person->events().empty());
}

void tst_ShellHelpers::picks_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("asked");
    QTest::addColumn<QString>("start");
    QTest::addColumn<QString>("picked");
    const QString standard = QStringLiteral("ﾌｫﾙﾀﾞの指定");
    const QString own = QStringLiteral("ﾙｰﾄﾌｫﾙﾀﾞ");
    const QString picked = QStringLiteral("/srv/公開");
    const QString here = QStringLiteral("files");
    QTest::newRow("no title") << here << QString() << standard << here << picked;
    QTest::newRow("a title") << here << own << own << here << picked;
    QTest::newRow("nothing given") << QString() << own << own << QString() << picked;
    QTest::newRow("no such folder")
        << QStringLiteral("files/gone") << own << own << QString() << picked;
    QTest::newRow("a file") << QStringLiteral("files/a.txt") << own << own << QString() << picked;
    QTest::newRow("cancelled") << here << own << own << here << QString();
}

void tst_ShellHelpers::picks()
{
    QFETCH(QString, given);
    QFETCH(QString, title);
    QFETCH(QString, asked);
    QFETCH(QString, start);
    QFETCH(QString, picked);
    m_desktop->write(QStringLiteral("files/a.txt"), "a");
    m_person->expectPickFolder(asked, picked);
    QString folder = given.isEmpty() ? QString() : path(given);
    helpers().BrowseFolder(folder, title);
    QCOMPARE(folder, picked);
    QCOMPARE(title, asked);
    QCOMPARE(m_person->proposal(), start.isEmpty() ? QString() : path(start));
}

} // namespace venlo

QTEST_GUILESS_MAIN(venlo::tst_ShellHelpers)
#include "tst_ShellHelpers.moc"
