#include "db/DbFixture.h"

#include <QTest>

using venlo::test::DbFixture;
using venlo::test::failure;

namespace
{
QVariant text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

/// Two sites, two patterns, one cached site and a comparison, as the program would leave them.
void fill(DbFixture &fixture)
{
    fixture.makeCacheTable(QStringLiteral("Www"));
    const char *const statements[] = {
        "Insert Into msSite (sName, sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb, sMemo)"
        " Values ('本社', 'ftp.example.jp', 'user', 'pw', '', 1, 0, 'メモ')",
        "Insert Into msSite (sName, sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb, sMemo)"
        " Values ('Alpha', 'a.example', 'u', 'p', 'px', 0, 1, '')",
        "Insert Into msSync (sSync, sLph, sName, sFph, bCfl, bCfd, sMemo)"
        " Values ('毎日', 'C:\\web', '本社', '/pub', 1, 0, 'm')",
        "Insert Into msSync (sSync, sLph, sName, sFph) Values ('Weekly', 'D:\\x', 'Alpha', '/')",
        "Insert Into Www (sDir, bFd, sName, dDate, nSize) Values ('/', 1, 'pub', #24/05/06 "
        "07:08:09#, 0)",
        "Insert Into Www (sDir, bFd, sName, dDate, nSize) Values ('/', 0, 'index.html', #24/05/06 "
        "07:08:10#, 1001)",
        "Insert Into Www (sDir, bFd, sName, dDate, nSize) Values ('/pub', 0, 'B.txt', #24/05/06 "
        "07:08:12#, 20)",
        "Insert Into Www (sDir, bFd, sName, dDate, nSize) Values ('/pub', 0, 'a.txt', #24/05/06 "
        "07:08:11#, 10)",
        "Insert Into Www (sDir, bFd, sName, dDate, nSize) Values ('/pub', 1, 'sub', #24/05/06 "
        "07:08:13#, 0)",
        "Insert Into Www (sDir, bFd, sName, dDate, nSize) Values ('/pub/sub', 0, 'deep.txt', "
        "#24/05/06 07:08:14#, 30)",
        "Insert Into Www (sDir, bFd, sName, dDate, nSize) Values ('/public', 0, 'p.txt', #24/05/06 "
        "07:08:15#, 40)",
        "Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('.', '24/05/06 07:08', '', '')",
        "Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('/Sub', '', '24/05/06 07:08', '')",
        "Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('/both', '24/05/06 07:09', '24/05/06 "
        "07:10', '')",
        "Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd) Values ('.', 'Doc.txt', '', 0, "
        "'24/05/06 07:08', 5, '')",
        "Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd) Values ('/Sub', 'b', '24/05/06 "
        "07:08', 7, '', 0, '')",
        "Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd) Values ('/Sub', 'A', 'x', 8, 'y', "
        "9, '')"};
    venlo::Transaction transaction(fixture.db());
    for (const char *statement : statements)
        fixture.db().run(QString::fromUtf8(statement));
    transaction.commit();
}

const char *const allCached = "Select sDir, bFd, sName, nSize From Www Order By sDir, sName";
const char *const allSites = "Select * From msSite Order By sName";
const char *const allPatterns = "Select * From msSync Order By sSync";
const char *const allFolders = "Select * From tbFold Order By sPh";
const char *const allFiles = "Select * From tbFile Order By sPh, sFL";
} // namespace

/// Every statement of the program, as it is written where it is used, with its meaning.
class tst_Statements : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void queries_data();
    void queries();
    void changes_data();
    void changes();
    void failures_data();
    void failures();
    void cacheTableIsMadeOnce();
};

void tst_Statements::queries_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<QString>("rows");
    const auto row = [](const char *name, const char *sql, const QVariantList &values,
                        const char *rows) {
        QTest::newRow(name) << QString::fromUtf8(sql) << values << QString::fromUtf8(rows);
    };
    const QVariant www = text("www");
    // The registry of sites.
    row("does the site keep its cache: yes", "Select bSvDb From msSite Where sName='ALPHA'", {},
        "-1");
    row("does the site keep its cache: no", "Select bSvDb From msSite Where sName='本社'", {}, "0");
    row("does the site keep its cache: unknown", "Select bSvDb From msSite Where sName='x'", {},
        "");
    row("site names", "Select sName From msSite Order By sName", {}, "Alpha / 本社");
    row("site of the pane, two blanks",
        "Select sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb  From msSite Where sName='alpha'", {},
        "a.example|u|p|px|0|-1");
    row("site of an unattended run",
        "Select sSvr, sUsr, sPwd, sPxy, bPsv From msSite Where sName='?'", {text("本社")},
        "ftp.example.jp|user|pw||-1");
    row("site of the dialog",
        "Select sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb, sMemo From msSite Where sName='本社'", {},
        "ftp.example.jp|user|pw||-1|0|メモ");
    row("is the site name taken", "Select Count(*) From msSite Where sName='?'", {text("ALPHA")},
        "1");
    row("is the site name free", "Select Count(*) From msSite Where sName='?'", {text("Beta")},
        "0");
    // The registry of patterns.
    row("pattern names", "Select sSync From msSync Order By sSync", {}, "Weekly / 毎日");
    row("options of a pair", "Select bCfl, bCfd From msSync Where sLph='?' And sFph='?'",
        {text("c:\\WEB"), text("/PUB")}, "-1|0");
    row("pattern of the dialog",
        "Select sLph, sName, sFph, bCfl, bCfd, sMemo From msSync Where sSync='毎日'", {},
        "C:\\web|本社|/pub|-1|0|m");
    row("a pattern of four values: options are no, remark is Null",
        "Select sLph, sName, sFph, bCfl, bCfd, sMemo From msSync Where sSync='weekly'", {},
        "D:\\x|Alpha|/|0|0|Null");
    row("is the pattern name taken", "Select Count(*) From msSync Where sSync='?'",
        {text("WEEKLY")}, "1");
    row("is the pair taken, trailing blank",
        "Select Count(*) From msSync Where sLph='?' And sFph='?' ", {text("C:\\web"), text("/pub")},
        "1");
    row("pattern of a pair on a site",
        "Select sSync From msSync Where sLph='?' And sName='?' And sFph='?'",
        {text("C:\\web"), text("本社"), text("/pub")}, "毎日");
    row("folders of a pattern", "Select sLph, sName, sFph From msSync Where sSync='?'",
        {text("毎日")}, "C:\\web|本社|/pub");
    // The cache.
    row("sub-folders", "Select sName From ? Where sDir='?' And bFd=1 Order By sName",
        {www, text("/pub")}, "sub");
    row("file names without regard to case",
        "Select sName From ? Where sDir='?' And bFd=0 Order By sName", {www, text("/PUB")},
        "a.txt / B.txt");
    row("details", "Select bFd, sName, dDate, nSize From ? Where sDir='?' Order By sName",
        {www, text("/")}, "0|index.html|24/05/06 07:08:10|1001 / 1|pub|24/05/06 07:08:09|0");
    row("names", "Select bFd, sName From ? Where sDir='?' Order By sName", {www, text("/pub")},
        "0|a.txt / 0|B.txt / 1|sub");
    row("has sub-folders", "Select Count(*) From ? Where sDir='?' And bFd=1", {www, text("/")},
        "1");
    row("is the entry cached", "Select Count(*) From ? Where sDir='?' And sName='?' And bFd=?",
        {www, text("/pub"), text("A.TXT"), 0}, "1");
    row("is the file a folder", "Select Count(*) From ? Where sDir='?' And sName='?' And bFd=?",
        {www, text("/pub"), text("a.txt"), true}, "0");
    row("entry", "Select dDate, nSize From ? Where sDir='?' And sName='?' And bFd=?",
        {www, text("/pub"), text("a.txt"), false}, "24/05/06 07:08:11|10");
    row("entry before a download, trailing blank",
        "Select dDate, nSize From ? Where sDir='?' And sName='?' And bFd = 0 ",
        {www, text("/pub"), text("b.TXT")}, "24/05/06 07:08:12|20");
    row("is a directory cached", "Select Count(*) From ? Where sDir='?'", {www, text("/pub")}, "3");
    row("file list",
        "Select sDir, sName, nSize, dDate From ? Where bFd=0 And sDir Like '?*' "
        "Order By sDir, sName",
        {www, text("/pub/")}, "/pub/sub|deep.txt|30|24/05/06 07:08:14");
    // The comparison.
    row("remote root", "Select sDir, sName, dDate From ? Where bFd = 1 And sDir= '?' And sName='?'",
        {www, text("/"), text("pub")}, "/|pub|24/05/06 07:08:09");
    row("remote folders",
        "Select sDir, sName, dDate From ? Where bFd = 1 And (sDir Like '?*') Order By sDir, sName",
        {www, text("/")}, "/|pub|24/05/06 07:08:09 / /pub|sub|24/05/06 07:08:13");
    row("remote files, a sibling with the same beginning included",
        "Select sDir, sName, dDate, nSize From ? Where bFd = 0 And sDir Like '?*' "
        "Order By sDir, sName",
        {www, text("/PUB")},
        "/pub|a.txt|24/05/06 07:08:11|10 / /pub|B.txt|24/05/06 07:08:12|20 / "
        "/pub/sub|deep.txt|24/05/06 07:08:14|30 / /public|p.txt|24/05/06 07:08:15|40");
    // The review.
    row("folders up", "Select sPh, sUL, sUF, sEd From tbFold Order By sPh", {},
        ".|24/05/06 07:08|| / /both|24/05/06 07:09|24/05/06 07:10| / /Sub||24/05/06 07:08|");
    row("folders down", "Select sPh, sUF, sUL, sEd From tbFold Order By sPh", {},
        ".||24/05/06 07:08| / /both|24/05/06 07:10|24/05/06 07:09| / /Sub|24/05/06 07:08||");
    row("files up",
        "Select sFL, nSL, sUL, nSF, sUF, sEd  From tbFile Where sPh='/SUB' Order By sFL", {},
        "A|8|x|9|y| / b|7|24/05/06 07:08|0||");
    row("files down", "Select sFL, nSF, sUF, nSL, sUL, sEd  From tbFile Where sPh='.' Order By sFL",
        {}, "Doc.txt|5|24/05/06 07:08|0||");
}

void tst_Statements::queries()
{
    QFETCH(QString, sql);
    QFETCH(QVariantList, values);
    DbFixture fixture;
    fill(fixture);
    QTEST(fixture.rows(sql, values), "rows");
}

void tst_Statements::changes_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QVariantList>("values");
    QTest::addColumn<int>("affected");
    QTest::addColumn<QString>("look");
    QTest::addColumn<QString>("rows");
    const auto row = [](const char *name, const char *sql, const QVariantList &values, int affected,
                        const char *look, const char *rows) {
        QTest::newRow(name) << QString::fromUtf8(sql) << values << affected
                            << QString::fromUtf8(look) << QString::fromUtf8(rows);
    };
    const QVariant www = text("WWW");
    const char *const siteOnly = "Select sName, sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb, sMemo From "
                                 "msSite Where sName='Beta'";
    // The registry of sites.
    row("register a site",
        "Insert Into msSite (sName, sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb, sMemo)"
        " Values ('?', '?', '?', '?', '?', ?, ?, '?')",
        {text("Beta"), text("s"), text("u"), text("p"), text(""), 0, 1, text("")}, 1, siteOnly,
        "Beta|s|u|p||0|-1|");
    row("update a site",
        "Update msSite Set sName='?', sSvr='?', sUsr='?', sPwd='?', sPxy='?', bPsv=?, bSvDb=?, "
        "sMemo='?' Where sName='?'",
        {text("Beta"), text("s"), text("u"), text("p"), text("x"), -1, 0, text("m"), text("ALPHA")},
        1, siteOnly, "Beta|s|u|p|x|-1|0|m");
    row("a site can take a name that is taken",
        "Update msSite Set sName='?', sSvr='?', sUsr='?', sPwd='?', sPxy='?', bPsv=?, bSvDb=?, "
        "sMemo='?' Where sName='?'",
        {text("本社"), text("s"), text("u"), text("p"), text(""), 0, 0, text(""), text("Alpha")}, 1,
        "Select Count(*) From msSite Where sName='本社'", "2");
    row("patterns follow the site", "Update msSync Set sName='?' Where sName='?'",
        {text("Beta"), text("本社")}, 1, "Select sSync, sName From msSync Order By sSync",
        "Weekly|Alpha / 毎日|Beta");
    row("delete a site", "Delete From msSite Where sName='?'", {text("alpha")}, 1,
        "Select sName From msSite", "本社");
    row("delete a site's patterns", "Delete From msSync Where sName='?'", {text("ALPHA")}, 1,
        "Select sSync From msSync", "毎日");
    // The registry of patterns.
    row("register a pattern, table in lower case",
        "Insert into mssync (sSync, sLph, sName, sFph) Values ('?', '?', '?', '?')",
        {text("new"), text("E:\\"), text("Alpha"), text("/n")}, 1,
        "Select * From msSync Where sSync='new'", "new|E:\\|Alpha|/n|0|0|Null");
    row("update a pattern",
        "Update msSync Set sSync='?', sLph='?', sName='?', sFph='?', bCfl=?, bCfd=?, sMemo='?' "
        "Where sSync='?'",
        {text("日"), text("l"), text("n"), text("f"), 0, 1, text("x"), text("毎日")}, 1,
        "Select * From msSync Where sSync='日'", "日|l|n|f|0|-1|x");
    row("delete a pattern", "Delete From msSync Where sSync='?'", {text("weekly")}, 1,
        "Select sSync From msSync", "毎日");
    // The cache.
    row("empty a cache", "Delete From Www", {}, 7, allCached, "");
    row("add a file", "Insert Into ? (sDir, bFd, sName, dDate, nSize) Values ('?', ?, '?', #?#, ?)",
        {www, text("/n"), 0, text("f"), text("24/05/06 07:08:09"), Q_INT64_C(2147483647)}, 1,
        "Select * From Www Where sDir='/n'", "/n|0|f|24/05/06 07:08:09|2147483647");
    row("add a folder",
        "Insert Into ? (sDir, bFd, sName, dDate, nSize) Values ('?', ?, '?', #?#, 0)",
        {www, text("/n"), 1, text("d"), text("99/05/06 00:00:00")}, 1,
        "Select * From Www Where sDir='/n'", "/n|1|d|99/05/06 00:00:00|0");
    row("replace a directory, siblings too", "Delete From ? Where sDir like '?*'",
        {www, text("/pub")}, 5, allCached, "/|0|index.html|1001 / /|1|pub|0");
    row("refresh a subtree", "Delete From ? Where sDir Like '?*'", {www, text("/PUB/")}, 1,
        allCached,
        "/|0|index.html|1001 / /|1|pub|0 / /pub|0|a.txt|10 / /pub|0|B.txt|20 / /pub|1|sub|0 / "
        "/public|0|p.txt|40");
    row("rename a folder", "Update ? Set sName='?' Where sDir='?' And sName='?' And bFd=1",
        {www, text("neu"), text("/pub"), text("SUB")}, 1,
        "Select sName From Www Where sDir='/pub' And bFd=1", "neu");
    row("rename a folder's subtree, siblings too",
        "Update ? Set sDir='?' + Mid(sDir,?) Where sDir Like '?*'",
        {www, text("/公開"), 5, text("/pub")}, 5, allCached,
        "/|0|index.html|1001 / /|1|pub|0 / /公開|0|a.txt|10 / /公開|0|B.txt|20 / /公開|1|sub|0 / "
        "/公開/sub|0|deep.txt|30 / /公開lic|0|p.txt|40");
    row("rename a file", "Update ? Set sName='?' Where sDir='?' And sName='?' And bFd=0",
        {www, text("A2.txt"), text("/pub"), text("a.TXT")}, 1,
        "Select sName From Www Where sDir='/pub' And bFd=0 Order By sName", "A2.txt / B.txt");
    row("rename changes letter case only",
        "Update ? Set sName='?' Where sDir='?' And sName='?' And bFd=0",
        {www, text("A.TXT"), text("/pub"), text("a.txt")}, 1,
        "Select sName From Www Where sDir='/pub' And bFd=0 Order By sName", "A.TXT / B.txt");
    row("forget a file", "Delete From ? Where sDir='?' And sName='?' And bFd=0",
        {www, text("/pub"), text("b.txt")}, 1, "Select Count(*) From Www", "6");
    row("forget a folder", "Delete From ? Where sDir='?' And sName='?' And bFd=1",
        {www, text("/pub"), text("sub")}, 1, "Select Count(*) From Www", "6");
    row("a folder is not forgotten as a file",
        "Delete From ? Where sDir='?' And sName='?' And bFd=0", {www, text("/pub"), text("sub")}, 0,
        "Select Count(*) From Www", "7");
    // The comparison.
    row("empty the folders", "Delete From tbFold", {}, 3, allFolders, "");
    row("empty the files", "Delete From tbFile", {}, 3, allFiles, "");
    row("remote root row", "Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('.', '', '?', '') ",
        {text("24/01/02 03:04")}, 1, "Select * From tbFold Where sUF='24/01/02 03:04'",
        ".||24/01/02 03:04|");
    row("remote folder row", "Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('?', '', '?', '') ",
        {text("/n"), text("24/01/02 03:04")}, 1, "Select * From tbFold Where sPh='/n'",
        "/n||24/01/02 03:04|");
    row("remote file row",
        "Insert Into tbFile (sPh, sFL, sUL, nSL, sUF, nSF, sEd) Values ('?', '?', '', 0, '?', ?, "
        "'') ",
        {text("/n"), text("f"), text("24/01/02 03:04"), 12}, 1,
        "Select * From tbFile Where sPh='/n'", "/n|f||0|24/01/02 03:04|12|");
    row("local root meets the remote one", "Update tbFold Set sUL='?' Where sPh='.'", {text("t")},
        1, "Select * From tbFold Where sPh='.'", ".|t||");
    row("local root row", "Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('.', '?', '', '')",
        {text("t")}, 1, "Select * From tbFold Where sUL='t'", ".|t||");
    row("local folder meets the remote one", "Update tbFold Set sUL='?' Where sPh='?'",
        {text("t"), text("/SUB")}, 1, "Select * From tbFold Where sPh='/sub'",
        "/Sub|t|24/05/06 07:08|");
    row("local folder meets nothing", "Update tbFold Set sUL='?' Where sPh='?'",
        {text("t"), text("/n")}, 0, "Select Count(*) From tbFold", "3");
    row("local folder row", "Insert Into tbFold (sPh, sUL, sUF, sEd) Values ('?', '?', '', '')",
        {text("/n"), text("t")}, 1, "Select * From tbFold Where sPh='/n'", "/n|t||");
    row("local file meets the remote one in another case",
        "Update tbFile Set nSL=?, sUL='?' Where sPh='?' And sFL='?'",
        {4, text("t"), text("."), text("dOC.TXT")}, 1, "Select * From tbFile Where sPh='.'",
        ".|Doc.txt|t|4|24/05/06 07:08|5|");
    row("local file row",
        "Insert Into tbFile (sPh, sFL, nSL, sUL, nSF, sUF, sEd) Values ('?', '?', ?, '?', 0, '', "
        "'')",
        {text("/n"), text("f"), 3, text("t")}, 1, "Select * From tbFile Where sPh='/n'",
        "/n|f|t|3||0|");
    const char *const folderMarks = "Select sPh, sEd From tbFold Order By sPh";
    const char *const fileMarks = "Select sFL, sEd From tbFile Order By sFL";
    row("mark folders", "Update tbFold Set sEd='比較'", {}, 3, folderMarks,
        ".|比較 / /both|比較 / /Sub|比較");
    row("mark files", "Update tbFile Set sEd='比較'", {}, 3, fileMarks,
        "A|比較 / b|比較 / Doc.txt|比較");
    row("down: folders to add", "Update tbFold Set sEd='追加' Where sUL=''", {}, 1, folderMarks,
        ".| / /both| / /Sub|追加");
    row("down: folders to delete", "Update tbFold Set sEd='削除' Where sUF=''", {}, 1, folderMarks,
        ".|削除 / /both| / /Sub|");
    row("down: files to add", "Update tbFile Set sEd='追加' Where sUL=''", {}, 1, fileMarks,
        "A| / b| / Doc.txt|追加");
    row("down: files to delete", "Update tbFile Set sEd='削除' Where sUF=''", {}, 1, fileMarks,
        "A| / b|削除 / Doc.txt|");
    row("up: folders to add", "Update tbFold Set sEd='追加' Where sUF=''", {}, 1, folderMarks,
        ".|追加 / /both| / /Sub|");
    row("up: folders to delete", "Update tbFold Set sEd='削除' Where sUL=''", {}, 1, folderMarks,
        ".| / /both| / /Sub|削除");
    row("up: files to add", "Update tbFile Set sEd='追加' Where sUF=''", {}, 1, fileMarks,
        "A| / b|追加 / Doc.txt|");
    row("up: files to delete", "Update tbFile Set sEd='削除' Where sUL=''", {}, 1, fileMarks,
        "A| / b| / Doc.txt|削除");
}

void tst_Statements::changes()
{
    QFETCH(QString, sql);
    QFETCH(QVariantList, values);
    QFETCH(QString, look);
    DbFixture fixture;
    fill(fixture);
    QTEST(fixture.db().run(sql, values), "affected");
    QTEST(fixture.rows(look), "rows");
}

void tst_Statements::failures_data()
{
    QTest::addColumn<QString>("sql");
    QTest::addColumn<QVariantList>("values");
    const auto row = [](const char *name, const char *sql, const QVariantList &values) {
        QTest::newRow(name) << QString::fromUtf8(sql) << values;
    };
    row("seven columns, five values",
        "Insert Into msSync (sSync, sLph, sName, sFph, bCfl, bCfd, sMemo) Values ('?', '?', '?', "
        "'?', '?')",
        {text("a"), text("b"), text("c"), text("d"), 1, 0, text("m")});
    row("a column sPx and a comma before From",
        "Select sSvr, sUsr, sPwd, sPx, bPsv, From msSite Where sName='本社'", {});
    row("a pattern name that is taken in another case",
        "Insert into mssync (sSync, sLph, sName, sFph) Values ('?', '?', '?', '?')",
        {text("WEEKLY"), text("l"), text("n"), text("f")});
    row("a second entry that differs in case only",
        "Insert Into ? (sDir, bFd, sName, dDate, nSize) Values ('?', ?, '?', #?#, ?)",
        {text("Www"), text("/pub"), 0, text("A.TXT"), text("24/05/06 07:08:09"), 1});
    row("a pattern name that is taken",
        "Insert into mssync (sSync, sLph, sName, sFph) Values ('?', '?', '?', '?')",
        {text("毎日"), text("l"), text("n"), text("f")});
    row("a file of a folder's name",
        "Insert Into ? (sDir, bFd, sName, dDate, nSize) Values ('?', ?, '?', #?#, ?)",
        {text("Www"), text("/pub"), 0, text("sub"), text("24/05/06 07:08:09"), 1});
    row("a size above 2,147,483,647",
        "Insert Into ? (sDir, bFd, sName, dDate, nSize) Values ('?', ?, '?', #?#, ?)",
        {text("Www"), text("/n"), 0, text("f"), text("24/05/06 07:08:09"), Q_INT64_C(2147483648)});
    row("an entry without a time",
        "Insert Into ? (sDir, bFd, sName, dDate, nSize) Values ('?', ?, '?', #?#, ?)",
        {text("Www"), text("/n"), 0, text("f"), text(""), 1});
    row("a local size above 2,147,483,647",
        "Update tbFile Set nSL=?, sUL='?' Where sPh='?' And sFL='?'",
        {Q_INT64_C(2147483648), text("t"), text("."), text("Doc.txt")});
}

void tst_Statements::failures()
{
    QFETCH(QString, sql);
    QFETCH(QVariantList, values);
    DbFixture fixture;
    fill(fixture);
    const auto everything = [&fixture] {
        QString all;
        for (const char *look : {allCached, allSites, allPatterns, allFolders, allFiles})
            all += fixture.rows(QString::fromUtf8(look)) + QLatin1Char('\n');
        return all;
    };
    const QString before = everything();
    bool ok = false;
    fixture.db().ExecSql(venlo::filled(sql, values), ok);
    QVERIFY(!ok);
    QVERIFY(!fixture.db().lastError().isEmpty());
    const bool query = sql.startsWith(QLatin1String("Select"));
    const QString words = failure([&] {
        if (query)
            (void)fixture.db().query(sql, values);
        else
            fixture.db().run(sql, values);
    });
    QVERIFY(words != QLatin1String("(none)"));
    QCOMPARE(everything(), before);
}

void tst_Statements::cacheTableIsMadeOnce()
{
    DbFixture fixture;
    fixture.makeCacheTable(QStringLiteral("My_Site_1"));
    fixture.makeCacheTable(QStringLiteral("支店Ａ"));
    const QStringList own{QStringLiteral("msSite"), QStringLiteral("msSync"),
                          QStringLiteral("tbFold"), QStringLiteral("tbFile")};
    QCOMPARE(fixture.db().tableNames(),
             own + QStringList({QStringLiteral("My_Site_1"), QStringLiteral("支店Ａ")}));
    QVERIFY(failure([&] { fixture.makeCacheTable(QStringLiteral("my_site_1")); }) !=
            QLatin1String("(none)"));
    QVERIFY(failure([&] { fixture.makeCacheTable(QStringLiteral("支店ａ")); }) !=
            QLatin1String("(none)"));
    QCOMPARE(fixture.rows(QStringLiteral("Select Count(*) From MY_SITE_1")), QStringLiteral("0"));
}

QTEST_GUILESS_MAIN(tst_Statements)
#include "tst_Statements.moc"
