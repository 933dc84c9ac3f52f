#include "ftp/RemoteDownloads.h"

#include "db/DisplayFormat.h"
#include "ftp/LocalPath.h"
#include "ftp/ProgressThrottle.h"
#include "ftp/TemporaryFile.h"
#include "platform/EntryLook.h"
#include "platform/FileNames.h"
#include "platform/Files.h"
#include "platform/TemporaryName.h"
#include "shared/RemotePath.h"

#include <QDir>
#include <QScopeGuard>

namespace venlo
{

namespace
{
constexpr double year1970 = 25569; // day count; an entry without a time has a far earlier one

/// A cached wall clock as a time of this machine.
QDateTime localTime(double day)
{
    const QDateTime clock = fromDayCount(day);
    return {clock.date(), clock.time(), Qt::LocalTime};
}

/// What must not be replaced by a file.
Result<void> checkTarget(const QString &target)
{
    if (const QString why = whyAnotherEntry(target); !why.isEmpty())
        return Error{ErrorClass::Local, why, 0};
    const EntryLook there(target);
    if (there.isDir() && !there.isSymbolicLink())
        return Error{ErrorClass::Local, QStringLiteral("同じ名前のﾌｫﾙﾀﾞがあります"), 0};
    if (there.exists() && !there.isWritable())
        return Error{ErrorClass::Local, QStringLiteral("書き込みが禁止されています"), 0};
    return {};
}
} // namespace

RemoteDownloads::RemoteDownloads(OperationContext &context, const QString &userDataFolder)
    : m_context(context), m_journal(userDataFolder), m_start(QDateTime::currentDateTime())
{
}

bool RemoteDownloads::getFiles(const QString &path, const QStringList &names,
                               const QString &localFolder)
{
    const QString folder = withoutTrailingSeparator(localFolder);
    // A folder that cannot be made is what each of its files then fails with.
    if (const auto made = sjLocFold(folder); !made)
        m_context.note(QStringLiteral("%1: %2").arg(folder, made.error().words));
    return getInto(SteadyFolder(folder), path, names, {});
}

bool RemoteDownloads::getInto(const SteadyFolder &local, const QString &path,
                              const QStringList &names, const CachedFiles &known)
{
    const QString &folder = local.path();
    if (!m_context.enter(path, false))
        return false;
    const QString dir = m_context.cache.normalised(path);
    if (!m_swept.contains(folder)) {
        m_swept.insert(folder);
        sweepTemporaryNames(folder, m_start, m_journal.live());
    }
    const int before = m_replaced;
    const auto settle = qScopeGuard([this, before, &folder] {
        m_context.session.catchUp();
        m_journal.end();
        if (m_replaced != before)
            flushFolder(folder.isEmpty() ? QDir::rootPath() : folder);
    });
    for (const QString &name : names) {
        if (name.isEmpty())
            continue;
        if (!m_context.mayGoOn())
            return false;
        if (name.compare(m_arrivedName, Qt::CaseInsensitive) == 0) // the same file to some systems
            m_context.session.catchUp();
        const Item item = itemOf(dir, name, folder, known);
        const Decision decision = decide(item);
        if (decision == Decision::Cancel)
            return false;
        if (decision == Decision::Skip)
            m_context.skipped(item.remote, item.target, {});
        else if (!getFile(local, item))
            return false;
    }
    return true;
}

RemoteDownloads::Item RemoteDownloads::itemOf(const QString &dir, const QString &name,
                                              const QString &folder, const CachedFiles &known)
{
    Item item{dir, name, remoteChild(dir, name), folder, localChild(folder, name)};
    item.there = FileStamp(item.target);
    const auto row = known.constFind(name);
    if (row != known.constEnd() && !row->dayOnly) {
        item.cached = true;
        item.day = row->day;
        item.size = row->size;
    } else { // also where MLSD lists now: the rows may be an older LIST's
        item.cached = m_context.cache.refinedFile(dir, name, item.day, item.size);
    }
    return item;
}

RemoteDownloads::Decision RemoteDownloads::decide(const Item &item)
{
    OverwriteMode &standing = m_context.standingAnswer;
    if (m_context.unattended())
        return Decision::Fetch;
    if (standing == OverwriteMode::CancelAll)
        return Decision::Cancel;
    const EntryLook existing(item.target);
    // What cannot be replaced is refused without a question.
    if (standing == OverwriteMode::OverwriteAll || !existing.exists() || existing.isDir() ||
        !whyAnotherEntry(item.target).isEmpty())
        return Decision::Fetch;
    if (standing == OverwriteMode::KeepNewer) {
        // Without a time to compare the existing file is the one to keep.
        const bool older = item.cached && existing.lastModified() <= localTime(item.day);
        return older ? Decision::Fetch : Decision::Skip;
    }
    OverwriteQuestion question{item.name,
                               FormatSizeText(existing.size()),
                               FormatDateText(existing.lastModified()),
                               {},
                               {}};
    if (item.cached) {
        question.newSize = FormatSizeText(item.size + 1); // as the panes show it
        question.newDate = FormatDateText(fromDayCount(item.day));
    }
    const OverwriteAnswer answer = m_context.askOverwrite(question);
    standing = answer.mode;
    if (standing == OverwriteMode::CancelAll)
        return Decision::Cancel;
    return answer.overwrite ? Decision::Fetch : Decision::Skip;
}

bool RemoteDownloads::getFile(const SteadyFolder &folder, const Item &item)
{
    Arrived arrived;
    const auto attempted =
        m_context.fiveAttempts(item.remote, [&] { return fetch(folder, item, arrived); });
    if (attempted.end == OperationContext::End::Stop)
        return false;
    if (attempted.end == OperationContext::End::GivenUp) {
        giveUpFile(item, attempted.error);
    } else if (arrived.size >= TemporaryFile::large) {
        putInPlace(folder, item, arrived);
    } else { // the disk need not hold up the next one
        m_arrivedName = item.name;
        m_context.session.whileServerWorks(
            [this, &folder, item, arrived] { putInPlace(folder, item, arrived); });
    }
    return true;
}

void RemoteDownloads::putInPlace(const SteadyFolder &folder, const Item &item,
                                 const Arrived &arrived)
{
    if (const auto placed = place(folder, item, arrived); !placed) {
        giveUpFile(item, placed.error());
        return;
    }
    m_context.status(item.remote + QStringLiteral(" > ") + item.folder +
                     QStringLiteral(" DownLoading･･･"));
    m_context.done(Outcome::Kind::Downloaded, item.remote, item.target);
}

Result<void> RemoteDownloads::place(const SteadyFolder &folder, const Item &item,
                                    const Arrived &arrived)
{
    Session &session = m_context.session;
    if (auto kept = arrived.file->flush([&session](const auto &work) { session.aside(work); });
        !kept)
        return kept;
    if (folder.leadsAway())
        return Error{ErrorClass::Local, SteadyFolder::words(), 0};
    // The person may have saved one meanwhile.
    if (const FileStamp now(item.target); now.isFile() && now != item.there)
        return Error{ErrorClass::Local, QStringLiteral("受信中にﾌｧｲﾙが変更されました"), 0};
    bool timeSet = true;
    auto replaced = arrived.file->replace(item.target, arrived.size, arrived.time, timeSet);
    if (!timeSet)
        m_context.note(QStringLiteral("time not set: ") + item.target);
    if (replaced)
        ++m_replaced;
    return replaced;
}

void RemoteDownloads::giveUpFile(const Item &item, const Error &error)
{
    m_context.giveUp(QStringLiteral("FtpGetFile Err:") + item.remote + QStringLiteral(" > ") +
                         item.folder + QStringLiteral(" DownLoad"),
                     item.remote, item.target, error);
}

Result<void> RemoteDownloads::fetch(const SteadyFolder &folder, const Item &item, Arrived &arrived)
{
    if (const QString why = whyNotAFileName(item.name); !why.isEmpty())
        return Error{ErrorClass::Local, why, 0};
    if (auto free = checkTarget(item.target); !free)
        return free;
    const auto temporary = std::make_shared<TemporaryFile>(m_journal, item.folder);
    if (auto opened = temporary->open(); !opened)
        return opened;
    if (folder.leadsAway())
        return Error{ErrorClass::Local, SteadyFolder::words(), 0};
    if (auto current = m_context.stepInto(item.dir); !current)
        return current;
    const QByteArray raw = m_context.cache.rawName(item.dir, item.name);
    const qint64 expected = item.cached ? item.size : -1;
    ProgressThrottle meter(m_context.frontEnd, item.name, expected);
    const auto received = m_context.session.client().retrieve(
        raw, temporary->device(), [&meter](qint64 done) { meter.moved(done); }, expected);
    if (!received)
        return received.error();
    if (auto whole = checkSize(item, raw, received.value()); !whole)
        return whole;
    meter.finished(received.value());
    arrived = {temporary, received.value(), timeFor(item, raw)};
    return {};
}

Result<void> RemoteDownloads::checkSize(const Item &item, const QByteArray &raw, qint64 received)
{
    if (item.cached && received == item.size)
        return {};
    const Error cut{ErrorClass::Retry, QStringLiteral("受信した大きさが一致しません"), 0};
    const auto size = m_context.session.client().size(raw);
    if (size)
        return size.value() == received ? Result<void>() : Result<void>(cut);
    if (size.error().kind != ErrorClass::Refused)
        return size.error();
    // Without SIZE only the listing can tell; a link's listing shows less than there is.
    return item.cached && received < item.size ? Result<void>(cut) : Result<void>();
}

QDateTime RemoteDownloads::timeFor(const Item &item, const QByteArray &raw)
{
    if (item.cached)
        return item.day >= year1970 ? localTime(item.day) : QDateTime();
    if (!m_context.session.client().hasMdtm())
        return {};
    const auto utc = m_context.session.client().modificationTime(raw);
    return utc ? utc.value() : QDateTime();
}

} // namespace venlo
