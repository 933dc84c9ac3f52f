#include "ftp/protocol/ListingDialects.h"
#include "ftp/protocol/UnixDate.h"

#include <algorithm>

namespace venlo
{

namespace
{
constexpr std::size_t latestDate = 9; ///< blanks in owner and group names push the date back
constexpr qsizetype modeLength = 10;
constexpr qsizetype rightsLength = 10; ///< "[RWCEAFMS]" of NetWare

bool allOf(QByteArrayView text, QByteArrayView allowed)
{
    return std::all_of(text.begin(), text.end(), [&](char c) { return allowed.contains(c); });
}

/// "drwxr-xr-x", with one more sign where the file has an ACL or a security context.
bool isMode(QByteArrayView field)
{
    if (field.size() < modeLength || field.size() > modeLength + 1)
        return false;
    return QByteArrayView("-dlbcpsDnCM").contains(field[0]) &&
           allOf(field.sliced(1, modeLength - 1), "-rwxsStTlL") &&
           allOf(field.sliced(modeLength), "+.@");
}

bool isNetWareMode(const ListingFields &fields)
{
    const QByteArrayView rights = fields.at(1);
    return (fields.at(0) == "d" || fields.at(0) == "-") && rights.size() == rightsLength &&
           rights.startsWith('[') && rights.endsWith(']');
}

/// The size before the date; 0 for a device, which shows its two numbers there.
std::optional<qint64> readSize(const ListingFields &fields, std::size_t dateAt, char type)
{
    const QByteArrayView field = fields.at(dateAt - 1);
    if (type != 'b' && type != 'c')
        return parseNumber(field);
    const qsizetype comma = field.indexOf(',');
    const bool two = comma < 0 ? isDigits(field) : isDigits(field.first(comma));
    if (!two)
        return std::nullopt;
    return 0;
}

/// Cuts "name -> target" at its arrow. Either part may hold further arrows; the size of a link is
/// the length of its target, which tells them apart. Where no arrow fits the size it is the last
/// one before which a name can end.
QByteArrayView linkName(QByteArrayView shown, qint64 size)
{
    constexpr QByteArrayView arrow(" -> ");
    QByteArrayView name = shown;
    for (qsizetype at = shown.indexOf(arrow, 1); at > 0; at = shown.indexOf(arrow, at + 1)) {
        const qsizetype target = shown.size() - at - arrow.size();
        if (target == 0 || shown.first(at).contains('/'))
            break;
        name = shown.first(at);
        if (target == size)
            break;
    }
    return name;
}
} // namespace

ListedLine readUnixLine(const QByteArray &line, QDate serverToday)
{
    const ListingFields fields(line);
    if (line.startsWith(' ') || (!isMode(fields.at(0)) && !isNetWareMode(fields)))
        return std::nullopt;
    const char type = line.front();
    for (std::size_t at = 2; at <= latestDate; ++at) {
        const auto size = readSize(fields, at, type);
        const auto date = size ? readUnixDate(fields, at, serverToday) : std::nullopt;
        if (!date)
            continue;
        const QByteArrayView shown = fields.nameBehind(date->lastField);
        if (shown.isEmpty())
            return std::nullopt;
        ListedEntry entry;
        entry.rawName = (type == 'l' ? linkName(shown, *size) : shown).toByteArray();
        entry.kind = type == 'd'   ? ListedEntry::Kind::Folder
                     : type == 'l' ? ListedEntry::Kind::Link
                                   : ListedEntry::Kind::File;
        entry.time = date->time;
        entry.dayOnly = date->dayOnly;
        entry.size = type == 'd' ? 0 : *size;
        return entry;
    }
    return std::nullopt;
}

} // namespace venlo
