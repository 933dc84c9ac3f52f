// Listings on the control connection: STAT with a path (RFC 959, 4.1.3), many on the way at a time.
#include "ftp/protocol/FtpClient.h"

#include "ftp/protocol/FtpClientState.h"
#include "ftp/protocol/ListingDialects.h"
#include "ftp/protocol/ListingParser.h"
#include "ftp/protocol/ListingWords.h"

#include <QScopeGuard>

#include <algorithm>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
constexpr qsizetype window = 32;              ///< commands on the way
constexpr qsizetype mostPathBytes = 16'000;   ///< of them: a server's input buffer may be small
constexpr size_t mostEntries = 2000;          ///< servers cut long listings, here without saying so
constexpr size_t mostEntriesAtATime = 20'000; ///< of a call: they are all in memory
constexpr int longestReply = 4 * 1024 * 1024; ///< bytes
constexpr auto unprovenGrace = 5s;
constexpr auto cancelGrace = 1s; ///< for all that is on the way; see ControlChannel::readReply
constexpr int unknownCommand = 500;
constexpr int notImplemented = 502;
constexpr int firstStatus = 211; ///< system, directory and file status
constexpr int lastStatus = 213;

bool isStatus(const Reply &reply)
{
    return reply.code >= firstStatus && reply.code <= lastStatus;
}

/// "drwxr-xr-x 2 ftp ftp 4096 Nov 21 05:10 .": an unreadable directory does not show itself.
bool showsItself(const QByteArray &line, QDate today)
{
    if (!line.startsWith('d') || !line.endsWith(" ."))
        return false;
    const auto entry = readUnixLine(line, today);
    return entry && entry->rawName == ".";
}

/// An entry's line may stand behind a blank, as RFC 959, 4.2, would have it; blanks at its end
/// belong to the name.
QByteArray withoutIndent(const QByteArray &line)
{
    const auto *const entry =
        std::find_if(line.begin(), line.end(), [](char c) { return c != ' '; });
    return entry == line.begin() ? line : line.mid(entry - line.begin());
}
} // namespace

/// What one call asks for and what has come of it.
struct FtpClient::State::StatRun {
    const QList<QByteArray> &paths;
    std::vector<std::optional<Listing>> &shown;
    const std::function<void()> &oneHeard;
    qsizetype ahead; ///< commands that may be on the way
    bool all;        ///< "-a" is asked for
    qsizetype sent = 0;
    qsizetype bytesAhead = 0;
    size_t entries = 0;
    bool endSent = false; ///< the NOOP behind the last STAT

    [[nodiscard]] qsizetype heard() const { return static_cast<qsizetype>(shown.size()); }
    [[nodiscard]] bool allSent() const
    {
        return sent == paths.size() || entries >= mostEntriesAtATime;
    }
    [[nodiscard]] bool allHeard() const { return allSent() && heard() == sent; }
    [[nodiscard]] qsizetype onTheWay() const { return sent - heard() + (endSent ? 1 : 0); }
    [[nodiscard]] QList<QByteArray> next();
    void take(std::optional<Listing> listing);
};

QList<QByteArray> FtpClient::State::StatRun::next()
{
    QList<QByteArray> commands;
    while (!allSent() && onTheWay() < ahead &&
           (onTheWay() == 0 || bytesAhead + paths.at(sent).size() <= mostPathBytes)) {
        bytesAhead += paths.at(sent).size();
        commands.append((all ? "STAT -a " : "STAT ") + paths.at(sent++));
    }
    if (allSent() && !endSent && onTheWay() < ahead) {
        commands.append("NOOP");
        endSent = true;
    }
    return commands;
}

void FtpClient::State::StatRun::take(std::optional<Listing> listing)
{
    bytesAhead -= paths.at(heard()).size();
    entries += listing ? listing->entries.size() : 0;
    shown.push_back(std::move(listing));
    if (oneHeard)
        oneHeard();
}

bool FtpClient::mayBeAskedByStat(const QByteArray &path)
{
    // Servers take the rest for patterns, options or a second path.
    return path.startsWith('/') && std::all_of(path.begin(), path.end(), [](char c) {
               const auto byte = static_cast<unsigned char>(c);
               return byte >= 0x80 || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
                      (c >= '0' && c <= '9') || QByteArrayView("/._-+=@%,").contains(c);
           });
}

std::optional<Listing> FtpClient::State::listingIn(const Reply &reply)
{
    if (!isStatus(reply) || saysListingIsNotWhole(reply.lines.last()))
        return std::nullopt;
    const QDate today = QDate::currentDate();
    ListingParser parser(ListingParser::Source::List, codec, today);
    bool itself = false;
    for (qsizetype i = 1; i + 1 < reply.rawLines.size(); ++i) {
        const QByteArray line = withoutIndent(reply.rawLines.at(i));
        itself = itself || showsItself(line, today);
        parser.addLine(line);
    }
    Listing listing = parser.take();
    if (!itself || !listing.whole || listing.entries.size() > mostEntries)
        return std::nullopt;
    return listing;
}

Result<void> FtpClient::listByStat(const QList<QByteArray> &paths,
                                   std::vector<std::optional<Listing>> &shown,
                                   const std::function<void()> &heard)
{
    shown.clear();
    m->control.setLongestReply(longestReply);
    const auto shortAgain =
        qScopeGuard([this] { m->control.setLongestReply(ReplyParser::maxReply); });
    const qsizetype ahead = m->pace == State::Pace::Single ? 1 : window;
    State::StatRun run{paths, shown, heard, ahead, m->statAll};
    auto ended = m->runStat(run);
    if (!ended)
        shown.clear(); // whose they are is not sure
    return ended;
}

void FtpClient::askStatForAll(bool all)
{
    m->statAll = all;
}

bool FtpClient::knowsStat() const
{
    return !m->statUnknown;
}

Result<void> FtpClient::State::runStat(StatRun &run)
{
    while (true) {
        if (waiter.cancelled())
            return cancelStat(run.onTheWay());
        if (const auto commands = run.next(); !commands.isEmpty()) {
            if (auto gone = control.sendTogether(commands); !gone)
                return gone;
        }
        auto reply = readStat(run);
        if (!reply)
            return reply.error();
        if (run.heard() == run.sent)
            return endStat(reply.value());
        if (reply.value().preliminary() || reply.value().intermediate())
            return outOfPlace(reply.value(), Pace::Single);
        const int code = reply.value().code;
        statKnown = statKnown || isStatus(reply.value());
        statUnknown = !statKnown && (code == unknownCommand || code == notImplemented);
        run.take(listingIn(reply.value()));
    }
}

Result<Reply> FtpClient::State::readStat(const StatRun &run)
{
    if (statProven)
        return control.readReply();
    auto reply =
        control.readReplyWithin(std::min<std::chrono::milliseconds>(unprovenGrace, limits.reply));
    if (!reply && reply.error().kind == ErrorClass::Lost && run.ahead > 1)
        slowDown(Pace::Single, reply.error().words);
    statProven = reply && (run.ahead == 1 || run.heard() > 0); // that was sent behind another
    return reply;
}

/// The reply to NOOP is like none to STAT: it shows that no reply was taken for that of another
/// directory, as when a name holds what looks like the end of one.
Result<void> FtpClient::State::endStat(const Reply &reply)
{
    if (!reply.completion() || isStatus(reply) || control.hasNews())
        return outOfPlace(reply, Pace::Single);
    return {};
}

Error FtpClient::State::cancelStat(qsizetype onTheWay)
{
    const QDeadlineTimer deadline(cancelGrace);
    for (; onTheWay > 0; --onTheWay) {
        const std::chrono::milliseconds left(deadline.remainingTime());
        if (!control.readReplyWithin(left))
            break; // closed: the next operation connects again
    }
    return Error{ErrorClass::Cancelled, QStringLiteral("cancelled"), 0};
}

Result<QDateTime> FtpClient::folderTime(const QByteArray &path)
{
    const auto reply = m->expectCompletion("MLST " + path);
    if (!reply)
        return reply.error();
    for (const QByteArray &line : reply.value().rawLines) {
        const auto shown = readMlsdLine(withoutIndent(line));
        if (shown && shown->entry.time.isValid())
            return shown->entry.time;
    }
    return m->unreadable(reply.value());
}

} // namespace venlo
