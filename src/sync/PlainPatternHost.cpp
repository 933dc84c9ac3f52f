#include "sync/PlainPatternHost.h"

#include "db/Database.h"
#include "ftp/Session.h"
#include "shared/FrontEnd.h"

namespace venlo
{

namespace
{
/// Rows of a look-up by name; none for a name that cannot be asked for.
Rows lookUp(Database &database, const QString &sql, const QString &name)
{
    try {
        return database.query(sql, {name});
    } catch (const DbError &) {
        return {};
    }
}
} // namespace

PlainPatternHost::PlainPatternHost(Database &database, Session &session, FrontEnd &frontEnd)
    : m_database(database), m_session(session), m_frontEnd(frontEnd)
{
}

ShownPattern PlainPatternHost::SyncPtn(const QString &sSync)
{
    ShownPattern shown;
    shown.state = ShownPattern::State::Unknown;
    if (sSync.isEmpty())
        return shown;
    const Rows rows = lookUp(
        m_database, QStringLiteral("Select sLph, sName, sFph From msSync Where sSync='?'"), sSync);
    if (rows.count() > 0) {
        shown.localFolder = rows.at(0, 0).toString();
        shown.site = rows.at(1, 0).toString();
        shown.remoteFolder = rows.at(2, 0).toString();
        shown.state = ShownPattern::State::Unusable;
    }
    if (shown.localFolder.isEmpty() || shown.site.isEmpty())
        m_frontEnd.message(QStringLiteral("同期ﾊﾟﾀｰﾝの登録を確認して下さい"));
    else
        shown.state = connectTo(shown.site);
    return shown;
}

ShownPattern::State PlainPatternHost::connectTo(const QString &site)
{
    const Rows rows =
        lookUp(m_database,
               QStringLiteral("Select sSvr, sUsr, sPwd, sPxy, bPsv, bSvDb  From msSite"
                              " Where sName='?'"),
               site);
    if (rows.count() == 0) {
        m_frontEnd.warn(site + QStringLiteral("からは接続先の登録情報が取得できません"));
        return ShownPattern::State::NoSuchSite;
    }
    const QString server = rows.at(0, 0).toString();
    const QString password = rows.at(2, 0).toString();
    if (server.isEmpty() || password.isEmpty()) {
        m_frontEnd.message(QStringLiteral("FTP ｻｰﾊﾞｰ･ﾕｰｻﾞｰ･ﾊﾟｽﾜｰﾄﾞを確認して下さい"));
        return ShownPattern::State::Failed;
    }
    bool ok = true;
    m_session.OpenInternet(rows.at(3, 0).toString(), ok, false);
    if (ok)
        m_session.Connect(site, server, rows.at(1, 0).toString(), password,
                          rows.at(4, 0).toLongLong() != 0, ok);
    return ok ? ShownPattern::State::Shown : ShownPattern::State::Failed;
}

} // namespace venlo
