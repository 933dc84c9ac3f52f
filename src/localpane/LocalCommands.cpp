#include "localpane/LocalCommands.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include "ftp/Session.h"
#include "localpane/FolderPaths.h"
#include "localpane/LocalDrops.h"
#include "localpane/LocalNames.h"
#include "localpane/LocalSelection.h"
#include "localpane/LocalShell.h"
#include "localpane/LocalViews.h"
#include "platform/FileClipboard.h"
#include "shared/WindowDesk.h"
#include "views/FolderTree.h"
#include "views/RowList.h"

namespace venlo
{

namespace
{
/// Indexes of the folder menu.
enum FoldEntry {
    Explore = 0,
    Open = 1,
    OpenText = 2,
    Find = 3,
    Cut = 5,
    Copy = 6,
    Paste = 7,
    PutFiles = 9,
    Synchronise = 10,
    Delete = 12,
    Rename = 13,
    NewFolder = 15
};

QStringList split(const QString &joined)
{
    return joined.split(QChar(0), Qt::SkipEmptyParts);
}
} // namespace

struct LocalCommands::Parts {
    Parts(LocalCommands &commands, LocalViews &given, Rooms with)
        : views(given), rooms(with), selection(given, with.desk),
          shell(given, with.desk, with.gate), names(given, with.desk, with.gate, shell, commands),
          drops({given, selection, shell, with.gate, with.session, commands})
    {
    }

    void perform(int index, const QString &collected, bool forTree);
    void paste(bool forTree);
    void deleteSelected(const QString &collected, bool forTree);
    void deleteNode(const QString &path);

    LocalViews &views;
    Rooms rooms;
    LocalSelection selection;
    LocalShell shell;
    LocalNames names;
    LocalDrops drops;
};

LocalCommands::LocalCommands(LocalViews &views, Rooms rooms, QObject *parent)
    : QObject(parent), m_parts(std::make_unique<Parts>(*this, views, rooms))
{
}

LocalCommands::~LocalCommands() = default;

void LocalCommands::RunMenuCommand(const QString &menuName, int index, bool forTree)
{
    if (menuName.toUpper() != QLatin1String("FOLD"))
        return;
    const QString collected =
        collectsFirst(index) ? m_parts->selection.collect(forTree, collectFlags(index)) : QString();
    m_parts->perform(index, collected, forTree);
}

void LocalCommands::Parts::perform(int index, const QString &collected, bool forTree)
{
    switch (index) {
    case Explore:
    case Open:
    case OpenText:
        if (!collected.isEmpty())
            views.raiseEOpnFL(index, collected);
        break;
    case Find:
        views.raiseEAct(QStringLiteral("検索"));
        break;
    case Cut:
    case Copy:
        if (!collected.isEmpty())
            putFilesOnClipboard(split(collected), index == Cut ? cutEffect : copyEffect);
        break;
    case Paste:
        paste(forTree);
        break;
    case PutFiles:
        if (!collected.isEmpty())
            views.requestUpload(forTree);
        break;
    case Synchronise:
        views.raiseEAct(QStringLiteral("同期"));
        break;
    case Delete:
        deleteSelected(collected, forTree);
        break;
    case Rename:
        names.startRename(forTree);
        break;
    case NewFolder:
        names.startNewFolder(forTree);
        break;
    default: // separators
        break;
    }
}

void LocalCommands::RunShellFileOp(const QString &verb, const QString &from, const QString &to,
                                   bool silent, bool noConfirm)
{
    ShellFileOrder order;
    order.verb = shellVerbCode(verb);
    order.from = split(from);
    order.to = to;
    order.silent = silent;
    order.noConfirm = noConfirm;
    m_parts->shell.run(order);
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

void LocalCommands::keyWanted(PaneKey key, bool forTree)
{
    const auto menu = [this, forTree](int index) {
        RunMenuCommand(QStringLiteral("FOLD"), index, forTree);
    };
    switch (key) {
    case PaneKey::Delete:
        menu(Delete);
        break;
    case PaneKey::Rename:
        menu(Rename);
        break;
    case PaneKey::Cut:
        menu(Cut);
        break;
    case PaneKey::Copy:
        menu(Copy);
        break;
    case PaneKey::Paste:
        menu(Paste);
        break;
    case PaneKey::Refresh:
    case PaneKey::Parent:
        break; // the pane itself goes about
    }
}

bool LocalCommands::nameEntered(const QModelIndex &index, const QString &text, bool inTree)
{
    return m_parts->names.entered(index, text, inTree);
}

void LocalCommands::nameAbandoned(const QModelIndex &index, bool inTree)
{
    m_parts->names.abandoned(index, inTree);
}

void LocalCommands::droppedOnRoot(const QString &firstPath)
{
    m_parts->drops.droppedOnRoot(firstPath);
}

std::unique_ptr<QMimeData> LocalCommands::dragData(const QTreeView &from)
{
    return m_parts->drops.dragData(from);
}

Qt::DropActions LocalCommands::dragActions() const
{
    return Qt::CopyAction | Qt::MoveAction;
}

void LocalCommands::dragEnded(Qt::DropAction action)
{
    m_parts->drops.dragEnded(action);
}

Qt::DropAction LocalCommands::dragOver(const QTreeView &view, const QModelIndex &under,
                                       const QDropEvent &event)
{
    return m_parts->drops.over(view, under, event);
}

void LocalCommands::dragLeft(const QTreeView & /*view*/)
{
    m_parts->drops.left();
}

Qt::DropAction LocalCommands::dropped(const QTreeView &view, const QModelIndex &under,
                                      const QDropEvent &event)
{
    return m_parts->drops.dropped(view, under, event);
}

} // namespace venlo
