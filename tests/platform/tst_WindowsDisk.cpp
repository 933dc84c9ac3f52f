#include <memory>

#include <windows.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/Disk.h"
#include "platform/EntryCopy.h"
#include "platform/EntryLook.h"
#include "platform/FileLook.h"
#include "platform/Files.h"
#include "platform/FilesystemPath.h"
#include "platform/ScriptedShellPerson.h"
#include "platform/ShellFileOperation.h"

using namespace venlo;
using venlo::test::ScriptedShellPerson;

namespace
{

using FileType = std::filesystem::file_type;

/// Also under names that the system's plain functions would take for others.
bool writeFile(const QString &path, const QByteArray &content)
{
    const HANDLE file = CreateFileW(filesystemPath(path).c_str(), GENERIC_WRITE, 0, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return false;
    DWORD written = 0;
    const bool whole = WriteFile(file, content.constData(), static_cast<DWORD>(content.size()),
                                 &written, nullptr) != FALSE;
    CloseHandle(file);
    return whole && written == static_cast<DWORD>(content.size());
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool setAttributes(const QString &path, DWORD attributes)
{
    return SetFileAttributesW(filesystemPath(path).c_str(), attributes) != FALSE;
}

DWORD attributesOf(const QString &path)
{
    return GetFileAttributesW(filesystemPath(path).c_str());
}

bool isThere(const QString &path)
{
    std::error_code error;
    return disk::symlink_status(filesystemPath(path), error).type() != FileType::not_found;
}

/// Names, paths and attributes as only this system has them.
class tst_WindowsDisk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void paths_data();
    void paths();
    void aPathWithoutADriveIsOnTheCurrentOne();
    void noPathIsNotTheCurrentFolder();
    void aPatternIsNoName();
    void attributes_data();
    void attributes();
    void aReplacedFileStaysHidden();
    void aReadOnlyFileIsNotReplaced();
    void aReadOnlyFileGetsItsTime();
    void readOnlyAndHiddenFilesOfATreeGo();
    void aReadOnlyFileThatStaysIsReadOnly();
    void aFolderKeepsItsAttributes();
    void namesThatTheShellTakesForOthers();

private:
    [[nodiscard]] QString at(const QString &name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_WindowsDisk::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_WindowsDisk::paths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("native");
    QTest::addColumn<QString>("shown");
    const auto row = [](const char *name, const char *path, const char *native, const char *shown) {
        QTest::newRow(name) << QString::fromUtf8(path) << QString::fromUtf8(native)
                            << QString::fromUtf8(shown);
    };
    row("none", "", "", "");
    row("a drive", "C:", "\\\\?\\C:\\", "C:\\");
    row("its top", "C:/", "\\\\?\\C:\\", "C:\\");
    row("a folder", "C:\\公開\\a b", "\\\\?\\C:\\公開\\a b", "C:\\公開\\a b");
    row("a way up", "C:\\a\\..\\b\\", "\\\\?\\C:\\b", "C:\\b");
    row("a share", "\\\\server\\share\\a", "\\\\?\\UNC\\server\\share\\a", "\\\\server\\share\\a");
    row("native already", "\\\\?\\C:\\a.", "\\\\?\\C:\\a.", "C:\\a.");
    row("a trailing dot", "C:\\a.", "\\\\?\\C:\\a.", "C:\\a.");
}

void tst_WindowsDisk::paths()
{
    QFETCH(QString, path);
    QFETCH(QString, native);
    QFETCH(QString, shown);
    const std::filesystem::path made = filesystemPath(path);
    QCOMPARE(QString::fromStdWString(made.native()), native);
    QCOMPARE(shownPath(made), shown);
}

void tst_WindowsDisk::aPathWithoutADriveIsOnTheCurrentOne()
{
    const QString drive = QDir::currentPath().left(2);
    QCOMPARE(QString::fromStdWString(filesystemPath(QStringLiteral("/公開/a")).native()),
             QStringLiteral("\\\\?\\") + drive + QStringLiteral("\\公開\\a"));
}

void tst_WindowsDisk::noPathIsNotTheCurrentFolder()
{
    std::error_code error;
    QCOMPARE(disk::symlink_status({}, error).type(), FileType::not_found);
    QVERIFY(disk::directory_iterator({}, error) == disk::directory_iterator());
    QVERIFY(error);
    QString why;
    QVERIFY(!removeFolderTree(QString(), why));
    QVERIFY(!why.isEmpty());
}

void tst_WindowsDisk::aPatternIsNoName()
{
    QVERIFY(writeFile(at(QStringLiteral("ab")), "1"));
    for (const char *pattern : {"*", "a?", "a*"}) {
        std::error_code error;
        const FileType type =
            disk::symlink_status(filesystemPath(at(QString::fromLatin1(pattern))), error).type();
        QVERIFY2(type == FileType::not_found || type == FileType::none, pattern);
    }
}

void tst_WindowsDisk::attributes_data()
{
    QTest::addColumn<bool>("folder");
    QTest::addColumn<quint32>("bits");
    const auto row = [](const char *letters, bool folder, DWORD bits) {
        QTest::newRow(letters) << folder << quint32{bits};
    };
    // Wine gives every file the archive bit and no folder the read-only one.
    row("", true, FILE_ATTRIBUTE_NORMAL);
    row("H", true, FILE_ATTRIBUTE_HIDDEN);
    row("SH", true, FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_HIDDEN);
    row("A", false, FILE_ATTRIBUTE_ARCHIVE);
    row("RA", false, FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_ARCHIVE);
    row("RHA", false, FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_ARCHIVE);
    row("RSHA", false,
        FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_HIDDEN |
            FILE_ATTRIBUTE_ARCHIVE);
}

void tst_WindowsDisk::attributes()
{
    QFETCH(bool, folder);
    QFETCH(quint32, bits);
    const QString path = at(QStringLiteral("a.txt"));
    QVERIFY(folder ? QDir().mkdir(path) : writeFile(path, "6"));
    QVERIFY(setAttributes(path, bits));
    QCOMPARE(attributeLetters(EntryLook(path)), QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(setAttributes(path, FILE_ATTRIBUTE_NORMAL));
}

void tst_WindowsDisk::aReplacedFileStaysHidden()
{
    QVERIFY(writeFile(at(QStringLiteral("new")), "new"));
    QVERIFY(writeFile(at(QStringLiteral("old")), "old"));
    QVERIFY(setAttributes(at(QStringLiteral("old")), FILE_ATTRIBUTE_HIDDEN));
    QVERIFY(replaceFile(at(QStringLiteral("new")), at(QStringLiteral("old"))));
    QCOMPARE(contentOf(at(QStringLiteral("old"))), QByteArray("new"));
    QVERIFY((attributesOf(at(QStringLiteral("old"))) & FILE_ATTRIBUTE_HIDDEN) != 0);
}

void tst_WindowsDisk::aReadOnlyFileIsNotReplaced()
{
    QVERIFY(writeFile(at(QStringLiteral("new")), "new"));
    QVERIFY(writeFile(at(QStringLiteral("old")), "old"));
    QVERIFY(setAttributes(at(QStringLiteral("old")), FILE_ATTRIBUTE_READONLY));
    const bool replaced = replaceFile(at(QStringLiteral("new")), at(QStringLiteral("old")));
    const QByteArray content = contentOf(at(QStringLiteral("old")));
    QVERIFY(setAttributes(at(QStringLiteral("old")), FILE_ATTRIBUTE_NORMAL));
    QVERIFY(!replaced);
    QCOMPARE(content, QByteArray("old"));
    QCOMPARE(contentOf(at(QStringLiteral("new"))), QByteArray("new"));
}

void tst_WindowsDisk::aReadOnlyFileGetsItsTime()
{
    const QString path = at(QStringLiteral("a.txt"));
    QVERIFY(writeFile(path, "7"));
    QVERIFY(setAttributes(path, FILE_ATTRIBUTE_READONLY));
    const QDateTime time(QDate(2001, 2, 3), QTime(4, 5, 6));
    QVERIFY(setModifiedTime(path, time));
    QCOMPARE(QFileInfo(path).lastModified(), time);
    QVERIFY(setAttributes(path, FILE_ATTRIBUTE_NORMAL));
}

void tst_WindowsDisk::readOnlyAndHiddenFilesOfATreeGo()
{
    QVERIFY(QDir().mkpath(at(QStringLiteral("tree/資料"))));
    QVERIFY(writeFile(at(QStringLiteral("tree/資料/a.txt")), "5"));
    QVERIFY(writeFile(at(QStringLiteral("tree/資料/dot.")), "5"));
    QVERIFY(setAttributes(at(QStringLiteral("tree/資料/a.txt")),
                          FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
    QVERIFY(setAttributes(at(QStringLiteral("tree/資料")), FILE_ATTRIBUTE_READONLY));
    QString why;
    QVERIFY2(removeFolderTree(at(QStringLiteral("tree")), why), qPrintable(why));
    QVERIFY(!isThere(at(QStringLiteral("tree"))));
}

void tst_WindowsDisk::aReadOnlyFileThatStaysIsReadOnly()
{
    const QString path = at(QStringLiteral("a.txt"));
    QVERIFY(writeFile(path, "8"));
    QVERIFY(setAttributes(path, FILE_ATTRIBUTE_READONLY));
    const HANDLE inUse = CreateFileW(filesystemPath(path).c_str(), GENERIC_READ, FILE_SHARE_READ,
                                     nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    std::error_code error;
    const bool removed = disk::remove(filesystemPath(path), error);
    CloseHandle(inUse);
    QVERIFY(!removed && error);
    QVERIFY((attributesOf(path) & FILE_ATTRIBUTE_READONLY) != 0);
    QVERIFY(setAttributes(path, FILE_ATTRIBUTE_NORMAL));
}

void tst_WindowsDisk::aFolderKeepsItsAttributes()
{
    constexpr DWORD bits = FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_HIDDEN;
    const QString from = at(QStringLiteral("from"));
    const QString to = at(QStringLiteral("to"));
    QVERIFY(QDir().mkpath(from) && QDir().mkpath(to));
    const QDateTime time(QDate(2002, 3, 4), QTime(5, 6, 8));
    QVERIFY(setModifiedTime(from, time));
    QVERIFY(setAttributes(from, bits));
    keepLook(filesystemPath(from), filesystemPath(to));
    QCOMPARE(attributesOf(to) & bits, bits);
    QCOMPARE(QFileInfo(to).lastModified(), time);
    QVERIFY(setAttributes(from, FILE_ATTRIBUTE_NORMAL) && setAttributes(to, FILE_ATTRIBUTE_NORMAL));
}

/// What goes is what was named, not its neighbour.
void tst_WindowsDisk::namesThatTheShellTakesForOthers()
{
    QVERIFY(writeFile(at(QStringLiteral("dot")), "stays"));
    QVERIFY(writeFile(at(QStringLiteral("dot.")), "goes"));
    QVERIFY(writeFile(at(QStringLiteral("blank ")), "goes"));
    ScriptedShellPerson person;
    const ShellFileReport report =
        runShellFileOperation({ShellVerb::Delete,
                               {QDir::toNativeSeparators(at(QStringLiteral("dot."))),
                                QDir::toNativeSeparators(at(QStringLiteral("blank ")))},
                               {},
                               true,
                               true,
                               0},
                              person);
    QVERIFY2(report.complete, qPrintable(person.failures.join(QLatin1Char('\n'))));
    QVERIFY(!isThere(at(QStringLiteral("dot."))) && !isThere(at(QStringLiteral("blank "))));
    QCOMPARE(contentOf(at(QStringLiteral("dot"))), QByteArray("stays"));
}

} // namespace

QTEST_GUILESS_MAIN(tst_WindowsDisk)
#include "tst_WindowsDisk.moc"
