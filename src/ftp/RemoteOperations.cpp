#include "ftp/RemoteOperations.h"

#include "db/DbError.h"
#include "ftp/ErrorLog.h"
#include "ftp/LocalPath.h"
#include "ftp/OperationContext.h"
#include "ftp/RemoteDownloads.h"
#include "ftp/RemoteLook.h"
#include "ftp/RemoteRemovals.h"
#include "ftp/RemoteUploads.h"
#include "ftp/Session.h"
#include "shared/NameList.h"
#include "shared/RemotePath.h"

#include <algorithm>

#include <QFileInfo>

namespace venlo
{

struct RemoteOperations::Parts {
    Parts(Session &session, DirectoryCache &cache, FrontEnd &frontEnd, const Flags &flags,
          OperationCounts &counts, OverwriteMode &answer)
        : context(session, cache, frontEnd, flags, counts, answer),
          downloads(context, QFileInfo(session.errorLog().path()).absolutePath()), uploads(context),
          removals(context), look(context)
    {
    }
    OperationContext context;
    RemoteDownloads downloads;
    RemoteUploads uploads;
    RemoteRemovals removals;
    RemoteLook look;
};

RemoteOperations::RemoteOperations(Session &session, DirectoryCache &cache, FrontEnd &frontEnd,
                                   Flags &flags)
    : m(std::make_unique<Parts>(session, cache, frontEnd, flags, m_counts, standingAnswer))
{
}

RemoteOperations::~RemoteOperations() = default;

void RemoteOperations::carryOut(bool &ok, const std::function<bool()> &operation)
{
    if (!m->context.session.connected())
        return;
    try {
        if (!operation())
            ok = false;
    } catch (const DbError &error) {
        m->context.note(QStringLiteral("the store failed: ") + error.words());
        ok = false;
    }
}

void RemoteOperations::sjCrntDir(const QString &dir, bool &ok)
{
    m->context.cache.currentDirectory().sjCrntDir(dir, ok);
}

void RemoteOperations::sjMakePrDir(const QString &dir, bool &ok)
{
    ok = true;
    carryOut(ok, [&] {
        bool made = false;
        if (!m->context.cache.refusesPath(dir))
            m->context.cache.currentDirectory().sjMakePrDir(m->context.cache.normalised(dir), made);
        return made;
    });
    ok = ok && m->context.session.connected();
}

void RemoteOperations::ftGetFile(const QString &dir, const QString &names,
                                 const QString &localFolder, bool &ok)
{
    carryOut(ok, [&] { return m->downloads.getFiles(dir, splitNames(names), localFolder); });
}

void RemoteOperations::ftGetFold(const QString &localParent, const QString &name,
                                 const QString &remoteParent, bool &ok)
{
    carryOut(ok, [&] { return m->downloads.getFolder(localParent, name, remoteParent); });
}

void RemoteOperations::ftPutFile(const QString &dir, const QString &names,
                                 const QString &localFolder, bool &ok)
{
    if (names.isEmpty())
        return;
    if (!names.contains(QLatin1Char('\t'))) {
        carryOut(ok, [&] { return m->uploads.putPath(dir, names); });
        return;
    }
    std::vector<UploadLine> lines;
    for (const QString &line : splitNames(names))
        lines.push_back(UploadLine::parse(line));
    const SteadyFolder folder(withoutTrailingSeparator(localFolder));
    carryOut(ok, [&] { return m->uploads.putLines(dir, lines, folder); });
}

void RemoteOperations::ftPutFold(const QString &localParent, const QString &name,
                                 const QString &remoteParent, bool &ok)
{
    carryOut(ok, [&] {
        const bool goOn = m->uploads.putFolder(localParent, name, remoteParent);
        m->context.cache.othersMayWrite();
        return goOn;
    });
}

Result<bool> RemoteOperations::shows(const QString &dir, const QString &name)
{
    if (!m->context.session.connected())
        return Error{ErrorClass::Lost, QStringLiteral("not connected"), 0};
    return m->look.shows(dir, name);
}

void RemoteOperations::lookAnew()
{
    m->look.forget();
}

void RemoteOperations::ftRename(const QString &dir, const QString &oldName, QString newName,
                                bool folder, bool &ok)
{
    carryOut(ok, [&] {
        if (!m->context.enter(dir, false))
            return false;
        while (newName.startsWith(QLatin1Char('.')))
            newName.remove(0, 1);
        if (!newName.isEmpty() && newName != oldName)
            rename(m->context.cache.normalised(dir), oldName, newName, folder);
        return m->context.session.connected();
    });
}

QString RemoteOperations::whyNotRenamed(const QString &dir, const QString &oldName,
                                        const QString &newName)
{
    if (newName.contains(QLatin1Char('/')))
        return QStringLiteral("名前に / は使用できません");
    // Servers put a renamed file in place of another without a word.
    m->context.loadIfAbsent(dir);
    const bool sameName = newName.compare(oldName, Qt::CaseInsensitive) == 0;
    if (!sameName && m->context.cache.isCached(dir, newName))
        return QStringLiteral("同じ名前が既にあります");
    return {};
}

Result<void> RemoteOperations::checkFree(const QString &oldName, const QString &newName)
{
    OperationContext &context = m->context;
    FtpClient &client = context.session.client();
    const QByteArray raw = client.codec().encode(newName);
    const Error found{ErrorClass::Local, QStringLiteral("同じ名前が既にあります"), 0};
    if (newName.compare(oldName, Qt::CaseInsensitive) == 0) {
        // The server may find the old name under the new one. Only a listing of now can tell.
        const auto listing = client.list();
        if (!listing)
            return listing.error();
        const auto &entries = listing.value().entries;
        if (std::any_of(entries.begin(), entries.end(),
                        [&raw](const ListedEntry &entry) { return entry.rawName == raw; }))
            return found;
        return listing.value().whole
                   ? Result<void>()
                   : Error{ErrorClass::Local, QStringLiteral("同じ名前がないことを確認できません"),
                           0};
    }
    if (client.hasMdtm()) {
        const auto time = client.modificationTime(raw);
        if (time)
            return found;
        return time.error().kind == ErrorClass::Refused ? Result<void>()
                                                        : Result<void>(time.error());
    }
    const auto size = client.size(raw);
    if (size)
        return found;
    return size.error().kind == ErrorClass::Refused ? Result<void>() : Result<void>(size.error());
}

void RemoteOperations::rename(const QString &dir, const QString &oldName, const QString &newName,
                              bool folder)
{
    OperationContext &context = m->context;
    const QString from = remoteChild(dir, oldName);
    const QString to = remoteChild(dir, newName);
    Result<void> renamed;
    if (const QString why = whyNotRenamed(dir, oldName, newName); !why.isEmpty())
        renamed = Error{ErrorClass::Local, why, 0};
    else if (renamed = context.stepInto(dir); renamed)
        renamed = checkFree(oldName, newName);
    if (renamed)
        renamed = context.session.client().rename(context.cache.rawName(dir, oldName),
                                                  context.session.client().codec().encode(newName));
    if (!renamed) {
        context.giveUp(QStringLiteral("FtpRenameFile Err: ") + oldName + QStringLiteral(" > ") +
                           newName,
                       from, to, renamed.error());
        return;
    }
    context.status(oldName + QStringLiteral(" → ") + newName + QStringLiteral(" Rename･･･"));
    context.keepCache(from, [&] { context.cache.renamed(dir, oldName, newName, folder); });
    ++m_counts.done;
}

void RemoteOperations::ftDelFile(const QString &dir, const QString &names, bool &ok)
{
    if (m->context.unattended())
        carryOut(ok, [&] { return m->removals.deletePath(names); });
    else
        carryOut(ok, [&] { return m->removals.deleteFiles(dir, splitNames(names)); });
}

void RemoteOperations::ftMakeDir(const QString &path, const QString &name, bool &ok)
{
    carryOut(ok, [&] {
        OperationContext &context = m->context;
        if (!context.enter(path, false))
            return false;
        const QString dir = context.cache.normalised(path);
        const QString folder = remoteChild(dir, name);
        context.loadIfAbsent(dir); // or the new row would look like all of them
        const auto attempted = context.attemptOnce(folder, [&]() -> Result<void> {
            if (name.isEmpty() || name.contains(QLatin1Char('/')))
                return Error{ErrorClass::Local, QStringLiteral("使用できない名前です"), 0};
            if (auto current = context.stepInto(dir); !current)
                return current;
            return context.session.client().makeDirectory(context.cache.rawName(dir, name));
        });
        if (attempted.end == OperationContext::End::Stop)
            return false;
        if (attempted.end == OperationContext::End::GivenUp) {
            context.giveUp(QStringLiteral("FtpCreateDirectory Err: ") + name +
                               QStringLiteral(" CreateDirectory"),
                           folder, {}, attempted.error);
            return true;
        }
        context.status(name + QStringLiteral(" CreateDirectory･･･"));
        context.keepCache(folder, [&] { context.cache.folderMade(dir, name); });
        context.done(Outcome::Kind::FolderMade, folder);
        return true;
    });
}

void RemoteOperations::ftRemDir(const QString &dir, const QString &names, bool &ok)
{
    if (!m->context.unattended()) {
        carryOut(ok, [&] { return m->removals.removeFolders(dir, splitNames(names)); });
        return;
    }
    carryOut(ok, [&] {
        QString parent;
        QString name;
        sjSplitPath(names, parent, name);
        return m->removals.removeFolder(parent, name);
    });
}

} // namespace venlo
