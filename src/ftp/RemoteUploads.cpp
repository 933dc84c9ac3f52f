#include "ftp/RemoteUploads.h"

#include "db/DisplayFormat.h"
#include "ftp/LocalPath.h"
#include "ftp/ProgressThrottle.h"
#include "ftp/Session.h"
#include "ftp/TemporaryName.h"
#include "shared/RemotePath.h"

#include <QFile>
#include <QFileInfo>

namespace venlo
{

namespace
{
constexpr int maxChanges = 5;

/// Lock files of databases belong to this machine.
bool isLockFile(const QString &name)
{
    return name.endsWith(QLatin1String(".ldb"), Qt::CaseInsensitive);
}

/// Size and time of a file, to see whether it changed.
struct Stamp {
    qint64 size = -1;
    QDateTime modified;

    explicit Stamp(const QString &path)
    {
        const QFileInfo info(path);
        if (info.exists()) {
            size = info.size();
            modified = info.lastModified();
        }
    }
    bool operator==(const Stamp &) const = default;
};
} // namespace

RemoteUploads::RemoteUploads(OperationContext &context) : m_context(context) {}

bool RemoteUploads::putPath(const QString &path, const QString &local)
{
    if (!m_context.enter(path, true))
        return false;
    const QString dir = m_context.cache.normalised(path);
    const QString name = localName(local);
    const Item item{local, dir, name, remoteChild(dir, name)};
    if (isLockFile(name) || isTemporaryName(name)) {
        leaveOut(item);
        return true;
    }
    if (!m_context.mayGoOn())
        return false;
    m_context.status(local + QStringLiteral(" Uploading･･･"));
    OperationContext::AskAgain askAgain;
    if (!m_context.unattended()) {
        askAgain = [this, &local] {
            return m_context.frontEnd.retryOrCancel(local + QStringLiteral(" Put File Err"));
        };
    }
    const auto attempted = m_context.fiveAttempts(
        item.remote, [this, &item] { return send(item); }, askAgain);
    if (attempted.end == OperationContext::End::Stop)
        return false;
    if (attempted.end == OperationContext::End::Done)
        sent(item);
    else
        m_context.giveUp(QStringLiteral("FtpPutFile Err:") + local + QStringLiteral(" Upload"),
                         local, item.remote, attempted.error);
    return true;
}

bool RemoteUploads::putLines(const QString &path, const std::vector<UploadLine> &lines,
                             const QString &localFolder)
{
    if (!m_context.enter(path, true))
        return false;
    const QString dir = m_context.cache.normalised(path);
    const QString folder = withoutTrailingSeparator(localFolder);
    m_context.loadIfAbsent(dir);
    for (const UploadLine &line : lines) {
        if (line.name.isEmpty())
            continue;
        if (!m_context.mayGoOn() || !putLine(dir, line, folder))
            return false;
    }
    return true;
}

bool RemoteUploads::putLine(const QString &dir, const UploadLine &line, const QString &folder)
{
    const Item item{localChild(folder, line.name), dir, line.name, remoteChild(dir, line.name)};
    if (line.name.startsWith(QLatin1Char('.')) || isLockFile(line.name)) {
        leaveOut(item);
        return true;
    }
    const Decision decision = decide(item, line);
    if (decision == Decision::Cancel)
        return false;
    if (decision == Decision::Skip) {
        m_context.skipped(item.path, item.remote, {});
        return true;
    }
    const QString words = item.path + QStringLiteral(" > ") + dir;
    m_context.status(words + QStringLiteral(" UpLoading･･･"));
    const auto attempted =
        m_context.fiveAttempts(item.remote, [this, &item] { return send(item); });
    if (attempted.end == OperationContext::End::Stop)
        return false;
    if (attempted.end == OperationContext::End::Done)
        sent(item);
    else
        m_context.giveUp(QStringLiteral("FtpPutFile Err: ") + words + QStringLiteral(" UpLoad"),
                         item.path, item.remote, attempted.error);
    return true;
}

RemoteUploads::Decision RemoteUploads::decide(const Item &item, const UploadLine &line)
{
    const OverwriteMode standing = m_context.standingAnswer;
    if (!m_context.unattended()) {
        if (standing == OverwriteMode::CancelAll)
            return Decision::Cancel;
        if (standing == OverwriteMode::OverwriteAll)
            return Decision::Send;
    }
    double day = 0;
    qint64 size = 0;
    if (!m_context.cache.cachedFile(item.dir, item.name, day, size))
        return Decision::Send;
    const QDateTime existing = fromDayCount(day);
    const QString existingDate = FormatDateText(existing);
    if (m_context.unattended())
        return line.dateText > existingDate ? Decision::Send : Decision::Skip;
    if (standing == OverwriteMode::KeepNewer) {
        const QDateTime local = QFileInfo(item.path).lastModified();
        const QDateTime localClock(local.date(), local.time(), Qt::UTC);
        return existing > localClock ? Decision::Skip : Decision::Send;
    }
    if (existingDate < line.dateText)
        return Decision::Send;
    return askPerson(line, existingDate, size);
}

RemoteUploads::Decision RemoteUploads::askPerson(const UploadLine &line,
                                                 const QString &existingDate, qint64 existingSize)
{
    const OverwriteAnswer answer = m_context.frontEnd.askOverwrite(
        {line.name, FormatSizeText(existingSize + 1), existingDate, line.sizeText, line.dateText});
    m_context.standingAnswer = answer.mode;
    if (answer.mode == OverwriteMode::CancelAll)
        return Decision::Cancel;
    return answer.overwrite ? Decision::Send : Decision::Skip;
}

Result<void> RemoteUploads::send(const Item &item)
{
    for (int change = 0; change < maxChanges; ++change) {
        const auto unchanged = sendOnce(item);
        if (!unchanged)
            return unchanged.error();
        if (unchanged.value())
            return {};
        m_context.note(QStringLiteral("%1 changed while it was sent").arg(item.path));
        if (!m_context.mayGoOn())
            return Error{ErrorClass::Cancelled, {}, 0};
    }
    return Error{ErrorClass::Local, QStringLiteral("送信中にﾌｧｲﾙが変更されました"), 0};
}

/// The value tells whether the file is the one that was sent.
Result<bool> RemoteUploads::sendOnce(const Item &item)
{
    // Opening anything else than a file may wait for ever.
    if (!QFileInfo(item.path).isFile())
        return Error{ErrorClass::Local, QStringLiteral("ﾌｧｲﾙがありません"), 0};
    QFile file(item.path);
    const Stamp before(item.path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{ErrorClass::Local, file.errorString(), 0};
    if (auto current = m_context.stepInto(item.dir); !current)
        return current.error();
    const QByteArray raw = m_context.cache.rawName(item.dir, item.name);
    ProgressThrottle meter(m_context.frontEnd, item.name, before.size);
    const auto stored =
        m_context.session.client().store(raw, file, [&meter](qint64 done) { meter.moved(done); });
    if (!stored) {
        // A file that is being rewritten may break off under the reader's hands.
        if (stored.error().kind == ErrorClass::Local && before != Stamp(item.path))
            return false;
        return stored.error();
    }
    meter.finished(stored.value());
    const bool unchanged = stored.value() == before.size && before == Stamp(item.path);
    if (!unchanged)
        return false;
    if (auto set = setTime(item, raw, file); !set)
        return set.error();
    return before == Stamp(item.path);
}

/// Gives the stored file its local time, so that both compare equal afterwards. What the server
/// refuses stays as it is; a connection that broke here leaves it unknown, and the file goes again.
Result<void> RemoteUploads::setTime(const Item &item, const QByteArray &raw, QFile &file)
{
    FtpClient &client = m_context.session.client();
    if (!client.canSetTime())
        return {};
    auto set =
        client.setModificationTime(raw, file.fileTime(QFileDevice::FileModificationTime).toUTC());
    if (set || set.error().kind == ErrorClass::Lost)
        return set;
    m_context.note(QStringLiteral("time of %1 not set: %2").arg(item.remote, set.error().words));
    return {};
}

void RemoteUploads::sent(const Item &item)
{
    m_context.keepCache(item.remote,
                        [&] { m_context.cache.caAddFile(item.path, item.dir, item.name); });
    m_context.done(Outcome::Kind::Uploaded, item.path, item.remote);
}

void RemoteUploads::leaveOut(const Item &item)
{
    m_context.note(QStringLiteral("never uploaded: ") + item.path);
    m_context.skipped(item.path, item.remote, {});
}

} // namespace venlo
