#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include "platform/SpecialFolders.h"

namespace venlo
{

class tst_SpecialFolders : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void noTrailingSeparator_data();
    void noTrailingSeparator();
    void unsetSettingIsEmpty();
    void settingIsKept_data();
    void settingIsKept();
#ifdef Q_OS_LINUX
    void environmentMovesFolders();
    void settingLiesInTheConfigFolder();
#endif

private:
    QTemporaryDir m_home;
};

void tst_SpecialFolders::initTestCase()
{
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(m_home.filePath(QStringLiteral("config"))));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.filePath(QStringLiteral("data"))));
}

void tst_SpecialFolders::noTrailingSeparator_data()
{
    QTest::addColumn<SpecialFolder>("folder");
    QTest::newRow("application data") << SpecialFolder::ApplicationData;
    QTest::newRow("documents") << SpecialFolder::MyDocuments;
    QTest::newRow("send to") << SpecialFolder::SendTo;
}

void tst_SpecialFolders::noTrailingSeparator()
{
    QFETCH(SpecialFolder, folder);
    const QString path = FsGtSpFld(folder);
    QVERIFY(QDir::isAbsolutePath(path));
    QVERIFY(!path.endsWith(QDir::separator()));
    QCOMPARE(QDir::toNativeSeparators(path), path);
}

void tst_SpecialFolders::unsetSettingIsEmpty()
{
    QCOMPARE(programSetting(QStringLiteral("tst_never_set")), QString());
}

void tst_SpecialFolders::settingIsKept_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("value");
    QTest::newRow("plain") << QStringLiteral("tst_VenloFtp") << QStringLiteral("/opt/VenloFtp.exe");
    QTest::newRow("backslashes") << QStringLiteral("tst_b") << QStringLiteral("C:\\a\\nb.exe");
    QTest::newRow("Japanese, blanks, commas")
        << QStringLiteral("tst_転送 ツール") << QStringLiteral("/opt/転送, ツール;/a.exe");
    QTest::newRow("replaced") << QStringLiteral("tst_VenloFtp") << QStringLiteral("/other");
}

void tst_SpecialFolders::settingIsKept()
{
    QFETCH(QString, key);
    QFETCH(QString, value);
    setProgramSetting(key, value);
    QCOMPARE(programSetting(key), value);
}

#ifdef Q_OS_LINUX
void tst_SpecialFolders::environmentMovesFolders()
{
    QCOMPARE(FsGtSpFld(SpecialFolder::ApplicationData), m_home.filePath(QStringLiteral("data")));
    QCOMPARE(FsGtSpFld(SpecialFolder::SendTo),
             m_home.filePath(QStringLiteral("data/applications")));
}

void tst_SpecialFolders::settingLiesInTheConfigFolder()
{
    setProgramSetting(QStringLiteral("tst_place"), QStringLiteral("x"));
    QVERIFY(QFileInfo::exists(m_home.filePath(QStringLiteral("config/VenloTools.ini"))));
}
#endif

} // namespace venlo

QTEST_APPLESS_MAIN(venlo::tst_SpecialFolders)
#include "tst_SpecialFolders.moc"
