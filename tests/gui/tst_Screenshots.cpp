#include <QDir>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QStyleFactory>
#include <QTableView>
#include <QTest>

#include "gui/ReviewFixture.h"
#include "gui/WindowDriver.h"
#include "localpane/sfOwt.h"
#include "mainwin/WindowFrontEnd.h"
#include "mainwin/popup/sfWait.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "support/CaughtStreams.h"
#include "sync/Execution.h"
#include "sync/windows/sfSync.h"

namespace venlo::test
{

namespace
{
QPalette darkPalette()
{
    QPalette palette(QColor(45, 45, 48));
    palette.setColor(QPalette::Base, QColor(30, 30, 30));
    palette.setColor(QPalette::AlternateBase, QColor(38, 38, 40));
    palette.setColor(QPalette::Highlight, QColor(38, 79, 120));
    palette.setColor(QPalette::HighlightedText, Qt::white);
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor(140, 140, 140));
    return palette;
}

/// About forty rows as an office has them: long Japanese names, every action and state.
void fillOffice(ReviewTables &tables)
{
    const QString old = QStringLiteral("24/05/01 10:00");
    const QString recent = QStringLiteral("24/06/12 09:41");
    const QString compare = QStringLiteral("比較");
    const QString add = QStringLiteral("追加");
    const QString remove = QStringLiteral("削除");
    tables.folder(QStringLiteral("."), recent, old, compare);
    tables.file(QStringLiteral("."), QStringLiteral("index.html"), {recent, 48'213}, {old, 47'000},
                compare);
    tables.file(QStringLiteral("."), QStringLiteral("旧ﾄｯﾌﾟﾍﾟｰｼﾞ.html"), {}, {old, 9'812}, remove);
    tables.folder(QStringLiteral("/会社案内"), recent, old, compare);
    for (int i = 1; i <= 12; ++i)
        tables.file(QStringLiteral("/会社案内"),
                    QStringLiteral("第%1回 株主総会招集ご通知及び事業報告書の掲載について(最終版"
                                   "_修正済み).pdf")
                        .arg(i),
                    {i % 3 == 0 ? recent : old, 1'234'567 * i}, {old, 1'234'567 * i}, compare);
    tables.folder(QStringLiteral("/採用情報2025"), recent, QString(), add);
    for (int i = 1; i <= 8; ++i)
        tables.file(QStringLiteral("/採用情報2025"), QStringLiteral("募集要項_%1.html").arg(i),
                    {recent, 700 * i}, {}, add);
    tables.folder(QStringLiteral("/採用情報2025/画像"), recent, QString(), add);
    tables.file(QStringLiteral("/採用情報2025/画像"), QStringLiteral("社長.jpg"), {recent, 812'345},
                {}, add);
    tables.folder(QStringLiteral("/採用情報2024"), QString(), old, remove);
    for (int i = 1; i <= 4; ++i)
        tables.file(QStringLiteral("/採用情報2024"), QStringLiteral("page%1.html").arg(i), {},
                    {old, 512 * i}, remove);
    tables.folder(QStringLiteral("/非公開"), QString(), old, remove);
    tables.file(QStringLiteral("/非公開"), QStringLiteral("名簿.csv"), {}, {old, 88'000}, remove);
    tables.folder(QStringLiteral("/製品"), recent, old, compare);
    for (int i = 1; i <= 6; ++i)
        tables.file(QStringLiteral("/製品"), QStringLiteral("ｶﾀﾛｸﾞ%1.html").arg(i), {recent, 2'000},
                    {}, add);
}

SyncBlocks officeBlocks()
{
    SyncBlocks blocks;
    blocks.add(QStringLiteral("/非公開"),
               QStringLiteral("ｻｰﾊﾞｰの一覧が途中で切れたため確認できません"));
    return blocks;
}

QFont japaneseFont()
{
    return QFont(QStringLiteral("Noto Sans CJK JP"), 10);
}
} // namespace

/// Pictures of the windows for a person to look at, and what can be told of them without one.
class tst_Screenshots : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void syncWindow_data();
    void syncWindow();
    void waitWindow();
    void overwriteWindow_data();
    void overwriteWindow();
    void messageBox();

private:
    static void keep(QWidget &window, const QString &name);
    static void nothingIsCut(const QWidget &window);
};

void tst_Screenshots::initTestCase()
{
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setFont(japaneseFont());
    QVERIFY(QDir().mkpath(QStringLiteral(VENLO_SCREENSHOTS)));
}

void tst_Screenshots::keep(QWidget &window, const QString &name)
{
    nothingIsCut(window);
    const QPixmap picture = window.grab();
    QVERIFY(!picture.isNull());
    QVERIFY(picture.save(QStringLiteral(VENLO_SCREENSHOTS "/") + name + QStringLiteral(".png")));
}

void tst_Screenshots::nothingIsCut(const QWidget &window)
{
    for (const auto *button : window.findChildren<QAbstractButton *>())
        QVERIFY2(!button->isVisible() || button->width() >= button->minimumSizeHint().width(),
                 qPrintable(button->text()));
    for (const auto *label : window.findChildren<QLabel *>()) {
        const bool elastic = label->sizePolicy().horizontalPolicy() == QSizePolicy::Ignored;
        QVERIFY2(!label->isVisible() || elastic || label->wordWrap() ||
                     label->width() >= label->minimumSizeHint().width(),
                 qPrintable(label->text()));
    }
}

void tst_Screenshots::syncWindow_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<int>("stage");
    QTest::newRow("sfSync-light") << false << 0;
    QTest::newRow("sfSync-dark") << true << 0;
    QTest::newRow("sfSync-running-light") << false << 1;
    QTest::newRow("sfSync-running-dark") << true << 1;
    QTest::newRow("sfSync-sorted-light") << false << 2;
    QTest::newRow("sfSync-end-dark") << true << 3;
}

void tst_Screenshots::syncWindow()
{
    QFETCH(bool, dark);
    QFETCH(int, stage);
    QApplication::setPalette(dark ? darkPalette() : QPalette(QColor(239, 239, 239)));
    const CaughtStreams streams;
    ConsolePrinter printer(streams.results(), streams.messages());
    Flags flags;
    WindowFrontEnd desk(printer, flags);
    ReviewTables tables;
    fillOffice(tables);
    const auto review = tables.review(false, officeBlocks());
    QVERIFY(review->count() >= 40);
    ScriptedWorker worker;
    Execution execution(worker, desk, flags);
    sfSync window(*review, execution, desk);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    auto *grid = window.findChild<QTableView *>();
    if (stage == 2)
        grid->sortByColumn(5, Qt::DescendingOrder);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    if (stage == 3)
        grid->scrollToBottom();
    if (stage != 1) {
        keep(window, name);
        return;
    }
    worker.onRow = [&](const QString &path) {
        desk.addStatus(QStringLiteral("127.0.0.1 へ接続しました"));
        if (worker.worked.size() == 6) {
            QTest::qWait(1200);
            desk.progress({path.mid(path.lastIndexOf(QLatin1Char('/')) + 1), 700'000, 3'703'701});
            QTest::qWait(50);
            keep(window, name);
        }
    };
    worker.end = [&](const QString &) { return RowEnd{true, worker.worked.size() == 2, {}}; };
    QCOMPARE(window.runUnattended(), 1);
    QVERIFY(worker.worked.size() > 6);
}

void tst_Screenshots::waitWindow()
{
    QApplication::setPalette(QPalette(QColor(239, 239, 239)));
    sfWait window;
    window.cMsg(QStringLiteral("FTP側とﾏｲｺﾝﾋﾟｭｰﾀｰ側のﾃﾞｨﾚｸﾄﾘ情報を比較しています"));
    keep(window, QStringLiteral("sfWait"));
    window.cMsg(QString());
    keep(window, QStringLiteral("sfWait-empty"));
}

void tst_Screenshots::overwriteWindow_data()
{
    QTest::addColumn<bool>("dark");
    QTest::addColumn<QString>("file");
    QTest::newRow("sfOwt-light") << false << QStringLiteral("index.html");
    QTest::newRow("sfOwt-dark") << true << QStringLiteral("index.html");
    QTest::newRow("sfOwt-long-japanese")
        << false
        << QStringLiteral("第38回 株主総会招集ご通知及び事業報告書の掲載について(最終版_修正済み_"
                          "総務部確認中_経理部確認済み_広報室最終確認待ち).pdf");
    QTest::newRow("sfOwt-long-latin") << false << QString(200, QLatin1Char('w'));
}

void tst_Screenshots::overwriteWindow()
{
    QFETCH(bool, dark);
    QFETCH(QString, file);
    QApplication::setPalette(dark ? darkPalette() : QPalette(QColor(239, 239, 239)));
    bool fits = false;
    sfOwt window;
    whenShown(QStringLiteral("sfOwt"), [&](QWidget &shown) {
        keep(shown, QString::fromLatin1(QTest::currentDataTag()));
        fits = shown.width() < 900;
        shown.close();
    });
    (void)window.cMsg({file, QStringLiteral("48KB"), QStringLiteral("24/05/01 10:00:00"),
                       QStringLiteral("47KB"), QStringLiteral("24/06/12 09:41:00")});
    QVERIFY2(fits, "wider than a small screen");
}

void tst_Screenshots::messageBox()
{
    QApplication::setPalette(QPalette(QColor(239, 239, 239)));
    const CaughtStreams streams;
    ConsolePrinter printer(streams.results(), streams.messages());
    const Flags flags;
    WindowFrontEnd desk(printer, flags);
    whenShown(QStringLiteral("messageBox"), [](QWidget &box) {
        keep(box, QStringLiteral("question"));
        press(box, QStringLiteral("ｷｬﾝｾﾙ"));
    });
    QVERIFY(!desk.question(
        QStringLiteral("/home/hanako/site から /www へ同期を実行します (ﾏｲｺﾝﾋﾟｭｰﾀｰ側に合わせる)")));
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_Screenshots)
#include "tst_Screenshots.moc"
