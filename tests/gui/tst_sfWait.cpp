#include <QApplication>
#include <QLabel>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include "mainwin/popup/sfWait.h"

namespace venlo::test
{

class tst_sfWait : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
    void centred();
    void cursorIsRestored();
    void cannotBeClosedByHand();
};

void tst_sfWait::texts_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a text") << QStringLiteral("比較しています") << QStringLiteral("比較しています");
    QTest::newRow("an empty one") << QString() << QStringLiteral("お待ちください････");
    QTest::newRow("no markup") << QStringLiteral("<b>x</b>") << QStringLiteral("<b>x</b>");
}

void tst_sfWait::texts()
{
    QFETCH(QString, given);
    QFETCH(QString, shown);
    sfWait window;
    window.cMsg(given);
    QVERIFY(window.isVisible());
    QVERIFY(!window.isModal());
    const auto *panel = window.findChild<QLabel *>(QStringLiteral("SSPanel1"));
    QCOMPARE(panel->text(), shown);
    QVERIFY(panel->textFormat() == Qt::PlainText);
    window.cEnd();
    QVERIFY(!window.isVisible());
}

void tst_sfWait::centred()
{
    sfWait window;
    window.cMsg(QStringLiteral("FTP側とﾏｲｺﾝﾋﾟｭｰﾀｰ側のﾃﾞｨﾚｸﾄﾘ情報を比較しています"));
    const QPoint off = window.geometry().center() - window.screen()->availableGeometry().center();
    QVERIFY2(off.manhattanLength() <= 4, qPrintable(QStringLiteral("%1 %2").arg(off.x(), off.y())));
}

void tst_sfWait::cursorIsRestored()
{
    {
        sfWait window;
        window.cMsg(QString());
        window.cMsg(QStringLiteral("x"));
        QCOMPARE(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
        window.cEnd();
        QVERIFY(QApplication::overrideCursor() == nullptr);
        window.cMsg(QString());
    }
    QVERIFY2(QApplication::overrideCursor() == nullptr, "gone while showing");
}

void tst_sfWait::cannotBeClosedByHand()
{
    sfWait window;
    const QSignalSpy wishes(&window, &sfWait::cancelWanted);
    window.cMsg(QString());
    QTest::keyClick(&window, Qt::Key_Escape);
    QCOMPARE(wishes.size(), 1);
    QVERIFY(!window.close());
    QCOMPARE(wishes.size(), 2);
    QVERIFY(window.isVisible());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_sfWait)
#include "tst_sfWait.moc"
