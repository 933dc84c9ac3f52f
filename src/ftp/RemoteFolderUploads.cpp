// How a local folder tree goes to the server, folder by folder.
#include "ftp/RemoteUploads.h"

#include "db/DbError.h"
#include "db/DisplayFormat.h"
#include "ftp/LocalPath.h"
#include "ftp/Session.h"
#include "platform/EntryLook.h"
#include "shared/RemotePath.h"

#include <QDir>

namespace venlo
{

namespace
{
constexpr int maxDepth = 128;

/// What a folder holds to be sent.
struct Content {
    std::vector<UploadLine> files;
    QStringList folders; ///< linked ones too, which are given up by name, not missed in silence
};

Content contentOf(const QString &folder)
{
    // System: on Windows shortcuts are listed with these only.
    const auto all = QDir::Dirs | QDir::Files | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
    Content content;
    for (const QString &name : QDir(folder).entryList(all, QDir::Name)) {
        const EntryLook look(localChild(folder, name));
        // What cannot be looked at fails as a file, and is told.
        const bool denied = !look.exists() && !look.isSymbolicLink();
        if (look.isDir())
            content.folders.append(name);
        else if (look.isFile() || denied)
            content.files.push_back(
                {name, FormatDateText(look.lastModified()), FormatSizeText(look.size())});
    }
    return content;
}
} // namespace

bool RemoteUploads::putFolder(const QString &localParent, const QString &name,
                              const QString &remoteParent, int depth)
{
    const QString local = localChild(localParent, name);
    const QString remote = remoteChild(m_context.cache.normalised(remoteParent), name);
    if (!m_context.mayGoOn())
        return false;
    QString why;
    if (depth > maxDepth)
        why = QStringLiteral("ﾌｫﾙﾀﾞの階層が深すぎます");
    else if (m_context.cache.refusesPath(remoteParent) || m_context.cache.refusesPath(remote))
        why = QStringLiteral("ｻｰﾊﾞｰ名を含むﾊﾟｽは使用できません");
    else if (isLink(local)) // may lead anywhere and round in circles
        why = QStringLiteral("ﾌｫﾙﾀﾞへのﾘﾝｸは転送しません");
    else if (const EntryLook folder(local); !folder.isDir() || !folder.isReadable())
        why = QStringLiteral("ﾌｫﾙﾀﾞが読み取れません");
    if (!why.isEmpty()) {
        giveUpFolder(local, remote, {ErrorClass::Local, why, 0});
        return true;
    }
    try {
        return putTree(local, m_context.cache.normalised(remoteParent), name, depth);
    } catch (const DbError &error) {
        giveUpFolder(local, remote, {ErrorClass::Local, error.words(), 0});
        return false;
    }
}

bool RemoteUploads::putTree(const QString &local, const QString &remoteParent, const QString &name,
                            int depth)
{
    const SteadyFolder steady(local);
    bool known = false;
    m_context.keepCache(remoteParent, [&] { known = m_context.cache.isLoaded(remoteParent); });
    if (!known) { // or the new row would look like all of them
        if (!m_context.enter(remoteParent, true))
            return false;
        known = m_context.loadIfAbsent(remoteParent);
    }
    if (!known || !makeAtOnce(local, remoteParent, name)) {
        if (!m_context.enter(remoteParent, true))
            return false;
        const Folder made = makeFolder(local, remoteParent, name);
        if (made != Folder::There)
            return made == Folder::GivenUp;
    }
    const QString remote = remoteChild(remoteParent, name);
    const Content content = contentOf(local);
    if (steady.leadsAway()) {
        giveUpFolder(local, remote, {ErrorClass::Local, SteadyFolder::words(), 0});
        return true;
    }
    if (!content.files.empty() && !putLines(remote, content.files, steady))
        return false;
    for (const QString &folder : content.folders) {
        if (steady.leadsAway()) {
            giveUpFolder(local, remote, {ErrorClass::Local, SteadyFolder::words(), 0});
            return true;
        }
        if (!putFolder(local, folder, remote, depth + 1))
            return false;
    }
    return true;
}

/// Below a folder that is known to be there one round trip makes another, instead of three. False
/// when it has to be made step by step, whatever this one has come to.
bool RemoteUploads::makeAtOnce(const QString &local, const QString &remoteParent,
                               const QString &name)
{
    const QString remote = remoteChild(remoteParent, name);
    bool made = false;
    const auto entered =
        m_context.session.client().makeAndEnter(m_context.cache.rawPath(remote), made);
    if (made)
        folderMade(local, remoteParent, name);
    if (entered)
        m_context.session.setCurrentRemoteDir(remoteParent);
    else
        m_context.note(QStringLiteral("%1: %2").arg(remote, entered.error().words));
    return entered.ok();
}

RemoteUploads::Folder RemoteUploads::makeFolder(const QString &local, const QString &remoteParent,
                                                const QString &name)
{
    const QString remote = remoteChild(remoteParent, name);
    FtpClient &client = m_context.session.client();
    bool made = false;
    const auto attempted = m_context.fiveAttempts(remote, [&]() -> Result<void> {
        if (auto current = m_context.stepInto(remoteParent); !current)
            return current;
        auto created = client.makeDirectory(m_context.cache.rawName(remoteParent, name));
        made = created.ok();
        if (made || created.error().kind != ErrorClass::Refused)
            return created;
        // Most servers say no when the folder is there; only going there tells.
        auto there = m_context.stepInto(remote);
        if (!there && there.error().kind == ErrorClass::Refused)
            return Error{ErrorClass::Local, created.error().words, created.error().replyCode};
        return there;
    });
    if (attempted.end == OperationContext::End::Stop)
        return Folder::Stop;
    if (attempted.end == OperationContext::End::GivenUp) {
        giveUpFolder(local, remote, attempted.error);
        return Folder::GivenUp;
    }
    if (made)
        folderMade(local, remoteParent, name);
    return Folder::There;
}

void RemoteUploads::folderMade(const QString &local, const QString &remoteParent,
                               const QString &name)
{
    const QString remote = remoteChild(remoteParent, name);
    m_context.status(remote + QStringLiteral(" Create Directry ･･･"));
    m_context.keepRows(remote, [&] { m_context.cache.caAddFold(local, remoteParent, name); });
    m_context.cache.madeEmpty(remote);
    m_context.done(Outcome::Kind::FolderMade, remote);
}

void RemoteUploads::giveUpFolder(const QString &local, const QString &remote, const Error &error)
{
    m_context.giveUp(QStringLiteral("ftPutFold Err:") + remote + QStringLiteral(" : ") +
                         error.words + QStringLiteral(" > ") + local,
                     local, remote, error);
}

} // namespace venlo
