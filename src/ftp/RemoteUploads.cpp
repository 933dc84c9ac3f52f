#include "ftp/RemoteUploads.h"

#include "db/DisplayFormat.h"
#include "db/TextFold.h"
#include "ftp/ListingTime.h"
#include "ftp/LocalPath.h"
#include "ftp/Session.h"
#include "platform/EntryLook.h"
#include "platform/TemporaryName.h"
#include "shared/RemotePath.h"

#include <algorithm>

#include <QFile>
#include <QScopeGuard>

namespace venlo
{

namespace
{
/// Lock files of databases belong to this machine.
bool isLockFile(const QString &name)
{
    return name.endsWith(QLatin1String(".ldb"), Qt::CaseInsensitive);
}

/// Day count of the wall clock a listing would show for a time.
double dayOfUtc(const QDateTime &utc)
{
    ListedEntry entry;
    entry.time = utc;
    entry.utc = true;
    return listingDay(wallClockOf(entry, std::nullopt), presentLocalOffset());
}
/// Whether the store takes two names for one.
bool isSame(const QString &left, const QString &right)
{
    return compareFolded(left.toUtf8().toStdString(), right.toUtf8().toStdString()) == 0;
}
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
    if (!m_context.unattended())
        m_context.loadIfAbsent(dir); // or its one row would look like all of them
    m_context.status(local + QStringLiteral(" Uploading･･･"));
    OperationContext::AskAgain askAgain;
    if (!m_context.unattended()) {
        askAgain = [this, &local] {
            return m_context.frontEnd.retryOrCancel(local + QStringLiteral(" Put File Err"));
        };
    }
    FileStamp stamp;
    const auto attempted = m_context.fiveAttempts(item.remote, sendStep(item, stamp), askAgain);
    if (attempted.end == OperationContext::End::Stop)
        return false;
    if (attempted.end == OperationContext::End::Done)
        sent(item, stamp);
    else
        m_context.giveUp(QStringLiteral("FtpPutFile Err:") + local + QStringLiteral(" Upload"),
                         local, item.remote, attempted.error);
    return true;
}

bool RemoteUploads::putLines(const QString &path, const std::vector<UploadLine> &lines,
                             const SteadyFolder &localFolder)
{
    if (!m_context.enter(path, true))
        return false;
    const QString dir = m_context.cache.normalised(path);
    m_context.loadIfAbsent(dir);
    const bool unsure = isUnsure(dir);
    const auto caughtUp = qScopeGuard([this] { m_context.session.catchUp(); });
    for (const UploadLine &line : lines) {
        if (line.name.isEmpty())
            continue;
        const Item item{localChild(localFolder.path(), line.name),
                        dir,
                        line.name,
                        remoteChild(dir, line.name),
                        unsure,
                        &localFolder};
        if (!m_context.mayGoOn() || !putLine(item, line))
            return false;
    }
    return true;
}

bool RemoteUploads::putLine(const Item &item, const UploadLine &line)
{
    if (line.name.startsWith(QLatin1Char('.')) || isLockFile(line.name)) {
        leaveOut(item);
        return true;
    }
    if (isSame(m_sentName, line.name)) // to the cache
        m_context.session.catchUp();
    const Decision decision = decide(item, line);
    if (decision == Decision::Skip)
        m_context.skipped(item.path, item.remote, {});
    if (decision != Decision::Send)
        return decision != Decision::Cancel;
    m_context.status(item.path + QStringLiteral(" > ") + item.dir +
                     QStringLiteral(" UpLoading･･･"));
    FileStamp stamp;
    const auto attempted = m_context.fiveAttempts(item.remote, sendStep(item, stamp));
    if (attempted.end == OperationContext::End::Stop)
        return false;
    if (attempted.end == OperationContext::End::Done) {
        m_sentName = item.name;
        m_context.session.whileServerWorks([this, item, stamp] { sent(item, stamp); });
    } else {
        giveUpLine(item, attempted.error);
    }
    return true;
}

void RemoteUploads::giveUpLine(const Item &item, const Error &error)
{
    m_context.giveUp(QStringLiteral("FtpPutFile Err: ") + item.path + QStringLiteral(" > ") +
                         item.dir + QStringLiteral(" UpLoad"),
                     item.path, item.remote, error);
}

RemoteUploads::Decision RemoteUploads::decide(const Item &item, const UploadLine &line)
{
    if (!m_context.unattended()) {
        if (m_context.standingAnswer == OverwriteMode::CancelAll)
            return Decision::Cancel;
        if (m_context.standingAnswer == OverwriteMode::OverwriteAll)
            return Decision::Send;
    } else if (m_context.cache.unfinished().noted(m_context.session.currentSite(), item.dir,
                                                  item.name)) {
        return Decision::Send; // the remnant is newer than the file, and no good
    }
    double day = 0;
    qint64 size = 0;
    std::optional<Existing> existing;
    if (m_context.cache.cachedFile(item.dir, item.name, day, size)) {
        if (!hidesSeconds(day, line))
            return compare(item, line, {day, size});
        if (askServer(item, existing).end == OperationContext::End::Stop)
            return Decision::Cancel;
        if (existing && existing->day)
            day = *existing->day;
        return compare(item, line, {day, size});
    }
    if (!item.unsure)
        return Decision::Send;
    const auto asked = askServer(item, existing);
    if (asked.end == OperationContext::End::Stop)
        return Decision::Cancel;
    if (asked.end == OperationContext::End::Done)
        return existing ? compare(item, line, *existing) : Decision::Send;
    giveUpLine(item, asked.error);
    return Decision::GivenUp;
}

bool RemoteUploads::hidesSeconds(double day, const UploadLine &line) const
{
    const FtpClient &client = m_context.session.client();
    if (!client.listsByMlsd() || !client.hasMdtm())
        return false;
    const QDateTime there = fromDayCount(day);
    const QString date = FormatDateText(there);
    return there.time().second() == 0 && date != line.dateText &&
           line.dateText.startsWith(FormatMinuteText(there));
}

RemoteUploads::Decision RemoteUploads::compare(const Item &item, const UploadLine &line,
                                               const Existing &existing)
{
    if (!existing.day) {
        if (!m_context.unattended())
            return askPerson(line, existing);
        giveUpLine(item,
                   {ErrorClass::Local, QStringLiteral("ｻｰﾊﾞｰのﾌｧｲﾙと日付を比較できません"), 0});
        return Decision::GivenUp;
    }
    const QDateTime there = fromDayCount(*existing.day);
    const QString date = FormatDateText(there);
    if (m_context.unattended())
        return line.dateText > date ? Decision::Send : Decision::Skip;
    if (m_context.standingAnswer == OverwriteMode::KeepNewer) {
        const QDateTime local = EntryLook(item.path).lastModified();
        const QDateTime localClock(local.date(), local.time(), Qt::UTC);
        return there > localClock ? Decision::Skip : Decision::Send;
    }
    if (date < line.dateText)
        return Decision::Send;
    return askPerson(line, existing);
}

RemoteUploads::Decision RemoteUploads::askPerson(const UploadLine &line, const Existing &existing)
{
    // Without a time to compare the existing file is the one to keep.
    if (m_context.standingAnswer == OverwriteMode::KeepNewer)
        return Decision::Skip;
    const QString size = existing.size < 0 ? QString() : FormatSizeText(existing.size + 1);
    const QString date = existing.day ? FormatDateText(fromDayCount(*existing.day)) : QString();
    const OverwriteAnswer answer =
        m_context.askOverwrite({line.name, size, date, line.sizeText, line.dateText});
    m_context.standingAnswer = answer.mode;
    if (answer.mode == OverwriteMode::CancelAll)
        return Decision::Cancel;
    return answer.overwrite ? Decision::Send : Decision::Skip;
}

bool RemoteUploads::isUnsure(const QString &dir)
{
    const auto marks = m_context.cache.incompleteUnder(dir);
    return std::any_of(marks.begin(), marks.end(), [&dir](const auto &mark) {
        return mark.dir.compare(dir, Qt::CaseInsensitive) == 0;
    });
}

OperationContext::Attempted RemoteUploads::askServer(const Item &item,
                                                     std::optional<Existing> &existing)
{
    return m_context.attemptOnce(item.remote, [&] { return askOnce(item, existing); });
}

Result<void> RemoteUploads::askOnce(const Item &item, std::optional<Existing> &existing)
{
    constexpr int noSuchFile = 550;
    existing.reset();
    if (auto current = m_context.stepInto(item.dir); !current)
        return current;
    FtpClient &client = m_context.session.client();
    const QByteArray raw = m_context.cache.rawName(item.dir, item.name);
    if (client.hasMdtm()) {
        const auto utc = client.modificationTime(raw);
        if (utc) {
            existing = Existing{dayOfUtc(utc.value()), -1};
            return {};
        }
        if (utc.error().kind != ErrorClass::Refused)
            return utc.error();
        if (utc.error().replyCode == noSuchFile)
            return {};
    }
    const auto size = client.size(raw);
    if (size)
        existing = Existing{std::nullopt, size.value()};
    else if (size.error().kind != ErrorClass::Refused)
        return size.error();
    else if (size.error().replyCode != noSuchFile)
        existing = Existing(); // it may be there, and nothing tells
    return {};
}

void RemoteUploads::leaveOut(const Item &item)
{
    m_context.note(QStringLiteral("never uploaded: ") + item.path);
    m_context.skipped(item.path, item.remote, {});
}

} // namespace venlo
