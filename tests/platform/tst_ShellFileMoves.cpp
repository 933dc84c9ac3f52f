#include <filesystem>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/ScriptedShellPerson.h"
#include "platform/ShellFileOperation.h"

namespace venlo
{

using test::ScriptedShellPerson;

/// What could take a person's only copy away: sources that change, targets that are the source.
class tst_ShellFileMoves : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void changedWhileItsCopyIsMade_data();
    void changedWhileItsCopyIsMade();
    void linkOntoWhatItPointsTo_data();
    void linkOntoWhatItPointsTo();
    void ontoALinkToIt();
    void twoNamesOfOneFile();
    void sourcesThatCannotGo();
    void cancelledBeforeTheSourcesGo();

private:
    [[nodiscard]] QString here(const QString &name) const { return m_here->filePath(name); }
    /// In the other file system where there is one.
    [[nodiscard]] QString there(const QString &name) const { return m_there->filePath(name); }
    [[nodiscard]] bool twoFileSystems() const;
    static void write(const QString &path, const QByteArray &bytes);
    [[nodiscard]] static QByteArray read(const QString &path);

    std::unique_ptr<QTemporaryDir> m_here;
    std::unique_ptr<QTemporaryDir> m_there;
    std::unique_ptr<ScriptedShellPerson> m_person;
};

void tst_ShellFileMoves::init()
{
    m_here = std::make_unique<QTemporaryDir>();
    m_there = std::make_unique<QTemporaryDir>(QStringLiteral("/dev/shm/venlo-XXXXXX"));
    if (!m_there->isValid())
        m_there = std::make_unique<QTemporaryDir>();
    QVERIFY(m_here->isValid() && m_there->isValid());
    m_person = std::make_unique<ScriptedShellPerson>();
}

bool tst_ShellFileMoves::twoFileSystems() const
{
    struct stat one = {};
    struct stat other = {};
    return stat(QFile::encodeName(m_here->path()).constData(), &one) == 0 &&
           stat(QFile::encodeName(m_there->path()).constData(), &other) == 0 &&
           one.st_dev != other.st_dev;
}

void tst_ShellFileMoves::write(const QString &path, const QByteArray &bytes)
{
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray tst_ShellFileMoves::read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(missing)");
}

void tst_ShellFileMoves::changedWhileItsCopyIsMade_data()
{
    QTest::addColumn<bool>("keepsTime");
    QTest::newRow("written") << false;
    QTest::newRow("grown under its old time") << true;
}

void tst_ShellFileMoves::changedWhileItsCopyIsMade()
{
    if (!twoFileSystems())
        QSKIP("one file system only");
    QFETCH(const bool, keepsTime);
    const QString source = here(QStringLiteral("big.bin"));
    const QDateTime before(QDate(2021, 2, 3), QTime(4, 5));
    write(source, QByteArray(2000000, 'x'));
    const auto date = [&source, &before] {
        QFile file(source);
        return file.open(QIODevice::ReadWrite) &&
               file.setFileTime(before, QFileDevice::FileModificationTime);
    };
    QVERIFY(date());
    bool changed = false;
    m_person->onProgress = [&](const ShellFileProgress &now) {
        if (changed || now.done < 600000)
            return;
        changed = true;
        QFile file(source);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QVERIFY(!keepsTime || file.seek(file.size()));
        QCOMPARE(file.write("new words"), 9);
        file.close();
        QVERIFY(!keepsTime || date());
    };
    const ShellFileOrder order{ShellVerb::Move, {source}, m_there->path()};
    const ShellFileReport report = runShellFileOperation(order, *m_person);
    QVERIFY(changed);
    QVERIFY(!report.complete);
    QVERIFY(read(source).contains("new words"));
    QCOMPARE(m_person->failures,
             QStringList{source + QStringLiteral(": 移動中に変更されたため､元のﾌｧｲﾙを残しました")});
}

void tst_ShellFileMoves::linkOntoWhatItPointsTo_data()
{
    QTest::addColumn<int>("verb");
    QTest::addColumn<bool>("across");
    QTest::newRow("move") << 1 << false;
    QTest::newRow("copy") << 2 << false;
    QTest::newRow("move between file systems") << 1 << true;
}

void tst_ShellFileMoves::linkOntoWhatItPointsTo()
{
    QFETCH(const int, verb);
    QFETCH(const bool, across);
    const QString folder = across ? m_there->path() : here(QStringLiteral("to"));
    const QString real = folder + QStringLiteral("/a.txt");
    const QString link = here(QStringLiteral("a.txt"));
    write(real, "the only one");
    QVERIFY(QFile::link(real, link));
    m_person->clashes = {ShellAnswer::Yes};
    const ShellFileOrder order{static_cast<ShellVerb>(verb), {link}, folder};
    const ShellFileReport report = runShellFileOperation(order, *m_person);
    QCOMPARE(report.failures, 1);
    QCOMPARE(m_person->failures, QStringList{link + QStringLiteral(": 元と先が同じものです")});
    QCOMPARE(read(real), QByteArray("the only one"));
    QVERIFY(!QFileInfo(real).isSymLink());
    QVERIFY(QFileInfo(link).isSymLink());
}

void tst_ShellFileMoves::ontoALinkToIt()
{
    const QString real = here(QStringLiteral("a.txt"));
    const QString link = here(QStringLiteral("to/a.txt"));
    write(real, "the only one");
    QVERIFY(QDir(m_here->path()).mkdir(QStringLiteral("to")));
    QVERIFY(QFile::link(real, link));
    m_person->clashes = {ShellAnswer::Yes};
    const ShellFileOrder order{ShellVerb::Move, {real}, here(QStringLiteral("to"))};
    QVERIFY(runShellFileOperation(order, *m_person).complete);
    QVERIFY(!QFileInfo(link).isSymLink());
    QCOMPARE(read(link), QByteArray("the only one"));
    QVERIFY(!QFile::exists(real));
}

void tst_ShellFileMoves::twoNamesOfOneFile()
{
    const QString one = here(QStringLiteral("a.txt"));
    const QString other = here(QStringLiteral("to/a.txt"));
    write(one, "the only one");
    QVERIFY(QDir(m_here->path()).mkdir(QStringLiteral("to")));
    std::error_code error;
    std::filesystem::create_hard_link(one.toStdString(), other.toStdString(), error);
    QVERIFY(!error);
    m_person->clashes = {ShellAnswer::Yes};
    const ShellFileOrder order{ShellVerb::Move, {one}, here(QStringLiteral("to"))};
    QCOMPARE(runShellFileOperation(order, *m_person).failures, 1);
    QCOMPARE(read(one), QByteArray("the only one"));
    QCOMPARE(read(other), QByteArray("the only one"));
}

void tst_ShellFileMoves::sourcesThatCannotGo()
{
    if (!twoFileSystems())
        QSKIP("one file system only");
    constexpr uid_t nobody = 65534;
    write(here(QStringLiteral("d/a.txt")), "one");
    write(here(QStringLiteral("d/b.txt")), "two");
    write(here(QStringLiteral("d/c.txt")), "three");
    QCOMPARE(chmod(QFile::encodeName(m_here->path()).constData(), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(here(QStringLiteral("d"))).constData(), 0555), 0);
    QCOMPARE(chmod(QFile::encodeName(m_there->path()).constData(), 0777), 0);
    m_person->stopAtFailure = true;
    const ShellFileOrder order{ShellVerb::Move, {here(QStringLiteral("d"))}, m_there->path()};
    const uid_t before = geteuid();
    QVERIFY(before != 0 || seteuid(nobody) == 0);
    const ShellFileReport report = runShellFileOperation(order, *m_person);
    QVERIFY(seteuid(before) == 0);
    // One question, not a message for every file.
    QCOMPARE(report.failures, 1);
    QCOMPARE(m_person->more, std::vector<bool>{true});
    QCOMPARE(QDir(here(QStringLiteral("d"))).entryList(QDir::Files).size(), 3);
    QCOMPARE(QDir(there(QStringLiteral("d"))).entryList(QDir::Files).size(), 3);
    QCOMPARE(chmod(QFile::encodeName(here(QStringLiteral("d"))).constData(), 0755), 0);
    QCOMPARE(chmod(QFile::encodeName(there(QStringLiteral("d"))).constData(), 0755), 0);
}

void tst_ShellFileMoves::cancelledBeforeTheSourcesGo()
{
    if (!twoFileSystems())
        QSKIP("one file system only");
    write(here(QStringLiteral("d/a.txt")), "one");
    m_person->onProgress = [this](const ShellFileProgress &) {
        if (QFile::exists(there(QStringLiteral("d/a.txt"))))
            m_person->cancelAt = 1;
    };
    const ShellFileOrder order{ShellVerb::Move, {here(QStringLiteral("d"))}, m_there->path()};
    const ShellFileReport report = runShellFileOperation(order, *m_person);
    QVERIFY(report.cancelled && !report.complete);
    QCOMPARE(read(here(QStringLiteral("d/a.txt"))), QByteArray("one"));
    QCOMPARE(read(there(QStringLiteral("d/a.txt"))), QByteArray("one"));
}

} // namespace venlo

QTEST_GUILESS_MAIN(venlo::tst_ShellFileMoves)
#include "tst_ShellFileMoves.moc"
