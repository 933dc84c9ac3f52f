#include "db/Recordset.h"

#include "db/DbFixture.h"
#include "db/Store.h"

#include <QTest>

using venlo::test::DbFixture;
using venlo::test::failure;

namespace
{
const QString none = QStringLiteral("(none)");
const QStringList key{QStringLiteral("sDir"), QStringLiteral("sName")};
} // namespace

class tst_Recordset : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void init();
    void storesAndFindsAnyText_data();
    void storesAndFindsAnyText();
    void addsAWholeRow();
    void aKeyThatIsThereIsAnError();
    void changesAndCounts();
    void removesAndCounts();
    void findsNothing();
    void nullKeysMatchNull();
    void limitsHold();
    void yesNoColumns();
    void privateColumns();
    void unknownNames();
    void countsMustMatch();

private:
    QString cached()
    {
        return m_fixture->rows(
            QStringLiteral("Select sDir, bFd, sName, nSize From www Order By sDir, sName"));
    }
    std::unique_ptr<DbFixture> m_fixture;
    std::unique_ptr<venlo::Recordset> m_www;
};

void tst_Recordset::init()
{
    m_www.reset();
    m_fixture = std::make_unique<DbFixture>();
    m_fixture->makeCacheTable(QStringLiteral("Www"));
    m_www = m_fixture->db().openTable(QStringLiteral("wWW"));
}

void tst_Recordset::storesAndFindsAnyText_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"it's", "'; Drop Table msSite", "a' + '", "a\"b", "what?", "50%", "#1#", "*", " ", "[x]",
          "画像.jpg", "😀", "a\nb", "--", ";", "\xef\xbb\xbfmarked"})
        QTest::newRow(name) << QString::fromUtf8(name);
}

void tst_Recordset::storesAndFindsAnyText()
{
    QFETCH(QString, name);
    m_www->add({QStringLiteral("sDir"), QStringLiteral("bFd"), QStringLiteral("sName"),
                QStringLiteral("nSize")},
               {QStringLiteral("/a'b"), 0, name, 7});
    QCOMPARE(m_www->find({QStringLiteral("nSize"), QStringLiteral("sName")}, key,
                         {QStringLiteral("/A'B"), name}),
             QVariantList({Q_INT64_C(7), name}));
    QCOMPARE(m_www->change({QStringLiteral("nSize")}, {8}, key, {QStringLiteral("/a'b"), name}), 1);
    QCOMPARE(m_www->find({QStringLiteral("nSize")}, key, {QStringLiteral("/a'b"), name}),
             QVariantList{Q_INT64_C(8)});
    QCOMPARE(m_www->remove(key, {QStringLiteral("/a'b"), name}), 1);
    QCOMPARE(cached(), QString());
    QCOMPARE(m_fixture->db().tableNames().size(), 5);
}

void tst_Recordset::addsAWholeRow()
{
    m_www->add({QStringLiteral("SDIR"), QStringLiteral("bfd"), QStringLiteral("sName"),
                QStringLiteral("dDate"), QStringLiteral("nSize")},
               {QStringLiteral("/"), 1, QStringLiteral("pub"),
                QDateTime({2024, 5, 6}, {7, 8, 9}, Qt::UTC), 0});
    QCOMPARE(m_fixture->rows(QStringLiteral("Select * From www")),
             QStringLiteral("/|1|pub|24/05/06 07:08:09|0"));
}

void tst_Recordset::aKeyThatIsThereIsAnError()
{
    m_www->add(key, {QStringLiteral("/"), QStringLiteral("a")});
    const QString words = failure([&] {
        m_www->add(key, {QStringLiteral("/"), QStringLiteral("A")});
    });
    QVERIFY2(words.startsWith(QStringLiteral("同じｷｰの行が既にあります")), qPrintable(words));
    QVERIFY(failure([&] { m_www->add({QStringLiteral("sDir")}, {QStringLiteral("/")}); }) != none);
    QCOMPARE(cached(), QStringLiteral("/|Null|a|Null"));
}

void tst_Recordset::changesAndCounts()
{
    for (const char *name : {"a", "b"})
        m_www->add(key, {QStringLiteral("/"), QLatin1String(name)});
    QCOMPARE(m_www->change({QStringLiteral("nSize"), QStringLiteral("bFd")}, {5, 1},
                           {QStringLiteral("sDir")}, {QStringLiteral("/")}),
             2);
    QCOMPARE(m_www->change({QStringLiteral("nSize")}, {6}, {QStringLiteral("sDir")},
                           {QStringLiteral("/x")}),
             0);
    QCOMPARE(m_www->change({QStringLiteral("nSize")}, {QVariant()}, key,
                           {QStringLiteral("/"), QStringLiteral("B")}),
             1);
    QCOMPARE(cached(), QStringLiteral("/|1|a|5 / /|1|b|Null"));
}

void tst_Recordset::removesAndCounts()
{
    for (const char *name : {"a", "b", "c"})
        m_www->add(key, {QStringLiteral("/"), QLatin1String(name)});
    QCOMPARE(m_www->remove(key, {QStringLiteral("/"), QStringLiteral("B")}), 1);
    QCOMPARE(m_www->remove(key, {QStringLiteral("/"), QStringLiteral("B")}), 0);
    QCOMPARE(m_www->remove({QStringLiteral("sDir")}, {QStringLiteral("/")}), 2);
    QVERIFY(failure([&] { m_www->remove({}, {}); }) != none);
}

void tst_Recordset::findsNothing()
{
    QVERIFY(m_www->find(key, key, {QStringLiteral("/"), QStringLiteral("a")}).isEmpty());
}

void tst_Recordset::nullKeysMatchNull()
{
    m_www->add(key + QStringList(QStringLiteral("nSize")),
               {QStringLiteral("/"), QStringLiteral("a"), QVariant()});
    QCOMPARE(m_www->find({QStringLiteral("sName")},
                         {QStringLiteral("sDir"), QStringLiteral("nSize")},
                         {QStringLiteral("/"), QVariant()}),
             QVariantList{QStringLiteral("a")});
}

void tst_Recordset::limitsHold()
{
    const auto refused = [this](const char *column, const QVariant &value) {
        return failure([&] {
                   m_www->add(key + QStringList(QLatin1String(column)),
                              {QStringLiteral("/"), QStringLiteral("a"), value});
               }) != none;
    };
    QVERIFY(refused("nSize", Q_INT64_C(2147483648)));
    QVERIFY(refused("nSize", QStringLiteral("x")));
    QVERIFY(refused("bFd", 256));
    QVERIFY(refused("dDate", QStringLiteral("24/05/06")));
    QVERIFY(refused("dDate", QByteArray("x")));
    QVERIFY(failure([&] {
                m_www->add(key, {QStringLiteral("/"), QString(256, QLatin1Char('x'))});
            }) != none);
    QVERIFY(failure([&] { m_www->add(key, {QStringLiteral("/"), QByteArray("x")}); }) != none);
    QCOMPARE(cached(), QString());
}

void tst_Recordset::yesNoColumns()
{
    const auto sites = m_fixture->db().openTable(QStringLiteral("msSite"));
    sites->add({QStringLiteral("sName"), QStringLiteral("bPsv"), QStringLiteral("bSvDb")},
               {QStringLiteral("o'brien"), true, 0});
    QCOMPARE(m_fixture->rows(QStringLiteral("Select bPsv, bSvDb From msSite")),
             QStringLiteral("-1|0"));
    sites->change({QStringLiteral("bPsv")}, {false}, {QStringLiteral("sName")},
                  {QStringLiteral("O'BRIEN")});
    QCOMPARE(m_fixture->rows(QStringLiteral("Select bPsv From msSite")), QStringLiteral("0"));
    QVERIFY(failure([&] {
                sites->change({QStringLiteral("bPsv")}, {QStringLiteral("x")},
                              {QStringLiteral("sName")}, {QStringLiteral("o'brien")});
            }) != none);
}

void tst_Recordset::privateColumns()
{
    m_fixture->db().store().exec(
        QStringLiteral("ALTER TABLE \"Www\" ADD COLUMN \"raw name\" BLOB"));
    const QByteArray raw("\x83\x65\0x", 4);
    m_www->add(key + QStringList(QStringLiteral("raw name")),
               {QStringLiteral("/"), QStringLiteral("a"), raw});
    QCOMPARE(
        m_www->find({QStringLiteral("raw name")}, key, {QStringLiteral("/"), QStringLiteral("a")}),
        QVariantList{raw});
}

void tst_Recordset::unknownNames()
{
    QVERIFY(failure([this] { (void)m_fixture->db().openTable(QStringLiteral("nowhere")); }) !=
            none);
    QVERIFY(failure([this] { m_www->add({QStringLiteral("sX")}, {1}); }) != none);
    QVERIFY(failure([this] {
                (void)m_www->find({QStringLiteral("sX")}, {QStringLiteral("sDir")}, {1});
            }) != none);
    m_fixture->db().run(QStringLiteral("Drop Table Www"));
    QVERIFY(failure([this] { m_www->add(key, {1, 2}); }) != none);
}

void tst_Recordset::countsMustMatch()
{
    QVERIFY(failure([this] { m_www->add(key, {1}); }) != none);
    QVERIFY(failure([this] { m_www->add({}, {}); }) != none);
    QVERIFY(failure([this] { (void)m_www->find(key, key, {1}); }) != none);
    QVERIFY(failure([this] { m_www->change(key, {1}, key, {1, 2}); }) != none);
}

QTEST_GUILESS_MAIN(tst_Recordset)
#include "tst_Recordset.moc"
