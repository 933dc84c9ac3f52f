#include <algorithm>
#include <array>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>

#include "ftppane/sfSite.h"
#include "popup/RegistryDriver.h"

namespace venlo::test
{

/// The registry of sites.
class tst_sfSite : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void opensSortedWithNothingSelected();
    void nameIsKeptClean();
    void nameIsKeptCleanInTheMiddle();
    void pickingFillsTheBoxes();
    void arrowKeysPick();
    void arrowKeyPicksTheOnlyOne();
    void clickOnTheSelectedOneReadsItAgain();
    void registers();
    void registerRefusesATakenName();
    void renamingKeepsThePatterns();
    void renamingToATakenNameIsNotRefused();
    void deletingTakesThePatterns();
    void newKeepsProxyAndTicks();
    void withoutSelection();
    void quotes();
    void reservedNames();
    void droppedQuestionMarksAreTold();
    void tooLongIsTheStoresRefusal();
    void refusedHalfwayChangesNothing();
    void passwordIsMasked();
    void addressesWithALoginAreMasked();
    void enterAndEscape();
    void doubleClickDeletesOne();
    void tabOrder();
    void everythingHasAName();

private:
    void act(const std::function<void(QWidget &)> &action);

    std::unique_ptr<RegistryFixture> m_store;
};

void tst_sfSite::init()
{
    m_store = std::make_unique<RegistryFixture>();
    m_store->addSite(QStringLiteral("tokyo"), QStringLiteral("ftp.tokyo.example"));
    m_store->addSite(QStringLiteral("Kyoto"), QStringLiteral("ftp.kyoto.example"));
    m_store->addPattern(QStringLiteral("t1"), QStringLiteral("/a"), QStringLiteral("tokyo"));
    m_store->addPattern(QStringLiteral("t2"), QStringLiteral("/b"), QStringLiteral("tokyo"));
    m_store->addPattern(QStringLiteral("k1"), QStringLiteral("/c"), QStringLiteral("Kyoto"));
}

void tst_sfSite::cleanup()
{
    QVERIFY(m_store->person.verify());
    m_store.reset();
}

void tst_sfSite::act(const std::function<void(QWidget &)> &action)
{
    bool acted = false;
    sfSite dialog(m_store->database, m_store->person);
    whileShown(QStringLiteral("sfSite"), [&](QWidget &window) {
        action(window);
        acted = true;
    });
    dialog.Act();
    QVERIFY(acted);
}

void tst_sfSite::opensSortedWithNothingSelected()
{
    act([](QWidget &window) {
        QVERIFY(window.isModal());
        QCOMPARE(listed(window), QStringLiteral("Kyoto,tokyo"));
        QVERIFY(part<QListWidget>(window, "lsSite").selectedItems().isEmpty());
        for (const int disabled : {0, 1, 2})
            QVERIFY(!button(window, disabled).isEnabled());
        QVERIFY(button(window, 3).isEnabled());
        QVERIFY(box(window, 0).hasFocus());
    });
}

void tst_sfSite::nameIsKeptClean()
{
    act([](QWidget &window) {
        type(window, 0, QStringLiteral("my-site 1"));
        QCOMPARE(box(window, 0).text(), QStringLiteral("my_site1"));
        QVERIFY(button(window, 0).isEnabled());
        type(window, 1, QStringLiteral("my-site 1"));
        QCOMPARE(box(window, 1).text(), QStringLiteral("my-site 1"));
    });
}

void tst_sfSite::nameIsKeptCleanInTheMiddle()
{
    act([](QWidget &window) {
        QLineEdit &name = box(window, 0);
        type(window, 0, QStringLiteral("abcd"));
        name.setCursorPosition(2);
        QTest::keyClicks(&name, QStringLiteral("- x"));
        QCOMPARE(name.text(), QStringLiteral("ab_xcd"));
        QCOMPARE(name.cursorPosition(), 4);
        name.insert(QStringLiteral("1 2-3　4"));
        QCOMPARE(name.text(), QStringLiteral("ab_x12_34cd"));
    });
}

void tst_sfSite::pickingFillsTheBoxes()
{
    act([](QWidget &window) {
        pick(window, 1);
        QStringList texts;
        for (int i = 0; i < 5; ++i)
            texts.append(box(window, i).text());
        texts.append(part<QLineEdit>(window, "txPxy").text());
        QCOMPARE(texts.join(QLatin1Char('|')),
                 QStringLiteral("tokyo|ftp.tokyo.example|taro|himitsu|memo|proxy:8080"));
        QVERIFY(part<QCheckBox>(window, "chPsv").isChecked());
        QVERIFY(!part<QCheckBox>(window, "chSvDb").isChecked());
        for (const int enabled : {0, 1, 2, 3})
            QVERIFY(button(window, enabled).isEnabled());
        type(window, 0, QString());
        QVERIFY(!button(window, 0).isEnabled());
        QVERIFY(!button(window, 1).isEnabled());
    });
}

void tst_sfSite::arrowKeysPick()
{
    act([](QWidget &window) {
        auto &names = part<QListWidget>(window, "lsSite");
        QTest::keyClick(&box(window, 0), Qt::Key_Tab, Qt::ShiftModifier);
        QVERIFY(names.hasFocus());
        QVERIFY(names.selectedItems().isEmpty());
        QTest::keyClick(&names, Qt::Key_Down);
        QCOMPARE(box(window, 0).text(), QStringLiteral("Kyoto"));
        QTest::keyClick(&names, Qt::Key_Down);
        QCOMPARE(box(window, 0).text(), QStringLiteral("tokyo"));
        QTest::keyClick(&names, Qt::Key_Up);
        QCOMPARE(box(window, 0).text(), QStringLiteral("Kyoto"));
        press(window, 3);
        names.setFocus();
        QTest::keyClick(&names, Qt::Key_End);
        QCOMPARE(box(window, 0).text(), QStringLiteral("tokyo"));
    });
}

void tst_sfSite::arrowKeyPicksTheOnlyOne()
{
    m_store->database.run(QStringLiteral("Delete From msSite Where sName='tokyo'"));
    act([](QWidget &window) {
        QTest::keyClick(&box(window, 0), Qt::Key_Tab, Qt::ShiftModifier);
        QTest::keyClick(&list(window), Qt::Key_Down);
        QCOMPARE(box(window, 0).text(), QStringLiteral("Kyoto"));
        QVERIFY(button(window, 2).isEnabled());
    });
}

void tst_sfSite::clickOnTheSelectedOneReadsItAgain()
{
    act([this](QWidget &window) {
        pick(window, 1);
        type(window, 1, QStringLiteral("typed"));
        pick(window, 1);
        QCOMPARE(box(window, 1).text(), QStringLiteral("ftp.tokyo.example"));
        // Once a click, also where it is refused.
        m_store->person.allowMessages();
        m_store->database.run(QStringLiteral("Drop Table msSite"));
        pick(window, 1);
        QCOMPARE(m_store->person.messages().size(), 1);
        pick(window, 0);
        QCOMPARE(m_store->person.messages().size(), 2);
    });
}

void tst_sfSite::registers()
{
    act([](QWidget &window) {
        type(window, 0, QStringLiteral("osaka"));
        type(window, 1, QStringLiteral("ftp.osaka.example:2121"));
        type(window, 2, QStringLiteral("hanako"));
        type(window, 3, QStringLiteral("p w-'1"));
        type(window, 4, QStringLiteral("支店"));
        QTest::mouseClick(&part<QCheckBox>(window, "chSvDb"), Qt::LeftButton, {}, QPoint(5, 8));
        press(window, 0);
        QCOMPARE(listed(window), QStringLiteral("Kyoto,osaka,tokyo"));
        QVERIFY(part<QListWidget>(window, "lsSite").selectedItems().isEmpty());
        QVERIFY(!button(window, 1).isEnabled());
        QVERIFY(!button(window, 2).isEnabled());
    });
    QCOMPARE(m_store->stored(QStringLiteral("Select sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb, sMemo"
                                            " From msSite Where sName='osaka'")),
             QStringLiteral("ftp.osaka.example:2121|hanako|p w-'1||-1|-1|支店"));
}

void tst_sfSite::registerRefusesATakenName()
{
    m_store->person.expectMessage(QStringLiteral("指定された名前で既に登録があります"));
    act([](QWidget &window) {
        type(window, 0, QStringLiteral("TOKYO"));
        press(window, 0);
        QCOMPARE(listed(window), QStringLiteral("Kyoto,tokyo"));
        QCOMPARE(box(window, 0).text(), QStringLiteral("TOKYO"));
    });
}

void tst_sfSite::renamingKeepsThePatterns()
{
    act([](QWidget &window) {
        pick(window, 1);
        type(window, 0, QStringLiteral("edo"));
        press(window, 1);
        QCOMPARE(listed(window), QStringLiteral("edo,Kyoto"));
        QVERIFY(part<QListWidget>(window, "lsSite").selectedItems().isEmpty());
    });
    QCOMPARE(m_store->stored(QStringLiteral("Select sSync, sName From msSync Order By sSync")),
             QStringLiteral("k1|Kyoto\nt1|edo\nt2|edo"));
}

void tst_sfSite::renamingToATakenNameIsNotRefused()
{
    act([](QWidget &window) {
        pick(window, 1);
        type(window, 0, QStringLiteral("Kyoto"));
        press(window, 1);
        QCOMPARE(listed(window), QStringLiteral("Kyoto,Kyoto"));
    });
}

void tst_sfSite::deletingTakesThePatterns()
{
    act([](QWidget &window) {
        pick(window, 1);
        press(window, 2);
        QCOMPARE(listed(window), QStringLiteral("Kyoto"));
        QVERIFY(box(window, 0).text().isEmpty());
        QVERIFY(!button(window, 2).isEnabled());
    });
    QCOMPARE(m_store->stored(QStringLiteral("Select sSync From msSync")), QStringLiteral("k1"));
}

void tst_sfSite::newKeepsProxyAndTicks()
{
    act([](QWidget &window) {
        pick(window, 0);
        press(window, 3);
        for (int i = 0; i < 5; ++i)
            QVERIFY(box(window, i).text().isEmpty());
        QCOMPARE(part<QLineEdit>(window, "txPxy").text(), QStringLiteral("proxy:8080"));
        QVERIFY(part<QCheckBox>(window, "chPsv").isChecked());
        QVERIFY(part<QListWidget>(window, "lsSite").selectedItems().isEmpty());
        QCOMPARE(enabledButtons(window), QStringLiteral("2,3,4"));
        type(window, 0, QStringLiteral("nara"));
        QCOMPARE(enabledButtons(window), QStringLiteral("0,2,3,4"));
    });
}

void tst_sfSite::withoutSelection()
{
    const QString words = QStringLiteral("接続先が指定されていません");
    m_store->person.expectMessage(words);
    m_store->person.expectMessage(words);
    act([](QWidget &window) {
        pick(window, 0);
        press(window, 3);
        QVERIFY(!button(window, 1).isEnabled());
        press(window, 2);
        pick(window, 0);
        QVERIFY(button(window, 1).isEnabled());
        unpick(window, 0);
        press(window, 1);
        QCOMPARE(listed(window), QStringLiteral("Kyoto,tokyo"));
    });
}

void tst_sfSite::quotes()
{
    m_store->person.expectMessage(QStringLiteral("接続先名に ' は使用できません"));
    act([](QWidget &window) {
        pick(window, 0);
        type(window, 2, QStringLiteral("o'hara"));
        type(window, 4, QStringLiteral("''"));
        press(window, 1);
        pick(window, 0);
        QCOMPARE(box(window, 2).text(), QStringLiteral("o'hara"));
        QCOMPARE(box(window, 4).text(), QStringLiteral("''"));
        type(window, 0, QStringLiteral("o'hara"));
        press(window, 0);
    });
}

void tst_sfSite::reservedNames()
{
    const QString words = QStringLiteral(" はﾌﾟﾛｸﾞﾗﾑが使う名前なので登録できません");
    m_store->person.expectMessage(QStringLiteral("MSSYNC") + words);
    m_store->person.expectMessage(QStringLiteral("tbFile") + words);
    m_store->person.expectMessage(QStringLiteral("ms?Site") + words);
    act([](QWidget &window) {
        type(window, 0, QStringLiteral("MSSYNC"));
        press(window, 0);
        pick(window, 0);
        type(window, 0, QStringLiteral("tbFile"));
        press(window, 1);
        type(window, 0, QStringLiteral("ms?Site"));
        press(window, 1);
        QCOMPARE(listed(window), QStringLiteral("Kyoto,tokyo"));
    });
}

void tst_sfSite::droppedQuestionMarksAreTold()
{
    m_store->person.expectMessage(QStringLiteral("ﾊﾟｽﾜｰﾄﾞの ? は除いて登録しました"));
    act([](QWidget &window) {
        pick(window, 1);
        type(window, 3, QStringLiteral("who?"));
        press(window, 1);
    });
    QCOMPARE(m_store->stored(QStringLiteral("Select sPwd From msSite Where sName='tokyo'")),
             QStringLiteral("who"));
}

void tst_sfSite::tooLongIsTheStoresRefusal()
{
    m_store->person.allowMessages();
    act([](QWidget &window) {
        type(window, 0, QStringLiteral("long"));
        box(window, 1).setText(QString(300, QLatin1Char('x')));
        press(window, 0);
        QCOMPARE(listed(window), QStringLiteral("Kyoto,tokyo"));
        QCOMPARE(box(window, 0).text(), QStringLiteral("long"));
    });
    QCOMPARE(m_store->person.messages().size(), 1);
    QVERIFY(m_store->person.messages().constFirst().contains(QStringLiteral("255文字まで")));
}

void tst_sfSite::refusedHalfwayChangesNothing()
{
    m_store->person.allowMessages();
    act([this](QWidget &window) {
        pick(window, 1);
        m_store->database.run(QStringLiteral("Drop Table msSync"));
        press(window, 2);
        QCOMPARE(listed(window), QStringLiteral("Kyoto,tokyo"));
    });
    QCOMPARE(m_store->person.messages().size(), 1);
    QCOMPARE(m_store->stored(QStringLiteral("Select Count(*) From msSite")), QStringLiteral("2"));
}

void tst_sfSite::passwordIsMasked()
{
    act([](QWidget &window) {
        QLineEdit &password = box(window, 3);
        auto &reveal = part<QPushButton>(window, "btReveal");
        pick(window, 0);
        QCOMPARE(password.echoMode(), QLineEdit::Password);
        QTest::mouseClick(&reveal, Qt::LeftButton);
        QCOMPARE(password.echoMode(), QLineEdit::Normal);
        pick(window, 1);
        QCOMPARE(password.echoMode(), QLineEdit::Password);
        QVERIFY(!reveal.isChecked());
        for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) {
            reveal.setFocus();
            QTest::keyClick(&reveal, key);
            QCOMPARE(password.echoMode(), QLineEdit::Normal);
            QTest::keyClick(&reveal, key);
            QCOMPARE(password.echoMode(), QLineEdit::Password);
        }
        QTest::keyClick(&reveal, Qt::Key_Return);
        press(window, 3);
        QCOMPARE(password.echoMode(), QLineEdit::Password);
    });
}

void tst_sfSite::addressesWithALoginAreMasked()
{
    act([](QWidget &window) {
        auto &proxy = part<QLineEdit>(window, "txPxy");
        auto &reveal = part<QPushButton>(window, "btReveal");
        for (QLineEdit *address : {&box(window, 1), &proxy}) {
            pick(window, 1);
            QCOMPARE(address->echoMode(), QLineEdit::Normal);
            address->clear();
            QTest::keyClicks(address, QStringLiteral("taro:himitsu"));
            QCOMPARE(address->echoMode(), QLineEdit::Normal);
            QTest::keyClicks(address, QStringLiteral("@host"));
            QCOMPARE(address->echoMode(), QLineEdit::Password);
            QCOMPARE(address->text(), QStringLiteral("taro:himitsu@host"));
            QTest::mouseClick(&reveal, Qt::LeftButton);
            QCOMPARE(address->echoMode(), QLineEdit::Normal);
            QTest::mouseClick(&reveal, Qt::LeftButton);
            QCOMPARE(address->echoMode(), QLineEdit::Password);
        }
        press(window, 3);
        QCOMPARE(box(window, 1).echoMode(), QLineEdit::Normal);
    });
}

void tst_sfSite::enterAndEscape()
{
    act([](QWidget &window) {
        pick(window, 0);
        for (QLineEdit *line : window.findChildren<QLineEdit *>()) {
            line->setFocus();
            QTest::keyClick(line, Qt::Key_Return);
        }
        QVERIFY(window.isVisible());
        QTest::keyClick(&box(window, 0), Qt::Key_Escape);
        QVERIFY(!window.isVisible());
    });
    QCOMPARE(m_store->stored(QStringLiteral("Select Count(*) From msSite")), QStringLiteral("2"));
}

void tst_sfSite::doubleClickDeletesOne()
{
    act([](QWidget &window) {
        pick(window, 0);
        QTest::mouseClick(&button(window, 2), Qt::LeftButton);
        QTest::mouseDClick(&button(window, 2), Qt::LeftButton);
        QCOMPARE(listed(window), QStringLiteral("tokyo"));
    });
}

void tst_sfSite::tabOrder()
{
    act([](QWidget &window) {
        pick(window, 0);
        QStringList order;
        part<QListWidget>(window, "lsSite").setFocus();
        for (int i = 0; i < 15; ++i) {
            order.append(QApplication::focusWidget()->objectName());
            QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        }
        QCOMPARE(order.mid(0, 15).join(QLatin1Char(' ')),
                 QStringLiteral("lsSite txSite0 txSite1 txSite2 txSite3 btReveal txPxy chPsv "
                                "chSvDb txSite4 cmSite0 cmSite1 cmSite2 cmSite3 cmSite4"));
    });
}

void tst_sfSite::everythingHasAName()
{
    act([](QWidget &window) {
        QCOMPARE(
            unnamed(window, std::array{"QLineEdit", "QPushButton", "QCheckBox", "QListWidget"}),
            QString());
        const auto labels = window.findChildren<QLabel *>();
        for (const QLineEdit *line : window.findChildren<QLineEdit *>()) {
            QVERIFY(std::any_of(labels.begin(), labels.end(),
                                [&](const QLabel *label) { return label->buddy() == line; }));
        }
    });
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_sfSite)
#include "tst_sfSite.moc"
