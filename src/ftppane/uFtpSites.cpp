// How the FTP pane picks a site, connects and disconnects.
#include "db/Database.h"
#include "ftp/Session.h"
#include "ftppane/OperationScopes.h"
#include "ftppane/SiteHeader.h"
#include "ftppane/sfSite.h"
#include "ftppane/uFtpParts.h"
#include "mainwin/popup/pfFtp.h"
#include "shared/OperationGate.h"
#include "shared/RemotePath.h"
#include "shared/ShownAddress.h"
#include "shared/WindowDesk.h"

namespace venlo
{

bool uFtp::Parts::run(const std::function<void()> &command)
{
    const auto turn = rooms.gate.begin();
    if (!turn)
        return false;
    settled = true;
    guarded(command);
    return true;
}

void uFtp::Parts::guarded(const std::function<void()> &command)
{
    try {
        command();
    } catch (const DbError &error) {
        rooms.desk.message(error.words());
    }
    look();
}

void uFtp::Parts::look()
{
    if (on && rooms.session.state() != Session::Connected)
        cClear();
    header->setSecurity(on ? rooms.session.security() : QString());
}

void uFtp::Parts::keysOut()
{
    // A pane that was only just built anew would not get further the next time.
    if (ranOut || !settled)
        return;
    ranOut = true;
    rooms.desk.message(QStringLiteral("項目の番号を使い切ったため､表示できない項目があります"));
    QMetaObject::invokeMethod(this, &Parts::raiseKeysOut, Qt::QueuedConnection);
}

/// The host takes the pane away, which must not happen under an operation that lets events run.
void uFtp::Parts::raiseKeysOut()
{
    if (!rooms.gate.busy()) {
        Q_EMIT q.keysRanOut();
        return;
    }
    connect(
        &rooms.gate, &OperationGate::busyChanged, this,
        [this] { QMetaObject::invokeMethod(this, &Parts::raiseKeysOut, Qt::QueuedConnection); },
        Qt::SingleShotConnection);
}

void uFtp::Parts::fillSites()
{
    Rows rows;
    int count = 0;
    rooms.database.SelectRows(QStringLiteral("Select sName From msSite Order By sName"), rows,
                              count);
    QStringList names;
    for (int row = 0; row < count; ++row)
        names.append(rows.at(0, row).toString());
    header->setSites(names);
    readSite();
    if (!on)
        showUnconnected();
}

void uFtp::Parts::readSite()
{
    site = Site();
    QString name = header->site();
    header->setConnectable(!name.isEmpty());
    if (name.isEmpty())
        return;
    QVariant sSvr;
    QVariant sUsr;
    QVariant sPwd;
    QVariant sPxy;
    QVariant bPsv;
    QVariant bSvDb;
    name.replace(QLatin1Char('\''), QLatin1String("''"));
    rooms.database.SelectValues(
        QStringLiteral("Select sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb  From msSite") +
            QStringLiteral(" Where sName='") + name + QLatin1Char('\''),
        {&sSvr, &sUsr, &sPwd, &sPxy, &bPsv, &bSvDb});
    site = {sSvr.toString(), sUsr.toString(),        sPwd.toString(),
            sPxy.toString(), bPsv.toLongLong() != 0, bSvDb.toLongLong() != 0};
}

void uFtp::Parts::showUnconnected()
{
    const QString name = header->site();
    header->setCaption(name.isEmpty() ? QStringLiteral("接続先を指定して下さい")
                                      : QStringLiteral("[未接続]") + name);
}

void uFtp::Parts::selectSite(int index)
{
    const QString before = header->site();
    header->setIndex(index);
    const QString name = header->site();
    if (on && name.compare(connectedSite, Qt::CaseInsensitive) == 0)
        return;
    if (on)
        disconnectSite();
    readSite();
    showUnconnected();
}

void uFtp::Parts::siteChosen(int index)
{
    if (!run([&] { selectSite(index); }))
        header->setIndex(on ? header->indexOf(connectedSite) : index);
}

bool uFtp::Parts::openSession()
{
    Session &session = rooms.session;
    if (session.state() == Session::Connected)
        session.Disconnect();
    session.CloseInternet();
    bool ok = true;
    session.OpenInternet(site.sPxy, ok, false);
    if (!ok) {
        rooms.desk.message(shownAddress(site.sPxy) +
                           QStringLiteral(" ﾌﾟﾛｷｼの設定を確認して下さい"));
        return false;
    }
    session.Connect(header->site(), site.sSvr, site.sUsr, site.sPwd, site.bPsv, ok);
    return ok;
}

bool uFtp::Parts::connectSite()
{
    readSite();
    if (header->index() < 0) {
        cClear();
        return false;
    }
    if (site.sSvr.isEmpty() || site.sPwd.isEmpty()) {
        rooms.desk.message(QStringLiteral("FTP ｻｰﾊﾞｰ･ﾕｰｻﾞｰ･ﾊﾟｽﾜｰﾄﾞを確認して下さい"));
        cClear();
        return false;
    }
    const WaitCursor cursor;
    on = false;
    if (!openSession()) {
        cClear();
        return false;
    }
    connectedSite = header->site();
    showSession(rooms.session.currentRemoteDir());
    return on;
}

void uFtp::Parts::showSession(const QString &startDir)
{
    on = true;
    treeView->setEnabled(true);
    listView->setEnabled(true);
    const QString server = rooms.session.server();
    header->setCaption(server);
    const QString dir = normalisedRemoteDir(startDir);
    browser->showPath(dir == QLatin1String("/") ? server : server + dir);
    look();
}

void uFtp::Parts::disconnectSite()
{
    if (rooms.session.state() == Session::Connected)
        rooms.session.Disconnect();
    rooms.session.CloseInternet();
    cClear();
}

void uFtp::Parts::cClear()
{
    on = false;
    connectedSite.clear();
    header->setCaption(QStringLiteral("未接続"));
    browser->clear();
    treeView->setEnabled(false);
    listView->setEnabled(false);
}

void uFtp::Parts::editSites()
{
    sfSite dialog(rooms.database, rooms.desk, &q);
    dialog.Act();
    guarded([this] { fillSites(); });
    rooms.menus.SetSyncMn(); // a site's patterns go with it
    if (!on || header->indexOf(connectedSite) >= 0)
        return;
    rooms.desk.message(QStringLiteral("現在の接続は削除されています 一旦切断します"));
    run([this] { disconnectSite(); });
}

} // namespace venlo
