// The operations of FtpClient that move bytes: listing, download, upload.
#include "ftp/protocol/FtpClient.h"

#include "ftp/protocol/FtpClientState.h"
#include "ftp/protocol/ListingParser.h"
#include "ftp/protocol/ListingWords.h"

#include <QDeadlineTimer>
#include <QIODevice>

#include <algorithm>
#include <limits>

namespace venlo
{

namespace
{
constexpr qsizetype maxLine = 64LL * 1024;

/// Cuts arriving bytes into lines for the parser, within the client's limits.
class LineFeeder
{
public:
    LineFeeder(ListingParser &parser, const ClientLimits &limits)
        : m_parser(parser), m_limits(limits)
    {
    }

    /// False once a limit is passed.
    bool feed(const QByteArray &bytes)
    {
        m_bytes += bytes.size();
        m_rest += bytes;
        qsizetype from = 0;
        for (qsizetype end = m_rest.indexOf('\n'); end >= 0; end = m_rest.indexOf('\n', from)) {
            line(m_rest.mid(from, end - from));
            from = end + 1;
        }
        m_rest.remove(0, from);
        return m_rest.size() <= maxLine && m_lines <= m_limits.maxEntries &&
               m_bytes <= m_limits.maxListingBytes;
    }
    /// False when the last line has no end: it was cut, and so may be the name in it.
    bool finish()
    {
        const bool cut = !m_rest.isEmpty();
        if (cut)
            line(m_rest);
        m_rest.clear();
        return !cut;
    }
    [[nodiscard]] int lines() const { return m_lines; }

private:
    void line(QByteArray text)
    {
        if (text.endsWith('\r'))
            text.chop(1);
        ++m_lines;
        m_parser.addLine(text);
    }

    ListingParser &m_parser;
    const ClientLimits &m_limits;
    QByteArray m_rest;
    qint64 m_bytes = 0;
    int m_lines = 0;
};

bool notUnderstood(const Error &error)
{
    return error.replyCode == 500 || error.replyCode == 501 || error.replyCode == 502 ||
           error.replyCode == 504;
}
} // namespace

Result<Listing> FtpClient::State::listBy(bool mlsd)
{
    ListingParser parser(mlsd ? ListingParser::Source::Mlsd : ListingParser::Source::List, codec,
                         QDate::currentDate());
    LineFeeder feeder(parser, limits);
    Transfer transfer(DataChannel::Direction::Receive);
    // A server that ends a transfer at an early line may call it complete: unlike a file a listing
    // has no size that would tell. So others go first.
    if (auto begun = begin(transfer, mlsd ? "MLSD" : "LIST", paceProven ? 0 : -1); !begun)
        return begun.error();
    transfer.stopped = {ErrorClass::Refused, QStringLiteral("the listing is too long"), 0};
    const QDeadlineTimer deadline(limits.listing);
    const auto ended = run(transfer, [&] {
        if (deadline.hasExpired()) {
            transfer.stopped.words = QStringLiteral("the listing takes too long");
            return Step::Stop;
        }
        if (!feeder.feed(transfer.data.read()))
            return Step::Stop;
        return transfer.data.atEnd() ? Step::Done : Step::More;
    });
    const bool reset = transfer.data.wasReset();
    // A last line without its line end counts only when nothing broke.
    const bool lastLineWhole = !ended || feeder.finish();
    Listing listing = parser.take();
    listing.fromMlsd = mlsd;
    // Where riders are to blame the whole of it is to be had.
    const bool toRiders = transfer.rode() && slowedDown && !control.isOpen();
    if (!ended &&
        (listing.entries.empty() || ended.error().kind == ErrorClass::Cancelled || toRiders))
        return ended.error();
    if (reset && listing.entries.empty())
        return Error{ErrorClass::Retry, QStringLiteral("the data connection was reset"), 0};
    if (!ended || !transfer.opened) {
        listing.whole = false;
        listing.why = ended ? QStringLiteral("no opening reply") : ended.error().words;
    } else if (reset) {
        listing.whole = false;
        listing.why = QStringLiteral("the data connection was reset");
    } else if (!lastLineWhole) {
        listing.whole = false;
        listing.why = QStringLiteral("the last line has no end");
    } else if (saysListingIsNotWhole(transfer.final_->text())) {
        listing.whole = false;
        listing.why = control.withoutSecret(transfer.final_->text());
    }
    return listing;
}

Result<Listing> FtpClient::list()
{
    const bool mlsd = listsByMlsd();
    auto listing = m->withOneRepeat([&] { return m->listBy(mlsd); });
    if (!listing && mlsd && notUnderstood(listing.error())) {
        m->mlsdRefused = true;
        return m->listBy(false);
    }
    return listing;
}

Result<qint64> FtpClient::retrieve(const QByteArray &name, QIODevice &to, const Progress &progress,
                                   qint64 expected)
{
    return m->withOneRepeat([&]() -> Result<qint64> {
        State::Transfer transfer(DataChannel::Direction::Receive);
        if (auto begun = m->begin(transfer, "RETR " + name, expected); !begun)
            return begun.error();
        const auto ended = m->run(transfer, [&] {
            const QByteArray bytes = transfer.data.read();
            if (!bytes.isEmpty() && to.write(bytes) != bytes.size()) {
                transfer.stopped = {ErrorClass::Local, to.errorString(), 0};
                return State::Step::Stop;
            }
            if (!bytes.isEmpty() && progress)
                progress(transfer.data.movedBytes());
            return transfer.data.atEnd() ? State::Step::Done : State::Step::More;
        });
        if (!ended)
            return ended.error();
        if (transfer.rode() && transfer.data.movedBytes() != expected)
            m->doubt(State::Pace::Together, QStringLiteral("another size than expected"));
        return transfer.data.movedBytes();
    });
}

namespace
{
/// Feeds a device into a data connection, a window ahead of what the network takes.
class Sender
{
public:
    Sender(QIODevice &from, DataChannel &to)
        : m_from(from), m_to(to), m_left(from.isSequential() ? std::numeric_limits<qint64>::max()
                                                             : from.size() - from.pos())
    {
    }

    /// False when the device cannot be read.
    bool push()
    {
        while (!m_finished && m_to.wantsBytes()) {
            const QByteArray bytes = m_from.read(std::min<qint64>(DataChannel::chunk, m_left));
            m_left -= bytes.size();
            if (bytes.isEmpty()) {
                if (m_left > 0 && !m_from.atEnd())
                    return false;
                m_finished = true;
                m_to.finishWriting();
                break;
            }
            m_to.write(bytes);
        }
        return true;
    }
    [[nodiscard]] bool done() const { return m_finished && m_to.allSent(); }

private:
    QIODevice &m_from;
    DataChannel &m_to;
    qint64 m_left; ///< bytes; a file that grows as fast as it is sent would have no end
    bool m_finished = false;
};
} // namespace

Result<qint64> FtpClient::State::storeOnce(const QByteArray &name, QIODevice &from,
                                           const Progress &progress,
                                           std::vector<Follower> &followers)
{
    Transfer transfer(DataChannel::Direction::Send);
    transfer.riders = followers;
    transfer.rewindable = !from.isSequential();
    if (auto begun = begin(transfer, "STOR " + name, from.size()); !begun)
        return begun.error();
    Sender sender(from, transfer.data);
    const auto ended = run(transfer, [&] {
        if (!sender.push()) {
            transfer.stopped = {ErrorClass::Local, from.errorString(), 0};
            return Step::Stop;
        }
        if (progress)
            progress(transfer.data.movedBytes());
        return sender.done() ? Step::Done : Step::More;
    });
    std::copy_n(transfer.riders.begin(), std::min(transfer.riders.size(), followers.size()),
                followers.begin());
    if (!ended)
        return ended.error();
    return transfer.data.movedBytes();
}

Result<qint64> FtpClient::store(const QByteArray &name, QIODevice &from, const Progress &progress)
{
    std::vector<State::Follower> nothing;
    const qint64 start = from.pos();
    return m->withOneRepeat([&]() -> Result<qint64> {
        if (from.pos() != start && !from.seek(start))
            return Error{ErrorClass::Local, from.errorString(), 0};
        return m->storeOnce(name, from, progress, nothing);
    });
}

Result<qint64> FtpClient::storeWhole(const QByteArray &name, QIODevice &from,
                                     const Progress &progress, StoredFile &file)
{
    using Kind = State::Follower::Kind;
    const bool setsTime = file.time && canSetTime();
    // A server without MFMT has to show once that it keeps the time as UTC.
    const bool shows = m->setTimeSeen || m->features.contains("MFMT");
    std::vector<State::Follower> followers;
    if (hasSize())
        followers.push_back({Kind::Size, "SIZE " + name});
    if (setsTime && shows)
        followers.push_back({Kind::Time, m->setTimeCommand(name, *file.time)});
    const auto touched = [](const State::Follower &follower) {
        const bool refused = follower.reply && !follower.reply->completion();
        return follower.kind == Kind::Time && follower.sent && !refused;
    };
    const qint64 start = from.pos();
    auto sent = m->withOneRepeat([&]() -> Result<qint64> {
        if (from.pos() != start && !from.seek(start))
            return Error{ErrorClass::Local, from.errorString(), 0};
        for (auto &follower : followers) {
            file.timeTouched = file.timeTouched || touched(follower);
            follower = {follower.kind, follower.command};
        }
        return m->storeOnce(name, from, progress, followers);
    });
    if (!sent) {
        file.timeTouched =
            file.timeTouched || std::any_of(followers.begin(), followers.end(), touched);
        return sent;
    }
    const bool rode = !followers.empty() && followers.front().reply;
    if (!rode) {
        if (auto followed = m->follow(followers); !followed)
            return followed.error();
    }
    Result<void> time;
    for (const State::Follower &follower : followers) {
        if (follower.kind == Kind::Size)
            file.sizeThere = State::sizeIn(*follower.reply);
        else if (follower.kind == Kind::Time)
            time = m->timeWasSet(*follower.reply);
    }
    if (rode && file.sizeThere && *file.sizeThere != sent.value())
        m->slowDown(State::Pace::Together, QStringLiteral("another size than was sent"));
    if (setsTime && !shows)
        time = setModificationTime(name, *file.time);
    if (!time && time.error().kind == ErrorClass::Lost)
        return time.error();
    if (!time)
        file.timeNotSet = time.error();
    return sent;
}

} // namespace venlo
