#include "ftppane/RemoteRows.h"

#include <QDateTime>

#include "db/DisplayFormat.h"
#include "shared/NameList.h"

namespace venlo
{

namespace
{
RowList::Row rowOf(const QString &line, bool folder)
{
    const UploadLine fields = UploadLine::parse(folder ? line + QLatin1Char('\t') : line);
    RowList::Row row;
    row.tag = folder ? EntryTag::FD : EntryTag::FL;
    row.texts = {fields.name, fields.dateText, folder ? QString() : fields.sizeText,
                 remoteSortKey(fields.name, folder)};
    return row;
}
} // namespace

QString newFolderName()
{
    return QStringLiteral("_Directry");
}

RowList::Layout remoteLayout()
{
    RowList::Layout layout;
    layout.headings = {QStringLiteral("名前"), QStringLiteral("更新日時"), QStringLiteral("ｻｲｽﾞ"),
                       QString()};
    layout.tieColumn = RemoteColumn::SortKey;
    layout.rightAligned = {RemoteColumn::Size};
    return layout;
}

QString remoteSortKey(const QString &name, bool folder)
{
    return name + QLatin1Char(folder ? 'D' : 'L');
}

std::vector<RowList::Row> remoteRows(const QString &folderLines, const QString &fileLines)
{
    const QStringList folders = splitNames(folderLines);
    const QStringList files = splitNames(fileLines);
    std::vector<RowList::Row> rows;
    rows.reserve(static_cast<size_t>(folders.size() + files.size()));
    for (const QString &line : folders)
        rows.push_back(rowOf(line, true));
    for (const QString &line : files)
        rows.push_back(rowOf(line, false));
    return rows;
}

RowList::Row newFolderRow()
{
    RowList::Row row = rowOf(
        newFolderName() + QLatin1Char('\t') + FormatDateText(QDateTime::currentDateTime()), true);
    row.tag = EntryTag::NW;
    return row;
}

} // namespace venlo
