#include <QDir>
#include <QTest>

#include "ftppane/uFtp.h"
#include "gui/WindowDriver.h"
#include "localpane/uFile.h"
#include "mainwin/MainWorld.h"
#include "mainwin/popup/pfFtp.h"
#include "support/ScriptedServer.h"

#include <QMenu>

namespace venlo::test
{

/// Registered patterns: showing one, registering the shown pair.
class tst_PatternDesk : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void emptyNameDoesNothing();
    void unknownPattern();
    void patternWithoutASite();
    void siteThatIsNotRegistered();
    void noOtherSiteStaysConnected();
    void showsBothSides();
    void missingFoldersAreSaid();
    void unattendedOnlyConnects();
    void registersTheShownPair();
    void bareServerRegistersTheRoot();
    void knownPairIsSaid();
    void cancelRegistersNothing_data();
    void cancelRegistersNothing();
    void takenNameAsksAgain();
    void quotesInPathsWork();

private:
    [[nodiscard]] uFile &file() { return *m_world->window->findChild<uFile *>(); }
    [[nodiscard]] uFtp &ftp() { return *m_world->window->findChild<uFtp *>(); }
    void start(const QString &remote = QStringLiteral("/pub"));
    [[nodiscard]] QStringList patterns();
    /// Registers the shown pair, closing the pattern dialog that follows.
    void registerShown();

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<MainWorld> m_world;
    const QString m_prompt = QStringLiteral("同期登録名を入力してください");
};

void tst_PatternDesk::init()
{
    m_server = std::make_unique<ScriptedServer>();
    m_server->put("/pub/deep/a.txt", "a");
    m_world = std::make_unique<MainWorld>();
}

void tst_PatternDesk::cleanup()
{
    QVERIFY(m_world->person.verify());
    m_world.reset();
    m_server.reset();
}

void tst_PatternDesk::start(const QString &remote)
{
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    m_world->open();
    file().cOn(m_world->local());
    QVERIFY(ftp().SetSync(QStringLiteral("site"), remote));
}

QStringList tst_PatternDesk::patterns()
{
    QStringList all;
    const Rows rows = m_world->database.query(
        QStringLiteral("Select sSync, sLph, sName, sFph From msSync Order By sSync"));
    for (int row = 0; row < rows.count(); ++row)
        all += QStringList{rows.at(0, row).toString(), rows.at(1, row).toString(),
                           rows.at(2, row).toString(), rows.at(3, row).toString()}
                   .join(QLatin1Char('|'));
    return all;
}

void tst_PatternDesk::registerShown()
{
    whenShown(QStringLiteral("sfSPtn"), [](QWidget &dialog) { dialog.close(); });
    Q_EMIT ftp().eAct(QStringLiteral("登録"));
}

void tst_PatternDesk::emptyNameDoesNothing()
{
    m_world->open();
    m_world->person.clear();
    (void)m_world->window->SyncPtn({});
    QVERIFY(m_world->person.messages().isEmpty());
}

void tst_PatternDesk::unknownPattern()
{
    m_world->open();
    const auto shown = m_world->window->SyncPtn(QStringLiteral("none"));
    QCOMPARE(shown.state, ShownPattern::State::Unknown);
    QCOMPARE(m_world->person.messages(),
             QStringList{QStringLiteral("同期ﾊﾟﾀｰﾝの登録を確認して下さい")});
}

void tst_PatternDesk::patternWithoutASite()
{
    m_world->database.run(QStringLiteral("Insert Into msSync (sSync, sLph) Values ('p', '/x')"));
    m_world->open();
    QCOMPARE(m_world->window->SyncPtn(QStringLiteral("p")).state, ShownPattern::State::Unusable);
    QCOMPARE(m_world->person.messages(),
             QStringList{QStringLiteral("同期ﾊﾟﾀｰﾝの登録を確認して下さい")});
}

void tst_PatternDesk::siteThatIsNotRegistered()
{
    m_world->registerPattern(QStringLiteral("p"), QStringLiteral("/pub"));
    m_world->open();
    QCOMPARE(m_world->window->SyncPtn(QStringLiteral("p")).state, ShownPattern::State::NoSuchSite);
    QVERIFY(m_world->warned(QStringLiteral("siteからは接続先の登録情報が取得できません")));
    QVERIFY(!ftp().cOn());
    QCOMPARE(file().NodePath(), QDir::toNativeSeparators(m_world->local()));
}

/// What is shown on the left must never face another pattern's server.
void tst_PatternDesk::noOtherSiteStaysConnected()
{
    start();
    m_world->registerPattern(QStringLiteral("p"), QStringLiteral("/pub"));
    m_world->database.run(QStringLiteral("Update msSync Set sName='gone' Where sSync='p'"));
    file().cOn(QDir::tempPath());
    QVERIFY(ftp().cOn());
    QCOMPARE(m_world->window->SyncPtn(QStringLiteral("p")).state, ShownPattern::State::NoSuchSite);
    QVERIFY(m_world->warned(QStringLiteral("goneからは接続先の登録情報が取得できません")));
    QCOMPARE(file().NodePath(), QDir::toNativeSeparators(m_world->local()));
    QVERIFY(!ftp().cOn());
    QVERIFY(!m_world->session.connected());
}

void tst_PatternDesk::showsBothSides()
{
    start(QStringLiteral("/"));
    m_world->registerPattern(QStringLiteral("p"), QStringLiteral("/pub/deep"));
    const auto shown = m_world->window->SyncPtn(QStringLiteral("p"));
    QCOMPARE(shown.state, ShownPattern::State::Shown);
    QCOMPARE(file().NodePath(), QDir::toNativeSeparators(m_world->local()));
    QCOMPARE(ftp().FsFllPh(), m_server->server() + QStringLiteral("/pub/deep"));
    QCOMPARE(m_server->logins(), 1);
    QVERIFY(m_world->person.messages().isEmpty());
}

void tst_PatternDesk::missingFoldersAreSaid()
{
    start();
    m_world->registerPattern(QStringLiteral("p"), QStringLiteral("/pub/gone"));
    m_world->person.clear();
    QCOMPARE(m_world->window->SyncPtn(QStringLiteral("p")).state, ShownPattern::State::Shown);
    QCOMPARE(m_world->person.messages(), QStringList{QStringLiteral("/pub/gone  が存在しません")});
    QCOMPARE(ftp().FsFllPh(), m_server->server() + QStringLiteral("/pub"));
}

void tst_PatternDesk::unattendedOnlyConnects()
{
    start(QStringLiteral("/"));
    ftp().disconnectSite();
    m_world->registerPattern(QStringLiteral("p"), QStringLiteral("/pub/gone"));
    m_world->flags.unattendedRun = true;
    m_world->person.clear();
    QCOMPARE(m_world->window->SyncPtn(QStringLiteral("p")).state, ShownPattern::State::Shown);
    QVERIFY(m_world->person.messages().isEmpty());
    QVERIFY(m_world->session.connected());
}

void tst_PatternDesk::registersTheShownPair()
{
    start(QStringLiteral("/pub/deep"));
    m_world->person.expectAskText(m_prompt, QStringLiteral("ﾎｰﾑﾍﾟｰｼﾞ"));
    registerShown();
    QCOMPARE(m_world->person.proposal(), QDir(m_world->local()).dirName());
    QCOMPARE(patterns(),
             QStringList{QStringLiteral("ﾎｰﾑﾍﾟｰｼﾞ|") + QDir::toNativeSeparators(m_world->local()) +
                         QStringLiteral("|site|/pub/deep")});
    const auto *menus = m_world->window->findChild<pfFtp *>();
    QCOMPARE(menus->mnSync()->actions().at(0)->text(), QStringLiteral("ﾎｰﾑﾍﾟｰｼﾞ"));
}

void tst_PatternDesk::bareServerRegistersTheRoot()
{
    start(QStringLiteral("/"));
    m_world->person.expectAskText(m_prompt, QStringLiteral("root"));
    registerShown();
    QVERIFY(patterns().value(0).endsWith(QLatin1String("|site|/")));
}

void tst_PatternDesk::knownPairIsSaid()
{
    start();
    m_world->registerPattern(QStringLiteral("known"), QStringLiteral("/pub"));
    m_world->database.run(QStringLiteral("Update msSync Set sLph='?'"), // as the pane says it
                          {QDir::toNativeSeparators(m_world->local())});
    Q_EMIT ftp().eAct(QStringLiteral("登録"));
    QCOMPARE(m_world->person.messages().last(), QStringLiteral("knownで登録されています"));
    QCOMPARE(patterns().size(), 1);
}

void tst_PatternDesk::cancelRegistersNothing_data()
{
    QTest::addColumn<bool>("cancel");
    QTest::newRow("Cancel") << true;
    QTest::newRow("an empty answer") << false;
}

void tst_PatternDesk::cancelRegistersNothing()
{
    QFETCH(bool, cancel);
    start();
    m_world->person.expectAskText(m_prompt, cancel ? std::nullopt : std::optional(QString()));
    Q_EMIT ftp().eAct(QStringLiteral("登録"));
    QVERIFY(patterns().isEmpty());
}

void tst_PatternDesk::takenNameAsksAgain()
{
    start();
    m_world->database.run(
        QStringLiteral("Insert Into msSync (sSync, sLph) Values ('Taken', '/x')"));
    m_world->person.expectAskText(m_prompt, QStringLiteral("taken"));
    m_world->person.expectMessage(QStringLiteral("指定された名前で既に登録があります"));
    m_world->person.expectAskText(m_prompt, QStringLiteral("it's"));
    m_world->person.expectMessage(QStringLiteral("登録名に ' は使用できません"));
    m_world->person.expectAskText(m_prompt, QStringLiteral("free"));
    registerShown();
    QCOMPARE(patterns().size(), 2);
}

void tst_PatternDesk::quotesInPathsWork()
{
    m_server->makeFolder("/pub/it's");
    start(QStringLiteral("/pub/it's"));
    m_world->person.expectAskText(m_prompt, QStringLiteral("p"));
    registerShown();
    QVERIFY(patterns().value(0).endsWith(QLatin1String("|site|/pub/it's")));
    QCOMPARE(m_world->window->SyncPtn(QStringLiteral("p")).remoteFolder,
             QStringLiteral("/pub/it's"));
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_PatternDesk)
#include "tst_PatternDesk.moc"
