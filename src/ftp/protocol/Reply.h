#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace venlo
{

/// One complete reply of the server (RFC 959, 4.2).
struct Reply {
    int code = 0;
    QStringList lines;               ///< text of each line without the code, decoded leniently
    QList<QByteArray> rawLines = {}; ///< the same lines as received: paths are bytes

    [[nodiscard]] bool preliminary() const { return code / 100 == 1; }
    [[nodiscard]] bool completion() const { return code / 100 == 2; }
    [[nodiscard]] bool intermediate() const { return code / 100 == 3; }
    [[nodiscard]] bool transient() const { return code / 100 == 4; }
    [[nodiscard]] bool permanent() const { return code / 100 == 5; }
    /// The code, a blank and the lines with "\n" between them.
    [[nodiscard]] QString text() const;
};

/// Assembles replies from the bytes of the control connection. Bounded: a line above maxLine bytes
/// or a reply above maxReply bytes is an error, after which the connection must be dropped. Telnet
/// commands among the bytes are passed over and 0xFF is undoubled (RFC 854).
class ReplyParser
{
public:
    static constexpr int maxLine = 16 * 1024;
    static constexpr int maxReply = 256 * 1024;

    void feed(const QByteArray &bytes);
    /// In place of maxReply.
    void setLongest(int bytes) { m_longest = bytes; }
    /// The next complete reply, if there is one.
    [[nodiscard]] std::optional<Reply> next();
    /// True once the bytes cannot be replies (no code, too long).
    [[nodiscard]] bool broken() const { return m_broken; }
    /// True when bytes wait that next() has not handed out.
    [[nodiscard]] bool pending() const { return !m_buffer.isEmpty(); }

private:
    enum class Telnet { Data, Command, Option, Subnegotiation, SubnegotiationCommand };

    void feedByte(char c);
    /// Nothing while the reply goes on.
    std::optional<Reply> addLine(const QByteArray &line);

    QByteArray m_buffer; ///< without Telnet commands
    Telnet m_telnet = Telnet::Data;
    int m_skipped = 0;           ///< bytes of the present subnegotiation
    std::optional<Reply> m_open; ///< a multi-line reply whose last line is still to come
    int m_openBytes = 0;
    int m_longest = maxReply;
    bool m_broken = false;
};

/// "257 "/a ""b""" is current": the quoted path with doubled quotes undone (RFC 959, appendix II).
[[nodiscard]] std::optional<QByteArray> parsePwdPath(const Reply &reply);
/// Port of an EPSV reply (RFC 2428, 3) or PASV reply (RFC 959, 4.1.2), 0 when there is none.
[[nodiscard]] quint16 parseEpsvPort(const Reply &reply);
[[nodiscard]] quint16 parsePasvPort(const Reply &reply);
/// UTC time of an MDTM reply (RFC 3659, 3.3), as Qt::UTC; invalid when there is none.
[[nodiscard]] QDateTime parseMdtm(const Reply &reply);

} // namespace venlo
