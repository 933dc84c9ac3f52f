#include <algorithm>

#include <QApplication>
#include <QLabel>
#include <QTest>
#include <QToolTip>

#include "shared/PlainToolTip.h"
#include "support/ShownToolTip.h"

namespace venlo::test
{

namespace
{
/// The tool tip's own window, once it shows.
QWidget *toolTipWindow()
{
    const QWidgetList all = QApplication::topLevelWidgets();
    const auto found = std::find_if(all.begin(), all.end(), [](const QWidget *widget) {
        return widget->inherits("QTipLabel") && widget->isVisible();
    });
    return found == all.end() ? nullptr : *found;
}
} // namespace

class tst_PlainToolTip : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsTheTextItself_data();
    void showsTheTextItself();
    void nothingForNothing();
    void longTextWraps_data();
    void longTextWraps();
    void breaksLongWordsOnly();
    void widgetsAreDescribedByTheTextItself();
};

void tst_PlainToolTip::showsTheTextItself_data()
{
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, const QString &text) { QTest::newRow(name) << text; };
    row("a name", QStringLiteral("news.txt"));
    row("an ampersand", QStringLiteral("R&D > plan"));
    row("an entity", QStringLiteral("a&amp;b &lt;c&gt; &#65;"));
    row("a tag", QStringLiteral("<b>bold</b>"));
    row("a picture", QStringLiteral("<img src=\"http://127.0.0.1/x.png\">"));
    row("the end of what marks it", QStringLiteral("</span></p></qt>x"));
    row("a comment", QStringLiteral("<!-- x -->y"));
    row("quotes", QStringLiteral("\"a\" 'b'"));
    row("lines", QStringLiteral("one\ntwo\n\nfour"));
    row("blanks", QStringLiteral(" a  b   c "));
    row("half-width", QStringLiteral("ﾏｲｺﾝﾋﾟｭｰﾀｰ: C:\\＜あ＞"));
    row("a long word", QString(300, u'W'));
}

void tst_PlainToolTip::showsTheTextItself()
{
    QFETCH(QString, text);
    const QString toolTip = plainToolTip(text);
    QVERIFY2(Qt::mightBeRichText(toolTip), "nothing is left to guessing");
    QCOMPARE(shownToolTip(toolTip), text);
}

void tst_PlainToolTip::nothingForNothing()
{
    QCOMPARE(plainToolTip(QString()), QString());
}

void tst_PlainToolTip::longTextWraps_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("words") << QStringLiteral("many words ").repeated(60);
    QTest::newRow("one word") << QString(600, u'W');
    QTest::newRow("a path") << QStringLiteral("/folder").repeated(100);
}

void tst_PlainToolTip::longTextWraps()
{
    QFETCH(QString, text);
    QToolTip::showText({10, 10}, plainToolTip(text));
    QTRY_VERIFY(toolTipWindow() != nullptr);
    QVERIFY(toolTipWindow()->width() <= toolTipWindow()->fontMetrics().maxWidth() * 45);
    QToolTip::hideText();
    QTRY_VERIFY(toolTipWindow() == nullptr);
}

void tst_PlainToolTip::breaksLongWordsOnly()
{
    const QString words = QStringLiteral("word ").repeated(50);
    QCOMPARE(breakable(words), words);
    const QString name(100, u'x');
    QCOMPARE(breakable(name).count(QChar(u'\u200b')), 2);
    QCOMPARE(breakable(name).remove(QChar(u'\u200b')), name);
    // A place to break at behind the last letter would only be in the way.
    QCOMPARE(breakable(name.left(40)), name.left(40));
    // Never between the halves of a character.
    const QString faces = QStringLiteral("\U0001f600").repeated(41);
    QCOMPARE(breakable(faces).indexOf(QChar(u'\u200b')), 80);
}

void tst_PlainToolTip::widgetsAreDescribedByTheTextItself()
{
    QLabel label;
    setPlainToolTip(label, QStringLiteral("a<b>&amp;"));
    QCOMPARE(shownToolTip(label.toolTip()), QStringLiteral("a<b>&amp;"));
    QCOMPARE(label.accessibleDescription(), QStringLiteral("a<b>&amp;"));
    setPlainToolTip(label, QString());
    QCOMPARE(label.toolTip(), QString());
    QCOMPARE(label.accessibleDescription(), QString());
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_PlainToolTip)
#include "tst_PlainToolTip.moc"
