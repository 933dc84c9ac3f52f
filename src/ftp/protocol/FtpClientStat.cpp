// Listings on the control connection: STAT with a path (RFC 959, 4.1.3), many on the way at a time.
#include "ftp/protocol/FtpClient.h"

#include "ftp/protocol/FtpClientState.h"
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
constexpr int mostEntries = 2000;             ///< servers cut long listings, here without saying so
constexpr int longestReply = 4 * 1024 * 1024; ///< bytes
constexpr auto unprovenGrace = 5s;

/// "drwxr-xr-x 2 ftp ftp 4096 Nov 21 05:10 .": an unreadable directory does not show itself.
bool showsItself(const QByteArray &line)
{
    return line.startsWith('d') && line.endsWith(" .");
}
} // namespace

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
    if (!reply.completion() || reply.rawLines.size() < 3 ||
        reply.rawLines.size() > mostEntries + 2 || saysListingIsNotWhole(reply.lines.last()))
        return std::nullopt;
    ListingParser parser(ListingParser::Source::List, codec, QDate::currentDate());
    bool itself = false;
    for (qsizetype i = 1; i + 1 < reply.rawLines.size(); ++i) {
        QByteArray line = reply.rawLines.at(i);
        if (line.startsWith(' ')) // RFC 959, 4.2, would have it so
            line = line.trimmed();
        itself = itself || showsItself(line);
        parser.addLine(line);
    }
    Listing listing = parser.take();
    if (!itself || !listing.whole)
        return std::nullopt;
    return listing;
}

Result<void> FtpClient::listByStat(const QList<QByteArray> &paths,
                                   std::vector<std::optional<Listing>> &shown)
{
    const qsizetype ahead = m->pace == State::Pace::Single ? 1 : window;
    m->control.setLongestReply(longestReply);
    const auto shortAgain =
        qScopeGuard([this] { m->control.setLongestReply(ReplyParser::maxReply); });
    qsizetype sent = 0;
    qsizetype bytesAhead = 0;
    while (static_cast<qsizetype>(shown.size()) < paths.size()) {
        const auto heard = static_cast<qsizetype>(shown.size());
        QList<QByteArray> commands;
        while (sent < paths.size() && sent < heard + ahead && !m->waiter.cancelled() &&
               (sent == heard || bytesAhead + paths.at(sent).size() <= mostPathBytes)) {
            bytesAhead += paths.at(sent).size();
            commands.append("STAT " + paths.at(sent++));
        }
        if (sent == heard)
            return Error{ErrorClass::Cancelled, QStringLiteral("cancelled"), 0};
        if (!commands.isEmpty()) {
            if (auto gone = m->control.sendTogether(commands); !gone)
                return gone;
        }
        auto listing = m->readStat(ahead > 1);
        if (!listing)
            return listing.error();
        bytesAhead -= paths.at(heard).size();
        shown.push_back(std::move(listing.value()));
    }
    return {};
}

Result<std::optional<Listing>> FtpClient::State::readStat(bool ahead)
{
    const auto grace = std::min<std::chrono::milliseconds>(unprovenGrace, limits.reply);
    const bool unproven = ahead && !statProven;
    auto reply = unproven ? control.readReplyWithin(grace) : control.readReply();
    if (!reply) {
        if (unproven && reply.error().kind == ErrorClass::Lost)
            slowDown(Pace::Single, reply.error().words);
        return reply.error();
    }
    // 1yz is no reply to STAT, 226 and 229 are those of something else.
    const int code = reply.value().code;
    if (reply.value().preliminary() || reply.value().intermediate() ||
        (reply.value().completion() && code > 219))
        return outOfPlace(reply.value(), Pace::Single);
    statProven = statProven || reply.value().completion();
    return listingIn(reply.value());
}

} // namespace venlo
