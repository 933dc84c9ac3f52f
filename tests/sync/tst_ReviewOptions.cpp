#include "sync/ReviewOptions.h"

#include <QTest>

#include "sync/WorkTables.h"

using namespace venlo;
using venlo::test::WorkTables;

/// Where the two boxes of chCmp take their first state from.
class tst_ReviewOptions : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void ofAPair_data();
    void ofAPair();
    void ofAPattern();

private:
    WorkTables m_tables;
};

void tst_ReviewOptions::initTestCase()
{
    m_tables.addPattern(QStringLiteral("first"), QStringLiteral("/web"), QStringLiteral("/pub"),
                        true, false);
    m_tables.addPattern(QStringLiteral("second"), QStringLiteral("/web"),
                        QStringLiteral("host/other"), false, true);
    m_tables.addPattern(QStringLiteral("third"), QStringLiteral("/web"), QStringLiteral("/pub"),
                        true, true);
}

void tst_ReviewOptions::ofAPair_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("normal");
    QTest::addColumn<bool>("bCfl");
    QTest::addColumn<bool>("bCfd");
    const QString pub = QStringLiteral("/pub");
    const QString hostPub = QStringLiteral("host/pub");
    QTest::newRow("registered as given") << pub << pub << true << false;
    QTest::newRow("registered in normal form") << hostPub << pub << true << false;
    QTest::newRow("given with the server text, registered so")
        << QStringLiteral("host/other") << QStringLiteral("/other") << false << true;
    QTest::newRow("not registered")
        << QStringLiteral("/none") << QStringLiteral("/none") << false << false;
    QTest::newRow("a quote cannot be asked for")
        << QStringLiteral("/it's") << QStringLiteral("/it's") << false << true;
}

void tst_ReviewOptions::ofAPair()
{
    QFETCH(QString, given);
    QFETCH(QString, normal);
    const ReviewOptions options =
        optionsOfPair(m_tables.database(), QStringLiteral("/web"), given, normal);
    QTEST(options.bCfl, "bCfl");
    QTEST(options.bCfd, "bCfd");
    QCOMPARE(options.unread, given.contains(QLatin1Char('\'')));
}

void tst_ReviewOptions::ofAPattern()
{
    const ReviewOptions third = optionsOfPattern(m_tables.database(), QStringLiteral("third"));
    QVERIFY(third.bCfl && third.bCfd);
    const ReviewOptions first = optionsOfPattern(m_tables.database(), QStringLiteral("FIRST"));
    QVERIFY(first.bCfl && !first.bCfd);
    const ReviewOptions none = optionsOfPattern(m_tables.database(), QStringLiteral("none"));
    QVERIFY(!none.bCfl && !none.bCfd);
}

QTEST_APPLESS_MAIN(tst_ReviewOptions)
#include "tst_ReviewOptions.moc"
