#include <memory>

#include <QDir>
#include <QFile>
#include <QTest>
#include <QUrl>

#include "platform/FakeDesktop.h"
#include "platform/ShellOpen.h"

namespace venlo
{

/// What the shell is asked for, seen from the programs that would answer.
class tst_ShellOpen : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void registeredEditor_data();
    void registeredEditor();
    void editorLine_data();
    void editorLine();
    void opens_data();
    void opens();
    void gioWhereThereIsNoXdgOpen();
    void nothingToOpenWith();
    void exploresFoldersOnly();
    void editorOfTheDesktop_data();
    void editorOfTheDesktop();
    void withoutEditor();
    void editorStarts_data();
    void editorStarts();
    void editorRefuses_data();
    void editorRefuses();
    void shortcut_data();
    void shortcut();
    void shortcutNames();
    void shortcutIntoNothing();

private:
    QString file(const QString &name);
    std::unique_ptr<test::FakeDesktop> m_desktop;
};

void tst_ShellOpen::init()
{
    m_desktop = std::make_unique<test::FakeDesktop>();
    m_desktop->addProgram(QStringLiteral("xdg-open"));
}

void tst_ShellOpen::cleanup()
{
    m_desktop.reset();
}

QString tst_ShellOpen::file(const QString &name)
{
    m_desktop->write(QStringLiteral("files/") + name, "x");
    return m_desktop->path(QStringLiteral("files/") + name);
}

void tst_ShellOpen::registeredEditor_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("editor");
    QTest::newRow("none") << QString() << QStringLiteral("notepad.exe");
    QTest::newRow("as it stands") << QStringLiteral("C:\\E\\ed.exe")
                                  << QStringLiteral("C:\\E\\ed.exe");
    QTest::newRow("the option goes, its blank stays")
        << QStringLiteral("C:\\E\\ed.exe /v") << QStringLiteral("C:\\E\\ed.exe ");
    QTest::newRow("only the last option goes")
        << QStringLiteral("ed.exe /a /b") << QStringLiteral("ed.exe /a ");
}

void tst_ShellOpen::registeredEditor()
{
    QFETCH(QString, command);
    QTEST(editorOfRegistered(command), "editor");
}

void tst_ShellOpen::editorLine_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("line");
    QTest::newRow("plain") << QStringLiteral("/a/b.txt") << QStringLiteral("ed /a/b.txt");
    QTest::newRow("a blank") << QStringLiteral("/a/b c.txt") << QStringLiteral("ed \"/a/b c.txt\"");
    QTest::newRow("Japanese") << QStringLiteral("/a/資料.txt") << QStringLiteral("ed /a/資料.txt");
}

void tst_ShellOpen::editorLine()
{
    QFETCH(QString, path);
    QFETCH(QString, line);
    QCOMPARE(editorCommandLine(QStringLiteral("ed"), path), QDir::toNativeSeparators(line));
}

void tst_ShellOpen::opens_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"a.txt", "a b.txt", "資料 1.txt", "-option.txt", "a;b'c\"d$e.txt"})
        QTest::newRow(name) << QString::fromUtf8(name);
}

void tst_ShellOpen::opens()
{
    QFETCH(QString, name);
    const QString path = file(name);
    QVERIFY(openWithAssociated(path));
    QCOMPARE(m_desktop->lastCall(QStringLiteral("xdg-open")), QStringList{path});
}

void tst_ShellOpen::gioWhereThereIsNoXdgOpen()
{
    QVERIFY(QFile::remove(m_desktop->path(QStringLiteral("bin/xdg-open"))));
    m_desktop->addProgram(QStringLiteral("gio"));
    const QString path = file(QStringLiteral("a.txt"));
    QVERIFY(openWithAssociated(path));
    QCOMPARE(m_desktop->lastCall(QStringLiteral("gio")),
             (QStringList{QStringLiteral("open"), path}));
}

void tst_ShellOpen::nothingToOpenWith()
{
    QVERIFY(!openWithAssociated(m_desktop->path(QStringLiteral("files/gone.txt"))));
    const QString path = file(QStringLiteral("a.txt"));
    qputenv("PATH", QFile::encodeName(m_desktop->path(QStringLiteral("notes"))));
    QVERIFY(!openWithAssociated(path));
    QVERIFY(!m_desktop->wasCalled(QStringLiteral("xdg-open")));
}

void tst_ShellOpen::exploresFoldersOnly()
{
    QVERIFY(!exploreFolder(file(QStringLiteral("a.txt"))));
    QVERIFY(!searchFolder(m_desktop->path(QStringLiteral("gone"))));
    const QString folder = m_desktop->path(QStringLiteral("files"));
    QVERIFY(exploreFolder(folder));
    QCOMPARE(m_desktop->lastCall(QStringLiteral("xdg-open")), QStringList{folder});
    m_desktop->forgetCalls(QStringLiteral("xdg-open"));
    QVERIFY(searchFolder(folder));
    QCOMPARE(m_desktop->lastCall(QStringLiteral("xdg-open")), QStringList{folder});
}

void tst_ShellOpen::editorOfTheDesktop_data()
{
    QTest::addColumn<QString>("lists");
    QTest::addColumn<QString>("editor");
    const auto row = [](const char *name, const char *lists, const char *editor) {
        QTest::newRow(name) << QString::fromLatin1(lists) << QString::fromLatin1(editor);
    };
    // "folder: line" of the list in that folder.
    row("the user's choice", "config:text/plain=second.desktop;", "second %U");
    row("the user's before the system's",
        "system:text/plain=first.desktop|config:text/plain=second.desktop", "second %U");
    row("the system's", "system:text/plain=first.desktop;second.desktop", "first \"-n\" %f");
    row("from the applications folder", "data/applications:text/plain=second.desktop", "second %U");
    row("another type is not asked", "config:text/html=first.desktop", "xdg-open");
    row("one that is not there", "config:text/plain=gone.desktop;second.desktop", "second %U");
    row("one for terminals", "config:text/plain=terminal.desktop;second.desktop", "second %U");
    row("one whose program is gone", "config:text/plain=broken.desktop;second.desktop",
        "second %U");
    row("a dash is a folder", "config:text/plain=vendor-third.desktop", "second --third %F");
}

void tst_ShellOpen::editorOfTheDesktop()
{
    QFETCH(QString, lists);
    m_desktop->addProgram(QStringLiteral("first"));
    m_desktop->addProgram(QStringLiteral("second"));
    const auto entry = [&](const char *name, const QByteArray &lines) {
        m_desktop->write(QStringLiteral("data/applications/") + QLatin1String(name),
                         "# made for this test\n[Desktop Entry]\nType=Application\n" + lines +
                             "\n[Desktop Action new]\nExec=wrong\n");
    };
    entry("first.desktop", "Exec=first \"-n\" %f");
    entry("second.desktop", "Exec = second %U");
    entry("terminal.desktop", "Exec=first %f\nTerminal=true");
    entry("broken.desktop", "Exec=never-installed %f");
    entry("vendor/third.desktop", "Exec=second --third %F");
    for (const QString &list : lists.split(QLatin1Char('|'))) {
        const QStringList parts = list.split(QLatin1Char(':'));
        m_desktop->write(parts[0] + QStringLiteral("/mimeapps.list"),
                         "[Added Associations]\nimage/png=first.desktop\n"
                         "[Default Applications]\n" +
                             parts[1].toUtf8() + "\n");
    }
    QTEST(textEditorCommand(), "editor");
}

/// Nobody chose: what is installed counts, and without that the desktop decides by itself.
void tst_ShellOpen::withoutEditor()
{
    QCOMPARE(textEditorCommand(), QStringLiteral("xdg-open"));
    m_desktop->addProgram(QStringLiteral("first"));
    m_desktop->write(QStringLiteral("data/applications/first.desktop"),
                     "[Desktop Entry]\nType=Application\nExec=first %f\n");
    m_desktop->write(QStringLiteral("data/applications/mimeinfo.cache"),
                     "[MIME Cache]\ntext/plain=first.desktop;\n");
    QCOMPARE(textEditorCommand(), QStringLiteral("first %f"));
}

void tst_ShellOpen::editorStarts_data()
{
    QTest::addColumn<QString>("editor");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("arguments"); // "<path>" and "<url>" stand for the file's
    const auto row = [](const char *title, const char *editor, const char *name,
                        const QStringList &arguments) {
        QTest::newRow(title) << QString::fromLatin1(editor) << QString::fromUtf8(name) << arguments;
    };
    const QString path = QStringLiteral("<path>");
    row("no code", "first", "a.txt", {path});
    row("a blank in the name", "first %f", "a b.txt", {path});
    row("a list", "first %F", "資料.txt", {path});
    row("an address", "first %u", "a b.txt", {QStringLiteral("<url>")});
    row("inside an argument", "first --file=%f -n", "a.txt",
        {QStringLiteral("--file=<path>"), QStringLiteral("-n")});
    row("icons and names are left out", "first %i %c %k %U", "a.txt", {QStringLiteral("<url>")});
    row("a per cent sign", "first 100%% %f", "a.txt", {QStringLiteral("100%"), path});
    row("quotation marks", "first \"-o a\\\"b\" \"\" %f", "a.txt",
        {QStringLiteral("-o a\"b"), QString(), path});
    row("a name like a code", "first %f", "%u%f.txt", {path});
}

void tst_ShellOpen::editorStarts()
{
    QFETCH(QString, editor);
    QFETCH(QString, name);
    QFETCH(QStringList, arguments);
    m_desktop->addProgram(QStringLiteral("first"));
    const QString path = file(name);
    for (QString &argument : arguments) {
        argument.replace(QLatin1String("<path>"), path);
        argument.replace(QLatin1String("<url>"),
                         QString::fromLatin1(QUrl::fromLocalFile(path).toEncoded()));
    }
    QVERIFY(openInTextEditor(editor, path));
    QCOMPARE(m_desktop->lastCall(QStringLiteral("first")), arguments);
    QVERIFY(!m_desktop->wasCalled(QStringLiteral("xdg-open")));
}

void tst_ShellOpen::editorRefuses_data()
{
    QTest::addColumn<QString>("editor");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("started");
    QTest::newRow("no such file") << QStringLiteral("xdg-open") << QStringLiteral("gone") << false;
    QTest::newRow("an open quotation mark")
        << QStringLiteral("\"xdg-open") << QStringLiteral("a") << false;
    QTest::newRow("no editor") << QString() << QStringLiteral("a") << false;
    QTest::newRow("an editor that is gone goes to the desktop")
        << QStringLiteral("gone %f") << QStringLiteral("a") << true;
}

void tst_ShellOpen::editorRefuses()
{
    QFETCH(QString, editor);
    QFETCH(QString, name);
    QFETCH(bool, started);
    const QString there = file(QStringLiteral("a"));
    const QString path = QFileInfo(there).path() + QLatin1Char('/') + name;
    QCOMPARE(openInTextEditor(editor, path), started);
    if (started)
        QCOMPARE(m_desktop->lastCall(QStringLiteral("xdg-open")), QStringList{there});
}

void tst_ShellOpen::shortcut_data()
{
    QTest::addColumn<QString>("target"); // "<file>" stands for a file's path
    QTest::addColumn<QByteArray>("url");
    QTest::newRow("a page of the web") << QStringLiteral("https://help.invalid/main.htm")
                                       << QByteArray("https://help.invalid/main.htm");
    QTest::newRow("a file") << QStringLiteral("<file>") << QByteArray("file://<file>");
    QTest::newRow("blanks and Japanese in an address")
        << QStringLiteral("http://a.invalid/資料 1.htm")
        << QByteArray("http://a.invalid/%E8%B3%87%E6%96%99%201.htm");
}

void tst_ShellOpen::shortcut()
{
    QFETCH(QString, target);
    QFETCH(QByteArray, url);
    const QString there = file(QStringLiteral("page.htm"));
    target.replace(QLatin1String("<file>"), there);
    url.replace("<file>", QFile::encodeName(there));
    const QString asked = m_desktop->path(QStringLiteral("Venlo Ftp.help.lnk"));
    const QString written = writeShortcut(asked, target);
    QCOMPARE(written, m_desktop->path(QStringLiteral("Venlo Ftp.help.desktop")));
    QVERIFY(!QFile::exists(asked));
    QFile content(written);
    QVERIFY(content.open(QIODevice::ReadOnly));
    QCOMPARE(content.readAll(), QByteArray("[Desktop Entry]\nVersion=1.0\nType=Link\n"
                                           "Name=Venlo Ftp.help\nURL=" +
                                           url + "\n"));
    QVERIFY(openShortcut(written, target));
    QCOMPARE(m_desktop->lastCall(QStringLiteral("xdg-open")), QStringList{target});
}

void tst_ShellOpen::shortcutNames()
{
    const QString written = writeShortcut(m_desktop->path(QStringLiteral("a\\b\nc.lnk")),
                                          QStringLiteral("https://help.invalid/"));
    QFile content(written);
    QVERIFY(content.open(QIODevice::ReadOnly));
    QVERIFY(content.readAll().contains("\nName=a\\\\b\\nc\n"));
}

void tst_ShellOpen::shortcutIntoNothing()
{
    QCOMPARE(writeShortcut(m_desktop->path(QStringLiteral("none/a.lnk")),
                           QStringLiteral("https://help.invalid/")),
             QString());
    QVERIFY(!openShortcut(QString(), m_desktop->path(QStringLiteral("files/gone.htm"))));
    QVERIFY(!m_desktop->wasCalled(QStringLiteral("xdg-open")));
}

} // namespace venlo

QTEST_GUILESS_MAIN(venlo::tst_ShellOpen)
#include "tst_ShellOpen.moc"
