#include "mainwin/PatternDesk.h"

#include <QDir>
#include <QStringList>
#include <QVariant>

#include "db/Database.h"
#include "ftp/Session.h"
#include "ftppane/uFtp.h"
#include "localpane/uFile.h"
#include "mainwin/popup/pfFtp.h"
#include "shared/Flags.h"
#include "shared/WindowDesk.h"
#include "sync/PlainPatternHost.h"
#include "sync/windows/sfSPtn.h"

namespace venlo
{

namespace
{
QString checkRegistration()
{
    return QStringLiteral("同期ﾊﾟﾀｰﾝの登録を確認して下さい");
}

/// Filling a statement does no escaping, so a quote in a value is doubled before.
QVariantList quoted(const QStringList &values)
{
    QVariantList all;
    for (QString value : values)
        all += value.replace(QLatin1Char('\''), QLatin1String("''"));
    return all;
}

/// The last component of a local path; the path itself where there is none ("/").
QString lastComponent(const QString &path)
{
    const auto cut = path.lastIndexOf(QDir::separator());
    const QString name = path.mid(cut + 1);
    return name.isEmpty() ? path : name;
}

/// What a name loses when it is put into a statement.
QString stored(QString text)
{
    return text.remove(QLatin1Char('?'));
}
} // namespace

PatternDesk::PatternDesk(MainRooms &rooms, MainPanes &panes, QWidget &window)
    : m_rooms(rooms), m_panes(panes), m_window(window)
{
}

ShownPattern PatternDesk::SyncPtn(const QString &sSync)
{
    if (m_rooms.flags.unattendedRun)
        return PlainPatternHost(m_rooms.database, m_rooms.session, m_rooms.desk).SyncPtn(sSync);
    ShownPattern shown = lookUp(sSync);
    if (sSync.isEmpty())
        return shown;
    if (shown.localFolder.isEmpty() || shown.site.isEmpty()) {
        m_rooms.desk.message(checkRegistration());
        return shown;
    }
    // A missing folder is said there; the pattern is none the less the one that is worked on.
    (void)m_panes.file->SetSync(shown.localFolder);
    m_panes.ftp->lookAtSession();
    // Without its site nothing stays connected: the folder shown now is no other server's.
    (void)m_panes.ftp->SetSync(shown.site, shown.remoteFolder);
    if (!siteExists(shown.site)) {
        m_rooms.desk.warn(shown.site + QStringLiteral("からは接続先の登録情報が取得できません"));
        shown.state = ShownPattern::State::NoSuchSite;
        return shown;
    }
    shown.state =
        m_rooms.session.connected() ? ShownPattern::State::Shown : ShownPattern::State::Failed;
    return shown;
}

ShownPattern PatternDesk::lookUp(const QString &sSync)
{
    ShownPattern shown;
    shown.state = ShownPattern::State::Unknown;
    if (sSync.isEmpty())
        return shown;
    QVariant sLph;
    QVariant sName;
    QVariant sFph;
    m_rooms.database.SelectValues(
        filled(QStringLiteral("Select sLph, sName, sFph From msSync Where sSync='?'"),
               quoted({sSync})),
        {&sLph, &sName, &sFph});
    if (!sLph.isValid() && !sName.isValid())
        return shown;
    shown.state = ShownPattern::State::Unusable;
    shown.localFolder = sLph.toString();
    shown.site = sName.toString();
    shown.remoteFolder = sFph.toString();
    return shown;
}

bool PatternDesk::siteExists(const QString &site)
{
    return first(QStringLiteral("Select Count(*) From msSite Where sName='?'"), {site}).toInt() > 0;
}

QVariant PatternDesk::first(const QString &sql, const QStringList &values)
{
    QVariant value;
    m_rooms.database.SelectValues(filled(sql, quoted(values)), {&value});
    return value;
}

void PatternDesk::registerShown()
{
    const auto name =
        registerPair(m_panes.file->NodePath(), m_panes.ftp->FsSvr(), m_panes.ftp->remotePath());
    if (name)
        edit(*name);
}

void PatternDesk::edit(const QString &sSync)
{
    bool changed = false;
    sfSPtn dialog(
        m_rooms.database, m_rooms.desk, [this] { return m_panes.file->NodePath(); }, &m_window);
    dialog.Act(changed, sSync);
    if (changed)
        m_panes.menus->SetSyncMn();
}

std::optional<QString> PatternDesk::registerPair(const QString &sLph, const QString &sName,
                                                 const QString &sFph)
{
    const QVariant known = first(QStringLiteral("Select sSync From msSync"
                                                " Where sLph='?' And sName='?' And sFph='?'"),
                                 {sLph, sName, sFph});
    if (known.isValid()) {
        m_rooms.desk.message(known.toString() + QStringLiteral("で登録されています"));
        return std::nullopt;
    }
    const QString sSync = askName(lastComponent(sLph));
    if (sSync.isEmpty() || !insert(sSync, sLph, sName, sFph))
        return std::nullopt;
    m_panes.menus->SetSyncMn();
    for (const QString &text : {sSync, sLph, sFph}) {
        if (stored(text) != text) {
            m_rooms.desk.message(text + QStringLiteral(" は ") + stored(text) +
                                 QStringLiteral(" として登録しました"));
        }
    }
    return stored(sSync);
}

/// Asks until the name is free; empty after Cancel. Every round is a person's answer.
QString PatternDesk::askName(const QString &proposed)
{
    QString name = proposed;
    for (;;) {
        const auto answer = m_rooms.desk.askText(QStringLiteral("同期登録名を入力してください"),
                                                 QStringLiteral("同期の登録"), name);
        name = answer.value_or(QString()).trimmed();
        if (stored(name).isEmpty() || m_rooms.desk.mustEnd())
            return {};
        if (name.contains(QLatin1Char('\''))) {
            m_rooms.desk.message(QStringLiteral("登録名に ' は使用できません"));
            continue;
        }
        if (first(QStringLiteral("Select Count(*) From msSync Where sSync='?'"), {name}).toInt() ==
            0)
            return name;
        m_rooms.desk.message(QStringLiteral("指定された名前で既に登録があります"));
    }
}

bool PatternDesk::insert(const QString &sSync, const QString &sLph, const QString &sName,
                         const QString &sFph)
{
    bool ok = false;
    m_rooms.database.ExecSql(filled(QStringLiteral("Insert into mssync (sSync, sLph, sName, sFph)"
                                                   " Values ('?', '?', '?', '?')"),
                                    quoted({sSync, sLph, sName, sFph})),
                             ok);
    if (!ok)
        m_rooms.desk.message(m_rooms.database.lastError());
    return ok;
}

} // namespace venlo
