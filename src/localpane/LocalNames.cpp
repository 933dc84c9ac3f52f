#include "localpane/LocalNames.h"

#include <QFileInfo>
#include <QItemSelectionModel>
#include <QTimer>

#include "db/DisplayFormat.h"
#include "localpane/LocalListFill.h"
#include "localpane/LocalShell.h"
#include "localpane/LocalViews.h"
#include "platform/EntryLook.h"
#include "platform/EntryNames.h"
#include "platform/FileNames.h"
#include "platform/FilesystemPath.h"
#include "shared/OperationGate.h"
#include "shared/WindowDesk.h"
#include "views/FolderTree.h"
#include "views/PaneView.h"
#include "views/RowList.h"

namespace venlo
{

namespace
{
QString newFolderName()
{
    return QStringLiteral("新規ﾌｫﾙﾀﾞ");
}

bool isThere(const QString &path)
{
    const EntryLook info(path);
    return info.exists() || info.isSymbolicLink();
}
} // namespace

LocalNames::LocalNames(LocalViews &views, WindowDesk &desk, OperationGate &gate, LocalShell &shell,
                       QObject &context)
    : m_views(views), m_desk(desk), m_gate(gate), m_shell(shell), m_context(context)
{
}

template <typename Action>
void LocalNames::afterEditing(Action action)
{
    QTimer::singleShot(0, &m_context, std::move(action));
}

void LocalNames::startNewFolder(bool inTree)
{
    if (inTree)
        newNode();
    else
        newRow();
}

void LocalNames::newNode()
{
    PaneView &view = m_views.TrView();
    const QPersistentModelIndex parent = view.currentIndex();
    if (!parent.isValid() || m_views.tree().tag(parent) != EntryTag::FD)
        return;
    m_views.ExpandNode(parent);
    const QPersistentModelIndex node =
        m_views.tree().addChild(parent, {newFolderName(), false, false, EntryTag::NW});
    if (!node.isValid())
        return;
    m_views.setBusy(true); // the list stays on the folder that is there
    view.expand(parent);
    view.setCurrentIndex(node);
    m_views.setBusy(false);
    view.setFocus();
    view.editName(node);
}

void LocalNames::newRow()
{
    if (m_views.NodePath().isEmpty())
        return;
    RowList::Row entry;
    entry.tag = EntryTag::NW;
    entry.texts.resize(LocalListFill::Columns);
    entry.texts[LocalListFill::Name] = newFolderName();
    entry.texts[LocalListFill::SortKey] = QLatin1Char('D') + newFolderName();
    if (!m_views.rows().append({entry}))
        return;
    const int row = m_views.rows().rowOf(EntryTag::NW, newFolderName());
    const QModelIndex index = m_views.rows().index(row, 0);
    PaneView &view = m_views.LsView();
    view.selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                      QItemSelectionModel::Rows);
    view.setFocus();
    view.editName(index);
}

void LocalNames::startRename(bool inTree)
{
    PaneView &view = inTree ? m_views.TrView() : m_views.LsView();
    const QModelIndex index = view.currentIndex();
    if (!index.isValid())
        return;
    if (inTree && index == m_views.tree().root()) {
        m_desk.message(QStringLiteral("ﾙｰﾄﾊﾟｽの名前は変更できません"));
        return;
    }
    const QString name =
        inTree ? m_views.tree().text(index) : m_views.rows().row(index.row()).texts.value(0);
    if (isUnusableName(name)) {
        (void)refused(name.simplified(), QStringLiteral("扱えない文字を含む名前です"));
        return;
    }
    if (!inTree && !view.selectionModel()->isRowSelected(index.row(), {}))
        return;
    view.editName(index);
}

bool LocalNames::entered(const QModelIndex &index, const QString &text, bool inTree)
{
    // The editor closes at once: nothing on the disk may change under a running operation.
    if (!index.isValid())
        return true;
    if (m_gate.busy())
        return false;
    return inTree ? nodeEntered(index, text) : rowEntered(index.row(), text);
}

bool LocalNames::nodeEntered(const QModelIndex &node, const QString &text)
{
    FolderTree &tree = m_views.tree();
    const QString parent = tree.path(node.parent());
    const bool made = tree.tag(node) == EntryTag::NW;
    const QString before = tree.text(node);
    if (!made && before == text)
        return true;
    if (!(made ? make(parent, text) : rename(parent, before, text)))
        return false;
    tree.setTag(node, EntryTag::FD);
    tree.setText(node, text);
    afterEditing([this, parent, path = m_views.pathIn(parent, text), made] {
        nodeNamed(parent, path, made);
    });
    return true;
}

void LocalNames::nodeNamed(const QString &parent, const QString &path, bool made)
{
    const QModelIndex above = m_shell.nodeOf(parent);
    if (above.isValid())
        m_views.readNode(above);
    const QModelIndex node = made ? m_shell.nodeOf(path) : m_views.TrView().currentIndex();
    // The list is that of a folder that came into being or has another path now.
    if (node.isValid())
        m_views.select(node);
}

bool LocalNames::rowEntered(int row, const QString &text)
{
    RowList &rows = m_views.rows();
    const QString folder = m_views.NodePath();
    const QString before = rows.row(row).texts.value(LocalListFill::Name);
    const bool made = rows.row(row).tag == EntryTag::NW;
    if (!made && before == text)
        return true;
    if (!(made ? make(folder, text) : rename(folder, before, text)))
        return false;
    const bool isFolder = made || rows.row(row).tag == EntryTag::FD;
    rows.setText(row, LocalListFill::Name, text); // first: the other columns hang on it
    if (made) {
        rows.setTag(row, EntryTag::FD);
        rows.setText(row, LocalListFill::Modified,
                     FormatDateText(QFileInfo(m_views.pathIn(folder, text)).lastModified()));
        rows.setText(row, LocalListFill::Type, QStringLiteral("ﾌｧｲﾙﾌｫﾙﾀﾞ"));
    } else if (!isFolder) {
        const qsizetype dot = text.lastIndexOf(QLatin1Char('.'));
        rows.setText(row, LocalListFill::Extension, dot < 0 ? QString() : text.mid(dot + 1));
    }
    rows.setText(row, LocalListFill::SortKey, QLatin1Char(isFolder ? 'D' : 'L') + text);
    afterEditing([this, folder] { m_shell.bringUpToDate({folder}); });
    return true;
}

bool LocalNames::refused(const QString &name, const QString &why)
{
    m_desk.message(name + QLatin1Char('\n') + why);
    return false;
}

bool LocalNames::make(const QString &folder, const QString &name)
{
    QString why = whyNotAFileName(name);
    if (why.isEmpty() && isUnusableName(name))
        why = QStringLiteral("ﾌｧｲﾙ名に使用できない名前です");
    const QString path = m_views.pathIn(folder, name);
    if (why.isEmpty() && isThere(path))
        why = QStringLiteral("同じ名前のﾌｫﾙﾀﾞまたはﾌｧｲﾙが既にあります");
    if (why.isEmpty() && makeFolder(path, why))
        return true;
    return refused(name, why);
}

bool LocalNames::rename(const QString &folder, const QString &before, const QString &name)
{
    QString why = whyNotAFileName(name);
    if (why.isEmpty() && isUnusableName(name))
        why = QStringLiteral("ﾌｧｲﾙ名に使用できない名前です");
    const QString path = m_views.pathIn(folder, name);
    // Another writing of the same name is no clash where letter case does not count.
    const bool sameName = before.compare(name, Qt::CaseInsensitive) == 0 &&
                          QFileInfo(m_views.pathIn(folder, before)) == QFileInfo(path);
    if (why.isEmpty() && !sameName && isThere(path))
        why = QStringLiteral("同じ名前のﾌｫﾙﾀﾞまたはﾌｧｲﾙが既にあります");
    if (why.isEmpty() && giveName(m_views.pathIn(folder, before), path, why))
        return true;
    return refused(name, why);
}

void LocalNames::abandoned(const QModelIndex &index, bool inTree)
{
    const QAbstractItemModel *model = index.model();
    if (!index.isValid() || (inTree ? model != &m_views.tree() : model != &m_views.rows()))
        return;
    if (!inTree) {
        if (m_views.rows().row(index.row()).tag == EntryTag::NW)
            m_views.rows().remove({index.row()});
        return;
    }
    if (m_views.tree().tag(index) != EntryTag::NW)
        return;
    const QPersistentModelIndex node = index;
    if (m_views.TrView().currentIndex() == index)
        m_views.select(index.parent());
    m_views.tree().remove(node);
}

} // namespace venlo
