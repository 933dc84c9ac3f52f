#include <csignal>
#include <filesystem>
#include <memory>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/ScriptedShellPerson.h"
#include "platform/ShellFileOperation.h"
#include "platform/TemporaryName.h"

namespace venlo
{

using test::ScriptedShellPerson;

/// Copy and move as a person meets them. Nothing may be lost, and nothing half done may show.
class tst_ShellFileOperation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void copyKeepsTimesAndPermissions();
    void copyTakesWholeFolders();
    void linksAreCopiedAsLinks();
    void namesOfAnyBytes();
    void moveWithinOneFileSystem();
    void moveAcrossFileSystems();
    void changedSourceOfAMoveStays();
    void overwriteAnswers_data();
    void overwriteAnswers();
    void yesToAllAsksOnce();
    void cancelAtAQuestionEndsAll();
    void mergeFolders();
    void mergedMoveLeavesWhatWasRefused();
    void noConfirmAsksNothing();
    void silentShowsNothing();
    void fileAgainstFolder_data();
    void fileAgainstFolder();
    void folderIntoItself_data();
    void folderIntoItself();
    void copyIntoTheSameFolder();
    void copyOfALongName_data();
    void copyOfALongName();
    void targetThatCannotBeLookedAt();
    void privateFoldersStayPrivate();
    void moveIntoTheSameFolderIsNothing();
    void fullDisk();
    void readOnlyTarget();
    void cancelLeavesNoHalfFile();
    void vanishedSourceAndTarget();
    void pipesAreRefused();
    void stopAfterAFailure();
    void nothingAsked();

private:
    [[nodiscard]] QString path(const QString &name) const { return m_folder->filePath(name); }
    void write(const QString &name, const QByteArray &bytes = "text") const;
    [[nodiscard]] QByteArray read(const QString &name) const;
    ShellFileReport run(ShellVerb verb, const QStringList &from, const QString &to,
                        bool noConfirm = false);
    /// Everything below the folder, relative, sorted.
    [[nodiscard]] QStringList tree(const QString &name) const;
    [[nodiscard]] QStringList leftovers() const;

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<ScriptedShellPerson> m_person;
};

namespace
{
QString words(int error)
{
    return QString::fromLocal8Bit(std::generic_category().message(error).c_str());
}

/// A folder of another file system than the temporary one's; null where there is none.
std::unique_ptr<QTemporaryDir> elsewhere(const QString &here)
{
    auto folder = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/venlo-XXXXXX"));
    struct stat one = {};
    struct stat other = {};
    if (!folder->isValid() || stat(QFile::encodeName(here).constData(), &one) != 0 ||
        stat(QFile::encodeName(folder->path()).constData(), &other) != 0 ||
        one.st_dev == other.st_dev)
        return nullptr;
    return folder;
}
} // namespace

void tst_ShellFileOperation::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("to")));
    m_person = std::make_unique<ScriptedShellPerson>();
}

void tst_ShellFileOperation::cleanup()
{
    QCOMPARE(leftovers(), QStringList());
    m_folder.reset();
}

void tst_ShellFileOperation::write(const QString &name, const QByteArray &bytes) const
{
    QVERIFY(QDir().mkpath(QFileInfo(path(name)).path()));
    QFile file(path(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray tst_ShellFileOperation::read(const QString &name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

ShellFileReport tst_ShellFileOperation::run(ShellVerb verb, const QStringList &from,
                                            const QString &to, bool noConfirm)
{
    ShellFileOrder order;
    order.verb = verb;
    for (const QString &name : from)
        order.from << path(name);
    order.to = path(to);
    order.noConfirm = noConfirm;
    return runShellFileOperation(order, *m_person);
}

QStringList tst_ShellFileOperation::tree(const QString &name) const
{
    QStringList entries;
    const QDir top(path(name));
    QDirIterator it(top.path(),
                    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        entries << top.relativeFilePath(it.next());
    entries.sort();
    return entries;
}

QStringList tst_ShellFileOperation::leftovers() const
{
    QStringList found;
    for (const QString &entry : tree(QString())) {
        if (isTemporaryName(QFileInfo(entry).fileName()))
            found << entry;
    }
    return found;
}

void tst_ShellFileOperation::copyKeepsTimesAndPermissions()
{
    write(QStringLiteral("d/a.txt"));
    const QByteArray folder = QFile::encodeName(path(QStringLiteral("d")));
    const QByteArray file = folder + "/a.txt";
    const timespec times[2] = {{1000000000, 5}, {1234567890, 123456789}};
    QCOMPARE(utimensat(AT_FDCWD, file.constData(), times, 0), 0);
    QCOMPARE(utimensat(AT_FDCWD, folder.constData(), times, 0), 0);
    QCOMPARE(chmod(file.constData(), 0640), 0);
    QCOMPARE(chmod(folder.constData(), 0750), 0);

    QVERIFY(run(ShellVerb::Copy, {QStringLiteral("d")}, QStringLiteral("to")).complete);
    for (const char *name : {"to/d", "to/d/a.txt"}) {
        struct stat status = {};
        QCOMPARE(stat(QFile::encodeName(path(QString::fromLatin1(name))).constData(), &status), 0);
        QCOMPARE(status.st_mtim.tv_sec, 1234567890);
        QCOMPARE(status.st_mtim.tv_nsec, 123456789);
        QCOMPARE(status.st_mode & 07777, S_ISDIR(status.st_mode) ? 0750U : 0640U);
    }
    QCOMPARE(read(QStringLiteral("d/a.txt")), QByteArray("text"));
}

void tst_ShellFileOperation::copyTakesWholeFolders()
{
    write(QStringLiteral("写真/春/a.bin"), QByteArray(700000, 'x'));
    write(QStringLiteral("写真/.hidden"));
    QVERIFY(QDir(path(QStringLiteral("写真"))).mkdir(QStringLiteral("empty")));
    write(QStringLiteral("b.txt"));
    QVERIFY(run(ShellVerb::Copy, {QStringLiteral("写真"), QStringLiteral("b.txt")},
                QStringLiteral("to"))
                .complete);
    const QStringList before = tree(QStringLiteral("写真"));
    QCOMPARE(tree(QStringLiteral("to/写真")), before);
    QCOMPARE(before.size(), 4);
    QCOMPARE(read(QStringLiteral("to/写真/春/a.bin")), QByteArray(700000, 'x'));
    QCOMPARE(read(QStringLiteral("to/b.txt")), QByteArray("text"));
    QVERIFY(m_person->askedClashes.empty());
    const ShellFileProgress last = m_person->seen.back();
    QCOMPARE(last.done, last.total);
}

void tst_ShellFileOperation::linksAreCopiedAsLinks()
{
    write(QStringLiteral("out/secret.txt"));
    QVERIFY(QDir(path({})).mkdir(QStringLiteral("d")));
    QVERIFY(QFile::link(path(QStringLiteral("out")), path(QStringLiteral("d/folder"))));
    QVERIFY(QFile::link(QStringLiteral("."), path(QStringLiteral("d/loop"))));
    QVERIFY(QFile::link(QStringLiteral("nowhere"), path(QStringLiteral("d/dangling"))));
    QVERIFY(run(ShellVerb::Copy, {QStringLiteral("d")}, QStringLiteral("to")).complete);
    for (const char *name : {"folder", "loop", "dangling"}) {
        const QString relative = QString::fromLatin1(name);
        std::error_code error;
        const auto from = std::filesystem::read_symlink(
            path(QStringLiteral("d/") + relative).toStdString(), error);
        QCOMPARE(QString::fromStdString(
                     std::filesystem::read_symlink(
                         path(QStringLiteral("to/d/") + relative).toStdString(), error)
                         .string()),
                 QString::fromStdString(from.string()));
        QVERIFY(!error);
    }
    QCOMPARE(tree(QStringLiteral("to/d")).size(), 3);
}

void tst_ShellFileOperation::namesOfAnyBytes()
{
    QVERIFY(QDir(path({})).mkdir(QStringLiteral("d")));
    const QByteArray odd = QFile::encodeName(path(QStringLiteral("d/"))) + "\xff\xfe line\nend";
    std::FILE *file = std::fopen(odd.constData(), "w");
    QVERIFY(file != nullptr);
    std::fclose(file);
    QVERIFY(run(ShellVerb::Copy, {QStringLiteral("d")}, QStringLiteral("to")).complete);
    const QByteArray copy = QFile::encodeName(path(QStringLiteral("to/d/"))) + "\xff\xfe line\nend";
    QCOMPARE(access(copy.constData(), F_OK), 0);
    QCOMPARE(unlink(copy.constData()), 0);
    QCOMPARE(unlink(odd.constData()), 0);
}

void tst_ShellFileOperation::moveWithinOneFileSystem()
{
    write(QStringLiteral("d/a.txt"), "one");
    struct stat before = {};
    QCOMPARE(stat(QFile::encodeName(path(QStringLiteral("d/a.txt"))).constData(), &before), 0);
    QVERIFY(run(ShellVerb::Move, {QStringLiteral("d")}, QStringLiteral("to")).complete);
    struct stat after = {};
    QCOMPARE(stat(QFile::encodeName(path(QStringLiteral("to/d/a.txt"))).constData(), &after), 0);
    QCOMPARE(after.st_ino, before.st_ino); // the very file, not a copy
    QVERIFY(!QFile::exists(path(QStringLiteral("d"))));
}

void tst_ShellFileOperation::moveAcrossFileSystems()
{
    const auto other = elsewhere(m_folder->path());
    if (!other)
        QSKIP("one file system only");
    write(QStringLiteral("d/sub/a.txt"), "one");
    QVERIFY(QFile::link(QStringLiteral("sub"), path(QStringLiteral("d/link"))));
    write(QStringLiteral("b.txt"), "two");
    ShellFileOrder order{
        ShellVerb::Move, {path(QStringLiteral("d")), path(QStringLiteral("b.txt"))}, other->path()};
    QVERIFY(runShellFileOperation(order, *m_person).complete);
    QVERIFY(!QFile::exists(path(QStringLiteral("d"))));
    QVERIFY(!QFile::exists(path(QStringLiteral("b.txt"))));
    QVERIFY(QFile::exists(other->filePath(QStringLiteral("d/sub/a.txt"))));
    QVERIFY(QFileInfo(other->filePath(QStringLiteral("d/link"))).isSymLink());
    QVERIFY(QFile::exists(other->filePath(QStringLiteral("b.txt"))));

    // Back again, cancelled in the middle: the source stays as it was.
    order = {ShellVerb::Move, {other->filePath(QStringLiteral("d"))}, path(QStringLiteral("to"))};
    ScriptedShellPerson hasty;
    hasty.onProgress = [&hasty](const ShellFileProgress &now) {
        if (now.name == QLatin1String("a.txt"))
            hasty.cancelAt = 1;
    };
    const ShellFileReport report = runShellFileOperation(order, hasty);
    QVERIFY(report.cancelled && !report.complete);
    QVERIFY(QFile::exists(other->filePath(QStringLiteral("d/sub/a.txt"))));
    QVERIFY(QFileInfo(other->filePath(QStringLiteral("d/link"))).isSymLink());
}

void tst_ShellFileOperation::changedSourceOfAMoveStays()
{
    const auto other = elsewhere(m_folder->path());
    if (!other)
        QSKIP("one file system only");
    write(QStringLiteral("d/a.txt"), "one");
    write(QStringLiteral("d/z/b.txt"), "two");
    bool written = false;
    m_person->onProgress = [this, &written, &other](const ShellFileProgress &) {
        // The first copy has arrived and the rest is still on its way.
        const bool arrived = QFile::exists(other->filePath(QStringLiteral("d/a.txt"))) &&
                             !QFile::exists(other->filePath(QStringLiteral("d/z/b.txt")));
        const bool reversed = QFile::exists(other->filePath(QStringLiteral("d/z/b.txt"))) &&
                              !QFile::exists(other->filePath(QStringLiteral("d/a.txt")));
        if (written || (!arrived && !reversed))
            return;
        written = true;
        write(arrived ? QStringLiteral("d/a.txt") : QStringLiteral("d/z/b.txt"), "new words");
    };
    const ShellFileOrder order{ShellVerb::Move, {path(QStringLiteral("d"))}, other->path()};
    const ShellFileReport report = runShellFileOperation(order, *m_person);
    QVERIFY(written);
    QVERIFY(!report.complete);
    QCOMPARE(m_person->failures.size(), 1);
    QVERIFY(m_person->failures.constFirst().endsWith(
        QStringLiteral("移動中に変更されたため､元のﾌｧｲﾙを残しました")));
    const bool kept = read(QStringLiteral("d/a.txt")) == "new words" ||
                      read(QStringLiteral("d/z/b.txt")) == "new words";
    QVERIFY(kept);
}

void tst_ShellFileOperation::overwriteAnswers_data()
{
    QTest::addColumn<int>("verb");
    QTest::addColumn<int>("answer");
    QTest::addColumn<QByteArray>("target");
    QTest::addColumn<bool>("sourceStays");
    const int yes = static_cast<int>(ShellAnswer::Yes);
    const int no = static_cast<int>(ShellAnswer::No);
    QTest::newRow("copy, yes") << 2 << yes << QByteArray("new") << true;
    QTest::newRow("copy, no") << 2 << no << QByteArray("old") << true;
    QTest::newRow("move, yes") << 1 << yes << QByteArray("new") << false;
    QTest::newRow("move, no") << 1 << no << QByteArray("old") << true;
}

void tst_ShellFileOperation::overwriteAnswers()
{
    QFETCH(const int, verb);
    QFETCH(const int, answer);
    QFETCH(const QByteArray, target);
    QFETCH(const bool, sourceStays);
    write(QStringLiteral("a.txt"), "new");
    write(QStringLiteral("to/a.txt"), "old");
    m_person->clashes = {static_cast<ShellAnswer>(answer)};
    const auto report =
        run(static_cast<ShellVerb>(verb), {QStringLiteral("a.txt")}, QStringLiteral("to"));
    QCOMPARE(report.complete, static_cast<ShellAnswer>(answer) == ShellAnswer::Yes);
    QVERIFY(!report.cancelled);
    QCOMPARE(report.failures, 0);
    QCOMPARE(read(QStringLiteral("to/a.txt")), target);
    QCOMPARE(QFile::exists(path(QStringLiteral("a.txt"))), sourceStays);
    QCOMPARE(m_person->askedClashes.size(), size_t(1));
    QCOMPARE(m_person->askedClashes.front().existing, path(QStringLiteral("to/a.txt")));
    QCOMPARE(m_person->askedClashes.front().incoming, path(QStringLiteral("a.txt")));
    QVERIFY(!m_person->askedClashes.front().folders);
}

void tst_ShellFileOperation::yesToAllAsksOnce()
{
    QStringList from;
    for (int i = 0; i < 4; ++i) {
        from << QStringLiteral("%1.txt").arg(i);
        write(from.last(), "new");
        write(QStringLiteral("to/") + from.last(), "old");
    }
    m_person->clashes = {ShellAnswer::No, ShellAnswer::YesToAll};
    QVERIFY(!run(ShellVerb::Copy, from, QStringLiteral("to")).complete);
    QCOMPARE(m_person->askedClashes.size(), size_t(2));
    QCOMPARE(read(QStringLiteral("to/0.txt")), QByteArray("old"));
    for (int i = 1; i < 4; ++i)
        QCOMPARE(read(QStringLiteral("to/%1.txt").arg(i)), QByteArray("new"));
}

void tst_ShellFileOperation::cancelAtAQuestionEndsAll()
{
    write(QStringLiteral("a.txt"), "new");
    write(QStringLiteral("b.txt"), "new");
    write(QStringLiteral("to/a.txt"), "old");
    m_person->clashes = {ShellAnswer::Cancel};
    const auto report = run(ShellVerb::Move, {QStringLiteral("a.txt"), QStringLiteral("b.txt")},
                            QStringLiteral("to"));
    QVERIFY(report.cancelled);
    QCOMPARE(tree(QStringLiteral("to")), QStringList{QStringLiteral("a.txt")});
    QCOMPARE(read(QStringLiteral("to/a.txt")), QByteArray("old"));
    QVERIFY(QFile::exists(path(QStringLiteral("b.txt"))));
}

void tst_ShellFileOperation::mergeFolders()
{
    write(QStringLiteral("d/s/new.txt"), "new");
    write(QStringLiteral("to/d/s/old.txt"), "old");
    m_person->clashes = {ShellAnswer::Yes};
    QVERIFY(run(ShellVerb::Copy, {QStringLiteral("d")}, QStringLiteral("to")).complete);
    // The folders inside go with the answer for the one that holds them.
    QCOMPARE(m_person->askedClashes.size(), size_t(1));
    QVERIFY(m_person->askedClashes.front().folders);
    QCOMPARE(tree(QStringLiteral("to/d/s")),
             (QStringList{QStringLiteral("new.txt"), QStringLiteral("old.txt")}));
}

void tst_ShellFileOperation::mergedMoveLeavesWhatWasRefused()
{
    write(QStringLiteral("d/s/both.txt"), "new");
    write(QStringLiteral("d/only.txt"), "new");
    write(QStringLiteral("to/d/s/both.txt"), "old");
    m_person->clashes = {ShellAnswer::Yes, ShellAnswer::No};
    QVERIFY(!run(ShellVerb::Move, {QStringLiteral("d")}, QStringLiteral("to")).complete);
    QCOMPARE(tree(QStringLiteral("d")),
             (QStringList{QStringLiteral("s"), QStringLiteral("s/both.txt")}));
    QCOMPARE(read(QStringLiteral("to/d/s/both.txt")), QByteArray("old"));
    QCOMPARE(read(QStringLiteral("to/d/only.txt")), QByteArray("new"));

    m_person->clashes = {ShellAnswer::Yes, ShellAnswer::Yes};
    QVERIFY(run(ShellVerb::Move, {QStringLiteral("d")}, QStringLiteral("to")).complete);
    QVERIFY(!QFile::exists(path(QStringLiteral("d"))));
    QCOMPARE(read(QStringLiteral("to/d/s/both.txt")), QByteArray("new"));
}

void tst_ShellFileOperation::noConfirmAsksNothing()
{
    write(QStringLiteral("d/a.txt"), "new");
    write(QStringLiteral("to/d/a.txt"), "old");
    QVERIFY(run(ShellVerb::Copy, {QStringLiteral("d")}, QStringLiteral("to"), true).complete);
    QVERIFY(m_person->askedClashes.empty());
    QCOMPARE(read(QStringLiteral("to/d/a.txt")), QByteArray("new"));
}

void tst_ShellFileOperation::silentShowsNothing()
{
    write(QStringLiteral("a.txt"));
    ShellFileOrder order{
        ShellVerb::Copy, {path(QStringLiteral("a.txt"))}, path(QStringLiteral("to")), true};
    QVERIFY(runShellFileOperation(order, *m_person).complete);
    QVERIFY(!m_person->seen.empty());
    for (const ShellFileProgress &progress : m_person->seen)
        QVERIFY(!progress.show);
}

void tst_ShellFileOperation::fileAgainstFolder_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("there");
    QTest::addColumn<QString>("why");
    QTest::newRow("file onto folder") << QStringLiteral("x") << QStringLiteral("to/x/in.txt")
                                      << QStringLiteral("同じ名前のﾌｫﾙﾀﾞが既にあります");
    QTest::newRow("folder onto file") << QStringLiteral("x/in.txt") << QStringLiteral("to/x")
                                      << QStringLiteral("同じ名前のﾌｧｲﾙが既にあります");
}

void tst_ShellFileOperation::fileAgainstFolder()
{
    QFETCH(const QString, from);
    QFETCH(const QString, there);
    QFETCH(const QString, why);
    write(from);
    write(there, "old");
    const QStringList before = tree(QString());
    QCOMPARE(run(ShellVerb::Move, {QStringLiteral("x")}, QStringLiteral("to"), true).failures, 1);
    QCOMPARE(m_person->failures,
             QStringList{path(QStringLiteral("x")) + QStringLiteral(": ") + why});
    QCOMPARE(tree(QString()), before);
    QCOMPARE(read(there), QByteArray("old"));
}

void tst_ShellFileOperation::folderIntoItself_data()
{
    QTest::addColumn<int>("verb");
    QTest::addColumn<QString>("target");
    QTest::newRow("copy onto itself") << 2 << QStringLiteral("d");
    QTest::newRow("move onto itself") << 1 << QStringLiteral("d");
    QTest::newRow("copy below itself") << 2 << QStringLiteral("d/sub");
    QTest::newRow("move below itself") << 1 << QStringLiteral("d/sub");
    QTest::newRow("copy through a link") << 2 << QStringLiteral("link");
    QTest::newRow("move through a link") << 1 << QStringLiteral("link");
}

void tst_ShellFileOperation::folderIntoItself()
{
    QFETCH(const int, verb);
    QFETCH(const QString, target);
    write(QStringLiteral("d/sub/a.txt"));
    QVERIFY(QFile::link(path(QStringLiteral("d/sub")), path(QStringLiteral("link"))));
    const QStringList before = tree(QString());
    QCOMPARE(run(static_cast<ShellVerb>(verb), {QStringLiteral("d")}, target).failures, 1);
    QVERIFY(m_person->failures.constFirst().endsWith(
        QStringLiteral("ﾌｫﾙﾀﾞを自分自身またはその中のﾌｫﾙﾀﾞへ移動･複写することはできません")));
    QCOMPARE(tree(QString()), before);
}

void tst_ShellFileOperation::copyIntoTheSameFolder()
{
    write(QStringLiteral("to/a.tar.gz"), "one");
    write(QStringLiteral("to/.profile"));
    write(QStringLiteral("to/d.x/in.txt"));
    const QStringList from{QStringLiteral("to/a.tar.gz"), QStringLiteral("to/.profile"),
                           QStringLiteral("to/d.x")};
    QVERIFY(run(ShellVerb::Copy, from, QStringLiteral("to")).complete);
    QVERIFY(run(ShellVerb::Copy, {from.constFirst()}, QStringLiteral("to")).complete);
    QCOMPARE(tree(QStringLiteral("to")),
             (QStringList{QStringLiteral(".profile"), QStringLiteral(".profile - ｺﾋﾟｰ"),
                          QStringLiteral("a.tar - ｺﾋﾟｰ (2).gz"), QStringLiteral("a.tar - ｺﾋﾟｰ.gz"),
                          QStringLiteral("a.tar.gz"), QStringLiteral("d.x"),
                          QStringLiteral("d.x - ｺﾋﾟｰ"), QStringLiteral("d.x - ｺﾋﾟｰ/in.txt"),
                          QStringLiteral("d.x/in.txt")}));
    QVERIFY(m_person->askedClashes.empty());
}

void tst_ShellFileOperation::copyOfALongName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("file") << QString(250 / 3, QChar(0x3042)) + QStringLiteral(".html");
    QTest::newRow("no extension") << QString(255 / 3, QChar(0x3042));
    QTest::newRow("nothing but extension") << QStringLiteral("a.") + QString(253, QLatin1Char('x'));
}

void tst_ShellFileOperation::copyOfALongName()
{
    QFETCH(const QString, name);
    write(QStringLiteral("to/") + name, "one");
    const bool fits = !name.startsWith(QLatin1Char('a'));
    for (int i = 0; i < 2; ++i)
        QCOMPARE(
            run(ShellVerb::Copy, {QStringLiteral("to/") + name}, QStringLiteral("to")).complete,
            fits);
    const QStringList all = tree(QStringLiteral("to"));
    QCOMPARE(all.size(), fits ? 3 : 1);
    QVERIFY(all.contains(name));
    for (const QString &one : all)
        QCOMPARE(read(QStringLiteral("to/") + one), QByteArray("one"));
    QVERIFY(m_person->askedClashes.empty());
}

void tst_ShellFileOperation::targetThatCannotBeLookedAt()
{
    constexpr uid_t nobody = 65534;
    write(QStringLiteral("a.txt"));
    QCOMPARE(chmod(QFile::encodeName(m_folder->path()).constData(), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("to"))).constData(), 0444), 0);
    const uid_t before = geteuid();
    QVERIFY(before != 0 || seteuid(nobody) == 0);
    const auto report = run(ShellVerb::Copy, {QStringLiteral("a.txt")}, QStringLiteral("to"));
    QVERIFY(seteuid(before) == 0);
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("to"))).constData(), 0755), 0);
    QCOMPARE(report.failures, 1);
    QVERIFY(m_person->askedClashes.empty()); // nothing is known to be there
    QCOMPARE(m_person->failures,
             QStringList{path(QStringLiteral("to/a.txt")) + QStringLiteral(": ") + words(EACCES)});
}

void tst_ShellFileOperation::privateFoldersStayPrivate()
{
    write(QStringLiteral("d/a.txt"));
    write(QStringLiteral("d/b.txt"));
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("d"))).constData(), 0700), 0);
    const auto mode = [this] {
        struct stat status = {};
        const bool there =
            stat(QFile::encodeName(path(QStringLiteral("to/d"))).constData(), &status) == 0;
        return there ? status.st_mode & 0777 : 0U;
    };
    int looks = 0;
    m_person->onProgress = [this, &looks, &mode](const ShellFileProgress &) {
        if (mode() == 0)
            return;
        ++looks;
        QCOMPARE(mode(), 0700U);
        m_person->cancelAt = 1; // also when it stays half filled
    };
    QVERIFY(run(ShellVerb::Copy, {QStringLiteral("d")}, QStringLiteral("to")).cancelled);
    QVERIFY(looks > 0);
    QCOMPARE(mode(), 0700U);
}

void tst_ShellFileOperation::moveIntoTheSameFolderIsNothing()
{
    write(QStringLiteral("to/a.txt"), "one");
    QVERIFY(run(ShellVerb::Move, {QStringLiteral("to/a.txt")}, QStringLiteral("to")).complete);
    QCOMPARE(tree(QStringLiteral("to")), QStringList{QStringLiteral("a.txt")});
    QCOMPARE(read(QStringLiteral("to/a.txt")), QByteArray("one"));
}

void tst_ShellFileOperation::fullDisk()
{
    write(QStringLiteral("big.bin"), QByteArray(400000, 'x'));
    write(QStringLiteral("to/big.bin"), "old");
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit limit = {};
    QCOMPARE(getrlimit(RLIMIT_FSIZE, &limit), 0);
    const rlimit tight = {100000, limit.rlim_max};
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &tight), 0);
    const auto report =
        run(ShellVerb::Copy, {QStringLiteral("big.bin")}, QStringLiteral("to"), true);
    QCOMPARE(setrlimit(RLIMIT_FSIZE, &limit), 0);
    QCOMPARE(report.failures, 1);
    QCOMPARE(m_person->failures,
             QStringList{path(QStringLiteral("big.bin")) + QStringLiteral(": ") + words(EFBIG)});
    QCOMPARE(read(QStringLiteral("to/big.bin")), QByteArray("old"));
    QCOMPARE(read(QStringLiteral("big.bin")).size(), 400000);
}

void tst_ShellFileOperation::readOnlyTarget()
{
    constexpr uid_t nobody = 65534;
    write(QStringLiteral("a.txt"));
    QCOMPARE(chmod(QFile::encodeName(m_folder->path()).constData(), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(path(QStringLiteral("to"))).constData(), 0555), 0);
    const uid_t before = geteuid();
    QVERIFY(before != 0 || seteuid(nobody) == 0);
    const auto copy = run(ShellVerb::Copy, {QStringLiteral("a.txt")}, QStringLiteral("to"));
    const auto move = run(ShellVerb::Move, {QStringLiteral("a.txt")}, QStringLiteral("to"));
    QVERIFY(seteuid(before) == 0);
    QCOMPARE(copy.failures, 1);
    QCOMPARE(move.failures, 1);
    const QString line = path(QStringLiteral("a.txt")) + QStringLiteral(": ") + words(EACCES);
    QCOMPARE(m_person->failures, (QStringList{line, line}));
    QCOMPARE(read(QStringLiteral("a.txt")), QByteArray("text"));
    QCOMPARE(tree(QStringLiteral("to")), QStringList());
}

void tst_ShellFileOperation::cancelLeavesNoHalfFile()
{
    write(QStringLiteral("big.bin"), QByteArray(2000000, 'x'));
    write(QStringLiteral("to/big.bin"), "old");
    bool partSeen = false;
    m_person->onProgress = [this, &partSeen](const ShellFileProgress &now) {
        partSeen = partSeen || !leftovers().isEmpty();
        if (now.done > 600000)
            m_person->cancelAt = 1;
        QCOMPARE(read(QStringLiteral("to/big.bin")), QByteArray("old"));
    };
    const auto report =
        run(ShellVerb::Copy, {QStringLiteral("big.bin")}, QStringLiteral("to"), true);
    QVERIFY(report.cancelled);
    QVERIFY(partSeen);
    QCOMPARE(report.failures, 0);
    QCOMPARE(tree(QStringLiteral("to")), QStringList{QStringLiteral("big.bin")});
}

void tst_ShellFileOperation::vanishedSourceAndTarget()
{
    write(QStringLiteral("a.txt"));
    QCOMPARE(run(ShellVerb::Copy, {QStringLiteral("gone"), QStringLiteral("a.txt")},
                 QStringLiteral("to"))
                 .failures,
             1);
    QCOMPARE(tree(QStringLiteral("to")), QStringList{QStringLiteral("a.txt")});
    QCOMPARE(run(ShellVerb::Move, {QStringLiteral("a.txt")}, QStringLiteral("nowhere")).failures,
             1);
    QCOMPARE(
        m_person->failures,
        (QStringList{path(QStringLiteral("gone")) + QStringLiteral(": ") + words(ENOENT),
                     path(QStringLiteral("nowhere")) + QStringLiteral(": ﾌｫﾙﾀﾞが存在しません")}));
    QVERIFY(QFile::exists(path(QStringLiteral("a.txt"))));
}

void tst_ShellFileOperation::pipesAreRefused()
{
    QCOMPARE(mkfifo(QFile::encodeName(path(QStringLiteral("pipe"))).constData(), 0600), 0);
    QCOMPARE(run(ShellVerb::Copy, {QStringLiteral("pipe")}, QStringLiteral("to")).failures, 1);
    QVERIFY(m_person->failures.constFirst().endsWith(
        QStringLiteral("通常のﾌｧｲﾙではないため複写できません")));
    QCOMPARE(tree(QStringLiteral("to")), QStringList());
}

void tst_ShellFileOperation::stopAfterAFailure()
{
    write(QStringLiteral("a.txt"));
    m_person->stopAtFailure = true;
    const auto report = run(ShellVerb::Copy, {QStringLiteral("gone"), QStringLiteral("a.txt")},
                            QStringLiteral("to"));
    QVERIFY(!report.complete && !report.cancelled);
    QCOMPARE(tree(QStringLiteral("to")), QStringList());
}

void tst_ShellFileOperation::nothingAsked()
{
    write(QStringLiteral("a.txt"));
    QVERIFY(!run(ShellVerb::None, {QStringLiteral("a.txt")}, QStringLiteral("to")).complete);
    QVERIFY(!run(ShellVerb::Copy, {}, QStringLiteral("to")).complete);
    QVERIFY(m_person->seen.empty());
    QCOMPARE(tree(QStringLiteral("to")), QStringList());
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_ShellFileOperation)
#include "tst_ShellFileOperation.moc"
