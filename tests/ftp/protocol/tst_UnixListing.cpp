#include "ftp/protocol/ListingRows.h"

namespace venlo::test
{

/// The long format of Unix servers, line by line.
class UnixListing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void date_data();
    void date();
    void entry_data();
    void entry();
    void name_data();
    void name();
    void link_data();
    void link();
    void yearOfAnUndatedDay_data();
    void yearOfAnUndatedDay();
    void notAnEntry_data();
    void notAnEntry();

private:
    static void compareLine()
    {
        QFETCH(QByteArray, line);
        compareRow(parseLines(ListingParser::Source::List, {line}), false);
    }
};

constexpr auto file = ListedEntry::Kind::File;
constexpr auto folder = ListedEntry::Kind::Folder;
constexpr auto linked = ListedEntry::Kind::Link;

/// A line of a 1,000-byte file with this date and name.
QByteArray dated(const QByteArray &date, const QByteArray &name = "name")
{
    return "-rw-r--r--   1 user     group        1000 " + date + ' ' + name;
}

void UnixListing::date_data()
{
    addColumns();
    const auto row = [](const char *what, const QByteArray &date, const QByteArray &time,
                        bool dayOnly = false) {
        addRow(what, dated(date), {"name", file, time, 1000, dayOnly});
    };
    row("month day clock", "Nov 21 05:10", "2026-11-21T05:10:00");
    row("one-digit day", "Nov  1 23:59", "2026-11-01T23:59:00");
    row("one-digit hour", "Nov 21  5:10", "2026-11-21T05:10:00");
    row("month in capitals", "NOV 21 05:10", "2026-11-21T05:10:00");
    row("month in small letters", "nov 21 05:10", "2026-11-21T05:10:00");
    row("year instead of a clock shows the day only", "Nov 21  2024", "2024-11-21T00:00:00", true);
    row("year one blank away", "Nov 21 2024", "2024-11-21T00:00:00", true);
    row("year before 1970", "Jan  1  1960", "1960-01-01T00:00:00", true);
    row("leap day with a year", "Feb 29  2024", "2024-02-29T00:00:00", true);
    row("clock with seconds and year", "Nov 21 05:10:33 2024", "2024-11-21T05:10:33");
    row("clock with seconds", "Nov 21 05:10:33", "2026-11-21T05:10:33");
    row("leap second", "Dec 31 23:59:60 2016", "2016-12-31T23:59:59");
    row("day first", "21 Nov 05:10", "2026-11-21T05:10:00");
    row("day first with a year", "21 Nov  2024", "2024-11-21T00:00:00", true);
    row("day first with a point", "21. Nov 2024", "2024-11-21T00:00:00", true);
    row("ISO", "2026-11-21 05:10", "2026-11-21T05:10:00");
    row("ISO with seconds", "2026-11-21 05:10:33", "2026-11-21T05:10:33");
    row("ISO with fraction and zone", "2026-11-21 05:10:33.123456789 +0900", "2026-11-21T05:10:33");
    row("Japanese month, plain day", "11月 21 05:10", "2026-11-21T05:10:00");
    row("Japanese month with a leading blank", " 1月 21 05:10", "2026-01-21T05:10:00");
    row("Japanese month and day", "11月 21日 05:10", "2026-11-21T05:10:00");
    row("Japanese month and day in one", "11月21日 05:10", "2026-11-21T05:10:00");
    row("Japanese month and day with a year", "11月 21日 2024年", "2024-11-21T00:00:00", true);
    row("Japanese month with a plain year", "11月 21  2024", "2024-11-21T00:00:00", true);
    row("Japanese year first", "2024年 11月 21日", "2024-11-21T00:00:00", true);
    row("Japanese in CP932", "11\x8c\x8e 21\x93\xfa 05:10", "2026-11-21T05:10:00");
    row("Japanese in EUC-JP", "11\xb7\xee 21\xc6\xfc 05:10", "2026-11-21T05:10:00");
    row("Japanese year in CP932", "11\x8c\x8e 21\x93\xfa 2024\x94\x4e", "2024-11-21T00:00:00",
        true);
}

void UnixListing::date()
{
    compareLine();
}

void UnixListing::entry_data()
{
    addColumns();
    const QByteArray when = " Nov 21 05:10 name";
    const QByteArray time = "2026-11-21T05:10:00";
    addRow("folder", "drwxr-xr-x   2 user group  4096" + when, {"name", folder, time, 0});
    addRow("folder with sticky bit", "drwxrwxrwt 2 user group 4096" + when,
           {"name", folder, time, 0});
    addRow("set-user-id file", "-rwsr-Sr-x 1 root root 7" + when, {"name", file, time, 7});
    addRow("ACL sign", "-rw-r--r--+ 1 user group 7" + when, {"name", file, time, 7});
    addRow("security context sign", "drwxr-xr-x. 2 user group 7" + when, {"name", folder, time, 0});
    addRow("attribute sign", "-rw-r--r--@ 1 user group 7" + when, {"name", file, time, 7});
    addRow("numeric owner and group", "-rw-r--r-- 1 1001 1002 7" + when, {"name", file, time, 7});
    addRow("no group", "-rw-r--r-- 1 user 7" + when, {"name", file, time, 7});
    addRow("no owner and no group", "-rw-r--r-- 1 7" + when, {"name", file, time, 7});
    addRow("no link count either", "-rw-r--r-- 7" + when, {"name", file, time, 7});
    addRow("group of two words", "-rw-r--r-- 1 user Domain Users 7" + when,
           {"name", file, time, 7});
    addRow("owner and group of two words", "-rw-r--r-- 1 Web Admin Domain Users 7" + when,
           {"name", file, time, 7});
    addRow("owner named like a month", "-rw-r--r-- 1 Nov Dec 7" + when, {"name", file, time, 7});
    addRow("empty file", "-rw-r--r-- 1 user group 0" + when, {"name", file, time, 0});
    addRow("4 GiB and more", "-rw-r--r-- 1 user group 4294967297" + when,
           {"name", file, time, 4294967297});
    addRow("largest size", "-rw-r--r-- 1 user group 9223372036854775807" + when,
           {"name", file, time, 9223372036854775807});
    addRow("character device", "crw-rw-rw- 1 root root 1, 3" + when, {"name", file, time, 0});
    addRow("block device with joined numbers", "brw-rw---- 1 root disk 8,0" + when,
           {"name", file, time, 0});
    addRow("pipe", "prw-r--r-- 1 user group 0" + when, {"name", file, time, 0});
    addRow("socket", "srwxr-xr-x 1 user group 0" + when, {"name", file, time, 0});
    addRow("NetWare folder", "d [RWCEAFMS] supervisor            512" + when,
           {"name", folder, time, 0});
    addRow("NetWare file", "- [R----F--] rhesus         214059" + when,
           {"name", file, time, 214059});
    addRow("sizes of two forks", "-------r-- 326 1391972 1392298" + when,
           {"name", file, time, 1392298});
    addRow("folder with a count", "drwxrwxr-x folder 2" + when, {"name", folder, time, 0});
}

void UnixListing::entry()
{
    compareLine();
}

void UnixListing::name_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *what, const char *bytes) {
        QTest::newRow(what) << QByteArray(bytes) << QString::fromUtf8(bytes);
    };
    row("leading blank", " name");
    row("three leading blanks", "   name");
    row("trailing blank", "name ");
    row("several blanks inside", "a  b   c");
    row("one blank only", " ");
    row("apostrophe", "it's");
    row("quote", "a\"b\"");
    row("per cent", "100%20.txt");
    row("number sign", "#1.txt");
    row("asterisk and question mark", "a*?b");
    row("arrow in an ordinary file", "a -> b");
    row("hidden", ".htaccess");
    row("three points", "...");
    row("looks like a date", "Nov 21 05:10 name");
    row("looks like a year", "2024 report");
    row("looks like a zone", "+0900 name");
    row("words of a failed listing", "ls: cannot open directory, Permission denied");
    row("words of a cut listing", "Output limited to 2000 matches, listing truncated");
    row("looks like a total", "total 12");
    row("tab inside", "a\tb");
    row("control character", "a\x01\x1b[31mb");
    row("Japanese", "日本語 テスト.txt");
    row("half-width katakana", "ﾃｽﾄ");
    row("outside the basic plane", "𠮷野家");
    row("right-to-left override", "a\xe2\x80\xae"
                                  "txt.exe");
    QTest::newRow("Japanese in CP932 with a backslash byte")
        << QByteArray("\x95\x5c\x8e\xa6.txt") << QStringLiteral("表示.txt");
    QTest::newRow("Japanese in EUC-JP")
        << QByteArray("\xc6\xfc\xcb\xdc\xb8\xec") << QStringLiteral("日本語");
    QTest::newRow("bytes of no encoding")
        << QByteArray("a\xff\xfe") << QStringLiteral("a\u00ff\u00fe");
}

void UnixListing::name()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, shown);
    for (const char *date : {"Nov 21 05:10", "Nov 21  2024", "2026-11-21 05:10"}) {
        const Listing listing = parseLines(ListingParser::Source::List, {dated(date, bytes)});
        QVERIFY2(listing.whole, qPrintable(listing.why));
        QCOMPARE(listing.entries.size(), std::size_t(1));
        QCOMPARE(listing.entries.front().rawName, bytes);
        QCOMPARE(listing.entries.front().name, shown);
    }
}

void UnixListing::link_data()
{
    addColumns();
    const auto row = [](const char *what, int size, const QByteArray &shown,
                        const QByteArray &linkName) {
        addRow(what,
               "lrwxrwxrwx 1 user group " + QByteArray::number(size) + " Nov 21 05:10 " + shown,
               {linkName, linked, "2026-11-21T05:10:00", size});
    };
    row("the target is cut off", 7, "name -> /target", "name");
    row("target with blanks", 10, "name -> the target", "name");
    row("an arrow in the name", 6, "a -> b -> target", "a -> b");
    row("an arrow in the target is told by the size", 6, "name -> b -> c", "name");
    row("the last arrow where the size tells nothing", 1234, "a -> b -> c", "a -> b");
    row("a name never ends behind a slash", 1234, "name -> /x -> y", "name");
    row("without a target", 4, "name", "name");
    row("with an empty target", 0, "name -> ", "name -> ");
    row("a relative target", 9, "name -> ../target", "name");
}

void UnixListing::link()
{
    compareLine();
}

void UnixListing::yearOfAnUndatedDay_data()
{
    QTest::addColumn<QDate>("serverToday");
    QTest::addColumn<QByteArray>("date");
    QTest::addColumn<QDate>("expected");
    const auto row = [](const char *what, QDate serverToday, const char *date, QDate expected) {
        QTest::newRow(what) << serverToday << QByteArray(date) << expected;
    };
    row("today", {2026, 11, 21}, "Nov 21 05:10", {2026, 11, 21});
    row("yesterday", {2026, 11, 21}, "Nov 20 05:10", {2026, 11, 20});
    row("tomorrow is this year", {2026, 11, 21}, "Nov 22 05:10", {2026, 11, 22});
    row("the day after tomorrow is last year", {2026, 11, 21}, "Nov 23 05:10", {2025, 11, 23});
    row("December seen in January", {2026, 1, 2}, "Dec 31 05:10", {2025, 12, 31});
    row("New Year seen on the last day", {2026, 12, 31}, "Jan  1 00:10", {2027, 1, 1});
    row("second of January seen on the last day", {2026, 12, 31}, "Jan  2 00:10", {2026, 1, 2});
    row("leap day of this year", {2028, 3, 1}, "Feb 29 05:10", {2028, 2, 29});
    row("leap day seen in a common year", {2025, 2, 1}, "Feb 29 05:10", {2024, 2, 29});
    row("leap day tomorrow", {2028, 2, 28}, "Feb 29 05:10", {2028, 2, 29});
    row("leap day before it came", {2028, 2, 1}, "Feb 29 05:10", {2024, 2, 29});
    row("leap day across 2100", {2103, 6, 1}, "Feb 29 05:10", {2096, 2, 29});
}

void UnixListing::yearOfAnUndatedDay()
{
    QFETCH(QDate, serverToday);
    QFETCH(QByteArray, date);
    QFETCH(QDate, expected);
    const Listing listing = parseLines(ListingParser::Source::List, {dated(date)}, serverToday);
    QVERIFY2(listing.whole, qPrintable(listing.why));
    QCOMPARE(listing.entries.front().time.date(), expected);
}

void UnixListing::notAnEntry_data()
{
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char *what, const QByteArray &line) { QTest::newRow(what) << line; };
    row("no name", "-rw-r--r-- 1 user group 7 Nov 21 05:10");
    row("no name behind a blank", "-rw-r--r-- 1 user group 7 Nov 21 05:10 ");
    row("unknown month", dated("Foo 21 05:10"));
    row("day 32", dated("Nov 32 05:10"));
    row("30 February", dated("Feb 30  2024"));
    row("leap day of a common year", dated("Feb 29  2025"));
    row("hour 24", dated("Nov 21 24:00"));
    row("minute 60", dated("Nov 21 05:60"));
    row("year of five digits", dated("Nov 21 12024"));
    row("Japanese month 13", dated("13月 21日 05:10"));
    row("ISO month 13", dated("2026-13-21 05:10"));
    row("ISO fraction without a zone", dated("2026-11-21 05:10:33.5"));
    row("size that is no number", "-rw-r--r-- 1 user group big Nov 21 05:10 name");
    row("negative size", "-rw-r--r-- 1 user group -7 Nov 21 05:10 name");
    row("size beyond 63 bits", "-rw-r--r-- 1 user group 9223372036854775808 Nov 21 05:10 name");
    row("mode too short", "-rw-r--r- 1 user group 7 Nov 21 05:10 name");
    row("mode too long", "-rw-r--r--xx 1 user group 7 Nov 21 05:10 name");
    row("mode that the server could not read", "d????????? ? ? ? ? ? name");
    row("unknown type", "?rw-r--r-- 1 user group 7 Nov 21 05:10 name");
    row("leading blank", " -rw-r--r-- 1 user group 7 Nov 21 05:10 name");
    row("cut in the date", "-rw-r--r-- 1 user group 7 Nov 21");
    row("cut in the mode", "-rw-r");
}

void UnixListing::notAnEntry()
{
    QFETCH(QByteArray, line);
    const Listing listing = parseLines(ListingParser::Source::List, {line});
    QVERIFY(listing.entries.empty());
    QVERIFY(!listing.whole);
    QVERIFY(listing.why.contains(QString::fromUtf8(line)));
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::UnixListing)
#include "tst_UnixListing.moc"
