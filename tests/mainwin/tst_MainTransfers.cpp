#include <QAbstractItemView>
#include <QDir>
#include <QTest>

#include "ftppane/uFtp.h"
#include "localpane/uFile.h"
#include "mainwin/MainStatusBar.h"
#include "mainwin/MainWorld.h"
#include "mainwin/popup/sfMsg.h"
#include "support/ScriptedServer.h"
#include "support/Trees.h"

namespace venlo::test
{

namespace
{
/// What a list shows in its first column, sorted.
QStringList namesIn(const QAbstractItemView *list)
{
    QStringList names;
    for (int row = 0; row < list->model()->rowCount(); ++row)
        names += list->model()->index(row, 0).data().toString();
    names.sort();
    return names;
}
} // namespace

/// What passes between the panes: confirmations, drops, synchronisations.
class tst_MainTransfers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void uploadIsConfirmed();
    void downloadIsConfirmed();
    void batchConfirmsNothing();
    void unconnectedRefusesAnUpload();
    void dropOnTheServer();
    void dropOnTheServerDeclined();
    void dropHere();
    void synchronisingUnconnected();
    void synchronisesUp();
    void synchronisesDown();
    void synchronisesDownForReal();
    void nothingRunsBesideAnOperation();

private:
    [[nodiscard]] uFile &file() { return *m_world->window->findChild<uFile *>(); }
    [[nodiscard]] uFtp &ftp() { return *m_world->window->findChild<uFtp *>(); }
    void start();
    [[nodiscard]] QString at(const QString &name) const
    {
        return QDir::toNativeSeparators(m_world->local() + QLatin1Char('/') + name);
    }

    std::unique_ptr<ScriptedServer> m_server;
    std::unique_ptr<MainWorld> m_world;
};

void tst_MainTransfers::init()
{
    m_server = std::make_unique<ScriptedServer>();
    m_server->put("/pub/r.txt", "remote");
    m_server->put("/pub/deep/d.txt", "deep");
    m_world = std::make_unique<MainWorld>();
    QVERIFY(makeTree(m_world->local(), {{"l.txt", "local"}, {"sub/s.txt", "below"}}));
}

void tst_MainTransfers::cleanup()
{
    QVERIFY(m_world->person.verify());
    QVERIFY(!m_world->flags.unattendedTransfer);
    QVERIFY(!m_world->gate.busy());
    m_world.reset();
    m_server.reset();
}

void tst_MainTransfers::start()
{
    QVERIFY(m_server->start());
    m_world->registerSite(m_server->server(), m_server->user(), m_server->password());
    m_world->open();
    file().cOn(m_world->local());
    QVERIFY(ftp().SetSync(QStringLiteral("site"), QStringLiteral("/pub")));
    m_world->person.clear();
}

void tst_MainTransfers::uploadIsConfirmed()
{
    start();
    for (const bool agreed : {false, true}) {
        m_world->person.expectQuestion(m_server->server() + QStringLiteral("/pubにｱｯﾌﾟﾛｰﾄﾞします"),
                                       agreed);
        bool goAhead = false;
        QString target;
        Q_EMIT file().eBfrPut(goAhead, target);
        QCOMPARE(goAhead, agreed);
        QCOMPARE(target, m_server->server() + QStringLiteral("/pub"));
    }
}

void tst_MainTransfers::downloadIsConfirmed()
{
    start();
    const QString here = QDir::toNativeSeparators(m_world->local());
    for (const bool agreed : {false, true}) {
        m_world->person.expectQuestion(here + QStringLiteral("にﾀﾞｳﾝﾛｰﾄﾞします"), agreed);
        bool proceed = false;
        QString target;
        Q_EMIT ftp().eBfrGet(target, proceed);
        QCOMPARE(proceed, agreed);
        QCOMPARE(target, here);
    }
}

void tst_MainTransfers::batchConfirmsNothing()
{
    start();
    m_world->flags.batch = true;
    bool proceed = false;
    QString target;
    Q_EMIT ftp().eBfrGet(target, proceed);
    QVERIFY(proceed);
    proceed = false;
    Q_EMIT file().eBfrPut(proceed, target);
    QVERIFY(proceed);
}

void tst_MainTransfers::unconnectedRefusesAnUpload()
{
    m_world->open();
    m_world->flags.batch = true;
    bool goAhead = true;
    QString target;
    Q_EMIT file().eBfrPut(goAhead, target);
    QVERIFY(!goAhead);
}

void tst_MainTransfers::dropOnTheServer()
{
    start();
    m_world->person.expectQuestion(m_server->server() + QStringLiteral("/pub/deepにｱｯﾌﾟﾛｰﾄﾞします"),
                                   true);
    Q_EMIT ftp().storeWanted({at(QStringLiteral("l.txt")), at(QStringLiteral("sub"))},
                             QStringLiteral("/pub/deep"));
    QCOMPARE(m_server->file("/pub/deep/l.txt"), QByteArray("local"));
    QCOMPARE(m_server->file("/pub/deep/sub/s.txt"), QByteArray("below"));
    QVERIFY(!m_world->window->findChild<sfMsg *>()->shown());
    QVERIFY(QFile::exists(at(QStringLiteral("l.txt"))));
    QCOMPARE(m_world->window->findChild<MainStatusBar *>()->text(), QString());
    QCOMPARE(ftp().FsFllPh(), m_server->server() + QStringLiteral("/pub"));
}

void tst_MainTransfers::dropOnTheServerDeclined()
{
    start();
    m_world->person.expectQuestion(m_server->server() + QStringLiteral("/pubにｱｯﾌﾟﾛｰﾄﾞします"),
                                   false);
    Q_EMIT ftp().storeWanted({at(QStringLiteral("l.txt"))}, QStringLiteral("/pub"));
    QVERIFY(!m_server->exists("/pub/l.txt"));
}

void tst_MainTransfers::dropHere()
{
    start();
    m_world->person.expectQuestion(at(QStringLiteral("sub")) + QStringLiteral("にﾀﾞｳﾝﾛｰﾄﾞします"),
                                   true);
    Q_EMIT file().fetchWanted({{QStringLiteral("/pub"), QStringLiteral("r.txt"), EntryTag::FL},
                               {QStringLiteral("/pub"), QStringLiteral("deep"), EntryTag::FD}},
                              at(QStringLiteral("sub")));
    QVERIFY(QFile::exists(at(QStringLiteral("sub/r.txt"))));
    QVERIFY(QFile::exists(at(QStringLiteral("sub/deep/d.txt"))));
    QVERIFY(!m_world->window->findChild<sfMsg *>()->shown());
}

void tst_MainTransfers::synchronisingUnconnected()
{
    m_world->open();
    m_world->person.clear();
    Q_EMIT file().eAct(QStringLiteral("同期"));
    QCOMPARE(m_world->person.messages(),
             QStringList{QStringLiteral("送信元･送信先を指定して下さい")});
}

void tst_MainTransfers::synchronisesUp()
{
    start();
    m_world->flags.batch = true;
    Q_EMIT file().eAct(QStringLiteral("同期"));
    QCOMPARE(m_server->file("/pub/l.txt"), QByteArray("local"));
    QCOMPARE(m_server->file("/pub/sub/s.txt"), QByteArray("below"));
    QVERIFY(!m_server->exists("/pub/r.txt"));
    QVERIFY(!m_server->exists("/pub/deep"));
    // The pane shows what the server has now, without another listing.
    QCOMPARE(namesIn(ftp().findChild<QAbstractItemView *>(QStringLiteral("LsView"))),
             (QStringList{QStringLiteral("l.txt"), QStringLiteral("sub")}));
}

void tst_MainTransfers::synchronisesDown()
{
    start();
    const QString here = QDir::toNativeSeparators(m_world->local());
    m_world->person.expectQuestion(m_server->server() + QStringLiteral("/pub から ") + here +
                                       QStringLiteral(" へ同期を実行します (FTP側に合わせる)"),
                                   false);
    Q_EMIT ftp().eAct(QStringLiteral("同期"));
    QVERIFY(QFile::exists(at(QStringLiteral("l.txt"))));
}

/// Both panes show what the synchronisation has seen and done.
void tst_MainTransfers::synchronisesDownForReal()
{
    start();
    m_server->put("/pub/new.txt", "came later");
    m_world->flags.batch = true;
    Q_EMIT ftp().eAct(QStringLiteral("同期"));
    QVERIFY(!QFile::exists(at(QStringLiteral("l.txt"))));
    QVERIFY(QFile::exists(at(QStringLiteral("new.txt"))));
    const QStringList both{QStringLiteral("deep"), QStringLiteral("new.txt"),
                           QStringLiteral("r.txt")};
    QCOMPARE(namesIn(ftp().findChild<QAbstractItemView *>(QStringLiteral("LsView"))), both);
    QCOMPARE(namesIn(file().findChild<QAbstractItemView *>(QStringLiteral("LsView"))), both);
}

void tst_MainTransfers::nothingRunsBesideAnOperation()
{
    start();
    m_world->flags.batch = true;
    const auto turn = m_world->gate.begin();
    Q_EMIT ftp().storeWanted({at(QStringLiteral("l.txt"))}, QStringLiteral("/pub"));
    Q_EMIT file().fetchWanted({{QStringLiteral("/pub"), QStringLiteral("r.txt"), EntryTag::FL}},
                              m_world->local());
    Q_EMIT file().eAct(QStringLiteral("同期"));
    QVERIFY(!m_server->exists("/pub/l.txt"));
    QVERIFY(!QFile::exists(at(QStringLiteral("r.txt"))));
}

} // namespace venlo::test

QTEST_MAIN(venlo::test::tst_MainTransfers)
#include "tst_MainTransfers.moc"
