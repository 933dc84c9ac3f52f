// The files and folders a download works with: temporary files and their notes, and a folder whose
// path leads somewhere else by now.
#include "ftp/SteadyFolder.h"
#include "ftp/TemporaryFile.h"
#include "platform/TemporaryName.h"

#include <QDir>
#include <QTemporaryDir>
#include <QTest>

using namespace venlo;

class tst_DownloadFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void takesItsPlace();
    void aFailedOneLeavesNothing();
    void theNoteFollowsTheFile();
    void steadyWhileNothingHappens();
    void steadyWhenMadeAnew();
    void goneLeadsNowhere();
#ifdef Q_OS_UNIX // links that a program without rights can make
    void behindALink();
    void steadyThroughALink();
    void leadsAwayByALink();
    void leadsAwayByALinkAbove();
#endif

private:
    struct Put {
        QString temporary; ///< name
        bool done = false;
    };
    [[nodiscard]] Put put(const QString &folder, const QString &name);
    [[nodiscard]] QString at(const QString &name) const
    {
        return m_folder->filePath(name);
    }
    void makeFolder(const QString &name) const
    {
        QVERIFY(QDir(m_folder->path()).mkpath(name));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QTemporaryDir> m_user;
    std::unique_ptr<DownloadJournal> m_journal;
};

void tst_DownloadFiles::init()
{
    m_journal.reset();
    m_folder = std::make_unique<QTemporaryDir>();
    m_user = std::make_unique<QTemporaryDir>();
    m_journal = std::make_unique<DownloadJournal>(m_user->path());
    makeFolder(QStringLiteral("a"));
    makeFolder(QStringLiteral("b"));
}

/// Downloads a file of three bytes; onto a folder that fails.
tst_DownloadFiles::Put tst_DownloadFiles::put(const QString &folder, const QString &name)
{
    Put result;
    TemporaryFile file(*m_journal, at(folder));
    if (!file.open() || file.device().write("abc") != 3 ||
        !file.flush([](const auto &work) { work(); }))
        return result;
    for (const QString &there : QDir(at(folder)).entryList(QDir::Files | QDir::Hidden)) {
        if (isTemporaryName(there))
            result.temporary += there;
    }
    bool timeSet = true;
    result.done =
        static_cast<bool>(file.replace(at(folder + QLatin1Char('/') + name), 3, {}, timeSet));
    return result;
}

void tst_DownloadFiles::takesItsPlace()
{
    const Put first = put(QStringLiteral("a"), QStringLiteral("1"));
    const Put second = put(QStringLiteral("a"), QStringLiteral("2"));
    QVERIFY(first.done && second.done);
    QVERIFY(isTemporaryName(first.temporary));
    QVERIFY(isTemporaryName(second.temporary));
    QVERIFY(second.temporary != first.temporary); // nobody else can be in its way
    QCOMPARE(QDir(at(QStringLiteral("a"))).entryList(QDir::Files | QDir::Hidden),
             QStringList({QStringLiteral("1"), QStringLiteral("2")}));
}

void tst_DownloadFiles::aFailedOneLeavesNothing()
{
    makeFolder(QStringLiteral("a/taken"));
    const Put failed = put(QStringLiteral("a"), QStringLiteral("taken"));
    QVERIFY(!failed.done);
    QVERIFY(isTemporaryName(failed.temporary));
    QVERIFY(!QFile::exists(at(QStringLiteral("a/") + failed.temporary)));
    QCOMPARE(DownloadJournal(m_user->path()).live(), QStringList());
}

/// Longer and shorter paths, one upon the other.
void tst_DownloadFiles::theNoteFollowsTheFile()
{
    makeFolder(QStringLiteral("a/much longer than that"));
    const DownloadJournal neighbour(m_user->path());
    QStringList before; // may be on its way to its place
    for (const char *name : {"a", "a", "a/much longer than that", "b"}) {
        const QString folder = QString::fromLatin1(name);
        TemporaryFile file(*m_journal, at(folder));
        QVERIFY(file.open());
        const QStringList live = neighbour.live();
        QCOMPARE(live.mid(1), before);
        before = live.mid(0, 1);
        QVERIFY(QFile::exists(live.at(0)));
        QCOMPARE(QFileInfo(live.at(0)).path(), at(folder));
        bool timeSet = true;
        QVERIFY(file.replace(at(folder + QStringLiteral("/f")), 0, {}, timeSet));
    }
    m_journal->end();
    QCOMPARE(neighbour.live(), QStringList());
}

void tst_DownloadFiles::steadyWhileNothingHappens()
{
    const SteadyFolder folder(at(QStringLiteral("a")));
    QVERIFY(!folder.leadsAway());
    QVERIFY(put(QStringLiteral("a"), QStringLiteral("1")).done);
    QVERIFY(!folder.leadsAway());
}

void tst_DownloadFiles::steadyWhenMadeAnew()
{
    const SteadyFolder folder(at(QStringLiteral("a")));
    QVERIFY(QDir(m_folder->path()).rename(QStringLiteral("a"), QStringLiteral("c")));
    makeFolder(QStringLiteral("a"));
    QVERIFY(!folder.leadsAway());
}

void tst_DownloadFiles::goneLeadsNowhere()
{
    const SteadyFolder folder(at(QStringLiteral("a")));
    QVERIFY(QDir(m_folder->path()).rmdir(QStringLiteral("a")));
    QVERIFY(!folder.leadsAway());
}

#ifdef Q_OS_UNIX
/// The path of a folder is the system's to follow: ".." behind a link is not what it reads like.
void tst_DownloadFiles::behindALink()
{
    makeFolder(QStringLiteral("real/deep"));
    makeFolder(QStringLiteral("real/data"));
    QVERIFY(QFile::link(at(QStringLiteral("real/deep")), at(QStringLiteral("link"))));
    QVERIFY(put(QStringLiteral("link/../data"), QStringLiteral("1")).done);
    QVERIFY(QFile::exists(at(QStringLiteral("real/data/1"))));
}

void tst_DownloadFiles::steadyThroughALink()
{
    QVERIFY(QFile::link(at(QStringLiteral("a")), at(QStringLiteral("link"))));
    const SteadyFolder folder(at(QStringLiteral("link")));
    QVERIFY(!folder.leadsAway());
    QVERIFY(QFile::remove(at(QStringLiteral("link"))));
    QVERIFY(QFile::link(at(QStringLiteral("b")), at(QStringLiteral("link"))));
    QVERIFY(folder.leadsAway());
}

/// Also where the other folder has got the number that the first one had.
void tst_DownloadFiles::leadsAwayByALink()
{
    const SteadyFolder folder(at(QStringLiteral("a")));
    QVERIFY(QDir(m_folder->path()).rmdir(QStringLiteral("a")));
    makeFolder(QStringLiteral("new"));
    QVERIFY(QFile::link(at(QStringLiteral("new")), at(QStringLiteral("a"))));
    QVERIFY(folder.leadsAway());
}

void tst_DownloadFiles::leadsAwayByALinkAbove()
{
    makeFolder(QStringLiteral("a/below"));
    makeFolder(QStringLiteral("b/below"));
    const SteadyFolder folder(at(QStringLiteral("a/below")));
    QVERIFY(QDir(m_folder->path()).rename(QStringLiteral("a"), QStringLiteral("c")));
    QVERIFY(QFile::link(at(QStringLiteral("b")), at(QStringLiteral("a"))));
    QVERIFY(folder.leadsAway());
}
#endif

QTEST_GUILESS_MAIN(tst_DownloadFiles)
#include "tst_DownloadFiles.moc"
