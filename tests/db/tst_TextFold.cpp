#include "db/TextFold.h"

#include <QTest>

using venlo::compareFolded;

namespace
{
int compared(const QString &left, const QString &right)
{
    const QByteArray a = left.toUtf8();
    const QByteArray b = right.toUtf8();
    return compareFolded({a.constData(), static_cast<size_t>(a.size())},
                         {b.constData(), static_cast<size_t>(b.size())});
}

bool matches(const QString &text, const QString &pattern)
{
    return venlo::LikePattern(pattern.toStdString()).matches(text.toStdString());
}
} // namespace

class tst_TextFold : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void compares_data();
    void compares();
    void foldingTwiceIsFoldingOnce();
    void brokenBytesAreOrdered();
    void like_data();
    void like();
    void likeIsBounded();
    void boundsHoldWhatMatches_data();
    void boundsHoldWhatMatches();
};

void tst_TextFold::compares_data()
{
    QTest::addColumn<QString>("left");
    QTest::addColumn<QString>("right");
    QTest::addColumn<int>("expected");
    const auto row = [](const char *name, const char *left, const char *right, int expected) {
        QTest::newRow(name) << QString::fromUtf8(left) << QString::fromUtf8(right) << expected;
    };
    row("equal", "abc", "abc", 0);
    row("letter case", "Doc", "dOC", 0);
    row("full-width letters", "Ｄｏｃ", "ｄＯＣ", 0);
    row("accents", "ÉCOLE", "école", 0);
    row("Greek, final sigma too", "ΣΑΣ", "σας", 0);
    row("Cyrillic", "МОСКВА", "москва", 0);
    row("beyond 16 bits", "𐐀", "𐐨", 0);
    row("Kelvin sign is k", "K", "k", 0);
    row("half- and full-width are different", "ｱ", "ア", 1);
    row("hiragana and katakana are different", "あ", "ア", -1);
    row("shorter first", "ab", "abc", -1);
    row("empty first", "", "a", -1);
    row("order is that of the folded letters", "B", "a", 1);
    row("underscore lies before letters", "_", "A", -1);
    row("ASCII before Japanese", "z", "あ", -1);
}

void tst_TextFold::compares()
{
    QFETCH(QString, left);
    QFETCH(QString, right);
    QFETCH(int, expected);
    QCOMPARE(compared(left, right), expected);
    QCOMPARE(compared(right, left), -expected);
}

void tst_TextFold::foldingTwiceIsFoldingOnce()
{
    int changed = 0;
    for (char32_t c = 0; c <= 0x10FFFF; ++c) {
        const char32_t once = QChar::toCaseFolded(c);
        changed += once == c ? 0 : 1;
        if (QChar::toCaseFolded(once) != once)
            QFAIL(qPrintable(QString::number(c, 16)));
    }
    QVERIFY(changed > 1000);
}

void tst_TextFold::brokenBytesAreOrdered()
{
    QCOMPARE(compareFolded("\xFF", "\xFF"), 0);
    QCOMPARE(compareFolded("\xE3\x81", "\xE3\x82"), -1);
    QCOMPARE(compareFolded("\xFF", "\xE3\x81\x82"), 1);
    QCOMPARE(compareFolded("a\xFF", "A\xFF"), 0);
}

void tst_TextFold::like_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("expected");
    const auto row = [](const char *name, const char *text, const char *pattern, bool expected) {
        QTest::newRow(name) << QString::fromUtf8(text) << QString::fromUtf8(pattern) << expected;
    };
    row("prefix", "/pub/a", "/pub*", true);
    row("prefix itself", "/pub", "/pub*", true);
    row("prefix of a sibling", "/public", "/pub*", true);
    row("prefix in another case", "/PUB/a", "/pub*", true);
    row("no prefix", "/pu", "/pub*", false);
    row("whole text", "abc", "abc", true);
    row("a text is no prefix", "abcd", "abc", false);
    row("star alone", "", "*", true);
    row("empty pattern, empty text", "", "", true);
    row("empty pattern", "a", "", false);
    row("in the middle", "xaby", "*ab*", true);
    row("last star is tried again", "aabab", "*ab", true);
    row("stars next to each other", "abc", "a**c", true);
    row("question mark is one character", "abc", "a?c", true);
    row("question mark is not none", "ac", "a?c", false);
    row("question mark is a Japanese character", "あいう", "あ?う", true);
    row("question mark is one beyond 16 bits", "a😀c", "a?c", true);
    row("number sign is itself", "a#1", "a#*", true);
    row("number sign is no digit", "a1", "a#", false);
    row("bracket is itself", "a[b]c", "a[b]*", true);
    row("bracket is no set", "ab", "a[b]", false);
    row("percent is itself", "axb", "a%b", false);
    row("underscore is itself", "axb", "a_b", false);
    row("full-width letters ignore case", "／ＰＵＢ", "／ｐｕｂ*", true);
    row("a star in the text is met by a star", "a*b", "a*b", true);
}

void tst_TextFold::like()
{
    QFETCH(QString, text);
    QFETCH(QString, pattern);
    QTEST(matches(text, pattern), "expected");
}

void tst_TextFold::likeIsBounded()
{
    const QString text(20000, QLatin1Char('a'));
    QVERIFY(!matches(text, QStringLiteral("*a*a*a*a*a*a*a*a*a*a*a*a*b")));
}

void tst_TextFold::boundsHoldWhatMatches_data()
{
    QTest::addColumn<QString>("prefix");
    const auto row = [](const char *name, const char *prefix) {
        QTest::newRow(name) << QString::fromUtf8(prefix);
    };
    row("letters", "/pub");
    row("capital", "/PUB");
    row("last letter", "/puz");
    row("before the capitals", "a@");
    row("before a sign that folds far down", "\xE2\x84\xA9");
    row("Japanese", "/画像");
    row("full-width", "Ｚ");
    row("below the surrogates", "\xED\x9F\xBF");
    row("last of the 16-bit plane", "\xEF\xBF\xBD");
    row("emoji", "😀");
    row("last character of all", "a\xF4\x8F\xBF\xBF");
    row("blank", " ");
}

void tst_TextFold::boundsHoldWhatMatches()
{
    QFETCH(QString, prefix);
    const auto bounds = venlo::likeBounds(prefix + QLatin1Char('*'));
    QVERIFY(bounds.has_value());
    QVERIFY(bounds->high.isValidUtf16());
    const QString last = QString::fromUtf8("\xF4\x8F\xBF\xBF");
    for (const QString &tail : {QString(), QStringLiteral(" "), QStringLiteral("z"), last}) {
        for (const QString &text : {prefix + tail, prefix.toUpper() + tail}) {
            if (!matches(text, prefix + QLatin1Char('*')))
                continue;
            QVERIFY(compared(bounds->low, text) <= 0);
            QVERIFY(compared(text, bounds->high) < 0);
        }
    }
    QVERIFY(!venlo::likeBounds(QStringLiteral("*a")));
    QVERIFY(!venlo::likeBounds(QStringLiteral("?a")));
    QVERIFY(!venlo::likeBounds(QString()));
}

QTEST_APPLESS_MAIN(tst_TextFold)
#include "tst_TextFold.moc"
