#include <QTest>

#include "startup/CommandLine.h"
#include "startup/ProgramName.h"

namespace venlo
{

class tst_CommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parse_data();
    void parse();
    void launchRecord_data();
    void launchRecord();
    void contains_data();
    void contains();
    void baseName_data();
    void baseName();
};

void tst_CommandLine::parse_data()
{
    QTest::addColumn<QString>("raw");
    QTest::addColumn<QString>("verb");
    QTest::addColumn<bool>("batch");
    QTest::addColumn<QStringList>("arguments");
    const auto row = [](const char *name, const QString &raw, const char *verb, bool batch,
                        const QStringList &arguments) {
        QTest::newRow(name) << raw << QString::fromLatin1(verb) << batch << arguments;
    };
    const QString none;
    row("nothing", none, "", false, {});
    row("a verb without a bar", QStringLiteral("syncup"), "", false, {});
    row("/b without a bar", QStringLiteral("/b"), "", false, {});
    row("/b and a verb without a bar", QStringLiteral("/b syncup"), "", false, {});
    row("syncup", QStringLiteral("syncup|A"), "syncup", false,
        {QStringLiteral("syncup"), QStringLiteral("A")});
    row("syncdown", QStringLiteral("syncdown|A"), "syncdown", false,
        {QStringLiteral("syncdown"), QStringLiteral("A")});
    row("open", QStringLiteral("open|S"), "open", false,
        {QStringLiteral("open"), QStringLiteral("S")});
    row("openp", QStringLiteral("openp|P"), "openp", false,
        {QStringLiteral("openp"), QStringLiteral("P")});
    row("put with four arguments", QStringLiteral("put|/l|S|/r|a,b"), "put", false,
        {QStringLiteral("put"), QStringLiteral("/l"), QStringLiteral("S"), QStringLiteral("/r"),
         QStringLiteral("a,b")});
    row("get", QStringLiteral("get|/l|S|/r|a"), "get", false,
        {QStringLiteral("get"), QStringLiteral("/l"), QStringLiteral("S"), QStringLiteral("/r"),
         QStringLiteral("a")});
    row("/B SyncUp in any case", QStringLiteral("/B SyncUp|A"), "syncup", true,
        {QStringLiteral("/B SyncUp"), QStringLiteral("A")});
    row("a letter that is only like one of a verb", QStringLiteral("\u017Fyncup|A"), "", false, {});
    row("/b behind the verb", QStringLiteral("syncup /b|A"), "syncup", true,
        {QStringLiteral("syncup /b"), QStringLiteral("A")});
    row("/b inside the verb", QStringLiteral("sync/bup|A"), "syncup", true,
        {QStringLiteral("sync/bup"), QStringLiteral("A")});
    row("/b without a blank", QStringLiteral("/bsyncup|A"), "syncup", true,
        {QStringLiteral("/bsyncup"), QStringLiteral("A")});
    row("every /b goes", QStringLiteral("/b /b syncup /b|A"), "syncup", true,
        {QStringLiteral("/b /b syncup /b"), QStringLiteral("A")});
    row("/b behind the bar is an argument", QStringLiteral("syncup|/b"), "syncup", false,
        {QStringLiteral("syncup"), QStringLiteral("/b")});
    row("blanks around the verb", QStringLiteral("  syncup  |A"), "syncup", false,
        {QStringLiteral("  syncup  "), QStringLiteral("A")});
    row("arguments as they stand", QStringLiteral("syncup| Ａ b | |"), "syncup", false,
        {QStringLiteral("syncup"), QStringLiteral(" Ａ b "), QStringLiteral(" "), none});
    row("no argument given", QStringLiteral("syncup|"), "syncup", false,
        {QStringLiteral("syncup"), none});
    row("half a verb passes", QStringLiteral("sync|A"), "sync", false,
        {QStringLiteral("sync"), QStringLiteral("A")});
    row("the end of a verb passes", QStringLiteral("up|A"), "up", false,
        {QStringLiteral("up"), QStringLiteral("A")});
    row("the middle of a verb passes", QStringLiteral("pen|A"), "pen", false,
        {QStringLiteral("pen"), QStringLiteral("A")});
    row("across two verbs passes", QStringLiteral("up.sync|A"), "up.sync", false,
        {QStringLiteral("up.sync"), QStringLiteral("A")});
    row("an unknown verb is none", QStringLiteral("delete|A"), "", false, {});
    row("an unknown verb keeps /b", QStringLiteral("/b delete|A"), "", true, {});
    row("no verb", QStringLiteral("|A"), "", false, {});
    row("only /b before the bar", QStringLiteral("/b|A"), "", true, {});
    row("a blank inside a verb", QStringLiteral("sync up|A"), "", false, {});
    row("an ideographic blank is no blank", QStringLiteral("　syncup|A"), "", false, {});
}

void tst_CommandLine::parse()
{
    QFETCH(QString, raw);
    const CommandLine line = CommandLine::parse(raw);
    QCOMPARE(line.raw, raw);
    QTEST(line.verb, "verb");
    QTEST(line.batch, "batch");
    QTEST(line.arguments, "arguments");
    QCOMPARE(line.launchRecordPath, QString());
}

void tst_CommandLine::launchRecord_data()
{
    QTest::addColumn<QString>("raw");
    QTest::newRow("a path") << QStringLiteral("/tmp/UT_ACT.pdat");
    QTest::newRow("another letter case") << QStringLiteral("/tmp/ut_act.PDAT");
    QTest::newRow("blanks in the path") << QStringLiteral("/tmp/my files/x UT_ACT.pdat");
    QTest::newRow("wins over a verb") << QStringLiteral("/b syncup|UT_ACT.pdat");
}

void tst_CommandLine::launchRecord()
{
    QFETCH(QString, raw);
    const CommandLine line = CommandLine::parse(raw);
    QCOMPARE(line.launchRecordPath, raw);
    QCOMPARE(line.verb, QString());
    QVERIFY(!line.batch);
    QVERIFY(line.arguments.isEmpty());
}

void tst_CommandLine::contains_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("part");
    QTest::addColumn<int>("position");
    QTest::addColumn<bool>("has");
    const auto row = [](const char *name, const char *text, const char *part, int position,
                        bool has) {
        QTest::newRow(name) << QString::fromLatin1(text) << QString::fromLatin1(part) << position
                            << has;
    };
    row("at the start", "abc", "ab", 1, true);
    row("further on", "abcabc", "c", 3, true);
    row("in another case", "aBC", "Bc", 2, true);
    row("not there", "abc", "x", 0, false);
    row("an empty part", "abc", "", 1, false);
    row("an empty text", "", "a", 0, false);
}

void tst_CommandLine::contains()
{
    QFETCH(QString, text);
    QFETCH(QString, part);
    qsizetype position = 77;
    QTEST(InStrHas(text, part, position), "has");
    QTEST(static_cast<int>(position), "position");
}

void tst_CommandLine::baseName_data()
{
    QTest::addColumn<QString>("executable");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *name, const char *executable, const char *base) {
        QTest::newRow(name) << QString::fromLatin1(executable) << QString::fromLatin1(base);
    };
    row("plain", "VenloFtp", "VenloFtp");
    row("_dv at the end", "VenloFtp_dv", "VenloFtp");
    row("_DV at the end", "VenloFtp_DV", "VenloFtp");
    row("_Dv at the end", "VenloFtp_Dv", "VenloFtp");
    row("once only", "VenloFtp_dv_dv", "VenloFtp_dv");
    row("_dv elsewhere", "Venlo_dvFtp", "Venlo_dvFtp");
    row("dv without the bar", "Venlodv", "Venlodv");
    row("shorter than the mark", "dv", "dv");
}

void tst_CommandLine::baseName()
{
    QFETCH(QString, executable);
    QTEST(programBaseName(executable), "name");
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_CommandLine)
#include "tst_CommandLine.moc"
