#pragma once

#include "ftp/protocol/ControlChannel.h"
#include "ftp/protocol/DataChannel.h"
#include "ftp/protocol/FtpClient.h"
#include "ftp/protocol/NameCodec.h"
#include "ftp/protocol/ServerAddress.h"
#include "ftp/protocol/Waiter.h"

#include <QDeadlineTimer>
#include <QSet>

#include <optional>
#include <vector>

namespace venlo
{

/// What one login knows of its server, and the steps its operations share. Private to FtpClient.
struct FtpClient::State {
    State(Waiter &sharedWaiter, ClientLimits clientLimits);

    /// A command whose reply nobody waits for before the next one may be sent.
    struct Follower {
        enum class Kind { Size, Time, Port, Make, Enter };
        Kind kind;
        QByteArray command;
        std::optional<Reply> reply = std::nullopt; ///< one in place
        bool sent = false;
        /// Whether a reply can be that of this command; one of a transfer cannot.
        [[nodiscard]] bool isInPlace(int code) const;
    };
    /// How followers are sent: behind the command of a transfer while it runs, together once it is
    /// over, or one at a time. It goes down for good at the first reply out of place.
    enum class Pace { Riding, Together, Single };

    /// A transfer in hand: its data channel and the replies of its command.
    struct Transfer {
        explicit Transfer(DataChannel::Direction direction) : data(direction) {}
        DataChannel data;
        bool opened = false;          ///< a preliminary reply came
        Error stopped;                ///< why a step asked to stop
        std::optional<Reply> final_;  ///< completion or refusal
        std::vector<Follower> riders; ///< in the order sent; before begin() those that shall ride
        bool portWasReady = false;    ///< the port was asked for behind an earlier transfer
        bool rewindable = false;      ///< what was handed over can be read once more
        [[nodiscard]] bool rode() const { return !riders.empty() && riders.front().sent; }
        /// Whether the final reply can be that of the transfer and not of a rider.
        [[nodiscard]] bool endsInPlace() const;
    };

    [[nodiscard]] Result<void> connectTo(const ServerAddress &address,
                                         const ConnectOptions &options);
    [[nodiscard]] Result<void> greet();
    /// Greeting, TLS as far as it goes, user and password, what the server can do, TYPE I.
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

    /// Prepares the data connection and sends the transfer command right behind it. bytes: what the
    /// transfer is expected to move, -1 when that is not known.
    [[nodiscard]] Result<void> begin(Transfer &transfer, const QByteArray &command, qint64 bytes);
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
    [[nodiscard]] bool takeAborted(std::chrono::milliseconds grace);
    /// Active mode did not work before a byte was taken from or given to the transfer's device.
    void giveUpActiveMode(const Transfer &transfer);
    enum class Step { More, Done, Stop };
    /// Runs a transfer: step moves the bytes that can be moved and tells whether the data part is
    /// done. Stop gives the transfer up with the error the step left in it.
    [[nodiscard]] Result<void> run(Transfer &transfer, const std::function<Step()> &step);
    [[nodiscard]] Result<void> runAlone(Transfer &transfer, const std::function<Step()> &step);

    [[nodiscard]] bool mayRide(qint64 bytes) const;
    /// One transfer has just followed another in passive mode.
    [[nodiscard]] bool inBurst() const;
    void addPortQuestion(std::vector<Follower> &followers) const;
    /// The port that was asked for ahead; 0 when there is none that is still open.
    [[nodiscard]] quint16 takeNextPort();
    /// Takes the replies of what rode along, whatever became of the transfer.
    [[nodiscard]] Result<void> endRide(Transfer &transfer, Result<void> ended);
    /// Sends what did not ride, as fast as the server bears.
    [[nodiscard]] Result<void> follow(std::vector<Follower> &followers);
    [[nodiscard]] Result<void> readFollowers(std::vector<Follower> &followers, Pace next);
    [[nodiscard]] Error outOfPlace(const Reply &reply, Pace next);
    void slowDown(Pace next, const QString &why);
    /// Something went wrong that need not be due to the pace: a pace that has worked gets another
    /// chance.
    void doubt(Pace next, const QString &why);
    [[nodiscard]] Result<void> afterData(Transfer &transfer, WaitEnd end, Step last);
    [[nodiscard]] Result<void> afterBrokenData(Transfer &transfer);
    void waitForFinal(Transfer &transfer, std::chrono::milliseconds limit);
    /// Runs an operation once more when its way to the data connection turned out not to work
    /// before its device was touched, or one that is read can be rewound.
    template <typename Operation>
    [[nodiscard]] auto withOneRepeat(const Operation &operation)
    {
        repeatTransfer = false;
        auto result = operation();
        if (!result && repeatTransfer && result.error().kind != ErrorClass::Cancelled &&
            control.isOpen())
            return operation();
        return result;
    }
    [[nodiscard]] Result<qint64> storeOnce(const QByteArray &name, QIODevice &from,
                                           const Progress &progress,
                                           std::vector<Follower> &followers);
    [[nodiscard]] QByteArray setTimeCommand(const QByteArray &name, const QDateTime &utc) const;
    [[nodiscard]] Result<void> timeWasSet(const Reply &reply);
    /// SIZE (RFC 3659, 4) in a reply; nothing when the server did not say.
    [[nodiscard]] static std::optional<qint64> sizeIn(const Reply &reply);
    [[nodiscard]] Result<Listing> listBy(bool mlsd);
    struct StatRun;
    [[nodiscard]] Result<void> runStat(StatRun &run);
    [[nodiscard]] Result<Reply> readStat(const StatRun &run);
    [[nodiscard]] Result<void> endStat(const Reply &reply);
    [[nodiscard]] Error cancelStat(qsizetype onTheWay);
    /// What a reply to STAT lists; nothing when it is not the whole of a directory.
    [[nodiscard]] std::optional<Listing> listingIn(const Reply &reply);

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
    bool repeatTransfer = false; ///< the operation in hand may run once more
    Pace pace = Pace::Riding;
    bool statAll = false;     ///< STAT takes "-a"
    bool statProven = false;  ///< this server has answered STAT sent this way
    bool statKnown = false;   ///< it has answered one with a status
    bool statUnknown = false; ///< it does not know the command
    bool paceProven = false;  ///< this server has answered at this pace
    bool slowedDown = false;  ///< on this connection
    QDeadlineTimer burstEnd;  ///< until then a transfer counts as following another
    quint16 nextPort = 0;     ///< asked for ahead of the next transfer
    QDeadlineTimer nextPortUntil;
};

/// The error class of a negative reply (RFC 959, 4.2).
[[nodiscard]] Error errorOf(const Reply &reply);

} // namespace venlo
