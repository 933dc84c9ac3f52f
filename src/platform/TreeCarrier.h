#pragma once

#include <filesystem>
#include <vector>

#include "platform/ShellFileFlow.h"

namespace venlo
{

/// Copies or moves entries with everything in them into a folder. Within one file system a move is
/// a rename; between two it copies, and takes the source away when all of it has arrived.
class TreeCarrier
{
public:
    TreeCarrier(const ShellFileOrder &order, ShellFileWatcher &watcher, ShellFileFlow &flow);
    /// Carries one of the order's entries.
    void carry(const std::filesystem::path &from);

private:
    /// A source whose copy has arrived, as it was then.
    struct Arrived {
        std::filesystem::path path;
        std::filesystem::file_time_type modified;
        bool folder = false;
    };
    using Path = std::filesystem::path;
    using FileType = std::filesystem::file_type;

    void carryTo(const Path &from, const Path &to);
    void carryEntry(const Path &from, const Path &to, bool inMerge);
    void mergeFolders(const Path &from, const Path &to, bool inMerge);
    void copyEntry(const Path &from, const Path &to, FileType type, bool replace);
    void copyFolder(const Path &from, const Path &to);
    void copyContent(const Path &from, const Path &to, bool inMerge);
    void copyFile(const Path &from, const Path &to, bool replace);
    void copyLink(const Path &from, const Path &to, bool replace);
    void intoPlace(const Path &from, const Path &temporary, const Path &to, bool replace);
    [[nodiscard]] bool renamed(const Path &from, const Path &to, bool replace);
    [[nodiscard]] bool mayReplace(const Path &from, const Path &to, bool folders);
    void arrived(const Path &from, bool folder);
    void takeSourcesAway();
    [[nodiscard]] bool isBelow(const Path &folder, const Path &top) const;
    [[nodiscard]] Path nameOfCopy(const Path &from) const;
    void fail(const Path &entry, const std::error_code &why);
    void fail(const Path &entry, const QString &why);

    ShellFileWatcher &m_watcher;
    ShellFileFlow &m_flow;
    const bool m_move;
    const bool m_noConfirm;
    const Path m_to;
    bool m_yesToAllFiles = false;
    bool m_yesToAllFolders = false;
    bool m_copying = false; ///< the entry in hand is copied, not renamed
    int m_depth = 0;        ///< folders of the order's entry above the one in hand
    std::vector<Arrived> m_arrived;
};

} // namespace venlo
