#include <array>

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QScreen>
#include <QTimer>

#include "mainwin/popup/pfFtp.h"
#include "popup/RegistryFixture.h"

namespace venlo::test
{

namespace
{
constexpr int syncEntry = 4;

QString captionsOf(const QMenu &menu)
{
    QStringList captions;
    for (const QAction *action : menu.actions())
        captions.append(action->isSeparator() ? QStringLiteral("-") : action->text());
    return captions.join(QLatin1Char('\n'));
}

/// Acts once a menu is up; closes whatever menus are left afterwards.
void whenMenuIsUp(const std::function<void(QMenu &)> &action)
{
    QTimer::singleShot(50, qApp, [action] {
        auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
        if (menu != nullptr)
            action(*menu);
        while (QWidget *left = QApplication::activePopupWidget())
            left->close();
        QVERIFY(menu != nullptr);
    });
}

void clickEntry(QMenu &menu, int index)
{
    QAction *entry = menu.actions().at(index);
    QTest::mouseClick(&menu, Qt::LeftButton, {}, menu.actionGeometry(entry).center());
}
} // namespace

/// The menus and what the last popup returned.
class tst_pfFtp : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void captions();
    void staysHidden();
    void noPatternKeepsTheDesignEntry();
    void patternsFillTheSubmenu();
    void unreadableStoreKeepsTheEntries();
    void dismissingLeavesMinusOne();
    void clickPicks_data();
    void clickPicks();
    void mnemonicPicks();
    void patternPick();
    void patternNamedLikeAGroup();
    void patternNameIsShownLiterally();
    void longPatternNamesFitTheScreen();
    void manyPatternsScroll();
    void bCanPastSwitchesCopy();
    void bItemSwitchesEntries();

private:
    std::unique_ptr<RegistryFixture> m_store;
    std::unique_ptr<QWidget> m_window;
    pfFtp *m_menus = nullptr;
};

void tst_pfFtp::init()
{
    m_store = std::make_unique<RegistryFixture>();
    m_window = std::make_unique<QWidget>();
    m_menus = new pfFtp(m_store->database, m_window.get());
    m_window->resize(400, 300);
    m_window->show();
}

void tst_pfFtp::cleanup()
{
    m_window.reset();
    QVERIFY(m_store->person.verify());
    m_store.reset();
}

void tst_pfFtp::captions()
{
    QCOMPARE(captionsOf(*m_menus->menu(pfFtp::TREE)),
             QStringLiteral("ｴｸｽﾌﾟﾛｰﾗｰ(&X)\n開く(&O)\nﾃｷｽﾄを開く(&N)\n検索(&E)\n-\n切り取り(&T)\n"
                            "ｺﾋﾟｰ(&C)\n貼り付け(&P)\n-\nｱｯﾌﾟﾛｰﾄﾞ(&U)\n同期(ﾏｲｺﾝﾋﾟｭｰﾀｰ⇒FTP)\n"
                            "-\n削除(&D)\n名前の変更(&M)\n-\n新規ﾌｫﾙﾀﾞ"));
    QCOMPARE(captionsOf(*m_menus->menu(pfFtp::FTP)),
             QStringLiteral("開く(&O)\nﾃｷｽﾄを開く(&N)\n-\nﾀﾞｳﾝﾛｰﾄﾞ\n同期(FTP⇒ﾏｲｺﾝﾋﾟｭｰﾀｰ)\n-\n"
                            "削除\n名前の変更\n-\n新規ﾌｫﾙﾀﾞ\n-\nﾌｧｲﾙ一覧\n再表示"));
    QCOMPARE(captionsOf(*m_menus->menu(pfFtp::ELSE)),
             QStringLiteral("接続先登録の編集\n-\nFTP側の情報の一括更新\n-\n同期ﾊﾟﾀｰﾝをｾｯﾄ\n"
                            "同期ﾊﾟﾀｰﾝへ登録\n同期ﾊﾟﾀｰﾝの編集\n-\n切断"));
    QCOMPARE(m_menus->menu(pfFtp::TREE)->objectName(), QStringLiteral("mnFold"));
    QCOMPARE(m_menus->menu(pfFtp::FTP)->objectName(), QStringLiteral("mnFtp"));
    QCOMPARE(m_menus->menu(pfFtp::ELSE)->objectName(), QStringLiteral("mnElse"));
    QCOMPARE(m_menus->entry(pfFtp::ELSE, syncEntry)->menu(), m_menus->mnSync());
}

void tst_pfFtp::staysHidden()
{
    QVERIFY(m_window->isVisible());
    QVERIFY(!m_menus->isVisible());
}

void tst_pfFtp::noPatternKeepsTheDesignEntry()
{
    QCOMPARE(captionsOf(*m_menus->mnSync()), QStringLiteral("?"));
    QVERIFY(!m_menus->entry(pfFtp::ELSE, syncEntry)->isEnabled());
    m_store->addPattern(QStringLiteral("甲"));
    m_store->addPattern(QStringLiteral("乙"));
    m_menus->SetSyncMn();
    QVERIFY(m_menus->entry(pfFtp::ELSE, syncEntry)->isEnabled());
    m_store->database.run(QStringLiteral("Delete From msSync"));
    m_menus->SetSyncMn();
    QCOMPARE(captionsOf(*m_menus->mnSync()), QStringLiteral("?"));
    QVERIFY(!m_menus->entry(pfFtp::ELSE, syncEntry)->isEnabled());
}

void tst_pfFtp::patternsFillTheSubmenu()
{
    m_store->addPattern(QStringLiteral("b"));
    m_store->addPattern(QStringLiteral("c"));
    m_store->addPattern(QStringLiteral("A"));
    m_menus->SetSyncMn();
    QCOMPARE(captionsOf(*m_menus->mnSync()), QStringLiteral("A\nb\nc"));
    QVERIFY(m_menus->mnSync()->actions().constFirst()->isVisible());
    m_store->database.run(QStringLiteral("Delete From msSync Where sSync='b'"));
    m_menus->SetSyncMn();
    QCOMPARE(captionsOf(*m_menus->mnSync()), QStringLiteral("A\nc"));
}

void tst_pfFtp::unreadableStoreKeepsTheEntries()
{
    m_store->addPattern(QStringLiteral("a"));
    m_menus->SetSyncMn();
    m_store->database.CloseDb();
    m_menus->SetSyncMn();
    QCOMPARE(captionsOf(*m_menus->mnSync()), QStringLiteral("a"));
}

void tst_pfFtp::dismissingLeavesMinusOne()
{
    m_menus->setPickIndex(-1);
    whenMenuIsUp([](QMenu &menu) { QTest::keyClick(&menu, Qt::Key_Escape); });
    m_menus->popUp(pfFtp::FTP, m_window->mapToGlobal(QPoint(5, 5)));
    QCOMPARE(m_menus->pickIndex(), -1);
}

void tst_pfFtp::clickPicks_data()
{
    QTest::addColumn<int>("menu");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("group");
    QTest::newRow("tree") << int(pfFtp::TREE) << 9 << QStringLiteral("Fold");
    QTest::newRow("ftp") << int(pfFtp::FTP) << 12 << QStringLiteral("Ftp");
    QTest::newRow("else") << int(pfFtp::ELSE) << 8 << QStringLiteral("Else");
}

void tst_pfFtp::clickPicks()
{
    QFETCH(int, menu);
    QFETCH(int, index);
    QFETCH(QString, group);
    m_menus->setPickIndex(-1);
    whenMenuIsUp([index](QMenu &up) { clickEntry(up, index); });
    m_menus->popUp(static_cast<pfFtp::Menu>(menu), m_window->mapToGlobal(QPoint(5, 5)));
    QCOMPARE(m_menus->pickIndex(), index);
    QCOMPARE(m_menus->pickGroup(), group);
    QVERIFY(!m_menus->pickedPattern());
}

void tst_pfFtp::mnemonicPicks()
{
    m_menus->setPickIndex(-1);
    whenMenuIsUp([](QMenu &menu) { QTest::keyClick(&menu, Qt::Key_M); });
    m_menus->popUp(pfFtp::TREE, m_window->mapToGlobal(QPoint(5, 5)));
    QCOMPARE(m_menus->pickIndex(), 13);
}

void tst_pfFtp::patternPick()
{
    m_store->addPattern(QStringLiteral("営業"));
    m_store->addPattern(QStringLiteral("経理"));
    m_menus->SetSyncMn();
    m_menus->setPickIndex(-1);
    whenMenuIsUp([this](QMenu &menu) {
        menu.setActiveAction(m_menus->entry(pfFtp::ELSE, syncEntry));
        QTest::keyClick(&menu, Qt::Key_Right);
        QTRY_VERIFY(m_menus->mnSync()->isVisible());
        clickEntry(*m_menus->mnSync(), 1);
    });
    m_menus->popUp(pfFtp::ELSE, m_window->mapToGlobal(QPoint(5, 5)));
    QCOMPARE(m_menus->pickGroup(), QStringLiteral("経理"));
    QCOMPARE(m_menus->pickIndex(), 1);
    QVERIFY(m_menus->pickedPattern());
}

void tst_pfFtp::patternNamedLikeAGroup()
{
    m_store->addPattern(QStringLiteral("Else"));
    m_menus->SetSyncMn();
    m_menus->mnSync()->popup(QPoint(0, 0));
    clickEntry(*m_menus->mnSync(), 0);
    QCOMPARE(m_menus->pickGroup(), QStringLiteral("Else"));
    QVERIFY(m_menus->pickedPattern());
}

void tst_pfFtp::patternNameIsShownLiterally()
{
    m_store->addPattern(QStringLiteral("R&D"));
    m_menus->SetSyncMn();
    const QAction *entry = m_menus->mnSync()->actions().constFirst();
    QCOMPARE(entry->text(), QStringLiteral("R&&D"));
    m_menus->mnSync()->popup(QPoint(0, 0));
    clickEntry(*m_menus->mnSync(), 0);
    QCOMPARE(m_menus->pickGroup(), QStringLiteral("R&D"));
}

void tst_pfFtp::longPatternNamesFitTheScreen()
{
    const QString name = QString(200, u'長') + QStringLiteral("&2");
    m_store->addPattern(name);
    m_menus->SetSyncMn();
    QMenu &menu = *m_menus->mnSync();
    QVERIFY(menu.sizeHint().width() < menu.screen()->availableGeometry().width());
    QVERIFY(menu.actions().constFirst()->text().startsWith(QStringLiteral("長長")));
    QVERIFY(menu.actions().constFirst()->text().endsWith(QStringLiteral("長&&2")));
    menu.popup(QPoint(0, 0));
    clickEntry(menu, 0);
    QCOMPARE(m_menus->pickGroup(), name);
}

void tst_pfFtp::manyPatternsScroll()
{
    constexpr int many = 300;
    for (int i = 0; i < many; ++i)
        m_store->addPattern(QStringLiteral("p%1").arg(i, 4, 10, QLatin1Char('0')));
    m_menus->SetSyncMn();
    QMenu &menu = *m_menus->mnSync();
    QCOMPARE(menu.actions().size(), many);
    menu.popup(QPoint(0, 0));
    QVERIFY(menu.height() <= menu.screen()->geometry().height());
    QCOMPARE(menu.actionGeometry(menu.actions().constLast()).left(),
             menu.actionGeometry(menu.actions().constFirst()).left());
    QTest::keyClick(&menu, Qt::Key_Up);
    QTest::keyClick(&menu, Qt::Key_Return);
    QCOMPARE(m_menus->pickIndex(), many - 1);
}

void tst_pfFtp::bCanPastSwitchesCopy()
{
    m_menus->bCanPast(false);
    QVERIFY(!m_menus->entry(pfFtp::TREE, 6)->isEnabled());
    QVERIFY(m_menus->entry(pfFtp::TREE, 7)->isEnabled());
    m_menus->bCanPast(true);
    QVERIFY(m_menus->entry(pfFtp::TREE, 6)->isEnabled());
}

void tst_pfFtp::bItemSwitchesEntries()
{
    m_menus->bItem(false);
    QList<int> disabled;
    for (int i = 0; i < m_menus->menu(pfFtp::FTP)->actions().size(); ++i) {
        if (!m_menus->entry(pfFtp::FTP, i)->isEnabled())
            disabled.append(i);
    }
    QCOMPARE(disabled, (QList<int>{0, 1, 3, 4, 6, 7}));
    m_menus->bItem(true);
    QVERIFY(m_menus->entry(pfFtp::FTP, 3)->isEnabled());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_pfFtp)
#include "tst_pfFtp.moc"
