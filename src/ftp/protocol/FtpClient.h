#pragma once

#include "ftp/protocol/Listing.h"
#include "ftp/protocol/NameCodec.h"
#include "ftp/protocol/ServerCertificate.h"
#include "shared/Result.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QIODevice;

namespace venlo
{

class ControlChannel;
class DataChannel;
class Waiter;

/// What to connect to and how.
struct ConnectOptions {
    QString server; ///< see ServerAddress
    QString user;
    QString password;
    QString proxy; ///< see parseProxy
    bool passive = true;
    /// Asked at each TLS handshake; without it only what the system vouches for will do.
    CertificateTest accepts = nullptr;
};

/// Limits of the client's waits.
struct ClientLimits {
    std::chrono::milliseconds connect{30'000};
    /// For the server's connection in active mode: behind a firewall it never comes.
    std::chrono::milliseconds activeConnect{10'000};
    std::chrono::milliseconds reply{60'000};
    std::chrono::milliseconds idleData{60'000}; ///< a data connection that moves no byte
    int maxEntries = 1'000'000;
    qint64 maxListingBytes = 256LL * 1024 * 1024;
    // Of one tree: a server may show a folder in itself for ever.
    int maxTreeFolders = 100'000;
    qint64 maxTreeEntries = 2'000'000;
    /// For one listing as a whole: a server that sends a byte now and then never goes idle.
    std::chrono::milliseconds listing{30 * 60'000};
};

/// A file that is stored: what it shall be like, and what the server said of it.
struct StoredFile {
    std::optional<QDateTime> time;                  ///< to be given to it where the server can, UTC
    std::optional<qint64> sizeThere = std::nullopt; ///< what SIZE said; nothing where it said none
    std::optional<Error> timeNotSet = std::nullopt; ///< why the server refused the time
    /// The file there may have got the time though the upload failed: it must not be taken for the
    /// one that was to be sent.
    bool timeTouched = false;
};

/// The FTP client: one control connection with a current directory and honest state. Every reply
/// is accounted for; a lost connection is reported, never hidden by a silent new login. Names
/// travel as raw bytes; CR, LF and NUL never do. Waits through its Waiter only.
class FtpClient
{
public:
    FtpClient(Waiter &waiter, ClientLimits limits);
    ~FtpClient();

    /// Where the server text leaves TLS open, a server that refused it or cannot do it is not asked
    /// again by this client, and one that took it once must take it every time.
    [[nodiscard]] Result<void> open(const ConnectOptions &options);
    /// QUIT without waiting long, then closes. Never fails.
    void close();
    [[nodiscard]] bool isOpen() const;
    /// "TLSv1.3" where control and data connections are protected, otherwise empty.
    [[nodiscard]] QString security() const;

    [[nodiscard]] Result<QString> printDirectory();
    /// Absolute directory as bytes. No command is sent when the server is there already.
    [[nodiscard]] Result<void> changeDirectory(const QByteArray &dir);
    /// Lists the current directory: MLSD when FEAT has it, otherwise LIST. An error is a listing
    /// that broke before its first entry; a later break is a Listing that is not whole.
    [[nodiscard]] Result<Listing> list();

    /// Whether a path can be put behind STAT: no pattern, blank or option in it.
    [[nodiscard]] static bool mayBeAskedByStat(const QByteArray &path);
    /// Whether listByStat asks with "-a": some servers show a directory itself only then.
    void askStatForAll(bool all);
    /// Lists directories (absolute paths as bytes) on the control connection, many on the way at a
    /// time. shown gets one for each in the order of paths, nothing for one that this way cannot
    /// tell; fewer where they are too large to be held at a time, at least one, and none with an
    /// error. Names that begin with "." are among the entries. heard: called after each reply.
    [[nodiscard]] Result<void> listByStat(const QList<QByteArray> &paths,
                                          std::vector<std::optional<Listing>> &shown,
                                          const std::function<void()> &heard = {});
    /// False once STAT was called unknown.
    [[nodiscard]] bool knowsStat() const;
    /// The UTC time of a folder by MLST (RFC 3659, 7).
    [[nodiscard]] Result<QDateTime> folderTime(const QByteArray &path);

    using Progress = std::function<void(qint64 done)>;
    /// Downloads a file of the current directory into the device. The bytes received. expected: the
    /// size where it is known; the port for the transfer behind a small file is asked for ahead.
    [[nodiscard]] Result<qint64> retrieve(const QByteArray &name, QIODevice &to,
                                          const Progress &progress, qint64 expected = -1);
    /// Uploads the device to a file of the current directory. The bytes sent.
    [[nodiscard]] Result<qint64> store(const QByteArray &name, QIODevice &from,
                                       const Progress &progress);
    /// The same, asks for the size there and sets the time, in as few round trips as the server
    /// bears: in a burst of small files SIZE, MFMT and the next EPSV ride behind STOR. The first
    /// reply out of place ends that for good, and the connection with it (Lost).
    [[nodiscard]] Result<qint64> storeWhole(const QByteArray &name, QIODevice &from,
                                            const Progress &progress, StoredFile &file);
    /// The connection is gone because the server did not bear commands sent ahead: what was asked
    /// for has not failed, and goes its way when it is asked for again. True twice at most.
    [[nodiscard]] bool lostToRiders() const;
    [[nodiscard]] Result<void> rename(const QByteArray &from, const QByteArray &to);
    [[nodiscard]] Result<void> removeFile(const QByteArray &nameOrPath);
    [[nodiscard]] Result<void> makeDirectory(const QByteArray &name);
    /// Makes a directory, unless it is there, and goes there, in one round trip where the server
    /// bears it (see storeWhole). Absolute path as bytes. made: it is new, whatever came behind.
    [[nodiscard]] Result<void> makeAndEnter(const QByteArray &path, bool &made);
    [[nodiscard]] Result<void> removeDirectory(const QByteArray &name);
    /// SIZE (RFC 3659, 4); Refused when the server does not have it.
    [[nodiscard]] Result<qint64> size(const QByteArray &name);
    /// MDTM (RFC 3659, 3): UTC.
    [[nodiscard]] Result<QDateTime> modificationTime(const QByteArray &name);
    /// MFMT, or MDTM with a time. A refusal is remembered; canSetTime() is false from then on, and
    /// also when MDTM shows another time than the one just set (a server that takes it as its wall
    /// clock's).
    [[nodiscard]] Result<void> setModificationTime(const QByteArray &name, const QDateTime &utc);
    [[nodiscard]] bool canSetTime() const;
    [[nodiscard]] bool listsByMlsd() const;
    [[nodiscard]] bool hasSize() const;
    [[nodiscard]] bool hasMdtm() const;
    /// Active mode was asked for and cannot work here; this connection uses passive mode instead.
    [[nodiscard]] bool activeUnusable() const;

    [[nodiscard]] NameCodec &codec();
    /// One line per command and reply for the second log; passwords are already replaced.
    using Trace = std::function<void(const QString &line)>;
    void setTrace(Trace trace);
    /// A text for the second log without the password of this connection.
    [[nodiscard]] QString withoutSecret(const QString &text) const;

private:
    struct State;
    std::unique_ptr<State> m;
};

} // namespace venlo
