// Folders that are looked into many at a time: the answers and the rows are those of folders that
// are looked into one by one, whatever the server makes of STAT.
#include "db/DbError.h"
#include "db/Store.h"
#include "ftp/StatFixture.h"

#include <QElapsedTimer>
#include <QTest>
#include <QTimer>

namespace venlo::test
{

namespace
{
struct AheadFixture : StatFixture {
    explicit AheadFixture(StatPath stat = StatPath::Listed) : StatFixture(stat)
    {
        server.options().statAll = StatAll::Taken;
    }
    /// Paths of the folders of a directory.
    [[nodiscard]] QStringList foldersOf(const QString &dir)
    {
        QString all;
        try {
            all = cache.caSubFolds(dir);
        } catch (const DbError &) { // of two names one fits
            all = cache.caSubFolds(dir);
        }
        QStringList paths;
        for (const QString &name : all.split(QLatin1Char('\r'), Qt::SkipEmptyParts))
            paths.append((dir == slash() ? QString() : dir) + QLatin1Char('/') + name);
        return paths;
    }
    /// "path+" for each folder of a directory that has sub-folders, "path-" for the others.
    [[nodiscard]] QStringList expanded(const QString &dir = slash())
    {
        const QStringList dirs = foldersOf(dir);
        QStringList all;
        while (all.size() < dirs.size()) {
            const auto some = cache.caHasSubs(dirs.mid(all.size()), report, misfits);
            if (some.empty())
                return {};
            for (const std::optional<bool> has : some) {
                const QString &path = dirs.at(all.size());
                const bool sub = has ? *has : cache.caHasSub(path);
                all.append(path + QLatin1Char(sub ? '+' : '-'));
            }
        }
        return all;
    }
    [[nodiscard]] QStringList rows() { return toTheMinute(cacheRows(web())); }
    /// All that shows whether folders were looked into one by one: the answers, the rows and the
    /// incomplete directories (with "!").
    [[nodiscard]] QStringList seen()
    {
        QStringList all = expanded();
        all += rows();
        for (const QString &dir : incomplete())
            all.append(QLatin1Char('!') + dir);
        return all;
    }

    std::function<void(qsizetype)> report;
    QString misfits;
};

/// The lines that one of two lists lacks.
QString difference(const QStringList &seen, const QStringList &expected)
{
    QStringList lines;
    for (const QString &line : seen)
        if (!expected.contains(line))
            lines.append(QStringLiteral("more: ") + line);
    for (const QString &line : expected)
        if (!seen.contains(line))
            lines.append(QStringLiteral("less: ") + line);
    return lines.isEmpty() ? QStringLiteral("a line more often, or another order")
                           : lines.join(QLatin1Char('\n'));
}

template <typename Prepare>
QStringList seenWithoutStat(const Prepare &prepare)
{
    AheadFixture f(StatPath::Unknown);
    prepare(f);
    f.server.options().stat = StatPath::Unknown;
    return f.start() ? f.seen() : QStringList();
}
} // namespace

class tst_StatAhead : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sameAnswers_data();
    void sameAnswers();
    void commands();
    void onlyWhatWasNeverListed();
    void fewAreAskedAlone();
    void emptyFoldersAreListedOnce();
    void foldersThatCannotBeListed();
    void misfitsAreSaid();
    void lost_data();
    void lost();
    void cancelled();
    void progressIsReported();
    void rowsShareCommits();
    void notConnected();
};

void tst_StatAhead::sameAnswers_data()
{
    QTest::addColumn<int>("stat");
    QTest::addColumn<bool>("mlsd");
    for (const bool mlsd : {true, false}) {
        const auto row = [&](const char *what, StatPath stat) {
            QTest::addRow("%s, STAT %s", mlsd ? "MLSD" : "LIST", what) << int(stat) << mlsd;
        };
        row("listed", StatPath::Listed);
        row("with -a", StatPath::ItselfForAll);
        row("without itself", StatPath::WithoutItself);
        row("half", StatPath::FirstHalf);
        row("not heeded", StatPath::NotHeeded);
        row("unknown", StatPath::Unknown);
    }
}

void tst_StatAhead::sameAnswers()
{
    QFETCH(int, stat);
    QFETCH(bool, mlsd);
    const auto prepare = [&](AheadFixture &f) {
        f.putMixedTree();
        f.putFolders(70);
        f.server.put("/d07/below/x.txt", "x", daysAgo(5));
        f.server.put("/d69/below/deep/x.txt", "x", daysAgo(5));
        f.server.makeFolder("/d68/empty");
        f.server.options().mlsd = mlsd;
        f.server.options().stat = static_cast<StatPath>(stat);
    };
    const QStringList expected = seenWithoutStat(prepare);
    QVERIFY(expected.size() > 75);
    QVERIFY(expected.contains(QStringLiteral("/d69+")));
    AheadFixture f;
    prepare(f);
    QVERIFY(f.start());
    const QStringList seen = f.seen();
    QVERIFY2(seen == expected, qPrintable(difference(seen, expected)));
    QCOMPARE(f.server.logins(), 1);
    // No folder below those that were asked for.
    QVERIFY(f.rows().filter(QStringLiteral("/d69/below|")).isEmpty());
    QCOMPARE(f.seen(), expected);
}

void tst_StatAhead::commands()
{
    AheadFixture f;
    f.putFolders(90);
    QVERIFY(f.start());
    QCOMPARE(f.expanded().size(), 90);
    QCOMPARE(f.cacheRows(web()).size(), 270);
    // The root and the first folder in the ordinary way, the others 64 at a time.
    QCOMPARE(f.server.count("MLSD"), 2);
    QCOMPARE(f.server.count("CWD"), 1);
    QCOMPARE(f.server.count("EPSV"), 2);
    QCOMPARE(f.server.count("STAT"), 2 + 89);
    QCOMPARE(f.server.count("NOOP"), 1 + 2);
    QVERIFY(f.server.log().batches().size() < 90);
    f.server.log().clear();
    QCOMPARE(f.expanded().size(), 90);
    QCOMPARE(f.server.commands(), QList<QByteArray>());
}

void tst_StatAhead::onlyWhatWasNeverListed()
{
    AheadFixture f;
    f.putFolders(20);
    QVERIFY(f.start());
    for (int i = 0; i < 20; i += 2)
        QVERIFY(f.load(QString::fromLatin1(StatFixture::folder(i))));
    f.server.put("/d04/later/x.txt", "x");
    f.server.log().clear();
    QVERIFY(f.expanded().contains(QStringLiteral("/d04-"))); // the rows that are there count
    QCOMPARE(f.server.count("STAT", "/d04"), 0);
    QCOMPARE(f.cacheRows(web()).size(), 60);
}

void tst_StatAhead::fewAreAskedAlone()
{
    AheadFixture f;
    f.putFolders(3);
    QVERIFY(f.start());
    QCOMPARE(f.expanded().size(), 3);
    QCOMPARE(f.server.count("STAT"), 0);
    QCOMPARE(f.server.count("MLSD"), 4);
}

void tst_StatAhead::emptyFoldersAreListedOnce()
{
    AheadFixture f;
    f.putFolders(2);
    for (int i = 10; i < 40; ++i)
        f.server.makeFolder(StatFixture::folder(i));
    QVERIFY(f.start());
    QCOMPARE(f.expanded().filter(QStringLiteral("-")).size(), 32);
    QCOMPARE(f.server.count("STAT"), 2 + 31);
    QCOMPARE(f.server.count("MLSD"), 2);
}

void tst_StatAhead::foldersThatCannotBeListed()
{
    const auto prepare = [](AheadFixture &f) {
        f.putFolders(12);
        f.server.on("CWD", "/d05").reply(550, "keep out");
        f.server.on("STAT", "/d05").rawReply("213-Status follows:\r\n213 End\r\n");
        f.server.on("STAT", "/d06").reply(550, "not this way");
    };
    const QStringList expected = seenWithoutStat(prepare);
    QCOMPARE(expected.filter(QStringLiteral("!")), QStringList(QStringLiteral("!/d05")));
    AheadFixture f;
    prepare(f);
    QVERIFY(f.start());
    QCOMPARE(f.seen(), expected);
}

void tst_StatAhead::misfitsAreSaid()
{
    AheadFixture f;
    f.putFolders(8);
    const QByteArray line = "drwxr-xr-x 2 u g 4096 Nov 21 05:10 .\r\n"
                            "-rw-r--r-- 1 u g 4000000000 Nov 21 05:10 big.iso\r\n"
                            "drwxr-xr-x 2 u g 4096 Nov 21 05:10 sub\r\n";
    f.server.options().mlsd = false;
    f.server.on("STAT", "/d03").rawReply("213-Status follows:\r\n" + line + "213 End\r\n");
    QVERIFY(f.start());
    const QStringList dirs = f.foldersOf(slash());
    QString words;
    (void)f.cache.caHasSubs(dirs, {}, words);
    QCOMPARE(words, QString());
    const auto first = f.cache.caHasSubs(dirs, {}, words);
    QCOMPARE(first.size(), size_t(8));
    QVERIFY(first.at(3) == true && first.at(4) == false);
    QVERIFY2(words.contains(QLatin1String("/d03/big.iso")), qPrintable(words));
    QCOMPARE(f.incomplete(), QStringList(QStringLiteral("/d03")));
    // All others are stored, and what fits.
    QCOMPARE(f.cacheRows(web()).size(), 8 + 7 * 2 + 1);
    (void)f.cache.caHasSubs(dirs, {}, words);
    QCOMPARE(words, QString());
}

void tst_StatAhead::lost_data()
{
    QTest::addColumn<int>("nth");
    for (const int nth : {1, 2, 3, 20, 70})
        QTest::addRow("%d", nth) << nth;
}

void tst_StatAhead::lost()
{
    QFETCH(int, nth);
    const auto prepare = [](AheadFixture &f) { f.putFolders(90); };
    const QStringList expected = seenWithoutStat(prepare);
    AheadFixture f;
    prepare(f);
    f.server.on("STAT").nth(nth).dropBeforeReply();
    QVERIFY(f.start());
    QCOMPARE(f.seen(), expected);
    QCOMPARE(f.incomplete(), QStringList());
    QCOMPARE(f.server.logins(), 2);
    QVERIFY(f.server.count("MLSD") < 10); // and goes on many at a time
}

void tst_StatAhead::cancelled()
{
    AheadFixture f;
    f.putFolders(60);
    QVERIFY(f.start());
    const QStringList dirs = f.foldersOf(slash());
    (void)f.cache.caHasSubs(dirs, {}, f.misfits);
    f.server.on("STAT").delay(100);
    QTimer::singleShot(300, this, [&] { f.person.cancelNow(); });
    QElapsedTimer timer;
    timer.start();
    const auto has = f.cache.caHasSubs(dirs.mid(1), {}, f.misfits);
    QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    QVERIFY(!has.empty() && !has.front());
    // Nothing is asked any more, and nothing is noted of what was not listed.
    f.server.log().clear();
    for (const auto one : f.cache.caHasSubs(dirs.mid(1), {}, f.misfits))
        QVERIFY(!one);
    QCOMPARE(f.server.commands(), QList<QByteArray>());
    QCOMPARE(f.incomplete(), QStringList());
    f.person.resetCancel();
    f.server.script().clear();
    QCOMPARE(f.expanded().size(), 60);
    QCOMPARE(f.cacheRows(web()).size(), 180);
    QCOMPARE(f.person.messageLines(), QStringList());
}

void tst_StatAhead::progressIsReported()
{
    AheadFixture f;
    f.putFolders(90);
    QVERIFY(f.start());
    QList<qsizetype> heard;
    f.report = [&](qsizetype directories) { heard.append(directories); };
    QCOMPARE(f.expanded().size(), 90);
    QVERIFY(heard.size() > 80);
    QCOMPARE(heard.last(), 25); // of the second lot, counted from its beginning
    QVERIFY(heard.contains(64));
}

void tst_StatAhead::rowsShareCommits()
{
    AheadFixture f;
    f.putFolders(40);
    QVERIFY(f.start());
    (void)f.expanded();
    QCOMPARE(f.cacheRows(web()).size(), 120);
    // What the store undoes is asked for again.
    (void)f.database.store().query(QStringLiteral("ROLLBACK"));
    f.database.store().endGroup();
    QVERIFY(f.events().contains(QLatin1String("cache not in step")));
    const auto left = f.cacheRows(web()).size();
    QVERIFY(left < 120);
    QCOMPARE(f.expanded().size(), 40);
    QCOMPARE(f.cacheRows(web()).size(), 120);
}

void tst_StatAhead::notConnected()
{
    AheadFixture f;
    f.putFolders(10);
    QVERIFY(f.start());
    const QStringList dirs = f.foldersOf(slash());
    f.session.CloseInternet();
    const auto has = f.cache.caHasSubs(dirs, {}, f.misfits);
    QCOMPARE(has.size(), size_t(10));
    for (const auto one : has)
        QVERIFY(!one);
    QVERIFY(f.cache.caHasSubs({}, {}, f.misfits).empty());
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_StatAhead)
#include "tst_StatAhead.moc"
