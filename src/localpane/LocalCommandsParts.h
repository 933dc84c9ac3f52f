#pragma once

#include "localpane/LocalCommands.h"
#include "localpane/LocalDrops.h"
#include "localpane/LocalNames.h"
#include "localpane/LocalSelection.h"
#include "localpane/LocalShell.h"
#include "localpane/LocalViews.h"
#include "shared/WindowDesk.h"

namespace venlo
{

/// What the commands are made of. Lives as long as they do.
struct LocalCommands::Parts {
    Parts(LocalCommands &commands, LocalViews &given, Rooms with)
        : views(given), rooms(with), selection(given, with.desk),
          shell(given, with.desk, with.gate), names(given, with.desk, with.gate, shell, commands),
          drops({given, selection, shell, with.gate, with.session, commands})
    {
    }

    /// Paths joined with NUL.
    [[nodiscard]] static QStringList split(const QString &joined);
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

} // namespace venlo
