#include "sync/SyncBlocks.h"

#include <QTest>

using venlo::SyncBlocks;

/// What is blocked, and what a whole-folder operation may not run over.
class tst_SyncBlocks : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void blocked_data();
    void blocked();
    void aBlockMayLeaveItsFoldersAlone();
    void theRootBlocksEverything();
    void nothingIsBlockedAtFirst();
};

void tst_SyncBlocks::blocked_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("item");
    QTest::addColumn<bool>("whole");
    QTest::newRow("the item") << QStringLiteral("/a/b") << true << true;
    QTest::newRow("below it") << QStringLiteral("/a/b/c/d.txt") << true << true;
    QTest::newRow("in other letter case") << QStringLiteral("/A/B/x") << true << true;
    QTest::newRow("a relative path without its slash") << QStringLiteral("a/b") << true << true;
    QTest::newRow("a folder that holds it") << QStringLiteral("/a") << false << true;
    QTest::newRow("a longer name beside it") << QStringLiteral("/a/bc") << false << false;
    QTest::newRow("another folder") << QStringLiteral("/c") << false << false;
}

void tst_SyncBlocks::blocked()
{
    QFETCH(QString, path);
    QFETCH(bool, item);
    QFETCH(bool, whole);
    SyncBlocks blocks;
    blocks.add(QStringLiteral("/a/b"), QStringLiteral("broken"));
    QCOMPARE(blocks.why(path), item ? QStringLiteral("broken") : QString());
    QCOMPARE(blocks.whyWhole(path), whole ? QStringLiteral("broken") : QString());
}

void tst_SyncBlocks::aBlockMayLeaveItsFoldersAlone()
{
    SyncBlocks blocks;
    blocks.add(QStringLiteral("/a/link"), QStringLiteral("link"), false);
    QCOMPARE(blocks.why(QStringLiteral("/a/link/x")), QStringLiteral("link"));
    QCOMPARE(blocks.whyWhole(QStringLiteral("/a")), QString());
}

void tst_SyncBlocks::theRootBlocksEverything()
{
    SyncBlocks blocks;
    blocks.add(QStringLiteral("/"), QStringLiteral("lost"));
    QCOMPARE(blocks.why(QStringLiteral("/x")), QStringLiteral("lost"));
    QCOMPARE(blocks.why(QStringLiteral(".")), QStringLiteral("lost"));
    QCOMPARE(blocks.why(QStringLiteral("x/y")), QStringLiteral("lost"));
}

void tst_SyncBlocks::nothingIsBlockedAtFirst()
{
    const SyncBlocks blocks;
    QVERIFY(blocks.isEmpty());
    QCOMPARE(blocks.whyWhole(QStringLiteral("/a")), QString());
}

QTEST_APPLESS_MAIN(tst_SyncBlocks)
#include "tst_SyncBlocks.moc"
