#include "startup/CommandLine.h"

namespace venlo
{

namespace
{
constexpr QLatin1Char blank(' ');
constexpr QLatin1Char separator('|');

/// Blanks only: an ideographic space belongs to what it stands in.
QString trimmedBlanks(const QString &text)
{
    qsizetype start = 0;
    qsizetype end = text.size();
    while (start < end && text[start] == blank)
        ++start;
    while (end > start && text[end - 1] == blank)
        --end;
    return text.mid(start, end - start);
}
} // namespace

bool InStrHas(const QString &text, const QString &part, qsizetype &position)
{
    position = text.indexOf(part, 0, Qt::CaseInsensitive) + 1;
    return position > 0 && !part.isEmpty();
}

CommandLine CommandLine::parse(const QString &raw)
{
    CommandLine line;
    line.raw = raw;
    qsizetype position = 0;
    if (InStrHas(raw, QStringLiteral("UT_ACT.pdat"), position)) {
        line.launchRecordPath = raw;
        return line;
    }
    if (!InStrHas(raw, QString(separator), position))
        return line;
    const QString batchMark = QStringLiteral("/b");
    QString verb = trimmedBlanks(raw.left(position - 1).toLower());
    if (InStrHas(verb, batchMark, position)) {
        line.batch = true;
        verb = trimmedBlanks(verb.remove(batchMark));
    }
    // Deliberately lenient: a part of a verb ("sync", "up") passes, names no action and runs none.
    const QString verbs = QStringLiteral("syncup.syncdown.put.get.open.openp");
    // Letter by letter: the verb is in lower case, and to InStrHas U+017F is an "s".
    if (!verb.isEmpty() && verbs.contains(verb)) {
        line.verb = verb;
        line.arguments = raw.split(separator);
    }
    return line;
}

} // namespace venlo
