// How FtpClient lists a directory by a transfer.
#include "ftp/protocol/FtpClient.h"

#include "ftp/protocol/FtpClientState.h"
#include "ftp/protocol/ListingParser.h"
#include "ftp/protocol/ListingWords.h"

#include <QDeadlineTimer>

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

} // namespace venlo
