// Uploads and downloads named on the command line.
#include <QDir>

#include "db/Database.h"
#include "db/DisplayFormat.h"
#include "ftp/DirectoryCache.h"
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "platform/EntryLook.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "shared/NameList.h"
#include "sync/BatchRunner.h"
#include "sync/WindowHost.h"

namespace venlo
{

namespace
{
struct SiteLogin {
    QString server;
    QString user;
    QString password;
};

SiteLogin loginOf(Database &database, const QString &site)
{
    try {
        const Rows rows = database.query(
            QStringLiteral("Select sSvr, sUsr, sPwd, sPxy, bPsv From msSite Where sName='?'"),
            {site});
        if (rows.count() > 0)
            return {rows.at(0, 0).toString(), rows.at(1, 0).toString(), rows.at(2, 0).toString()};
    } catch (const DbError &) {
        // A name that cannot be asked for is not registered.
    }
    return {};
}
} // namespace

void BatchRunner::ConnectSite(const QString &site, bool &ok)
{
    ok = false;
    m_siteKnown = false;
    if (site.isEmpty()) {
        m_rooms.frontEnd.warn(QStringLiteral("接続先の登録名が指定されていません"));
        return;
    }
    const SiteLogin login = loginOf(m_rooms.database, site);
    m_siteKnown = !login.server.isEmpty();
    if (!m_siteKnown) {
        m_rooms.frontEnd.warn(site + QStringLiteral("からは接続先の登録情報が取得できません"));
        return;
    }
    bool opened = true;
    m_rooms.session.OpenInternet(QString(), opened, false);
    if (opened)
        m_rooms.session.Connect(site, login.server, login.user, login.password, false, ok);
}

int BatchRunner::RunTransfer(const QString &localFolder, const QString &site,
                             const QString &remoteFolder, const QString &names, bool upload)
{
    bool ok = false;
    ConnectSite(site, ok);
    if (!ok)
        return m_siteKnown ? NotCarriedOut : Unusable;
    if (m_rooms.window != nullptr)
        m_rooms.window->showMainWindow({}); // nobody will browse: its folders are not asked for
    const FlagScope unattended(m_rooms.flags.unattendedTransfer);
    m_rooms.operations.resetCounts();
    try {
        if (upload) {
            PutList(localFolder, names, remoteFolder, ok);
        } else {
            QString list = names;
            list.replace(QLatin1Char(','), QLatin1Char('\r'));
            m_rooms.operations.ftGetFile(remoteFolder, list, localFolder, ok);
        }
    } catch (const DbError &error) {
        m_rooms.frontEnd.warn(error.words());
        ok = false;
    }
    return ok && m_rooms.operations.counts().givenUp == 0 ? Ok : NotCarriedOut;
}

void BatchRunner::PutList(QString localFolder, const QString &names, const QString &remoteFolder,
                          bool &ok)
{
    localFolder = QDir::fromNativeSeparators(localFolder);
    if (localFolder.endsWith(QLatin1Char('/')))
        localFolder.chop(1);
    QStringList lines;
    for (const QString &name : names.split(QLatin1Char(','))) {
        const EntryLook file(localFolder + QLatin1Char('/') + name);
        if (!file.isFile()) {
            ok = false;
            m_rooms.frontEnd.warn(QDir::toNativeSeparators(file.filePath()) +
                                  QStringLiteral(" Not Found"));
            return;
        }
        lines.append(
            UploadLine{name, FormatDateText(file.lastModified()), FormatSizeText(file.size())}
                .text());
    }
    m_rooms.operations.ftPutFile(remoteFolder, joinNames(lines),
                                 QDir::toNativeSeparators(localFolder), ok);
    refreshKeptCache(remoteFolder);
}

} // namespace venlo
