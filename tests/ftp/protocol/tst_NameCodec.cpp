#include "ftp/protocol/NameCodec.h"

#include <QTest>

namespace venlo::test
{

using Encoding = NameCodec::Encoding;

/// Names between the wire and the program.
class NameCodecTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decode_data();
    void decode();
    void differentBytesStayDifferentNames();
    void encode_data();
    void encode();
    void resetForgets();
    void asciiShowsNothing();
    void accidentalUtf8ProvesNothing();
    void accidentalCp932ProvesNothing();
};

const QByteArray nihonUtf8("日本");
const QByteArray nihonCp932("\x93\xfa\x96\x7b");
const QByteArray nihongoEucJp("\xc6\xfc\xcb\xdc\xb8\xec");

void NameCodecTest::decode_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("seen");
    const auto row = [](const char *what, const QByteArray &bytes, const QString &name,
                        Encoding seen) {
        QTest::newRow(what) << bytes << name << static_cast<int>(seen);
    };
    row("ASCII", "a b%#'\"", QStringLiteral("a b%#'\""), Encoding::Utf8);
    row("UTF-8", nihonUtf8, QStringLiteral("日本"), Encoding::Utf8);
    row("UTF-8 of four bytes", "\xf0\xa0\xae\xb7", QStringLiteral("𠮷"), Encoding::Utf8);
    row("byte order mark stays",
        "\xef\xbb\xbf"
        "a",
        QStringLiteral("\ufeffa"), Encoding::Utf8);
    row("decomposed characters stay", "\xe3\x81\x8b\xe3\x82\x99", QStringLiteral("か\u3099"),
        Encoding::Utf8);
    row("CP932", nihonCp932, QStringLiteral("日本"), Encoding::Cp932);
    row("CP932 with a backslash byte", "\x95\x5c\x8e\xa6", QStringLiteral("表示"), Encoding::Cp932);
    row("CP932 of its own", "\x87\x40", QStringLiteral("①"), Encoding::Cp932);
    row("half-width katakana", "\xc3\xbd\xc4", QStringLiteral("ﾃｽﾄ"), Encoding::Cp932);
    row("EUC-JP and CP932 at once is CP932", "\xb1\xb2", QStringLiteral("ｱｲ"), Encoding::Cp932);
    row("EUC-JP where CP932 does not decode", nihongoEucJp, QStringLiteral("日本語"),
        Encoding::EucJp);
    row("neither CP932 nor EUC-JP", nihongoEucJp + '\xff',
        QString::fromLatin1(nihongoEucJp + '\xff'), Encoding::Utf8);
    row("overlong form", "\xc0\xae", QStringLiteral("ﾀｮ"), Encoding::Cp932);
    row("surrogate", "\xed\xa0\x80", QString::fromLatin1("\xed\xa0\x80"), Encoding::Utf8);
    row("cut UTF-8", "\xe6\x97", QStringLiteral("譌"), Encoding::Cp932);
    row("no encoding at all", "a\xff\xfe", QStringLiteral("a\u00ff\u00fe"), Encoding::Utf8);
}

void NameCodecTest::decode()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, name);
    QFETCH(int, seen);
    NameCodec codec;
    QCOMPARE(codec.decode(bytes), name);
    QCOMPARE(static_cast<int>(codec.encodingForNewNames()), seen);
}

void NameCodecTest::differentBytesStayDifferentNames()
{
    NameCodec codec;
    QVERIFY(codec.decode("a") != codec.decode("\xef\xbb\xbf"
                                              "a"));
    QVERIFY(codec.decode("..") != codec.decode("\xef\xbb\xbf.."));
}

void NameCodecTest::encode_data()
{
    QTest::addColumn<bool>("serverSaysUtf8");
    QTest::addColumn<QByteArray>("shown");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("bytes");
    const QString nihon = QStringLiteral("日本");
    const QString emoji = QStringLiteral("😀");
    const auto row = [](const char *what, bool utf8, const QByteArray &shown, const QString &name,
                        const QByteArray &bytes) {
        QTest::newRow(what) << utf8 << shown << name << bytes;
    };
    row("UTF-8 when nothing was seen", false, "", nihon, nihonUtf8);
    row("UTF-8 when UTF-8 was seen", false, nihonUtf8, nihon, nihonUtf8);
    row("CP932 when CP932 was seen", false, nihonCp932, nihon, nihonCp932);
    row("UTF-8 fixed by the server", true, nihonCp932, nihon, nihonUtf8);
    row("a name that CP932 lacks", false, nihonCp932, emoji, emoji.toUtf8());
    row("ASCII", false, nihonCp932, QStringLiteral("a b"), "a b");
}

void NameCodecTest::encode()
{
    QFETCH(bool, serverSaysUtf8);
    QFETCH(QByteArray, shown);
    QFETCH(QString, name);
    QFETCH(QByteArray, bytes);
    NameCodec codec;
    codec.reset(serverSaysUtf8);
    QVERIFY(codec.decode(shown).isEmpty() == shown.isEmpty());
    QCOMPARE(codec.encode(name), bytes);
}

void NameCodecTest::resetForgets()
{
    NameCodec codec;
    QCOMPARE(codec.decode(nihonCp932), QStringLiteral("日本"));
    codec.reset(false);
    QCOMPARE(codec.encodingForNewNames(), Encoding::Utf8);
}

void NameCodecTest::asciiShowsNothing()
{
    NameCodec codec;
    QCOMPARE(codec.decode(nihonCp932), QStringLiteral("日本"));
    QCOMPARE(codec.decode("index.html"), QStringLiteral("index.html"));
    QCOMPARE(codec.encodingForNewNames(), Encoding::Cp932);
}

void NameCodecTest::accidentalUtf8ProvesNothing()
{
    NameCodec codec;
    QCOMPARE(codec.decode(nihonCp932), QStringLiteral("日本"));
    QCOMPARE(codec.decode("\xc2\xa9"), QStringLiteral("©"));
    QCOMPARE(codec.encodingForNewNames(), Encoding::Cp932);
    QCOMPARE(codec.decode(nihonUtf8), QStringLiteral("日本"));
    QCOMPARE(codec.encodingForNewNames(), Encoding::Utf8);
}

void NameCodecTest::accidentalCp932ProvesNothing()
{
    NameCodec codec;
    QCOMPARE(codec.decode(nihongoEucJp), QStringLiteral("日本語"));
    QCOMPARE(codec.encodingForNewNames(), Encoding::EucJp);
    QCOMPARE(codec.decode("\xb1\xb2"), QStringLiteral("ｱｲ"));
    QCOMPARE(codec.encodingForNewNames(), Encoding::EucJp);
    QCOMPARE(codec.encode(QStringLiteral("日本語")), nihongoEucJp);
    QCOMPARE(codec.decode(nihonCp932), QStringLiteral("日本"));
    QCOMPARE(codec.encodingForNewNames(), Encoding::Cp932);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::NameCodecTest)
#include "tst_NameCodec.moc"
