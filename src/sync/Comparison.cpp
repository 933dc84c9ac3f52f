#include "sync/Comparison.h"

#include "db/Database.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/Session.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"
#include "sync/ComparisonWork.h"
#include "sync/LocalGathering.h"
#include "sync/RemoteGathering.h"
#include "sync/RemoteTrust.h"
#include "sync/WaitScope.h"

namespace venlo
{

Comparison::Comparison(Session &session, Database &database, DirectoryCache &cache,
                       FrontEnd &frontEnd, Flags &flags)
    : m_session(session), m_database(database), m_cache(cache), m_frontEnd(frontEnd),
      m_flags(flags), m_work(std::make_unique<ComparisonWork>(database, frontEnd))
{
}

Comparison::~Comparison() = default;

ComparisonResult Comparison::ftSync(const QString &sLph, const QString &sFph, bool down, bool &ok)
{
    ok = false;
    if (m_running)
        return {};
    const FlagScope running(m_running);
    m_work = std::make_unique<ComparisonWork>(m_database, m_frontEnd);
    ComparisonResult &result = m_work->result;
    result.pair = {sLph, sFph, down};
    if (!passesChecks(sLph, sFph) || !confirmed(sLph, sFph, down))
        return result;
    try {
        m_work->local.begin(sLph);
        result.ok = refreshRemote() && fillAndMark();
    } catch (const std::exception &error) {
        m_session.errorLog().LogError(QStringLiteral("ftSync Err sLph=") + sLph);
        m_frontEnd.warn(QString::fromStdString(error.what()));
    }
    m_work->local.end();
    ok = result.ok;
    return result;
}

bool Comparison::passesChecks(const QString &sLph, const QString &sFph)
{
    if (!sFph.isEmpty() && sFph == m_session.server()) {
        m_frontEnd.message(QStringLiteral("FTPｻｰﾊﾞｰ内のﾃﾞｨﾚｸﾄﾘを指定して下さい"));
        return false;
    }
    if (sLph.isEmpty() || sFph.isEmpty()) {
        m_frontEnd.message(QStringLiteral("送信元･送信先を指定して下さい"));
        return false;
    }
    const bool wildcard = sFph.contains(QLatin1Char('*')) || sFph.contains(QLatin1Char('?'));
    const QString server = m_session.server();
    // Further in, the text would be cut out of the path and another directory reached.
    const bool inside = !server.isEmpty() && sFph.indexOf(server, 1, Qt::CaseInsensitive) > 0;
    if (!wildcard && !inside && !m_cache.refusesPath(sFph) &&
        !m_cache.refusesPath(m_cache.normalised(sFph)))
        return true;
    m_session.errorLog().LogError(QStringLiteral("ftSync Err sLph=") + sLph);
    m_frontEnd.message(sFph + QStringLiteral(" は同期できません"));
    return false;
}

bool Comparison::confirmed(const QString &sLph, const QString &sFph, bool down)
{
    const QString text = down ? sFph + QStringLiteral(" から ") + sLph +
                                    QStringLiteral(" へ同期を実行します (FTP側に合わせる)")
                              : sLph + QStringLiteral(" から ") + sFph +
                                    QStringLiteral(" へ同期を実行します (ﾏｲｺﾝﾋﾟｭｰﾀｰ側に合わせる)");
    m_work->result.cancelled = !m_flags.batch && !m_frontEnd.question(text);
    return !m_work->result.cancelled;
}

bool Comparison::refreshRemote()
{
    SyncPair &pair = m_work->result.pair;
    m_cache.sjNormDir(pair.sFph);
    const bool connected = m_session.connected();
    m_cache.caRefresh(pair.sFph);
    if (m_work->stopped())
        return false;
    if (RemoteTrust(*m_work, m_cache).judge(connected && m_session.connected()))
        return true;
    m_session.errorLog().LogError(QStringLiteral("ftSync Err sLph=") + pair.sLph);
    return false;
}

bool Comparison::fillAndMark()
{
    const WaitScope wait(m_frontEnd,
                         QStringLiteral("FTP側とﾏｲｺﾝﾋﾟｭｰﾀｰ側のﾃﾞｨﾚｸﾄﾘ情報を比較しています"));
    RemoteGathering remote(*m_work, m_cache, m_session.currentSite(), m_session.errorLog());
    if (!remote.gather())
        return false;
    const QString root = m_work->result.pair.sLph;
    bool walked = true;
    sySync(root, root, walked);
    if (!walked)
        return false;
    remote.refineDays();
    if (m_work->result.cancelled)
        return false;
    RemoteTrust(*m_work, m_cache).noteUnfinished();
    m_work->rows.mark(m_work->result.pair.down);
    // Of a large tree each of these is as large as its rows.
    m_work->remoteFolders = {};
    m_work->remoteFiles = {};
    Transaction transaction(m_database);
    m_work->rows.store(m_database);
    transaction.commit();
    m_work->rows = {};
    return true;
}

void Comparison::sySync(const QString &current, const QString &root, bool &ok)
{
    ok = false;
    try {
        ok = LocalGathering(*m_work, root).walk(current);
    } catch (const DbError &error) {
        if (error.brokenBy().isEmpty())
            m_frontEnd.warn(error.words());
        else
            m_work->tellBroken({error.brokenBy()});
    }
    if (!ok && !m_work->result.cancelled)
        m_session.errorLog().LogError(QStringLiteral("sySync Err"));
}

} // namespace venlo
