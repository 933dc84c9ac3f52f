#include "ftp/RemoteRemovals.h"

#include "db/DbError.h"
#include "ftp/Session.h"
#include "shared/NameList.h"
#include "shared/RemotePath.h"

namespace venlo
{

namespace
{
constexpr int maxDepth = 128;
using End = OperationContext::End;
} // namespace

RemoteRemovals::RemoteRemovals(OperationContext &context) : m_context(context) {}

OperationContext::Attempted RemoteRemovals::deleteOne(const QString &dir, const QString &name)
{
    return m_context.attemptOnce(remoteChild(dir, name), [&]() -> Result<void> {
        if (auto current = m_context.stepInto(dir); !current)
            return current;
        return m_context.session.client().removeFile(m_context.cache.rawName(dir, name));
    });
}

OperationContext::Attempted RemoteRemovals::removeOne(const QString &dir, const QString &name)
{
    return m_context.attemptOnce(remoteChild(dir, name), [&]() -> Result<void> {
        if (auto current = m_context.stepInto(dir); !current)
            return current;
        return m_context.session.client().removeDirectory(m_context.cache.rawName(dir, name));
    });
}

bool RemoteRemovals::deleteFiles(const QString &path, const QStringList &names)
{
    if (!m_context.cache.refusesPath(path))
        m_context.loadIfAbsent(path);
    if (!m_context.enter(path, false))
        return false;
    const QString dir = m_context.cache.normalised(path);
    return deleteEach(dir, names, QStringLiteral("FtpDeleteFile Err: "));
}

bool RemoteRemovals::deletePath(const QString &path)
{
    QString dir;
    QString name;
    sjSplitPath(path, dir, name);
    OperationContext::Attempted attempted;
    if (name.isEmpty() || !path.startsWith(QLatin1Char('/')) || m_context.cache.refusesPath(path)) {
        attempted = {End::GivenUp,
                     {ErrorClass::Local, QStringLiteral("このﾊﾟｽは削除できません"), 0}};
    } else if (m_context.mayGoOn()) {
        attempted = m_context.attemptOnce(path, [&] {
            return m_context.session.client().removeFile(m_context.cache.rawPath(path));
        });
    } else {
        attempted.end = End::Stop;
    }
    if (attempted.end == End::Stop)
        return false;
    if (attempted.end == End::GivenUp) {
        m_context.giveUp(QStringLiteral("FtpDeleteFile Err: ") + path + QStringLiteral(" Delete"),
                         path, {}, attempted.error);
        return true;
    }
    m_context.status(path + QStringLiteral(" Deleted･･･"));
    m_context.keepCache(path, [&] {
        m_context.cache.unfinished().end(m_context.session.currentSite(), dir, name);
    });
    m_context.done(Outcome::Kind::DeletedRemote, path);
    return true;
}

bool RemoteRemovals::removeFolders(const QString &path, const QStringList &names)
{
    for (const QString &name : names) {
        if (!name.isEmpty() && !removeFolder(path, name))
            return false;
    }
    return true;
}

bool RemoteRemovals::removeFolder(const QString &path, const QString &name)
{
    if (!m_context.mayGoOn())
        return false;
    const bool refused = m_context.cache.refusesPath(path);
    const QString dir = refused ? path : m_context.cache.normalised(path);
    const QString folder = remoteChild(dir, name);
    const QString logLine =
        QStringLiteral("FtpRemoveDirectory Err:") + folder + QStringLiteral(" RemoveDirectory");
    // A name that is no name would empty the directory itself or another one.
    if (refused || name.isEmpty() || name == QLatin1String(".") || name == QLatin1String("..") ||
        name.contains(QLatin1Char('/')) || m_context.cache.refusesPath(folder)) {
        m_context.giveUp(logLine, folder, {},
                         {ErrorClass::Local, QStringLiteral("このﾌｫﾙﾀﾞは削除できません"), 0});
        return true;
    }
    m_emptied = 0;
    if (!sjEmpDir(folder, 0) || !m_context.enter(dir, false))
        return false;
    const auto attempted = removeOne(dir, name);
    if (attempted.end == End::Stop)
        return false;
    if (attempted.end == End::GivenUp)
        m_context.giveUp(logLine, folder, {}, attempted.error);
    else
        removed(dir, name);
    return true;
}

bool RemoteRemovals::sjEmpDir(const QString &dir, int depth)
{
    if (++m_emptied > m_context.session.limits().maxTreeFolders) {
        m_context.giveUp(QStringLiteral("FtpRemoveDirectory Err:") + dir +
                             QStringLiteral(" RemoveDirectory"),
                         dir, {}, {ErrorClass::Local, QStringLiteral("ﾌｫﾙﾀﾞの数が多すぎます"), 0});
        return false;
    }
    if (depth > maxDepth) {
        m_context.note(QStringLiteral("nested too deeply: ") + dir);
        return true;
    }
    if (!m_context.mayGoOn())
        return false;
    if (!m_context.enter(dir, false)) {
        // A folder that lets nobody in may still go; the rest goes on in any case.
        const Error &error = m_context.cache.currentDirectory().lastError();
        return m_context.mayGoOn() && error.kind != ErrorClass::Lost &&
               error.kind != ErrorClass::Cancelled;
    }
    // Both lists first: a directory whose last row goes would be listed anew.
    QString folders;
    QString files;
    namesOf(dir, folders, files);
    if (!deleteEach(dir, splitNames(files), QStringLiteral("sjEmpDir DeleteFile Err: ")))
        return false;
    for (const QString &folder : splitNames(folders)) {
        if (!removeInside(dir, folder, depth))
            return false;
    }
    return true;
}

void RemoteRemovals::namesOf(const QString &dir, QString &folders, QString &files)
{
    // Unattended, what was not listed before the comparison was not compared either.
    if (m_context.unattended()) {
        m_context.cache.cachedNames(dir, folders, files);
        return;
    }
    try {
        m_context.cache.caDirNames(dir, folders, files);
    } catch (const DbError &error) {
        m_context.note(QStringLiteral("not wholly cached: ") + dir + QStringLiteral(": ") +
                       error.words());
        m_context.keepCache(dir, [&] { m_context.cache.caDirNames(dir, folders, files); });
    }
}

bool RemoteRemovals::deleteEach(const QString &dir, const QStringList &names,
                                const QString &logWords)
{
    for (const QString &name : names) {
        if (name.isEmpty())
            continue;
        if (!m_context.mayGoOn())
            return false;
        const QString file = remoteChild(dir, name);
        const auto attempted = deleteOne(dir, name);
        if (attempted.end == End::Stop)
            return false;
        if (attempted.end == End::GivenUp) {
            m_context.giveUp(logWords + file + QStringLiteral(" Delete"), file, {},
                             attempted.error);
            continue;
        }
        m_context.status(file + QStringLiteral(" Delete･･･"));
        m_context.keepRows(file, [&] { m_context.cache.forgetFile(dir, name); });
        m_context.done(Outcome::Kind::DeletedRemote, file);
    }
    return true;
}

bool RemoteRemovals::removeInside(const QString &dir, const QString &folder, int depth)
{
    if (!sjEmpDir(remoteChild(dir, folder), depth + 1))
        return false;
    const auto attempted = removeOne(dir, folder);
    if (attempted.end == End::Done)
        removed(dir, folder);
    // A refusal makes the removal of the folder above fail, which is the one that is logged.
    return attempted.end != End::Stop;
}

void RemoteRemovals::removed(const QString &dir, const QString &name)
{
    const QString folder = remoteChild(dir, name);
    m_context.status(folder + QStringLiteral(" RemoveDirectory･･･"));
    m_context.keepRows(folder, [&] { m_context.cache.forgetFolder(dir, name); });
    m_context.done(Outcome::Kind::FolderRemovedRemote, folder);
}

} // namespace venlo
