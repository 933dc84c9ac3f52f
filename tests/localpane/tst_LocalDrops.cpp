// Drags from and onto the local pane.
#include "localpane/CommandsFixture.h"

#include "views/RemoteEntries.h"

namespace venlo
{

using test::CommandsFixture;

class tst_LocalDrops : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void modifiers_data();
    void modifiers();
    void onTheTree();
    void ontoItselfDoesNothing();
    void onFileRowsAndEmptySpace();
    void showsTheTarget();
    void opensWhatIsHovered();
    void leavingTakesTheMarkOff();
    void foreignDataIsRefused();
    void nothingWhileAnOperationRuns();
    void remoteEntriesAreFetchedAfterwards();
    void carriesTheSelection();
    void backWhereItCameFrom();
    void movedAwayByAnother();
    void whileANameIsEdited_data();
    void whileANameIsEdited();
    void onTheRoots_data();
    void onTheRoots();
};

void tst_LocalDrops::modifiers_data()
{
    QTest::addColumn<int>("modifiers");
    QTest::addColumn<int>("offered");
    QTest::addColumn<bool>("moves");
    const int both = Qt::CopyAction | Qt::MoveAction;
    QTest::newRow("none") << 0 << both << false;
    QTest::newRow("Shift") << int(Qt::ShiftModifier) << both << true;
    QTest::newRow("Ctrl") << int(Qt::ControlModifier) << both << false;
    QTest::newRow("Shift and Ctrl")
        << int(Qt::ShiftModifier | Qt::ControlModifier) << both << false;
    QTest::newRow("Shift and Alt") << int(Qt::ShiftModifier | Qt::AltModifier) << both << false;
    QTest::newRow("Shift, lent only") << int(Qt::ShiftModifier) << int(Qt::CopyAction) << false;
}

void tst_LocalDrops::modifiers()
{
    QFETCH(const int, modifiers);
    QFETCH(const int, offered);
    QFETCH(const bool, moves);
    CommandsFixture f;
    f.show({{"d/", ""}, {"x/a.txt", "one"}});
    const auto data = CommandsFixture::files({f.at(QStringLiteral("x/a.txt"))});
    const auto keys = static_cast<Qt::KeyboardModifiers>(modifiers);
    const auto actions = static_cast<Qt::DropActions>(offered);
    // What will happen shows beside the pointer.
    QCOMPARE(f.hover(f.lsView, f.rowIndex(QStringLiteral("d")), *data, keys, actions),
             moves ? Qt::MoveAction : Qt::CopyAction);
    // The answer never makes a source delete what we have moved.
    QCOMPARE(f.drop(f.lsView, f.rowIndex(QStringLiteral("d")), *data, keys, actions),
             moves ? Qt::TargetMoveAction : Qt::CopyAction);
    QCOMPARE(f.read(QStringLiteral("d/a.txt")), QByteArray("one"));
    QCOMPARE(f.has(QStringLiteral("x/a.txt")), !moves);
    QCOMPARE(f.mostBusy, 1);
    QCOMPARE(f.busy, 0);
    QVERIFY(f.person.verify());
}

void tst_LocalDrops::onTheTree()
{
    CommandsFixture f;
    f.show({{"a/sub/in.txt", "in"}, {"b/", ""}});
    const auto data = CommandsFixture::files(
        {f.at(QStringLiteral("a/sub")), f.at(QStringLiteral("a/sub/in.txt"))});
    QCOMPARE(f.drop(f.trView, f.node(QStringLiteral("b")), *data), Qt::CopyAction);
    QCOMPARE(f.read(QStringLiteral("b/sub/in.txt")), QByteArray("in"));
    QCOMPARE(f.read(QStringLiteral("b/in.txt")), QByteArray("in"));
    f.trView.expand(f.node(QStringLiteral("b")));
    QVERIFY(f.node(QStringLiteral("b/sub")).isValid());
    // The empty space below the nodes is no folder.
    QCOMPARE(f.drop(f.trView, {}, *data), Qt::IgnoreAction);
}

void tst_LocalDrops::ontoItselfDoesNothing()
{
    CommandsFixture f;
    f.show({{"d/in.txt", "in"}, {"e/", ""}});
    const auto alone = CommandsFixture::files({f.at(QStringLiteral("d"))});
    for (const Qt::KeyboardModifiers keys : {Qt::NoModifier, Qt::ShiftModifier}) {
        QCOMPARE(f.drop(f.trView, f.node(QStringLiteral("d")), *alone, keys), Qt::IgnoreAction);
        QCOMPARE(f.drop(f.lsView, f.rowIndex(QStringLiteral("d")), *alone, keys), Qt::IgnoreAction);
    }
    QCOMPARE(f.mostBusy, 0);
    QCOMPARE(QDir(f.at(QStringLiteral("d"))).entryList(QDir::NoDotAndDotDot | QDir::AllEntries),
             QStringList{QStringLiteral("in.txt")});
    // One of several: the shell refuses that one and takes the rest.
    if (venlo::test::onWindows)
        QSKIP(venlo::test::shellsOwn);
    const auto two = CommandsFixture::files({f.at(QStringLiteral("d")), f.at(QStringLiteral("e"))});
    f.person.expectQuestion(
        f.at(QStringLiteral("d")) +
            QStringLiteral("\nﾌｫﾙﾀﾞを自分自身またはその中のﾌｫﾙﾀﾞへ移動･複写することはできません"
                           "\n\n残りの処理を続けますか ?"),
        true);
    QCOMPARE(f.drop(f.trView, f.node(QStringLiteral("d")), *two, Qt::ShiftModifier),
             Qt::TargetMoveAction);
    QVERIFY(f.has(QStringLiteral("d/e")) && f.has(QStringLiteral("d/in.txt")));
    QVERIFY(f.person.verify());
}

void tst_LocalDrops::onFileRowsAndEmptySpace()
{
    CommandsFixture f;
    f.show({{"d/x.txt", "x"}, {"d/y.txt", "y"}, {"a.txt", "a"}});
    const auto x = CommandsFixture::files({f.at(QStringLiteral("d/x.txt"))});
    QCOMPARE(f.drop(f.lsView, f.rowIndex(QStringLiteral("a.txt")), *x), Qt::CopyAction);
    QVERIFY(f.has(QStringLiteral("x.txt")));
    const auto y = CommandsFixture::files({f.at(QStringLiteral("d/y.txt"))});
    QCOMPARE(f.drop(f.lsView, {}, *y, Qt::ShiftModifier), Qt::TargetMoveAction);
    QVERIFY(f.has(QStringLiteral("y.txt")) && !f.has(QStringLiteral("d/y.txt")));
    QCOMPARE(f.names(), (QStringList{QStringLiteral("d"), QStringLiteral("a.txt"),
                                     QStringLiteral("x.txt"), QStringLiteral("y.txt")}));
}

void tst_LocalDrops::showsTheTarget()
{
    CommandsFixture f;
    f.show({{"d/", ""}, {"a.txt", "a"}});
    const QTemporaryDir elsewhere;
    const auto data = CommandsFixture::files({elsewhere.path()});
    const auto bold = [](const QModelIndex &index) {
        return index.data(Qt::FontRole).value<QFont>().bold();
    };
    QVERIFY(!bold(f.rowIndex(QStringLiteral("d"))));
    (void)f.hover(f.lsView, f.rowIndex(QStringLiteral("d")), *data);
    QVERIFY(bold(f.rowIndex(QStringLiteral("d"))));
    (void)f.hover(f.lsView, f.rowIndex(QStringLiteral("a.txt")), *data);
    QVERIFY(!bold(f.rowIndex(QStringLiteral("d"))) && !bold(f.rowIndex(QStringLiteral("a.txt"))));
    (void)f.hover(f.trView, f.node(QStringLiteral("d")), *data);
    QVERIFY(bold(f.node(QStringLiteral("d"))));
    (void)f.hover(f.trView, f.node(QString()), *data);
    QVERIFY(bold(f.node(QString())) && !bold(f.node(QStringLiteral("d"))));
    QCOMPARE(f.drop(f.lsView, f.rowIndex(QStringLiteral("d")), *data), Qt::CopyAction);
    QVERIFY(!bold(f.rowIndex(QStringLiteral("d"))) && !bold(f.node(QString())));
}

void tst_LocalDrops::opensWhatIsHovered()
{
    CommandsFixture f;
    f.show({{"d/sub/", ""}, {"x/", ""}});
    const auto data = CommandsFixture::files({f.at(QStringLiteral("x"))});
    (void)f.hover(f.trView, f.node(QStringLiteral("d")), *data);
    QCOMPARE(f.expandKey, f.tree().key(f.node(QStringLiteral("d"))));
    (void)f.hover(f.trView, f.node(QString()), *data);
    QCOMPARE(f.expandKey, QString()); // open already
    // A folder held above itself opens as well: the target may lie elsewhere in it.
    const auto d = CommandsFixture::files({f.at(QStringLiteral("d"))});
    (void)f.hover(f.trView, f.node(QStringLiteral("d")), *d);
    QCOMPARE(f.expandKey, f.tree().key(f.node(QStringLiteral("d"))));
}

void tst_LocalDrops::leavingTakesTheMarkOff()
{
    CommandsFixture f;
    f.show({{"d/sub/", ""}, {"x/", ""}});
    const auto data = CommandsFixture::files({f.at(QStringLiteral("x"))});
    (void)f.hover(f.trView, f.node(QStringLiteral("d")), *data);
    QVERIFY(f.tree().dropTarget().isValid());
    QDragLeaveEvent leave;
    QApplication::sendEvent(f.trView.viewport(), &leave);
    QVERIFY(!f.tree().dropTarget().isValid());
    QCOMPARE(f.expandKey, QString());
}

void tst_LocalDrops::foreignDataIsRefused()
{
    CommandsFixture f;
    f.show({{"d/", ""}});
    QMimeData text;
    text.setText(QStringLiteral("/tmp"));
    QCOMPARE(f.drop(f.lsView, f.rowIndex(QStringLiteral("d")), text), Qt::IgnoreAction);
    QMimeData page;
    page.setUrls({QUrl(QStringLiteral("https://example.invalid/"))});
    QCOMPARE(f.drop(f.trView, f.node(QStringLiteral("d")), page), Qt::IgnoreAction);
    QCOMPARE(f.mostBusy, 0);
}

void tst_LocalDrops::nothingWhileAnOperationRuns()
{
    CommandsFixture f;
    f.show({{"d/", ""}, {"x/a.txt", "one"}});
    const auto data = CommandsFixture::files({f.at(QStringLiteral("x/a.txt"))});
    const OperationGate::Turn turn = f.gate.begin();
    QCOMPARE(f.hover(f.lsView, f.rowIndex(QStringLiteral("d")), *data), Qt::IgnoreAction);
    QCOMPARE(f.drop(f.lsView, f.rowIndex(QStringLiteral("d")), *data), Qt::IgnoreAction);
    QVERIFY(!f.has(QStringLiteral("d/a.txt")));
}

void tst_LocalDrops::remoteEntriesAreFetchedAfterwards()
{
    CommandsFixture f;
    f.show({{"d/", ""}});
    QMimeData data;
    setRemoteEntries(data, f.session.currentSite(),
                     {{QStringLiteral("/pub"), QStringLiteral("a.txt"), EntryTag::FL},
                      {QStringLiteral("/pub"), QStringLiteral("dir"), EntryTag::FD}});
    QCOMPARE(f.drop(f.trView, f.node(QStringLiteral("d")), data, Qt::ShiftModifier),
             Qt::CopyAction);
    QCOMPARE(f.raised, QStringList()); // the drag is still on
    QCoreApplication::processEvents();
    const QString to = f.at(QStringLiteral("d"));
    QCOMPARE(f.raised, (QStringList{QStringLiteral("fetch /pub a.txt > ") + to,
                                    QStringLiteral("fetch /pub dir > ") + to}));
    QMimeData other;
    setRemoteEntries(other, QStringLiteral("another site"), {});
    QCOMPARE(f.drop(f.trView, f.node(QStringLiteral("d")), other), Qt::IgnoreAction);
}

void tst_LocalDrops::carriesTheSelection()
{
    CommandsFixture f;
    std::vector<venlo::test::TreeRow> entries = {{"d/", ""}, {"a.txt", "a"}, {"b.txt", "b"}};
    QStringList chosen{QStringLiteral("d")};
    if (!venlo::test::onWindows) { // which holds no such names
        entries.push_back({"odd\nname", "o"});
        chosen << QStringLiteral("odd\nname");
    }
    f.show(entries);
    QList<QUrl> carried;
    f.lsView.whileDragging = [&carried](const QMimeData &data) {
        carried = data.urls();
        return Qt::IgnoreAction;
    };
    f.trView.whileDragging = f.lsView.whileDragging;
    const auto drag = [](PaneView &view, const QModelIndex &from) {
        const QPoint start = view.visualRect(from).center();
        QTest::mousePress(view.viewport(), Qt::LeftButton, Qt::ControlModifier, start);
        const QPoint end = start + QPoint(3 * QApplication::startDragDistance(), 0);
        for (int i = 0; i < 2; ++i) {
            QMouseEvent move(QEvent::MouseMove, end, view.viewport()->mapToGlobal(end),
                             Qt::NoButton, Qt::LeftButton, Qt::ControlModifier);
            QApplication::sendEvent(view.viewport(), &move);
        }
        QTest::mouseRelease(view.viewport(), Qt::LeftButton, Qt::NoModifier, end);
    };
    f.choose(chosen);
    drag(f.lsView, f.rowIndex(QStringLiteral("b.txt")));
    QCOMPARE(carried, (QList<QUrl>{QUrl::fromLocalFile(f.at(QStringLiteral("d"))),
                                   QUrl::fromLocalFile(f.at(QStringLiteral("b.txt")))}));
    QCOMPARE(f.lsView.offered, Qt::CopyAction | Qt::MoveAction);
    f.chooseNode(QStringLiteral("d"));
    drag(f.trView, f.node(QStringLiteral("d")));
    QCOMPARE(carried, QList<QUrl>{QUrl::fromLocalFile(f.at(QStringLiteral("d")))});
}

void tst_LocalDrops::backWhereItCameFrom()
{
    CommandsFixture f;
    f.show({{"d/", ""}, {"a.txt", "a"}});
    f.choose({QStringLiteral("a.txt")});
    const auto data = f.commands->dragData(f.lsView);
    QVERIFY(data != nullptr);
    // A drag of a few pixels that was none.
    QCOMPARE(f.drop(f.lsView, {}, *data), Qt::IgnoreAction);
    QCOMPARE(f.drop(f.lsView, {}, *data, Qt::ShiftModifier), Qt::IgnoreAction);
    QCOMPARE(f.names().size(), 2);
    // Ctrl says that a second one is wanted.
    if (venlo::test::onWindows)
        QSKIP(venlo::test::shellsOwn);
    QCOMPARE(f.drop(f.lsView, {}, *data, Qt::ControlModifier), Qt::CopyAction);
    QVERIFY(f.has(QStringLiteral("a - ｺﾋﾟｰ.txt")));
    f.commands->dragEnded(Qt::CopyAction);
    // From another window it is wanted in any case.
    QCOMPARE(f.drop(f.lsView, {}, *data), Qt::CopyAction);
    QVERIFY(f.has(QStringLiteral("a - ｺﾋﾟｰ (2).txt")));
}

void tst_LocalDrops::movedAwayByAnother()
{
    CommandsFixture f;
    f.show({{"d/sub/", ""}, {"a.txt", "a"}});
    f.chooseNode(QStringLiteral("d"));
    const auto data = f.commands->dragData(f.trView);
    QVERIFY(data != nullptr);
    QVERIFY(QDir(f.at(QStringLiteral("d"))).removeRecursively());
    f.commands->dragEnded(Qt::MoveAction);
    QCOMPARE(f.NodePath(), f.here());
    QVERIFY(!f.node(QStringLiteral("d")).isValid());
    QVERIFY(f.has(QStringLiteral("a.txt"))); // nothing is deleted on a target's word
    QVERIFY(f.person.verify());
}

void tst_LocalDrops::whileANameIsEdited_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::newRow("tree") << true;
    QTest::newRow("list") << false;
}

void tst_LocalDrops::whileANameIsEdited()
{
    QFETCH(const bool, inTree);
    CommandsFixture f;
    f.show({{"d/", ""}});
    QTemporaryDir outside;
    QVERIFY(test::makeTree(outside.path(), {{"a.txt", "a"}}));
    f.menu(15, inTree);
    QVERIFY(f.editor() != nullptr);
    const auto data = CommandsFixture::files({outside.filePath(QStringLiteral("a.txt"))});
    // A new folder that stands in the tree is where the drop would go, and is not there yet.
    QCOMPARE(f.drop(f.lsView, {}, *data), inTree ? Qt::IgnoreAction : Qt::CopyAction);
    QCOMPARE(f.drop(f.trView, f.node(QStringLiteral("d")), *data),
             inTree ? Qt::IgnoreAction : Qt::CopyAction);
    QCOMPARE(f.has(QStringLiteral("a.txt")), !inTree);
    QCOMPARE(f.has(QStringLiteral("d/a.txt")), !inTree);
    // The person goes on typing where they were.
    f.type(QStringLiteral("資料"));
    QTRY_VERIFY(f.editor() == nullptr);
    QVERIFY(f.has(QStringLiteral("資料")));
    QVERIFY(f.node(QStringLiteral("資料")).isValid());
}

void tst_LocalDrops::onTheRoots_data()
{
    QTest::addColumn<QString>("dropped");
    QTest::addColumn<QString>("root");
    QTest::newRow("folder") << QStringLiteral("plain") << QStringLiteral("plain");
    QTest::newRow("file") << QStringLiteral("plain/a.txt") << QStringLiteral("plain");
    // A dot anywhere makes it a file.
    QTest::newRow("folder with a dot") << QStringLiteral("plain/v1.0") << QStringLiteral("plain");
    QTest::newRow("below a dot") << QStringLiteral("plain/v1.0/sub")
                                 << QStringLiteral("plain/v1.0");
    QTest::newRow("file without a dot") << QStringLiteral("plain/README") << QString();
    QTest::newRow("gone") << QStringLiteral("gone") << QString();
}

void tst_LocalDrops::onTheRoots()
{
    QFETCH(const QString, dropped);
    QFETCH(const QString, root);
    CommandsFixture f;
    f.show({{"plain/v1.0/sub/", ""}, {"plain/a.txt", "a"}, {"plain/README", "r"}});
    if (f.here().contains(QLatin1Char('.')))
        QSKIP("the temporary folder's own path holds a dot");
    {
        const OperationGate::Turn turn = f.gate.begin();
        f.commands->droppedOnRoot(f.at(dropped));
        QVERIFY(f.roots.isEmpty());
    }
    f.commands->droppedOnRoot(f.at(dropped));
    QCOMPARE(f.roots, root.isEmpty() ? QStringList() : QStringList{f.at(root)});
}

} // namespace venlo

QTEST_MAIN(venlo::tst_LocalDrops)
#include "tst_LocalDrops.moc"
