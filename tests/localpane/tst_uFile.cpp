// What the local pane shows: the tree, the list, their keys, texts and order.
#include "localpane/PaneFixture.h"
#include "platform/Wine.h"

#include <QDate>
#include <QElapsedTimer>
#include <QFile>
#include <QHeaderView>
#include <QSignalSpy>

using namespace venlo;
using venlo::test::makeTree;
using venlo::test::PaneFixture;
using venlo::test::ScriptedPerson;

namespace
{
struct Fixture : PaneFixture {
    void show(const std::vector<venlo::test::TreeRow> &what)
    {
        QVERIFY(makeTree(here(), what));
        pane->cOn(here());
    }
};
} // namespace

class tst_uFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsFoldersThenFilesByName();
    void fillsTheColumnsOfAFile();
    void fillsTheColumnsOfAFolder();
    void namesTheColumns();
    void showsSizesAsTexts();
    void pairsTheDatesOfTheTooltipTheOtherWayRound();
    void splitsExtensionsAtTheLastDot();
    void keysGoOnGrowing();
    void readsSubFoldersWhenTheyAreWanted();
    void saysThatAnExpandedFolderIsGone();
    void walksToAFolder();
    void filtersByExtension();
    void sortsEveryColumnAsText();
    void drawsHiddenEntriesPaler();
    void showsOddNamesForLookingOnly();
    void measuresFoldersAfterwards();
    void endsAnOlderFill();
    void endsAFillWhoseKeysRanOut();
    void saysWhenAFolderCannotBeRead();
    void sharesIcons();
    void showsManyFiles();
};

void tst_uFile::showsFoldersThenFilesByName()
{
    Fixture f;
    f.show({{"b.txt", "1"}, {"a.txt", "1"}, {"Z/", ""}, {"m/", ""}});
    QCOMPARE(f.names(), (QStringList{QStringLiteral("m"), QStringLiteral("Z"),
                                     QStringLiteral("a.txt"), QStringLiteral("b.txt")}));
    QCOMPARE(f.rows().row(0).tag, EntryTag::FD);
    QCOMPARE(f.rows().row(2).tag, EntryTag::FL);
    QCOMPARE(f.cell(QStringLiteral("m"), 6), QStringLiteral("Dm"));
    QCOMPARE(f.cell(QStringLiteral("a.txt"), 6), QStringLiteral("La.txt"));
    QVERIFY(f.listView().isColumnHidden(6));
    QVERIFY(!f.listView().header()->isSortIndicatorShown());
}

void tst_uFile::fillsTheColumnsOfAFile()
{
    Fixture f;
    f.show({{"data.txt", QByteArray(2345, 'x'), QDateTime(QDate(2021, 2, 3), QTime(14, 5, 6))}});
    QVERIFY(QFile::setPermissions(f.at(QStringLiteral("data.txt")), QFile::ReadOwner));
    f.pane->ReFresh();
    const QString name = QStringLiteral("data.txt");
    QCOMPARE(f.cell(name, 0), name);
    QCOMPARE(f.cell(name, 1), QStringLiteral("21/02/03 14:05:06"));
    QCOMPARE(f.cell(name, 2), QStringLiteral("2KB"));
    QCOMPARE(f.cell(name, 3), QStringLiteral("txt"));
    QVERIFY(!f.cell(name, 4).isEmpty());
    // Every new file is one to archive there.
    QCOMPARE(f.cell(name, 5), QLatin1String(venlo::test::onWindows ? "RA" : "R"));
}

void tst_uFile::fillsTheColumnsOfAFolder()
{
    Fixture f;
    f.show({{"some.folder/", ""}});
    const QString name = QStringLiteral("some.folder");
    QVERIFY(!f.cell(name, 1).isEmpty());
    QCOMPARE(f.cell(name, 3), QString());
    QCOMPARE(f.cell(name, 4), QStringLiteral("ﾌｧｲﾙﾌｫﾙﾀﾞ"));
}

void tst_uFile::namesTheColumns()
{
    const Fixture f;
    QStringList headings;
    for (int column = 0; column < 7; ++column)
        headings << f.rows().headerData(column, Qt::Horizontal, Qt::DisplayRole).toString();
    QCOMPARE(headings.join(QLatin1Char('.')),
             QStringLiteral("名前.更新日時.ｻｲｽﾞ.拡張子.種類.属性."));
}

void tst_uFile::showsSizesAsTexts()
{
    Fixture f;
    f.show({{"0", ""},
            {"1000", QByteArray(1000, 'x')},
            {"1001", QByteArray(1001, 'x')},
            {"2500000", QByteArray(2'500'000, 'x')}});
    QFile huge(f.at(QStringLiteral("huge")));
    QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(5'000'000'000LL));
    f.pane->ReFresh();
    QCOMPARE(f.cell(QStringLiteral("0"), 2), QStringLiteral("B"));
    QCOMPARE(f.cell(QStringLiteral("1000"), 2), QStringLiteral("1,000B"));
    QCOMPARE(f.cell(QStringLiteral("1001"), 2), QStringLiteral("1KB"));
    QCOMPARE(f.cell(QStringLiteral("2500000"), 2), QStringLiteral("2,500KB"));
    QCOMPARE(f.cell(QStringLiteral("huge"), 2), QStringLiteral("5,000,000KB"));
}

void tst_uFile::pairsTheDatesOfTheTooltipTheOtherWayRound()
{
    Fixture f;
    f.show({{"old.txt", "12345", QDateTime(QDate(2001, 2, 3), QTime(4, 5))}, {"sub/", ""}});
    const QString today = QDate::currentDate().toString(QStringLiteral("yyyy/MM/dd"));
    const auto tip = [&](const char *name) {
        return f.rows().row(f.rowOf(QLatin1String(name))).toolTip;
    };
    if (venlo::test::underWine())
        QSKIP("a file was made there when it was changed last");
    QCOMPARE(tip("old.txt"), QStringLiteral("更新:%1 作成:2001/02/03 ｻｲｽﾞ:5B").arg(today));
    QCOMPARE(tip("sub"), QStringLiteral("更新:%1 作成:%1").arg(today));
}

void tst_uFile::splitsExtensionsAtTheLastDot()
{
    Fixture f;
    f.show({{"archive.tar.gz", "1"}, {"README", "1"}});
    QCOMPARE(f.cell(QStringLiteral("archive.tar.gz"), 3), QStringLiteral("gz"));
    QCOMPARE(f.cell(QStringLiteral("README"), 3), QString());
}

void tst_uFile::keysGoOnGrowing()
{
    Fixture f;
    f.show({{"a", "1"}, {"b/c/", ""}});
    QCOMPARE(f.rowKey(QStringLiteral("b")), QStringLiteral("L000"));
    QCOMPARE(f.rowKey(QStringLiteral("a")), QStringLiteral("L001"));
    QCOMPARE(f.tree().key(f.tree().root()), QStringLiteral("N0000"));
    QCOMPARE(f.tree().key(f.node(f.at(QStringLiteral("b")))), QStringLiteral("N0001"));
    f.pane->ReFresh();
    QCOMPARE(f.rowKey(QStringLiteral("b")), QStringLiteral("L002"));
    // The first one was spent together with its placeholder's.
    QCOMPARE(f.tree().key(f.node(f.at(QStringLiteral("b")))), QStringLiteral("N0003"));
}

void tst_uFile::readsSubFoldersWhenTheyAreWanted()
{
    Fixture f;
    f.show({{"deep/er/est/", ""}, {"flat/", ""}, {"flat/file", "1"}});
    const QString deep = f.at(QStringLiteral("deep"));
    QCOMPARE(f.childrenOf(f.here()), (QStringList{QStringLiteral("deep"), QStringLiteral("flat")}));
    QCOMPARE(f.childrenOf(deep), QStringList{QStringLiteral("?")});
    QCOMPARE(f.tree().tag(f.tree().index(0, 0, f.node(deep))), EntryTag::DM);
    QVERIFY2(f.childrenOf(f.at(QStringLiteral("flat"))).isEmpty(), "no mark without sub-folders");
    f.clickNode(deep);
    QTest::keyClick(&f.treeView(), Qt::Key_Right);
    QVERIFY(f.treeView().isExpanded(f.node(deep)));
    QCOMPARE(f.childrenOf(deep), QStringList{QStringLiteral("er")});
    const QString inside = f.at(QStringLiteral("deep/er"));
    QCOMPARE(f.childrenOf(inside), QStringList{QStringLiteral("?")});
    QCOMPARE(f.tree().path(f.node(inside)), inside);
}

void tst_uFile::saysThatAnExpandedFolderIsGone()
{
    Fixture f;
    f.show({{"gone/inner/", ""}});
    const QString gone = f.at(QStringLiteral("gone"));
    QVERIFY(QDir(gone).removeRecursively());
    f.person.expectMessage(gone + QStringLiteral(" が存在しません"));
    f.treeView().expand(f.node(gone));
    QCOMPARE(f.childrenOf(gone), QStringList());
    QVERIFY(f.person.verify());
}

void tst_uFile::walksToAFolder()
{
    Fixture f;
    f.show({{"a/b/c/", ""}, {"a/b/file", "1"}});
    const QString path = f.at(QStringLiteral("a/b"));
    f.pane->SetRr(path, {}, 0);
    QCOMPARE(f.pane->NodePath(), path);
    QVERIFY(f.treeView().isExpanded(f.node(path)));
    QVERIFY(
        f.treeView().viewport()->rect().contains(f.treeView().visualRect(f.node(path)).center()));
    QCOMPARE(f.names(), (QStringList{QStringLiteral("c"), QStringLiteral("file")}));
    // A folder that came later is looked for on the disk.
    QVERIFY(QDir(f.here()).mkpath(QStringLiteral("a/new/one")));
    f.pane->SetRr(f.at(QStringLiteral("a/new/one")), {}, 0);
    QCOMPARE(f.pane->NodePath(), f.at(QStringLiteral("a/new/one")));
    f.pane->SetRr(f.at(QStringLiteral("A/b")), {}, 0);
    // Letter case counts, but on Windows.
    QCOMPARE(f.pane->NodePath(), venlo::test::onWindows ? path : f.at(QStringLiteral("a/new/one")));
}

void tst_uFile::filtersByExtension()
{
    Fixture f;
    f.show({{"page.HTM", "1"},
            {"page.html", "1"},
            {"page.tm", "1"},
            {"README", "1"},
            {"page.css", "1"},
            {"css/", ""}});
    auto &filter = f.child<QLineEdit>("txFilter");
    QCOMPARE(filter.text(), QStringLiteral("*.*"));
    QCOMPARE(f.names().size(), 6);
    f.typeInto(filter, QStringLiteral("htm.html"));
    QCOMPARE(f.names(), (QStringList{QStringLiteral("css"), QStringLiteral("page.HTM"),
                                     QStringLiteral("page.html"), QStringLiteral("page.tm"),
                                     QStringLiteral("README")}));
    f.typeInto(filter, QStringLiteral("*.*"));
    QCOMPARE(f.names().size(), 6);
    QVERIFY(makeTree(f.here(), {{"A.TXT", "1"}, {"a.txt.bak", "1"}}));
    f.typeInto(filter, QStringLiteral("txt"));
    QCOMPARE(f.names(), (QStringList{QStringLiteral("css"), QStringLiteral("A.TXT"),
                                     QStringLiteral("README")}));
    filter.selectAll();
    QTest::keyClick(&filter, Qt::Key_Delete);
    QTest::keyClick(&filter, Qt::Key_Return);
    QCOMPARE(f.names().size(), 8);
}

void tst_uFile::sortsEveryColumnAsText()
{
    Fixture f;
    f.show({{"a", QByteArray(1000, 'x')}, {"b", QByteArray(2000, 'x')}, {"c", ""}});
    const auto clickHeading = [&](int column) {
        QHeaderView &header = *f.listView().header();
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                          {header.sectionViewportPosition(column) + 10, header.height() / 2});
    };
    // "1,000B" before "2KB" before "B".
    clickHeading(2);
    QCOMPARE(f.names().join(QString()), QStringLiteral("abc"));
    QVERIFY(f.listView().header()->isSortIndicatorShown());
    QCOMPARE(f.listView().header()->sortIndicatorOrder(), Qt::AscendingOrder);
    clickHeading(2);
    QCOMPARE(f.names().join(QString()), QStringLiteral("cba"));
    QCOMPARE(f.listView().header()->sortIndicatorOrder(), Qt::DescendingOrder);
    clickHeading(0);
    QCOMPARE(f.names().join(QString()), QStringLiteral("abc"));
    QCOMPARE(f.listView().header()->sortIndicatorSection(), 0);
}

void tst_uFile::drawsHiddenEntriesPaler()
{
    Fixture f;
    f.show({{".secret", "1"}, {".git/", ""}, {"plain", "1"}});
    QVERIFY(f.rows().row(f.rowOf(QStringLiteral(".secret"))).pale);
    QVERIFY(f.rows().row(f.rowOf(QStringLiteral(".git"))).pale);
    QVERIFY(!f.rows().row(f.rowOf(QStringLiteral("plain"))).pale);
}

void tst_uFile::showsOddNamesForLookingOnly()
{
    if (venlo::test::onWindows)
        QSKIP("every name that Windows holds is shown as it is");
    Fixture f;
    f.show({{"a\tb", "1"}, {"\x83\x65", "1"}, {"x\ny/", ""}, {"good", "1"}});
    QCOMPARE(f.names().size(), 4);
    QVERIFY(f.rows().row(f.rowOf(QStringLiteral("a\tb"))).viewOnly);
    QVERIFY(!f.rows().row(f.rowOf(QStringLiteral("good"))).viewOnly);
    QCOMPARE(f.childrenOf(f.here()), QStringList());
    QCOMPARE(f.person.statusLines().size(), 1);
    QVERIFY(f.person.statusLines().constFirst().startsWith(f.here() + QStringLiteral(" : ")));
    QSignalSpy slc(f.pane.get(), &uFile::eSlcFL);
    f.doubleClick(QStringLiteral("a\tb"));
    f.doubleClick(QStringLiteral("x\ny"));
    QCOMPARE(slc.size(), 0);
    QCOMPARE(f.pane->NodePath(), f.here());
}

void tst_uFile::measuresFoldersAfterwards()
{
    Fixture f;
    f.show({{"full/in/file", QByteArray(3000, 'x')}, {"real/", ""}});
#ifdef Q_OS_UNIX
    QVERIFY(QFile::link(f.at(QStringLiteral("full")), f.at(QStringLiteral("link"))));
#endif
    QFile huge(f.at(QStringLiteral("real/huge")));
    QVERIFY(huge.open(QIODevice::WriteOnly) && huge.resize(5'000'000'000LL));
    f.pane->ReFresh();
    QTRY_COMPARE(f.cell(QStringLiteral("full"), 2), QStringLiteral("3KB"));
    QTRY_COMPARE(f.cell(QStringLiteral("real"), 2), QStringLiteral("B"));
#ifdef Q_OS_UNIX
    QCOMPARE(f.cell(QStringLiteral("link"), 2), QStringLiteral("B"));
    QCOMPARE(f.rows().row(f.rowOf(QStringLiteral("link"))).tag, EntryTag::FD);
#endif
}

void tst_uFile::endsAnOlderFill()
{
    Fixture f;
    f.show({{"one/file1", "1"}, {"two/sub/", ""}, {"two/file2", "1"}});
    bool first = true;
    f.person.onYield([&] {
        if (std::exchange(first, false))
            f.pane->SetRr(f.at(QStringLiteral("two")), {}, 0);
    });
    f.pane->SetRr(f.at(QStringLiteral("one")), {}, 0);
    f.person.onYield({});
    QCOMPARE(f.names(), (QStringList{QStringLiteral("sub"), QStringLiteral("file2")}));
    QCOMPARE(f.pane->NodePath(), f.at(QStringLiteral("two")));
}

void tst_uFile::endsAFillWhoseKeysRanOut()
{
    Fixture f;
    f.show({{"a", "1"}, {"b", "1"}, {"c", "1"}});
    const QString message = QStringLiteral("項目の番号を使い切ったため､表示できない項目があります");
    QSignalSpy ranOut(f.pane.get(), &uFile::keysRanOut);
    f.rows().keys().restart(KeyCounter::last - 1);
    f.person.expectMessage(message);
    f.pane->ReFresh();
    QCOMPARE(f.names().size(), 2);
    QVERIFY2(ranOut.isEmpty(), "the host must not pull the pane from under its own fill");
    {
        const auto turn = f.gate.begin();
        QTest::qWait(50);
        QCOMPARE(ranOut.size(), 0);
    }
    QTRY_COMPARE(ranOut.size(), 1);
    f.pane->ReFresh();
    QTest::qWait(0);
    QCOMPARE(ranOut.size(), 1);
    QVERIFY(f.person.verify());
    // What a new pane cannot show at once would not fit into another new one either.
    f.build();
    QSignalSpy again(f.pane.get(), &uFile::keysRanOut);
    f.tree().keys().restart(KeyCounter::last);
    f.rows().keys().restart(KeyCounter::last);
    f.person.expectMessage(message);
    f.pane->cOn(f.here());
    QTest::qWait(0);
    QCOMPARE(f.names().size(), 1);
    QCOMPARE(again.size(), 0);
    QVERIFY(f.person.verify());
}

void tst_uFile::saysWhenAFolderCannotBeRead()
{
    Fixture f;
    f.show({{"shut/file", "1"}, {"shut/sub/", ""}, {"open", "1"}});
    const QString shut = f.at(QStringLiteral("shut"));
    if (venlo::test::onWindows)
        QSKIP("who may read a folder is no matter of a mark there");
    QVERIFY(QFile::setPermissions(shut, {}));
    const auto restore = qScopeGuard([&] {
        QFile::setPermissions(shut, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    });
    if (QDir(shut).isReadable())
        QSKIP("whoever runs the tests may read everything");
    f.person.allowMessages();
    f.clickNode(shut);
    QCOMPARE(f.person.messages().size(), 1);
    QVERIFY(f.person.messages().constFirst().startsWith(shut + QStringLiteral(" : ")));
    QCOMPARE(f.names(), QStringList());
    QVERIFY(f.tree().isUnread(f.node(shut)));
}

void tst_uFile::sharesIcons()
{
    Fixture f;
    f.show({{"a.txt", "1"}, {"b.txt", "1"}, {"sub/", ""}});
    const QString key = f.pane->trIcnToPic(f.at(QStringLiteral("a.txt")));
    QVERIFY(key.startsWith(QLatin1String("ICON:")));
    QCOMPARE(f.pane->trIcnToPic(f.at(QStringLiteral("b.txt"))), key);
    QVERIFY(f.pane->trIcnToPic(f.at(QStringLiteral("sub"))) != key);
    const QModelIndex cell = f.rows().index(f.rowOf(QStringLiteral("sub")), 0);
    QVERIFY(!cell.data(Qt::DecorationRole).value<QIcon>().isNull());
    QVERIFY(!f.tree().root().data(Qt::DecorationRole).value<QIcon>().isNull());
}

void tst_uFile::showsManyFiles()
{
    constexpr int many = venlo::test::onWindows ? 5'000 : 30'000; // Wine writes them for minutes
    Fixture f;
    QVERIFY(QDir(f.here()).mkpath(QStringLiteral("many")));
    for (int i = 0; i < many; ++i) {
        QFile file(f.at(QStringLiteral("many/file%1.txt").arg(i, 5, 10, QLatin1Char('0'))));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    f.testers.clear(); // they look at every row again and again
    f.pane->cOn(f.here());
    QElapsedTimer clock;
    clock.start();
    int yields = 0;
    int early = -1;
    f.person.onYield([&] {
        if (++yields == 1)
            early = f.rows().count();
    });
    f.pane->SetRr(f.at(QStringLiteral("many")), {}, 0);
    qInfo("%d rows: %lld ms", many, clock.elapsed());
    QCOMPARE(f.rows().count(), many);
    QCOMPARE(f.rows().text(many - 1, 0),
             QStringLiteral("file%1.txt").arg(many - 1, 5, 10, QLatin1Char('0')));
    QVERIFY2(yields > 2, "events run while a folder is read");
    QCOMPARE(early, 0); // no rows of a folder that is no longer the selected one
    // Who goes elsewhere meanwhile need not wait for the end.
    yields = 0;
    f.person.onYield([&] {
        if (++yields == 1)
            f.pane->SetRr(f.here(), {}, 0);
    });
    f.pane->ReFresh();
    f.person.onYield({});
    QCOMPARE(f.names(), QStringList{QStringLiteral("many")});
    QCOMPARE(f.pane->NodePath(), f.here());
}

QTEST_MAIN(tst_uFile)
#include "tst_uFile.moc"
