#include <array>

#include <QCheckBox>
#include <QCompleter>
#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "popup/RegistryDriver.h"
#include "sync/windows/sfSPtn.h"

namespace venlo::test
{

namespace
{
/// As the system writes it.
QString native(const char *path)
{
    return QDir::toNativeSeparators(QString::fromUtf8(path));
}
} // namespace

/// The registry of sync patterns.
class tst_sfSPtn : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void opensOnThePattern();
    void opensOnNothing();
    void buttonsFollowTheName();
    void registeringIsRefusedByTheStore();
    void registerRefusesATakenName();
    void registerRefusesATakenPair();
    void updateStores();
    void updateToATakenPairIsNotRefused();
    void updateToATakenNameIsTheStoresRefusal();
    void updateKeepsTheList();
    void deleteAsksNothing();
    void newEmptiesEverything();
    void withoutSelection();
    void quotesInValues();
    void quotesInNames();
    void droppedQuestionMarksAreTold();
    void leavingAPathBoxNormalises_data();
    void leavingAPathBoxNormalises();
    void pathButton();
    void siteCompletions();
    void enterAndEscape();
    void doubleClickDeletesOne();
    void tabOrder();
    void longNames();
    void everythingHasAName();

private:
    /// Acts on the dialog while it shows; true when it reported a change.
    bool act(const QString &sSync, const std::function<void(QWidget &)> &action);

    std::unique_ptr<RegistryFixture> m_store;
};

void tst_sfSPtn::init()
{
    m_store = std::make_unique<RegistryFixture>();
    m_store->addPattern(QStringLiteral("b"), native("/home/b"), QStringLiteral("site2"),
                        QStringLiteral("/pub/b"));
    m_store->addPattern(QStringLiteral("a"), native("/home/a"), QStringLiteral("site1"),
                        QStringLiteral("/pub/a"));
}

void tst_sfSPtn::cleanup()
{
    QVERIFY(m_store->person.verify());
    m_store.reset();
}

bool tst_sfSPtn::act(const QString &sSync, const std::function<void(QWidget &)> &action)
{
    bool changed = false;
    bool acted = false;
    sfSPtn dialog(m_store->database, m_store->person, [] { return QStringLiteral("/shown"); });
    whileShown(QStringLiteral("sfSPtn"), [&](QWidget &window) {
        action(window);
        acted = true;
    });
    dialog.Act(changed, sSync);
    if (!acted)
        QTest::qFail("the dialog never showed", __FILE__, __LINE__);
    return changed;
}

void tst_sfSPtn::opensOnThePattern()
{
    const bool changed = act(QStringLiteral("b"), [](QWidget &window) {
        QVERIFY(window.isModal());
        QCOMPARE(listed(window), QStringLiteral("a,b"));
        QCOMPARE(list(window).selectedItems().value(0)->text(), QStringLiteral("b"));
        QStringList texts;
        for (int i = 0; i < 5; ++i)
            texts.append(box(window, i).text());
        QCOMPARE(texts.join(QLatin1Char('|')),
                 QStringLiteral("b|%1|site2|/pub/b|memo").arg(native("/home/b")));
        QVERIFY(part<QCheckBox>(window, "chCmp0").isChecked());
        QVERIFY(!part<QCheckBox>(window, "chCmp1").isChecked());
        QVERIFY(button(window, 1).isEnabled());
        QVERIFY(button(window, 2).isEnabled());
    });
    QVERIFY(!changed);
}

void tst_sfSPtn::opensOnNothing()
{
    (void)act({}, [](QWidget &window) {
        QVERIFY(list(window).selectedItems().isEmpty());
        QVERIFY(box(window, 0).text().isEmpty());
        QVERIFY(!button(window, 0).isEnabled());
        QVERIFY(!button(window, 1).isEnabled());
        QVERIFY(!button(window, 2).isEnabled());
        QVERIFY(button(window, 3).isEnabled());
        QVERIFY(box(window, 0).hasFocus());
        // Walking through with the keyboard selects nothing either.
        QTest::keyClick(&box(window, 0), Qt::Key_Tab, Qt::ShiftModifier);
        QVERIFY(list(window).selectedItems().isEmpty());
    });
}

void tst_sfSPtn::buttonsFollowTheName()
{
    (void)act(QStringLiteral("a"), [](QWidget &window) {
        QVERIFY(button(window, 0).isEnabled());
        type(window, 0, QString());
        QVERIFY(!button(window, 0).isEnabled());
        QVERIFY(!button(window, 1).isEnabled());
        type(window, 0, QStringLiteral("c"));
        QVERIFY(button(window, 0).isEnabled());
        QVERIFY(button(window, 1).isEnabled());
    });
}

void tst_sfSPtn::registeringIsRefusedByTheStore()
{
    m_store->person.allowMessages();
    const bool changed = act({}, [](QWidget &window) {
        type(window, 0, QStringLiteral("new"));
        type(window, 1, native("/home/new"));
        type(window, 2, QStringLiteral("site1"));
        type(window, 3, QStringLiteral("/pub/new"));
        press(window, 0);
        QCOMPARE(box(window, 0).text(), QStringLiteral("new"));
    });
    QVERIFY(!changed);
    QCOMPARE(m_store->stored(QStringLiteral("Select sSync From msSync Order By sSync")),
             QStringLiteral("a\nb"));
    QCOMPARE(m_store->person.messages().size(), 1);
    // The store's own words for it.
    bool ok = false;
    m_store->database.ExecSql(QStringLiteral("Insert Into msSync (sSync, sLph, sName, sFph, bCfl,"
                                             " bCfd, sMemo) Values ('new', '/home/new', 'site1',"
                                             " '/pub/new', '0')"),
                              ok);
    QVERIFY(!ok);
    QCOMPARE(m_store->person.messages().constFirst(), m_store->database.lastError());
}

void tst_sfSPtn::registerRefusesATakenName()
{
    m_store->person.expectMessage(QStringLiteral("指定された名前で既に登録があります"));
    QVERIFY(!act({}, [](QWidget &window) {
        type(window, 0, QStringLiteral("A"));
        press(window, 0);
    }));
}

void tst_sfSPtn::registerRefusesATakenPair()
{
    m_store->person.expectMessage(
        QStringLiteral("指定されたﾊﾟｽ指定(%1 ⇔ /pub/a で既に登録があります")
            .arg(native("/home/a")));
    QVERIFY(!act(QStringLiteral("a"), [](QWidget &window) {
        type(window, 0, QStringLiteral("other"));
        type(window, 1, QStringLiteral("/home/a/"));
        press(window, 0);
    }));
}

void tst_sfSPtn::updateStores()
{
    const bool changed = act(QStringLiteral("a"), [](QWidget &window) {
        type(window, 0, QStringLiteral("甲"));
        type(window, 1, native("/home/甲"));
        type(window, 4, QStringLiteral("覚書"));
        QTest::mouseClick(&part<QCheckBox>(window, "chCmp1"), Qt::LeftButton, {}, QPoint(5, 8));
        press(window, 1);
    });
    QVERIFY(changed);
    QCOMPARE(m_store->stored(QStringLiteral("Select sSync, sLph, sName, sFph, bCfl, bCfd, sMemo"
                                            " From msSync Where sSync='甲'")),
             QStringLiteral("甲|%1|site1|/pub/a|-1|-1|覚書").arg(native("/home/甲")));
}

void tst_sfSPtn::updateToATakenPairIsNotRefused()
{
    QVERIFY(act(QStringLiteral("a"), [](QWidget &window) {
        type(window, 1, native("/home/b"));
        type(window, 3, QStringLiteral("/pub/b"));
        press(window, 1);
    }));
    QCOMPARE(m_store->stored(QStringLiteral("Select Count(*) From msSync Where sLph='%1'"
                                            " And sFph='/pub/b'")
                                 .arg(native("/home/b"))),
             QStringLiteral("2"));
}

void tst_sfSPtn::updateToATakenNameIsTheStoresRefusal()
{
    m_store->person.allowMessages();
    QVERIFY(!act(QStringLiteral("a"), [](QWidget &window) {
        type(window, 0, QStringLiteral("b"));
        press(window, 1);
    }));
    QCOMPARE(m_store->person.messages().size(), 1);
    QVERIFY(!m_store->person.messages().constFirst().isEmpty());
    QCOMPARE(m_store->stored(QStringLiteral("Select sSync From msSync Order By sSync")),
             QStringLiteral("a\nb"));
}

void tst_sfSPtn::updateKeepsTheList()
{
    m_store->person.expectMessage(QStringLiteral("a は登録されていません"));
    QVERIFY(act(QStringLiteral("a"), [](QWidget &window) {
        type(window, 0, QStringLiteral("z"));
        press(window, 1);
        QCOMPARE(listed(window), QStringLiteral("a,b"));
        // Once more, for a name that is gone: it says so, and the list is what the store has.
        press(window, 1);
        QCOMPARE(listed(window), QStringLiteral("b,z"));
    }));
}

void tst_sfSPtn::deleteAsksNothing()
{
    QVERIFY(act(QStringLiteral("a"), [](QWidget &window) {
        press(window, 2);
        QCOMPARE(listed(window), QStringLiteral("b"));
        QVERIFY(box(window, 0).text().isEmpty());
        QVERIFY(list(window).selectedItems().isEmpty());
    }));
    QCOMPARE(m_store->stored(QStringLiteral("Select sSync From msSync")), QStringLiteral("b"));
}

void tst_sfSPtn::newEmptiesEverything()
{
    QVERIFY(!act(QStringLiteral("a"), [](QWidget &window) {
        press(window, 3);
        for (int i = 0; i < 5; ++i)
            QVERIFY(box(window, i).text().isEmpty());
        QVERIFY(!part<QCheckBox>(window, "chCmp0").isChecked());
        QVERIFY(list(window).selectedItems().isEmpty());
        QCOMPARE(enabledButtons(window), QStringLiteral("2,3,4"));
        type(window, 0, QStringLiteral("c"));
        QCOMPARE(enabledButtons(window), QStringLiteral("0,2,3,4"));
    }));
}

void tst_sfSPtn::withoutSelection()
{
    const QString words = QStringLiteral("同期ﾊﾟﾀｰﾝが指定されていません");
    m_store->person.expectMessage(words);
    m_store->person.expectMessage(words);
    QVERIFY(!act(QStringLiteral("a"), [](QWidget &window) {
        press(window, 3);
        QVERIFY(!button(window, 1).isEnabled());
        press(window, 2);
        pick(window, 0);
        QVERIFY(button(window, 1).isEnabled());
        unpick(window, 0);
        press(window, 1);
    }));
    QCOMPARE(m_store->stored(QStringLiteral("Select Count(*) From msSync")), QStringLiteral("2"));
}

void tst_sfSPtn::quotesInValues()
{
    QVERIFY(act(QStringLiteral("a"), [](QWidget &window) {
        type(window, 1, native("/home/it's"));
        type(window, 3, QStringLiteral("/pub/o'clock"));
        type(window, 4, QStringLiteral("don''t"));
        press(window, 1);
        pick(window, 1);
        pick(window, 0);
        QCOMPARE(box(window, 1).text(), native("/home/it's"));
        QCOMPARE(box(window, 3).text(), QStringLiteral("/pub/o'clock"));
        QCOMPARE(box(window, 4).text(), QStringLiteral("don''t"));
    }));
}

void tst_sfSPtn::quotesInNames()
{
    m_store->person.expectMessage(QStringLiteral("登録名に ' は使用できません"));
    m_store->person.expectMessage(QStringLiteral("登録名に ' は使用できません"));
    m_store->person.expectMessage(QStringLiteral("接続先名に ' は使用できません"));
    QVERIFY(!act(QStringLiteral("a"), [](QWidget &window) {
        type(window, 0, QStringLiteral("a'b"));
        press(window, 0);
        press(window, 1);
        type(window, 0, QStringLiteral("ab"));
        type(window, 2, QStringLiteral("s'"));
        press(window, 1);
    }));
}

void tst_sfSPtn::droppedQuestionMarksAreTold()
{
    m_store->person.expectMessage(QStringLiteral("登録名､ﾒﾓの ? は除いて登録しました"));
    QVERIFY(act(QStringLiteral("a"), [](QWidget &window) {
        type(window, 0, QStringLiteral("why?"));
        type(window, 4, QStringLiteral("what?"));
        press(window, 1);
    }));
    QCOMPARE(m_store->stored(QStringLiteral("Select sMemo From msSync Where sSync='why'")),
             QStringLiteral("what"));
    m_store->person.expectMessage(QStringLiteral("登録名に ? は使用できません"));
    QVERIFY(!act(QStringLiteral("b"), [](QWidget &window) {
        type(window, 0, QStringLiteral("?"));
        press(window, 1);
    }));
}

void tst_sfSPtn::leavingAPathBoxNormalises_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    QTest::newRow("local") << 1 << QStringLiteral("/home/a/") << native("/home/a");
    QTest::newRow("local, several") << 1 << QStringLiteral("/home/a//") << native("/home/a");
    QTest::newRow("local root") << 1 << QStringLiteral("/") << native("/");
#ifdef Q_OS_WIN
    QTest::newRow("bare drive") << 1 << QStringLiteral("C:") << QStringLiteral("C:\\");
#endif
    QTest::newRow("nothing") << 1 << QString() << QString();
    QTest::newRow("remote") << 3 << QStringLiteral("/pub/") << QStringLiteral("/pub");
    QTest::newRow("remote, several") << 3 << QStringLiteral("/pub//") << QStringLiteral("/pub");
    QTest::newRow("remote root") << 3 << QStringLiteral("/") << QStringLiteral("/");
    QTest::newRow("remote without front") << 3 << QStringLiteral("pub") << QStringLiteral("/pub");
    QTest::newRow("no remote") << 3 << QString() << QString();
}

void tst_sfSPtn::leavingAPathBoxNormalises()
{
    QFETCH(int, index);
    QFETCH(QString, typed);
    QFETCH(QString, kept);
    (void)act({}, [=](QWidget &window) {
        type(window, index, typed);
        QTest::keyClick(&box(window, index), Qt::Key_Tab);
        QCOMPARE(box(window, index).text(), kept);
    });
}

void tst_sfSPtn::pathButton()
{
    (void)act({}, [](QWidget &window) {
        click(window, "cmPh");
        QCOMPARE(box(window, 1).text(), QStringLiteral("/shown"));
    });
}

void tst_sfSPtn::siteCompletions()
{
    m_store->addSite(QStringLiteral("tokyo"));
    m_store->addSite(QStringLiteral("kyoto"));
    (void)act({}, [](QWidget &window) {
        QCompleter *completer = box(window, 2).completer();
        QVERIFY(completer != nullptr);
        type(window, 2, QStringLiteral("KYO"));
        QCOMPARE(completer->completionCount(), 2);
        type(window, 2, QStringLiteral("tok"));
        QCOMPARE(completer->currentCompletion(), QStringLiteral("tokyo"));
        type(window, 2, QStringLiteral("free text"));
        QCOMPARE(box(window, 2).text(), QStringLiteral("free text"));
    });
}

void tst_sfSPtn::enterAndEscape()
{
    (void)act(QStringLiteral("a"), [](QWidget &window) {
        for (int i = 0; i < 5; ++i) {
            box(window, i).setFocus();
            QTest::keyClick(&box(window, i), Qt::Key_Return);
        }
        QVERIFY(window.isVisible());
        button(window, 3).setFocus();
        QTest::keyClick(&button(window, 3), Qt::Key_Return);
        QVERIFY(box(window, 0).text().isEmpty());
        QTest::keyClick(&window, Qt::Key_Escape);
        QVERIFY(!window.isVisible());
    });
    QCOMPARE(m_store->stored(QStringLiteral("Select Count(*) From msSync")), QStringLiteral("2"));
}

void tst_sfSPtn::doubleClickDeletesOne()
{
    QVERIFY(act(QStringLiteral("a"), [](QWidget &window) {
        QTest::mouseClick(&button(window, 2), Qt::LeftButton);
        QTest::mouseDClick(&button(window, 2), Qt::LeftButton);
    }));
    QCOMPARE(m_store->stored(QStringLiteral("Select Count(*) From msSync")), QStringLiteral("1"));
}

void tst_sfSPtn::tabOrder()
{
    (void)act(QStringLiteral("a"), [](QWidget &window) {
        QVERIFY(list(window).hasFocus());
        QStringList order;
        for (int i = 0; i < 14; ++i) {
            order.append(QApplication::focusWidget()->objectName());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(order.join(QLatin1Char(' ')),
                 QStringLiteral("lsSite txSite0 txSite1 cmPh txSite2 txSite3 chCmp0 chCmp1 "
                                "txSite4 cmSite0 cmSite1 cmSite2 cmSite3 cmSite4"));
        QVERIFY(list(window).hasFocus());
    });
}

void tst_sfSPtn::longNames()
{
    const QString name(255, u'長');
    m_store->addPattern(name);
    (void)act(name, [&](QWidget &window) {
        QCOMPARE(list(window).selectedItems().value(0)->text(), name);
        QCOMPARE(box(window, 0).text(), name);
        QCOMPARE(box(window, 0).cursorPosition(), 0);
        QVERIFY(window.width() <= 680);
        QTest::keyClick(&list(window), Qt::Key_Home);
        press(window, 1);
        QCOMPARE(box(window, 0).text(), QStringLiteral("a"));
    });
}

void tst_sfSPtn::everythingHasAName()
{
    (void)act({}, [](QWidget &window) {
        QCOMPARE(
            unnamed(window, std::array{"QLineEdit", "QPushButton", "QCheckBox", "QListWidget"}),
            QString());
        for (int i = 0; i < 5; ++i) {
            const auto labels = window.findChildren<QLabel *>();
            QVERIFY(std::any_of(labels.begin(), labels.end(), [&](const QLabel *label) {
                return label->buddy() == &box(window, i);
            }));
        }
    });
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_sfSPtn)
#include "tst_sfSPtn.moc"
