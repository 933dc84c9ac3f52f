#pragma once

#include <QString>
#include <QStringList>

namespace venlo
{

/// What the shell is asked to do; the numbers are its function codes.
enum class ShellVerb { None = 0, Move = 1, Copy = 2, Delete = 3 };

/// "移動", "複写" and "削除"; any other text is no operation.
[[nodiscard]] ShellVerb shellVerbCode(const QString &verb);

/// The shell's flags: 64 (undo: into the recycle bin) for every delete, 4 (no progress window) when
/// silent, 16 (yes to all questions) when noConfirm, and never another one.
[[nodiscard]] quint16 shellFileFlags(ShellVerb verb, bool silent, bool noConfirm);

struct ShellFileOrder {
    ShellVerb verb = ShellVerb::None;
    QStringList from; ///< absolute paths
    QString to;       ///< the folder that takes them; empty for a delete
    bool silent = false;
    bool noConfirm = false;
    quintptr owner = 0; ///< native handle of the window the shell's own windows belong to
};

enum class ShellAnswer { Yes, YesToAll, No, Cancel };

/// Something stands where an entry is to go. Full paths.
struct ShellClash {
    QString existing;
    QString incoming;
    bool folders = false; ///< two folders that would be merged; otherwise a file is overwritten
};

struct ShellFileProgress {
    ShellVerb verb = ShellVerb::None;
    QString name;     ///< of the entry in hand
    qint64 done = 0;  ///< in units of total
    qint64 total = 0; ///< 0 while unknown
    bool show = true; ///< false for a silent operation
};

/// Whom the operation asks and tells where the system's shell does not do that by itself.
class ShellFileWatcher
{
public:
    virtual ~ShellFileWatcher() = default;
    /// One question for all of them. forGood: at least one of them has no recycle bin to go to.
    [[nodiscard]] virtual bool confirmDelete(const QStringList &paths, bool forGood) = 0;
    [[nodiscard]] virtual ShellAnswer clash(const ShellClash &clash) = 0;
    /// An entry could not be dealt with. more: entries are left to go on with; true goes on.
    [[nodiscard]] virtual bool failed(const QString &path, const QString &why, bool more) = 0;
    /// Called at every entry and every chunk of a file; may let events run. False cancels.
    [[nodiscard]] virtual bool goOn(const ShellFileProgress &progress) = 0;
};

struct ShellFileReport {
    bool complete = false; ///< everything asked for was done
    bool cancelled = false;
    int failures = 0;
};

/// Copies, moves or deletes as the system's shell does. A file appears under its name only when it
/// is complete; links are copied as links; the sources of a move go only after all of them arrived.
ShellFileReport runShellFileOperation(const ShellFileOrder &order, ShellFileWatcher &watcher);

} // namespace venlo
