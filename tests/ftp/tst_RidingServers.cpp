// Whole operations on servers that do not bear commands sent ahead: every file is right in the end,
// and nobody is asked or told.
#include "ftp/OperationsFixture.h"

#include "db/DisplayFormat.h"
#include "shared/NameList.h"

#include <QElapsedTimer>
#include <QTest>

using namespace venlo;
using venlo::test::EarlyLines;
using venlo::test::OperationsFixture;
using venlo::test::ServerOptions;

namespace
{
constexpr int fileCount = 6;
using Shape = std::function<void(ServerOptions &options)>;

Shape early(EarlyLines lines)
{
    return [lines](ServerOptions &options) { options.earlyLines = lines; };
}

struct Fixture : OperationsFixture {
    bool ok = true;

    [[nodiscard]] static QStringList names()
    {
        QStringList names;
        for (int i = 0; i < fileCount; ++i)
            names.append(QStringLiteral("file%1.txt").arg(i));
        return names;
    }
    [[nodiscard]] static QByteArray content(const QString &name)
    {
        return "content of " + name.toUtf8().repeated(1000);
    }
    /// The list form with what the local pane would show of the files.
    void putList(const QString &dir)
    {
        QStringList lines;
        for (const QString &name : names()) {
            const QFileInfo file(at(name));
            lines.append(
                UploadLine{name, FormatDateText(file.lastModified()), FormatSizeText(file.size())}
                    .text());
        }
        operations.ftPutFile(dir, joinNames(lines), here() + QLatin1Char('/'), ok);
    }
    [[nodiscard]] qsizetype slowings() const
    {
        return events().count(QStringLiteral("! commands are no longer sent ahead"));
    }
    [[nodiscard]] bool noted(const QString &name)
    {
        return cache.unfinished().noted(QStringLiteral("web"), QStringLiteral("/"), name);
    }
};
} // namespace

class tst_RidingServers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void uploads_data() { kinds(); }
    void uploads();
    void downloads_data() { kinds(); }
    void downloads();
    void trees_data() { kinds(); }
    void trees();
    void listings_data() { kinds(); }
    void listings();
    void timeOfARefusedFileIsNoted();
    void otherSizeGoesAgain();

private:
    static void kinds();
};

void tst_RidingServers::kinds()
{
    QTest::addColumn<Shape>("shape");
    QTest::newRow("in order") << early(EarlyLines::InOrder);
    QTest::newRow("ends the transfer") << early(EarlyLines::EndTheTransfer);
    QTest::newRow("completion comes late") << early(EarlyLines::AnswerFirst);
    QTest::newRow("completes a broken transfer") << early(EarlyLines::CompleteIt);
    QTest::newRow("drops lines") << early(EarlyLines::Dropped);
    QTest::newRow("503 at once") << early(EarlyLines::Refused);
    QTest::newRow("closes") << early(EarlyLines::CloseConnection);
    QTest::newRow("first line only")
        << Shape([](ServerOptions &options) { options.firstLineOnly = true; });
    QTest::newRow("forgets the port")
        << Shape([](ServerOptions &options) { options.forgetsPortAtCwd = true; });
}

#define FIXTURE                                                                                    \
    QFETCH(Shape, shape);                                                                          \
    Fixture f;                                                                                     \
    shape(f.server.options());                                                                     \
    QElapsedTimer timer;                                                                           \
    timer.start()

void tst_RidingServers::uploads()
{
    FIXTURE;
    f.server.makeFolder("/d");
    QVERIFY(f.start());
    for (const QString &name : Fixture::names())
        f.write(name, Fixture::content(name));
    for (const QString &dir : {QStringLiteral("/"), QStringLiteral("/d")})
        f.putList(dir);
    QVERIFY(f.ok);
    QCOMPARE(f.counts(), QStringLiteral("%1/0/0").arg(2 * fileCount));
    for (const QString &name : Fixture::names()) {
        QCOMPARE(f.server.file("/" + name.toUtf8()), Fixture::content(name));
        QCOMPARE(f.server.file("/d/" + name.toUtf8()), Fixture::content(name));
        QVERIFY(!f.noted(name));
    }
    QVERIFY(f.slowings() <= 2);
    QVERIFY2(f.reconnects() <= 2, qPrintable(f.events()));
    QVERIFY(f.person.messages().isEmpty());
    QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
}

void tst_RidingServers::downloads()
{
    FIXTURE;
    for (const QString &name : Fixture::names())
        f.server.put("/" + name.toUtf8(), Fixture::content(name));
    QVERIFY(f.start());
    f.operations.ftGetFile(QStringLiteral("/"), joinNames(Fixture::names()), f.here(), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.counts(), QStringLiteral("%1/0/0").arg(fileCount));
    for (const QString &name : Fixture::names())
        QCOMPARE(f.read(name), Fixture::content(name));
    QVERIFY(f.slowings() <= 2);
    QVERIFY2(f.reconnects() <= 2, qPrintable(f.events()));
    QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
}

void tst_RidingServers::trees()
{
    FIXTURE;
    f.server.put("/there", "x");
    f.server.makeFolder("/tree/old");
    QVERIFY(f.start());
    std::vector<venlo::test::TreeRow> files;
    for (const char *folder : {"", "a/", "a/deep/", "b/", "old/"}) {
        for (const char *name : {"1.txt", "2.txt"}) {
            const QString path =
                QLatin1String("tree/") + QLatin1String(folder) + QLatin1String(name);
            files.push_back({path.toUtf8(), Fixture::content(path)});
        }
    }
    QVERIFY(venlo::test::makeTree(f.here(), files));
    f.operations.ftPutFold(f.here(), QStringLiteral("tree"), QStringLiteral("/"), f.ok);
    QVERIFY2(f.ok, qPrintable(f.events()));
    for (const auto &file : files)
        QCOMPARE(f.server.file('/' + file.path), file.bytes);
    QCOMPARE(f.server.tree().paths().size(), 5 + 10 + 1);
    for (const char *parent : {"/tree", "/tree/a"})
        QVERIFY(
            f.cache.isCached(QLatin1String(parent), QLatin1String(parent) == QLatin1String("/tree")
                                                        ? QStringLiteral("b")
                                                        : QStringLiteral("deep")));
    QVERIFY(f.slowings() <= 2);
    QVERIFY2(f.reconnects() <= 2, qPrintable(f.events()));
    QCOMPARE(f.errorLines(), QStringList());
    QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
}

void tst_RidingServers::listings()
{
    FIXTURE;
    for (int i = 0; i < fileCount; ++i)
        f.server.put("/d" + QByteArray::number(i) + "/sub/file", "x");
    QVERIFY(f.start());
    f.cache.caRefresh(QStringLiteral("/"));
    QCOMPARE(f.cacheRows(QStringLiteral("web")).size(), 3 * fileCount);
    QVERIFY2(f.cache.incompleteUnder(QStringLiteral("/")).empty(), qPrintable(f.events()));
    QVERIFY(f.slowings() <= 2);
    QVERIFY2(f.reconnects() <= 2, qPrintable(f.events()));
    QVERIFY2(timer.elapsed() < 20'000, qPrintable(QString::number(timer.elapsed())));
}

void tst_RidingServers::timeOfARefusedFileIsNoted()
{
    Fixture f;
    f.server.put("/file3.txt", "old");
    f.server.on("STOR", "file3.txt").reply(553, "not that");
    QVERIFY(f.start());
    for (const QString &name : Fixture::names())
        f.write(name, Fixture::content(name));
    f.putList(QStringLiteral("/"));
    QCOMPARE(f.counts(), QStringLiteral("%1/1/0").arg(fileCount - 1));
    QCOMPARE(f.server.file("/file3.txt"), QByteArray("old"));
    QVERIFY(f.noted(QStringLiteral("file3.txt"))); // with the time of what it is not
    QVERIFY(!f.noted(QStringLiteral("file4.txt")));
    QCOMPARE(f.server.file("/file4.txt"), Fixture::content(QStringLiteral("file4.txt")));
}

void tst_RidingServers::otherSizeGoesAgain()
{
    Fixture f;
    f.server.on("SIZE", "file3.txt").once().reply(213, "1");
    QVERIFY(f.start());
    for (const QString &name : Fixture::names())
        f.write(name, Fixture::content(name));
    f.putList(QStringLiteral("/"));
    QCOMPARE(f.counts(), QStringLiteral("%1/0/0").arg(fileCount));
    QCOMPARE(f.server.count("STOR", "file3.txt"), 2);
    QCOMPARE(f.slowings(), 1);
    QVERIFY(!f.noted(QStringLiteral("file3.txt")));
}

QTEST_GUILESS_MAIN(tst_RidingServers)
#include "tst_RidingServers.moc"
