#include "db/Database.h"

#include "db/DbFixture.h"
#include "db/Store.h"

#include <QTest>

using venlo::Transaction;
using venlo::test::DbFixture;
using venlo::test::failure;
using venlo::test::rowsText;

class tst_Transaction : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init() { m_fixture = std::make_unique<DbFixture>(); }
    void commits();
    void rollsBackWithoutCommit();
    void rollsBackOnAnException();
    void innerOnesLastOnlyWithTheOuter();
    void anInnerOneUndoesItsOwnPart();
    void tablesAreUndoneToo();
    void aFailedStatementUndoesItself();
    void nobodyElseSeesHalf();
    void committingTwiceIsAnError();
    void closingEndsIt();
    void aTransactionTheStoreEndedIsNoticed();

private:
    void add(const char *name)
    {
        m_fixture->db().run(QStringLiteral("Insert Into tbFold (sPh) Values ('?')"),
                            {QLatin1String(name)});
    }
    QString names()
    {
        return m_fixture->rows(QStringLiteral("Select sPh From tbFold Order By sPh"));
    }
    std::unique_ptr<DbFixture> m_fixture;
};

void tst_Transaction::commits()
{
    Transaction transaction(m_fixture->db());
    add("a");
    transaction.commit();
    QCOMPARE(m_fixture->db().store().depth(), 0);
    venlo::Store other;
    other.open(m_fixture->path());
    QCOMPARE(rowsText(other.queryJet(QStringLiteral("Select sPh From tbFold"))),
             QStringLiteral("a"));
}

void tst_Transaction::rollsBackWithoutCommit()
{
    {
        const Transaction transaction(m_fixture->db());
        add("a");
        QCOMPARE(names(), QStringLiteral("a"));
    }
    QCOMPARE(names(), QString());
}

void tst_Transaction::rollsBackOnAnException()
{
    const QString words = failure([this] {
        Transaction transaction(m_fixture->db());
        add("a");
        add("it's");
        transaction.commit();
    });
    QVERIFY(words != QLatin1String("(none)"));
    QCOMPARE(names(), QString());
}

void tst_Transaction::innerOnesLastOnlyWithTheOuter()
{
    {
        const Transaction outer(m_fixture->db());
        Transaction inner(m_fixture->db());
        add("a");
        inner.commit();
        QCOMPARE(m_fixture->db().store().depth(), 1);
    }
    QCOMPARE(names(), QString());
}

void tst_Transaction::anInnerOneUndoesItsOwnPart()
{
    Transaction outer(m_fixture->db());
    add("a");
    {
        const Transaction inner(m_fixture->db());
        add("b");
        Transaction innermost(m_fixture->db());
        add("c");
        innermost.commit();
    }
    QCOMPARE(names(), QStringLiteral("a"));
    add("d");
    outer.commit();
    QCOMPARE(names(), QStringLiteral("a / d"));
}

void tst_Transaction::tablesAreUndoneToo()
{
    {
        const Transaction transaction(m_fixture->db());
        m_fixture->makeCacheTable(QStringLiteral("www"));
        QVERIFY(m_fixture->db().tableNames().contains(QStringLiteral("www")));
    }
    QVERIFY(!m_fixture->db().tableNames().contains(QStringLiteral("www")));
    m_fixture->makeCacheTable(QStringLiteral("WWW"));
    QVERIFY(m_fixture->db().tableNames().contains(QStringLiteral("WWW")));
}

void tst_Transaction::aFailedStatementUndoesItself()
{
    m_fixture->db().run(QStringLiteral("Insert into mssync (sSync, sLph) Values ('a', 'x')"));
    m_fixture->db().run(QStringLiteral("Insert into mssync (sSync, sLph) Values ('b', 'x')"));
    Transaction transaction(m_fixture->db());
    add("kept");
    QVERIFY(failure([this] {
                m_fixture->db().run(QStringLiteral("Update msSync Set sSync='c'"));
            }) != QLatin1String("(none)"));
    transaction.commit();
    QCOMPARE(names(), QStringLiteral("kept"));
    QCOMPARE(m_fixture->rows(QStringLiteral("Select sSync From msSync Order By sSync")),
             QStringLiteral("a / b"));
}

void tst_Transaction::nobodyElseSeesHalf()
{
    venlo::Store other;
    other.open(m_fixture->path());
    Transaction transaction(m_fixture->db());
    add("a");
    QCOMPARE(other.queryJet(QStringLiteral("Select sPh From tbFold")).count(), 0);
    transaction.commit();
    QCOMPARE(other.queryJet(QStringLiteral("Select sPh From tbFold")).count(), 1);
}

void tst_Transaction::committingTwiceIsAnError()
{
    Transaction transaction(m_fixture->db());
    transaction.commit();
    QVERIFY(failure([&] { transaction.commit(); }) != QLatin1String("(none)"));
}

void tst_Transaction::closingEndsIt()
{
    Transaction transaction(m_fixture->db());
    add("a");
    m_fixture->db().CloseDb();
    QVERIFY(failure([&] { transaction.commit(); }) != QLatin1String("(none)"));
    bool ok = false;
    m_fixture->db().OpenDb(ok);
    QVERIFY(ok);
    QCOMPARE(names(), QString());
}

void tst_Transaction::aTransactionTheStoreEndedIsNoticed()
{
    {
        Transaction transaction(m_fixture->db());
        add("a");
        m_fixture->db().store().exec(QStringLiteral("ROLLBACK"));
        QVERIFY(failure([this] { add("b"); }) != QLatin1String("(none)"));
        QVERIFY(failure([&] { transaction.commit(); }) != QLatin1String("(none)"));
    }
    QCOMPARE(m_fixture->db().store().depth(), 0);
    QCOMPARE(names(), QString());
}

QTEST_GUILESS_MAIN(tst_Transaction)
#include "tst_Transaction.moc"
