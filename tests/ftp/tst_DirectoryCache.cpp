// The cache of remote listings: what becomes a row, when the server is asked, what is not trusted.
#include "db/Store.h"
#include "ftp/CacheFixture.h"
#include "ftp/ListingTime.h"
#include "ftp/SiteTable.h"
#include "ftp/protocol/Listing.h"
#include "support/DaemonTests.h"

#include <QTest>

using namespace venlo;
using venlo::test::addDaemons;
using venlo::test::CacheFixture;
using venlo::test::EngineFixture;
using venlo::test::FtpDaemon;
using venlo::test::ListDialect;
using venlo::test::ScriptedServer;
using venlo::test::slash;
using venlo::test::web;

namespace
{

QDateTime utc(const char *text)
{
    QDateTime time = QDateTime::fromString(QString::fromLatin1(text), Qt::ISODate);
    time.setTimeSpec(Qt::UTC);
    return time;
}

} // namespace

class tst_DirectoryCache : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void normalises_data();
    void normalises();
    void tableNames();
    void rows();
    void rootChildrenHaveOneSlash();
    void emptyDirectoryIsListedAgain();
    void listedOnlyWhenAbsent();
    void sizes_data();
    void sizes();
    void times_data();
    void times();
    void queriesOnRows();
    void notCacheFixture();
    void brokenListing_data();
    void brokenListing();
    void refusedDirectory();
    void misfits_data();
    void misfits();
    void refreshDropsSiblingsByPrefix();
    void refreshListsDepthFirst();
    void refreshGoesOnAfterALoss();
    void refreshCancelled();
    void refreshThatDiesLeavesItsMark();
    void pathWithServerTextIsRefused();
    void addedRowTakesNewValues();
    void rawBytesAddressTheEntry();
    void neverListedPathIsLookedUp();
    void pathsBelongToTheirSite();
    void quotesWork();
    void wildcardsInNamesWork();
    void renamedFolderRewritesByPrefix();
    void renamedFolderKeepsItsMark();
    void listOffsetIsLearned_data();
    void listOffsetIsLearned();
    void listOffsetIsNotAskedForEver();
    void dayOnlyTakesMdtmMinute();
    void dayOnlyFilesAreFoundByIndex();
    void daemons_data() { addDaemons(); }
    void daemons();
};

void tst_DirectoryCache::normalises_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("normal");
    QTest::newRow("no slashes") << "pub/"
                                << "/pub";
    QTest::newRow("both slashes") << "/pub/"
                                  << "/pub";
    QTest::newRow("normal already") << "/pub"
                                    << "/pub";
    QTest::newRow("empty") << ""
                           << "/";
    QTest::newRow("root") << "/"
                          << "/";
    QTest::newRow("server text in front") << "SERVER/pub"
                                          << "/pub";
    QTest::newRow("bare server text") << "SERVER"
                                      << "/";
    QTest::newRow("two trailing slashes lose one") << "/pub//"
                                                   << "/pub/";
}

void tst_DirectoryCache::normalises()
{
    QFETCH(QString, given);
    QFETCH(QString, normal);
    CacheFixture f;
    QVERIFY(f.start());
    given.replace(QLatin1String("SERVER"), f.server.server());
    f.cache.sjNormDir(given);
    QCOMPARE(given, normal);
}

void tst_DirectoryCache::tableNames()
{
    CacheFixture f;
    QVERIFY(f.start(QStringLiteral("My.Site-1")));
    QCOMPARE(f.session.currentSite(), QStringLiteral("My_Site_1"));
    f.session.CloseInternet();
    QVERIFY(f.connectTo(QStringLiteral("my.site-1"), f.server.server(), f.server.user(),
                        f.server.password()));
    QCOMPARE(f.session.currentSite(), QStringLiteral("My_Site_1"));
}

void tst_DirectoryCache::rows()
{
    CacheFixture f;
    f.server.put("/index.html", QByteArray(1000, 'x'), utc("2026-03-04T05:06:07"));
    f.server.makeFolder("/pub");
    f.server.tree().makeLink("/link", "index.html");
    QVERIFY(f.start());
    QVERIFY(f.load(slash()));
    const QStringList rows = f.cacheRows(web());
    QCOMPARE(rows.size(), 3);
    // 05:06:07 UTC is 14:06:07 in Japan; the size is one more than the true one.
    QCOMPARE(rows.at(0), QStringLiteral("/|0|index.html|26/03/04 14:06:07|1001"));
    QVERIFY2(rows.at(1).startsWith(QLatin1String("/|0|link|")), qPrintable(rows.at(1)));
    QVERIFY2(rows.at(2).startsWith(QLatin1String("/|1|pub|")), qPrintable(rows.at(2)));
    QVERIFY(rows.at(2).endsWith(QLatin1String("|0")));
}

void tst_DirectoryCache::rootChildrenHaveOneSlash()
{
    CacheFixture f;
    f.server.put("/pub/deep/a.txt", "hello");
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    QStringList places;
    for (const QString &row : f.cacheRows(web()))
        places.append(row.section(QLatin1Char('|'), 0, 2));
    QCOMPARE(places, QStringList({QStringLiteral("/|1|pub"), QStringLiteral("/pub|1|deep"),
                                  QStringLiteral("/pub/deep|0|a.txt")}));
    QCOMPARE(f.person.texts(test::ScriptedPerson::What::ShowWait),
             QStringList(QStringLiteral("FTP側のﾃﾞｨﾚｸﾄﾘ情報を更新しています")));
    QCOMPARE(f.person.openWaits(), 0);
    QCOMPARE(f.person.messageLines().value(1),
             QStringLiteral("/pub ﾌｫﾙﾀﾞとﾌｧｲﾙ情報を記録しています･･･"));
    QCOMPARE(f.person.messageLines().last(), QString());
}

void tst_DirectoryCache::emptyDirectoryIsListedAgain()
{
    CacheFixture f;
    QVERIFY(f.start());
    QVERIFY(f.load(slash()));
    QVERIFY(f.load(slash()));
    QCOMPARE(f.server.count("MLSD"), 2);
    QVERIFY(f.cacheRows(web()).isEmpty());
}

void tst_DirectoryCache::listedOnlyWhenAbsent()
{
    CacheFixture f;
    f.server.put("/a.txt", "hello");
    QVERIFY(f.start());
    QVERIFY(f.load(slash()));
    f.server.put("/b.txt", "hello");
    QCOMPARE(f.cache.caFileNames(slash()), QStringLiteral("a.txt"));
    QCOMPARE(f.server.count("MLSD"), 1);
    QVERIFY(f.load(slash(), DirectoryCache::Replace));
    QCOMPARE(f.cache.caFileNames(slash()), QStringLiteral("a.txt\rb.txt"));
    QCOMPARE(f.server.count("MLSD"), 2);
}

void tst_DirectoryCache::sizes_data()
{
    QTest::addColumn<qint64>("size");
    QTest::addColumn<qint64>("cached");
    QTest::newRow("empty") << 0LL << 1LL;
    QTest::newRow("thousand") << 1000LL << 1001LL;
    QTest::newRow("low word negative") << 3'000'000'000LL << 3'000'000'001LL;
    QTest::newRow("largest low word") << 4'294'967'295LL << 4'294'967'296LL;
    QTest::newRow("4 GiB: the high word counts one less") << 4'294'967'296LL << 4'294'967'296LL;
}

void tst_DirectoryCache::sizes()
{
    QFETCH(qint64, size);
    QFETCH(qint64, cached);
    QCOMPARE(cachedSizeOf(size), cached);
}

void tst_DirectoryCache::times_data()
{
    QTest::addColumn<QDateTime>("wallClock");
    QTest::addColumn<int>("zoneHours");
    QTest::addColumn<QString>("shown");
    const QDateTime noon = utc("2026-07-08T12:00:00");
    QTest::newRow("Japan: the wall clock itself") << noon << 9 << "2026-07-08T12:00:00";
    QTest::newRow("UTC: noon becomes three") << noon << 0 << "2026-07-08T03:00:00";
    QTest::newRow("western zone: the day before") << noon << -5 << "2026-07-07T22:00:00";
    QTest::newRow("no time: the earliest day") << QDateTime() << 9 << "1601-01-01T00:00:00";
}

void tst_DirectoryCache::times()
{
    QFETCH(QDateTime, wallClock);
    QFETCH(int, zoneHours);
    QFETCH(QString, shown);
    const double day = listingDay(wallClock, zoneHours * 3600);
    static const QDateTime dayZero(QDate(1899, 12, 30), QTime(0, 0), Qt::UTC);
    const QDateTime got = dayZero.addMSecs(qRound64(day * 86'400'000.0));
    QCOMPARE(got.toString(Qt::ISODate), shown + QLatin1Char('Z'));
}

void tst_DirectoryCache::queriesOnRows()
{
    CacheFixture f;
    f.server.put("/pub/b.txt", "12345", utc("2026-03-04T05:06:07"));
    f.server.put("/pub/A.txt", "1", utc("2026-03-04T05:06:07"));
    f.server.makeFolder("/pub/sub");
    QVERIFY(f.start());
    const QString pub = QStringLiteral("/pub");
    QCOMPARE(f.cache.caFileNames(pub), QStringLiteral("A.txt\rb.txt"));
    QCOMPARE(f.cache.caSubFolds(pub), QStringLiteral("sub"));
    QVERIFY(f.cache.caHasSub(pub));
    QVERIFY(!f.cache.caHasSub(QStringLiteral("/pub/sub")));
    QString folders;
    QString files;
    f.cache.caDirNames(pub, folders, files);
    QCOMPARE(folders, QStringLiteral("sub"));
    QCOMPARE(files, QStringLiteral("A.txt\rb.txt"));
    f.cache.caDirList(pub, folders, files);
    QVERIFY2(folders.startsWith(QLatin1String("sub\t")), qPrintable(folders));
    QCOMPARE(files, QStringLiteral("A.txt\t26/03/04 14:06:07\t2B\rb.txt\t26/03/04 14:06:07\t6B"));
    QString date;
    QString size;
    f.cache.caEntInfo(pub, QStringLiteral("b.txt"), false, date, size);
    QCOMPARE(date, QStringLiteral("26/03/04 14:06:07"));
    QCOMPARE(size, QStringLiteral("6B|"));
    f.cache.caEntInfo(pub, QStringLiteral("b.txt"), true, date, size);
    QCOMPARE(date, QString());
    QCOMPARE(size, QString());
    f.cache.caEntInfo(pub, QStringLiteral("missing"), false, date, size);
    QCOMPARE(date, QString());
}

void tst_DirectoryCache::notCacheFixture()
{
    EngineFixture f;
    bool ok = true;
    QString names = QStringLiteral("untouched");
    f.cache.caLoadDir(slash(), DirectoryCache::IfAbsent, names, ok);
    QVERIFY(ok);
    QCOMPARE(names, QStringLiteral("untouched"));
    QCOMPARE(f.cache.caFileNames(slash()), QString());
    QVERIFY(!f.cache.caHasSub(slash()));
    f.cache.caRefresh(slash());
    QVERIFY(f.person.events().empty());
}

void tst_DirectoryCache::brokenListing_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<bool>("result");
    QTest::addColumn<int>("rows");
    QTest::addColumn<QString>("line");
    const QString first = QStringLiteral("FtpFindFirstFile");
    const QString later = QStringLiteral("InternetFindNextFile");
    QTest::newRow("refused") << "550" << false << 0 << first;
    QTest::newRow("transient refusal") << "450" << false << 0 << first;
    QTest::newRow("421") << "421" << false << 0 << first;
    QTest::newRow("closed data port") << "port" << false << 0 << first;
    QTest::newRow("no entry before the break") << "drop at 0" << false << 0 << first;
    QTest::newRow("no byte moves") << "stall at 0" << false << 0 << first;
    QTest::newRow("could not be opened") << "words" << false << 0 << first;
    QTest::newRow("reset in the middle") << "reset" << true << 1 << later;
    QTest::newRow("dropped in the middle") << "drop" << true << 1 << later;
    QTest::newRow("stalls in the middle") << "stall" << true << 1 << later;
    QTest::newRow("426 at the end") << "426" << true << 2 << later;
    QTest::newRow("no completion") << "no completion" << true << 2 << later;
    QTest::newRow("no opening reply") << "no opening" << true << 2 << later;
    QTest::newRow("completion says it could not be opened") << "226 words" << true << 2 << later;
    QTest::newRow("says it is truncated") << "truncated" << true << 1 << later;
    QTest::newRow("a line nobody understands") << "garbage" << true << 1 << later;
}

void tst_DirectoryCache::brokenListing()
{
    QFETCH(QString, fault);
    QFETCH(bool, result);
    QFETCH(int, rows);
    QFETCH(QString, line);
    CacheFixture f;
    f.server.options().mlsd = false;
    f.server.put("/aaaaaaaa.txt", "hello");
    f.server.put("/bbbbbbbb.txt", "hello");
    const QByteArray entry = "-rw-r--r-- 1 ftp ftp 5 Mar  4  2024 a.txt\r\n";
    constexpr int middle = 90; // inside the second line
    auto rule = f.server.on("LIST");
    if (fault == QLatin1String("550") || fault == QLatin1String("450") ||
        fault == QLatin1String("421"))
        rule.reply(fault.toInt(), "no");
    else if (fault == QLatin1String("port"))
        f.server.on("EPSV").closedPort();
    else if (fault == QLatin1String("drop at 0"))
        rule.dropAfterBytes(0);
    else if (fault == QLatin1String("stall at 0"))
        rule.stallAfterBytes(0);
    else if (fault == QLatin1String("words"))
        rule.data("ls: cannot open directory '/': Permission denied\r\n");
    else if (fault == QLatin1String("reset"))
        rule.slow(85, 200).resetAfterBytes(middle); // a reset takes along what was not read
    else if (fault == QLatin1String("drop"))
        rule.dropAfterBytes(middle);
    else if (fault == QLatin1String("stall"))
        rule.stallAfterBytes(middle);
    else if (fault == QLatin1String("426"))
        rule.completion("426 broken");
    else if (fault == QLatin1String("226 words"))
        rule.completion("226 Transfer done (but failed to open directory).");
    else if (fault == QLatin1String("no completion"))
        rule.withoutCompletion();
    else if (fault == QLatin1String("no opening"))
        rule.opening("");
    else if (fault == QLatin1String("truncated"))
        rule.data(entry + "Output limited to 1 matches\r\n");
    else if (fault == QLatin1String("garbage"))
        rule.data(entry + "what is this\r\n");
    QVERIFY(f.start());
    QCOMPARE(f.load(slash()), result);
    QCOMPARE(f.cacheRows(web()).size(), rows);
    QCOMPARE(f.errorLines(), QStringList(line));
    QCOMPARE(f.incomplete(slash()), QStringList(slash()));
    QVERIFY(f.session.state() == Session::Connected || f.session.state() == Session::Open);

    // Listed whole, it is trusted again.
    f.server.script().clear();
    QVERIFY(f.load(slash(), DirectoryCache::Replace));
    QCOMPARE(f.incomplete(slash()), QStringList());
    QCOMPARE(f.cacheRows(web()).size(), 2);
}

void tst_DirectoryCache::refusedDirectory()
{
    CacheFixture f;
    QVERIFY(f.start());
    QVERIFY(!f.load(QStringLiteral("/missing")));
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("sjCrntDir Err: /missing")));
    QCOMPARE(f.server.count("CWD", "/missing"), 3);
    QCOMPARE(f.server.count("MLSD"), 0);
    const auto marks = f.cache.incompleteUnder(QStringLiteral("/missing"));
    QCOMPARE(marks.size(), size_t(1));
    QVERIFY(marks.front().refused);
}

void tst_DirectoryCache::misfits_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("name");
    const QByteArray longName(256, 'n');
    QTest::newRow("two names differ in letter case")
        << QByteArray("-rw-r--r-- 1 f f 5 Mar  4  2024 A.TXT\r\n") << QStringLiteral("A.TXT");
    QTest::newRow("larger than the column")
        << QByteArray("-rw-r--r-- 1 f f 2147483647 Mar  4  2024 big.iso\r\n")
        << QStringLiteral("big.iso");
    QTest::newRow("longer than the column")
        << QByteArray("-rw-r--r-- 1 f f 5 Mar  4  2024 " + longName + "\r\n")
        << QString::fromLatin1(longName);
    QTest::newRow("a folder of the same name")
        << QByteArray("drwxr-xr-x 1 f f 5 Mar  4  2024 a.txt\r\n") << QStringLiteral("a.txt");
}

void tst_DirectoryCache::misfits()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, name);
    CacheFixture f;
    f.server.options().mlsd = false;
    f.server.setRawListing("/", "-rw-r--r-- 1 f f 5 Mar  4  2024 a.txt\r\n" + line +
                                    "-rw-r--r-- 1 f f 5 Mar  4  2024 z.txt\r\n");
    QVERIFY(f.start());
    bool named = false;
    try {
        (void)f.load(slash());
    } catch (const DbError &error) {
        named = error.words().contains(name);
    }
    QVERIFY(named);
    QCOMPARE(f.cacheRows(web()).size(), 2);
    QCOMPARE(f.incomplete(slash()), QStringList(slash()));
    f.cache.caRefresh(slash()); // names it in the mark instead of ending half way
    QCOMPARE(f.cacheRows(web()).size(), 2);
    QVERIFY(f.cache.incompleteUnder(slash()).front().why.contains(name));
}

void tst_DirectoryCache::refreshDropsSiblingsByPrefix()
{
    CacheFixture f;
    f.server.put("/pub/a.txt", "hello");
    f.server.put("/public/b.txt", "hello");
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    QCOMPARE(f.cacheRows(web()).size(), 4);
    f.cache.caRefresh(QStringLiteral("/pub"));
    QCOMPARE(f.cacheRows(web()).size(), 3);
    QCOMPARE(f.cache.caFileNames(QStringLiteral("/public")), QStringLiteral("b.txt"));
    QCOMPARE(f.cacheRows(web()).size(), 4);
}

void tst_DirectoryCache::refreshListsDepthFirst()
{
    CacheFixture f;
    f.flags.unattendedTransfer = true;
    f.server.makeFolder("/a/a1");
    f.server.makeFolder("/b");
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    QList<QByteArray> walked;
    for (const QByteArray &command : f.server.commands()) {
        if (command.startsWith("CWD "))
            walked.append(command.mid(4));
    }
    QCOMPARE(walked, QList<QByteArray>({"/a", "/a/a1", "/b"}));
    QVERIFY(f.person.messageLines().isEmpty());
}

void tst_DirectoryCache::refreshGoesOnAfterALoss()
{
    CacheFixture f;
    for (const char *path : {"/a/1.txt", "/b/2.txt", "/c/3.txt"})
        f.server.put(path, "hello");
    f.server.on("MLSD").nth(3).dropBeforeReply();
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    QCOMPARE(f.incomplete(slash()), QStringList(QStringLiteral("/b")));
    QCOMPARE(f.cache.caFileNames(QStringLiteral("/c")), QStringLiteral("3.txt"));
    QCOMPARE(f.server.logins(), 2);
}

void tst_DirectoryCache::refreshCancelled()
{
    CacheFixture f;
    for (const char *path : {"/a/1.txt", "/b/2.txt", "/c/3.txt"})
        f.server.put(path, "hello");
    QVERIFY(f.start());
    f.person.cancelAfter(2);
    f.cache.caRefresh(slash());
    // What was not listed is never taken for empty.
    QCOMPARE(f.incomplete(slash()), QStringList({QStringLiteral("/b"), QStringLiteral("/c")}));
    QCOMPARE(f.person.openWaits(), 0);
}

void tst_DirectoryCache::refreshThatDiesLeavesItsMark()
{
    CacheFixture f;
    for (const char *path : {"/a/1.txt", "/b/2.txt"})
        f.server.put(path, "hello");
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    QCOMPARE(f.incomplete(slash()), QStringList());
    // What another process would find at any moment of the walk.
    Database other(f.person, f.folder.path() + QLatin1Char('/'));
    bool opened = false;
    other.OpenDb(opened);
    QVERIFY(opened);
    IncompleteMarks marks(other);
    QStringList seen;
    f.person.onYield([&] {
        const auto found = marks.under(web(), slash());
        seen.append(found.empty() ? QStringLiteral("none") : found.front().dir);
        seen.append(QString::number(f.database.store().depth()));
    });
    f.cache.caRefresh(slash());
    f.person.onYield({});
    QVERIFY(seen.size() >= 6);
    seen.removeDuplicates();
    QCOMPARE(seen, QStringList({slash(), QStringLiteral("0")}));
    QCOMPARE(f.incomplete(slash()), QStringList());
}

void tst_DirectoryCache::pathWithServerTextIsRefused()
{
    CacheFixture f;
    QVERIFY(f.start());
    const QString path = QStringLiteral("/backup/") + f.server.server() + QStringLiteral("/x");
    QVERIFY(f.cache.refusesPath(path));
    QVERIFY(f.cache.refusesPath(path.mid(1)));
    QVERIFY(!f.cache.refusesPath(f.server.server() + QStringLiteral("/x")));
    const auto before = f.server.commands().size();
    QVERIFY(!f.load(path));
    f.cache.caRefresh(path);
    QCOMPARE(f.server.commands().size(), before);
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("sjCrntDir Err: ") + path,
                                          QStringLiteral("sjCrntDir Err: ") + path}));
}

void tst_DirectoryCache::addedRowTakesNewValues()
{
    CacheFixture f;
    f.server.put("/a.txt", "hello", utc("2026-03-04T05:06:07"));
    QVERIFY(f.start());
    QVERIFY(f.load(slash()));
    const QString local = f.path(QStringLiteral("a.txt"));
    QFile file(local);
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.write("hello world");
    file.flush();
    QVERIFY(file.setFileTime(QDateTime(QDate(2026, 5, 6), QTime(7, 8, 9)),
                             QFileDevice::FileModificationTime));
    file.close();
    f.cache.caAddFile(local, slash(), QStringLiteral("a.txt"));
    QCOMPARE(f.cacheRows(web()), QStringList(QStringLiteral("/|0|a.txt|26/05/06 07:08:09|11")));
    f.cache.caAddFile(local, slash(), QStringLiteral("it's new?.txt"));
    f.cache.caAddFold(f.folder.path(), slash(), QStringLiteral("sub"));
    const QStringList rows = f.cacheRows(web());
    QCOMPARE(rows.value(1), QStringLiteral("/|0|it's new?.txt|26/05/06 07:08:09|11"));
    QVERIFY2(rows.value(2).startsWith(QLatin1String("/|1|sub|")), qPrintable(rows.value(2)));
}

void tst_DirectoryCache::rawBytesAddressTheEntry()
{
    CacheFixture f;
    f.server.options().utf8 = false;
    const QByteArray sjis = "\x93\xfa\x96\x7b"; // 日本
    f.server.put("/" + sjis + "/" + sjis + ".txt", "hello");
    QVERIFY(f.start());
    const QString dir = QStringLiteral("/日本");
    f.cache.caRefresh(slash());
    QCOMPARE(f.cache.caFileNames(dir), QStringLiteral("日本.txt"));
    QCOMPARE(f.cache.rawPath(dir), "/" + sjis);
    QCOMPARE(f.cache.rawName(dir, QStringLiteral("日本.txt")), sjis + ".txt");
    // A new name goes in what the server's names are in.
    QCOMPARE(f.cache.rawName(dir, QStringLiteral("本日.txt")), QByteArray("\x96\x7b\x93\xfa.txt"));
    QCOMPARE(f.server.count("CWD", "/" + sjis), 1);
}

void tst_DirectoryCache::neverListedPathIsLookedUp()
{
    CacheFixture f;
    f.server.options().utf8 = false;
    const QByteArray sjis = "\x93\xfa\x96\x7b"; // 日本
    f.server.put("/" + sjis + "/" + sjis + "/a.txt", "hello");
    QVERIFY(f.start());
    const QString dir = QStringLiteral("/日本/日本");
    QVERIFY(f.load(dir));
    QCOMPARE(f.cache.caFileNames(dir), QStringLiteral("a.txt"));
    QCOMPARE(f.cache.rawPath(dir), "/" + sjis + "/" + sjis);
    QCOMPARE(f.incomplete(slash()), QStringList());
    QCOMPARE(f.errorLines(), QStringList());
    QCOMPARE(f.server.logins(), 1);
    // What was only looked up is not in the cache.
    QCOMPARE(f.cacheRows(web()).size(), 1);
}

void tst_DirectoryCache::pathsBelongToTheirSite()
{
    CacheFixture f;
    f.server.options().utf8 = false;
    const QByteArray sjis = "\x93\xfa\x96\x7b"; // 日本
    f.server.put("/" + sjis + "/a.txt", "hello");
    QVERIFY(f.start());
    const QString dir = QStringLiteral("/日本");
    QCOMPARE(f.cache.rawPath(dir), dir.toUtf8());
    QVERIFY(f.load(slash()));
    QCOMPARE(f.cache.rawPath(dir), "/" + sjis);

    ScriptedServer other;
    other.put(dir.toUtf8() + "/b.txt", "hello");
    QVERIFY(other.start());
    f.session.Disconnect();
    f.registerSite(QStringLiteral("other"), other.server(), other.user(), other.password());
    QVERIFY(f.connectTo(QStringLiteral("other"), other.server(), other.user(), other.password()));
    QVERIFY(f.load(dir));
    QCOMPARE(f.cache.caFileNames(dir), QStringLiteral("b.txt"));
    QCOMPARE(other.count("CWD", "/" + sjis), 0);
}

void tst_DirectoryCache::quotesWork()
{
    CacheFixture f;
    f.server.put("/it's/o'clock.txt", "hello");
    QVERIFY(f.start());
    const QString dir = QStringLiteral("/it's");
    f.cache.caRefresh(slash());
    QCOMPARE(f.cache.caSubFolds(slash()), QStringLiteral("it's"));
    QCOMPARE(f.cache.caFileNames(dir), QStringLiteral("o'clock.txt"));
    f.cache.forgetFile(dir, QStringLiteral("o'clock.txt"));
    QCOMPARE(f.cacheRows(web()).size(), 1);
    f.cache.forgetFolder(slash(), QStringLiteral("it's"));
    QCOMPARE(f.cacheRows(web()).size(), 0);
}

void tst_DirectoryCache::wildcardsInNamesWork()
{
    CacheFixture f;
    for (const char *path : {"/a?b/1.txt", "/a?b/s/2.txt", "/ab/3.txt", "/axb/4.txt", "/a*b/5.txt"})
        f.server.put(path, "hello");
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    const QString odd = QStringLiteral("/a?b");
    QString folders;
    QString files;
    f.cache.caDirNames(odd, folders, files);
    QCOMPARE(folders, QStringLiteral("s"));
    QCOMPARE(files, QStringLiteral("1.txt"));
    QCOMPARE(f.cache.caFileNames(QStringLiteral("/a*b")), QStringLiteral("5.txt"));
    f.cache.renamed(slash(), QStringLiteral("a?b"), QStringLiteral("n?w"), true);
    QCOMPARE(f.cache.caFileNames(QStringLiteral("/n?w/s")), QStringLiteral("2.txt"));
    QCOMPARE(f.cache.caFileNames(QStringLiteral("/ab")), QStringLiteral("3.txt"));
    QCOMPARE(f.cache.caFileNames(QStringLiteral("/axb")), QStringLiteral("4.txt"));
    f.cache.forgetFolder(slash(), QStringLiteral("n?w"));
    f.cache.forgetFolder(slash(), QStringLiteral("a*b"));
    QStringList left;
    for (const QString &row : f.cacheRows(web()))
        left.append(row.section(QLatin1Char('|'), 0, 2));
    QCOMPARE(left, QStringList({QStringLiteral("/|1|ab"), QStringLiteral("/|1|axb"),
                                QStringLiteral("/ab|0|3.txt"), QStringLiteral("/axb|0|4.txt")}));
}

void tst_DirectoryCache::renamedFolderRewritesByPrefix()
{
    CacheFixture f;
    f.server.put("/a/x/1.txt", "hello");
    f.server.put("/ab/2.txt", "hello");
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    f.cache.renamed(slash(), QStringLiteral("a"), QStringLiteral("b"), true);
    QStringList places;
    for (const QString &row : f.cacheRows(web()))
        places.append(row.section(QLatin1Char('|'), 0, 2));
    QCOMPARE(places, QStringList({QStringLiteral("/|1|ab"), QStringLiteral("/|1|b"),
                                  QStringLiteral("/b|1|x"), QStringLiteral("/b/x|0|1.txt"),
                                  QStringLiteral("/bb|0|2.txt")}));
}

void tst_DirectoryCache::renamedFolderKeepsItsMark()
{
    CacheFixture f;
    f.server.put("/a/x/f.txt", "hello");
    QVERIFY(f.start());
    f.server.on("MLSD").nth(3).reply(550, "no");
    f.cache.caRefresh(slash());
    QCOMPARE(f.incomplete(slash()), QStringList(QStringLiteral("/a/x")));
    f.cache.renamed(slash(), QStringLiteral("a"), QStringLiteral("b"), true);
    QCOMPARE(f.incomplete(slash()), QStringList(QStringLiteral("/b/x")));
}

void tst_DirectoryCache::listOffsetIsLearned_data()
{
    QTest::addColumn<int>("offset");
    QTest::addColumn<bool>("mdtm");
    QTest::addColumn<QString>("shown");
    QTest::newRow("server in Japan") << 9 * 3600 << true << "14:06:00";
    QTest::newRow("server in UTC") << 0 << true << "14:06:00";
    QTest::newRow("server in India") << 19800 << true << "14:06:00";
    QTest::newRow("server in the west") << -5 * 3600 << true << "14:06:00";
    QTest::newRow("no MDTM: the listing stands") << 0 << false << "05:06:00";
}

void tst_DirectoryCache::listOffsetIsLearned()
{
    QFETCH(int, offset);
    QFETCH(bool, mdtm);
    QFETCH(QString, shown);
    CacheFixture f;
    f.server.options().mlsd = false;
    f.server.options().mdtm = mdtm;
    f.server.options().listOffsetSeconds = offset;
    const QDate day = QDate::currentDate().addDays(-20);
    const QDateTime time(day, QTime(5, 6, 7), Qt::UTC);
    f.server.put("/a.txt", "hello", time);
    f.server.put("/sub/b.txt", "hello", time);
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    for (const QString &row : f.cacheRows(web())) {
        if (row.contains(QLatin1String("|0|")))
            QCOMPARE(row.section(QLatin1Char('|'), 3, 3),
                     day.toString(QStringLiteral("yy/MM/dd ")) + shown);
    }
    QCOMPARE(f.server.count("MDTM"), mdtm ? 1 : 0);
}

void tst_DirectoryCache::listOffsetIsNotAskedForEver()
{
    CacheFixture f;
    f.server.options().mlsd = false;
    for (const char *path : {"/a/1", "/a/2", "/b/1", "/b/2", "/b/3", "/c/1", "/c/2", "/d/1"})
        f.server.put(path, "hello", utc("2026-11-04T05:06:07"));
    f.server.on("MDTM").reply(550, "no");
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    QCOMPARE(f.server.count("MDTM"), 6);
    f.cache.caRefresh(slash());
    QCOMPARE(f.server.count("MDTM"), 6);
}

void tst_DirectoryCache::dayOnlyTakesMdtmMinute()
{
    CacheFixture f;
    f.server.options().mlsd = false;
    f.server.options().dialect = ListDialect::UnixDay;
    f.server.put("/sub/a.txt", "hello", utc("2024-03-04T05:06:07"));
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    const QString sub = QStringLiteral("/sub");
    const auto dayOnly = f.cache.dayOnlyUnder(slash());
    QCOMPARE(dayOnly.size(), size_t(1));
    QCOMPARE(dayOnly.front(), std::pair(sub, QStringLiteral("a.txt")));
    QVERIFY(f.cache.refineTime(sub, QStringLiteral("a.txt")));
    QCOMPARE(f.cacheRows(web()).last(), QStringLiteral("/sub|0|a.txt|24/03/04 14:06:07|6"));
    QVERIFY(!f.cache.refineTime(sub, QStringLiteral("a.txt")));
    QVERIFY(f.cache.dayOnlyUnder(slash()).empty());
}

void tst_DirectoryCache::dayOnlyFilesAreFoundByIndex()
{
    CacheFixture f;
    f.server.options().mlsd = false;
    const QDateTime old = utc("2020-02-03T04:05:06Z");
    for (const char *path : {"/pub/a.txt", "/pub/b/c.txt", "/PUB2/d.txt", "/x*y/e.txt", "/f.txt"})
        f.server.put(path, "old", old);
    f.server.put("/pub/new.txt", "new", QDateTime::currentDateTimeUtc());
    f.server.tree().makeFolder("/pub/folder", old);
    QVERIFY(f.start());
    f.cache.caRefresh(slash());
    const auto under = [&](const char *dir) {
        QStringList paths;
        for (const auto &[below, name] : f.cache.dayOnlyUnder(QLatin1String(dir)))
            paths.append(below + QLatin1Char(':') + name);
        return paths.join(QLatin1Char(' '));
    };
    QCOMPARE(under("/Pub"), QStringLiteral("/pub:a.txt /pub/b:c.txt"));
    QCOMPARE(under("/x*y/"), QStringLiteral("/x*y:e.txt"));
    QCOMPARE(under("/pu"), QString());
    QCOMPARE(f.cache.dayOnlyUnder(slash()).size(), size_t(5));
    const Rows plan =
        f.database.store().query(QStringLiteral("EXPLAIN QUERY PLAN ") + dayOnlyStatement(web()),
                                 {QStringLiteral("/pub"), QStringLiteral("/puc")});
    QCOMPARE(plan.count(), 1);
    const QString step = plan.at(3, 0).toString();
    QVERIFY2(step.startsWith(QLatin1String("SEARCH web USING INDEX web day only (sDir>")) ||
                 step.startsWith(QLatin1String("SEARCH web USING COVERING INDEX web day only")),
             qPrintable(step));
    // A table of an earlier version gets its index when it is used again.
    f.database.store().exec(QStringLiteral("DROP INDEX \"web day only\""));
    f.session.Disconnect();
    QVERIFY(f.connect());
    QCOMPARE(
        f.database.store()
            .query(QStringLiteral("SELECT count(*) FROM sqlite_master WHERE name = 'web day only'"))
            .at(0, 0)
            .toInt(),
        1);
    QCOMPARE(under("/pub"), QStringLiteral("/pub:a.txt /pub/b:c.txt"));
}

void tst_DirectoryCache::daemons()
{
    QFETCH(FtpDaemon::Kind, kind);
    if (skippedWithout(kind))
        return;
    FtpDaemon daemon(kind);
    QVERIFY(daemon.start());
    const QDate day = QDate::currentDate().addDays(-30);
    const QDateTime time(day, QTime(12, 34, 0)); // in Japan
    QVERIFY(daemon.put("日本 語/100% #1.txt", "hello", time));
    QVERIFY(daemon.put("it's.txt", QByteArray(1234, 'x'), time));
    QVERIFY(daemon.makeFolder("empty"));
    EngineFixture f;
    QVERIFY(f.connectTo(web(), daemon.server(), daemon.user(), daemon.password()));
    f.cache.caRefresh(slash());
    const QString date = day.toString(QStringLiteral("yy/MM/dd")) + QStringLiteral(" 12:34:00");
    const QStringList rows = f.cacheRows(web());
    QCOMPARE(rows.size(), 4);
    QVERIFY(rows.at(0).startsWith(QLatin1String("/|1|empty|")));
    QCOMPARE(rows.at(1), QStringLiteral("/|0|it's.txt|%1|1235").arg(date));
    QVERIFY(rows.at(2).startsWith(QStringLiteral("/|1|日本 語|")));
    QCOMPARE(rows.at(3), QStringLiteral("/日本 語|0|100% #1.txt|%1|6").arg(date));
    QVERIFY(f.cache.incompleteUnder(slash()).empty());
    QVERIFY(f.errorLines().isEmpty());
}

QTEST_GUILESS_MAIN(tst_DirectoryCache)
#include "tst_DirectoryCache.moc"
