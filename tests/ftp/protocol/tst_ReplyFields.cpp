#include "ftp/protocol/Reply.h"

#include <QTest>

namespace venlo::test
{

/// Paths, ports and times that replies carry.
class ReplyFields : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void path_data();
    void path();
    void epsv_data();
    void epsv();
    void pasv_data();
    void pasv();
    void mdtm_data();
    void mdtm();

private:
    static Reply replyOf(const QByteArray &bytes)
    {
        ReplyParser parser;
        parser.feed(bytes + "\r\n");
        return parser.next().value_or(Reply{});
    }
};

void ReplyFields::path_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("expected"); // empty: no path
    const auto row = [](const char *what, const QByteArray &reply, const QByteArray &expected) {
        QTest::newRow(what) << reply << expected;
    };
    row("root", "257 \"/\" is current directory.", "/");
    row("doubled quotes", "257 \"/a \"\"b\"\"\" is current", "/a \"b\"");
    row("nothing behind the quote", "257 \"/a\"", "/a");
    row("words before", "257 The directory is \"/a\" now", "/a");
    row("further quotes behind", "257 \"/a\" is \"current\"", "/a");
    row("blanks", "257 \"/ a  b \"", "/ a  b ");
    row("second line", "257-Hello\r\n257 \"/a\"", "/a");
    row("UTF-8", "257 \"/日本\"", "/日本");
    row("CP932 stays bytes", "257 \"/\x95\x5c\"", "/\x95\x5c");
    row("doubled 0xFF", "257 \"/\xff\xff\"", "/\xff");
    row("drive", "257 \"C:\\\"", "C:\\");
    row("no quotes", "257 /a", {});
    row("quote that never ends", "257 \"/a", {});
    row("empty path", "257 \"\"", {});
    row("NUL", QByteArray("257 \"/a\0b\"", 10), {});
    row("CR", "257 \"/a\rb\"", {});
    row("another code", "250 \"/a\"", {});
    row("refusal", "550 \"/a\" no", {});
}

void ReplyFields::path()
{
    QFETCH(QByteArray, reply);
    QFETCH(QByteArray, expected);
    const auto read = parsePwdPath(replyOf(reply));
    QCOMPARE(read.has_value(), !expected.isEmpty());
    QCOMPARE(read.value_or(QByteArray()), expected);
}

void ReplyFields::epsv_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("port");
    const auto row = [](const char *what, const QByteArray &reply, int port) {
        QTest::newRow(what) << reply << port;
    };
    row("usual", "229 Entering Extended Passive Mode (|||6446|)", 6446);
    row("with a point", "229 Entering Extended Passive Mode (|||6446|).", 6446);
    row("exclamation mark as delimiter", "229 ok (!!!6446!)", 6446);
    row("letters are delimiters as well", "229 ok (xxx6446x)", 6446);
    row("without parentheses", "229 ok |||6446|", 6446);
    row("largest port", "229 (|||65535|)", 65535);
    row("second line", "229-Hello\r\n229 (|||6446|)", 6446);
    row("port 0", "229 (|||0|)", 0);
    row("port too large", "229 (|||65536|)", 0);
    row("mixed delimiters", "229 (||!6446|)", 0);
    row("not ended", "229 (|||6446", 0);
    row("no number", "229 (||||)", 0);
    row("PASV's form", "229 (127,0,0,1,4,5)", 0);
    row("another code", "227 (|||6446|)", 0);
    row("refusal", "500 (|||6446|)", 0);
}

void ReplyFields::epsv()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, port);
    QCOMPARE(static_cast<int>(parseEpsvPort(replyOf(reply))), port);
}

void ReplyFields::pasv_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("port");
    const auto row = [](const char *what, const QByteArray &reply, int port) {
        QTest::newRow(what) << reply << port;
    };
    row("usual", "227 Entering Passive Mode (127,0,0,1,4,5).", 1029);
    row("without parentheses", "227 Entering Passive Mode 127,0,0,1,4,5", 1029);
    row("equals sign", "227 Entering Passive Mode =127,0,0,1,4,5", 1029);
    row("blanks behind commas", "227 (127, 0, 0, 1, 4, 5)", 1029);
    row("largest port", "227 (127,0,0,1,255,255)", 65535);
    row("port 0", "227 (127,0,0,1,0,0)", 0);
    row("byte above 255", "227 (127,0,0,1,256,1)", 0);
    row("low byte above 255", "227 (127,0,0,1,4,300)", 0);
    row("five numbers", "227 (127,0,0,1,4)", 0);
    row("seven numbers", "227 (127,0,0,1,4,5,6)", 0);
    row("no numbers", "227 Entering Passive Mode", 0);
    row("another code", "229 (127,0,0,1,4,5)", 0);
}

void ReplyFields::pasv()
{
    QFETCH(QByteArray, reply);
    QFETCH(int, port);
    QCOMPARE(static_cast<int>(parsePasvPort(replyOf(reply))), port);
}

void ReplyFields::mdtm_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QString>("time"); // empty: none
    const auto row = [](const char *what, const char *reply, const char *time) {
        QTest::newRow(what) << QByteArray(reply) << QString::fromLatin1(time);
    };
    row("usual", "213 20260102030405", "2026-01-02T03:04:05.000Z");
    row("fraction", "213 20260102030405.123", "2026-01-02T03:04:05.123Z");
    row("one digit of fraction", "213 20260102030405.5", "2026-01-02T03:04:05.500Z");
    row("leap second", "213 20161231235960", "2016-12-31T23:59:59.000Z");
    row("years since 1900 behind 19", "213 191260102030405", "2026-01-02T03:04:05.000Z");
    row("blanks around", "213  20260102030405 ", "2026-01-02T03:04:05.000Z");
    row("before 1970", "213 19500102030405", "1950-01-02T03:04:05.000Z");
    row("leap day", "213 20240229000000", "2024-02-29T00:00:00.000Z");
    row("no leap day", "213 20250229000000", "");
    row("month 13", "213 20261302030405", "");
    row("hour 24", "213 20260102240000", "");
    row("too short", "213 2026010203040", "");
    row("too long", "213 202601020304055", "");
    row("point without digits", "213 20260102030405.", "");
    row("letters", "213 2026010203040x", "");
    row("words", "213 no idea", "");
    row("another code", "200 20260102030405", "");
}

void ReplyFields::mdtm()
{
    QFETCH(QByteArray, reply);
    QFETCH(QString, time);
    const QDateTime read = parseMdtm(replyOf(reply));
    QCOMPARE(read.isValid(), !time.isEmpty());
    QCOMPARE(read.toString(Qt::ISODateWithMs), time);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::ReplyFields)
#include "tst_ReplyFields.moc"
