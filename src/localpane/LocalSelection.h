#pragma once

#include <QModelIndex>
#include <QString>
#include <QStringList>

namespace venlo
{

class FrontEnd;
class LocalViews;

/// How a menu command wants what is selected.
struct CollectFlags {
    bool forHost = false;      ///< paths joined with "," as the host reads them, otherwise with NUL
    bool filesOnly = false;    ///< folders are left out
    bool folderItself = false; ///< with nothing selected, the shown folder
    bool operator==(const CollectFlags &) const = default;
};

/// The flags of a command's index, which is looked for as two digits in fixed texts.
[[nodiscard]] CollectFlags collectFlags(int index);
/// False for the commands that look at nothing selected: 03, 07, 13 and 15.
[[nodiscard]] bool collectsFirst(int index);

/// What is selected in the local pane, as full paths. Entries that no operation may touch (names
/// with CR, LF, TAB or undecodable bytes) are left out; a status line says so.
class LocalSelection
{
public:
    LocalSelection(LocalViews &views, FrontEnd &frontEnd);

    /// The selected node, or the list's selected rows.
    [[nodiscard]] QStringList paths(bool forTree, bool filesOnly = false) const;
    /// The same as a command wants it; empty when nothing is selected.
    [[nodiscard]] QString collect(bool forTree, CollectFlags flags) const;
    [[nodiscard]] QModelIndexList selectedRows() const;
    [[nodiscard]] QModelIndex selectedNode() const;
    /// Where a paste goes: the shown folder, or the one folder that is selected in the list.
    [[nodiscard]] QString targetFolder(bool forTree) const;

private:
    [[nodiscard]] bool usable(const QString &name) const;

    LocalViews &m_views;
    FrontEnd &m_frontEnd;
};

} // namespace venlo
