#include <memory>

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/RecycleBin.h"
#include "platform/ScriptedShellPerson.h"
#include "platform/ShellFileOperation.h"

namespace venlo
{

using test::ScriptedShellPerson;

/// Deleting: into the recycle bin, and for good only after a question of its own.
class tst_ShellFileDelete : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void intoTheBin();
    void sameNameTwice();
    void longName();
    void theLinkItself();
    void refusedQuestion();
    void noConfirm();
    void withoutABin();
    void withoutABinRefused();
    void otherFileSystem();
    void readOnlyFolder();
    void unusableNamesStay();
    void cancelAmongMany();
    void gone();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }
    [[nodiscard]] QString bin(const QString &name) const
    {
        return path(QStringLiteral("home/share/Trash/")) + name;
    }
    void write(const QString &name) const;
    ShellFileReport run(const QStringList &names, bool noConfirm = false);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ScriptedShellPerson> m_person;
};

namespace
{
/// Acts as a user who has no bin anywhere: not the right to make one at the file system's top, nor
/// a share in the home folder.
class NoBin
{
public:
    explicit NoBin(const QString &folder) : m_before(geteuid())
    {
        qputenv("XDG_DATA_HOME", "/proc/share");
        if (chmod(QFile::encodeName(folder).constData(), 0777) != 0 ||
            (m_before == 0 && seteuid(nobody) != 0))
            qFatal("cannot give up rights");
        m_none = !hasRecycleBin(folder);
    }
    ~NoBin()
    {
        if (seteuid(m_before) != 0)
            qFatal("cannot regain rights");
    }
    NoBin(const NoBin &) = delete;
    NoBin &operator=(const NoBin &) = delete;
    /// Where the temporary folder's file system lets everybody make a bin at its top.
    [[nodiscard]] bool none() const { return m_none; }

    static constexpr uid_t nobody = 65534;

private:
    uid_t m_before;
    bool m_none = false;
};
} // namespace

void tst_ShellFileDelete::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("home")));
    qputenv("XDG_DATA_HOME", QFile::encodeName(path(QStringLiteral("home/share"))));
    m_person = std::make_unique<ScriptedShellPerson>();
}

void tst_ShellFileDelete::write(const QString &name) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("text");
}

ShellFileReport tst_ShellFileDelete::run(const QStringList &names, bool noConfirm)
{
    ShellFileOrder order;
    order.verb = ShellVerb::Delete;
    for (const QString &name : names)
        order.from << path(name);
    order.noConfirm = noConfirm;
    return runShellFileOperation(order, *m_person);
}

void tst_ShellFileDelete::intoTheBin()
{
    write(QStringLiteral("d/報告 書.txt"));
    write(QStringLiteral("b.txt"));
    m_person->deletes = {true};
    QVERIFY(run({QStringLiteral("d"), QStringLiteral("b.txt")}).complete);
    QCOMPARE(m_person->askedDeletes.size(), size_t(1));
    QCOMPARE(m_person->askedDeletes.front().paths,
             (QStringList{path(QStringLiteral("d")), path(QStringLiteral("b.txt"))}));
    QVERIFY(!m_person->askedDeletes.front().forGood);
    QVERIFY(!QFile::exists(path(QStringLiteral("d"))));
    QVERIFY(QFile::exists(bin(QStringLiteral("files/d/報告 書.txt"))));
    QVERIFY(QFile::exists(bin(QStringLiteral("files/b.txt"))));
    QFile info(bin(QStringLiteral("info/b.txt.trashinfo")));
    QVERIFY(info.open(QIODevice::ReadOnly));
    const QByteArrayList lines = info.readAll().split('\n');
    QCOMPARE(lines.at(0), QByteArray("[Trash Info]"));
    QCOMPARE(lines.at(1),
             "Path=" + QFile::encodeName(QFileInfo(m_folder->path()).canonicalFilePath()) +
                 "/b.txt");
    QVERIFY(lines.at(2).startsWith("DeletionDate=20"));
    QCOMPARE(QFileInfo(bin(QString())).permissions() & QFileDevice::ReadOther,
             QFileDevice::Permissions());
}

void tst_ShellFileDelete::sameNameTwice()
{
    for (int i = 0; i < 3; ++i) {
        write(QStringLiteral("a.txt"));
        m_person->deletes = {true};
        QVERIFY(run({QStringLiteral("a.txt")}).complete);
    }
    QCOMPARE(QDir(bin(QStringLiteral("files"))).entryList(QDir::Files),
             (QStringList{QStringLiteral("a.txt"), QStringLiteral("a.txt.2"),
                          QStringLiteral("a.txt.3")}));
    QCOMPARE(QDir(bin(QStringLiteral("info"))).entryList(QDir::Files).size(), 3);
}

void tst_ShellFileDelete::longName()
{
    // 254 bytes: as long as a name can be, no room for what the bin adds.
    const QString name = QString(250 / 3, QChar(0x3042)) + QStringLiteral(".html");
    for (int i = 0; i < 2; ++i) {
        write(name);
        m_person->deletes = {true};
        QVERIFY(run({name}).complete);
        QVERIFY(!QFile::exists(path(name)));
    }
    QCOMPARE(m_person->askedDeletes.size(), size_t(2));
    QVERIFY(!m_person->askedDeletes.back().forGood);
    QCOMPARE(QDir(bin(QStringLiteral("files"))).entryList(QDir::Files).size(), 2);
    const QStringList notes = QDir(bin(QStringLiteral("info"))).entryList(QDir::Files);
    QCOMPARE(notes.size(), 2);
    QFile info(bin(QStringLiteral("info/") + notes.constFirst()));
    QVERIFY(info.open(QIODevice::ReadOnly));
    QVERIFY(info.readAll().contains(QFile::encodeName(name).toPercentEncoding()));
}

void tst_ShellFileDelete::theLinkItself()
{
    write(QStringLiteral("kept/a.txt"));
    QVERIFY(QFile::link(path(QStringLiteral("kept")), path(QStringLiteral("link"))));
    QVERIFY(QFile::link(QStringLiteral("nowhere"), path(QStringLiteral("dangling"))));
    m_person->deletes = {true};
    QVERIFY(run({QStringLiteral("link"), QStringLiteral("dangling")}).complete);
    QVERIFY(QFile::exists(path(QStringLiteral("kept/a.txt"))));
    QVERIFY(QFileInfo(bin(QStringLiteral("files/link"))).isSymLink());
    QVERIFY(QFileInfo(bin(QStringLiteral("files/dangling"))).isSymLink());
    QVERIFY(!QFileInfo(path(QStringLiteral("dangling"))).isSymLink());
}

void tst_ShellFileDelete::refusedQuestion()
{
    write(QStringLiteral("a.txt"));
    QVERIFY(run({QStringLiteral("a.txt")}).cancelled);
    QVERIFY(QFile::exists(path(QStringLiteral("a.txt"))));
}

void tst_ShellFileDelete::noConfirm()
{
    write(QStringLiteral("a.txt"));
    QVERIFY(run({QStringLiteral("a.txt")}, true).complete);
    QVERIFY(m_person->askedDeletes.empty());
    QVERIFY(QFile::exists(bin(QStringLiteral("files/a.txt"))));
}

void tst_ShellFileDelete::withoutABin()
{
    const NoBin user(m_folder->path());
    if (!user.none())
        QSKIP("everybody may make a bin at the top of this file system");
    write(QStringLiteral("d/s/a.txt"));
    write(QStringLiteral("b.txt"));
    write(QStringLiteral("kept/a.txt"));
    QVERIFY(QFile::link(path(QStringLiteral("kept")), path(QStringLiteral("d/link"))));
    m_person->deletes = {true};
    QVERIFY(run({QStringLiteral("d"), QStringLiteral("b.txt")}).complete);
    QCOMPARE(m_person->askedDeletes.size(), size_t(1));
    QVERIFY(m_person->askedDeletes.front().forGood);
    QVERIFY(!QFile::exists(path(QStringLiteral("d"))));
    QVERIFY(!QFile::exists(path(QStringLiteral("b.txt"))));
    QVERIFY(QFile::exists(path(QStringLiteral("kept/a.txt"))));
}

void tst_ShellFileDelete::withoutABinRefused()
{
    const NoBin user(m_folder->path());
    if (!user.none())
        QSKIP("everybody may make a bin at the top of this file system");
    write(QStringLiteral("a.txt"));
    QVERIFY(run({QStringLiteral("a.txt")}).cancelled);
    QVERIFY(m_person->askedDeletes.front().forGood);
    QVERIFY(QFile::exists(path(QStringLiteral("a.txt"))));
}

void tst_ShellFileDelete::otherFileSystem()
{
    // Its bin is at its own top, or there is none: never copied into the home's.
    const QTemporaryDir other(QStringLiteral("/dev/shm/venlo-XXXXXX"));
    struct stat here = {};
    struct stat there = {};
    if (!other.isValid() || stat(QFile::encodeName(m_folder->path()).constData(), &here) != 0 ||
        stat(QFile::encodeName(other.path()).constData(), &there) != 0 ||
        here.st_dev == there.st_dev)
        QSKIP("one file system only");
    QFile file(other.filePath(QStringLiteral("venlo-deleted.txt")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.close();
    m_person->deletes = {true};
    ShellFileOrder order;
    order.verb = ShellVerb::Delete;
    order.from = {file.fileName()};
    QVERIFY(runShellFileOperation(order, *m_person).complete);
    QVERIFY(!file.exists());
    QVERIFY(!QFile::exists(bin(QStringLiteral("files/venlo-deleted.txt"))));
    const QString top = QStringLiteral("/dev/shm/.Trash-%1/").arg(geteuid());
    QVERIFY(QFile::remove(top + QStringLiteral("files/venlo-deleted.txt")));
    QFile info(top + QStringLiteral("info/venlo-deleted.txt.trashinfo"));
    QVERIFY(info.open(QIODevice::ReadOnly));
    const QByteArray relative =
        "Path=" +
        QFile::encodeName(QDir(QStringLiteral("/dev/shm")).relativeFilePath(file.fileName()));
    QVERIFY(info.readAll().contains(relative + '\n'));
    QVERIFY(info.remove());
    // Ours if nothing else is in it.
    for (const char *part : {"files", "info", ""})
        QDir().rmdir(top + QString::fromLatin1(part));
}

void tst_ShellFileDelete::readOnlyFolder()
{
    write(QStringLiteral("d/a.txt"));
    QCOMPARE(chmod(QFile::encodeName(m_folder->path()).constData(), 0777), 0);
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("home"))).constData(), 0777), 0);
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("d"))).constData(), 0555), 0);
    m_person->deletes = {true, true};
    const uid_t before = geteuid();
    QVERIFY(before != 0 || seteuid(NoBin::nobody) == 0);
    const auto report = run({QStringLiteral("d/a.txt")});
    QVERIFY(seteuid(before) == 0);
    QCOMPARE(report.failures, 1);
    QCOMPARE(m_person->askedDeletes.size(), size_t(1));
    QVERIFY(QFile::exists(path(QStringLiteral("d/a.txt"))));
    QCOMPARE(QDir(bin(QStringLiteral("info"))).entryList(QDir::Files), QStringList());
}

void tst_ShellFileDelete::unusableNamesStay()
{
    const NoBin user(m_folder->path());
    if (!user.none())
        QSKIP("everybody may make a bin at the top of this file system");
    write(QStringLiteral("d/a\nb.txt"));
    QCOMPARE(run({QStringLiteral("d")}, true).failures, 1);
    QCOMPARE(m_person->failures,
             QStringList{path(QStringLiteral("d")) +
                         QStringLiteral(": 扱えない文字を含む名前のﾌｧｲﾙがあるため､"
                                        "完全には削除しません")});
    QVERIFY(QFile::exists(path(QStringLiteral("d/a\nb.txt"))));
}

void tst_ShellFileDelete::cancelAmongMany()
{
    const NoBin user(m_folder->path());
    if (!user.none())
        QSKIP("everybody may make a bin at the top of this file system");
    for (int i = 0; i < 20; ++i)
        write(QStringLiteral("d/%1.txt").arg(i));
    bool begun = false;
    m_person->onProgress = [this, &begun](const ShellFileProgress &) {
        begun = begun || QDir(path(QStringLiteral("d"))).entryList(QDir::Files).size() < 20;
        if (begun)
            m_person->cancelAt = 1;
    };
    const auto report = run({QStringLiteral("d")}, true);
    QVERIFY(begun);
    QVERIFY(report.cancelled);
    QCOMPARE(report.failures, 0);
    QVERIFY(!QDir(path(QStringLiteral("d"))).isEmpty());
}

void tst_ShellFileDelete::gone()
{
    write(QStringLiteral("b.txt"));
    m_person->deletes = {true};
    QCOMPARE(run({QStringLiteral("gone"), QStringLiteral("b.txt")}).failures, 1);
    QCOMPARE(m_person->askedDeletes.size(), size_t(1));
    QVERIFY(!m_person->askedDeletes.front().forGood);
    QVERIFY(!QFile::exists(path(QStringLiteral("b.txt"))));
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_ShellFileDelete)
#include "tst_ShellFileDelete.moc"
