#pragma once

#include "ftp/protocol/ControlChannel.h"
#include "ftp/protocol/DataChannel.h"
#include "ftp/protocol/FtpClient.h"
#include "ftp/protocol/NameCodec.h"
#include "ftp/protocol/ServerAddress.h"
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

    [[nodiscard]] Result<void> connectTo(const ServerAddress &address,
                                         const ConnectOptions &options);
    [[nodiscard]] Result<void> greet();
    /// Greeting, TLS as far as it goes, user and password.
    [[nodiscard]] Result<void> login(TlsUse use, const ConnectOptions &options);
    [[nodiscard]] Result<void> authenticate(const ConnectOptions &options);
    /// AUTH TLS (RFC 4217, 4). Ok without TLS too, where the server refused it and may.
    [[nodiscard]] Result<void> askForTls(TlsUse use, const CertificateTest &accepts);
    /// The handshake, and whether its certificate will do.
    [[nodiscard]] Result<void> secure(const CertificateTest &accepts);
    enum class Protection { Agreed, AfterLogin, Refused };
    /// PBSZ and PROT (RFC 4217, 8 and 9).
    [[nodiscard]] Result<Protection> protectData();
    /// The first data connection was refused under TLS 1.3, most likely because its session was
    /// not resumed the way the server wants it: the next login stays with TLS 1.2.
    [[nodiscard]] bool resumesOnly12(const Transfer &transfer);
    [[nodiscard]] Result<void> settleProtection(TlsUse use, Protection agreed);
    [[nodiscard]] Result<void> learnFeatures();
    [[nodiscard]] Result<Reply> expectCompletion(const QByteArray &command);
    /// A completion whose text is not what the command promises.
    [[nodiscard]] Error unreadable(const Reply &reply) const;

    /// Prepares the data connection and sends the transfer command right behind it.
    [[nodiscard]] Result<void> begin(Transfer &transfer, const QByteArray &command);
    [[nodiscard]] Result<void> preparePassive(Transfer &transfer);
    [[nodiscard]] Result<void> prepareActive(Transfer &transfer);
    /// Takes the replies that have come; an error when the connection was lost before the final
    /// one. A server may close right behind it: that is the next command's news.
    [[nodiscard]] Result<void> noteReplies(Transfer &transfer);
    [[nodiscard]] Result<void> whileReplyIsDue(const Transfer &transfer);
    /// Waits for the final reply once the data is done.
    [[nodiscard]] Result<void> finish(Transfer &transfer);
    /// Brings control back in step after a broken or cancelled transfer (ABOR, RFC 959, 4.1.3);
    /// closes the connection when that does not work.
    [[nodiscard]] Error abandon(Transfer &transfer, Error why);
    /// After ABOR was sent: takes its replies and asks NOOP, whose own reply proves the count.
    [[nodiscard]] bool backInStep();
    /// Active mode did not work before a byte was taken from or given to the transfer's device.
    void giveUpActiveMode(const Transfer &transfer);
    enum class Step { More, Done, Stop };
    /// Runs a transfer: step moves the bytes that can be moved and tells whether the data part is
    /// done. Stop gives the transfer up with the error the step left in it.
    [[nodiscard]] Result<void> run(Transfer &transfer, const std::function<Step()> &step);
    [[nodiscard]] Result<void> afterData(Transfer &transfer, WaitEnd end, Step last);
    [[nodiscard]] Result<void> afterBrokenData(Transfer &transfer);
    void waitForFinal(Transfer &transfer, std::chrono::milliseconds limit);
    /// Runs an operation again in passive mode when active mode turned out not to work before its
    /// device was touched: devices are not rewound.
    template <typename Operation>
    [[nodiscard]] auto retryPassively(const Operation &operation)
    {
        repeatPassively = false;
        auto result = operation();
        if (!result && repeatPassively && result.error().kind != ErrorClass::Cancelled &&
            control.isOpen()) {
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
    bool tlsRefused = false;   ///< AUTH was refused, or what followed it did not work
    bool tlsUsed = false;      ///< a login under TLS has succeeded: never without it again
    bool tlsBroke = false;     ///< this connection ended in its AUTH or handshake
    bool protectsData = false; ///< PROT P holds
    QSslCertificate certificate;
    bool ticketsCome = true; ///< see DataProtection
    bool dataWorked = false; ///< a protected data connection has done its work
    bool only12 = false;     ///< TLS 1.3 sessions could not be resumed
    bool passive = true;
    bool useEpsv = true;
    bool mlsdRefused = false;
    bool setTimeRefused = false;
    bool setTimeSeen = false; ///< MDTM has shown a time that MDTM set
    bool activeUnusable = false;
    bool repeatPassively = false; ///< the operation in hand may run again in passive mode
};

/// The error class of a negative reply (RFC 959, 4.2).
[[nodiscard]] Error errorOf(const Reply &reply);

} // namespace venlo
