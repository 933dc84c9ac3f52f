// The files and folders a download works with: temporary files that follow each other, and a
// folder whose path leads somewhere else by now.
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
    void oneNameForAFolder();
    void anotherFolderAnotherName();
    void aFailedOneGivesItsNameBack();
    void theNoteFollowsTheFile();
    void steadyWhileNothingHappens();
    void steadyWhenMadeAnew();
    void steadyThroughALink();
    void leadsAwayByALink();
    void leadsAwayByALinkAbove();
    void goneLeadsNowhere();

private:
    struct Put {
        QString temporary; ///< name
        bool done = false;
    };
    [[nodiscard]] Put put(const QString &folder, const QString &name);
    [[nodiscard]] QString at(const QString &name) const { return m_folder->filePath(name); }
    void makeFolder(const QString &name) const { QVERIFY(QDir(m_folder->path()).mkpath(name)); }

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

void tst_DownloadFiles::oneNameForAFolder()
{
    const Put first = put(QStringLiteral("a"), QStringLiteral("1"));
    QVERIFY(first.done);
    const Put second = put(QStringLiteral("a"), QStringLiteral("2"));
    QVERIFY(second.done);
    QVERIFY(isTemporaryName(first.temporary));
    QCOMPARE(second.temporary, first.temporary);
    QCOMPARE(QDir(at(QStringLiteral("a"))).entryList(QDir::Files | QDir::Hidden),
             QStringList({QStringLiteral("1"), QStringLiteral("2")}));
}

void tst_DownloadFiles::anotherFolderAnotherName()
{
    const Put first = put(QStringLiteral("a"), QStringLiteral("1"));
    const Put second = put(QStringLiteral("b"), QStringLiteral("1"));
    QVERIFY(first.done && second.done);
    QVERIFY(isTemporaryName(second.temporary));
    QVERIFY(second.temporary != first.temporary);
}

void tst_DownloadFiles::aFailedOneGivesItsNameBack()
{
    makeFolder(QStringLiteral("a/taken"));
    const Put first = put(QStringLiteral("a"), QStringLiteral("taken"));
    QVERIFY(!first.done);
    QVERIFY(isTemporaryName(first.temporary));
    QVERIFY(!QFile::exists(at(QStringLiteral("a/") + first.temporary)));
    QCOMPARE(m_journal->noted(), QString());
    const Put second = put(QStringLiteral("a"), QStringLiteral("1"));
    QVERIFY(second.done);
    QVERIFY(second.temporary != first.temporary);
}

void tst_DownloadFiles::theNoteFollowsTheFile()
{
    const DownloadJournal neighbour(m_user->path());
    for (const QString &folder : {QStringLiteral("a"), QStringLiteral("a"), QStringLiteral("b")}) {
        TemporaryFile file(*m_journal, at(folder));
        QVERIFY(file.open());
        const QStringList live = neighbour.live();
        QCOMPARE(live.size(), 1);
        QVERIFY(QFile::exists(live.at(0)));
        QCOMPARE(QFileInfo(live.at(0)).path(), at(folder));
    }
    QCOMPARE(neighbour.live(), QStringList()); // none of them took a place
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

void tst_DownloadFiles::steadyThroughALink()
{
    QVERIFY(QFile::link(at(QStringLiteral("a")), at(QStringLiteral("link"))));
    const SteadyFolder folder(at(QStringLiteral("link")));
    QVERIFY(!folder.leadsAway());
    QVERIFY(QFile::remove(at(QStringLiteral("link"))));
    QVERIFY(QFile::link(at(QStringLiteral("b")), at(QStringLiteral("link"))));
    QVERIFY(folder.leadsAway());
}

void tst_DownloadFiles::leadsAwayByALink()
{
    const SteadyFolder folder(at(QStringLiteral("a")));
    QVERIFY(QDir(m_folder->path()).rmdir(QStringLiteral("a")));
    QVERIFY(QFile::link(at(QStringLiteral("b")), at(QStringLiteral("a"))));
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

void tst_DownloadFiles::goneLeadsNowhere()
{
    const SteadyFolder folder(at(QStringLiteral("a")));
    QVERIFY(QDir(m_folder->path()).rmdir(QStringLiteral("a")));
    QVERIFY(!folder.leadsAway());
}

QTEST_GUILESS_MAIN(tst_DownloadFiles)
#include "tst_DownloadFiles.moc"
