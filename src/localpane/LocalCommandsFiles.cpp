// The commands that touch files or the clipboard.
#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include "ftp/Session.h"
#include "localpane/FolderPaths.h"
#include "localpane/LocalCommandsParts.h"
#include "platform/FileClipboard.h"
#include "views/FolderTree.h"
#include "views/RowList.h"

namespace venlo
{

QStringList LocalCommands::Parts::split(const QString &joined)
{
    return joined.split(QChar(0), Qt::SkipEmptyParts);
}

void LocalCommands::Parts::paste(bool forTree)
{
    const QString target = selection.targetFolder(forTree);
    if (target.isEmpty())
        return;
    const QMimeData *data = QGuiApplication::clipboard()->mimeData();
    if (data != nullptr && hasRemoteEntries(*data)) {
        if (const auto entries = remoteEntries(*data, rooms.session.currentSite()))
            views.raiseFetchWanted(*entries, target);
        return;
    }
    const FileClip clip = filesOnClipboard();
    if (clip.paths.isEmpty())
        return;
    ShellFileOrder order;
    if ((clip.effect & dropEffectCopy) != 0)
        order.verb = ShellVerb::Copy;
    else if ((clip.effect & dropEffectMove) != 0)
        order.verb = ShellVerb::Move;
    else
        return; // whoever put them there did not say what a paste is to do
    order.from = clip.paths;
    order.to = target;
    shell.run(order);
}

void LocalCommands::Parts::deleteSelected(const QString &collected, bool forTree)
{
    if (collected.isEmpty())
        return;
    if (forTree) {
        deleteNode(collected);
        return;
    }
    ShellFileOrder order;
    order.verb = ShellVerb::Delete;
    order.from = split(collected);
    shell.run(order);
}

void LocalCommands::Parts::deleteNode(const QString &path)
{
    const QModelIndex node = selection.selectedNode();
    if (node == views.tree().root()) {
        rooms.desk.message(QStringLiteral("ﾙｰﾄﾊﾟｽは削除できません"));
        return;
    }
    const QModelIndex next = node.siblingAtRow(node.row() + 1);
    views.select(next.isValid() ? next : node.parent());
    ShellFileOrder order;
    order.verb = ShellVerb::Delete;
    order.from = QStringList(path);
    shell.run(order);
    // Kept after all: the person is where the question was asked.
    const QModelIndex kept = folderExists(path) ? shell.nodeOf(path) : QModelIndex();
    if (kept.isValid())
        views.select(kept);
}

void LocalCommands::copyListText()
{
    constexpr int columns = 6;
    const RowList &rows = m_parts->views.rows();
    QString text = QStringLiteral("名前.更新日.ｻｲｽﾞ.拡張子.種類.属性");
    text.replace(QLatin1Char('.'), QLatin1Char('\t'));
    text += QLatin1Char('\r');
    for (int row = 0; row < rows.count(); ++row) {
        for (int column = 0; column < columns; ++column)
            text += rows.text(row, column) + QLatin1Char(column + 1 < columns ? '\t' : '\r');
    }
    QClipboard *clipboard = QGuiApplication::clipboard();
    clipboard->clear();
    clipboard->setText(text);
}

} // namespace venlo
