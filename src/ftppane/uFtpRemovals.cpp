// How the FTP pane deletes what lies on the server.
#include <QStringList>

#include "ftp/RemoteOperations.h"
#include "ftppane/OperationScopes.h"
#include "ftppane/uFtpParts.h"
#include "shared/Flags.h"
#include "shared/NameList.h"
#include "shared/WindowDesk.h"

namespace venlo
{

void uFtp::Parts::remove(bool forTree)
{
    run([&] {
        if (forTree)
            removeNode();
        else
            removeRows();
    });
}

void uFtp::Parts::removeNode()
{
    const QPersistentModelIndex at = browser->shown();
    if (!at.isValid())
        return;
    if (at == nodes->root()) {
        rooms.desk.message(QStringLiteral("ﾙｰﾄﾊﾟｽは削除できません"));
        return;
    }
    if (!rooms.desk.question(nodes->path(at) + QStringLiteral(" を削除します")) || !at.isValid())
        return;
    const ShownMessages window(rooms.window);
    const QString dir = browser->dirOf(at.parent());
    const QString name = nodes->text(at);
    rooms.window.setTitleLine(browser->dirOf(at) + QStringLiteral(" を削除しています････"));
    startTransfers();
    bool ok = true;
    rooms.operations.ftRemDir(dir, name, ok);
    look();
    if (!at.isValid())
        return;
    if (rooms.cache.isCached(dir, name)) {
        browser->refresh();
        return;
    }
    const FlagScope busy(browser->busy());
    const QPersistentModelIndex parent = at.parent();
    nodes->remove(at);
    browser->show(parent);
}

void uFtp::Parts::removeRows()
{
    QStringList folders;
    QStringList files;
    for (const RemoteEntry &entry : entries(false))
        (entry.tag == EntryTag::FD ? folders : files).append(entry.name);
    if (folders.isEmpty() && files.isEmpty())
        return;
    if (!rooms.desk.question(QStringLiteral("指定したﾌｫﾙﾀﾞ･ﾌｧｲﾙを削除します")))
        return;
    const ShownMessages window(rooms.window);
    const QString dir = browser->shownDir();
    rooms.window.setTitleLine(dir + QStringLiteral(" の項目を削除しています････"));
    startTransfers();
    bool ok = true;
    if (!folders.isEmpty())
        rooms.operations.ftRemDir(dir, joinNames(folders), ok);
    if (ok && !files.isEmpty())
        rooms.operations.ftDelFile(dir, joinNames(files), ok);
    look();
    browser->refresh();
}

} // namespace venlo
