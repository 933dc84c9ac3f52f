#include <memory>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/Files.h"

namespace venlo
{

/// What must not happen: something outside the folder is lost because a link pointed at it.
class tst_FolderRemoval : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void wholeTree();
    void linksAreNotFollowed();
    void aLinkInPlaceOfTheFolder_data();
    void aLinkInPlaceOfTheFolder();
    void deeperThanDescriptorsLast();
    void notAFolder();
    void nothingThere();
    void refusalSaysWhy();

private:
    [[nodiscard]] QString path(const char *name) const
    {
        return m_folder->filePath(QString::fromLatin1(name));
    }
    void write(const char *name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace
{
/// Acts as a user without special rights; root would be refused nothing.
class OrdinaryUser
{
public:
    OrdinaryUser() : m_before(geteuid())
    {
        if (m_before == 0 && seteuid(nobody) != 0)
            qFatal("cannot give up rights");
    }
    ~OrdinaryUser()
    {
        if (seteuid(m_before) != 0)
            qFatal("cannot regain rights");
    }
    OrdinaryUser(const OrdinaryUser &) = delete;
    OrdinaryUser &operator=(const OrdinaryUser &) = delete;

    static constexpr uid_t nobody = 65534;

private:
    uid_t m_before;
};
} // namespace

void tst_FolderRemoval::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

void tst_FolderRemoval::write(const char *name) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("x"), 1);
}

void tst_FolderRemoval::wholeTree()
{
    for (const char *name : {"d/f", "d/.hidden", "d/a/f", "d/a/b/f", "d/日本 語/f", "d/z/f"})
        write(name);
    QVERIFY(QDir().mkpath(path("d/empty/empty")));
    write("beside");
    QString why;
    QVERIFY2(removeFolderTree(path("d"), why), qPrintable(why));
    QVERIFY(!QFileInfo::exists(path("d")));
    QVERIFY(QFileInfo::exists(path("beside")));
}

void tst_FolderRemoval::linksAreNotFollowed()
{
    write("outside/precious");
    write("d/a/f");
    QVERIFY(QFile::link(path("outside"), path("d/a/toFolder")));
    QVERIFY(QFile::link(path("outside/precious"), path("d/toFile")));
    QVERIFY(QFile::link(path("nowhere"), path("d/toNowhere")));
    QVERIFY(QFile::link(path("d"), path("d/a/toItself")));
    QString why;
    QVERIFY2(removeFolderTree(path("d"), why), qPrintable(why));
    QVERIFY(!QFileInfo::exists(path("d")));
    QVERIFY(QFileInfo::exists(path("outside/precious")));
}

void tst_FolderRemoval::aLinkInPlaceOfTheFolder_data()
{
    QTest::addColumn<QString>("ending");
    QTest::newRow("plain") << QString();
    QTest::newRow("with a trailing slash") << QStringLiteral("/");
}

void tst_FolderRemoval::aLinkInPlaceOfTheFolder()
{
    QFETCH(QString, ending);
    write("outside/precious");
    QVERIFY(QFile::link(path("outside"), path("link")));
    QString why;
    QVERIFY2(removeFolderTree(path("link") + ending, why), qPrintable(why));
    QVERIFY(!QFileInfo(path("link")).isSymLink());
    QVERIFY(QFileInfo::exists(path("outside/precious")));
}

void tst_FolderRemoval::deeperThanDescriptorsLast()
{
    constexpr int levels = 1200; // four bytes each: longer than the system takes a path
    constexpr rlim_t descriptors = 64;
    QVERIFY(QDir().mkpath(path("d")));
    int here = open(QFile::encodeName(path("d")).constData(), O_RDONLY | O_DIRECTORY);
    for (int i = 0; i < levels; ++i) {
        QVERIFY(mkdirat(here, "sub", S_IRWXU) == 0);
        const int next = openat(here, "sub", O_RDONLY | O_DIRECTORY);
        close(here);
        here = next;
    }
    close(here);
    rlimit limit = {};
    QCOMPARE(getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit few = {descriptors, limit.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &few), 0);
    QString why;
    const bool removed = removeFolderTree(path("d"), why);
    QCOMPARE(setrlimit(RLIMIT_NOFILE, &limit), 0);
    QVERIFY2(removed, qPrintable(why));
    QVERIFY(!QFileInfo::exists(path("d")));
}

void tst_FolderRemoval::notAFolder()
{
    write("file");
    QString why;
    QVERIFY(!removeFolderTree(path("file"), why));
    QVERIFY(!why.isEmpty());
    QVERIFY(QFileInfo::exists(path("file")));
}

void tst_FolderRemoval::nothingThere()
{
    QString why;
    QVERIFY(!removeFolderTree(path("none"), why));
    QVERIFY(!why.isEmpty());
    QVERIFY(!removeFolderTree(QString(), why));
}

void tst_FolderRemoval::refusalSaysWhy()
{
    write("d/locked/f");
    for (const char *name : {".", "d", "d/locked", "d/locked/f"}) {
        const QByteArray file = QFile::encodeName(path(name));
        QVERIFY(geteuid() != 0 || chown(file.constData(), OrdinaryUser::nobody, 0) == 0);
    }
    QVERIFY(QFile::setPermissions(path("d/locked"), QFile::ReadOwner | QFile::ExeOwner));
    QString why;
    {
        const OrdinaryUser user;
        QVERIFY(!removeFolderTree(path("d"), why));
    }
    QVERIFY(!why.isEmpty());
    QVERIFY(QFileInfo::exists(path("d/locked/f")));
    QVERIFY(QFile::setPermissions(path("d/locked"),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_FolderRemoval)
#include "tst_FolderRemoval.moc"
