#include "ftp/protocol/ListingRows.h"
#include "ftp/protocol/Reply.h"

#include <random>

namespace venlo::test
{

constexpr int linesPerSeed = 20'000;
constexpr int linesPerListing = 50;

/// Damaged lines of every dialect: whatever arrives, no entry leaves the directory it is in and
/// nothing grows beyond what arrived. Seeds are fixed, so that a failure comes back.
class ListingMutations : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listings_data();
    void listings();
    void replies();

private:
    using Random = std::mt19937;
    static QByteArray mutated(QByteArray text, Random &random);
    static std::size_t below(std::size_t limit, Random &random);
};

std::size_t ListingMutations::below(std::size_t limit, Random &random)
{
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
}

QByteArray ListingMutations::mutated(QByteArray text, Random &random)
{
    static const QByteArray telling("/\\.\0\r\n -+;=,:\t0179>dl\xff\x81\xe3", 24);
    for (std::size_t changes = below(4, random); changes > 0; --changes) {
        const auto size = static_cast<std::size_t>(text.size());
        const auto at = static_cast<qsizetype>(below(size + 1, random));
        const char c = telling[static_cast<qsizetype>(
            below(static_cast<std::size_t>(telling.size()), random))];
        switch (below(6, random)) {
        case 0:
            text.insert(at, c);
            break;
        case 1:
            text.remove(at, static_cast<qsizetype>(below(4, random)));
            break;
        case 2:
            text.truncate(at);
            break;
        case 3:
            text.insert(at, text.mid(at / 2, 12));
            break;
        case 4:
            text.insert(at, static_cast<char>(below(256, random)));
            break;
        default:
            if (at < text.size())
                text[at] = c;
        }
    }
    return text;
}

void ListingMutations::listings_data()
{
    QTest::addColumn<bool>("mlsd");
    QTest::addColumn<unsigned>("seed");
    for (unsigned seed = 1; seed <= 3; ++seed) {
        QTest::addRow("LIST, seed %u", seed) << false << seed;
        QTest::addRow("MLSD, seed %u", seed) << true << seed;
    }
}

void ListingMutations::listings()
{
    QFETCH(bool, mlsd);
    QFETCH(unsigned, seed);
    const QList<QByteArray> list = {
        "-rw-r--r--   1 user     group        1000 Nov 21 05:10 name",
        "drwxr-xr-x+  2 user group 4096 Nov 21  2024 日本語",
        "lrwxrwxrwx 1 user group 7 2026-11-21 05:10:33.000 +0900 name -> ../x -> y",
        "crw-rw-rw- 1 root root 1, 3 11月 21日 05:10 ..",
        "- [R----F--] rhesus 214059 21 Nov 05:10 name",
        "11-21-26  05:10AM       <DIR>          name",
        "2026/11/21  17:10    1,234,567 ..\\name",
        "+i8388621.48594,m825718503,r,s280,\tdjb.html",
        "total 12"};
    const QList<QByteArray> facts = {"type=file;size=1000;modify=20261121051033.25;perm=adfr; name",
                                     "type=cdir;modify=20261121051033; .",
                                     "type=dir;sizd=4096;UNIX.mode=0755; 日本語",
                                     "Type=OS.unix=slink:/a b;Size=7; name; x"};
    const QList<QByteArray> &samples = mlsd ? facts : list;
    Random random(seed);
    std::size_t entries = 0;
    for (int round = 0; round < linesPerSeed / linesPerListing; ++round) {
        QList<QByteArray> lines;
        std::size_t arrived = 0;
        for (int i = 0; i < linesPerListing; ++i) {
            lines += mutated(samples[static_cast<qsizetype>(
                                 below(static_cast<std::size_t>(samples.size()), random))],
                             random);
            arrived += static_cast<std::size_t>(lines.last().size());
        }
        const Listing listing =
            parseLines(mlsd ? ListingParser::Source::Mlsd : ListingParser::Source::List, lines);
        std::size_t kept = 0;
        for (const ListedEntry &entry : listing.entries) {
            for (const char bad : {'/', '\0', '\r', '\n'})
                QVERIFY2(!entry.rawName.contains(bad), entry.rawName.toPercentEncoding());
            for (const char16_t bad : {u'/', u'\0', u'\r', u'\n'})
                QVERIFY2(!entry.name.contains(QChar(bad)), entry.rawName.toPercentEncoding());
            QVERIFY(!entry.rawName.isEmpty() && entry.rawName != "." && entry.rawName != "..");
            QVERIFY(!entry.name.isEmpty() && entry.name != QStringLiteral(".") &&
                    entry.name != QStringLiteral(".."));
            QVERIFY(!mlsd || !entry.rawName.startsWith('.'));
            QVERIFY(entry.size >= 0);
            QVERIFY(entry.kind != ListedEntry::Kind::Folder || entry.size == 0);
            kept += static_cast<std::size_t>(entry.rawName.size());
        }
        QVERIFY(kept <= arrived);
        QVERIFY(listing.entries.size() <= static_cast<std::size_t>(lines.size()));
        QCOMPARE(listing.whole, listing.why.isEmpty());
        QVERIFY(listing.why.size() < 2000);
        entries += listing.entries.size();
    }
    // Damage that left nothing readable would prove nothing.
    QVERIFY(entries > linesPerSeed / 4);
}

void ListingMutations::replies()
{
    const QByteArray sample =
        "220-Welcome\r\n 230 not yet\r\n220 ready\r\n257 \"/a\"\"b\" is it\r\n"
        "229 Entering (|||6446|)\r\n227 Entering (127,0,0,1,4,5)\r\n"
        "213 20260102030405.123\r\n\xff\xfd\x01 226 done\r\n";
    Random random(4);
    int replies = 0;
    for (int round = 0; round < linesPerSeed; ++round) {
        ReplyParser parser;
        const QByteArray bytes = mutated(sample, random);
        const auto cut =
            static_cast<qsizetype>(below(static_cast<std::size_t>(bytes.size()) + 1, random));
        parser.feed(bytes.first(cut));
        parser.feed(bytes.sliced(cut));
        qsizetype kept = 0;
        while (const auto reply = parser.next()) {
            ++replies;
            QVERIFY(reply->code >= 100 && reply->code <= 599);
            QVERIFY(!reply->lines.isEmpty());
            QCOMPARE(reply->lines.size(), reply->rawLines.size());
            for (const QByteArray &line : reply->rawLines) {
                kept += line.size();
                QVERIFY(!line.contains('\n'));
            }
            const auto path = parsePwdPath(*reply);
            QVERIFY(!path || (!path->isEmpty() && !path->contains('\0')));
            QVERIFY(parseEpsvPort(*reply) == 0 || reply->code == 229);
            QVERIFY(parsePasvPort(*reply) == 0 || reply->code == 227);
            QVERIFY(!parseMdtm(*reply).isValid() || reply->code == 213);
        }
        QVERIFY(kept <= bytes.size());
    }
    QVERIFY(replies > linesPerSeed);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::ListingMutations)
#include "tst_ListingMutations.moc"
