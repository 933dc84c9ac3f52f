// How a transfer of FtpClient is given up, and the connection kept.
#include "ftp/protocol/FtpClientState.h"

#include <algorithm>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
constexpr auto abortGrace = 3s;
// How late a reply to ABOR may come that is one more than are due.
constexpr auto stragglerGrace = 400ms;
constexpr int mostReplies = 16;
constexpr int commandOkay = 200;
} // namespace

Error FtpClient::State::abandon(Transfer &transfer, Error why)
{
    transfer.data.abort();
    if (transfer.final_ || !control.isOpen())
        return why;
    nextPort = 0; // some servers take ABOR for the end of that one too
    if (!control.send("ABOR"))
        return why;
    if (!backInStep())
        (void)control.lost(QStringLiteral("out of step after ABOR"));
    return why; // where the connection was closed the next operation reconnects
}

bool FtpClient::State::backInStep()
{
    // Two replies are due: the transfer's (426, or 226 when it was over) and that of ABOR. Some
    // servers send only one for both, others a third. Whose they are does not matter, only that
    // none is left: NOOP's own reply is like none of them.
    const auto grace = std::min<std::chrono::milliseconds>(abortGrace, limits.reply);
    if (!takeAborted(grace) || !control.send("NOOP"))
        return false;
    for (int replies = 0; replies < mostReplies; ++replies) {
        const auto reply = control.readReplyWithin(grace);
        if (!reply)
            return false;
        if (reply.value().code == commandOkay) {
            control.expectNothing();
            control.waitForStragglers(stragglerGrace);
            return true;
        }
    }
    return false;
}

/// The replies that come behind ABOR: one, or what riders are due, which NOOP's could be taken for.
bool FtpClient::State::takeAborted(std::chrono::milliseconds grace)
{
    constexpr int transferAndAbor = 2;
    const bool rode = control.outstanding() > transferAndAbor;
    bool came = false;
    for (int replies = 0; replies < mostReplies && control.outstanding() > 0; ++replies) {
        if (came && !rode)
            break;
        (void)waiter.untilEvenIfCancelled([this] { return control.hasNews(); }, grace);
        const auto reply = control.takeReply();
        if (!reply)
            break;
        if (reply->preliminary())
            control.expectOneMore();
        else
            came = true;
    }
    return came;
}

} // namespace venlo
