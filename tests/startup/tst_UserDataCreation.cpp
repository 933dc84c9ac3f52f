#include <memory>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/Files.h"
#include "startup/settings/InitialFolder.h"
#include "startup/settings/UserDataFolder.h"
#include "support/ScriptedPerson.h"

namespace venlo
{

using test::ScriptedPerson;

/// A folder that the program makes appears whole, private and with its database, or not at all.
class tst_UserDataCreation : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void folderAndDatabase();
    void bothArePrivate();
    void readOnlyInitialDatabase();
    void nothingElseIsLeft();
    void existingFolderGetsNoDatabase();
    void secondStartChangesNothing();
    void leftoversAreHarmless();
    void noInitialDatabase();
    void fileInTheWay();
    void fileInPlaceOfAParent();
    void createsParents();

private:
    [[nodiscard]] QString inRoot(const char *name) const
    {
        return QDir::toNativeSeparators(m_root->filePath(QString::fromLatin1(name)));
    }
    void write(const char *name, const QByteArray &bytes) const;
    [[nodiscard]] QByteArray read(const char *name) const;
    [[nodiscard]] QStringList entries(const char *folder) const;
    /// Runs the choice with "%usr%"; the folder is data/Venlo/Tool.
    void start(ScriptedPerson &person) const;

    std::unique_ptr<QTemporaryDir> m_root;
};

namespace
{
constexpr auto otherUsers = QFile::ReadGroup | QFile::WriteGroup | QFile::ExeGroup |
                            QFile::ReadOther | QFile::WriteOther | QFile::ExeOther;
} // namespace

void tst_UserDataCreation::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(inRoot("config")));
    write("program/UserData.ini", "%usr%");
    write("program/apData/dbFtp.mdb", "initial");
}

void tst_UserDataCreation::write(const char *name, const QByteArray &bytes) const
{
    QVERIFY(QDir().mkpath(QFileInfo(inRoot(name)).path()));
    QFile file(inRoot(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

QByteArray tst_UserDataCreation::read(const char *name) const
{
    QFile file(inRoot(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("unreadable");
}

QStringList tst_UserDataCreation::entries(const char *folder) const
{
    return QDir(inRoot(folder))
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                   QDir::Name);
}

void tst_UserDataCreation::start(ScriptedPerson &person) const
{
    UserDataFolder folder(
        {QStringLiteral("Tool"), inRoot("program/"), inRoot("data"), inRoot("documents")}, person);
    folder.W_UserData();
    QCOMPARE(folder.userDataFolder(), inRoot("data/Venlo/Tool/"));
}

void tst_UserDataCreation::folderAndDatabase()
{
    ScriptedPerson person;
    start(person);
    QCOMPARE(read("data/Venlo/Tool/dbFtp.mdb"), QByteArray("initial"));
    QVERIFY(person.verify());
}

void tst_UserDataCreation::bothArePrivate()
{
    ScriptedPerson person;
    start(person);
#ifdef Q_OS_UNIX
    const auto folder = QFile::permissions(inRoot("data/Venlo/Tool"));
    QVERIFY((folder & otherUsers) == 0);
    QVERIFY((folder & QFile::ExeOwner) != 0);
    const auto database = QFile::permissions(inRoot("data/Venlo/Tool/dbFtp.mdb"));
    QVERIFY((database & (otherUsers | QFile::ExeOwner)) == 0);
    QVERIFY((database & QFile::WriteOwner) != 0);
#endif
    QVERIFY(person.verify());
}

void tst_UserDataCreation::readOnlyInitialDatabase()
{
    QVERIFY(QFile::setPermissions(inRoot("program/apData/dbFtp.mdb"), QFile::ReadOwner));
    ScriptedPerson person;
    start(person);
    QVERIFY(QFile::permissions(inRoot("data/Venlo/Tool/dbFtp.mdb")).testFlag(QFile::WriteOwner));
    QVERIFY(person.verify());
}

void tst_UserDataCreation::nothingElseIsLeft()
{
    ScriptedPerson person;
    start(person);
    QCOMPARE(entries("data/Venlo"), QStringList{QStringLiteral("Tool")});
    QCOMPARE(entries("data/Venlo/Tool"), QStringList{QStringLiteral("dbFtp.mdb")});
}

void tst_UserDataCreation::existingFolderGetsNoDatabase()
{
    QVERIFY(QDir().mkpath(inRoot("data/Venlo/Tool")));
    ScriptedPerson person;
    start(person);
    QCOMPARE(entries("data/Venlo/Tool"), QStringList());
    QVERIFY(person.verify());
}

void tst_UserDataCreation::secondStartChangesNothing()
{
    ScriptedPerson person;
    start(person);
    write("data/Venlo/Tool/dbFtp.mdb", "the user's");
    start(person);
    QCOMPARE(read("data/Venlo/Tool/dbFtp.mdb"), QByteArray("the user's"));
}

void tst_UserDataCreation::leftoversAreHarmless()
{
    write("data/Venlo/.Tool.new-aBc123/dbFtp.mdb", "hal");
    write("data/Venlo/.Tool.new-young1/dbFtp.mdb", "hal");
    write("data/Venlo/.Other.new-aBc123/dbFtp.mdb", "another program's");
    const QDateTime old = QDateTime::currentDateTimeUtc().addSecs(-7200);
    QVERIFY(setModifiedTime(inRoot("data/Venlo/.Tool.new-aBc123"), old));
    QVERIFY(setModifiedTime(inRoot("data/Venlo/.Other.new-aBc123"), old));
    ScriptedPerson person;
    start(person);
    QCOMPARE(read("data/Venlo/Tool/dbFtp.mdb"), QByteArray("initial"));
    QCOMPARE(entries("data/Venlo"),
             (QStringList{QStringLiteral(".Other.new-aBc123"), QStringLiteral(".Tool.new-young1"),
                          QStringLiteral("Tool")}));
    QVERIFY(person.verify());
}

void tst_UserDataCreation::noInitialDatabase()
{
    QVERIFY(QFile::remove(inRoot("program/apData/dbFtp.mdb")));
    ScriptedPerson person;
    person.expectMessage(inRoot("data/Venlo/Tool/") + QStringLiteral(" を作成できません"));
    start(person);
    QCOMPARE(entries("data/Venlo"), QStringList());
    QVERIFY(person.verify());
}

void tst_UserDataCreation::fileInTheWay()
{
    write("data/Venlo/Tool", "precious");
    ScriptedPerson person;
    person.expectMessage(inRoot("data/Venlo/Tool/") + QStringLiteral(" を作成できません"));
    start(person);
    QCOMPARE(read("data/Venlo/Tool"), QByteArray("precious"));
    QCOMPARE(entries("data/Venlo"), QStringList{QStringLiteral("Tool")});
    QVERIFY(person.verify());
}

void tst_UserDataCreation::fileInPlaceOfAParent()
{
    write("data", "precious");
    ScriptedPerson person;
    person.expectMessage(inRoot("data/Venlo/Tool/") + QStringLiteral(" を作成できません"));
    start(person);
    QCOMPARE(read("data"), QByteArray("precious"));
    QVERIFY(person.verify());
}

void tst_UserDataCreation::createsParents()
{
    QVERIFY(F_CreateFld(inRoot("a/b/c")));
    QVERIFY(QDir(inRoot("a/b/c")).exists());
    QVERIFY(F_CreateFld(inRoot("a/b/c")));
    write("file", "x");
    QVERIFY(!F_CreateFld(inRoot("file/d")));
    QCOMPARE(read("file"), QByteArray("x"));
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_UserDataCreation)
#include "tst_UserDataCreation.moc"
