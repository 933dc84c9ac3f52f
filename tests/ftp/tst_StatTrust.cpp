// What makes STAT as good as an ordinary listing, and which times it may be believed with.
#include "ftp/StatTrust.h"

#include <QRandomGenerator>
#include <QTest>

using namespace venlo;
using Trust = StatTrust::Trust;
using Kind = ListedEntry::Kind;

namespace
{
QDateTime day(int number)
{
    return QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC).addDays(number);
}

ListedEntry entry(const QByteArray &name, qint64 size = 5, Kind kind = Kind::File)
{
    ListedEntry made;
    made.rawName = name;
    made.name = QString::fromUtf8(name);
    made.kind = kind;
    made.time = day(0);
    made.size = size;
    return made;
}

Listing listing(std::vector<ListedEntry> entries, bool mlsd = true)
{
    return {std::move(entries), true, {}, mlsd};
}

ListedEntry at(int number)
{
    ListedEntry made = entry("f" + QByteArray::number(number));
    made.time = day(number);
    return made;
}
} // namespace

class tst_StatTrust : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whatAgreesIsTrusted();
    void nothingProvesNothing();
    void threeFailuresAreEnough();
    void onlyWholeListingsCount();
    void whatDiffers_data();
    void whatDiffers();
    void linksAreNoVerdict();
    void dotNames();
    void hiddenDotNamesAreNoAgreement();
    void onlyAsLargeAsProven();
    void onlyMlsdKnows_data();
    void onlyMlsdKnows();
    void timesBetweenSamples();
    void samplesCoverAll();
    void oneTimeNeedsOneSample();
};

void tst_StatTrust::whatAgreesIsTrusted()
{
    StatTrust trust;
    QCOMPARE(trust.trust(), Trust::Unknown);
    trust.compare(listing({entry("a"), entry("b", 0, Kind::Folder)}),
                  listing({entry("b", 4096, Kind::Folder), entry("a"), entry(".x")}, false));
    QCOMPARE(trust.trust(), Trust::Yes);
    trust.giveUp();
    QCOMPARE(trust.trust(), Trust::No);
    trust.compare(listing({entry("a")}), listing({entry("a")}, false));
    QCOMPARE(trust.trust(), Trust::No);
}

void tst_StatTrust::nothingProvesNothing()
{
    StatTrust trust;
    trust.compare(listing({}), listing({}, false));
    trust.compare(listing({}), listing({entry(".x")}, false));
    QCOMPARE(trust.trust(), Trust::Unknown);
}

void tst_StatTrust::threeFailuresAreEnough()
{
    StatTrust trust;
    trust.compare(listing({entry("a")}), std::nullopt);
    trust.compare(listing({entry("a")}), std::nullopt);
    QCOMPARE(trust.trust(), Trust::Unknown);
    trust.compare(listing({entry("a")}), std::nullopt);
    QCOMPARE(trust.trust(), Trust::No);
}

void tst_StatTrust::onlyWholeListingsCount()
{
    StatTrust trust;
    Listing cut = listing({entry("a")});
    cut.whole = false;
    for (int i = 0; i < 5; ++i)
        trust.compare(cut, std::nullopt);
    trust.compare(cut, listing({entry("a")}, false));
    QCOMPARE(trust.trust(), Trust::Unknown);
}

void tst_StatTrust::whatDiffers_data()
{
    QTest::addColumn<bool>("mlsd");
    QTest::addColumn<int>("field");
    QTest::addColumn<bool>("agrees");
    QTest::newRow("MLSD: size") << true << 0 << false;
    QTest::newRow("MLSD: kind") << true << 1 << false;
    QTest::newRow("MLSD: name") << true << 2 << false;
    QTest::newRow("MLSD: time") << true << 3 << true; // it is UTC, the other is not
    QTest::newRow("LIST: size") << false << 0 << false;
    QTest::newRow("LIST: time") << false << 3 << false;
    QTest::newRow("LIST: day only") << false << 4 << false;
}

void tst_StatTrust::whatDiffers()
{
    QFETCH(bool, mlsd);
    QFETCH(int, field);
    QFETCH(bool, agrees);
    ListedEntry other = entry("a");
    if (field == 0)
        other.size = 6;
    else if (field == 1)
        other.kind = Kind::Folder;
    else if (field == 2)
        other.rawName = "A";
    else if (field == 3)
        other.time = day(1);
    else
        other.dayOnly = true;
    StatTrust trust;
    trust.compare(listing({entry("a")}, mlsd), listing({other}, false));
    QCOMPARE(trust.trust() == Trust::Yes, agrees);
}

void tst_StatTrust::linksAreNoVerdict()
{
    StatTrust trust;
    for (int i = 0; i < 5; ++i)
        trust.compare(listing({entry("a"), entry("l", 100)}),
                      listing({entry("a"), entry("l", 3, Kind::Link)}, false));
    QCOMPARE(trust.trust(), Trust::Unknown);
}

void tst_StatTrust::dotNames()
{
    const Listing shown = listing({entry("a"), entry(".x")}, false);
    StatTrust unknown; // no name showed it
    unknown.compare(listing({entry("a"), entry("b")}, false),
                    listing({entry("a"), entry("b")}, false));
    QVERIFY(!unknown.asOrdinary(shown, false));
    QVERIFY(unknown.asOrdinary(listing({entry("a")}, false), false));
    StatTrust hidden;
    hidden.compare(listing({entry("a")}, false), shown);
    QCOMPARE(hidden.asOrdinary(shown, false)->entries.size(), size_t(1));
    StatTrust visible;
    visible.compare(shown, shown);
    QCOMPARE(visible.asOrdinary(shown, false)->entries.size(), size_t(2));
    QCOMPARE(visible.asOrdinary(shown, true)->entries.size(), size_t(1)); // MLSD's are dropped
}

void tst_StatTrust::hiddenDotNamesAreNoAgreement()
{
    StatTrust trust;
    trust.compare(listing({entry("a"), entry(".x")}, false), listing({entry("a")}, false));
    QCOMPARE(trust.trust(), Trust::No);
}

void tst_StatTrust::onlyAsLargeAsProven()
{
    StatTrust trust;
    trust.compare(listing({entry("a"), entry("b")}), listing({entry("a"), entry("b")}, false));
    QCOMPARE(trust.proven(), size_t(2));
    const Listing larger = listing({entry("a"), entry("b"), entry("c")}, false);
    QVERIFY(trust.asOrdinary(listing({entry("c")}, false), true));
    QVERIFY(!trust.asOrdinary(larger, true));
    trust.compare(listing({entry("a"), entry("b"), entry("c")}), larger);
    QVERIFY(trust.asOrdinary(larger, true));
    trust.compare(listing({entry("a"), entry("b"), entry("c")}), listing({entry("a")}, false));
    QCOMPARE(trust.trust(), Trust::No);
}

void tst_StatTrust::onlyMlsdKnows_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("time"); // 0 minute, 1 day, 2 none
    QTest::addColumn<bool>("told");
    QTest::newRow("minute") << QByteArray("a") << int(Kind::File) << 0 << true;
    QTest::newRow("day") << QByteArray("a") << int(Kind::File) << 1 << false;
    QTest::newRow("no time") << QByteArray("a") << int(Kind::File) << 2 << false;
    QTest::newRow("day of a folder") << QByteArray("a") << int(Kind::Folder) << 1 << false;
    QTest::newRow("link") << QByteArray("a") << int(Kind::Link) << 0 << false;
    QTest::newRow("day of a hidden name") << QByteArray(".a") << int(Kind::File) << 1 << true;
}

void tst_StatTrust::onlyMlsdKnows()
{
    QFETCH(QByteArray, name);
    QFETCH(int, kind);
    QFETCH(int, time);
    QFETCH(bool, told);
    ListedEntry shown = entry(name, 5, static_cast<Kind>(kind));
    shown.dayOnly = time == 1;
    if (time == 2)
        shown.time = QDateTime();
    StatTrust trust;
    trust.compare(listing({entry("x"), entry(".y")}), listing({entry("x"), entry(".y")}, false));
    QCOMPARE(trust.asOrdinary(listing({shown}, false), true).has_value(), told);
    QVERIFY(trust.asOrdinary(listing({shown}, false), false)); // LIST shows no more either
}

void tst_StatTrust::timesBetweenSamples()
{
    StatTrust trust;
    QVERIFY(!trust.covers(day(0)));
    trust.addSample(day(40));
    trust.addSample(day(0));
    QVERIFY(trust.covers(day(0)));
    QVERIFY(trust.covers(day(40)));
    QVERIFY(!trust.covers(day(20))); // a zone may have gone there and back
    trust.addSample(day(20));
    QVERIFY(trust.covers(day(1)));
    QVERIFY(trust.covers(day(39)));
    QVERIFY(!trust.covers(day(-1)));
    QVERIFY(!trust.covers(day(41)));
}

void tst_StatTrust::samplesCoverAll()
{
    QRandomGenerator random(4711);
    for (int round = 0; round < 200; ++round) {
        std::vector<ListedEntry> entries;
        const int count = random.bounded(1, 40);
        for (int i = 0; i < count; ++i)
            entries.push_back(at(random.bounded(1, 400)));
        StatTrust trust;
        const auto samples = StatTrust::samples(entries);
        QVERIFY(samples.size() <= 2 * 400 / 28 + 2);
        for (const ListedEntry &sample : samples)
            trust.addSample(sample.time);
        for (const ListedEntry &one : entries)
            QVERIFY2(trust.covers(one.time), one.rawName.constData());
    }
}

void tst_StatTrust::oneTimeNeedsOneSample()
{
    QVERIFY(StatTrust::samples({}).empty());
    QCOMPARE(StatTrust::samples({at(3)}).size(), size_t(1));
    QCOMPARE(StatTrust::samples({at(3), at(5), at(4)}).size(), size_t(2));
    QVERIFY(StatTrust::samples(std::vector<ListedEntry>(500, at(3))).size() <= 2);
}

QTEST_GUILESS_MAIN(tst_StatTrust)
#include "tst_StatTrust.moc"
