#include "sync/SyncPair.h"

#include <QDir>
#include <QTest>

#include "sync/FoldCase.h"

using venlo::SyncPair;

/// Relative paths of the work tables and the two sides they stand for.
class tst_SyncPair : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void paths_data();
    void paths();
    void parents_data();
    void parents();
    void folding_data();
    void folding();
};

void tst_SyncPair::paths_data()
{
    QTest::addColumn<QString>("sLph");
    QTest::addColumn<QString>("sFph");
    QTest::addColumn<QString>("relative");
    QTest::addColumn<QString>("local");
    QTest::addColumn<QString>("remote");
    const auto row = [](const char *name, const char *sLph, const char *sFph, const char *relative,
                        const char *local, const char *remote) {
        QTest::newRow(name) << QString::fromUtf8(sLph) << QString::fromUtf8(sFph)
                            << QString::fromUtf8(relative) << QString::fromUtf8(local)
                            << QString::fromUtf8(remote);
    };
    row("the roots themselves", "/home/web", "/pub", ".", "/home/web", "/pub");
    row("a first-level item", "/home/web", "/pub", "/a", "/home/web/a", "/pub/a");
    row("a deeper item", "/home/web", "/pub", "/a/b c", "/home/web/a/b c", "/pub/a/b c");
    row("a local root with a trailing separator", "/home/web/", "/pub", "/a", "/home/web/a",
        "/pub/a");
    row("the server's root", "/home/web", "/", "/a", "/home/web/a", "/a");
    row("the server's root, deeper, comes without its slash", "/home/web", "/", "a/b",
        "/home/web/a/b", "/a/b");
    row("the server's root itself", "/home/web", "/", ".", "/home/web", "/");
    row("Japanese", "/home/web", "/公開", "/写真/夏.jpg", "/home/web/写真/夏.jpg",
        "/公開/写真/夏.jpg");
}

void tst_SyncPair::paths()
{
    QFETCH(QString, sLph);
    QFETCH(QString, sFph);
    QFETCH(QString, relative);
    QFETCH(QString, local);
    const SyncPair pair{sLph, sFph, false};
    QCOMPARE(pair.localPath(relative), QDir::toNativeSeparators(local));
    QTEST(pair.remotePath(relative), "remote");
}

void tst_SyncPair::parents_data()
{
    QTest::addColumn<QString>("sPh");
    QTest::addColumn<QString>("parent");
    QTest::newRow("first level lies in the roots") << QStringLiteral("/a") << QStringLiteral(".");
    QTest::newRow("second level") << QStringLiteral("/a/b") << QStringLiteral("/a");
    QTest::newRow("the server's root, without its slash")
        << QStringLiteral("a/b") << QStringLiteral("a");
}

void tst_SyncPair::parents()
{
    QFETCH(QString, sPh);
    QTEST(venlo::relativeParent(sPh), "parent");
}

void tst_SyncPair::folding_data()
{
    QTest::addColumn<QString>("one");
    QTest::addColumn<QString>("other");
    QTest::addColumn<bool>("same");
    QTest::newRow("Latin") << QStringLiteral("Doc") << QStringLiteral("dOC") << true;
    QTest::newRow("full-width Latin") << QStringLiteral("ＡＢ") << QStringLiteral("ａｂ") << true;
    QTest::newRow("beyond the first plane")
        << QStringLiteral("\U00010400") << QStringLiteral("\U00010428") << true;
    QTest::newRow("one character stays one")
        << QStringLiteral("straße") << QStringLiteral("strasse") << false;
    QTest::newRow("kana widths differ") << QStringLiteral("ｱ") << QStringLiteral("ア") << false;
    QTest::newRow("a lone surrogate stays as it is")
        << QString(QChar(0xd801)) << QString(QChar(0xd802)) << false;
}

void tst_SyncPair::folding()
{
    QFETCH(QString, one);
    QFETCH(QString, other);
    QFETCH(bool, same);
    QCOMPARE(venlo::foldCase(one) == venlo::foldCase(other), same);
    QCOMPARE(venlo::foldCase(one).size(), one.size());
}

QTEST_APPLESS_MAIN(tst_SyncPair)
#include "tst_SyncPair.moc"
