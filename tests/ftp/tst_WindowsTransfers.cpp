// Local entries as only Windows has them, sent and fetched: shortcuts and short names.
#include "ftp/OperationsFixture.h"
#include "platform/EntryLook.h"
#include "platform/Files.h"
#include "shared/NameList.h"
#include "support/ShortName.h"
#include "support/Shortcuts.h"

#include <windows.h>

#include <QTest>

using namespace venlo;
using namespace venlo::test;

namespace
{
const QStringList shortcuts{QStringLiteral("file.lnk"), QStringLiteral("folder.lnk"),
                            QStringLiteral("nothing.lnk")};
const QDateTime noon(QDate(2024, 5, 6), QTime(3, 0, 10), Qt::UTC);

struct Fixture : OperationsFixture {
    Fixture() { server.makeFolder("/in"); }

    QTemporaryDir elsewhere;
    bool ok = true;
};
} // namespace

class tst_WindowsTransfers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shortcutsGoUp();
    void shortcutsGoUpWithTheirFolder();
    void shortcutsAreReplaced();
    void aShortcutIsAskedFor();
    void theShortNameOfAnotherFile();
    void theShortNameOfOneJustFetched();
    void theShortNameOfAnotherFolder();
};

void tst_WindowsTransfers::shortcutsGoUp()
{
    Fixture f;
    QVERIFY(f.start() && makeShortcuts(f.here(), f.elsewhere.path()));
    f.flags.unattendedTransfer = true;
    for (const QString &name : shortcuts) {
        QVERIFY(setModifiedTime(f.at(name), noon));
        f.operations.ftPutFile(QStringLiteral("/in"), f.at(name), f.here(), f.ok);
        QVERIFY(f.ok);
        QCOMPARE(f.server.file("/in/" + name.toLatin1()), f.read(name));
        QCOMPARE(f.server.tree().modified("/in/" + name.toLatin1()), noon);
    }
    QCOMPARE(f.counts(), QStringLiteral("3/0/0"));
    const QString size = QString::number(EntryLook(f.at(shortcuts.at(0))).size());
    QVERIFY2(!f.cacheRows(QStringLiteral("web")).filter(QLatin1Char('|') + size).isEmpty(),
             qPrintable(f.cacheRows(QStringLiteral("web")).join(QLatin1Char('\n'))));
}

void tst_WindowsTransfers::shortcutsGoUpWithTheirFolder()
{
    Fixture f;
    f.write(QStringLiteral("sub/a.txt"), "a");
    f.write(QStringLiteral("sub/deep/b.txt"), "b");
    QVERIFY(f.start() && makeShortcuts(f.at(QStringLiteral("sub")), f.elsewhere.path()));
    f.operations.ftPutFold(f.here(), QStringLiteral("sub"), QStringLiteral("/in"), f.ok);
    QVERIFY(f.ok);
    for (const QString &name : shortcuts)
        QCOMPARE(f.server.file("/in/sub/" + name.toLatin1()),
                 f.read(QStringLiteral("sub/") + name));
    QCOMPARE(f.server.file("/in/sub/a.txt"), QByteArray("a"));
    QCOMPARE(f.server.file("/in/sub/deep/b.txt"), QByteArray("b"));
    QCOMPARE(f.operations.counts().givenUp, 0);
}

/// Whatever they lead to: a folder, a read-only file.
void tst_WindowsTransfers::shortcutsAreReplaced()
{
    Fixture f;
    QVERIFY(f.start() && makeShortcuts(f.here(), f.elsewhere.path()));
    const QString target = f.elsewhere.filePath(QStringLiteral("target.bin"));
    QVERIFY(SetFileAttributesW(filesystemPath(target).c_str(), FILE_ATTRIBUTE_READONLY));
    f.flags.unattendedTransfer = true;
    for (const QString &name : shortcuts)
        f.server.put("/in/" + name.toLatin1(), "theirs", noon);
    f.operations.ftGetFile(QStringLiteral("/in"), joinNames(shortcuts), f.here(), f.ok);
    const qint64 kept = QFile(target).size();
    QVERIFY(SetFileAttributesW(filesystemPath(target).c_str(), FILE_ATTRIBUTE_NORMAL));
    QVERIFY(f.ok);
    QCOMPARE(f.counts(), QStringLiteral("3/0/0"));
    QCOMPARE(kept, shortcutTargetSize);
    for (const QString &name : shortcuts) {
        QCOMPARE(f.read(name), QByteArray("theirs"));
        QVERIFY(EntryLook(f.at(name)).isWritable());
    }
}

void tst_WindowsTransfers::aShortcutIsAskedFor()
{
    Fixture f;
    QVERIFY(f.start() && makeShortcuts(f.here(), f.elsewhere.path()));
    f.server.put("/in/nothing.lnk", "theirs", noon);
    f.person.expectOverwrite(QStringLiteral("nothing.lnk"), {OverwriteMode::Ask, false});
    f.operations.ftGetFile(QStringLiteral("/in"), QStringLiteral("nothing.lnk"), f.here(), f.ok);
    QVERIFY(f.person.verify());
    QVERIFY(f.read(QStringLiteral("nothing.lnk")) != QByteArray("theirs"));
}

void tst_WindowsTransfers::theShortNameOfAnotherFile()
{
    Fixture f;
    f.write(QStringLiteral("Report2023Final.xls"), "mine");
    const QString other = shortNameOf(f.at(QStringLiteral("Report2023Final.xls")));
    if (other.isEmpty())
        QSKIP("the file system gives no short names");
    f.server.put("/in/" + other.toLatin1(), "theirs", noon);
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.operations.ftGetFile(QStringLiteral("/in"), other, f.here(), f.ok);
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
    QCOMPARE(f.localNames(), QStringList{QStringLiteral("Report2023Final.xls")});
    QCOMPARE(f.read(QStringLiteral("Report2023Final.xls")), QByteArray("mine"));
    QCOMPARE(f.person.outcomes(Outcome::Kind::GivenUp).at(0).why,
             QStringLiteral("'Report2023Final.xls' の短い名前です"));
    QVERIFY(f.person.verify());
}

/// The one before may still be on its way into its place.
void tst_WindowsTransfers::theShortNameOfOneJustFetched()
{
    Fixture f;
    const QString longName = QStringLiteral("Report2023Final.xls");
    f.write(longName, "x");
    const QString other = shortNameOf(f.at(longName));
    if (other.isEmpty())
        QSKIP("the file system gives no short names");
    QVERIFY(QFile::remove(f.at(longName)));
    f.server.put("/in/" + longName.toLatin1(), "the long one", noon);
    f.server.put("/in/" + other.toLatin1(), "the short one", noon);
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.operations.ftGetFile(QStringLiteral("/in"), joinNames({longName, other}), f.here(), f.ok);
    QCOMPARE(f.localNames(), QStringList{longName});
    QCOMPARE(f.read(longName), QByteArray("the long one"));
    QCOMPARE(f.counts(), QStringLiteral("1/1/0"));
}

void tst_WindowsTransfers::theShortNameOfAnotherFolder()
{
    Fixture f;
    f.write(QStringLiteral("Papers of the office/f"), "mine");
    const QString other = shortNameOf(f.at(QStringLiteral("Papers of the office")));
    if (other.isEmpty())
        QSKIP("the file system gives no short names");
    f.server.put("/in/" + other.toLatin1() + "/f", "theirs", noon);
    f.server.put("/in/" + other.toLatin1() + "/new", "theirs", noon);
    QVERIFY(f.start());
    f.flags.unattendedTransfer = true;
    f.operations.ftGetFold(f.here(), other, QStringLiteral("/in"), f.ok);
    QCOMPARE(f.counts(), QStringLiteral("0/1/0"));
    QCOMPARE(f.read(QStringLiteral("Papers of the office/f")), QByteArray("mine"));
    QVERIFY(!QFile::exists(f.at(QStringLiteral("Papers of the office/new"))));
}

QTEST_GUILESS_MAIN(tst_WindowsTransfers)
#include "tst_WindowsTransfers.moc"
