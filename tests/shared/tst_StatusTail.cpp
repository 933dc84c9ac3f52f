#include "shared/StatusTail.h"

#include <QStringList>
#include <QTest>

namespace venlo::test
{

class tst_StatusTail : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void asIfOneByOne();
};

/// Many lines at once leave what they would have left one by one.
void tst_StatusTail::asIfOneByOne()
{
    for (int held = 0; held <= 53; ++held) {
        for (int added = 1; added <= 160; ++added) {
            QStringList oneByOne;
            for (int line = 0; line < held; ++line)
                oneByOne += QStringLiteral("held %1").arg(line);
            QStringList atOnce = oneByOne;
            QStringList lines;
            for (int line = 0; line < added; ++line)
                lines += QString::number(line);
            for (const QString &line : lines) {
                if (oneByOne.size() > mostStatusLines)
                    oneByOne.clear();
                oneByOne += line;
            }
            const StatusTail tail = statusTail(held, added);
            if (tail.clears)
                atOnce.clear();
            atOnce += lines.mid(tail.first);
            QCOMPARE(atOnce, oneByOne);
        }
    }
}

} // namespace venlo::test

QTEST_APPLESS_MAIN(venlo::test::tst_StatusTail)
#include "tst_StatusTail.moc"
