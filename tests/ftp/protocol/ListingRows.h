#pragma once

#include "ftp/protocol/ListingParser.h"
#include "ftp/protocol/NameCodec.h"

#include <QTest>

namespace venlo::test
{

/// The day on which every listing of these tests is taken.
inline QDate today()
{
    return {2026, 11, 21};
}

inline Listing parseLines(ListingParser::Source source, const QList<QByteArray> &lines,
                          QDate serverToday = today())
{
    NameCodec codec;
    codec.reset(false);
    ListingParser parser(source, codec, serverToday);
    for (const QByteArray &line : lines)
        parser.addLine(line);
    return parser.take();
}

/// What one line means. time is "yyyy-MM-ddThh:mm:ss[.zzz]", empty for an entry without a time.
struct ExpectedEntry {
    QByteArray name;
    ListedEntry::Kind kind = ListedEntry::Kind::File;
    QByteArray time;
    qint64 size = 0;
    bool dayOnly = false;
};

inline void addColumns()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<ExpectedEntry>("expected");
}

inline void addRow(const char *what, const QByteArray &line, const ExpectedEntry &expected)
{
    QTest::newRow(what) << line << expected;
}

/// Compares the one entry of a listing with the row's.
inline void compareRow(const Listing &listing, bool utc)
{
    QFETCH(ExpectedEntry, expected);
    QVERIFY2(listing.whole, qPrintable(listing.why));
    QCOMPARE(listing.entries.size(), std::size_t(1));
    const ListedEntry &entry = listing.entries.front();
    QCOMPARE(entry.rawName, expected.name);
    QCOMPARE(static_cast<int>(entry.kind), static_cast<int>(expected.kind));
    QCOMPARE(entry.time.toString(Qt::ISODateWithMs).toLatin1(),
             QDateTime::fromString(QString::fromLatin1(expected.time + 'Z'), Qt::ISODateWithMs)
                 .toString(Qt::ISODateWithMs)
                 .toLatin1());
    QCOMPARE(entry.time.isValid(), !expected.time.isEmpty());
    QCOMPARE(entry.size, expected.size);
    QCOMPARE(entry.dayOnly, expected.dayOnly);
    QCOMPARE(entry.utc, utc);
}

} // namespace venlo::test
