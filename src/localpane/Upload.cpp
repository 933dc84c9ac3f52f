#include "localpane/Upload.h"

#include <algorithm>

#include "db/DisplayFormat.h"
#include "ftp/LocalPath.h"
#include "ftp/RemoteOperations.h"
#include "localpane/FolderPaths.h"
#include "localpane/FolderReader.h"
#include "mainwin/popup/sfMsg.h"
#include "platform/EntryLook.h"

namespace venlo
{

namespace
{
constexpr qint64 unknown = -1;
constexpr int unnoticedMilliseconds = 500; // that the total may take to be counted

qint64 sum(qint64 one, qint64 other)
{
    return one < 0 || other < 0 ? unknown : one + other;
}
} // namespace

Upload::Upload(RemoteOperations &operations, sfMsg &window,
               std::function<void(const QString &)> say)
    : m_operations(operations), m_window(window), m_say(std::move(say))
{
}

UploadLine Upload::lineFor(const QString &path)
{
    const EntryLook info(path);
    return {info.fileName(), FormatDateText(info.lastModified()), FormatSizeText(info.size())};
}

QString Upload::textFor(const QString &folder, const QString &remoteDir)
{
    return folder + QStringLiteral(" > ") + remoteDir + QStringLiteral(" Up Loading････");
}

bool Upload::run(const QStringList &localPaths, const QString &remoteDir)
{
    const QList<Group> groups = groupsOf(localPaths);
    const QDeadlineTimer inTime(unnoticedMilliseconds);
    qint64 bytes = 0;
    for (const Group &group : groups)
        bytes = sum(bytes, bytesOf(group, inTime));
    m_window.setTotal(bytes);
    return std::all_of(groups.begin(), groups.end(),
                       [&](const Group &group) { return runGroup(group, remoteDir); });
}

QList<Upload::Group> Upload::groupsOf(const QStringList &localPaths)
{
    QList<Group> groups;
    for (const QString &path : localPaths) {
        const QString tidy = tidyFolder(path);
        if (!mayGo(tidy))
            continue;
        const QString folder = parentFolder(tidy);
        auto group = std::find_if(groups.begin(), groups.end(), [&](const Group &known) {
            return isSameFolder(known.folder, folder);
        });
        if (group == groups.end())
            group = groups.insert(groups.end(), {folder, {}, {}});
        if (EntryLook(tidy).isDir())
            group->folders.append(localName(tidy));
        else
            group->files.append(lineFor(tidy));
    }
    return groups;
}

bool Upload::mayGo(const QString &path)
{
    const EntryLook info(path);
    QString why;
    if (isOddName(info.fileName()))
        why = QStringLiteral("名前に使用できない文字があるため､転送しません");
    else if (info.isDir() && (info.isSymbolicLink() || info.isJunction()))
        why = QStringLiteral("ﾌｫﾙﾀﾞへのﾘﾝｸは転送しません");
    else if (isBareDrive(path))
        why = QStringLiteral("ﾄﾞﾗｲﾌﾞ全体は転送しません");
    else if (!info.exists())
        why = QStringLiteral("存在しません");
    else if (!info.isDir() && !info.isFile())
        why = QStringLiteral("通常のﾌｧｲﾙではないため､転送しません");
    if (!why.isEmpty())
        m_window.addLastingLine(path + QStringLiteral(" : ") + why);
    return why.isEmpty();
}

qint64 Upload::bytesOf(const Group &group, QDeadlineTimer inTime)
{
    qint64 bytes = 0;
    for (const UploadLine &line : group.files) {
        if (inTime.hasExpired())
            return unknown;
        bytes += EntryLook(localChild(group.folder, line.name)).size();
    }
    for (const QString &name : group.folders)
        bytes = sum(bytes, bytesBelow(localChild(group.folder, name), inTime));
    return bytes;
}

bool Upload::runRows(const Group &group, const QString &remoteDir)
{
    m_window.setTotal(bytesOf(group, QDeadlineTimer(unnoticedMilliseconds)));
    return runGroup(group, remoteDir);
}

bool Upload::runGroup(const Group &group, const QString &remoteDir)
{
    const QString text = textFor(group.folder, remoteDir);
    m_window.setTitleLine(text);
    bool ok = true;
    for (const QString &name : group.folders) {
        if (mayGo(localChild(group.folder, name)))
            m_operations.ftPutFold(group.folder, name, remoteDir, ok);
        if (!ok)
            return false;
    }
    m_say(text);
    QStringList lines;
    for (const UploadLine &line : group.files) {
        if (mayGo(localChild(group.folder, line.name)))
            lines.append(line.text());
    }
    if (!lines.isEmpty())
        m_operations.ftPutFile(remoteDir, joinNames(lines), group.folder, ok);
    return ok;
}

bool Upload::runFolder(const QString &folder, const QString &remoteDir)
{
    if (!mayGo(folder))
        return true;
    m_window.setTitleLine(textFor(folder, remoteDir));
    m_window.setTotal(bytesBelow(folder, QDeadlineTimer(unnoticedMilliseconds)));
    bool ok = true;
    m_operations.ftPutFold(parentFolder(folder), localName(folder), remoteDir, ok);
    return ok;
}

} // namespace venlo
