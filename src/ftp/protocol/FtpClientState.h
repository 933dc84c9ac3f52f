#pragma once

#include "ftp/protocol/ControlChannel.h"
#include "ftp/protocol/DataChannel.h"
#include "ftp/protocol/FtpClient.h"
#include "ftp/protocol/NameCodec.h"
#include "ftp/protocol/Waiter.h"

#include <QSet>

#include <optional>

namespace venlo
{

/// What one login knows of its server, and the steps its operations share. Private to FtpClient.
struct FtpClient::State {
    State(Waiter &sharedWaiter, ClientLimits clientLimits);

    /// A transfer in hand: its data channel and the replies of its command.
    struct Transfer {
        explicit Transfer(DataChannel::Direction direction) : data(direction) {}
        DataChannel data;
        bool opened = false;         ///< a preliminary reply came
        Error stopped;               ///< why a step asked to stop
        std::optional<Reply> final_; ///< completion or refusal
    };

    [[nodiscard]] Result<void> login(const ConnectOptions &options);
    [[nodiscard]] Result<void> learnFeatures();
    [[nodiscard]] Result<Reply> expectCompletion(const QByteArray &command);

    /// Prepares the data connection and sends the transfer command right behind it.
    [[nodiscard]] Result<void> begin(Transfer &transfer, const QByteArray &command);
    [[nodiscard]] Result<void> preparePassive(Transfer &transfer);
    [[nodiscard]] Result<void> prepareActive(Transfer &transfer);
    /// Takes the replies that have come; an error when the connection is lost.
    [[nodiscard]] Result<void> noteReplies(Transfer &transfer);
    /// Waits for the final reply once the data is done.
    [[nodiscard]] Result<void> finish(Transfer &transfer);
    /// Brings control back in step after a broken or cancelled transfer (ABOR, RFC 959, 4.1.3);
    /// closes the connection when that does not work.
    [[nodiscard]] Error abandon(Transfer &transfer, Error why);
    enum class Step { More, Done, Stop };
    /// Runs a transfer: step moves the bytes that can be moved and tells whether the data part is
    /// done. Stop gives the transfer up with the error the step left in it.
    [[nodiscard]] Result<void> run(Transfer &transfer, const std::function<Step()> &step);
    [[nodiscard]] Result<void> afterData(Transfer &transfer, WaitEnd end, Step last);
    [[nodiscard]] Result<void> afterBrokenData(Transfer &transfer);
    void waitForFinal(Transfer &transfer, std::chrono::milliseconds limit);
    /// Runs an operation again in passive mode when active mode turned out not to work.
    template <typename Operation>
    [[nodiscard]] auto retryPassively(const Operation &operation)
    {
        const bool wasActive = !passive;
        auto result = operation();
        if (!result && wasActive && activeUnusable && control.isOpen()) {
            passive = true;
            return operation();
        }
        return result;
    }
    [[nodiscard]] Result<Listing> listBy(bool mlsd);

    Waiter &waiter;
    ClientLimits limits;
    ControlChannel control;
    NameCodec codec;
    QNetworkProxy proxy{QNetworkProxy::NoProxy};
    QSet<QByteArray> features; ///< upper-case first words of the FEAT lines
    QByteArray directory;      ///< what the server stands in, empty when not known
    bool knowsServer = false;  ///< a login has succeeded in asking for features before
    bool passive = true;
    bool useEpsv = true;
    bool mlsdRefused = false;
    bool setTimeRefused = false;
    bool activeUnusable = false;
};

/// The error class of a negative reply (RFC 959, 4.2).
[[nodiscard]] Error errorOf(const Reply &reply);

} // namespace venlo
