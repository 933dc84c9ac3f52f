#include "ftp/protocol/Reply.h"

#include "ftp/protocol/ListingFields.h"
#include "ftp/protocol/WireText.h"

namespace venlo
{

namespace
{
constexpr qsizetype codeLength = 3;
constexpr qsizetype mostUnread = qsizetype(2) * ReplyParser::maxReply;

// Telnet (RFC 854), which the control connection speaks underneath.
constexpr unsigned char endOfSubnegotiation = 240;
constexpr unsigned char subnegotiation = 250;
constexpr unsigned char firstOptionVerb = 251; ///< WILL; WONT, DO and DONT follow
constexpr unsigned char interpretAsCommand = 255;

/// The code that a line begins with, 0 when it has none.
int codeOf(const QByteArray &line)
{
    const int code = parseSmallNumber(QByteArrayView(line).first(qMin(codeLength, line.size())));
    const bool ended =
        line.size() == codeLength ||
        (line.size() > codeLength && (line[codeLength] == ' ' || line[codeLength] == '-'));
    return ended && code >= 100 && code <= 599 ? code : 0;
}

bool announcesMore(const QByteArray &line)
{
    return line.size() > codeLength && line[codeLength] == '-';
}

void addText(Reply &reply, const QByteArray &text)
{
    reply.lines.append(decodeLeniently(text));
    reply.rawLines.append(text);
}
} // namespace

QString Reply::text() const
{
    return QString::number(code) + QLatin1Char(' ') + lines.join(QLatin1Char('\n'));
}

void ReplyParser::feed(const QByteArray &bytes)
{
    if (m_broken)
        return;
    if (m_telnet == Telnet::Data && !bytes.contains(static_cast<char>(interpretAsCommand))) {
        m_buffer += bytes;
        m_skipped = 0;
    } else {
        for (const char c : bytes) {
            feedByte(c);
            if (m_broken)
                return;
        }
    }
    if (m_buffer.size() > mostUnread)
        m_broken = true;
}

void ReplyParser::feedByte(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    switch (m_telnet) {
    case Telnet::Data:
        if (byte == interpretAsCommand)
            m_telnet = Telnet::Command;
        else
            m_buffer += c;
        break;
    case Telnet::Command:
        m_telnet = Telnet::Data;
        if (byte == interpretAsCommand)
            m_buffer += c;
        else if (byte >= firstOptionVerb)
            m_telnet = Telnet::Option;
        else if (byte == subnegotiation)
            m_telnet = Telnet::Subnegotiation;
        break;
    case Telnet::Option:
        m_telnet = Telnet::Data;
        break;
    case Telnet::Subnegotiation:
        if (byte == interpretAsCommand)
            m_telnet = Telnet::SubnegotiationCommand;
        break;
    case Telnet::SubnegotiationCommand:
        m_telnet = byte == endOfSubnegotiation ? Telnet::Data : Telnet::Subnegotiation;
        break;
    }
    const bool skips = m_telnet == Telnet::Subnegotiation;
    m_skipped = skips ? m_skipped + 1 : m_telnet == Telnet::Data ? 0 : m_skipped;
    if (m_skipped > maxLine)
        m_broken = true;
}

std::optional<Reply> ReplyParser::next()
{
    while (!m_broken) {
        const qsizetype end = m_buffer.indexOf('\n');
        if (end > maxLine || (end < 0 && m_buffer.size() > maxLine)) {
            m_broken = true;
            break;
        }
        if (end < 0)
            break;
        QByteArray line = m_buffer.first(end);
        m_buffer.remove(0, end + 1);
        if (line.endsWith('\r'))
            line.chop(1);
        if (auto whole = addLine(line))
            return whole;
    }
    return std::nullopt;
}

std::optional<Reply> ReplyParser::addLine(const QByteArray &line)
{
    const int code = codeOf(line);
    if (!m_open) {
        if (line.isEmpty())
            return std::nullopt; // some servers part their replies by a blank line
        if (code == 0) {
            m_broken = true;
            return std::nullopt;
        }
        m_open = Reply{code, {}, {}};
        m_openBytes = 0;
        addText(*m_open, line.mid(codeLength + 1));
        if (announcesMore(line))
            return std::nullopt;
        return std::exchange(m_open, std::nullopt);
    }
    m_openBytes += static_cast<int>(line.size()) + 1;
    if (m_openBytes > m_longest) {
        m_broken = true;
        return std::nullopt;
    }
    // Lines in between may begin with anything, other codes included (RFC 959, 4.2).
    const bool own = code == m_open->code;
    addText(*m_open, own ? line.mid(codeLength + 1) : line);
    if (!own || announcesMore(line))
        return std::nullopt;
    return std::exchange(m_open, std::nullopt);
}

} // namespace venlo
