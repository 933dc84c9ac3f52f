#include <algorithm>

#include <QStorageInfo>
#include <QTest>

#include "ftp/ListingTime.h"
#include "ftp/OperationsFixture.h"
#include "sync/SyncWorld.h"

using namespace venlo;
using namespace venlo::test;

namespace
{
constexpr qint64 huge = 4LL * 1024 * 1024 * 1024 + 1; ///< a 32-bit count takes it for 1
const QString pub = QStringLiteral("/pub");
const QString name = QStringLiteral("huge.iso");
const QByteArray sizeReply = QByteArray::number(huge);

QByteArray hugeLine()
{
    return "type=file;size=" + sizeReply + ";modify=20240301120000; huge.iso\r\n";
}

QByteArray smallLine(const char *file)
{
    return QByteArray("type=file;size=5;modify=20240301120000; ") + file + "\r\n";
}

[[nodiscard]] bool makeSparse(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.resize(huge);
}

/// A file that gains as many bytes as are read from it.
class GrowingFile final : public QIODevice
{
public:
    explicit GrowingFile(qint64 bytes) : m_size(bytes) { open(ReadOnly | Unbuffered); }
    [[nodiscard]] qint64 size() const override { return m_size; }

protected:
    qint64 readData(char *data, qint64 most) override
    {
        constexpr qint64 enough = 64LL * 1024 * 1024; // or a test that fails would have no end
        const qint64 bytes = std::min(most, m_size - pos());
        std::fill_n(data, bytes, 'x');
        if (m_size < enough)
            m_size += bytes;
        return bytes;
    }
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    qint64 m_size;
};

/// A server and a local folder with a small file beside the huge one.
struct Fixture : OperationsFixture {
    bool ok = true;

    [[nodiscard]] bool begin()
    {
        server.makeFolder("/pub");
        if (!start())
            return false;
        flags.unattendedTransfer = true;
        return true;
    }
    void put()
    {
        const QString line = QStringLiteral("\t30/01/01 00:00:00\t1");
        operations.ftPutFile(pub, name + line + QLatin1Char('\r') + QStringLiteral("z.txt") + line,
                             here(), ok);
    }
    void get() { operations.ftGetFile(pub, name + QStringLiteral("\rz.txt"), here(), ok); }
};
} // namespace

/// Files beyond 4 GiB, and files that grow while they are sent. The whole way over the network only
/// with VENLO_LARGE_FILES set: it takes 4 GiB of the disk, and a while.
class tst_LargeFiles : public QObject
{
    Q_OBJECT
private Q_SLOTS:
    void cachedSize();
    void oneByteIsNotTheWholeFile();
    void oneByteThereIsNotTheWholeFile();
    void aFolderWithAHugeFile();
    void compared_data();
    void compared();
    void aFileThatGrowsAsItIsSent();
    void theWholeWayUp();
    void theWholeWayDown();
};

/// High word × 4,294,967,295, plus 1, plus the low word.
void tst_LargeFiles::cachedSize()
{
    QCOMPARE(cachedSizeOf(huge), huge);                           // 4,294,967,295 + 1 + 1
    QCOMPARE(cachedSizeOf(huge + 2147483648), huge + 2147483648); // a negative low word
}

void tst_LargeFiles::oneByteIsNotTheWholeFile()
{
    Fixture f;
    f.server.put("/pub/huge.iso", "x");
    f.server.put("/pub/z.txt", "small");
    f.server.on("SIZE", "huge.iso").reply(213, sizeReply);
    f.server.on("STAT").reply(502, "no");
    QVERIFY(f.begin());
    f.get();
    QVERIFY(f.ok);
    QCOMPARE(f.localNames(), QStringList(QStringLiteral("z.txt")));
    QCOMPARE(f.counts(), QStringLiteral("1/1/0"));
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("FtpGetFile Err:/pub/huge.iso > ") +
                                         f.here() + QStringLiteral(" DownLoad")));
}

/// The server closes early, says 226, and has what a 32-bit count takes for all.
void tst_LargeFiles::oneByteThereIsNotTheWholeFile()
{
    Fixture f;
    f.server.on("STOR", "huge.iso").truncateAfter(1);
    QVERIFY(f.begin());
    QVERIFY(makeSparse(f.at(name)));
    f.write(QStringLiteral("z.txt"), "small");
    f.put();
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/pub/z.txt"), QByteArray("small"));
    QCOMPARE(f.counts(), QStringLiteral("1/1/0"));
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("FtpPutFile Err: ") + f.at(name) +
                                         QStringLiteral(" > /pub UpLoad")));
    const auto notes = f.cache.unfinishedUnder(pub);
    QVERIFY2(std::any_of(notes.begin(), notes.end(),
                         [](const auto &note) { return note.second == name; }),
             "what lies there is noted");
}

/// Its row does not fit into the cache. The folder says so; what else it holds comes.
void tst_LargeFiles::aFolderWithAHugeFile()
{
    Fixture f;
    f.server.put("/pub/iso/a.txt", "small");
    f.server.put("/pub/iso/z.txt", "small");
    f.server.setRawListing("/pub/iso", smallLine("a.txt") + hugeLine() + smallLine("z.txt"));
    QVERIFY(f.begin());
    f.operations.ftGetFold(f.here(), QStringLiteral("iso"), pub, f.ok);
    QVERIFY(f.ok);
    QCOMPARE(QDir(f.at(QStringLiteral("iso"))).entryList(QDir::Files | QDir::Hidden),
             QStringList({QStringLiteral("a.txt"), QStringLiteral("z.txt")}));
    QCOMPARE(f.operations.counts().givenUp, 1);
    QCOMPARE(f.errorLines().size(), 1);
    QVERIFY(f.errorLines().front().startsWith(QStringLiteral("ftGetFold Err:/pub/iso : ")));
}

void tst_LargeFiles::compared_data()
{
    QTest::addColumn<bool>("here");
    QTest::addColumn<bool>("upwards");
    QTest::newRow("here, up") << true << true;
    QTest::newRow("here, down") << true << false;
    QTest::newRow("there, up") << false << true;
    QTest::newRow("there, down") << false << false;
}

/// The tables hold 2,147,483,647 bytes at most: a file here ends the comparison, one there holds
/// its folder back. Either way the run says so, and nothing of either side goes.
void tst_LargeFiles::compared()
{
    QFETCH(bool, here);
    QFETCH(bool, upwards);
    ScriptedServer server;
    SyncWorld world;
    server.put("/pub/iso/a.txt", "small");
    server.put("/pub/other/b.txt", "small");
    QVERIFY(makeTree(world.local(), {{"iso/mine.txt", "mine"}, {"other/mine.txt", "mine"}}));
    if (here)
        QVERIFY(makeSparse(world.local() + QStringLiteral("/iso/huge.iso")));
    else
        server.setRawListing("/pub/iso", smallLine("a.txt") + hugeLine());
    QVERIFY(server.start());
    world.registerSite(server.server(), server.user(), server.password());
    world.registerPattern(QStringLiteral("p"), pub);
    QCOMPARE(world.batch().RunSyncPattern(QStringLiteral("p"), upwards), 1);
    QVERIFY(!world.person.messages().isEmpty() || !world.person.warnings().isEmpty());
    QVERIFY(QFile::exists(world.local() + QStringLiteral("/iso/mine.txt")));
    QVERIFY(server.exists("/pub/iso/a.txt"));
    const bool mineElsewhere = QFile::exists(world.local() + QStringLiteral("/other/mine.txt"));
    if (here) {
        QCOMPARE(world.errorLogText().count("sySync Err"), 1);
        QVERIFY(world.person.messages().front().contains(name));
        QVERIFY(mineElsewhere);
        QVERIFY(server.exists("/pub/other/b.txt"));
    } else {
        QCOMPARE(mineElsewhere, upwards);
        QCOMPARE(server.exists("/pub/other/b.txt"), !upwards);
        QCOMPARE(QFile::exists(world.local() + QStringLiteral("/other/b.txt")), !upwards);
    }
}

void tst_LargeFiles::aFileThatGrowsAsItIsSent()
{
    Fixture f;
    QVERIFY(f.begin());
    constexpr qint64 atFirst = 300'000;
    GrowingFile file(atFirst);
    const auto stored = f.session.client().store("log.txt", file, {});
    QVERIFY(stored.ok());
    QCOMPARE(stored.value(), atFirst);
    QCOMPARE(f.server.file("/log.txt").size(), atFirst);
}

void tst_LargeFiles::theWholeWayUp()
{
    if (!qEnvironmentVariableIsSet("VENLO_LARGE_FILES"))
        QSKIP("VENLO_LARGE_FILES is not set");
    Fixture f;
    f.server.on("STOR", "huge.iso").discards();
    f.server.on("SIZE", "huge.iso").reply(213, sizeReply);
    QVERIFY(f.begin());
    QVERIFY(makeSparse(f.at(name)));
    f.write(QStringLiteral("z.txt"), "small");
    f.put();
    QVERIFY(f.ok);
    QCOMPARE(f.counts(), QStringLiteral("2/0/0"));
    QCOMPARE(f.person.progresses().back().total, 5);
    const auto &all = f.person.progresses();
    QVERIFY(std::any_of(all.begin(), all.end(), [](const TransferProgress &progress) {
        return progress.done == huge && progress.total == huge;
    }));
}

void tst_LargeFiles::theWholeWayDown()
{
    if (!qEnvironmentVariableIsSet("VENLO_LARGE_FILES"))
        QSKIP("VENLO_LARGE_FILES is not set");
    Fixture f;
    if (QStorageInfo(f.here()).bytesAvailable() < 2 * huge)
        QSKIP("the disk has no room for it");
    f.server.put("/pub/z.txt", "small");
    f.server.put("/pub/huge.iso", "x");
    f.server.on("RETR", "huge.iso").endlessData(QByteArray(1024 * 1024, 'x')).truncateAfter(huge);
    f.server.on("SIZE", "huge.iso").reply(213, sizeReply);
    QVERIFY(f.begin());
    f.get();
    QVERIFY(f.ok);
    QCOMPARE(f.counts(), QStringLiteral("2/0/0"));
    QCOMPARE(QFileInfo(f.at(name)).size(), huge);
}

QTEST_GUILESS_MAIN(tst_LargeFiles)
#include "tst_LargeFiles.moc"
