#include <QDir>
#include <QTemporaryDir>
#include <QTest>

#include "mainwin/MainSettings.h"
#include "shared/Flags.h"
#include "startup/settings/SettingsFile.h"
#include "support/ScriptedPerson.h"

namespace venlo::test
{

class tst_MainSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void emptyFile();
    void roundTrip();
    void launchRecordKeepsThePlainKeys();
    void missingFoldersFallBack();
    void neverShownKeepsTheLayout();
    void damagedNumbers();

private:
    [[nodiscard]] MainSettings load() { return loadMainSettings(*m_settings, m_flags, m_launch); }
    [[nodiscard]] MainSettings some() const;

    QTemporaryDir m_folder;
    ScriptedPerson m_person;
    Flags m_flags;
    LaunchLayout m_launch;
    std::unique_ptr<yIni> m_settings;
};

void tst_MainSettings::init()
{
    QFile::remove(m_folder.filePath(QStringLiteral("User.xml")));
    m_flags = {};
    m_settings = std::make_unique<yIni>(m_person);
    bool ok = false;
    m_settings->GetTxt(m_folder.filePath(QStringLiteral("User.xml")), ok);
    QVERIFY(ok);
}

MainSettings tst_MainSettings::some() const
{
    MainSettings values;
    values.window = QRect(30, 40, 900, 600);
    values.Root = QDir::toNativeSeparators(m_folder.path());
    values.ActPh = values.Root;
    values.panes = {400, 500, 180, QStringLiteral("1,2,3"), 190, QStringLiteral("4,5")};
    values.CbSvr = 2;
    values.rootHistory = QStringLiteral(",/a,/b");
    return values;
}

void tst_MainSettings::emptyFile()
{
    const MainSettings values = load();
    QCOMPARE(values.window.size(), QSize(0, 0));
    QCOMPARE(values.Root, fallbackFolder());
    QCOMPARE(values.ActPh, fallbackFolder());
    QCOMPARE(values.CbSvr, -1);
    QCOMPARE(values.panes.WdFL, 0);
    QVERIFY(values.panes.LsCwd.isEmpty());
}

void tst_MainSettings::roundTrip()
{
    saveMainSettings(*m_settings, m_flags, some(), true);
    const MainSettings values = load();
    QCOMPARE(values.window, QRect(30, 40, 900, 600));
    QCOMPARE(values.Root, some().Root);
    QCOMPARE(values.panes.WdFL, 400);
    QCOMPARE(values.panes.HiFL, 500);
    QCOMPARE(values.panes.TrvHi, 180);
    QCOMPARE(values.panes.LsCwd, QStringLiteral("1,2,3"));
    QCOMPARE(values.panes.TrHiF, 190);
    QCOMPARE(values.panes.LsWdF, QStringLiteral("4,5"));
    QCOMPARE(values.CbSvr, 2);
    QCOMPARE(values.rootHistory, QStringLiteral(",/a,/b"));
}

void tst_MainSettings::launchRecordKeepsThePlainKeys()
{
    saveMainSettings(*m_settings, m_flags, some(), true);
    m_flags.launchLayout = true;
    const QString launched = QStringLiteral("launched/at");
    QVERIFY(QDir(m_folder.path()).mkpath(launched));
    m_launch.window = QRect(1, 2, 300, 200);
    m_launch.ActPh = QDir::toNativeSeparators(m_folder.filePath(launched));
    m_launch.Root = QDir::toNativeSeparators(m_folder.filePath(QStringLiteral("launched")));
    MainSettings values = load();
    QCOMPARE(values.window, QRect(1, 2, 300, 200));
    QCOMPARE(values.Root, m_launch.Root);
    QCOMPARE(values.ActPh, m_launch.ActPh);
    QCOMPARE(values.panes.WdFL, 400); // the "_R" keys were written along

    values.panes.WdFL = 111;
    values.CbSvr = 7;
    values.rootHistory = QStringLiteral(",/other");
    saveMainSettings(*m_settings, m_flags, values, true);
    QCOMPARE(load().panes.WdFL, 111);
    m_flags.launchLayout = false;
    QCOMPARE(load().panes.WdFL, 400);
    QCOMPARE(load().window, QRect(30, 40, 900, 600));
    QCOMPARE(load().Root, some().Root);
    QCOMPARE(load().ActPh, some().ActPh);
    QCOMPARE(load().CbSvr, 7);
    QCOMPARE(load().rootHistory, QStringLiteral(",/a,/b"));
}

void tst_MainSettings::missingFoldersFallBack()
{
    MainSettings values = some();
    values.ActPh = m_folder.filePath(QStringLiteral("gone"));
    saveMainSettings(*m_settings, m_flags, values, true);
    QCOMPARE(load().Root, some().Root);
    QCOMPARE(load().ActPh, fallbackFolder());
}

void tst_MainSettings::neverShownKeepsTheLayout()
{
    saveMainSettings(*m_settings, m_flags, some(), true);
    MainSettings values = some();
    values.window = QRect(0, 0, 1, 1);
    values.panes.WdFL = 1;
    values.CbSvr = 5;
    saveMainSettings(*m_settings, m_flags, values, false);
    QCOMPARE(load().window, QRect(30, 40, 900, 600));
    QCOMPARE(load().panes.WdFL, 400);
    QCOMPARE(load().CbSvr, 5);
}

void tst_MainSettings::damagedNumbers()
{
    saveMainSettings(*m_settings, m_flags, some(), true);
    m_settings->GetGtx(QStringLiteral("設定"));
    m_settings->SetVal(QStringLiteral("Width"), QStringLiteral("1e300"));
    m_settings->SetVal(QStringLiteral("CbSvr"), QStringLiteral("none"));
    m_settings->SetGtx();
    QCOMPARE(load().window.width(), 0);
    QCOMPARE(load().CbSvr, 0);
}

} // namespace venlo::test

QTEST_GUILESS_MAIN(venlo::test::tst_MainSettings)
#include "tst_MainSettings.moc"
