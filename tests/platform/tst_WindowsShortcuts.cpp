// Shell shortcuts are files of their own, and short names are no names.
#include <memory>

#include <windows.h>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/Disk.h"
#include "platform/EntryLook.h"
#include "platform/FileLook.h"
#include "platform/FileNames.h"
#include "platform/Files.h"
#include "platform/FilesystemPath.h"
#include "support/ShortName.h"
#include "support/Shortcuts.h"

using namespace venlo;
using namespace venlo::test;

namespace
{

bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

class tst_WindowsShortcuts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void theLibraryFollowsThem();
    void theyAreFiles_data();
    void theyAreFiles();
    void theyHaveTheirOwnTime();
    void theyHaveTheirOwnMarks();
    void oneThatIsNotThere();
    void aFolderOfThatNameIsAFolder();
    void everythingElseIsAsTheLibraryHasIt_data();
    void everythingElseIsAsTheLibraryHasIt();
    void shortNamesAreNoNames_data();
    void shortNamesAreNoNames();
    void namesAreNames_data();
    void namesAreNames();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_folder->filePath(name); }
    [[nodiscard]] QString shortcut(const char *name) const { return at(QString::fromLatin1(name)); }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QTemporaryDir> m_elsewhere;
};

void tst_WindowsShortcuts::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_elsewhere = std::make_unique<QTemporaryDir>();
    QVERIFY(makeShortcuts(m_folder->path(), m_elsewhere->path()));
}

/// What the rest of this test is there for; a library that no longer does it would do without.
void tst_WindowsShortcuts::theLibraryFollowsThem()
{
    QCOMPARE(QFileInfo(shortcut("file.lnk")).size(), shortcutTargetSize);
    QVERIFY(QFileInfo(shortcut("folder.lnk")).isDir());
    QVERIFY(!QFileInfo::exists(shortcut("nothing.lnk")));
}

void tst_WindowsShortcuts::theyAreFiles_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"file.lnk", "folder.lnk", "nothing.lnk", "FILE.LNK"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_WindowsShortcuts::theyAreFiles()
{
    QFETCH(QString, name);
    const EntryLook look(at(name));
    QVERIFY(look.exists());
    QVERIFY(look.isFile());
    QVERIFY(!look.isDir());
    QVERIFY(!look.isSymbolicLink());
    QVERIFY(!look.isJunction());
    QVERIFY(!look.isHidden());
    QVERIFY(look.isReadable());
    QVERIFY(look.isWritable());
    QVERIFY(look.permissions().testFlag(QFile::WriteUser));
    QCOMPARE(look.size(), contentOf(at(name)).size());
    QVERIFY(look.size() > 0 && look.size() < shortcutTargetSize);
    QCOMPARE(look.fileName(), name);
    // As the folder's listing has it.
    WIN32_FIND_DATAW found = {};
    const HANDLE search = FindFirstFileW(filesystemPath(at(name)).c_str(), &found);
    QVERIFY(search != INVALID_HANDLE_VALUE);
    FindClose(search);
    QCOMPARE(look.size(), qint64{found.nFileSizeLow});
    const EntryLook known{QFileInfo(at(name))};
    QCOMPARE(known.size(), look.size());
    QCOMPARE(known.lastModified(), look.lastModified());
}

void tst_WindowsShortcuts::theyHaveTheirOwnTime()
{
    const QDateTime time(QDate(2003, 4, 5), QTime(6, 7, 8, 901));
    QVERIFY(setModifiedTime(shortcut("file.lnk"), time));
    QCOMPARE(EntryLook(shortcut("file.lnk")).lastModified(), time);
    // The library's precision and clock, by a file that it does not follow.
    QVERIFY(QFile::copy(shortcut("file.lnk"), shortcut("copy.bin")));
    QVERIFY(setModifiedTime(shortcut("copy.bin"), time));
    QCOMPARE(QFileInfo(shortcut("copy.bin")).lastModified(), time);
    const QDateTime made = EntryLook(shortcut("nothing.lnk")).birthTime();
    QVERIFY(std::abs(made.secsTo(QDateTime::currentDateTime())) < 60);
    QCOMPARE(made.timeSpec(), QFileInfo(shortcut("copy.bin")).birthTime().timeSpec());
}

void tst_WindowsShortcuts::theyHaveTheirOwnMarks()
{
    const std::filesystem::path native = filesystemPath(shortcut("file.lnk"));
    QVERIFY(SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    const EntryLook look(shortcut("file.lnk"));
    QVERIFY(look.isHidden());
    QVERIFY(!look.isWritable());
    QVERIFY(!look.permissions().testFlag(QFile::WriteUser));
    QVERIFY(attributeLetters(look).startsWith(QLatin1String("RH")));
    QVERIFY(SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_NORMAL));
    // Nor is it read-only because of what it leads to.
    const QString target = m_elsewhere->filePath(QStringLiteral("target.bin"));
    QVERIFY(SetFileAttributesW(filesystemPath(target).c_str(), FILE_ATTRIBUTE_READONLY));
    QVERIFY(EntryLook(shortcut("file.lnk")).isWritable());
    QVERIFY(SetFileAttributesW(filesystemPath(target).c_str(), FILE_ATTRIBUTE_NORMAL));
}

void tst_WindowsShortcuts::oneThatIsNotThere()
{
    const EntryLook look(shortcut("gone.lnk"));
    QVERIFY(!look.exists());
    QVERIFY(!look.isFile() && !look.isDir() && !look.isWritable() && !look.isReadable());
    QCOMPARE(look.size(), 0);
    QVERIFY(!look.lastModified().isValid());
}

void tst_WindowsShortcuts::aFolderOfThatNameIsAFolder()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("real.lnk")));
    const EntryLook look(shortcut("real.lnk"));
    QVERIFY(look.exists() && look.isDir() && !look.isFile());
    QCOMPARE(look.size(), 0);
}

void tst_WindowsShortcuts::everythingElseIsAsTheLibraryHasIt_data()
{
    QTest::addColumn<QString>("path");
    QTest::newRow("a file") << QStringLiteral("plain.txt");
    QTest::newRow("a folder") << QStringLiteral(".");
    QTest::newRow("nothing") << QStringLiteral("none");
    QTest::newRow("a drive") << QStringLiteral("C:/");
}

void tst_WindowsShortcuts::everythingElseIsAsTheLibraryHasIt()
{
    QFETCH(QString, path);
    QVERIFY(writeFile(at(QStringLiteral("plain.txt")), "plain"));
    const QString whole = path.contains(QLatin1Char(':')) ? path : at(path);
    const EntryLook look(whole);
    const QFileInfo info(whole);
    QCOMPARE(look.exists(), info.exists());
    QCOMPARE(look.isFile(), info.isFile());
    QCOMPARE(look.isDir(), info.isDir());
    QCOMPARE(look.isHidden(), info.isHidden());
    QCOMPARE(look.isReadable(), info.isReadable());
    QCOMPARE(look.isWritable(), info.isWritable());
    QCOMPARE(look.permissions(), info.permissions());
    QCOMPARE(look.size(), info.size());
    QCOMPARE(look.lastModified(), info.lastModified());
    QCOMPARE(look.birthTime(), info.birthTime());
    QCOMPARE(look.filePath(), info.filePath());
    QCOMPARE(look.absoluteFilePath(), info.absoluteFilePath());
}

void tst_WindowsShortcuts::shortNamesAreNoNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("a file") << QStringLiteral("Report2023Final.xls");
    QTest::newRow("a folder") << QStringLiteral("Documents of the office");
    QTest::newRow("Japanese") << QStringLiteral("2023年度の最終報告書.xls");
}

void tst_WindowsShortcuts::shortNamesAreNoNames()
{
    QFETCH(QString, name);
    if (name.contains(QLatin1Char('.')))
        QVERIFY(writeFile(at(name), "mine"));
    else
        QVERIFY(QDir(m_folder->path()).mkdir(name));
    const QString other = shortNameOf(at(name));
    if (other.isEmpty())
        QSKIP("the file system gives no short names");
    QVERIFY2(QFileInfo::exists(at(other)), qPrintable(other));
    const QString why = QStringLiteral("'%1' の短い名前です").arg(name);
    QCOMPARE(whyAnotherEntry(at(other)), why);
    QCOMPARE(whyAnotherEntry(at(other.toLower())), why);
    QCOMPARE(whyAnotherEntry(at(name)), QString());
    // A folder on the way may be named so: that is how the system itself writes some.
    if (QFileInfo(at(name)).isDir()) {
        QVERIFY(writeFile(at(name + QStringLiteral("/inside.txt")), "mine"));
        QCOMPARE(whyAnotherEntry(at(other + QStringLiteral("/inside.txt"))), QString());
    }
}

void tst_WindowsShortcuts::namesAreNames_data()
{
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QString>("asked");
    const auto row = [](const char *title, const QString &kept, const QString &asked) {
        QTest::newRow(title) << kept << asked;
    };
    row("the same", QStringLiteral("a.txt"), QStringLiteral("a.txt"));
    row("another letter case", QStringLiteral("a.txt"), QStringLiteral("A.TXT"));
    row("looks like a short one", QStringLiteral("LONG~1.TXT"), QStringLiteral("LONG~1.TXT"));
    row("nothing there", QStringLiteral("a.txt"), QStringLiteral("REPORT~1.XLS"));
    row("a pattern", QStringLiteral("a.txt"), QStringLiteral("*.txt"));
    row("the folder", QStringLiteral("a.txt"), QString());
}

void tst_WindowsShortcuts::namesAreNames()
{
    QFETCH(QString, kept);
    QFETCH(QString, asked);
    QVERIFY(writeFile(at(kept), "mine"));
    QCOMPARE(whyAnotherEntry(m_folder->path() + QLatin1Char('/') + asked), QString());
    QCOMPARE(whyAnotherEntry(QStringLiteral("C:/")), QString());
    QCOMPARE(whyAnotherEntry(QString()), QString());
}

} // namespace

QTEST_GUILESS_MAIN(tst_WindowsShortcuts)
#include "tst_WindowsShortcuts.moc"
