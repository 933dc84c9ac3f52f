#include <set>

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/Disk.h"
#include "platform/FilesystemPath.h"

using namespace venlo;

namespace
{

using FileType = std::filesystem::file_type;

bool writeFile(const QString &path, const QByteArray &content)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(content) == content.size();
}

/// A folder whose path is longer than the 260 characters of Windows' older functions.
class DeepFolder
{
public:
    DeepFolder()
    {
        m_path = filesystemPath(m_top.path());
        for (int i = 0; i < levels; ++i) {
            m_path /= std::string(nameLength, static_cast<char>('a' + i));
            std::error_code error;
            if (!disk::create_directory(m_path, error))
                qFatal("%s", error.message().c_str());
        }
    }
    [[nodiscard]] const std::filesystem::path &path() const { return m_path; }
    [[nodiscard]] QString filePath(const QString &name) const
    {
        return shownPath(m_path) + QLatin1Char('/') + name;
    }

private:
    static constexpr int levels = 8;
    static constexpr size_t nameLength = 50;
    QTemporaryDir m_top;
    std::filesystem::path m_path;
};

/// What the system does with paths of any length.
class tst_Disk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsADeepFolder();
    void looksAtADeepFile();
    void whatIsNotThereIsNoError();
    void aFolderThatCannotBeListedIsAnError();
    void theSameFolderByTwoPaths();
    void aReadOnlyFileGoes();
    void aFolderThatHoldsSomethingStays();
    void aLinkIsNotWhatItLeadsTo();
};

void tst_Disk::listsADeepFolder()
{
    const DeepFolder folder;
    std::error_code error;
    QVERIFY(disk::is_empty(folder.path(), error));
    QVERIFY(writeFile(folder.filePath(QStringLiteral("お知らせ.html")), "12345"));
    QVERIFY(disk::create_directory(folder.path() / "sub", error));
    QVERIFY(!disk::is_empty(folder.path(), error));

    std::set<QString> folders;
    std::set<QString> files;
    for (disk::directory_iterator item(folder.path(), error);
         !error && item != disk::directory_iterator(); item.increment(error)) {
        QVERIFY(item->exists(error));
        const QString name = shownPath(item->path().filename());
        if (item->is_directory(error))
            folders.insert(name);
        else if (item->is_regular_file(error) && item->file_size(error) == 5)
            files.insert(name);
    }
    QVERIFY2(!error, error.message().c_str());
    QCOMPARE(folders, std::set<QString>{QStringLiteral("sub")});
    QCOMPARE(files, std::set<QString>{QStringLiteral("お知らせ.html")});
}

void tst_Disk::looksAtADeepFile()
{
    const DeepFolder folder;
    QVERIFY(writeFile(folder.filePath(QStringLiteral("a.txt")), "1234567"));
    const auto file = filesystemPath(folder.filePath(QStringLiteral("a.txt")));
    std::error_code error;
    QCOMPARE(disk::symlink_status(file, error).type(), FileType::regular);
    QCOMPARE(disk::symlink_status(folder.path(), error).type(), FileType::directory);
    QCOMPARE(static_cast<qint64>(disk::file_size(file, error)), qint64{7});
    QVERIFY(!error);
    const auto before = disk::last_write_time(file, error);
    QVERIFY(!error);
    QFile later(folder.filePath(QStringLiteral("a.txt")));
    QVERIFY(later.open(QIODevice::ReadWrite));
    QVERIFY(later.setFileTime(QDateTime::currentDateTime().addSecs(100),
                              QFileDevice::FileModificationTime));
    later.close();
    const auto step = disk::last_write_time(file, error) - before;
    QVERIFY(step > std::chrono::seconds(90) && step < std::chrono::seconds(200));
}

void tst_Disk::whatIsNotThereIsNoError()
{
    const QTemporaryDir folder;
    const auto missing = filesystemPath(folder.filePath(QStringLiteral("no/such")));
    std::error_code error = std::make_error_code(std::errc::io_error);
    QCOMPARE(disk::symlink_status(missing, error).type(), FileType::not_found);
    QVERIFY(!disk::remove(missing, error));
    QVERIFY(!error);
    const disk::directory_entry entry(missing, error);
    QVERIFY(!entry.exists(error));
}

void tst_Disk::aFolderThatCannotBeListedIsAnError()
{
    const QTemporaryDir folder;
    std::error_code error;
    const disk::directory_iterator item(filesystemPath(folder.filePath(QStringLiteral("missing"))),
                                        error);
    QCOMPARE(error, std::errc::no_such_file_or_directory);
    QVERIFY(item == disk::directory_iterator());
}

void tst_Disk::theSameFolderByTwoPaths()
{
    const QTemporaryDir folder;
    std::error_code error;
    QVERIFY(disk::create_directory(filesystemPath(folder.filePath(QStringLiteral("a"))), error));
    const auto plain = filesystemPath(folder.path());
    QVERIFY(
        disk::equivalent(plain, filesystemPath(folder.path() + QStringLiteral("/a/..")), error));
    QVERIFY(!disk::equivalent(plain, plain / "a", error));
    QVERIFY(!disk::canonical(plain, error).empty());
    QVERIFY(!error);
}

void tst_Disk::aReadOnlyFileGoes()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("locked.txt"));
    QVERIFY(writeFile(path, "x"));
    QVERIFY(QFile::setPermissions(path, QFile::ReadOwner));
    std::error_code error;
    QVERIFY(disk::remove(filesystemPath(path), error));
    QVERIFY(!QFileInfo::exists(path));
}

void tst_Disk::aFolderThatHoldsSomethingStays()
{
    const QTemporaryDir folder;
    QVERIFY(writeFile(folder.filePath(QStringLiteral("x")), "x"));
    std::error_code error;
    QVERIFY(!disk::remove(filesystemPath(folder.path()), error));
    QCOMPARE(error, std::errc::directory_not_empty);
    QVERIFY(QFileInfo::exists(folder.filePath(QStringLiteral("x"))));
}

void tst_Disk::aLinkIsNotWhatItLeadsTo()
{
    const QTemporaryDir folder;
    const auto target = filesystemPath(folder.filePath(QStringLiteral("target.txt")));
    const auto link = filesystemPath(folder.filePath(QStringLiteral("link.txt")));
    QVERIFY(writeFile(shownPath(target), "12"));
    std::error_code error;
    std::filesystem::create_symlink(target, link, error);
    if (error)
        QSKIP("no symbolic links can be made here");
    QCOMPARE(disk::symlink_status(link, error).type(), FileType::symlink);
    const disk::directory_entry entry(link, error);
    QVERIFY(entry.is_regular_file(error));
    QCOMPARE(static_cast<qint64>(entry.file_size(error)), qint64{2});
    QVERIFY(disk::remove(link, error));
    QVERIFY(QFileInfo::exists(shownPath(target)));
}

} // namespace

QTEST_GUILESS_MAIN(tst_Disk)
#include "tst_Disk.moc"
