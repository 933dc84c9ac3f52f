// How a transfer of FtpClient runs and ends.
#include "ftp/protocol/FtpClientState.h"

#include <algorithm>

namespace venlo
{

using namespace std::chrono_literals;

namespace
{
constexpr int cannotOpenData = 425;
constexpr int maxPreliminary = 16;
// What a server may take to notice that its data connection broke.
constexpr auto brokenDataGrace = 10s;
constexpr int serviceClosing = 421;
constexpr auto lastBytesGrace = 300ms;
} // namespace

Result<void> FtpClient::State::noteReplies(Transfer &transfer)
{
    for (int preliminary = 0; !transfer.final_;) {
        auto reply = control.takeReply();
        if (!reply)
            break;
        if (!reply->preliminary()) {
            transfer.final_ = std::move(reply);
            break;
        }
        transfer.opened = true;
        control.expectOneMore();
        if (++preliminary > maxPreliminary)
            return control.lost(QStringLiteral("preliminary replies without end"));
    }
    return whileReplyIsDue(transfer);
}

Result<void> FtpClient::State::whileReplyIsDue(const Transfer &transfer)
{
    const bool lost = transfer.final_ ? transfer.final_->code == serviceClosing : !control.isOpen();
    if (lost)
        return control.lost(QStringLiteral("connection lost during a transfer"));
    return {};
}

Result<void> FtpClient::State::runAlone(Transfer &transfer, const std::function<Step()> &step)
{
    Step last = Step::More;
    const auto settled = [&] {
        const bool over =
            !noteReplies(transfer) || (transfer.final_ && !transfer.final_->completion());
        if (transfer.data.connected())
            last = step();
        return over || last != Step::More || transfer.data.failed();
    };
    bool connected = false;
    WaitEnd end = waiter.untilReady(
        [&] {
            const bool over = settled();
            connected = transfer.data.connected();
            return over || connected;
        },
        passive ? limits.connect : limits.activeConnect);
    if (!passive && !connected && end == WaitEnd::TimedOut)
        giveUpActiveMode(transfer);
    if (end == WaitEnd::Done && connected && last == Step::More)
        end = waiter.until(settled, limits.idleData, [&] { return transfer.data.movedBytes(); });
    if (last == Step::More && transfer.opened && end == WaitEnd::Done)
        (void)waiter.untilEvenIfCancelled( // what was sent before the bad news still counts
            [&] {
                if (transfer.data.connected())
                    last = step();
                return last != Step::More || transfer.data.failed();
            },
            lastBytesGrace);
    ticketsCome = ticketsCome && !transfer.data.ticketMissed();
    return afterData(transfer, end, last);
}

Result<void> FtpClient::State::afterData(Transfer &transfer, WaitEnd end, Step last)
{
    if (auto due = whileReplyIsDue(transfer); !due)
        return due;
    if (last == Step::Stop)
        return abandon(transfer, transfer.stopped);
    if (end == WaitEnd::Cancelled)
        return abandon(transfer, {ErrorClass::Cancelled, QStringLiteral("cancelled")});
    if (transfer.final_ && !transfer.final_->completion()) {
        transfer.data.abort();
        if (!passive && transfer.final_->code == cannotOpenData)
            giveUpActiveMode(transfer);
        if (resumesOnly12(transfer))
            return control.lost(QStringLiteral("data refused under TLS 1.3, next with TLS 1.2: ") +
                                transfer.final_->text());
        return errorOf(*transfer.final_);
    }
    dataWorked = dataWorked || last == Step::Done;
    if (end == WaitEnd::TimedOut)
        return abandon(transfer, {ErrorClass::Retry, QStringLiteral("no data in time")});
    return last == Step::Done ? finish(transfer) : afterBrokenData(transfer);
}

Result<void> FtpClient::State::afterBrokenData(Transfer &transfer)
{
    const Error broke{ErrorClass::Retry,
                      QStringLiteral("data connection broke: ") + transfer.data.errorWords()};
    waitForFinal(transfer, std::min<std::chrono::milliseconds>(brokenDataGrace, limits.reply));
    if (auto due = whileReplyIsDue(transfer); !due)
        return due;
    if (transfer.final_ && !transfer.final_->completion()) {
        transfer.data.abort();
        return errorOf(*transfer.final_);
    }
    return abandon(transfer, broke);
}

void FtpClient::State::waitForFinal(Transfer &transfer, std::chrono::milliseconds limit)
{
    (void)waiter.untilEvenIfCancelled(
        [&] { return !noteReplies(transfer) || transfer.final_.has_value(); }, limit);
}

Result<void> FtpClient::State::finish(Transfer &transfer)
{
    const WaitEnd end = waiter.until(
        [&] { return !noteReplies(transfer) || transfer.final_.has_value(); }, limits.reply);
    if (end == WaitEnd::Cancelled)
        return abandon(transfer, {ErrorClass::Cancelled, QStringLiteral("cancelled")});
    if (!transfer.final_ || transfer.final_->code == serviceClosing)
        return control.lost(QStringLiteral("no completion reply"));
    if (!transfer.final_->completion())
        return errorOf(*transfer.final_);
    return {};
}

void FtpClient::State::giveUpActiveMode(const Transfer &transfer)
{
    if (!transfer.data.untouched())
        return;
    activeUnusable = true;
    passive = true;
    repeatTransfer = true;
}

} // namespace venlo
