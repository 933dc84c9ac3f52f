#include <QApplication>
#include <QLineEdit>
#include <QMessageBox>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "views/PaneFixture.h"

namespace venlo::test
{

class tst_NameEditor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void selectsWhatIsMostLikelyChanged_data();
    void selectsWhatIsMostLikelyChanged();
    void enterEnters_data();
    void enterEnters();
    void unchangedTextCounts();
    void escapeAbandons();
    void escapeRemovesANewEntry();
    void lostFocusEnters_data();
    void lostFocusEnters();
    void refusedNameStays();
    void refusedByAClick();
    void refusedWithABox();
    void ownMenuKeepsIt();
    void commandKeysAreTheEditors();
    void typedTextOutlivesUpdates();
    void entryDisappears_data();
    void entryDisappears();
    void entryDisappearsWhileAccepted();
    void sortsMeanwhile();
    void currentMovesOn();
    void notEditable();
    void anotherNameAfterThis();
    void viewGoesAway();
    void inTheTree();

private:
    [[nodiscard]] QLineEdit *editor() const;
    void edit(int row);

    std::unique_ptr<PaneFixture<>> m_pane;
    QStringList m_calls;
    bool m_accept = true;
};

void tst_NameEditor::init()
{
    m_calls.clear();
    m_accept = true;
    m_pane = std::make_unique<PaneFixture<>>();
    for (PaneView *const view : {m_pane->list, m_pane->tree}) {
        view->setNameEditing(
            [this](const QModelIndex &index, const QString &text) {
                m_calls += index.data().toString() + QStringLiteral(">") + text;
                return m_accept;
            },
            [this](const QModelIndex &index) {
                m_calls += QStringLiteral("abandoned ") + index.data().toString();
            });
    }
    QVERIFY(QTest::qWaitForWindowActive(&m_pane->window));
}

void tst_NameEditor::cleanup()
{
    m_pane.reset();
}

QLineEdit *tst_NameEditor::editor() const
{
    const auto found = m_pane->window.findChildren<QLineEdit *>(QStringLiteral("nameEditor"));
    for (QLineEdit *const line : found) {
        if (line->isVisible())
            return line;
    }
    return nullptr;
}

void tst_NameEditor::edit(int row)
{
    m_pane->list->setCurrentIndex(m_pane->row(row));
    m_pane->list->editName(m_pane->row(row));
    QVERIFY(editor());
    QVERIFY(editor()->hasFocus());
    QVERIFY(m_pane->list->editingName());
    QVERIFY(m_pane->list->inHand());
}

void tst_NameEditor::selectsWhatIsMostLikelyChanged_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<EntryTag>("tag");
    QTest::addColumn<QString>("selected");
    QTest::newRow("file") << "a.txt" << EntryTag::FL << "a";
    QTest::newRow("two dots") << "b.tar.gz" << EntryTag::FL << "b.tar";
    QTest::newRow("no dot") << "README" << EntryTag::FL << "README";
    QTest::newRow("dot in front") << ".profile" << EntryTag::FL << ".profile";
    QTest::newRow("folder") << "v1.0" << EntryTag::FD << "v1.0";
    QTest::newRow("new folder") << "_Directry" << EntryTag::NW << "_Directry";
}

void tst_NameEditor::selectsWhatIsMostLikelyChanged()
{
    QFETCH(QString, name);
    QFETCH(EntryTag, tag);
    QFETCH(QString, selected);
    m_pane->rows.setText(0, 0, name);
    m_pane->rows.setTag(0, tag);
    edit(0);
    QCOMPARE(editor()->text(), name);
    QCOMPARE(editor()->selectedText(), selected);
}

void tst_NameEditor::enterEnters_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::newRow("Return") << Qt::Key_Return;
    QTest::newRow("Enter") << Qt::Key_Enter;
}

void tst_NameEditor::enterEnters()
{
    QFETCH(Qt::Key, key);
    QSignalSpy entered(m_pane->list, &PaneView::entered);
    edit(1);
    QTest::keyClicks(editor(), QStringLiteral("new"));
    QTest::keyClick(editor(), key);
    QCOMPARE(m_calls, QStringList{QStringLiteral("a.txt>new.txt")});
    QVERIFY(!m_pane->list->editingName());
    QVERIFY(!m_pane->list->inHand());
    QVERIFY(m_pane->list->hasFocus());
    QCOMPARE(entered.size(), 0);
    // Only the pane changes an entry.
    QCOMPARE(m_pane->rows.text(1, 0), QStringLiteral("a.txt"));
    QTest::qWait(0);
    QCOMPARE(m_calls.size(), 1);
}

void tst_NameEditor::unchangedTextCounts()
{
    edit(1);
    QTest::keyClick(editor(), Qt::Key_Return);
    QCOMPARE(m_calls, QStringList{QStringLiteral("a.txt>a.txt")});
}

void tst_NameEditor::escapeAbandons()
{
    edit(1);
    QTest::keyClicks(editor(), QStringLiteral("new"));
    QTest::keyClick(editor(), Qt::Key_Escape);
    QCOMPARE(m_calls, QStringList{QStringLiteral("abandoned a.txt")});
    QVERIFY(!m_pane->list->editingName());
    QVERIFY(m_pane->list->hasFocus());
    QTest::qWait(0);
    QCOMPARE(m_calls.size(), 1);
}

void tst_NameEditor::escapeRemovesANewEntry()
{
    int abandoned = 0;
    m_pane->list->setNameEditing([](const QModelIndex &, const QString &) { return true; },
                                 [this, &abandoned](const QModelIndex &index) {
                                     ++abandoned;
                                     m_pane->rows.remove({index.row()});
                                 });
    RowList::Row row;
    row.tag = EntryTag::NW;
    row.texts = {QStringLiteral("_Directry")};
    QVERIFY(m_pane->rows.append({row}));
    edit(4);
    QTest::keyClick(editor(), Qt::Key_Escape);
    QTest::qWait(0);
    QCOMPARE(abandoned, 1);
    QCOMPARE(m_pane->rows.count(), 4);
}

void tst_NameEditor::lostFocusEnters_data()
{
    QTest::addColumn<QString>("way");
    QTest::newRow("other view") << "view";
    QTest::newRow("Tab") << "tab";
    QTest::newRow("another row") << "row";
    QTest::newRow("empty space") << "empty";
}

void tst_NameEditor::lostFocusEnters()
{
    QFETCH(QString, way);
    edit(1);
    QTest::keyClicks(editor(), QStringLiteral("new"));
    const auto click = [this](const QPoint &at) {
        QTest::mouseClick(m_pane->list->viewport(), Qt::LeftButton, {}, at);
    };
    if (way == QLatin1String("view"))
        m_pane->tree->setFocus();
    else if (way == QLatin1String("tab"))
        QTest::keyClick(editor(), Qt::Key_Tab);
    else if (way == QLatin1String("row"))
        click(PaneFixture<>::middle(*m_pane->list, m_pane->row(2)));
    else
        click(m_pane->emptySpace());
    QCOMPARE(m_calls, QStringList{QStringLiteral("a.txt>new.txt")});
    QVERIFY(!m_pane->list->editingName());
    if (way == QLatin1String("row"))
        QCOMPARE(m_pane->list->currentIndex().row(), 2);
    QTest::qWait(0);
    QCOMPARE(m_calls.size(), 1);
}

void tst_NameEditor::refusedNameStays()
{
    m_accept = false;
    edit(1);
    QTest::keyClicks(editor(), QStringLiteral("x"));
    QTest::keyClick(editor(), Qt::Key_Return);
    QVERIFY(m_pane->list->editingName());
    QVERIFY(editor()->hasFocus());
    QCOMPARE(editor()->selectedText(), QStringLiteral("x.txt"));
    m_accept = true;
    QTest::keyClicks(editor(), QStringLiteral("y"));
    QTest::keyClick(editor(), Qt::Key_Return);
    QCOMPARE(m_calls, QStringList({QStringLiteral("a.txt>x.txt"), QStringLiteral("a.txt>y")}));
    QVERIFY(!m_pane->list->editingName());
}

void tst_NameEditor::refusedByAClick()
{
    m_accept = false;
    edit(1);
    QTest::mouseClick(m_pane->list->viewport(), Qt::LeftButton, {},
                      PaneFixture<>::middle(*m_pane->list, m_pane->row(2)));
    QCOMPARE(m_calls.size(), 1);
    QVERIFY(m_pane->list->editingName());
    QVERIFY(editor()->hasFocus());
    QCOMPARE(m_pane->list->currentIndex().row(), 1);
    m_pane->tree->setFocus();
    QCOMPARE(m_calls.size(), 2);
    QVERIFY(editor()->hasFocus());
    QTest::keyClick(editor(), Qt::Key_Escape);
    QCOMPARE(m_calls.constLast(), QStringLiteral("abandoned a.txt"));
    QCOMPARE(m_calls.size(), 3);
}

void tst_NameEditor::refusedWithABox()
{
    m_pane->list->setNameEditing(
        [this](const QModelIndex &, const QString &text) {
            m_calls += text;
            QMessageBox box(&m_pane->window);
            box.setText(QStringLiteral("同じ名前があります"));
            QTimer::singleShot(50, &box, &QDialog::accept);
            box.exec();
            return false;
        },
        [this](const QModelIndex &) { m_calls += QStringLiteral("abandoned"); });
    edit(1);
    QTest::keyClicks(editor(), QStringLiteral("x"));
    QTest::keyClick(editor(), Qt::Key_Return);
    QTest::qWait(50);
    QCOMPARE(m_calls, QStringList{QStringLiteral("x.txt")});
    QVERIFY(editor());
    m_pane->window.activateWindow(); // no window manager does it here
    QTRY_VERIFY(editor()->hasFocus());
    // The same when it is a lost focus that enters.
    m_pane->tree->setFocus();
    QTest::qWait(50);
    QCOMPARE(m_calls.size(), 2);
    QVERIFY(m_pane->list->editingName());
    m_pane->window.activateWindow();
    QTRY_VERIFY(editor()->hasFocus());
    QCOMPARE(m_calls.size(), 2);
    QTest::keyClick(editor(), Qt::Key_Escape);
    QCOMPARE(m_calls.constLast(), QStringLiteral("abandoned"));
}

void tst_NameEditor::ownMenuKeepsIt()
{
    edit(1);
    QFocusEvent event(QEvent::FocusOut, Qt::PopupFocusReason);
    QApplication::sendEvent(editor(), &event);
    QVERIFY(m_pane->list->editingName());
    QCOMPARE(m_calls, QStringList());
}

void tst_NameEditor::commandKeysAreTheEditors()
{
    QSignalSpy wanted(m_pane->list, &PaneView::keyWanted);
    QSignalSpy menu(m_pane->list, &PaneView::menuWanted);
    edit(1);
    QTest::keyClick(editor(), Qt::Key_F5);
    QTest::keyClick(editor(), Qt::Key_F2);
    QTest::keyClick(editor(), Qt::Key_Delete);
    QTest::keyClick(editor(), Qt::Key_Backspace);
    QTest::keyClick(editor(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(editor(), Qt::Key_Down);
    QCOMPARE(wanted.size(), 0);
    QCOMPARE(menu.size(), 0);
    QVERIFY(m_pane->list->editingName());
    QCOMPARE(editor()->text(), QStringLiteral(".txt"));
    QCOMPARE(m_pane->list->currentIndex().row(), 1);
    QCOMPARE(m_pane->list->selectionModel()->selectedRows().size(), 1);
}

void tst_NameEditor::typedTextOutlivesUpdates()
{
    edit(1);
    QTest::keyClicks(editor(), QStringLiteral("new"));
    m_pane->rows.setText(1, 1, QStringLiteral("2KB"));
    QCOMPARE(editor()->text(), QStringLiteral("new.txt"));
}

void tst_NameEditor::entryDisappears_data()
{
    QTest::addColumn<bool>("reset");
    QTest::newRow("row removed") << false;
    QTest::newRow("list cleared") << true;
}

void tst_NameEditor::entryDisappears()
{
    QFETCH(bool, reset);
    edit(1);
    QTest::keyClicks(editor(), QStringLiteral("new"));
    if (reset)
        m_pane->rows.clear();
    else
        m_pane->rows.remove({1});
    QVERIFY(!m_pane->list->editingName());
    QTest::qWait(0);
    QCOMPARE(m_calls, QStringList{QStringLiteral("abandoned ")});
}

void tst_NameEditor::entryDisappearsWhileAccepted()
{
    for (const bool accept : {true, false}) {
        m_pane->list->setNameEditing(
            [this, accept](const QModelIndex &index, const QString &text) {
                m_calls += text;
                m_pane->rows.remove({index.row()});
                return accept;
            },
            [this](const QModelIndex &) { m_calls += QStringLiteral("abandoned"); });
        m_calls.clear();
        edit(1);
        QTest::keyClick(editor(), Qt::Key_Return);
        QTest::qWait(0);
        QCOMPARE(m_calls.size(), 1);
        QVERIFY(!m_pane->list->editingName());
    }
}

void tst_NameEditor::sortsMeanwhile()
{
    edit(1);
    m_pane->rows.sort(0, Qt::DescendingOrder);
    QVERIFY(m_pane->list->editingName());
    QTest::keyClicks(editor(), QStringLiteral("new"));
    QTest::keyClick(editor(), Qt::Key_Return);
    QCOMPARE(m_calls, QStringList{QStringLiteral("a.txt>new.txt")});
}

void tst_NameEditor::currentMovesOn()
{
    edit(1);
    m_pane->list->setCurrentIndex(m_pane->row(0));
    QCOMPARE(m_calls, QStringList{QStringLiteral("a.txt>a.txt")});
    QVERIFY(!m_pane->list->editingName());
}

void tst_NameEditor::notEditable()
{
    m_pane->list->editName(m_pane->row(3));
    QVERIFY(!m_pane->list->editingName());
    m_pane->list->editName({});
    QVERIFY(!m_pane->list->editingName());
}

void tst_NameEditor::anotherNameAfterThis()
{
    edit(1);
    m_pane->list->editName(m_pane->rows.index(2, 1));
    QCOMPARE(m_calls, QStringList{QStringLiteral("a.txt>a.txt")});
    QVERIFY(editor());
    QCOMPARE(editor()->text(), QStringLiteral("b.tar.gz"));
    m_accept = false;
    m_pane->list->editName(m_pane->row(1));
    QCOMPARE(editor()->text(), QStringLiteral("b.tar.gz"));
}

void tst_NameEditor::viewGoesAway()
{
    edit(1);
    delete m_pane->list;
    QTest::qWait(0);
    QCOMPARE(m_calls, QStringList());
}

void tst_NameEditor::inTheTree()
{
    const QModelIndex made =
        m_pane->folders.addChild(m_pane->folder(QStringLiteral("web")),
                                 {QStringLiteral("_Directry"), false, false, EntryTag::NW});
    m_pane->tree->setCurrentIndex(made);
    m_pane->tree->editName(made);
    QVERIFY(editor());
    QVERIFY(m_pane->tree->isExpanded(made.parent()));
    QCOMPARE(editor()->selectedText(), QStringLiteral("_Directry"));
    editor()->insert(QStringLiteral("新しい"));
    QTest::keyClick(editor(), Qt::Key_Return);
    QCOMPARE(m_calls, QStringList{QStringLiteral("_Directry>新しい")});
    // The whole branch goes.
    m_pane->tree->editName(made);
    m_pane->folders.removeChildren(m_pane->folders.root());
    QTRY_COMPARE(m_calls.size(), 2);
    QCOMPARE(m_calls.constLast(), QStringLiteral("abandoned "));
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_NameEditor)
#include "tst_NameEditor.moc"
