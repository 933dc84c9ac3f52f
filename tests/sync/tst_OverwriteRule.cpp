#include "sync/OverwriteRule.h"

#include <QTest>

using venlo::overwriteStands;

/// The rule that decides about a file both sides have.
class tst_OverwriteRule : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void rule_data();
    void rule();
};

void tst_OverwriteRule::rule_data()
{
    QTest::addColumn<QString>("masterTime");
    QTest::addColumn<QString>("otherTime");
    QTest::addColumn<qint64>("masterSize");
    QTest::addColumn<qint64>("otherSize");
    QTest::addColumn<bool>("always");
    QTest::addColumn<bool>("stands");

    const QString early = QStringLiteral("24/05/06 07:08");
    const QString late = QStringLiteral("24/05/06 07:09");
    const auto row = [&](const char *name, const QString &master, const QString &other,
                         qint64 masterSize, qint64 otherSize, bool stands) {
        QTest::newRow(name) << master << other << masterSize << otherSize << false << stands;
    };
    row("equal in time and size: cleared", early, early, 100, 100, false);
    row("newer master, equal size: stands", late, early, 100, 100, true);
    row("newer master, smaller: stands", late, early, 1, 100, true);
    row("newer master, empty: stands", late, early, 0, 100, true);
    row("older master, equal size: cleared", early, late, 100, 100, false);
    row("master 1.2 times as large: stands", early, early, 120, 100, true);
    row("master just below 1.2 times: cleared", early, early, 119, 100, false);
    row("other 1.2 times as large: stands", early, early, 100, 120, true);
    row("other just below 1.2 times: cleared", early, early, 100, 119, false);
    row("older master, far larger: stands", early, late, 200, 100, true);
    row("older master, far smaller: stands", early, late, 100, 200, true);
    row("other copy empty: stands", early, early, 1, 0, true);
    row("empty master never replaces content", early, early, 0, 1, false);
    row("both empty: cleared", early, early, 0, 0, false);
    row("1.2 exactly at an odd size: stands", early, early, 6, 5, true);
    row("largest sizes do not overflow", early, early, 2147483647, 1789569705, true);
    row("largest sizes just below a fifth", early, early, 2147483647, 1789569707, false);
    row("remote one byte larger, 5 bytes local: stands", early, early, 5, 6, true);
    row("remote one byte larger, 6 bytes local: cleared", early, early, 6, 7, false);
    row("the century's end is text: 99 is greater than 00", QStringLiteral("99/12/31 23:59"),
        QStringLiteral("00/01/01 00:00"), 100, 100, true);
    row("no time on the master is the smallest text", QString(), early, 100, 100, false);

    QTest::newRow("asked for: equal files stand")
        << early << early << qint64(100) << qint64(100) << true << true;
    QTest::newRow("asked for: an empty master stands")
        << early << late << qint64(0) << qint64(100) << true << true;
}

void tst_OverwriteRule::rule()
{
    QFETCH(QString, masterTime);
    QFETCH(QString, otherTime);
    QFETCH(qint64, masterSize);
    QFETCH(qint64, otherSize);
    QFETCH(bool, always);
    QTEST(overwriteStands({masterTime, masterSize}, {otherTime, otherSize}, always), "stands");
}

QTEST_APPLESS_MAIN(tst_OverwriteRule)
#include "tst_OverwriteRule.moc"
