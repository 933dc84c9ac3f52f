#pragma once

#include "views/FolderTree.h"

#include <array>

namespace venlo
{

/// One folder, or the placeholder of folders that were not read yet. A parent owns its children;
/// each knows its own row, so that asking for an index never searches.
struct FolderTree::Node {
    Node *parent = nullptr;
    int row = 0;
    QString key;
    QString text;
    EntryTag tag = EntryTag::FD;
    bool pale = false;
    std::array<QIcon, 2> icons; ///< closed, open
    std::array<bool, 2> iconKnown{};
    std::vector<std::unique_ptr<Node>> children;

    [[nodiscard]] int count() const { return static_cast<int>(children.size()); }
    void renumber(size_t from)
    {
        for (size_t i = from; i < children.size(); ++i)
            children[i]->row = static_cast<int>(i);
    }
};

} // namespace venlo
