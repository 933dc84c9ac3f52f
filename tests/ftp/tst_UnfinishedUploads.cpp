#include "ftp/UnfinishedUploads.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "db/Database.h"
#include "db/DatabaseFile.h"
#include "db/DbError.h"
#include "support/ScriptedPerson.h"

namespace venlo::test
{

namespace
{
const QString site = QStringLiteral("web");
const QString dir = QStringLiteral("/pub/ﾎｰﾑ");
const QString name = QStringLiteral("it's a 'name'.txt");
using Notes = std::vector<std::pair<QString, QString>>;
} // namespace

class tst_UnfinishedUploads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void notesLastAcrossRuns();
    void killedWhileSending();
    void settledLeavesNothing();
    void cutNoteIsNoUpload();
    void aKilledNeighboursNoteIsTaken();
    void keptWhileTheDatabaseRefuses();
    void keptAcrossRuns();
    void keptNotesEndToo();
    void keptNotesThatAnotherProcessTook();

private:
    [[nodiscard]] QString note() const { return m_folder->filePath(QStringLiteral("Upload.note")); }
    [[nodiscard]] std::unique_ptr<Database> database();

    std::unique_ptr<QTemporaryDir> m_folder;
    ScriptedPerson m_person;
};

void tst_UnfinishedUploads::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    createInitialDatabase(m_folder->filePath(QStringLiteral("dbFtp.mdb")));
}

std::unique_ptr<Database> tst_UnfinishedUploads::database()
{
    auto opened = std::make_unique<Database>(m_person, m_folder->path() + QLatin1Char('/'));
    bool ok = false;
    opened->OpenDb(ok);
    if (!ok)
        qFatal("the test's database does not open");
    return opened;
}

void tst_UnfinishedUploads::notesLastAcrossRuns()
{
    {
        const auto store = database();
        UnfinishedUploads uploads(*store);
        uploads.begin(site, dir, name);
    }
    const auto store = database();
    UnfinishedUploads uploads(*store);
    QVERIFY(uploads.noted(site, dir, name));
    QVERIFY(!uploads.noted(QStringLiteral("other"), dir, name));
    uploads.end(site, dir, name);
    QVERIFY(uploads.under(site, QStringLiteral("/")).empty());
}

void tst_UnfinishedUploads::killedWhileSending()
{
    {
        const auto store = database();
        UnfinishedUploads uploads(*store);
        uploads.sending(site, dir, name);
        QVERIFY(uploads.under(site, QStringLiteral("/")).empty()); // its own, still on its way
    }
#ifdef Q_OS_UNIX
    QCOMPARE(QFile(note()).permissions() & (QFile::ReadGroup | QFile::ReadOther),
             QFile::Permissions());
#endif
    const auto store = database();
    UnfinishedUploads uploads(*store);
    QCOMPARE(uploads.under(site, QStringLiteral("/pub")), Notes({{dir, name}}));
    QCOMPARE(QFile(note()).size(), 0);
}

void tst_UnfinishedUploads::settledLeavesNothing()
{
    {
        const auto store = database();
        UnfinishedUploads uploads(*store);
        uploads.sending(site, dir, name);
        uploads.settled();
    }
    const auto store = database();
    QVERIFY(UnfinishedUploads(*store).under(site, QStringLiteral("/")).empty());
}

void tst_UnfinishedUploads::cutNoteIsNoUpload()
{
    QFile file(note());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("web\n/pub");
    file.close();
    const auto store = database();
    QVERIFY(UnfinishedUploads(*store).under(site, QStringLiteral("/")).empty());
}

void tst_UnfinishedUploads::aKilledNeighboursNoteIsTaken()
{
    const auto store = database();
    UnfinishedUploads here(*store);
    QVERIFY(here.under(site, QStringLiteral("/")).empty());
    {
        UnfinishedUploads neighbour(*store);
        neighbour.sending(site, dir, name);
    }
    here.sending(site, dir, QStringLiteral("next.txt"));
    here.settled();
    QCOMPARE(here.under(site, QStringLiteral("/")), Notes({{dir, name}}));
}

/// Two uploads break and a third is whole, while the database cannot be written.
void tst_UnfinishedUploads::keptWhileTheDatabaseRefuses()
{
    const auto store = database();
    UnfinishedUploads uploads(*store);
    store->CloseDb();
    for (const char *broken : {"1.txt", "2.txt"}) {
        uploads.sending(site, dir, QString::fromLatin1(broken));
        QVERIFY_THROWS_EXCEPTION(DbError, uploads.begin(site, dir, QString::fromLatin1(broken)));
        uploads.settled();
    }
    uploads.sending(site, dir, name);
    uploads.settled();
    bool ok = false;
    store->OpenDb(ok);
    QVERIFY(ok);
    QVERIFY(uploads.noted(site, dir, QStringLiteral("1.txt")));
    QCOMPARE(uploads.under(site, dir),
             Notes({{dir, QStringLiteral("1.txt")}, {dir, QStringLiteral("2.txt")}}));
    QCOMPARE(QFile(note()).size(), 0);
}

/// Not in hand any more when the database refuses, and the program ends.
void tst_UnfinishedUploads::keptAcrossRuns()
{
    {
        const auto store = database();
        UnfinishedUploads uploads(*store);
        QVERIFY(!uploads.noted(site, dir, name));
        uploads.sending(site, dir, name);
        uploads.settled();
        store->CloseDb();
        QVERIFY_THROWS_EXCEPTION(DbError, uploads.begin(site, dir, name));
    }
    const auto store = database();
    UnfinishedUploads uploads(*store);
    uploads.sending(site, dir, QStringLiteral("next.txt"));
    QVERIFY(uploads.noted(site, dir, name));
    QVERIFY(!uploads.noted(site, dir, QStringLiteral("next.txt")));
}

void tst_UnfinishedUploads::keptNotesEndToo()
{
    const auto store = database();
    UnfinishedUploads uploads(*store);
    store->CloseDb();
    QVERIFY_THROWS_EXCEPTION(DbError, uploads.begin(site, dir, name));
    bool ok = false;
    store->OpenDb(ok);
    QVERIFY(ok);
    uploads.end(site, dir, name); // the remnant was deleted on the server
    uploads.sending(site, dir, QStringLiteral("next.txt"));
    uploads.settled();
    QVERIFY(!uploads.noted(site, dir, name));
}

void tst_UnfinishedUploads::keptNotesThatAnotherProcessTook()
{
    const auto store = database();
    {
        UnfinishedUploads here(*store);
        store->CloseDb();
        QVERIFY_THROWS_EXCEPTION(DbError, here.begin(site, dir, name));
        bool ok = false;
        store->OpenDb(ok);
        QVERIFY(ok);
        QCOMPARE(UnfinishedUploads(*store).under(site, dir), Notes({{dir, name}}));
        here.sending(site, dir, QStringLiteral("next.txt")); // and is killed
    }
    QCOMPARE(UnfinishedUploads(*store).under(site, dir),
             Notes({{dir, name}, {dir, QStringLiteral("next.txt")}}));
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_UnfinishedUploads)
#include "tst_UnfinishedUploads.moc"
