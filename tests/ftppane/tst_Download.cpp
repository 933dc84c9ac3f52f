#include "ftp/OperationsFixture.h"
#include "ftppane/Download.h"
#include "mainwin/popup/sfMsg.h"

#include <QTest>

namespace venlo::test
{

class tst_Download : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void groupsByDirectory();
    void stopsWhenCancelled();
    void goesOnPastARefusal();
};

void tst_Download::groupsByDirectory()
{
    OperationsFixture f;
    f.server.put("/a/one.txt", "1");
    f.server.put("/a/two.txt", "2");
    f.server.put("/a/sub/s.txt", "s");
    f.server.put("/b/three.txt", "3");
    QVERIFY(f.start());
    sfMsg window(f.person);
    QStringList said;
    Download download(f.operations, window, [&](const QString &text) { said << text; });
    const QString a = QStringLiteral("/a");
    QVERIFY(download.run({{a, QStringLiteral("one.txt"), EntryTag::FL},
                          {QStringLiteral("/b"), QStringLiteral("three.txt"), EntryTag::FL},
                          {a, QStringLiteral("sub"), EntryTag::FD},
                          {a, QStringLiteral("two.txt"), EntryTag::FL}},
                         f.here()));
    QCOMPARE(f.localNames(), QString::fromLatin1("one.txt,sub,three.txt,two.txt").split(u','));
    QCOMPARE(f.read(QStringLiteral("sub/s.txt")), QByteArray("s"));
    QCOMPARE(said, QStringList(
                       {QStringLiteral("/a > ") + f.here() + QStringLiteral(" Down Loading････"),
                        QStringLiteral("/b > ") + f.here() + QStringLiteral(" Down Loading････")}));
    QVERIFY(f.person.verify());
}

void tst_Download::stopsWhenCancelled()
{
    OperationsFixture f;
    f.server.put("/a/one.txt", "1");
    f.server.put("/b/two.txt", "2");
    QVERIFY(f.start());
    sfMsg window(f.person);
    Download download(f.operations, window, [&](const QString &) { f.person.cancelNow(); });
    QVERIFY(!download.run({{QStringLiteral("/a"), QStringLiteral("one.txt"), EntryTag::FL},
                           {QStringLiteral("/b"), QStringLiteral("two.txt"), EntryTag::FL}},
                          f.here()));
    QCOMPARE(f.localNames(), QStringList());
    QCOMPARE(f.server.count("RETR"), 0);
}

void tst_Download::goesOnPastARefusal()
{
    OperationsFixture f;
    f.server.put("/a/one.txt", "1");
    f.server.put("/a/two.txt", "2");
    f.server.on("RETR", "one.txt").reply(550, "no");
    QVERIFY(f.start());
    f.person.allowQuestions();
    sfMsg window(f.person);
    Download download(f.operations, window, [](const QString &) {});
    QVERIFY(download.run({{QStringLiteral("/a"), QStringLiteral("one.txt"), EntryTag::FL},
                          {QStringLiteral("/a"), QStringLiteral("two.txt"), EntryTag::FL}},
                         f.here()));
    QCOMPARE(f.localNames(), QStringList(QStringLiteral("two.txt")));
    QCOMPARE(f.operations.counts().givenUp, 1);
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_Download)
#include "tst_Download.moc"
