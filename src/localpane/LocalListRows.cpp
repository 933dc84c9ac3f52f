// What the rows of the local list say of an entry.
#include "db/DisplayFormat.h"
#include "localpane/FolderReader.h"
#include "localpane/LocalListFill.h"

namespace venlo
{

RowList::Layout LocalListFill::layout()
{
    const QStringList headings{QStringLiteral("名前"),
                               QStringLiteral("更新日時"),
                               QStringLiteral("ｻｲｽﾞ"),
                               QStringLiteral("拡張子"),
                               QStringLiteral("種類"),
                               QStringLiteral("属性"),
                               QString()};
    return {headings, Type, SortKey, {Size}};
}

QString LocalListFill::toolTipFor(const DiskEntry &entry)
{
    const auto day = [](const QDateTime &time) {
        return time.toString(QStringLiteral("yyyy/MM/dd"));
    };
    // The labels stand the other way round on purpose.
    const QString dates = QStringLiteral("更新:") + day(entry.created) + QStringLiteral(" 作成:") +
                          day(entry.modified);
    return entry.folder ? dates : dates + QStringLiteral(" ｻｲｽﾞ:") + FormatSizeText(entry.size);
}

RowList::Row LocalListFill::rowFor(const DiskEntry &entry, bool open)
{
    RowList::Row row;
    row.tag = entry.folder ? EntryTag::FD : EntryTag::FL;
    row.texts = QStringList(Columns);
    row.texts[Name] = entry.name;
    row.texts[Modified] = FormatDateText(entry.modified);
    row.texts[Letters] = entry.letters;
    row.texts[SortKey] = (entry.folder ? QLatin1Char('D') : QLatin1Char('L')) + entry.name;
    row.toolTip = toolTipFor(entry);
    row.pale = open && entry.hidden;
    row.viewOnly = entry.viewOnly;
    return row;
}

void LocalListFill::AddFolderRow(Rows &rows, const DiskEntry &entry, bool open)
{
    RowList::Row row = rowFor(entry, open);
    // What is never walked has no size; the others follow when they were measured.
    if (entry.link || entry.viewOnly)
        row.texts[Size] = FormatSizeText(0);
    row.texts[Type] = QStringLiteral("ﾌｧｲﾙﾌｫﾙﾀﾞ");
    row.lateKnown = true;
    rows.push_back(std::move(row));
}

void LocalListFill::AddFileRow(Rows &rows, const DiskEntry &entry, const QString &extension,
                               bool open)
{
    RowList::Row row = rowFor(entry, open);
    row.texts[Size] = FormatSizeText(entry.size);
    row.texts[Extension] = extension;
    rows.push_back(std::move(row));
}

} // namespace venlo
