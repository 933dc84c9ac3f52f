#include "ftp/protocol/Reply.h"

#include <QTest>

namespace venlo::test
{

/// Replies put together from the bytes of a control connection.
class ReplyParserTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneReply_data();
    void oneReply();
    void severalInOneFeed();
    void byteByByte();
    void kinds_data();
    void kinds();
    void broken_data();
    void broken();
    void repliesBeforeTheBreakAreHandedOut();
    void nothingAfterABreak();
    void longestLine();
    void aLineThatNeverEnds();
    void aReplyThatNeverEnds();
    void aSubnegotiationThatNeverEnds();
    void unreadRepliesAreBounded();
    void textShowsEveryLine();
    void pendingTellsOfAnUnfinishedLine();
};

void ReplyParserTest::oneReply_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<int>("code");
    QTest::addColumn<QStringList>("lines");
    const auto row = [](const char *what, const QByteArray &bytes, int code,
                        const QStringList &lines) {
        QTest::newRow(what) << bytes << code << lines;
    };
    const auto text = [](const char *words) { return QString::fromUtf8(words); };
    row("single line", "220 ready\r\n", 220, {text("ready")});
    row("bare LF", "220 ready\n", 220, {text("ready")});
    row("no text", "220\r\n", 220, {QString()});
    row("blank and no text", "220 \r\n", 220, {QString()});
    row("blank lines before", "\r\n\r\n220 ready\r\n", 220, {text("ready")});
    row("text with a second blank", "220  ready \r\n", 220, {text(" ready ")});
    row("two lines", "220-a\r\n220 b\r\n", 220, {text("a"), text("b")});
    row("every line with the code", "220-a\r\n220-b\r\n220 c\r\n", 220,
        {text("a"), text("b"), text("c")});
    row("last line without text", "220-a\r\n220\r\n", 220, {text("a"), QString()});
    row("lines without a code", "211-Features:\r\n MDTM\r\n SIZE\r\n211 End\r\n", 211,
        {text("Features:"), text(" MDTM"), text(" SIZE"), text("End")});
    row("lines that begin with digits", "220-a\r\n2200 b\r\n22 c\r\n1\r\n220 d\r\n", 220,
        {text("a"), text("2200 b"), text("22 c"), text("1"), text("d")});
    row("lines with other codes", "220-a\r\n230 b\r\n421-c\r\n220 d\r\n", 220,
        {text("a"), text("230 b"), text("421-c"), text("d")});
    row("the code behind a blank ends nothing", "220-a\r\n 220 b\r\n220 c\r\n", 220,
        {text("a"), text(" 220 b"), text("c")});
    row("empty line in between", "220-a\r\n\r\n220 c\r\n", 220, {text("a"), QString(), text("c")});
    row("mixed line ends", "220-a\n220 b\r\n", 220, {text("a"), text("b")});
    row("smallest code", "100 x\r\n", 100, {text("x")});
    row("largest code", "599 x\r\n", 599, {text("x")});
    row("UTF-8", "220 日本\r\n", 220, {text("日本")});
    row("CP932", "220 \x93\xfa\x96\x7b\r\n", 220, {text("日本")});
    row("neither", "220 a\xfe\xfe\xff\xff\r\n", 220, {text("aþþÿ")});
    row("NUL is not shown", QByteArray("220 a\0b\r\n", 9), 220, {text("ab")});
    row("Telnet DO with LF as its option",
        "22\xff\xfd\x0a"
        "0 ready\r\n",
        220, {text("ready")});
    row("Telnet WILL, WONT, DO, DONT",
        "\xff\xfb\x01\xff\xfc\x01\xff\xfd\x01\xff\xfe\x01"
        "220 ready\r\n",
        220, {text("ready")});
    row("Telnet command of two bytes",
        "\xff\xf1"
        "220 re\xff\xf9"
        "ady\r\n",
        220, {text("ready")});
    row("Telnet subnegotiation",
        "\xff\xfa\x18\x01 500 no\r\n\xff\xff\xff\xf0"
        "220 ready\r\n",
        220, {text("ready")});
}

void ReplyParserTest::oneReply()
{
    QFETCH(QByteArray, bytes);
    QFETCH(int, code);
    QFETCH(QStringList, lines);
    ReplyParser parser;
    parser.feed(bytes);
    const auto reply = parser.next();
    QVERIFY(reply.has_value());
    QCOMPARE(reply->code, code);
    QCOMPARE(reply->lines, lines);
    QCOMPARE(reply->rawLines.size(), lines.size());
    QVERIFY(!parser.next().has_value());
    QVERIFY(!parser.broken());
    QVERIFY(!parser.pending());
}

void ReplyParserTest::severalInOneFeed()
{
    ReplyParser parser;
    parser.feed("150 opening\r\n226-a\r\n226 done\r\n421 bye\r\n");
    QCOMPARE(parser.next().value_or(Reply{}).code, 150);
    QCOMPARE(parser.next().value_or(Reply{}).lines.size(), 2);
    QCOMPARE(parser.next().value_or(Reply{}).code, 421);
    QVERIFY(!parser.next().has_value());
}

void ReplyParserTest::byteByByte()
{
    const QByteArray bytes = "220-a\r\n\xff\xfd\x01 b \xff\xff\r\n220 c\r\n230 d\r\n";
    ReplyParser parser;
    QList<Reply> replies;
    for (const char c : bytes) {
        parser.feed(QByteArray(1, c));
        while (const auto reply = parser.next())
            replies.append(*reply);
    }
    QCOMPARE(replies.size(), 2);
    QCOMPARE(replies.at(0).rawLines, (QList<QByteArray>{"a", " b \xff", "c"}));
    QCOMPARE(replies.at(1).code, 230);
}

void ReplyParserTest::kinds_data()
{
    QTest::addColumn<int>("code");
    QTest::addColumn<int>("kind");
    for (const int code : {110, 226, 350, 421, 550})
        QTest::addRow("%d", code) << code << code / 100;
}

void ReplyParserTest::kinds()
{
    QFETCH(int, code);
    QFETCH(int, kind);
    const Reply reply{code, {}, {}};
    QCOMPARE(reply.preliminary(), kind == 1);
    QCOMPARE(reply.completion(), kind == 2);
    QCOMPARE(reply.intermediate(), kind == 3);
    QCOMPARE(reply.transient(), kind == 4);
    QCOMPARE(reply.permanent(), kind == 5);
}

void ReplyParserTest::broken_data()
{
    QTest::addColumn<QByteArray>("bytes");
    const auto row = [](const char *what, const char *bytes) {
        QTest::newRow(what) << QByteArray(bytes);
    };
    row("no code", "HTTP/1.1 400 Bad Request\r\n");
    row("code below 100", "099 x\r\n");
    row("code above 599", "600 x\r\n");
    row("four digits", "2200 x\r\n");
    row("two digits", "22 x\r\n");
    row("a sign", "+22 x\r\n");
    row("letter behind the code", "220x\r\n");
    row("leading blank", " 220 x\r\n");
}

void ReplyParserTest::broken()
{
    QFETCH(QByteArray, bytes);
    ReplyParser parser;
    parser.feed(bytes);
    QVERIFY(!parser.next().has_value());
    QVERIFY(parser.broken());
}

void ReplyParserTest::repliesBeforeTheBreakAreHandedOut()
{
    ReplyParser parser;
    parser.feed("220 ready\r\ngarbage\r\n");
    QCOMPARE(parser.next().value_or(Reply{}).code, 220);
    QVERIFY(!parser.broken());
    QVERIFY(!parser.next().has_value());
    QVERIFY(parser.broken());
}

void ReplyParserTest::nothingAfterABreak()
{
    ReplyParser parser;
    parser.feed("garbage\r\n");
    QVERIFY(!parser.next().has_value());
    parser.feed("220 ready\r\n");
    QVERIFY(!parser.next().has_value());
    QVERIFY(parser.broken());
}

void ReplyParserTest::longestLine()
{
    const auto line = [](int size) { return "220 " + QByteArray(size - 4, 'x') + '\n'; };
    ReplyParser fits;
    fits.feed(line(ReplyParser::maxLine));
    QVERIFY(fits.next().has_value());
    ReplyParser tooLong;
    tooLong.feed(line(ReplyParser::maxLine + 1));
    QVERIFY(!tooLong.next().has_value());
    QVERIFY(tooLong.broken());
}

void ReplyParserTest::aLineThatNeverEnds()
{
    ReplyParser parser;
    int fed = 0;
    while (!parser.broken() && fed <= 2 * ReplyParser::maxLine) {
        parser.feed(QByteArray(100, '2'));
        QVERIFY(!parser.next().has_value());
        fed += 100;
    }
    QVERIFY(parser.broken());
    QVERIFY(fed <= ReplyParser::maxLine + 100);
}

void ReplyParserTest::aReplyThatNeverEnds()
{
    ReplyParser parser;
    parser.feed("220-banner\r\n");
    int fed = 0;
    while (!parser.broken() && fed <= 2 * ReplyParser::maxReply) {
        parser.feed(QByteArray(1000, 'x') + "\r\n");
        QVERIFY(!parser.next().has_value());
        fed += 1002;
    }
    QVERIFY(parser.broken());
    QVERIFY(fed > ReplyParser::maxReply / 2);
}

void ReplyParserTest::aSubnegotiationThatNeverEnds()
{
    ReplyParser parser;
    parser.feed("\xff\xfa");
    parser.feed(QByteArray(qsizetype(2) * ReplyParser::maxLine, 'x'));
    QVERIFY(parser.broken());
}

void ReplyParserTest::unreadRepliesAreBounded()
{
    ReplyParser parser;
    int fed = 0;
    while (!parser.broken() && fed < 10 * ReplyParser::maxReply) {
        parser.feed("200 noise\r\n");
        fed += 11;
    }
    QVERIFY(parser.broken());
    QVERIFY(fed > ReplyParser::maxReply);
}

void ReplyParserTest::textShowsEveryLine()
{
    ReplyParser parser;
    parser.feed("550-no\r\n550 never\r\n");
    QCOMPARE(parser.next().value_or(Reply{}).text(), QStringLiteral("550 no\nnever"));
}

void ReplyParserTest::pendingTellsOfAnUnfinishedLine()
{
    ReplyParser parser;
    QVERIFY(!parser.pending());
    parser.feed("220 rea");
    QVERIFY(!parser.next().has_value());
    QVERIFY(parser.pending());
    parser.feed("dy\r\n");
    QVERIFY(parser.next().has_value());
    QVERIFY(!parser.pending());
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::ReplyParserTest)
#include "tst_ReplyParser.moc"
