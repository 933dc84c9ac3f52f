// What single replies carry: a path, a port, a time.
#include "ftp/protocol/Reply.h"
#include "ftp/protocol/TimeValue.h"

#include <QRegularExpression>

namespace venlo
{

namespace
{
constexpr int pathCreated = 257;
constexpr int passiveMode = 227;
constexpr int extendedPassiveMode = 229;
constexpr int fileStatus = 213;

std::optional<QByteArray> quotedPath(const QByteArray &line)
{
    const qsizetype open = line.indexOf('"');
    if (open < 0)
        return std::nullopt;
    QByteArray path;
    for (qsizetype at = open + 1; at < line.size(); ++at) {
        if (line[at] == '"') {
            if (at + 1 == line.size() || line[at + 1] != '"')
                return path;
            ++at;
        }
        path += line[at];
    }
    return std::nullopt;
}

quint16 portOf(const QString &digits)
{
    bool number = false;
    const quint16 port = digits.toUShort(&number);
    return number ? port : 0;
}
} // namespace

std::optional<QByteArray> parsePwdPath(const Reply &reply)
{
    if (reply.code != pathCreated)
        return std::nullopt;
    for (const QByteArray &line : reply.rawLines) {
        auto path = quotedPath(line);
        if (path && !path->isEmpty() && !path->contains('\0') && !path->contains('\r'))
            return path;
    }
    return std::nullopt;
}

quint16 parseEpsvPort(const Reply &reply)
{
    if (reply.code != extendedPassiveMode)
        return 0;
    // Protocol and address stay empty; the delimiter is any one character (RFC 2428, 2).
    static const QRegularExpression form(QStringLiteral("([!-/:-~])\\1\\1([0-9]{1,5})\\1"));
    for (const QString &line : reply.lines) {
        if (const auto match = form.match(line); match.hasMatch())
            return portOf(match.captured(2));
    }
    return 0;
}

quint16 parsePasvPort(const Reply &reply)
{
    if (reply.code != passiveMode)
        return 0;
    // Six numbers, wherever the text has them: RFC 959 shows no parentheses that one may rely on.
    static const QRegularExpression form(
        QStringLiteral("(?<![0-9,])(?:[0-9]{1,3} ?, ?){4}([0-9]{1,3}) ?, ?([0-9]{1,3})(?![0-9,])"));
    constexpr int mostOfByte = 255;
    for (const QString &line : reply.lines) {
        const auto match = form.match(line);
        if (!match.hasMatch())
            continue;
        const int high = portOf(match.captured(1));
        const int low = portOf(match.captured(2));
        return high > mostOfByte || low > mostOfByte ? quint16(0)
                                                     : static_cast<quint16>(high * 256 + low);
    }
    return 0;
}

QDateTime parseMdtm(const Reply &reply)
{
    if (reply.code != fileStatus || reply.lines.isEmpty())
        return {};
    return parseTimeValue(reply.lines.constFirst().trimmed().toLatin1());
}

} // namespace venlo
