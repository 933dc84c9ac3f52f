// The root of the local pane and the layout that its host saves and restores.
#include "localpane/PaneFixture.h"

#include <QDropEvent>
#include <QHeaderView>
#include <QMimeData>
#include <QUrl>
#include <QWheelEvent>

using namespace venlo;
using venlo::test::makeTree;
using venlo::test::PaneFixture;

namespace
{
struct Fixture : PaneFixture {
    explicit Fixture(const std::vector<venlo::test::TreeRow> &what = {
                         {"sub/deep/", ""}, {"sub/in.txt", "1"}, {"a.txt", "1"}, {"b.txt", "1"}})
    {
        made = makeTree(here(), what);
        pane->cOn(here());
    }
    [[nodiscard]] QString sub() const { return at(QStringLiteral("sub")); }
    /// Drops a file list on a widget as the window system would.
    bool drop(QWidget &on, const QString &path)
    {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&on, &enter);
        if (!enter.isAccepted())
            return false;
        QDropEvent event({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
        QCoreApplication::sendEvent(&on, &event);
        return event.isAccepted();
    }
    bool made = false;
};

const QString gone = QStringLiteral(" が存在しません");
} // namespace

class tst_uFileState : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsATypedRoot();
    void showsARootOfTheList();
    void asksForARoot();
    void takesDroppedFolders();
    void showsAFolderOfTheRoot();
    void showsAPattern();
    void refusesAPatternThatIsGone();
    void givesBackItsLayout();
    void leavesColumnsThatAreNotNamed();
    void leavesTheRootWhenTheFolderLiesElsewhere();
    void remembersRoots();
    void beginsWithWhatIsLeftOfARoot();
    void leavesARootThatIsGone();
    void ignoresTheWheel();
};

void tst_uFileState::showsATypedRoot()
{
    Fixture f;
    f.typeInto(f.cbRoot(), f.sub() + QLatin1Char('/'));
    QCOMPARE(f.pane->Root(), f.sub());
    QCOMPARE(f.tree().text(f.tree().root()), f.sub());
    QCOMPARE(f.names().size(), 2);
    QCOMPARE(f.cbRoot().currentText(), f.sub());
    const QString missing = f.at(QStringLiteral("no such"));
    f.person.expectMessage(missing + gone);
    f.typeInto(f.cbRoot(), missing);
    QCOMPARE(f.pane->Root(), f.sub());
    QCOMPARE(f.cbRoot().currentText(), f.sub());
    QTest::keyClicks(f.cbRoot().lineEdit(), QStringLiteral("xyz"));
    QTest::keyClick(f.cbRoot().lineEdit(), Qt::Key_Escape);
    QCOMPARE(f.cbRoot().currentText(), f.sub());
    f.typeInto(f.cbRoot(), Fixture::top());
    QCOMPARE(f.pane->Root(), Fixture::top());
    QCOMPARE(f.pane->NodePath(), Fixture::top());
    QVERIFY(f.person.verify());
}

void tst_uFileState::showsARootOfTheList()
{
    Fixture f;
    f.pane->cOn(f.sub());
    QCOMPARE(f.cbRoot().count(), 2);
    QCOMPARE(f.cbRoot().currentIndex(), 0);
    f.cbRoot().setFocus();
    QTest::keyClick(&f.cbRoot(), Qt::Key_Down);
    QCOMPARE(f.pane->Root(), f.here());
    QCOMPARE(f.cbRoot().count(), 2);
    QCOMPARE(f.cbRoot().itemText(0), f.here());
    QCOMPARE(f.cbRoot().currentIndex(), 0);
}

void tst_uFileState::asksForARoot()
{
    Fixture f;
    const QString title = QStringLiteral("ﾌｫﾙﾀﾞの指定");
    auto &button = f.child<QToolButton>("imFnd");
    f.person.expectPickFolder(title, QString());
    QTest::mouseClick(&button, Qt::LeftButton);
    QCOMPARE(f.person.proposal(), f.here());
    QCOMPARE(f.pane->Root(), f.here());
    f.person.expectPickFolder(title, f.sub());
    QTest::mouseClick(&button, Qt::LeftButton);
    QCOMPARE(f.pane->Root(), f.sub());
    f.build();
    f.person.expectPickFolder(title, QString());
    QTest::mouseClick(&f.child<QToolButton>("imFnd"), Qt::LeftButton);
    QCOMPARE(f.person.proposal(), QString()); // the computer
    QVERIFY(f.person.verify());
}

void tst_uFileState::takesDroppedFolders()
{
    Fixture f;
    QVERIFY(f.drop(f.cbRoot(), f.sub()));
    QCOMPARE(f.pane->Root(), f.sub());
    QVERIFY(f.drop(f.child<QToolButton>("imFnd"), f.here()));
    QCOMPARE(f.pane->Root(), f.here());
    QMimeData text;
    text.setText(f.sub());
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &text, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&f.cbRoot(), &enter);
    QVERIFY(!enter.isAccepted());
}

void tst_uFileState::showsAFolderOfTheRoot()
{
    Fixture f;
    f.pane->cOn(f.here() + QLatin1Char('\r') + f.sub());
    QCOMPARE(f.pane->Root(), f.here());
    QVERIFY(f.treeView().isExpanded(f.tree().root()));
    QCOMPARE(f.names(), (QStringList{QStringLiteral("deep"), QStringLiteral("in.txt")}));
    // What the rows stand for is what their folder is called.
    QCOMPARE(f.pane->NodePath(), f.sub());
}

void tst_uFileState::showsAPattern()
{
    Fixture f;
    QVERIFY(f.pane->SetSync(f.sub()));
    QCOMPARE(f.pane->Root(), f.here());
    QCOMPARE(f.pane->NodePath(), f.sub());
    QCOMPARE(f.pane->syncMark(), f.sub());
    f.pane->cOn(f.at(QStringLiteral("sub/deep")));
    QVERIFY(f.pane->SetSync(f.sub()));
    QCOMPARE(f.pane->Root(), Fixture::top());
    QCOMPARE(f.pane->NodePath(), f.sub());
    QCOMPARE(f.names(), (QStringList{QStringLiteral("deep"), QStringLiteral("in.txt")}));
}

void tst_uFileState::refusesAPatternThatIsGone()
{
    Fixture f;
    const QString missing = f.at(QStringLiteral("missing"));
    f.person.expectMessage(missing + gone);
    QVERIFY(!f.pane->SetSync(missing));
    QCOMPARE(f.pane->NodePath(), f.here());
    QCOMPARE(f.pane->syncMark(), missing);
    QVERIFY(f.person.verify());
}

void tst_uFileState::givesBackItsLayout()
{
    Fixture f;
    QString folder;
    QString widths;
    int height = 0;
    f.pane->GetRr(folder, widths, height);
    QCOMPARE(widths.count(QLatin1Char(',')), 6);
    // The tree has two fifths of the height at first.
    const int all = f.child<QSplitter>("Splitter").height();
    QVERIFY(qAbs(height - all * 2 / 5) < 10);
    const QString other = QStringLiteral("111,112,113,114,115,116,0");
    f.pane->SetRr(f.sub(), other, 150);
    f.pane->GetRr(folder, widths, height);
    QCOMPARE(folder, f.sub());
    QCOMPARE(widths, other);
    QCOMPARE(height, 150);
    QCOMPARE(f.child<QWidget>("pTrv").height(), 150);
    const QString key = f.rowKey(QStringLiteral("in.txt"));
    f.pane->SetRr(folder, widths, height);
    QString folder2;
    QString widths2;
    int height2 = 0;
    f.pane->GetRr(folder2, widths2, height2);
    QCOMPARE(folder2, folder);
    QCOMPARE(widths2, widths);
    QCOMPARE(height2, height);
    QCOMPARE(f.rowKey(QStringLiteral("in.txt")), key);
    // A pane that was never shown gives back what it was given.
    uFile unseen({f.person, f.flags, f.gate, f.session, f.operations, f.menus, f.window});
    unseen.cOn(f.here());
    unseen.SetRr(f.sub(), other, 222);
    unseen.GetRr(folder, widths, height);
    QCOMPARE(folder, f.sub());
    QCOMPARE(widths, other);
    QCOMPARE(height, 222);
}

void tst_uFileState::leavesColumnsThatAreNotNamed()
{
    Fixture f;
    f.pane->SetRr({}, QStringLiteral("101,102,103,104,105,106"), 0);
    f.pane->SetRr({}, QStringLiteral("120,130.5"), 0);
    QCOMPARE(f.listView().columnWidth(0), 120);
    QCOMPARE(f.listView().columnWidth(1), 130);
    QCOMPARE(f.listView().columnWidth(2), 103);
    f.pane->SetRr({}, QString(), 0);
    f.pane->SetRr({}, QStringLiteral(",x,0,99999,1,2,3,4,5,6"), 0);
    QCOMPARE(f.listView().columnWidth(0), 120);
    QCOMPARE(f.listView().columnWidth(1), 130);
    QVERIFY2(f.listView().columnWidth(2) > 0, "a column of no width could not be found again");
    QVERIFY(f.listView().columnWidth(3) < 5000);
    QVERIFY(f.listView().isColumnHidden(6));
}

void tst_uFileState::leavesTheRootWhenTheFolderLiesElsewhere()
{
    Fixture f;
    f.pane->cOn(f.sub());
    f.pane->SetRr(f.here(), {}, 0);
    QCOMPARE(f.pane->NodePath(), f.sub());
    f.pane->SetRr(f.at(QStringLiteral("sub/gone")), {}, 0);
    QCOMPARE(f.pane->NodePath(), f.sub());
    QVERIFY2(f.person.verify(), "silently");
}

void tst_uFileState::remembersRoots()
{
    Fixture f;
    f.pane->cOn(f.sub());
    const QString history = QLatin1Char(',') + f.sub() + QLatin1Char(',') + f.here();
    QCOMPARE(f.pane->rootHistory(), history);
    f.build();
    f.pane->setRootHistory(history);
    f.pane->cOn(f.here());
    QCOMPARE(f.pane->rootHistory(), QLatin1Char(',') + f.here() + QLatin1Char(',') + f.sub());
    QCOMPARE(f.cbRoot().count(), 2);
    // The other way about, as hosts may do it.
    f.build();
    f.pane->cOn(f.here());
    f.pane->setRootHistory(history);
    QCOMPARE(f.pane->rootHistory(), QLatin1Char(',') + f.here() + QLatin1Char(',') + f.sub());
    QCOMPARE(f.cbRoot().currentText(), f.here());
}

void tst_uFileState::beginsWithWhatIsLeftOfARoot()
{
    Fixture f;
    f.build();
    const QString missing = f.at(QStringLiteral("sub/gone/deep"));
    f.person.expectMessage(missing + gone);
    f.pane->cOn(missing);
    QCOMPARE(f.pane->Root(), f.sub());
    QCOMPARE(f.names(), (QStringList{QStringLiteral("deep"), QStringLiteral("in.txt")}));
    QVERIFY(f.person.verify());
}

void tst_uFileState::leavesARootThatIsGone()
{
    Fixture f;
    f.pane->cOn(f.at(QStringLiteral("sub/deep")));
    f.pane->cOn(f.here());
    QVERIFY(QDir(f.at(QStringLiteral("sub/deep"))).removeRecursively());
    f.person.expectMessage(f.at(QStringLiteral("sub/deep")) + gone);
    f.cbRoot().setFocus();
    QTest::keyClick(&f.cbRoot(), Qt::Key_Down);
    QCOMPARE(f.pane->Root(), f.here());
    QCOMPARE(f.cbRoot().currentText(), f.here());
    QCOMPARE(f.cbRoot().currentIndex(), 0);
    QVERIFY(f.person.verify());
}

void tst_uFileState::ignoresTheWheel()
{
    Fixture f;
    f.pane->cOn(f.sub());
    const QPoint at(5, 5);
    QWheelEvent wheel(at, f.cbRoot().mapToGlobal(at), {}, {0, -120}, Qt::NoButton, {},
                      Qt::NoScrollPhase, false);
    QCoreApplication::sendEvent(&f.cbRoot(), &wheel);
    QCOMPARE(f.pane->Root(), f.sub());
    QVERIFY(!wheel.isAccepted());
}

QTEST_MAIN(tst_uFileState)
#include "tst_uFileState.moc"
