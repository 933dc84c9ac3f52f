#include <vector>

#include <QCoreApplication>
#include <QDir>
#include <QTest>

#include "platform/Process.h"

namespace venlo
{

/// Runs without an application object: all of this is asked before there is one.
class tst_Process : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void executable();
#ifdef Q_OS_UNIX
    void commandLine_data();
    void commandLine();
    void display_data();
    void display();
#endif
};

void tst_Process::executable()
{
    QVERIFY(QCoreApplication::instance() == nullptr);
    QCOMPARE(executableBaseName(), QStringLiteral("tst_Process"));
    const QString folder = executableFolder();
    QVERIFY(folder.endsWith(QDir::separator()));
    QVERIFY(QDir(folder).exists(QStringLiteral("tst_Process")) ||
            QDir(folder).exists(QStringLiteral("tst_Process.exe")));
}

#ifdef Q_OS_UNIX
void tst_Process::commandLine_data()
{
    QTest::addColumn<QList<QByteArray>>("arguments");
    QTest::addColumn<QString>("line");
    QTest::newRow("no argument") << QList<QByteArray>{"p"} << QString();
    QTest::newRow("no name either") << QList<QByteArray>{} << QString();
    QTest::newRow("one argument") << QList<QByteArray>{"p", "/b syncup|A"}
                                  << QStringLiteral("/b syncup|A");
    QTest::newRow("joined with one blank")
        << QList<QByteArray>{"p", "/b", "syncup|A", "B"} << QStringLiteral("/b syncup|A B");
    QTest::newRow("blanks inside stay")
        << QList<QByteArray>{"p", " a ", "b"} << QStringLiteral(" a  b");
    QTest::newRow("Japanese") << QList<QByteArray>{"p", "syncup|公開"}
                              << QStringLiteral("syncup|公開");
}

void tst_Process::commandLine()
{
    QFETCH(QList<QByteArray>, arguments);
    std::vector<char *> pointers;
    for (QByteArray &argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    QTEST(rawCommandLine(static_cast<int>(arguments.size()), pointers.data()), "line");
}

void tst_Process::display_data()
{
    QTest::addColumn<QByteArray>("platform");
    QTest::addColumn<QByteArray>("display");
    QTest::addColumn<bool>("has");
    // Port 6000 + 59535 on loopback: nothing of ours listens there.
    const QByteArray dead = "127.0.0.1:59535";
    QTest::newRow("nothing named") << QByteArray() << QByteArray() << false;
    QTest::newRow("nobody answers") << QByteArray() << dead << false;
    QTest::newRow("offscreen") << QByteArray("offscreen") << QByteArray() << true;
    QTest::newRow("offscreen with options") << QByteArray("offscreen:a=b") << QByteArray() << true;
    QTest::newRow("minimal shows nothing") << QByteArray("minimal") << QByteArray() << false;
    QTest::newRow("xcb needs a server") << QByteArray("xcb") << dead << false;
    QTest::newRow("wayland needs a compositor") << QByteArray("wayland") << QByteArray() << false;
    QTest::newRow("the second choice works") << QByteArray("xcb;offscreen") << dead << true;
    QTest::newRow("a platform that is not there") << QByteArray("nosuch") << QByteArray() << false;
    QTest::newRow("no choice works") << QByteArray("wayland;xcb") << dead << false;
}

void tst_Process::display()
{
    QFETCH(QByteArray, platform);
    QFETCH(QByteArray, display);
    qputenv("QT_QPA_PLATFORM", platform);
    qputenv("DISPLAY", display);
    qunsetenv("WAYLAND_DISPLAY");
    QTEST(hasDisplay(), "has");
}
#endif

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_Process)
#include "tst_Process.moc"
