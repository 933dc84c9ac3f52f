// What the local pane reads from the disk, and how it writes paths down.
#include "localpane/FolderPaths.h"
#include "localpane/FolderReader.h"
#include "localpane/FolderSizes.h"
#include "localpane/RootHistory.h"
#include "support/ScriptedPerson.h"
#include "support/Trees.h"

#include <algorithm>
#include <chrono>
#include <filesystem>

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

using namespace venlo;
using venlo::test::makeTree;
using venlo::test::ScriptedPerson;

namespace
{
QStringList namesOf(const std::vector<DiskEntry> &entries)
{
    QStringList names;
    for (const DiskEntry &entry : entries)
        names << entry.name;
    names.sort();
    return names;
}

DiskEntry entryOf(const std::vector<DiskEntry> &entries, const QString &name)
{
    const auto found = std::find_if(entries.begin(), entries.end(),
                                    [&](const DiskEntry &entry) { return entry.name == name; });
    return found == entries.end() ? DiskEntry() : *found;
}
} // namespace

class tst_uFileDisk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesFoldersWithoutTrailingSeparator();
    void findsTheWayBelowARoot();
    void goesUpToWhatExists();
    void keepsRootsNewestFirst();
    void losesARootWithACommaInIt();
    void takesTheTextBehindTheLastDot_data();
    void takesTheTextBehindTheLastDot();
    void filtersByContainment_data();
    void filtersByContainment();
    void readsEverythingInAFolder();
    void marksNamesThatNothingMayTouch();
    void countsTheBytesBelowAFolder();
    void showsLinksAsFolders();
    void saysWhenAFolderCannotBeRead();
    void knowsWhichFoldersHoldFolders();
    void readsTheNamesOfFiles();
    void measuresFoldersInSlices();
    void countsWhatIsTooLargeOrUnreadableAsNothing();
    void dropsWhatItMeasures();
    void restsAndBeginsAnew();
    void keepsNoFolderOpen();
    void leavesOutWhatVanishesMeanwhile();
    void endsReadingWhenNobodyWantsIt();
    void countsWhatAnUploadWouldSend();
    void takesNoFutureDateForAFreshOne();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_folder.filePath(name); }
    QTemporaryDir m_folder;
};

void tst_uFileDisk::writesFoldersWithoutTrailingSeparator()
{
    QCOMPARE(tidyFolder(QString()), QString());
    QCOMPARE(tidyFolder(QStringLiteral("/")), QStringLiteral("/"));
    QCOMPARE(tidyFolder(QStringLiteral("/a//b/")), QStringLiteral("/a/b"));
    QCOMPARE(tidyFolder(QStringLiteral("/a/../b")), QStringLiteral("/b"));
    QCOMPARE(topOf(QStringLiteral("/a/b")), QStringLiteral("/"));
    QVERIFY(isBareDrive(QStringLiteral("/")));
    QVERIFY(!isBareDrive(QStringLiteral("/a")));
    QCOMPARE(parentFolder(QStringLiteral("/a/b")), QStringLiteral("/a"));
    QCOMPARE(parentFolder(QStringLiteral("/a")), QStringLiteral("/"));
    QCOMPARE(parentFolder(QStringLiteral("/")), QStringLiteral("/"));
}

void tst_uFileDisk::findsTheWayBelowARoot()
{
    bool found = false;
    const auto below = [&](const char *root, const char *path) {
        return namesBelow(QString::fromUtf8(root), QString::fromUtf8(path), found);
    };
    QCOMPARE(below("/", "/a/b"), (QStringList{QStringLiteral("a"), QStringLiteral("b")}));
    QVERIFY(found);
    QCOMPARE(below("/a", "/a/b"), QStringList{QStringLiteral("b")});
    QVERIFY(found);
    QCOMPARE(below("/a", "/a"), QStringList());
    QVERIFY(found);
    QCOMPARE(below("/a", "/ab"), QStringList());
    QVERIFY(!found);
    QCOMPARE(below("", "/ab"), QStringList());
    QVERIFY(!found);
}

void tst_uFileDisk::goesUpToWhatExists()
{
    QVERIFY(QDir(m_folder.path()).mkpath(QStringLiteral("up/there")));
    QCOMPARE(nearestExisting(at(QStringLiteral("up/there/not/here"))),
             at(QStringLiteral("up/there")));
    QCOMPARE(nearestExisting(QStringLiteral("/no such folder/at all")), QStringLiteral("/"));
    QVERIFY(!folderExists(QStringLiteral(".")));
}

void tst_uFileDisk::keepsRootsNewestFirst()
{
    RootHistory history;
    for (const char *root : {"/a", "/b", "/a/b", "/b"})
        history.enter(QString::fromUtf8(root));
    QCOMPARE(history.text(), QStringLiteral(",/b,/a/b,/a"));
    history.enter(QStringLiteral("/a"));
    QCOMPARE(history.text(), QStringLiteral(",/a,/b,/a/b"));
    QCOMPARE(history.roots(),
             (QStringList{QStringLiteral("/a"), QStringLiteral("/b"), QStringLiteral("/a/b")}));
}

void tst_uFileDisk::losesARootWithACommaInIt()
{
    RootHistory history;
    history.enter(QStringLiteral("/x,y"));
    QCOMPARE(history.text(), QStringLiteral(",/x,y"));
    QCOMPARE(history.roots(), (QStringList{QStringLiteral("/x"), QStringLiteral("y")}));
}

void tst_uFileDisk::takesTheTextBehindTheLastDot_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("extension");
    QTest::newRow("two dots") << QStringLiteral("archive.tar.gz") << QStringLiteral("gz");
    QTest::newRow("none") << QStringLiteral("README") << QString();
    QTest::newRow("in front") << QStringLiteral(".profile") << QStringLiteral("profile");
    QTest::newRow("at the end") << QStringLiteral("odd.") << QString();
}

void tst_uFileDisk::takesTheTextBehindTheLastDot()
{
    QFETCH(const QString, name);
    QTEST(extensionOf(name), "extension");
}

void tst_uFileDisk::filtersByContainment_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("filter");
    QTest::addColumn<bool>("passes");
    const QString html = QStringLiteral("htm.html");
    const QString txt = QStringLiteral("txt");
    QTest::newRow("letter case") << QStringLiteral("A.TXT") << txt << true;
    QTest::newRow("last extension") << QStringLiteral("a.txt.bak") << txt << false;
    QTest::newRow("upper htm") << QStringLiteral("page.HTM") << html << true;
    QTest::newRow("html") << QStringLiteral("page.html") << html << true;
    QTest::newRow("part of one") << QStringLiteral("page.tm") << html << true;
    QTest::newRow("no extension") << QStringLiteral("README") << html << true;
    QTest::newRow("another") << QStringLiteral("page.css") << html << false;
    QTest::newRow("all") << QStringLiteral("page.css") << QStringLiteral("*.*") << true;
    QTest::newRow("empty") << QStringLiteral("page.css") << QString() << true;
}

void tst_uFileDisk::filtersByContainment()
{
    QFETCH(const QString, name);
    QFETCH(const QString, filter);
    QTEST(passesFilter(name, filter), "passes");
}

void tst_uFileDisk::readsEverythingInAFolder()
{
    const QDateTime then(QDate(2019, 3, 4), QTime(5, 6, 7));
    QVERIFY(makeTree(at(QStringLiteral("all")),
                     {{"sub/inner.txt", "x"}, {".hidden", "1234"}, {"ﾌｧｲﾙ.txt", "12", then}}));
    const auto entries = readFolder(at(QStringLiteral("all")));
    QVERIFY(entries);
    QCOMPARE(namesOf(entries.value()),
             (QStringList{QStringLiteral(".hidden"), QStringLiteral("sub"),
                          QStringLiteral("ﾌｧｲﾙ.txt")}));
    const DiskEntry file = entryOf(entries.value(), QStringLiteral("ﾌｧｲﾙ.txt"));
    QCOMPARE(file.size, 2);
    QCOMPARE(file.modified, then);
    QVERIFY(!file.folder && !file.hidden && !file.viewOnly && file.created.isValid());
    QVERIFY(entryOf(entries.value(), QStringLiteral(".hidden")).hidden);
    QCOMPARE(entryOf(entries.value(), QStringLiteral(".hidden")).letters, QStringLiteral("H"));
    QVERIFY(entryOf(entries.value(), QStringLiteral("sub")).folder);
}

void tst_uFileDisk::countsTheBytesBelowAFolder()
{
    const QString folder = at(QStringLiteral("bytes"));
    QVERIFY(makeTree(folder, {{"a", "123"}, {".b", "45"}, {"sub/deep/c", "6789"}, {"empty/", ""}}));
    QCOMPARE(bytesBelow(folder, QDeadlineTimer(QDeadlineTimer::Forever)), 9);
    QCOMPARE(bytesBelow(folder, QDeadlineTimer(0)), -1);
    QCOMPARE(bytesBelow(at(QStringLiteral("never was")), QDeadlineTimer(0)), 0);
    // Of a link to a file its content goes to the server; a linked folder stays here.
    QVERIFY(QFile::link(folder + QStringLiteral("/a"), folder + QStringLiteral("/file")));
    QVERIFY(QFile::link(folder, folder + QStringLiteral("/sub/loop")));
    QVERIFY(QFile::link(at(QStringLiteral("nowhere")), folder + QStringLiteral("/dead")));
    QCOMPARE(bytesBelow(folder, QDeadlineTimer(QDeadlineTimer::Forever)), 12);
}

void tst_uFileDisk::marksNamesThatNothingMayTouch()
{
    QVERIFY(makeTree(
        at(QStringLiteral("odd")),
        {{"a\rb", "1"}, {"a\nb", "1"}, {"a\tb/", ""}, {"\x83\x65.txt", "123"}, {"good", "1"}}));
    const auto entries = readFolder(at(QStringLiteral("odd")));
    QVERIFY(entries);
    QCOMPARE(entries.value().size(), 5U);
    const auto odd = std::count_if(entries.value().begin(), entries.value().end(),
                                   [](const DiskEntry &entry) { return entry.viewOnly; });
    QCOMPARE(odd, 4);
    QVERIFY(!entryOf(entries.value(), QStringLiteral("good")).viewOnly);
    const auto folders = readSubFolders(at(QStringLiteral("odd")));
    // Qt itself does not find them again.
    std::filesystem::remove_all(at(QStringLiteral("odd")).toStdString());
    QVERIFY(folders);
    QVERIFY2(folders.value().empty(), "a folder that cannot be entered is in no tree");
}

void tst_uFileDisk::showsLinksAsFolders()
{
    QVERIFY(makeTree(at(QStringLiteral("links")), {{"real/in.txt", "1"}, {"file", "12345"}}));
    const QString folder = at(QStringLiteral("links/"));
    QVERIFY(QFile::link(folder + QStringLiteral("real"), folder + QStringLiteral("toFolder")));
    QVERIFY(QFile::link(folder + QStringLiteral("file"), folder + QStringLiteral("toFile")));
    QVERIFY(QFile::link(folder + QStringLiteral("gone"), folder + QStringLiteral("dead")));
    const auto entries = readFolder(folder);
    QVERIFY(entries);
    const DiskEntry toFolder = entryOf(entries.value(), QStringLiteral("toFolder"));
    QVERIFY(toFolder.folder && toFolder.link);
    const DiskEntry toFile = entryOf(entries.value(), QStringLiteral("toFile"));
    QVERIFY(!toFile.folder && toFile.link);
    QCOMPARE(toFile.size, 5);
    const DiskEntry dead = entryOf(entries.value(), QStringLiteral("dead"));
    QVERIFY(!dead.folder && dead.link);
    QCOMPARE(dead.size, 0);
}

void tst_uFileDisk::saysWhenAFolderCannotBeRead()
{
    const auto gone = readFolder(at(QStringLiteral("never was")));
    QVERIFY(!gone);
    QVERIFY(gone.error().words.startsWith(at(QStringLiteral("never was"))));
    QVERIFY(!readSubFolders(at(QStringLiteral("never was"))));
}

void tst_uFileDisk::knowsWhichFoldersHoldFolders()
{
    QVERIFY(makeTree(at(QStringLiteral("tree")),
                     {{"b/only a file", "1"}, {"A/inner/", ""}, {".c/", ""}, {"file", "1"}}));
    const auto folders = readSubFolders(at(QStringLiteral("tree")));
    QVERIFY(folders);
    QStringList shown;
    for (const SubFolder &folder : folders.value())
        shown << folder.name + (folder.hasSubFolders ? QStringLiteral("+") : QString()) +
                     (folder.hidden ? QStringLiteral(" hidden") : QString());
    QCOMPARE(shown,
             (QStringList{QStringLiteral(".c hidden"), QStringLiteral("A+"), QStringLiteral("b")}));
}

void tst_uFileDisk::readsTheNamesOfFiles()
{
    ScriptedPerson person;
    QVERIFY(makeTree(at(QStringLiteral("names")),
                     {{"a.txt", "1"}, {"b.css", "1"}, {"sub/", ""}, {"x\ty.txt", "1"}}));
    const auto all = fileNames(person, at(QStringLiteral("names")), QStringLiteral("txt"));
    QVERIFY(all);
    QCOMPARE(*all, QStringList{QStringLiteral("a.txt")});
    // Two blanks, where the tree says it with one.
    person.expectMessage(at(QStringLiteral("no names")) + QStringLiteral("  が存在しません"));
    QVERIFY(!fileNames(person, at(QStringLiteral("no names")), QString()));
    QVERIFY(person.verify());
}

void tst_uFileDisk::measuresFoldersInSlices()
{
    QVERIFY(makeTree(at(QStringLiteral("size")),
                     {{"a", QByteArray(1000, 'x')}, {"deep/er/b", QByteArray(500, 'x')}}));
    QVERIFY(QFile::link(at(QStringLiteral("size")), at(QStringLiteral("size/loop"))));
    FolderSizes sizes;
    QSignalSpy told(&sizes, &FolderSizes::measured);
    sizes.start({{QStringLiteral("L001"), at(QStringLiteral("size"))},
                 {QStringLiteral("L002"), at(QStringLiteral("size/loop"))}});
    QVERIFY2(told.isEmpty(), "nothing is measured before events run");
    QTRY_COMPARE(told.size(), 2);
    QCOMPARE(told.at(0).at(0).toString(), QStringLiteral("L001"));
    QCOMPARE(told.at(0).at(1).toLongLong(), 1500);
    QCOMPARE(told.at(1).at(1).toLongLong(), 0);
    QVERIFY(!sizes.running());
}

void tst_uFileDisk::countsWhatIsTooLargeOrUnreadableAsNothing()
{
    QVERIFY(makeTree(at(QStringLiteral("big")), {{"sub/", ""}}));
    QFile sparse(at(QStringLiteral("big/sub/file")));
    QVERIFY(sparse.open(QIODevice::WriteOnly) && sparse.resize(2147483648LL));
    FolderSizes sizes;
    QSignalSpy told(&sizes, &FolderSizes::measured);
    sizes.start({{QStringLiteral("big"), at(QStringLiteral("big"))},
                 {QStringLiteral("gone"), at(QStringLiteral("not there"))}});
    QTRY_COMPARE(told.size(), 2);
    QCOMPARE(told.at(0).at(1).toLongLong(), 0);
    QCOMPARE(told.at(1).at(1).toLongLong(), 0);
    QVERIFY(sparse.resize(2147483647LL));
    sizes.start({{QStringLiteral("fits"), at(QStringLiteral("big"))}});
    QTRY_COMPARE(told.size(), 3);
    QCOMPARE(told.at(2).at(1).toLongLong(), 2147483647LL);
    const auto entries = readFolder(at(QStringLiteral("big/sub")));
    QVERIFY(entries);
    QCOMPARE(entries.value().front().size, 2147483647LL);
}

void tst_uFileDisk::dropsWhatItMeasures()
{
    QVERIFY(makeTree(at(QStringLiteral("drop")), {{"a", "1"}}));
    FolderSizes sizes;
    QSignalSpy told(&sizes, &FolderSizes::measured);
    sizes.start({{QStringLiteral("old"), at(QStringLiteral("drop"))}});
    sizes.start({{QStringLiteral("new"), at(QStringLiteral("drop"))}});
    QTRY_VERIFY(!sizes.running());
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0).at(0).toString(), QStringLiteral("new"));
}

void tst_uFileDisk::restsAndBeginsAnew()
{
    QVERIFY(makeTree(at(QStringLiteral("rest")), {{"a/b/c", "123"}, {"d", "45"}}));
    FolderSizes sizes;
    QSignalSpy told(&sizes, &FolderSizes::measured);
    QSignalSpy ended(&sizes, &FolderSizes::ended);
    sizes.start({{QStringLiteral("L000"), at(QStringLiteral("rest"))}});
    sizes.setResting(true);
    sizes.start({{QStringLiteral("L001"), at(QStringLiteral("rest"))}});
    QTest::qWait(20);
    QVERIFY(told.isEmpty());
    QVERIFY(sizes.running());
    sizes.setResting(false);
    QTRY_COMPARE(ended.size(), 1);
    QCOMPARE(told.size(), 1);
    QCOMPARE(told.at(0), (QVariantList{QStringLiteral("L001"), qint64(5)}));
}

void tst_uFileDisk::keepsNoFolderOpen()
{
    const QString folder = at(QStringLiteral("wide"));
    QVERIFY(QDir().mkpath(folder));
    for (int i = 0; i < 3000; ++i) {
        QFile file(folder + QStringLiteral("/%1").arg(i));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.putChar('x'));
    }
    FolderSizes sizes;
    QSignalSpy told(&sizes, &FolderSizes::measured);
    std::deque<FolderSizes::Job> jobs;
    for (int i = 0; i < 10; ++i)
        jobs.push_back({QString::number(i), folder});
    sizes.start(std::move(jobs));
    QStringList open;
    while (sizes.running()) {
        QCoreApplication::processEvents();
        for (const QFileInfo &one : QDir(QStringLiteral("/proc/self/fd")).entryInfoList()) {
            if (one.symLinkTarget() == folder)
                open << one.fileName();
        }
    }
    QCOMPARE(open, QStringList());
    QCOMPARE(told.size(), 10);
    QCOMPARE(told.at(9).at(1).toLongLong(), 3000);
}

void tst_uFileDisk::leavesOutWhatVanishesMeanwhile()
{
    const QString folder = at(QStringLiteral("temporary"));
    QVERIFY(QDir().mkpath(folder));
    for (int i = 0; i < 20'000; ++i) {
        QFile file(folder + QStringLiteral("/%1").arg(i));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.putChar('x'));
    }
    FolderSizes sizes;
    QSignalSpy told(&sizes, &FolderSizes::measured);
    sizes.start({{QStringLiteral("L000"), folder}});
    QCoreApplication::processEvents();
    QCoreApplication::processEvents();
    QVERIFY(sizes.running());
    QVERIFY(QDir(folder).removeRecursively());
    QTRY_COMPARE(told.size(), 1);
    const qint64 bytes = told.at(0).at(1).toLongLong();
    QVERIFY2(bytes > 0 && bytes < 20'000, qPrintable(QString::number(bytes)));
}

void tst_uFileDisk::endsReadingWhenNobodyWantsIt()
{
    QVERIFY(makeTree(at(QStringLiteral("stop")), {{"a", "1"}, {"b", "1"}, {"c", "1"}}));
    int asked = 0;
    const auto some = readFolder(at(QStringLiteral("stop")), [&asked] { return ++asked < 2; });
    QVERIFY(some);
    QCOMPARE(some.value().size(), 2U);
}

void tst_uFileDisk::countsWhatAnUploadWouldSend()
{
    const QString folder = at(QStringLiteral("send"));
    QVERIFY(
        makeTree(folder, {{"a", "1"}, {".hidden", "12"}, {".d/in", "123"}, {"sub/.x", "1234"}}));
    QVERIFY(QFile::link(folder, folder + QStringLiteral("/loop")));
    QCOMPARE(bytesBelow(folder, QDeadlineTimer(QDeadlineTimer::Forever)), 10);
    QCOMPARE(bytesBelow(folder, QDeadlineTimer(0)), -1);
}

void tst_uFileDisk::takesNoFutureDateForAFreshOne()
{
    const QString folder = at(QStringLiteral("ahead"));
    QVERIFY(QDir().mkpath(folder));
    const std::filesystem::path path = folder.toStdString();
    const auto now = std::filesystem::file_time_type::clock::now();
    for (const auto &distance : {std::chrono::hours(24), std::chrono::hours(-24)}) {
        std::filesystem::last_write_time(path, now + distance);
        QVERIFY(!FolderStamp::of(folder).fresh);
    }
    // A slow machine may take longer than the date is fresh.
    QTRY_VERIFY(
        (std::filesystem::last_write_time(path, std::filesystem::file_time_type::clock::now()),
         FolderStamp::of(folder).fresh));
}

QTEST_GUILESS_MAIN(tst_uFileDisk)
#include "tst_uFileDisk.moc"
