#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
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
    using Path = std::filesystem::path;
    using FileType = std::filesystem::file_type;
    /// A source as it was at one moment; time and size only of files.
    struct Source {
        Path path;
        FileType type = FileType::none;
        std::filesystem::file_time_type modified;
        std::uintmax_t size = 0;
        bool operator==(const Source &) const = default;
    };

    void carryTo(const Path &from, const Path &to);
    void carryEntry(const Path &from, const Path &to, bool inMerge);
    void mergeFolders(const Path &from, const Path &to, bool inMerge);
    void copyEntry(const Path &from, const Path &to, FileType type, bool replace);
    void copyFolder(const Path &from, const Path &to);
    void copyContent(const Path &from, const Path &to, bool inMerge);
    void copyFile(const Path &from, const Path &to, bool replace);
    void copyLink(const Path &from, const Path &to, bool replace);
    void intoPlace(const Source &from, const Path &temporary, const Path &to, bool replace);
    [[nodiscard]] bool renamed(const Path &from, const Path &to, bool replace);
    [[nodiscard]] bool mayReplace(const Path &from, const Path &to, bool folders);
    [[nodiscard]] static Source lookAt(const Path &path);
    [[nodiscard]] static bool isSame(const Path &from, const Path &to);
    void arrived(const Source &from, const Path &into);
    [[nodiscard]] bool copiesAreSafe();
    void takeSourcesAway();
    void takeAway(const Source &source, bool more);
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
    bool m_copying = false;        ///< the entry in hand is copied, not renamed
    int m_depth = 0;               ///< folders of the order's entry above the one in hand
    std::vector<Source> m_arrived; ///< as they were before their copies were begun
    std::set<Path> m_filled;       ///< the folders their copies are in
};

} // namespace venlo
