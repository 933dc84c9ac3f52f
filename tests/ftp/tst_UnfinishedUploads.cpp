#include "ftp/UnfinishedUploads.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "db/Database.h"
#include "db/DatabaseFile.h"
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

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_UnfinishedUploads)
#include "tst_UnfinishedUploads.moc"
