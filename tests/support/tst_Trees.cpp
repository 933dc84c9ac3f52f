#include "support/Trees.h"

#include <QTemporaryDir>
#include <QTest>

using venlo::test::difference;
using venlo::test::makeTree;
using venlo::test::manyFiles;
using venlo::test::ScriptedTree;
using venlo::test::snapshot;
using venlo::test::Times;
using venlo::test::TreeRow;

class tst_Trees : public QObject
{
    Q_OBJECT

private:
    const QDateTime m_noon{QDate(2024, 1, 2), QTime(12, 0), Qt::UTC};

private Q_SLOTS:
    void localTreeIsWhatWasWritten()
    {
        QTemporaryDir dir;
        const std::vector<TreeRow> rows{{"a/b/c.txt", "see", m_noon}, {"empty/"}, {"日本.txt", ""}};
        QVERIFY(makeTree(dir.path(), rows));
        QCOMPARE(difference(snapshot(rows), snapshot(dir.path())), QStringList());
        const auto found = snapshot(dir.path());
        QCOMPARE(found.at("a/b/c.txt").modified, m_noon);
        QCOMPARE(found.count("a/b/"), std::size_t(1));
        QCOMPARE(found.size(), std::size_t(5));
    }

    void scriptedTreeComparesWithALocalOne()
    {
        QTemporaryDir dir;
        const std::vector<TreeRow> rows{
            {"a/x", "1", m_noon}, {"y", "2", m_noon}, {"z/", "", m_noon}};
        QVERIFY(makeTree(dir.path(), rows));
        ScriptedTree tree;
        makeTree(tree, "/site", rows);
        QCOMPARE(difference(snapshot(dir.path()), snapshot(tree, "/site"), Times::Seconds),
                 QStringList());
        QVERIFY(tree.removeFile("/site/y"));
        QCOMPARE(difference(snapshot(dir.path()), snapshot(tree, "/site")),
                 QStringList{QStringLiteral("missing: y")});
    }

    void everyKindOfDifferenceIsNamed_data()
    {
        QTest::addColumn<QByteArray>("path");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QStringList>("lines");
        const auto line = [](const char *text) { return QStringList{QString::fromUtf8(text)}; };
        QTest::newRow("equal") << QByteArray("f") << QByteArray("abc") << 0 << QStringList();
        QTest::newRow("contents")
            << QByteArray("f") << QByteArray("abd") << 0
            << line("differs: f: expected 3 bytes \"abc\", is 3 bytes \"abd\"");
        QTest::newRow("within the minute")
            << QByteArray("f") << QByteArray("abc") << 59 << QStringList();
        QTest::newRow("another minute")
            << QByteArray("f") << QByteArray("abc") << 60
            << line("time: f: expected 2024-01-02T12:00:00Z, is 2024-01-02T12:01:00Z");
        QTest::newRow("name") << QByteArray("g\x83") << QByteArray("abc") << 0
                              << QStringList{QStringLiteral("missing: f"),
                                             QStringLiteral("too much: g%83")};
    }
    void everyKindOfDifferenceIsNamed()
    {
        QFETCH(QByteArray, path);
        QFETCH(QByteArray, bytes);
        QFETCH(int, seconds);
        QFETCH(QStringList, lines);
        const std::vector<TreeRow> expected{{"f", "abc", m_noon}};
        const std::vector<TreeRow> actual{{path, bytes, m_noon.addSecs(seconds)}};
        QCOMPARE(difference(snapshot(expected), snapshot(actual), Times::Minutes), lines);
    }

    void manyFilesAreAsManyAsAsked()
    {
        const auto rows = manyFiles(3, 4, 5);
        QCOMPARE(rows.size(), std::size_t(12));
        QCOMPARE(rows.back().path, QByteArray("d0002/f0003.txt"));
        QCOMPARE(rows.back().bytes, QByteArray("ddddd"));
    }
};

QTEST_GUILESS_MAIN(tst_Trees)
#include "tst_Trees.moc"
