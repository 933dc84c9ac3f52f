#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "gui/WindowDriver.h"
#include "localpane/sfOwt.h"
#include "support/ShownToolTip.h"

namespace venlo::test
{

class tst_sfOwt : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void labels();
    void longNameIsInTheToolTip();
    void answers_data();
    void answers();
    void keys_data();
    void keys();
};

namespace
{
OverwriteQuestion question()
{
    return {QStringLiteral("頁.html"), QStringLiteral("12KB"), QStringLiteral("24/05/01 10:00:00"),
            QStringLiteral("13KB"), QStringLiteral("24/05/02 11:00:00")};
}

OverwriteAnswer ask(const std::function<void(QWidget &)> &action)
{
    sfOwt window;
    whenShown(QStringLiteral("sfOwt"), action);
    return window.cMsg(question());
}
} // namespace

void tst_sfOwt::labels()
{
    QStringList texts;
    QString caption;
    (void)ask([&](QWidget &window) {
        caption = window.windowTitle();
        int below = -1;
        for (int i = 0; i < 7; ++i) {
            const auto *label = window.findChild<QLabel *>(QStringLiteral("lbMsg%1").arg(i));
            QVERIFY2(label->y() > below, "top to bottom");
            below = label->y();
            texts += label->text();
        }
        window.close();
    });
    QCOMPARE(caption, QStringLiteral("ﾌｧｲﾙの上書きの確認"));
    QCOMPARE(texts,
             (QStringList{QStringLiteral("このﾌｫﾙﾀﾞには既に '頁.html' ﾌｧｲﾙが存在します｡"),
                          QStringLiteral("現在のﾌｧｲﾙ"), QStringLiteral("12KB"),
                          QStringLiteral("更新日時 24/05/01 10:00:00"),
                          QStringLiteral("に次の新しいﾌｧｲﾙを上書きしますか ?"),
                          QStringLiteral("13KB"), QStringLiteral("更新日時 24/05/02 11:00:00")}));
}

void tst_sfOwt::longNameIsInTheToolTip()
{
    OverwriteQuestion asked = question();
    asked.fileName = QStringLiteral("R&D<b>") + QString(300, u'x') + QStringLiteral(".html");
    QString toolTip;
    sfOwt window;
    whenShown(QStringLiteral("sfOwt"), [&](QWidget &shown) {
        toolTip = shown.findChild<QLabel *>(QStringLiteral("lbMsg0"))->toolTip();
        shown.close();
    });
    (void)window.cMsg(asked);
    QCOMPARE(shownToolTip(toolTip), asked.fileName);
}

void tst_sfOwt::answers_data()
{
    QTest::addColumn<int>("button");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("toolTip");
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("overwrite");
    QTest::newRow("yes") << 0 << QStringLiteral("はい(&Y)") << QStringLiteral("上書きします") << 0
                         << true;
    QTest::newRow("no") << 1 << QStringLiteral("いいえ(&N)") << QStringLiteral("上書きしません")
                        << 0 << false;
    QTest::newRow("yes to all") << 2 << QStringLiteral("すべてはい")
                                << QStringLiteral("これ以降､現在のﾌｧｲﾙの方が新しくても上書きする")
                                << 1 << true;
    QTest::newRow("newer ones stay")
        << 3 << QStringLiteral("すべていいえ")
        << QStringLiteral("これ以降､現在のﾌｧｲﾙの方が新しい場合､上書きしない") << 2 << false;
    QTest::newRow("cancel") << 4 << QStringLiteral("ｷｬﾝｾﾙ") << QStringLiteral("ｷｬﾝｾﾙします") << 3
                            << false;
}

void tst_sfOwt::answers()
{
    QFETCH(int, button);
    QFETCH(QString, caption);
    QFETCH(QString, toolTip);
    QFETCH(int, mode);
    QFETCH(bool, overwrite);
    const OverwriteAnswer answer = ask([&](QWidget &window) {
        auto *pressed = window.findChild<QPushButton *>(QStringLiteral("cmAns%1").arg(button));
        QCOMPARE(pressed->text(), caption);
        QCOMPARE(pressed->toolTip(), toolTip);
        QTest::mouseClick(pressed, Qt::LeftButton);
    });
    QCOMPARE(static_cast<int>(answer.mode), mode);
    QCOMPARE(answer.overwrite, overwrite);
}

void tst_sfOwt::keys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<bool>("alt");
    QTest::addColumn<int>("mode");
    QTest::addColumn<bool>("overwrite");
    QTest::newRow("Enter overwrites") << int(Qt::Key_Return) << false << 0 << true;
    QTest::newRow("Alt+Y overwrites") << int(Qt::Key_Y) << true << 0 << true;
    QTest::newRow("Alt+N leaves") << int(Qt::Key_N) << true << 0 << false;
    QTest::newRow("Escape leaves the transfer") << int(Qt::Key_Escape) << false << 3 << false;
}

void tst_sfOwt::keys()
{
    QFETCH(int, key);
    QFETCH(bool, alt);
    QFETCH(int, mode);
    QFETCH(bool, overwrite);
    const OverwriteAnswer answer = ask([&](QWidget &window) {
        QTest::keyClick(&window, static_cast<Qt::Key>(key), alt ? Qt::AltModifier : Qt::NoModifier);
    });
    QCOMPARE(static_cast<int>(answer.mode), mode);
    QCOMPARE(answer.overwrite, overwrite);
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_sfOwt)
#include "tst_sfOwt.moc"
