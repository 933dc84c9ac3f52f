#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/Files.h"
#include "startup/PrivateFiles.h"

namespace venlo
{

class tst_PrivateFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void closedAndSaid_data();
    void closedAndSaid();
    void privateOnesAreNotMentioned();
    void otherFilesStay();
    void theFolder_data();
    void theFolder();
    void noFolder();

private:
    [[nodiscard]] QString inFolder(const QString &name) const { return m_folder->filePath(name); }
    void write(const QString &name, QFile::Permissions more) const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

namespace
{
constexpr auto mine = QFile::ReadOwner | QFile::WriteOwner;
} // namespace

void tst_PrivateFiles::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void tst_PrivateFiles::write(const QString &name, QFile::Permissions more) const
{
    QFile file(inFolder(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write("content"), 7);
    QVERIFY(file.setPermissions(mine | more));
}

void tst_PrivateFiles::closedAndSaid_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"dbFtp.mdb", "dbFtp.mdb-wal", "dbFtp.mdb-shm", "dbFtp.mdb-journal", "dbFtp$$$.mdb",
          "User.xml", "FtpErr.Log", "FtpEvent.Log", "FtpEvent.1.Log", "Upload.note", "Run.lock",
          "Downloads-0123456789abcdef.pending", "Downloads-0123456789abcdef.pending.lock"})
        QTest::newRow(name) << QString::fromLatin1(name);
}

void tst_PrivateFiles::closedAndSaid()
{
    QFETCH(QString, name);
    for (const QFile::Permissions more :
         {QFile::Permissions(QFile::ReadGroup), QFile::Permissions(QFile::ReadOther),
          QFile::Permissions(QFile::WriteOther), QFile::ReadGroup | QFile::ReadOther}) {
        write(name, more);
        QVERIFY(openToOthers(inFolder(name)));
        QCOMPARE(closeToOthers(m_folder->path() + QLatin1Char('/'), true),
                 QStringList(name + QStringLiteral(" was open to other users: closed to them")));
        QVERIFY(!openToOthers(inFolder(name)));
        QCOMPARE(QFile(inFolder(name)).size(), 7);
    }
}

void tst_PrivateFiles::privateOnesAreNotMentioned()
{
    write(QStringLiteral("dbFtp.mdb"), {});
    QCOMPARE(closeToOthers(m_folder->path() + QLatin1Char('/'), true), QStringList());
}

void tst_PrivateFiles::otherFilesStay()
{
    const QStringList names{QStringLiteral("index.html"), QStringLiteral("dbFtp.txt")};
    for (const QString &name : names)
        write(name, QFile::ReadOther);
    QCOMPARE(closeToOthers(m_folder->path() + QLatin1Char('/'), true), QStringList());
    for (const QString &name : names)
        QVERIFY(openToOthers(inFolder(name)));
}

void tst_PrivateFiles::theFolder_data()
{
    QTest::addColumn<bool>("own");
    QTest::newRow("the program's own") << true;
    QTest::newRow("named by somebody") << false;
}

void tst_PrivateFiles::theFolder()
{
    QFETCH(bool, own);
    QVERIFY(QFile::setPermissions(m_folder->path(),
                                  mine | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther));
    const QStringList lines = closeToOthers(m_folder->path() + QLatin1Char('/'), own);
    QCOMPARE(lines.size(), own ? 1 : 0);
    QCOMPARE(openToOthers(m_folder->path()), !own);
    QCOMPARE(closeToOthers(m_folder->path() + QLatin1Char('/'), own), QStringList());
}

void tst_PrivateFiles::noFolder()
{
    QCOMPARE(closeToOthers(inFolder(QStringLiteral("missing/")), true), QStringList());
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_PrivateFiles)
#include "tst_PrivateFiles.moc"
