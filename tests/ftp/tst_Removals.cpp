// Renaming, deleting, making and removing on a scripted server.
#include "ftp/OperationsFixture.h"

#include <QTest>

using namespace venlo;
using venlo::test::OperationsFixture;

namespace
{
struct Fixture : OperationsFixture {
    bool ok = true;

    /// "dir|name" of every cached entry.
    [[nodiscard]] QStringList cached()
    {
        QStringList entries;
        for (const QString &line : cacheRows(QStringLiteral("web"))) {
            const QStringList fields = line.split(QLatin1Char('|'));
            entries.append(fields.value(0) + QLatin1Char('|') + fields.value(2));
        }
        return entries;
    }
};
} // namespace

class tst_Removals : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void deletesFiles();
    void refusedDeleteGoesPast();
    void deleteAfterALoss();
    void deletesNothingInTheWrongDirectory();
    void unattendedDelete();
    void unattendedDeleteFails();
    void makesADirectory();
    void makesAChain_data();
    void makesAChain();
    void makeDirectoryFails_data();
    void makeDirectoryFails();
    void removesATree();
    void removesWhatTheCacheLists();
    void incompleteCacheLeavesTheRest();
    void refusedFileInside();
    void unattendedRemoval();
    void unattendedRemovalListsNothing();
    void closedFolderInside();
    void relativePathIsNotDeleted();
    void neverTheRoot_data();
    void neverTheRoot();
    void pathWithTheServersText();
    void cancelledRemoval();
    void renamesAFile();
    void renamesAFolder();
    void renameDropsDots_data();
    void renameDropsDots();
    void renameFails();
    void renameNeverOverwrites();
    void renameAsksTheServer_data();
    void renameAsksTheServer();
    void renameFindsOddNames();
    void letterCaseNeedsAWholeListing();
    void letterCaseSeesWhatIsThereNow();
    void letterCaseNotByHalfAListing();
    void letterCaseOfNamesThatAreNoUtf8();
    void renameChangesLetterCase();
    void renamedRemnantStaysNoted();
    void makesChains();
    void notConnected();
};

void tst_Removals::deletesFiles()
{
    Fixture f;
    f.server.put("/pub/a.txt", "1");
    f.server.put("/pub/b's.txt", "1");
    f.server.put("/pub/c.txt", "1");
    QVERIFY(f.start());
    f.operations.ftDelFile(QStringLiteral("/pub"), QStringLiteral("a.txt\rb's.txt"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/pub/", "/pub/c.txt"}));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/pub|c.txt")}));
    QCOMPARE(f.status(), QStringList({QStringLiteral("/pub/a.txt Delete･･･"),
                                      QStringLiteral("/pub/b's.txt Delete･･･")}));
    QCOMPARE(f.counts(), QStringLiteral("2/0/0"));
    QCOMPARE(f.person.outcomes().at(0).kind, Outcome::Kind::DeletedRemote);
}

void tst_Removals::refusedDeleteGoesPast()
{
    Fixture f;
    f.server.put("/a.txt", "1");
    f.server.put("/b.txt", "1");
    f.server.on("DELE", "a.txt").reply(550, "not yours");
    QVERIFY(f.start());
    f.operations.ftDelFile(QStringLiteral("/"), QStringLiteral("a.txt\rb.txt"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("DELE", "a.txt"), 1);
    QVERIFY(!f.server.exists("/b.txt"));
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpDeleteFile Err: /a.txt Delete")}));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/|a.txt")}));
    QCOMPARE(f.counts(), QStringLiteral("1/1/0"));
    QCOMPARE(f.reconnects(), 0);
}

void tst_Removals::deleteAfterALoss()
{
    Fixture f;
    f.server.put("/pub/a.txt", "1");
    f.server.put("/pub/b.txt", "1");
    f.server.on("DELE").once().dropBeforeReply();
    QVERIFY(f.start());
    f.operations.ftDelFile(QStringLiteral("/pub"), QStringLiteral("a.txt\rb.txt"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/pub/"}));
    QCOMPARE(f.reconnects(), 1);
}

void tst_Removals::deletesNothingInTheWrongDirectory()
{
    Fixture f;
    f.server.put("/a.txt", "home");
    f.server.put("/pub/a.txt", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.server.on("DELE").once().dropBeforeReply();
    f.server.on("CWD").reply(550, "closed");
    f.operations.ftDelFile(QStringLiteral("/pub"), QStringLiteral("a.txt"), f.ok);
    QCOMPARE(f.server.file("/a.txt"), QByteArray("home"));
    QCOMPARE(f.server.file("/pub/a.txt"), QByteArray("1"));
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpDeleteFile Err: /pub/a.txt Delete")}));
    QVERIFY(f.cached().contains(QStringLiteral("/pub|a.txt")));
}

void tst_Removals::unattendedDelete()
{
    Fixture f;
    f.server.put("/pub/a.txt", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.flags.unattendedTransfer = true;
    f.operations.ftDelFile(QStringLiteral("/elsewhere"), QStringLiteral("/pub/a.txt"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.work(), QList<QByteArray>({"DELE /pub/a.txt"}));
    QVERIFY(!f.server.exists("/pub/a.txt"));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/pub|a.txt")})); // not touched
    QCOMPARE(f.status(), QStringList());
    QCOMPARE(f.counts(), QStringLiteral("1/0/0"));
}

void tst_Removals::unattendedDeleteFails()
{
    Fixture f;
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.operations.ftDelFile(QString(), QStringLiteral("/pub/a.txt"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpDeleteFile Err: /pub/a.txt Delete")}));
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
}

void tst_Removals::makesADirectory()
{
    Fixture f;
    QVERIFY(f.start());
    f.operations.ftMakeDir(QStringLiteral("/"), QStringLiteral("新しい"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(f.server.exists("/新しい"));
    QCOMPARE(f.status(), QStringList({QStringLiteral("新しい CreateDirectory･･･")}));
    const QStringList rows = f.cacheRows(QStringLiteral("web"));
    QCOMPARE(rows.size(), 1);
    QVERIFY2(rows.at(0).startsWith(QStringLiteral("/|1|新しい|") +
                                   QDate::currentDate().toString(QStringLiteral("yy/MM/dd"))),
             qPrintable(rows.at(0)));
    QVERIFY(rows.at(0).endsWith(QStringLiteral("|0")));
}

void tst_Removals::makesAChain_data()
{
    QTest::addColumn<bool>("unattended");
    QTest::newRow("a person looks on") << false;
    QTest::newRow("unattended: nothing is shown") << true;
}

void tst_Removals::makesAChain()
{
    QFETCH(bool, unattended);
    Fixture f;
    QVERIFY(f.start());
    f.flags.unattendedTransfer = unattended;
    f.operations.sjMakePrDir(QStringLiteral("/x/y"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(f.server.exists("/x/y"));
    const QStringList said{QStringLiteral("/x CreateDirectory･･･"),
                           QStringLiteral("/x/y CreateDirectory･･･")};
    QCOMPARE(f.status(), unattended ? QStringList() : said);
    QCOMPARE(f.person.messageLines(), f.status());
}

void tst_Removals::makeDirectoryFails_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("asked");
    QTest::newRow("there already") << QStringLiteral("pub") << 1;
    QTest::newRow("a path") << QStringLiteral("x/y") << 0;
}

void tst_Removals::makeDirectoryFails()
{
    QFETCH(QString, name);
    QFETCH(int, asked);
    Fixture f;
    f.server.makeFolder("/pub");
    QVERIFY(f.start());
    f.operations.ftMakeDir(QStringLiteral("/"), name, f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("MKD"), asked);
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpCreateDirectory Err: ") + name +
                                          QStringLiteral(" CreateDirectory")}));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/|pub")}));
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
}

void tst_Removals::removesATree()
{
    Fixture f;
    for (const char *path : {"/pub/a", "/pub/sub/b", "/pub/sub/deep/c", "/other/d"})
        f.server.put(path, "1");
    f.server.makeFolder("/pub/empty");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.operations.ftRemDir(QStringLiteral("/"), QStringLiteral("pub"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/other/", "/other/d"}));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/|other")}));
    QVERIFY(f.status().contains(QStringLiteral("/pub/sub/b Delete･･･")));
    QVERIFY(f.status().contains(QStringLiteral("/pub/sub/deep RemoveDirectory･･･")));
    QCOMPARE(f.status().last(), QStringLiteral("/pub RemoveDirectory･･･"));
    QCOMPARE(f.errorLines(), QStringList());
    QCOMPARE(f.person.outcomes().back().kind, Outcome::Kind::FolderRemovedRemote);
}

void tst_Removals::removesWhatTheCacheLists()
{
    Fixture f;
    f.server.put("/pub/a", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.operations.ftRemDir(QStringLiteral("/"), QStringLiteral("pub"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(!f.server.exists("/pub"));
    QCOMPARE(f.server.count("MLSD"), 0);
}

void tst_Removals::incompleteCacheLeavesTheRest()
{
    Fixture f;
    f.server.put("/pub/a", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.server.put("/pub/later", "1");
    f.operations.ftRemDir(QStringLiteral("/"), QStringLiteral("pub"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/pub/", "/pub/later"}));
    QCOMPARE(f.errorLines(),
             QStringList({QStringLiteral("FtpRemoveDirectory Err:/pub RemoveDirectory")}));
    QCOMPARE(f.counts(), QStringLiteral("1/1/0"));
}

void tst_Removals::refusedFileInside()
{
    Fixture f;
    f.server.put("/top/pub/a", "1");
    f.server.put("/top/pub/b", "1");
    f.server.on("DELE", "a").reply(550, "not yours");
    QVERIFY(f.start());
    f.operations.ftRemDir(QStringLiteral("/top"), QStringLiteral("pub"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.errorLines(),
             QStringList({QStringLiteral("sjEmpDir DeleteFile Err: /top/pub/a Delete"),
                          QStringLiteral("FtpRemoveDirectory Err:/top/pub RemoveDirectory")}));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/top/pub|a")}));
    QCOMPARE(f.counts(), QStringLiteral("1/2/0"));
}

void tst_Removals::unattendedRemoval()
{
    Fixture f;
    f.server.put("/top/pub/a", "1");
    f.server.put("/top/keep", "1");
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.cache.caRefresh(QStringLiteral("/top"));
    f.forget();
    f.operations.ftRemDir(QStringLiteral("/wrong"), QStringLiteral("/top/pub"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/top/", "/top/keep"}));
    QCOMPARE(f.status(), QStringList());
    QVERIFY(f.person.verify());
}

void tst_Removals::unattendedRemovalListsNothing()
{
    Fixture f;
    f.server.put("/top/pub/a", "1");
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.operations.ftRemDir(QString(), QStringLiteral("/top/pub"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(f.server.exists("/top/pub/a"));
    QCOMPARE(f.server.count("MLSD"), 0);
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
}

void tst_Removals::closedFolderInside()
{
    Fixture f;
    for (const char *path : {"/top/pub/a", "/top/pub/closed/b", "/top/pub/open/c"})
        f.server.put(path, "1");
    QVERIFY(f.start());
    f.cache.caRefresh(QStringLiteral("/top"));
    f.server.on("CWD", "/top/pub/closed").reply(550, "no entry");
    f.operations.ftRemDir(QStringLiteral("/top"), QStringLiteral("pub"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(),
             QList<QByteArray>({"/top/", "/top/pub/", "/top/pub/closed/", "/top/pub/closed/b"}));
    QCOMPARE(f.errorLines(),
             QStringList({QStringLiteral("sjCrntDir Err: /top/pub/closed"),
                          QStringLiteral("FtpRemoveDirectory Err:/top/pub RemoveDirectory")}));
}

void tst_Removals::relativePathIsNotDeleted()
{
    Fixture f;
    f.server.put("/a", "1");
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.operations.ftDelFile(QString(), QStringLiteral("a"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("DELE"), 0);
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
}

void tst_Removals::neverTheRoot_data()
{
    QTest::addColumn<QString>("path");
    for (const char *path : {"/", "/.", "/..", "/pub/.."})
        QTest::newRow(path) << QString::fromLatin1(path);
}

void tst_Removals::neverTheRoot()
{
    QFETCH(QString, path);
    Fixture f;
    f.server.put("/pub/a", "1");
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.operations.ftRemDir(QString(), path, f.ok);
    f.operations.ftDelFile(QString(), QStringLiteral("/"), f.ok);
    QVERIFY(f.server.exists("/pub/a"));
    QCOMPARE(f.server.count("RMD"), 0);
    QCOMPARE(f.server.count("DELE"), 0);
    QCOMPARE(f.operations.counts().givenUp, 2);
}

void tst_Removals::pathWithTheServersText()
{
    Fixture f;
    QVERIFY(f.start());
    const QByteArray folder = "/x/" + f.server.server().toUtf8();
    f.server.put(folder + "/a", "1");
    f.server.put("/a", "1");
    const QString path = QString::fromUtf8(folder);
    f.operations.ftDelFile(path, QStringLiteral("a"), f.ok);
    QVERIFY(!f.ok);
    f.ok = true;
    f.operations.ftRemDir(QStringLiteral("/x"), f.server.server(), f.ok);
    QVERIFY(f.ok);
    f.flags.unattendedTransfer = true;
    f.operations.ftDelFile(QString(), path + QStringLiteral("/a"), f.ok);
    f.operations.ftGetFold(f.here(), f.server.server(), QStringLiteral("/x"), f.ok);
    QVERIFY(QDir().mkdir(f.at(f.server.server())));
    f.operations.ftPutFold(f.here(), f.server.server(), QStringLiteral("/x"), f.ok);
    QCOMPARE(f.server.count("DELE") + f.server.count("RMD") + f.server.count("MKD") +
                 f.server.count("RETR"),
             0);
    QCOMPARE(f.operations.counts().givenUp, 4);
    QCOMPARE(f.errorLines().size(), 5);
}

void tst_Removals::cancelledRemoval()
{
    Fixture f;
    f.server.put("/pub/a", "1");
    f.server.put("/pub/b", "1");
    QVERIFY(f.start());
    f.person.cancelAt(venlo::test::ScriptedPerson::What::Status,
                      QStringLiteral("/pub/a Delete･･･"));
    f.operations.ftRemDir(QStringLiteral("/"), QStringLiteral("pub"), f.ok);
    QVERIFY(!f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/pub/", "/pub/b"}));
    QCOMPARE(f.errorLines(), QStringList());
}

void tst_Removals::renamesAFile()
{
    Fixture f;
    f.server.put("/pub/a.txt", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/pub"));
    f.operations.ftRename(QStringLiteral("/pub"), QStringLiteral("a.txt"),
                          QStringLiteral("b's.txt"), false, f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/pub/", "/pub/b's.txt"}));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/pub|b's.txt")}));
    QCOMPARE(f.status(), QStringList({QStringLiteral("a.txt → b's.txt Rename･･･")}));
}

void tst_Removals::renamesAFolder()
{
    Fixture f;
    f.server.put("/a/x/f", "1");
    f.server.put("/ab/g", "1");
    QVERIFY(f.start());
    for (const char *dir : {"/", "/a", "/a/x", "/ab"})
        f.browse(QString::fromLatin1(dir));
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a"), QStringLiteral("b"), true,
                          f.ok);
    QVERIFY(f.ok);
    QVERIFY(f.server.exists("/b/x/f"));
    QVERIFY(f.server.exists("/ab/g"));
    QStringList rows = f.cached();
    rows.sort();
    QCOMPARE(rows,
             QStringList({QStringLiteral("/b/x|f"), QStringLiteral("/bb|g"), QStringLiteral("/b|x"),
                          QStringLiteral("/|ab"), QStringLiteral("/|b")}));
}

void tst_Removals::renameDropsDots_data()
{
    QTest::addColumn<QString>("given");
    QTest::addColumn<QString>("becomes"); // empty: nothing is renamed
    QTest::newRow("one dot") << QStringLiteral(".b") << QStringLiteral("b");
    QTest::newRow("three dots") << QStringLiteral("...b.txt") << QStringLiteral("b.txt");
    QTest::newRow("only dots") << QStringLiteral("..") << QString();
    QTest::newRow("empty") << QString() << QString();
}

void tst_Removals::renameDropsDots()
{
    QFETCH(QString, given);
    QFETCH(QString, becomes);
    Fixture f;
    f.server.put("/a", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a"), given, false, f.ok);
    QVERIFY(f.ok);
    const QByteArray expected = becomes.isEmpty() ? QByteArray("/a") : '/' + becomes.toUtf8();
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({expected}));
    QCOMPARE(f.server.count("RNFR"), becomes.isEmpty() ? 0 : 1);
    QCOMPARE(f.errorLines(), QStringList());
}

void tst_Removals::renameFails()
{
    Fixture f;
    f.server.put("/a", "1");
    f.server.on("RNTO").reply(553, "no");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a"), QStringLiteral("b"), false,
                          f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpRenameFile Err: a > b")}));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/|a")}));
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
}

void tst_Removals::renameNeverOverwrites()
{
    Fixture f;
    f.server.put("/a", "1");
    f.server.put("/b", "2");
    f.server.makeFolder("/c");
    QVERIFY(f.start());
    for (const char *name : {"b", "c", "c/d"})
        f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a"), QString::fromLatin1(name),
                              false, f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("RNFR"), 0);
    QCOMPARE(f.server.file("/b"), QByteArray("2"));
    QCOMPARE(f.errorLines(), QStringList({QStringLiteral("FtpRenameFile Err: a > b"),
                                          QStringLiteral("FtpRenameFile Err: a > c"),
                                          QStringLiteral("FtpRenameFile Err: a > c/d")}));
}

void tst_Removals::renameAsksTheServer_data()
{
    QTest::addColumn<bool>("mdtm");
    QTest::newRow("MDTM") << true;
    QTest::newRow("SIZE") << false;
}

void tst_Removals::renameAsksTheServer()
{
    QFETCH(bool, mdtm);
    Fixture f;
    f.server.options().mdtm = mdtm;
    f.server.put("/a", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.server.put("/b", "2");
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a"), QStringLiteral("b"), false,
                          f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.file("/b"), QByteArray("2"));
    QCOMPARE(f.server.file("/a"), QByteArray("1"));
    QCOMPARE(f.errorLines(), QStringList(QStringLiteral("FtpRenameFile Err: a > b")));
}

void tst_Removals::renameFindsOddNames()
{
    Fixture f;
    f.server.put("/a", "1");
    f.server.put("/b?", "2");
    f.server.on("MDTM").reply(550, "no");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a"), QStringLiteral("b?"), false,
                          f.ok);
    QCOMPARE(f.server.count("RNFR"), 0);
    QCOMPARE(f.server.file("/b?"), QByteArray("2"));
}

void tst_Removals::letterCaseNeedsAWholeListing()
{
    Fixture f;
    f.server.put("/a.txt", "1");
    f.server.put("/A.txt", "2");
    QVERIFY(f.start());
    for (int i = 0; i < 2; ++i)
        f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a.txt"), QStringLiteral("A.txt"),
                              false, f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.server.count("RNFR"), 0);
    QCOMPARE(f.server.file("/A.txt"), QByteArray("2"));
}

void tst_Removals::letterCaseSeesWhatIsThereNow()
{
    Fixture f;
    f.server.put("/a.txt", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.server.put("/A.txt", "a colleague's");
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a.txt"), QStringLiteral("A.txt"),
                          false, f.ok);
    QCOMPARE(f.server.count("RNFR"), 0);
    QCOMPARE(f.server.file("/A.txt"), QByteArray("a colleague's"));
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
}

void tst_Removals::letterCaseNotByHalfAListing()
{
    Fixture f;
    f.server.put("/a.txt", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.server.on("MLSD").completion("426 Failure while listing\r\n");
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a.txt"), QStringLiteral("A.txt"),
                          false, f.ok);
    QCOMPARE(f.server.count("RNFR"), 0);
    QCOMPARE(f.person.outcomes(Outcome::Kind::GivenUp).at(0).why,
             QStringLiteral("同じ名前がないことを確認できません"));
}

void tst_Removals::letterCaseOfNamesThatAreNoUtf8()
{
    Fixture f;
    f.server.options().utf8 = false;
    f.server.put("/\x95\xf1\x8d\x90"
                 "a.txt",
                 "1"); // 報告a.txt in Shift_JIS
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("報告a.txt"),
                          QStringLiteral("報告A.txt"), false, f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/\x95\xf1\x8d\x90"
                                                         "A.txt"}));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/|報告A.txt")}));
}

/// Half a file is half a file under any name.
void tst_Removals::renamedRemnantStaysNoted()
{
    Fixture f;
    f.server.put("/a.txt", "hal");
    f.server.put("/whole.txt", "whole");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    const QString site = f.session.currentSite();
    f.cache.unfinished().begin(site, QStringLiteral("/"), QStringLiteral("a.txt"));
    for (const char *name : {"a", "whole"})
        f.operations.ftRename(QStringLiteral("/"), QLatin1String(name) + QStringLiteral(".txt"),
                              QLatin1String(name) + QStringLiteral(".new"), false, f.ok);
    QVERIFY(f.server.exists("/a.new") && f.server.exists("/whole.new"));
    QVERIFY(f.cache.unfinished().noted(site, QStringLiteral("/"), QStringLiteral("a.new")));
    QVERIFY(!f.cache.unfinished().noted(site, QStringLiteral("/"), QStringLiteral("a.txt")));
    QVERIFY(!f.cache.unfinished().noted(site, QStringLiteral("/"), QStringLiteral("whole.new")));
}

void tst_Removals::renameChangesLetterCase()
{
    Fixture f;
    f.server.put("/a.TXT", "1");
    QVERIFY(f.start());
    f.browse(QStringLiteral("/"));
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a.TXT"), QStringLiteral("A.txt"),
                          false, f.ok);
    QCOMPARE(f.server.tree().paths(), QList<QByteArray>({"/A.txt"}));
    QCOMPARE(f.cached(), QStringList({QStringLiteral("/|A.txt")}));
}

void tst_Removals::makesChains()
{
    Fixture f;
    QVERIFY(f.start());
    f.operations.sjMakePrDir(QStringLiteral("/x/y/z/"), f.ok);
    QVERIFY(f.ok);
    QVERIFY(f.server.exists("/x/y/z"));
    f.operations.sjMakePrDir(QStringLiteral("/b/") + f.server.server() + QStringLiteral("/x"),
                             f.ok);
    QVERIFY(!f.ok);
    QVERIFY(!f.server.exists("/b"));
    f.operations.sjCrntDir(QStringLiteral("/x/y"), f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.session.currentRemoteDir(), QStringLiteral("/x/y"));
}

void tst_Removals::notConnected()
{
    Fixture f;
    f.operations.ftDelFile(QStringLiteral("/"), QStringLiteral("a"), f.ok);
    f.operations.ftRemDir(QStringLiteral("/"), QStringLiteral("a"), f.ok);
    f.operations.ftMakeDir(QStringLiteral("/"), QStringLiteral("a"), f.ok);
    f.operations.ftRename(QStringLiteral("/"), QStringLiteral("a"), QStringLiteral("b"), false,
                          f.ok);
    QVERIFY(f.ok);
    QCOMPARE(f.counts(), QStringLiteral("0/0/0"));
    QVERIFY(f.person.events().empty());
}

QTEST_GUILESS_MAIN(tst_Removals)
#include "tst_Removals.moc"
