#include <memory>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/Files.h"

namespace venlo
{

class tst_Files : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void privateModes();
    void privateModesOfNothing();
    void flush();
    void replaces();
    void replacesWithoutFlushingTheFolder();
    void replacesNothingYet();
    void replaceKeepsTheOldFile();
#ifdef Q_OS_UNIX
    void presentPathAfterAMove();
#endif
    void movesAFolder();
    void moveRefusesWhatIsThere_data();
    void moveRefusesWhatIsThere();
    void modifiedTime_data();
    void modifiedTime();
    void modifiedTimeOfNothing();

private:
    [[nodiscard]] QString path(const char *name) const;
    [[nodiscard]] QString write(const char *name, const QByteArray &bytes) const;
    [[nodiscard]] QByteArray read(const char *name) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void tst_Files::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
}

QString tst_Files::path(const char *name) const
{
    return m_folder->filePath(QString::fromLatin1(name));
}

QString tst_Files::write(const char *name, const QByteArray &bytes) const
{
    QFile file(path(name));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("cannot write %s", name);
    return file.fileName();
}

QByteArray tst_Files::read(const char *name) const
{
    QFile file(path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

void tst_Files::privateModes()
{
#ifdef Q_OS_UNIX
    const auto everyUser = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                           QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
    const QString file = write("f", "x");
    QVERIFY(QFile::setPermissions(file, everyUser | QFile::ReadOwner));
    QVERIFY(makePrivateFile(file));
    QCOMPARE(QFile::permissions(file) & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
             QFile::ReadOwner | QFile::WriteOwner);

    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("d")));
    QVERIFY(QFile::setPermissions(path("d"), everyUser));
    QVERIFY(makePrivateFolder(path("d")));
    QCOMPARE(QFile::permissions(path("d")) & ~(QFile::ReadUser | QFile::WriteUser | QFile::ExeUser),
             QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
#else
    QVERIFY(makePrivateFile(write("f", "x")));
#endif
}

void tst_Files::privateModesOfNothing()
{
    QVERIFY(!makePrivateFile(path("none")));
    QVERIFY(!makePrivateFolder(path("none")));
}

void tst_Files::flush()
{
    QFile file(path("f"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("abc"), 3);
    QVERIFY(flushToDisk(file));
    QCOMPARE(read("f"), QByteArray("abc"));
    file.close();
    QVERIFY(!flushToDisk(file));
}

void tst_Files::replaces()
{
    const QString from = write("new", "new content");
    const QString to = write("old", "old");
    QVERIFY(replaceFile(from, to));
    QCOMPARE(read("old"), QByteArray("new content"));
    QVERIFY(!QFile::exists(from));
}

void tst_Files::replacesWithoutFlushingTheFolder()
{
    QVERIFY(replaceFile(write("new", "new content"), write("old", "old"), FolderFlush::Later));
    flushFolder(m_folder->path());
    flushFolder(path("none")); // no folder, no harm
    QCOMPARE(read("old"), QByteArray("new content"));
}

void tst_Files::replacesNothingYet()
{
    QVERIFY(replaceFile(write("new", "x"), path("target")));
    QCOMPARE(read("target"), QByteArray("x"));
}

void tst_Files::replaceKeepsTheOldFile()
{
    const QString to = write("old", "old");
    QVERIFY(!replaceFile(path("none"), to));
    QCOMPARE(read("old"), QByteArray("old"));

    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
    QVERIFY(!replaceFile(to, path("folder")));
    QCOMPARE(read("old"), QByteArray("old"));
    QVERIFY(QFileInfo(path("folder")).isDir());
}

#ifdef Q_OS_UNIX
/// A link in the folder's place does not count either.
void tst_Files::presentPathAfterAMove()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("d")));
    QFile file(path("d/f"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(presentPath(file), QFileInfo(path("d")).canonicalFilePath() + QStringLiteral("/f"));
    QVERIFY(QDir().rename(path("d"), path("moved")));
    QVERIFY(QFile::link(m_folder->path(), path("d")));
    QCOMPARE(presentPath(file),
             QFileInfo(path("moved")).canonicalFilePath() + QStringLiteral("/f"));
}
#endif

void tst_Files::movesAFolder()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("from")));
    const QString inside = write("from/f", "x");
    QVERIFY(moveFolderIntoPlace(path("from"), path("to")));
    QCOMPARE(read("to/f"), QByteArray("x"));
    QVERIFY(!QFile::exists(inside));
    QVERIFY(!moveFolderIntoPlace(path("from"), path("elsewhere")));
}

void tst_Files::moveRefusesWhatIsThere_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("an empty folder") << QStringLiteral("empty");
    QTest::newRow("a full folder") << QStringLiteral("full");
    QTest::newRow("a file") << QStringLiteral("file");
#ifdef Q_OS_UNIX
    QTest::newRow("a link to nowhere") << QStringLiteral("link");
#endif
}

void tst_Files::moveRefusesWhatIsThere()
{
    QFETCH(QString, kind);
    const QDir folder(m_folder->path());
    QVERIFY(folder.mkdir(QStringLiteral("from")));
    if (kind == QLatin1String("file"))
        QCOMPARE(write("to", "x"), path("to"));
    else if (kind == QLatin1String("link"))
        QVERIFY(QFile::link(path("nowhere"), path("to")));
    else
        QVERIFY(folder.mkdir(QStringLiteral("to")));
    if (kind == QLatin1String("full"))
        QCOMPARE(write("to/f", "x"), path("to/f"));

    QVERIFY(!moveFolderIntoPlace(path("from"), path("to")));
    QVERIFY(QFileInfo(path("from")).isDir());
    if (kind == QLatin1String("full"))
        QCOMPARE(read("to/f"), QByteArray("x"));
}

void tst_Files::modifiedTime_data()
{
    QTest::addColumn<QDateTime>("time");
    const auto row = [](const char *name, const char *iso) {
        QTest::newRow(name) << QDateTime::fromString(QString::fromLatin1(iso), Qt::ISODateWithMs);
    };
    row("a second", "2024-02-29T12:34:56Z");
    row("milliseconds", "2024-02-29T12:34:56.789Z");
    row("before 1970", "1969-12-31T23:59:58.250Z");
}

void tst_Files::modifiedTime()
{
    QFETCH(QDateTime, time);
    QVERIFY(time.isValid());
    const QString file = write("f", "x");
    QVERIFY(setModifiedTime(file, time));
    QCOMPARE(QFileInfo(file).lastModified().toUTC(), time);
    QCOMPARE(read("f"), QByteArray("x"));
}

void tst_Files::modifiedTimeOfNothing()
{
    QVERIFY(!setModifiedTime(path("none"), QDateTime::currentDateTime()));
    QVERIFY(!setModifiedTime(write("f", "x"), QDateTime()));
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_Files)
#include "tst_Files.moc"
