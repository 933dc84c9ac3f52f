#include "ftp/protocol/ListingRows.h"

namespace venlo::test
{

/// The DOS format, EPLF and MLSD, line by line.
class OtherListings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dos_data();
    void dos();
    void eplf_data();
    void eplf();
    void mlsd_data();
    void mlsd();
    void leftOutOfMlsd_data();
    void leftOutOfMlsd();
    void notAListEntry_data();
    void notAListEntry();
    void notAnMlsdEntry_data();
    void notAnMlsdEntry();
};

constexpr auto file = ListedEntry::Kind::File;
constexpr auto folder = ListedEntry::Kind::Folder;
constexpr auto linked = ListedEntry::Kind::Link;

void OtherListings::dos_data()
{
    addColumns();
    addRow("folder", "11-21-26  05:10AM       <DIR>          name",
           {"name", folder, "2026-11-21T05:10:00", 0});
    addRow("file", "11-21-26  05:10PM                 1000 name",
           {"name", file, "2026-11-21T17:10:00", 1000});
    addRow("midnight", "11-21-26  12:00AM                    7 name",
           {"name", file, "2026-11-21T00:00:00", 7});
    addRow("noon", "11-21-26  12:00PM                    7 name",
           {"name", file, "2026-11-21T12:00:00", 7});
    addRow("year of four digits", "11-21-2026  05:10AM       <DIR>          name",
           {"name", folder, "2026-11-21T05:10:00", 0});
    addRow("clock of 24 hours", "11-21-26  17:10                    7 name",
           {"name", file, "2026-11-21T17:10:00", 7});
    addRow("last year of this century's half", "11-21-69  05:10AM   7 name",
           {"name", file, "2069-11-21T05:10:00", 7});
    addRow("first year of the last century's half", "11-21-70  05:10AM   7 name",
           {"name", file, "1970-11-21T05:10:00", 7});
    addRow("year first", "2026-11-21  05:10                    7 name",
           {"name", file, "2026-11-21T05:10:00", 7});
    addRow("year first with slashes", "2026/11/21  05:10    <DIR>          name",
           {"name", folder, "2026-11-21T05:10:00", 0});
    addRow("thousands with commas", "11-21-26  05:10AM    4,294,967,297 name",
           {"name", file, "2026-11-21T05:10:00", 4294967297});
    addRow("thousands with points", "11-21-26  05:10AM    1.234 name",
           {"name", file, "2026-11-21T05:10:00", 1234});
    addRow("file with a leading blank", "11-21-26  05:10AM                 1000  name",
           {" name", file, "2026-11-21T05:10:00", 1000});
    addRow("folder with a leading blank", "11-21-26  05:10AM       <DIR>           name",
           {" name", folder, "2026-11-21T05:10:00", 0});
    addRow("folder one blank away", "11-21-26  05:10AM <DIR> name",
           {"name", folder, "2026-11-21T05:10:00", 0});
    addRow("several blanks inside", "11-21-26  05:10AM       <DIR>          a  b ",
           {"a  b ", folder, "2026-11-21T05:10:00", 0});
    addRow("file named like the folder sign", "11-21-26  05:10AM    7 <DIR>",
           {"<DIR>", file, "2026-11-21T05:10:00", 7});
    addRow("Japanese in CP932", "11-21-26  05:10AM    7 \x93\xfa\x96\x7b",
           {"\x93\xfa\x96\x7b", file, "2026-11-21T05:10:00", 7});
}

void OtherListings::dos()
{
    QFETCH(QByteArray, line);
    compareRow(parseLines(ListingParser::Source::List, {line}), false);
}

void OtherListings::eplf_data()
{
    addColumns();
    addRow("file", "+i8388621.48594,m825718503,r,s280,\tdjb.html",
           {"djb.html", file, "1996-03-01T22:15:03", 280});
    addRow("folder", "+i8388621.50690,m824255907,/,\t514",
           {"514", folder, "1996-02-13T23:58:27", 0});
    addRow("folder with a size", "+m0,/,s512,\tname", {"name", folder, "1970-01-01T00:00:00", 0});
    addRow("without a time", "+r,s7,\tname", {"name", file, "", 7});
    addRow("without any fact", "+\tname", {"name", file, "", 0});
    addRow("unknown facts", "+i1,up644,x,r,s7,\tname", {"name", file, "", 7});
    addRow("without the last comma", "+r,s7\tname", {"name", file, "", 7});
    addRow("leading and trailing blank", "+r,\t name ", {" name ", file, "", 0});
    addRow("tab in the name", "+r,\ta\tb", {"a\tb", file, "", 0});
    addRow("4 GiB and more", "+r,s4294967297,\tname", {"name", file, "", 4294967297});
}

void OtherListings::eplf()
{
    QFETCH(QByteArray, line);
    compareRow(parseLines(ListingParser::Source::List, {line}), true);
}

void OtherListings::mlsd_data()
{
    addColumns();
    const QByteArray time = "2026-11-21T05:10:33";
    addRow("file", "type=file;size=1000;modify=20261121051033;perm=adfr; name",
           {"name", file, time, 1000});
    addRow("folder", "type=dir;modify=20261121051033; name", {"name", folder, time, 0});
    addRow("folder with sizd", "type=dir;sizd=4096;modify=20261121051033; name",
           {"name", folder, time, 0});
    addRow("letter case of facts", "Type=FILE;SIZE=7;Modify=20261121051033; Name",
           {"Name", file, time, 7});
    addRow("time with a fraction", "type=file;size=7;modify=20261121051033.25; name",
           {"name", file, "2026-11-21T05:10:33.250", 7});
    addRow("time with a long fraction", "type=file;size=7;modify=20261121051033.123999; name",
           {"name", file, "2026-11-21T05:10:33.123", 7});
    addRow("no time", "type=file;size=7; name", {"name", file, "", 7});
    addRow("a time that is none", "type=file;size=7;modify=20260231000000; name",
           {"name", file, "", 7});
    addRow("no size", "type=file;modify=20261121051033; name", {"name", file, time, 0});
    addRow("no type but a size", "size=7;modify=20261121051033; name", {"name", file, time, 7});
    addRow("no type but a folder's size", "sizd=7;modify=20261121051033; name",
           {"name", folder, time, 0});
    addRow("link with its target", "type=OS.unix=slink:/target;size=7; name",
           {"name", linked, "", 7});
    addRow("link with a blank in its target", "type=OS.unix=slink:/a b;size=7; name",
           {"name", linked, "", 7});
    addRow("link without a target", "type=OS.UNIX=symlink;size=7; name", {"name", linked, "", 7});
    addRow("device", "type=OS.unix=chr-1/3; name", {"name", file, "", 0});
    addRow("unknown facts", "type=file;size=7;unix.mode=0644;x.y=1,2;media-type=; name",
           {"name", file, "", 7});
    addRow("4 GiB and more", "type=file;size=4294967297; name", {"name", file, "", 4294967297});
    addRow("leading blank", "type=file;size=7;  name", {" name", file, "", 7});
    addRow("trailing blank", "type=file;size=7; name ", {"name ", file, "", 7});
    addRow("name with a semicolon", "type=file;size=7; a; b", {"a; b", file, "", 7});
    addRow("name with an equals sign", "type=file;size=7; type=dir;", {"type=dir;", file, "", 7});
    addRow("Japanese", "type=file;size=7; 日本", {"日本", file, "", 7});
    addRow("words of a failed listing", "type=file;size=7; Permission denied",
           {"Permission denied", file, "", 7});
}

void OtherListings::mlsd()
{
    QFETCH(QByteArray, line);
    const Listing listing = parseLines(ListingParser::Source::Mlsd, {line});
    QVERIFY(listing.fromMlsd);
    compareRow(listing, true);
}

void OtherListings::leftOutOfMlsd_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("the directory itself") << QByteArray("type=cdir;modify=20261121051033; .");
    QTest::newRow("the directory by its path") << QByteArray("type=cdir; /pub");
    QTest::newRow("its parent") << QByteArray("Type=PDIR; ..");
    QTest::newRow("its parent as a folder") << QByteArray("type=dir; ..");
    QTest::newRow("itself as a file") << QByteArray("type=file;size=1; .");
    QTest::newRow("hidden file") << QByteArray("type=file;size=1; .htaccess");
    QTest::newRow("hidden folder") << QByteArray("type=dir; .git");
}

void OtherListings::leftOutOfMlsd()
{
    QFETCH(QByteArray, line);
    const Listing listing = parseLines(ListingParser::Source::Mlsd, {line});
    QVERIFY(listing.entries.empty());
    QVERIFY2(listing.whole, qPrintable(listing.why));
}

void OtherListings::notAListEntry_data()
{
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char *what, const char *line) {
        QTest::newRow(what) << QByteArray(line);
    };
    row("DOS day first", "21-11-26  05:10AM    7 name");
    row("DOS without a name", "11-21-26  05:10AM    7");
    row("DOS folder without a name", "11-21-26  05:10AM       <DIR>          ");
    row("DOS hour 13 PM", "11-21-26  13:10PM    7 name");
    row("DOS hour 0 AM", "11-21-26  00:10AM    7 name");
    row("DOS 30 February", "02-30-26  05:10AM    7 name");
    row("DOS size in wrong groups", "11-21-26  05:10AM    1,23 name");
    row("DOS size with two separators", "11-21-26  05:10AM    1,234.567 name");
    row("DOS size in words", "11-21-26  05:10AM    big name");
    row("DOS leading blank", " 11-21-26  05:10AM    7 name");
    row("EPLF without a tab", "+i1,r,s280 name");
    row("EPLF without a name", "+i1,r,s280,\t");
    row("EPLF size that is no number", "+r,sx,\tname");
    row("EPLF time that is no number", "+r,m-1,\tname");
    row("EPLF time beyond the calendar", "+r,m9223372036854775807,\tname");
    row("MLSD line in a LIST", "type=file;size=7; name");
}

void OtherListings::notAListEntry()
{
    QFETCH(QByteArray, line);
    const Listing listing = parseLines(ListingParser::Source::List, {line});
    QVERIFY(listing.entries.empty());
    QVERIFY(!listing.whole);
    QVERIFY(!listing.why.isEmpty());
}

void OtherListings::notAnMlsdEntry_data()
{
    QTest::addColumn<QByteArray>("line");
    const auto row = [](const char *what, const char *line) {
        QTest::newRow(what) << QByteArray(line);
    };
    row("no facts", " name");
    row("no name", "type=file;size=7; ");
    row("no blank", "type=file;size=7;name");
    row("facts that are not ended", "type=file;size=7 name");
    row("neither type nor size", "modify=20261121051033; name");
    row("fact without a sign", "type=file;size; name");
    row("fact without a name", "type=file;=7; name");
    row("size that is no number", "type=file;size=big; name");
    row("negative size", "type=file;size=-1; name");
    row("size beyond 63 bits", "type=file;size=9223372036854775808; name");
    row("empty size", "type=file;size=; name");
    row("a LIST line", "-rw-r--r-- 1 user group 7 Nov 21 05:10 name");
}

void OtherListings::notAnMlsdEntry()
{
    QFETCH(QByteArray, line);
    const Listing listing = parseLines(ListingParser::Source::Mlsd, {line});
    QVERIFY(listing.entries.empty());
    QVERIFY(!listing.whole);
    QVERIFY(!listing.why.isEmpty());
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::OtherListings)
#include "tst_OtherListings.moc"
