// How a remote folder tree comes to this side, folder by folder.
#include "ftp/RemoteDownloads.h"

#include "db/DbError.h"
#include "ftp/LocalPath.h"
#include "platform/FileNames.h"
#include "shared/NameList.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr int maxDepth = 128;
}

bool RemoteDownloads::getFolder(const QString &localParent, const QString &name,
                                const QString &remoteParent, int depth)
{
    const QString local = localChild(localParent, name);
    const QString remote = remoteChild(m_context.cache.normalised(remoteParent), name);
    if (!m_context.mayGoOn())
        return false;
    m_folders = depth == 0 ? 1 : m_folders + 1;
    if (m_folders > m_context.session.limits().maxTreeFolders) {
        giveUpFolder(local, remote,
                     {ErrorClass::Local, QStringLiteral("ﾌｫﾙﾀﾞの数が多すぎます"), 0});
        return false;
    }
    QString why = whyNotAFileName(name);
    if (depth > maxDepth)
        why = QStringLiteral("ﾌｫﾙﾀﾞの階層が深すぎます");
    else if (m_context.cache.refusesPath(remoteParent) || m_context.cache.refusesPath(remote))
        why = QStringLiteral("ｻｰﾊﾞｰ名を含むﾊﾟｽは使用できません");
    if (!why.isEmpty()) {
        giveUpFolder(local, remote, {ErrorClass::Local, why, 0});
        return true;
    }
    try {
        return getTree(local, remote, depth);
    } catch (const DbError &error) {
        giveUpFolder(local, remote, {ErrorClass::Local, error.words(), 0});
        return false;
    }
}

bool RemoteDownloads::getTree(const QString &local, const QString &remote, int depth)
{
    if (isLink(local)) {
        giveUpFolder(local, remote,
                     {ErrorClass::Local, QStringLiteral("ﾌｫﾙﾀﾞへのﾘﾝｸには転送しません"), 0});
        return true;
    }
    if (const QString other = whyAnotherEntry(local); !other.isEmpty()) {
        giveUpFolder(local, remote, {ErrorClass::Local, other, 0});
        return true;
    }
    const auto made = sjLocFold(local);
    if (!made) {
        giveUpFolder(local, remote, made.error());
        return true;
    }
    if (made.value())
        m_context.done(Outcome::Kind::FolderMade, local);
    const SteadyFolder steady(local);
    QString folders;
    QString files;
    namesOf(local, remote, folders, files);
    m_context.status(remote + QStringLiteral(" > ") + local + QStringLiteral(" Down Loading････"));
    // A query for each file costs more than the rest of a small one's bookkeeping.
    if (!getInto(steady, remote, splitNames(files), m_context.cache.cachedFiles(remote)))
        return false;
    for (const QString &folder : splitNames(folders)) {
        if (steady.leadsAway()) {
            giveUpFolder(local, remote, {ErrorClass::Local, SteadyFolder::words(), 0});
            return true;
        }
        if (!getFolder(local, folder, remote, depth + 1))
            return false;
    }
    return true;
}

void RemoteDownloads::namesOf(const QString &local, const QString &remote, QString &folders,
                              QString &files)
{
    try {
        m_context.cache.caDirNames(remote, folders, files);
    } catch (const DbError &error) {
        m_context.note(QStringLiteral("not wholly cached: %1: %2").arg(remote, error.words()));
        m_context.keepCache(remote, [&] { m_context.cache.caDirNames(remote, folders, files); });
    }
    for (const auto &mark : m_context.cache.incompleteUnder(remote)) {
        if (mark.dir.compare(remote, Qt::CaseInsensitive) == 0 && !mark.refused)
            giveUpFolder(local, remote, {ErrorClass::Retry, mark.why, 0});
    }
}

void RemoteDownloads::giveUpFolder(const QString &local, const QString &remote, const Error &error)
{
    m_context.giveUp(QStringLiteral("ftGetFold Err:") + remote + QStringLiteral(" : ") +
                         error.words + QStringLiteral(" > ") + local,
                     remote, local, error);
}

} // namespace venlo
