#include <QTest>

#include "platform/CodePage.h"

namespace venlo
{

class tst_CodePage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void systemText_data();
    void systemText();
    void readOnly_data();
    void readOnly();
    void everyCharacterComesBack();
    void strictCp932_data();
    void strictCp932();
    void decodeRefuses_data();
    void decodeRefuses();
    void eucJp_data();
    void eucJp();
    void eucJpRefuses();
    void longText();
};

namespace
{
QByteArray hex(const char *digits)
{
    return QByteArray::fromHex(digits);
}

QString unit(char16_t code)
{
    return QString(QChar(code));
}
} // namespace

void tst_CodePage::systemText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("nothing") << QString() << QByteArray();
    QTest::newRow("ASCII") << QStringLiteral("a\\b~\r\n") << QByteArray("a\\b~\r\n");
    QTest::newRow("kanji") << QStringLiteral("運用") << hex("895E9770");
    QTest::newRow("half-width katakana") << QStringLiteral("ﾕｰ") << hex("D5B0");
    QTest::newRow("second byte is a backslash") << QStringLiteral("表") << hex("955C");
    QTest::newRow("NEC row 13") << QStringLiteral("①") << hex("8740");
    QTest::newRow("full-width tilde") << QStringLiteral("～") << hex("8160");
    QTest::newRow("IBM extension") << QStringLiteral("髙") << hex("FBFC");
    QTest::newRow("user-defined") << unit(0xE000) << hex("F040");
    QTest::newRow("lacking, Latin") << QStringLiteral("é") << QByteArray("&#x00E9;");
    QTest::newRow("lacking, wave dash") << unit(0x301C) << QByteArray("&#x301C;");
    QTest::newRow("lacking, beyond 16 bits") << QStringLiteral("a😀b") << QByteArray("a&#x1F600;b");
    QTest::newRow("lacking, among kanji")
        << QStringLiteral("運é用") << hex("895E") + "&#x00E9;" + hex("9770");
    QTest::newRow("lone high surrogate")
        << unit(0xD83D) + QLatin1Char('a') << QByteArray("&#xD83D;a");
    QTest::newRow("lone low surrogate") << unit(0xDE00) << QByteArray("&#xDE00;");
    QTest::newRow("the replacement character") << unit(0xFFFD) << QByteArray("&#xFFFD;");
    QTest::newRow("C1 control") << unit(0x0085) << QByteArray("&#x0085;");
    QTest::newRow("looks escaped, needs none") << QStringLiteral("&#x41;") << QByteArray("&#x41;");
    QTest::newRow("looks escaped, kanji") << QStringLiteral("&#x904B;") << QByteArray("&#x904B;");
    QTest::newRow("escape without an end") << QStringLiteral("&#x1F600") << QByteArray("&#x1F600");
    QTest::newRow("escape without digits") << QStringLiteral("&#x;") << QByteArray("&#x;");
    QTest::newRow("escape of no hexadecimal")
        << QStringLiteral("&#x00G9;") << QByteArray("&#x00G9;");
    QTest::newRow("escape beyond Unicode")
        << QStringLiteral("&#x110000;") << QByteArray("&#x110000;");
    QTest::newRow("escape with a sign") << QStringLiteral("&#x+E9;") << QByteArray("&#x+E9;");
    QTest::newRow("decimal escape") << QStringLiteral("&#233;") << QByteArray("&#233;");
    QTest::newRow("one escape start in another")
        << QStringLiteral("&#x&#x41;é") << QByteArray("&#x&#x41;&#x00E9;");
}

void tst_CodePage::systemText()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    QCOMPARE(toSystemText(text), bytes);
    QCOMPARE(fromSystemText(bytes), text);
}

void tst_CodePage::readOnly_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("text");
    const QString bad = unit(QChar::ReplacementCharacter);
    QTest::newRow("small hexadecimal digits") << QByteArray("&#x1f600;") << QStringLiteral("😀");
    QTest::newRow("short form") << QByteArray("&#xE9;") << QStringLiteral("é");
    QTest::newRow("two in a row") << QByteArray("&#xE9;&#xE8;") << QStringLiteral("éè");
    QTest::newRow("a byte that begins nothing") << hex("80") << bad;
    QTest::newRow("no single byte 0xA0")
        << hex("41A042") << QLatin1Char('A') + bad + QLatin1Char('B');
    QTest::newRow("no single byte 0xFD") << hex("FD") << bad;
    QTest::newRow("a lead byte at the end") << hex("4182") << QLatin1Char('A') + bad;
    QTest::newRow("a lead byte before a tag") << hex("823C2F") << bad + QStringLiteral("</");
    QTest::newRow("unassigned pair")
        << hex("85409770") << bad + QLatin1Char('@') + QStringLiteral("用");
    QTest::newRow("UTF-8 keeps its ASCII")
        << QByteArray("<a>\xFF</a>") << QStringLiteral("<a>") + bad + QStringLiteral("</a>");
}

void tst_CodePage::readOnly()
{
    QFETCH(QByteArray, bytes);
    QTEST(fromSystemText(bytes), "text");
}

void tst_CodePage::everyCharacterComesBack()
{
    for (char32_t code = 0; code <= 0xFFFF; ++code) {
        const QString text = unit(static_cast<char16_t>(code));
        const QString back = fromSystemText(toSystemText(text));
        QVERIFY2(back == text, qPrintable(QString::number(code, 16)));
    }
}

void tst_CodePage::strictCp932_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("has");
    QTest::newRow("kanji") << QStringLiteral("日本語") << true;
    QTest::newRow("one lacking character") << QStringLiteral("日é") << false;
    QTest::newRow("look-alike of the full-width tilde") << unit(0x301C) << false;
    QTest::newRow("yen sign is no backslash") << unit(0x00A5) << false;
    QTest::newRow("overline is no tilde") << unit(0x203E) << false;
    QTest::newRow("emoji") << QStringLiteral("😀") << false;
    QTest::newRow("lone surrogate") << unit(0xD800) << false;
}

void tst_CodePage::strictCp932()
{
    QFETCH(QString, text);
    QFETCH(bool, has);
    const auto bytes = encodeCp932(text);
    QCOMPARE(bytes.has_value(), has);
    if (has)
        QCOMPARE(decodeCp932(*bytes).value_or(QString()), text);
}

void tst_CodePage::decodeRefuses_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("0x80") << hex("80");
    QTest::newRow("0xA0") << hex("A0");
    QTest::newRow("0xFF") << hex("FF");
    QTest::newRow("cut short") << hex("82");
    QTest::newRow("bad second byte") << hex("8220");
    QTest::newRow("a separator is no second byte") << hex("EC2F");
    QTest::newRow("bad byte behind good text") << hex("895E977080");
}

void tst_CodePage::decodeRefuses()
{
    QFETCH(QByteArray, bytes);
    QVERIFY(!decodeCp932(bytes).has_value());
}

void tst_CodePage::eucJp_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("ASCII") << QStringLiteral("a~\\") << QByteArray("a~\\");
    QTest::newRow("kanji") << QStringLiteral("日本") << hex("C6FCCBDC");
    QTest::newRow("half-width katakana") << QStringLiteral("ｱ") << hex("8EB1");
}

void tst_CodePage::eucJp()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    QCOMPARE(encodeEucJp(text).value_or(QByteArray()), bytes);
    QCOMPARE(decodeEucJp(bytes).value_or(QString()), text);
}

void tst_CodePage::eucJpRefuses()
{
    QVERIFY(!decodeEucJp(hex("C6")).has_value());
    QVERIFY(!decodeEucJp(hex("80")).has_value());
    QVERIFY(!decodeEucJp(hex("8E20")).has_value());
    QVERIFY(!encodeEucJp(QStringLiteral("😀")).has_value());
    QVERIFY(!encodeEucJp(unit(0x301C)).has_value());
}

void tst_CodePage::longText()
{
    const QString text = QStringLiteral("運用ﾌｧｲﾙ①").repeated(20000);
    const auto bytes = encodeCp932(text);
    QVERIFY(bytes.has_value());
    QCOMPARE(bytes->size(), 20000 * 10);
    QCOMPARE(decodeCp932(*bytes).value_or(QString()), text);
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_CodePage)
#include "tst_CodePage.moc"
