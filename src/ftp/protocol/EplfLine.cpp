#include "ftp/protocol/ListingDialects.h"
#include "ftp/protocol/ListingFields.h"

namespace venlo
{

namespace
{
constexpr qint64 lastSecond = 253402300799; ///< the end of the year 9999

/// False when the fact contradicts its form. Facts of other kinds are passed over.
bool takeFact(QByteArrayView fact, ListedEntry &entry)
{
    if (fact == "/")
        entry.kind = ListedEntry::Kind::Folder;
    if (fact.isEmpty() || (fact.front() != 's' && fact.front() != 'm'))
        return true;
    const auto number = parseNumber(fact.sliced(1));
    if (!number)
        return false;
    if (fact.front() == 's') {
        entry.size = *number;
    } else {
        if (*number > lastSecond)
            return false;
        entry.time = QDateTime::fromSecsSinceEpoch(*number, Qt::UTC);
    }
    return true;
}
} // namespace

ListedLine readEplfLine(const QByteArray &line)
{
    const qsizetype tab = line.indexOf('\t');
    if (!line.startsWith('+') || tab < 0 || tab + 1 == line.size())
        return std::nullopt;
    ListedEntry entry;
    entry.utc = true;
    const QByteArrayView facts = QByteArrayView(line).sliced(1, tab - 1);
    for (qsizetype from = 0; from < facts.size();) {
        const qsizetype comma = facts.indexOf(',', from);
        const qsizetype end = comma < 0 ? facts.size() : comma;
        if (!takeFact(facts.sliced(from, end - from), entry))
            return std::nullopt;
        from = end + 1;
    }
    if (entry.kind == ListedEntry::Kind::Folder)
        entry.size = 0;
    entry.rawName = line.mid(tab + 1);
    return entry;
}

} // namespace venlo
