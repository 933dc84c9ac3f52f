#include "support/ListingText.h"

#include <QLocale>

namespace venlo::test
{

namespace
{

using Item = ScriptedTree::Item;
using Kind = ScriptedTree::Kind;

bool isShown(const Item &item, const ServerOptions &options)
{
    return options.listsDotNames || !item.name.startsWith('.');
}

QByteArray english(const QDateTime &time, const QString &format)
{
    return QLocale::c().toString(time, format).toLatin1();
}

QDateTime wallClock(const QDateTime &utc, const ServerOptions &options)
{
    const bool summer = options.summerUntil.isValid() && utc < options.summerUntil;
    return utc.addSecs(options.listOffsetSeconds + (summer ? 3600 : 0));
}

QByteArray unixTime(const QDateTime &utc, const ServerOptions &options)
{
    const QDateTime shown = wallClock(utc, options);
    const qint64 age = utc.secsTo(QDateTime::currentDateTimeUtc());
    const bool recent = age < 182 * 86'400LL && age > -3600;
    if (recent && options.dialect == ListDialect::Unix)
        return english(shown, QStringLiteral("MMM dd HH:mm"));
    return english(shown, QStringLiteral("MMM dd  yyyy"));
}

QByteArray unixLine(const Item &item, const ServerOptions &options)
{
    const bool folder = item.node.kind == Kind::Folder;
    const bool link = item.node.kind == Kind::Link;
    const QByteArray size = QByteArray::number(folder ? 4096 : item.node.bytes.size());
    QByteArray line = folder ? "drwxr-xr-x    2 " : link ? "lrwxrwxrwx    1 " : "-rw-r--r--    1 ";
    line += "user     group    " + size.rightJustified(12) + ' ';
    line += unixTime(item.node.modified, options) + ' ' + item.name;
    return link ? line + " -> " + item.node.bytes : line;
}

QByteArray dosLine(const Item &item, const ServerOptions &options)
{
    const QDateTime shown = wallClock(item.node.modified, options);
    const QByteArray middle = item.node.kind == Kind::Folder
                                  ? QByteArray("      <DIR>         ")
                                  : QByteArray::number(item.node.bytes.size()).rightJustified(20);
    return english(shown, QStringLiteral("MM-dd-yy  hh:mmAP")) + ' ' + middle + ' ' + item.name;
}

/// What STAT shows of a folder.
struct StatLook {
    bool itself = false; ///< "." and ".."
    bool half = false;
    bool dotNames = false;
};

StatLook statLook(const ServerOptions &options, bool all)
{
    if (all)
        return {options.statAll != StatAll::WithoutItself, options.statAll == StatAll::FirstHalf,
                true};
    const bool plain = options.stat != StatPath::ItselfForAll;
    return {plain && options.stat != StatPath::WithoutItself, options.stat == StatPath::FirstHalf,
            plain && options.statShowsDotNames};
}

QByteArray eplfLine(const Item &item)
{
    QByteArray line = "+m" + QByteArray::number(item.node.modified.toSecsSinceEpoch()) + ',';
    if (item.node.kind == Kind::Folder)
        line += "/,";
    else
        line += "r,s" + QByteArray::number(item.node.bytes.size()) + ',';
    return line + '\t' + item.name;
}

QByteArray listLine(const Item &item, const ServerOptions &options)
{
    switch (options.dialect) {
    case ListDialect::Unix:
    case ListDialect::UnixDay:
        return unixLine(item, options);
    case ListDialect::Dos:
        return dosLine(item, options);
    case ListDialect::Eplf:
        return eplfLine(item);
    }
    return {};
}

} // namespace

QByteArray mlsdLine(const Item &item)
{
    QByteArray facts = "modify=" + timeVal(item.node.modified) + ';';
    switch (item.node.kind) {
    case Kind::File:
        facts += "size=" + QByteArray::number(item.node.bytes.size()) + ";type=file;";
        break;
    case Kind::Folder:
        facts += "type=dir;";
        break;
    case Kind::Link:
        facts += "type=OS.unix=slink:" + item.node.bytes + ';';
        break;
    }
    return facts + ' ' + item.name;
}

QByteArray listText(const std::vector<Item> &items, const ServerOptions &options)
{
    QByteArray text;
    for (const Item &item : items) {
        if (isShown(item, options))
            text += listLine(item, options) + "\r\n";
    }
    return text;
}

QByteArray statText(const std::vector<Item> &items, const ServerOptions &options, bool all)
{
    const StatLook look = statLook(options, all);
    const QByteArray now = unixTime(QDateTime::currentDateTimeUtc(), options);
    QByteArray text;
    if (look.itself) {
        for (const char *name : {".", ".."})
            text += "drwxr-xr-x    2 user     group            4096 " + now + ' ' + name + "\r\n";
    }
    std::size_t left = look.half ? (items.size() + 1) / 2 : items.size();
    for (const Item &item : items) {
        if (left-- == 0)
            break;
        if (look.dotNames || !item.name.startsWith('.'))
            text += listLine(item, options) + "\r\n";
    }
    return text;
}

QByteArray mlsdText(const std::vector<Item> &items, const ServerOptions &options)
{
    const QByteArray now = timeVal(QDateTime::currentDateTimeUtc());
    QByteArray text = "modify=" + now + ";type=cdir; .\r\nmodify=" + now + ";type=pdir; ..\r\n";
    for (const Item &item : items) {
        if (isShown(item, options))
            text += mlsdLine(item) + "\r\n";
    }
    return text;
}

QByteArray nlstText(const std::vector<Item> &items, const ServerOptions &options)
{
    QByteArray text;
    for (const Item &item : items) {
        if (isShown(item, options))
            text += item.name + "\r\n";
    }
    return text;
}

QByteArray timeVal(const QDateTime &utc)
{
    return utc.toUTC().toString(QStringLiteral("yyyyMMddHHmmss")).toLatin1();
}

QDateTime fromTimeVal(const QByteArray &text)
{
    QDateTime time =
        QDateTime::fromString(QString::fromLatin1(text.left(14)), QStringLiteral("yyyyMMddHHmmss"));
    time.setTimeSpec(Qt::UTC);
    return time;
}

} // namespace venlo::test
