#include <memory>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/SpecialFolders.h"
#include "startup/settings/UserDataFolder.h"
#include "startup/settings/UserDataIni.h"
#include "support/ScriptedPerson.h"

namespace venlo
{

using test::ScriptedPerson;

/// Which folder "UserData.ini" chooses and what the user is told.
class tst_UserDataFolder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void token_data();
    void token();
    void folderPath_data();
    void folderPath();
    void folderMissing();
    void iniMissing();
    void iniIsAFolder();
    void firstLineEmpty_data();
    void firstLineEmpty();
    void executableIsRegistered();
    void placesOfThisProgram();

private:
    void writeIni(const QByteArray &bytes) const;
    [[nodiscard]] QString rooted(const QString &name) const
    {
        return QDir::toNativeSeparators(m_root->filePath(name));
    }
    [[nodiscard]] QString inRoot(const char *name) const
    {
        return rooted(QString::fromLatin1(name));
    }
    [[nodiscard]] ProgramPlaces places() const;
    [[nodiscard]] QString defaultFolder() const { return inRoot("data/Venlo/Tool/"); }

    std::unique_ptr<QTemporaryDir> m_root;
};

void tst_UserDataFolder::init()
{
    m_root = std::make_unique<QTemporaryDir>();
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(inRoot("config")));
    QVERIFY(QDir().mkpath(inRoot("program/apData")));
    QFile database(inRoot("program/apData/dbFtp.mdb"));
    QVERIFY(database.open(QIODevice::WriteOnly));
    QCOMPARE(database.write("initial"), 7);
}

void tst_UserDataFolder::writeIni(const QByteArray &bytes) const
{
    QFile file(inRoot("program/UserData.ini"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(bytes), bytes.size());
}

ProgramPlaces tst_UserDataFolder::places() const
{
    return {QStringLiteral("Tool"), inRoot("program/"), inRoot("data"), inRoot("documents")};
}

void tst_UserDataFolder::token_data()
{
    QTest::addColumn<QByteArray>("ini");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<int>("warnings");
    const QString app = QStringLiteral("program/usData/");
    const QString usr = QStringLiteral("data/Venlo/Tool/");
    const QString doc = QStringLiteral("documents/Venlo/Tool/");
    QTest::newRow("%app%") << QByteArray("%app%") << app << 0;
    QTest::newRow("%usr%") << QByteArray("%usr%") << usr << 0;
    QTest::newRow("%applicaion data%, spelled so") << QByteArray("%applicaion data%") << usr << 0;
    QTest::newRow("%doc, without its end") << QByteArray("%doc") << doc << 0;
    QTest::newRow("%my document%") << QByteArray("%my document%") << doc << 0;
    QTest::newRow("line end") << QByteArray("%app%\r\n") << app << 0;
    QTest::newRow("trailing blanks") << QByteArray("%app% \t \n") << app << 0;
    QTest::newRow("only the first line counts") << QByteArray("%app%\r\n%doc\r\n") << app << 0;
    QTest::newRow("UTF-8 mark") << QByteArray("\xEF\xBB\xBF%app%\r\n") << app << 0;
    QTest::newRow("UTF-16") << QByteArray("\xFF\xFE%\0a\0p\0p\0%\0\r\0\n\0", 16) << app << 0;
    QTest::newRow("upper case is no token") << QByteArray("%APP%") << usr << 1;
    QTest::newRow("unknown token") << QByteArray("%temp%") << usr << 1;
    QTest::newRow("spelled correctly is no token") << QByteArray("%application data%") << usr << 1;
    QTest::newRow("%doc% is no token") << QByteArray("%doc%") << usr << 1;
    QTest::newRow("the sign alone") << QByteArray("%\n") << usr << 1;
}

void tst_UserDataFolder::token()
{
    QFETCH(QByteArray, ini);
    QFETCH(QString, folder);
    writeIni(ini);
    ScriptedPerson person;
    UserDataFolder chosen(places(), person);
    chosen.W_UserData();
    QCOMPARE(chosen.userDataFolder(), rooted(folder));
    QCOMPARE(chosen.programDataFolder(), inRoot("program/apData/"));
    QVERIFY(QDir(chosen.userDataFolder()).exists());
    QTEST(static_cast<int>(person.warnings().size()), "warnings");
    QVERIFY(person.messages().isEmpty());
}

void tst_UserDataFolder::folderPath_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("folder");
    QTest::newRow("absolute") << QStringLiteral("@/shared data") << QStringLiteral("shared data/");
    QTest::newRow("with a separator")
        << QStringLiteral("@/shared data/") << QStringLiteral("shared data/");
    QTest::newRow("Japanese") << QStringLiteral("@/運用") << QStringLiteral("運用/");
    QTest::newRow("beside the program")
        << QStringLiteral("mine") << QStringLiteral("program/mine/");
}

void tst_UserDataFolder::folderPath()
{
    QFETCH(QString, text);
    QFETCH(QString, folder);
    text.replace(QLatin1Char('@'), m_root->path());
    QVERIFY(QDir().mkpath(rooted(folder)));
    writeIni(text.toUtf8() + "\r\n");
    ScriptedPerson person;
    UserDataFolder chosen(places(), person);
    chosen.W_UserData();
    QCOMPARE(QDir::cleanPath(chosen.userDataFolder()), QDir::cleanPath(rooted(folder)));
    QVERIFY(chosen.userDataFolder().endsWith(QDir::separator()));
    QVERIFY(!chosen.userDataFolder().endsWith(QLatin1String("//")));
    QVERIFY(person.verify());
    QVERIFY(!QFile::exists(chosen.userDataFolder() + QStringLiteral("dbFtp.mdb")));
}

void tst_UserDataFolder::folderMissing()
{
    const QString path = inRoot("nowhere");
    writeIni(QFile::encodeName(path));
    ScriptedPerson person;
    person.expectMessage(path + QStringLiteral(" が見つかりません\rﾕｰｻﾞｰﾃﾞｰﾀｰﾌｫﾙﾀﾞは　") +
                         defaultFolder() + QStringLiteral(" を使用します"));
    UserDataFolder chosen(places(), person);
    chosen.W_UserData();
    QCOMPARE(chosen.userDataFolder(), defaultFolder());
    QVERIFY(!QDir(path).exists());
    QVERIFY(person.verify());
}

void tst_UserDataFolder::iniMissing()
{
    ScriptedPerson person;
    person.expectMessage(inRoot("program/UserData.ini") +
                         QStringLiteral(" が見つかりません\rﾕｰｻﾞｰﾃﾞｰﾀｰﾌｫﾙﾀﾞは　") +
                         defaultFolder() + QStringLiteral(" を使用します"));
    UserDataFolder chosen(places(), person);
    chosen.W_UserData();
    QCOMPARE(chosen.userDataFolder(), defaultFolder());
    QVERIFY(person.verify());
}

void tst_UserDataFolder::iniIsAFolder()
{
    QVERIFY(QDir().mkpath(inRoot("program/UserData.ini")));
    ScriptedPerson person;
    person.allowMessages();
    UserDataFolder chosen(places(), person);
    chosen.W_UserData();
    QCOMPARE(chosen.userDataFolder(), defaultFolder());
    QCOMPARE(person.messages().size(), 1);
}

void tst_UserDataFolder::firstLineEmpty_data()
{
    QTest::addColumn<QByteArray>("ini");
    QTest::newRow("empty file") << QByteArray();
    QTest::newRow("a line end only") << QByteArray("\r\n");
    QTest::newRow("the token on the second line") << QByteArray("\r\n%app%\r\n");
    QTest::newRow("blanks only") << QByteArray("  \t\r\n");
    QTest::newRow("a byte order mark only") << QByteArray("\xEF\xBB\xBF");
}

void tst_UserDataFolder::firstLineEmpty()
{
    QFETCH(QByteArray, ini);
    writeIni(ini);
    ScriptedPerson person;
    person.expectMessage(QStringLiteral(" ﾕｰｻﾞｰﾃﾞｰﾀｰﾌｫﾙﾀﾞが定義されていません\r") +
                         defaultFolder() + QStringLiteral(" を使用します"));
    UserDataFolder chosen(places(), person);
    chosen.W_UserData();
    QCOMPARE(chosen.userDataFolder(), defaultFolder());
    QVERIFY(person.verify());
}

void tst_UserDataFolder::executableIsRegistered()
{
    writeIni("%app%");
    setProgramSetting(QStringLiteral("Tool"), QStringLiteral("/somewhere/else.exe"));
    ScriptedPerson person;
    UserDataFolder(places(), person).W_UserData();
    QCOMPARE(programSetting(QStringLiteral("Tool")), inRoot("program/Tool.exe"));
}

void tst_UserDataFolder::placesOfThisProgram()
{
    const ProgramPlaces here = ProgramPlaces::ofThisProgram(QStringLiteral("Tool"));
    QCOMPARE(here.baseName, QStringLiteral("Tool"));
    QVERIFY(here.programFolder.endsWith(QDir::separator()));
    QVERIFY(QDir(here.programFolder).exists());
    QVERIFY(!here.applicationData.isEmpty());
    QVERIFY(!here.myDocuments.isEmpty());
}

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_UserDataFolder)
#include "tst_UserDataFolder.moc"
