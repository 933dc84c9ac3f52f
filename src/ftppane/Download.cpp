#include "ftppane/Download.h"

#include <algorithm>

#include "ftp/RemoteOperations.h"
#include "mainwin/popup/sfMsg.h"
#include "shared/NameList.h"

namespace venlo
{

namespace
{
/// What is fetched from one directory.
struct Group {
    QString dir;
    QStringList folders;
    QStringList files;
};

QList<Group> groupsOf(const QList<RemoteEntry> &entries)
{
    QList<Group> groups;
    for (const RemoteEntry &entry : entries) {
        if (entry.name.isEmpty())
            continue;
        auto group = std::find_if(groups.begin(), groups.end(),
                                  [&](const Group &known) { return known.dir == entry.dir; });
        if (group == groups.end())
            group = groups.insert(groups.end(), {entry.dir, {}, {}});
        (entry.tag == EntryTag::FD ? group->folders : group->files).append(entry.name);
    }
    return groups;
}
} // namespace

Download::Download(RemoteOperations &operations, sfMsg &window,
                   std::function<void(const QString &)> say)
    : m_operations(operations), m_window(window), m_say(std::move(say))
{
}

QString Download::textFor(const QString &dir, const QString &localFolder)
{
    return dir + QStringLiteral(" > ") + localFolder + QStringLiteral(" Down Loading････");
}

bool Download::run(const QList<RemoteEntry> &entries, const QString &localFolder)
{
    for (const Group &group : groupsOf(entries)) {
        const QString text = textFor(group.dir, localFolder);
        m_window.setTitleLine(text);
        m_say(text);
        bool ok = true;
        for (const QString &name : group.folders) {
            m_operations.ftGetFold(localFolder, name, group.dir, ok);
            if (!ok)
                return false;
        }
        if (!group.files.isEmpty())
            m_operations.ftGetFile(group.dir, joinNames(group.files), localFolder, ok);
        if (!ok)
            return false;
    }
    return true;
}

} // namespace venlo
