#include "localpane/LocalCommands.h"

#include <QMimeData>

#include "localpane/LocalCommandsParts.h"
#include "platform/FileClipboard.h"

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
} // namespace

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
            putFilesOnClipboard(Parts::split(collected), index == Cut ? cutEffect : copyEffect);
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
    order.from = Parts::split(from);
    order.to = to;
    order.silent = silent;
    order.noConfirm = noConfirm;
    m_parts->shell.run(order);
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
    case PaneKey::CopyText:
        copyListText();
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
