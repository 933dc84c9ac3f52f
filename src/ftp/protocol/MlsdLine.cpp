#include "ftp/protocol/ListingDialects.h"
#include "ftp/protocol/ListingFields.h"
#include "ftp/protocol/TimeValue.h"

#include <optional>

namespace venlo
{

namespace
{
/// The facts of one line, as far as they are of use here.
struct Facts {
    std::optional<ListedEntry::Kind> kind;
    bool self = false;
    std::optional<qint64> size;
    bool folderSize = false;
    QDateTime modified;
};

void takeType(const QByteArray &type, Facts &facts)
{
    facts.self = type == "cdir" || type == "pdir";
    if (facts.self || type == "dir")
        facts.kind = ListedEntry::Kind::Folder;
    else if (type.startsWith("os.unix=slink") || type.startsWith("os.unix=symlink"))
        facts.kind = ListedEntry::Kind::Link;
    else
        facts.kind = ListedEntry::Kind::File; // devices and the like, too
}

/// False when the fact contradicts its form. A time that is none leaves the entry without one.
bool takeFact(QByteArrayView fact, Facts &facts)
{
    const qsizetype sign = fact.indexOf('=');
    if (sign < 1)
        return false;
    const QByteArray name = fact.first(sign).toByteArray().toLower();
    const QByteArrayView value = fact.sliced(sign + 1);
    if (name == "type") {
        takeType(value.toByteArray().toLower(), facts);
    } else if (name == "modify") {
        facts.modified = parseTimeValue(value);
    } else if (name == "size" || name == "sizd") {
        facts.size = parseNumber(value);
        facts.folderSize = name == "sizd";
        return facts.size.has_value();
    }
    return true;
}
} // namespace

std::optional<MlsdLine> readMlsdLine(const QByteArray &line)
{
    const qsizetype end = line.indexOf("; "); // a value, as of a link's target, may hold a blank
    if (end < 0 || end + 2 == line.size())
        return std::nullopt;
    Facts facts;
    for (qsizetype from = 0; from <= end;) {
        const qsizetype semicolon = line.indexOf(';', from);
        if (!takeFact(QByteArrayView(line).sliced(from, semicolon - from), facts))
            return std::nullopt;
        from = semicolon + 1;
    }
    // Without a type it is the kind of size that tells what the entry is; without both nobody does.
    if (!facts.kind && facts.size)
        facts.kind = facts.folderSize ? ListedEntry::Kind::Folder : ListedEntry::Kind::File;
    if (!facts.kind)
        return std::nullopt;
    MlsdLine read;
    read.self = facts.self;
    read.entry.rawName = line.mid(end + 2);
    read.entry.kind = *facts.kind;
    read.entry.time = facts.modified;
    read.entry.utc = true;
    read.entry.size = *facts.kind == ListedEntry::Kind::Folder ? 0 : facts.size.value_or(0);
    return read;
}

} // namespace venlo
