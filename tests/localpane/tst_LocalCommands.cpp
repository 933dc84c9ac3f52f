// What the menu and the keys of the local pane do.
#include "localpane/CommandsFixture.h"
#include "platform/Wine.h"

#include "localpane/LocalSelection.h"
#include "platform/FileClipboard.h"
#include "views/RemoteEntries.h"

namespace venlo
{

using test::CommandsFixture;
using test::ScriptedPerson;

class tst_LocalCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void collectorFlags_data();
    void collectorFlags();
    void otherMenusAreNotHandled();
    void opensWhatIsSelected();
    void nothingSelectedRaisesNothing();
    void jobsForTheHost();
    void separatorsDoNothing();
    void someCommandsCollectNothing();
    void uploads();
    void cutAndPasteMoves();
    void copyAndPasteCopies();
    void pasteKeepsTheClipboard();
    void pasteIntoTheSelectedFolder();
    void unmarkedFilesAreNotPasted();
    void foreignClipboardIsNotPasted();
    void remoteEntriesAreFetched();
    void deletesSelectedRows();
    void deletedNodeSelectsTheNextOne_data();
    void deletedNodeSelectsTheNextOne();
    void refusedDeleteKeepsTheNode();
    void theRootIsNotDeleted();
    void oddNamesAreLeftAlone();
    void copiesTheListAsText();
    void keysOfTree();
    void oneOperationAtATime();
    void shellWords();
};

void tst_LocalCommands::collectorFlags_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("collects");
    QTest::addColumn<CollectFlags>("flags");
    const auto row = [](int index, bool collects, CollectFlags flags) {
        QTest::addRow("%02d", index) << index << collects << flags;
    };
    row(0, true, {true, false, true});
    row(1, true, {true, true, false});
    row(2, true, {true, true, false});
    row(3, false, {true, false, false});
    row(4, true, {true, false, false});
    row(5, true, {false, false, false});
    row(6, true, {false, false, false});
    row(7, false, {true, false, false});
    row(9, true, {true, false, false});
    row(10, true, {true, false, false});
    row(12, true, {false, false, false});
    row(13, false, {true, false, false});
    row(15, false, {true, true, false});
    row(17, true, {true, true, false}); // the sound mark behind it changes nothing
}

void tst_LocalCommands::collectorFlags()
{
    QFETCH(const int, index);
    QFETCH(const bool, collects);
    QFETCH(const CollectFlags, flags);
    QCOMPARE(collectsFirst(index), collects);
    QCOMPARE(collectFlags(index), flags);
}

void tst_LocalCommands::otherMenusAreNotHandled()
{
    CommandsFixture f;
    f.show({{"a.txt", "1"}});
    f.commands->RunMenuCommand(QStringLiteral("Ftp"), 3, false);
    f.commands->RunMenuCommand(QString(), 3, false);
    QCOMPARE(f.raised, QStringList());
    for (const char *name : {"Fold", "FOLD", "fold"})
        f.commands->RunMenuCommand(QString::fromLatin1(name), 3, false);
    QCOMPARE(f.raised.size(), 3);
}

void tst_LocalCommands::opensWhatIsSelected()
{
    CommandsFixture f;
    f.show({{"d/", ""}, {"a.txt", "1"}, {"b.txt", "1"}});
    const QString a = f.at(QStringLiteral("a.txt"));
    const QString b = f.at(QStringLiteral("b.txt"));
    const QString d = f.at(QStringLiteral("d"));
    f.choose({QStringLiteral("b.txt"), QStringLiteral("d"), QStringLiteral("a.txt")});
    for (int index = 0; index < 3; ++index)
        f.menu(index, false);
    QCOMPARE(f.raised, (QStringList{QStringLiteral("eOpnFL 0 ") + d + QLatin1Char(',') + a +
                                        QLatin1Char(',') + b,
                                    QStringLiteral("eOpnFL 1 ") + a + QLatin1Char(',') + b,
                                    QStringLiteral("eOpnFL 2 ") + a + QLatin1Char(',') + b}));
    f.raised.clear();
    f.chooseNode(QStringLiteral("d"));
    f.menu(0, true);
    f.menu(1, true); // files only
    QCOMPARE(f.raised, QStringList{QStringLiteral("eOpnFL 0 ") + d});
}

void tst_LocalCommands::nothingSelectedRaisesNothing()
{
    CommandsFixture f;
    f.show({{"d/", ""}, {"a.txt", "1"}});
    QApplication::clipboard()->clear();
    f.choose({});
    for (const int index : {1, 2, 5, 6, 9, 12})
        f.menu(index, false);
    QCOMPARE(f.raised, QStringList());
    QCOMPARE(filesOnClipboard().paths, QStringList());
    // The folder itself stands in for what the file manager is to show.
    f.menu(0, false);
    QCOMPARE(f.raised, QStringList{QStringLiteral("eOpnFL 0 ") + f.here()});
    f.raised.clear();
    f.choose({QStringLiteral("d")});
    f.menu(1, false);
    QCOMPARE(f.raised, QStringList());
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::jobsForTheHost()
{
    CommandsFixture f;
    f.show({});
    f.menu(3, true);
    f.menu(10, false);
    QCOMPARE(f.raised, (QStringList{QStringLiteral("eAct 検索"), QStringLiteral("eAct 同期")}));
}

void tst_LocalCommands::separatorsDoNothing()
{
    CommandsFixture f;
    f.show({{"a.txt", "1"}});
    f.choose({QStringLiteral("a.txt")});
    for (const int index : {4, 8, 11, 14, 16, -1})
        f.menu(index, false);
    QCOMPARE(f.raised, QStringList());
    QVERIFY(f.has(QStringLiteral("a.txt")));
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::someCommandsCollectNothing()
{
    if (venlo::test::onWindows)
        QSKIP("Windows holds no such names");
    // Collecting tells about names it leaves out: a way to see whether it was done.
    CommandsFixture f;
    f.show({{"a\nb", "1"}});
    f.choose({QStringLiteral("a\nb")});
    QApplication::clipboard()->clear();
    for (const int index : {3, 7, 13, 15}) {
        if (index == 13)
            f.person.expectMessage(QStringLiteral("a b\n扱えない文字を含む名前です"));
        f.person.clear();
        f.menu(index, false);
        QCOMPARE(f.person.statusLines(), QStringList());
    }
    QTest::keyClick(f.editor(), Qt::Key_Escape);
    f.choose({QStringLiteral("a\nb")});
    f.person.clear();
    f.menu(6, false);
    QCOMPARE(f.person.statusLines(),
             QStringList{QStringLiteral("a b は扱えない文字を含むため対象外です")});
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::uploads()
{
    CommandsFixture f;
    f.show({{"d/", ""}, {"a.txt", "1"}});
    f.choose({QStringLiteral("a.txt")});
    f.menu(9, false);
    f.chooseNode(QStringLiteral("d"));
    f.menu(9, true);
    QCOMPARE(f.raised,
             (QStringList{QStringLiteral("upload rows"), QStringLiteral("upload folder")}));
}

void tst_LocalCommands::cutAndPasteMoves()
{
    CommandsFixture f;
    f.show({{"to/", ""}, {"d/in.txt", "in"}, {"a.txt", "one"}});
    f.choose({QStringLiteral("a.txt"), QStringLiteral("d")});
    QTest::keyClick(&f.lsView, Qt::Key_X, Qt::ControlModifier);
    QCOMPARE(filesOnClipboard().effect, 2U);
    QVERIFY(f.has(QStringLiteral("a.txt"))); // not before the paste
    f.chooseNode(QStringLiteral("to"));
    QTest::keyClick(&f.trView, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(f.read(QStringLiteral("to/a.txt")), QByteArray("one"));
    QCOMPARE(f.read(QStringLiteral("to/d/in.txt")), QByteArray("in"));
    QVERIFY(!f.has(QStringLiteral("a.txt")) && !f.has(QStringLiteral("d")));
    // Tree and list show what the disk holds.
    QCOMPARE(f.names(), (QStringList{QStringLiteral("d"), QStringLiteral("a.txt")}));
    QVERIFY(!f.node(QStringLiteral("d")).isValid());
    QVERIFY(f.node(QStringLiteral("to/d")).isValid());
    QCOMPARE(f.NodePath(), f.at(QStringLiteral("to")));
    QCOMPARE(f.busy, 0);
    QCOMPARE(f.mostBusy, 1);
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::copyAndPasteCopies()
{
    CommandsFixture f;
    f.show({{"to/", ""}, {"d/s/in.txt", "in"}});
    f.chooseNode(QStringLiteral("d"));
    QTest::keyClick(&f.trView, Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(filesOnClipboard().effect, 5U);
    f.chooseNode(QStringLiteral("to"));
    QTest::keyClick(&f.trView, Qt::Key_V, Qt::ControlModifier);
    QCOMPARE(f.read(QStringLiteral("to/d/s/in.txt")), QByteArray("in"));
    QCOMPARE(f.read(QStringLiteral("d/s/in.txt")), QByteArray("in"));
    QCOMPARE(f.names(), QStringList{QStringLiteral("d")});
}

void tst_LocalCommands::pasteKeepsTheClipboard()
{
    CommandsFixture f;
    f.show({{"to/", ""}, {"a.txt", "one"}});
    putFilesOnClipboard({f.at(QStringLiteral("a.txt"))}, cutEffect);
    f.chooseNode(QStringLiteral("to"));
    f.menu(7, true);
    QVERIFY(f.has(QStringLiteral("to/a.txt")));
    QCOMPARE(filesOnClipboard().paths, QStringList{f.at(QStringLiteral("a.txt"))});
    // A second paste meets files that are gone.
    if (venlo::test::onWindows)
        QSKIP(venlo::test::shellsOwn);
    f.person.allowMessages();
    f.menu(7, true);
    QCOMPARE(f.person.messages().size(), 1);
    QVERIFY(f.person.messages().constFirst().startsWith(f.at(QStringLiteral("a.txt\n"))));
}

void tst_LocalCommands::pasteIntoTheSelectedFolder()
{
    CommandsFixture f;
    f.show({{"d/", ""}, {"e/", ""}, {"x/a.txt", "one"}});
    putFilesOnClipboard({f.at(QStringLiteral("x/a.txt"))}, copyEffect);
    f.choose({QStringLiteral("d")});
    f.menu(7, false);
    QVERIFY(f.has(QStringLiteral("d/a.txt")));
    QVERIFY(!f.has(QStringLiteral("a.txt")));
    f.choose({QStringLiteral("d"), QStringLiteral("e")}); // not one alone
    f.menu(7, false);
    QVERIFY(f.has(QStringLiteral("a.txt")));
    f.choose({QStringLiteral("a.txt")}); // no folder
    QVERIFY(QFile::remove(f.at(QStringLiteral("a.txt"))));
    f.menu(7, false);
    QVERIFY(f.has(QStringLiteral("a.txt")));
    QVERIFY(QFile::remove(f.at(QStringLiteral("a.txt"))));
    f.choose({QStringLiteral("e")});
    f.menu(7, true); // given for the tree
    QVERIFY(f.has(QStringLiteral("a.txt")) && !f.has(QStringLiteral("e/a.txt")));
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::unmarkedFilesAreNotPasted()
{
    CommandsFixture f;
    f.show({{"to/", ""}, {"a.txt", "one"}});
    QApplication::clipboard()->setMimeData(
        CommandsFixture::files({f.at(QStringLiteral("a.txt"))}).release());
    f.chooseNode(QStringLiteral("to"));
    f.menu(7, true);
    QVERIFY(!f.has(QStringLiteral("to/a.txt")));
    QVERIFY(f.has(QStringLiteral("a.txt")));
    QCOMPARE(f.mostBusy, 0);
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::foreignClipboardIsNotPasted()
{
    CommandsFixture f;
    f.show({});
    QApplication::clipboard()->clear();
    f.menu(7, true);
    QApplication::clipboard()->setText(QStringLiteral("/tmp"));
    f.menu(7, true);
    QCOMPARE(f.mostBusy, 0);
    QCOMPARE(QDir(f.here()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), QStringList());
}

void tst_LocalCommands::remoteEntriesAreFetched()
{
    CommandsFixture f;
    f.show({{"d/", ""}});
    auto data = std::make_unique<QMimeData>();
    setRemoteEntries(*data, f.session.currentSite(),
                     {{QStringLiteral("/pub"), QStringLiteral("a.txt"), EntryTag::FL}});
    QApplication::clipboard()->setMimeData(data.release());
    f.choose({QStringLiteral("d")});
    f.menu(7, false);
    QCOMPARE(f.raised,
             QStringList{QStringLiteral("fetch /pub a.txt > ") + f.at(QStringLiteral("d"))});
    // Of another site: not ours to fetch.
    f.raised.clear();
    data = std::make_unique<QMimeData>();
    setRemoteEntries(*data, QStringLiteral("another"),
                     {{QStringLiteral("/pub"), QStringLiteral("a.txt"), EntryTag::FL}});
    QApplication::clipboard()->setMimeData(data.release());
    f.menu(7, false);
    QCOMPARE(f.raised, QStringList());
}

void tst_LocalCommands::deletesSelectedRows()
{
    if (venlo::test::onWindows)
        QSKIP(venlo::test::shellsOwn);
    CommandsFixture f;
    f.show({{"d/in.txt", "1"}, {"a.txt", "1"}, {"b.txt", "1"}});
    f.choose({QStringLiteral("a.txt"), QStringLiteral("d")});
    f.person.expectQuestion(QStringLiteral("選択した 2 個のﾌｫﾙﾀﾞ･ﾌｧｲﾙをごみ箱に移動します"), false);
    QTest::keyClick(&f.lsView, Qt::Key_Delete);
    QVERIFY(f.has(QStringLiteral("a.txt")) && f.has(QStringLiteral("d")));
    f.person.expectQuestion(QStringLiteral("選択した 2 個のﾌｫﾙﾀﾞ･ﾌｧｲﾙをごみ箱に移動します"), true);
    QTest::keyClick(&f.lsView, Qt::Key_Delete);
    QVERIFY(!f.has(QStringLiteral("a.txt")) && !f.has(QStringLiteral("d")));
    QVERIFY(QFile::exists(f.binned(QStringLiteral("a.txt"))));
    QVERIFY(QFile::exists(f.binned(QStringLiteral("d/in.txt"))));
    QCOMPARE(f.names(), QStringList{QStringLiteral("b.txt")});
    QVERIFY(!f.node(QStringLiteral("d")).isValid());
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::deletedNodeSelectsTheNextOne_data()
{
    QTest::addColumn<QString>("node");
    QTest::addColumn<QString>("next");
    QTest::newRow("first of two") << QStringLiteral("p/a") << QStringLiteral("p/b");
    QTest::newRow("last of two") << QStringLiteral("p/b") << QStringLiteral("p");
    QTest::newRow("only one") << QStringLiteral("q/c") << QStringLiteral("q");
}

void tst_LocalCommands::deletedNodeSelectsTheNextOne()
{
    if (venlo::test::onWindows)
        QSKIP(venlo::test::shellsOwn);
    QFETCH(const QString, node);
    QFETCH(const QString, next);
    CommandsFixture f;
    f.show({{"p/a/", ""}, {"p/b/", ""}, {"q/c/", ""}});
    f.trView.expand(f.node(QStringLiteral("p")));
    f.trView.expand(f.node(QStringLiteral("q")));
    f.chooseNode(node);
    f.person.expectQuestion(QLatin1Char('\'') + node.section(QLatin1Char('/'), -1) +
                                QStringLiteral("' をごみ箱に移動します"),
                            true);
    QTest::keyClick(&f.trView, Qt::Key_Delete);
    QVERIFY(!f.has(node));
    QVERIFY(!f.node(node).isValid());
    QCOMPARE(f.NodePath(), f.at(next));
    QCOMPARE(f.listFill.folder(), f.at(next));
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::refusedDeleteKeepsTheNode()
{
    if (venlo::test::onWindows)
        QSKIP(venlo::test::shellsOwn);
    CommandsFixture f;
    f.show({{"a/", ""}, {"b/", ""}});
    f.chooseNode(QStringLiteral("a"));
    f.person.expectQuestion(QStringLiteral("'a' をごみ箱に移動します"), false);
    f.menu(12, true);
    QCOMPARE(f.NodePath(), f.at(QStringLiteral("a")));
    QVERIFY(f.has(QStringLiteral("a")));
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::theRootIsNotDeleted()
{
    CommandsFixture f;
    f.show({{"a/", ""}});
    f.chooseNode(QString());
    f.person.expectMessage(QStringLiteral("ﾙｰﾄﾊﾟｽは削除できません"));
    QTest::keyClick(&f.trView, Qt::Key_Delete);
    f.person.expectMessage(QStringLiteral("ﾙｰﾄﾊﾟｽの名前は変更できません"));
    QTest::keyClick(&f.trView, Qt::Key_F2);
    QVERIFY(f.editor() == nullptr);
    QVERIFY(f.has(QStringLiteral("a")));
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::oddNamesAreLeftAlone()
{
    if (venlo::test::onWindows)
        QSKIP("Windows holds no such names");
    CommandsFixture f;
    f.show({{"odd\tfolder/", ""}, {"odd\nfile", "1"}, {"a.txt", "1"}});
    f.choose({QStringLiteral("odd\nfile"), QStringLiteral("odd\tfolder"), QStringLiteral("a.txt")});
    f.person.expectQuestion(QStringLiteral("'a.txt' をごみ箱に移動します"), true);
    f.menu(12, false);
    QVERIFY(f.has(QStringLiteral("odd\nfile")) && f.has(QStringLiteral("odd\tfolder")));
    QVERIFY(!f.has(QStringLiteral("a.txt")));
    QVERIFY(f.person.statusLines().contains(
        QStringLiteral("odd file は扱えない文字を含むため対象外です")));
    f.chooseNode(QStringLiteral("odd\tfolder"));
    f.menu(12, true);
    QVERIFY(f.has(QStringLiteral("odd\tfolder")));
    QVERIFY(f.person.verify());
}

void tst_LocalCommands::copiesTheListAsText()
{
    CommandsFixture f;
    f.show({{"data.txt", QByteArray(2345, 'x'), QDateTime(QDate(2021, 2, 3), QTime(14, 5, 6))},
            {"空", "", QDateTime(QDate(2021, 2, 3), QTime(14, 5, 6))}});
    f.lsView.setFocus();
    QTest::keyClick(&f.lsView, Qt::Key_C, Qt::ControlModifier | Qt::ShiftModifier);
    const QStringList lines = QApplication::clipboard()->text().split(QLatin1Char('\r'));
    QCOMPARE(lines.size(), 4);
    QCOMPARE(lines.at(0), QStringLiteral("名前\t更新日\tｻｲｽﾞ\t拡張子\t種類\t属性"));
    QCOMPARE(lines.at(1),
             QStringLiteral("data.txt\t21/02/03 14:05:06\t2KB\ttxt\t種類\t") + f.rows().text(0, 5));
    QVERIFY(lines.at(2).startsWith(QStringLiteral("空\t21/02/03 14:05:06\tB\t\t")));
    QCOMPARE(lines.at(3), QString());
}

void tst_LocalCommands::keysOfTree()
{
    CommandsFixture f;
    f.show({{"d/", ""}});
    f.chooseNode(QStringLiteral("d"));
    QTest::keyClick(&f.trView, Qt::Key_F2);
    QVERIFY(f.editor() != nullptr);
    QTest::keyClick(f.editor(), Qt::Key_Escape);
    QVERIFY(f.has(QStringLiteral("d")));
}

void tst_LocalCommands::oneOperationAtATime()
{
    CommandsFixture f;
    f.show({{"to/", ""}, {"a.txt", "one"}});
    putFilesOnClipboard({f.at(QStringLiteral("a.txt"))}, copyEffect);
    f.chooseNode(QStringLiteral("to"));
    {
        const OperationGate::Turn turn = f.gate.begin();
        f.menu(7, true);
        QVERIFY(!f.has(QStringLiteral("to/a.txt")));
    }
    f.menu(7, true);
    QVERIFY(f.has(QStringLiteral("to/a.txt")));
    QVERIFY(!f.gate.busy());
}

void tst_LocalCommands::shellWords()
{
    CommandsFixture f;
    f.show({{"to/a.txt", "old"}, {"a.txt", "new"}, {"b.txt", "b"}});
    const QString list =
        f.at(QStringLiteral("a.txt")) + QChar(0) + f.at(QStringLiteral("b.txt")) + QChar(0);
    f.commands->RunShellFileOp(QStringLiteral("その他"), list, f.at(QStringLiteral("to")), true,
                               true);
    QVERIFY(!f.has(QStringLiteral("to/b.txt")));
    f.commands->RunShellFileOp(QStringLiteral("複写"), list, f.at(QStringLiteral("to")), true,
                               true);
    QCOMPARE(f.read(QStringLiteral("to/a.txt")), QByteArray("new"));
    QVERIFY(f.has(QStringLiteral("a.txt")));
    if (venlo::test::underWine())
        QSKIP("the shell of Wine moves no file over another");
    f.commands->RunShellFileOp(QStringLiteral("移動"), list, f.at(QStringLiteral("to")), true,
                               true);
    QVERIFY(!f.has(QStringLiteral("a.txt")) && f.has(QStringLiteral("to/b.txt")));
    QVERIFY(f.person.verify()); // yes to all questions, so none was asked
    if (venlo::test::onWindows)
        QSKIP(venlo::test::shellsOwn);
    f.commands->RunShellFileOp(QStringLiteral("削除"), f.at(QStringLiteral("to")), QString(), true,
                               true);
    QVERIFY(QFile::exists(f.binned(QStringLiteral("to/a.txt"))));
    QVERIFY(f.person.verify());
}

} // namespace venlo

QTEST_MAIN(venlo::tst_LocalCommands)
#include "tst_LocalCommands.moc"
