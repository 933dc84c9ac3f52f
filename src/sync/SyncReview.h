#pragma once

#include <array>
#include <vector>

#include <QHash>
#include <QString>

#include "sync/ComparisonResult.h"
#include "sync/ReviewOptions.h"
#include "sync/SyncRow.h"

namespace venlo
{

class Database;

/// The plan of a synchronisation as a value: every folder and file of the pair with what is to be
/// done about it and whether it is ticked. The window edits it, Execution carries out exactly it,
/// print() shows it to a test. Row order never changes: folders by sPh, each followed by its files
/// by sFL. It knows no windows and no server.
class SyncReview
{
public:
    explicit SyncReview(ComparisonResult comparison, ReviewOptions options = {});

    /// Fills the rows from the work tables. Throws DbError.
    void load(Database &database);

    [[nodiscard]] const SyncPair &pair() const { return m_comparison.pair; }
    [[nodiscard]] int count() const { return static_cast<int>(m_rows.size()); }
    [[nodiscard]] const SyncRow &row(int index) const
    {
        return m_rows.at(static_cast<size_t>(index));
    }

    /// Boxes of chCmp (0: bCfl, 1: bCfd). Setting one recomputes actions and ticks; a hand-made
    /// tick survives where the action is the same. Nothing is written to the registry.
    [[nodiscard]] bool chCmp(int box) const { return m_chCmp.at(static_cast<size_t>(box)); }
    void setChCmp(int box, bool checked);
    /// Boxes of chDsp (0: list covered folders, 1: list the files below a whole-folder operation).
    [[nodiscard]] bool chDsp(int box) const { return m_chDsp.at(static_cast<size_t>(box)); }
    void setChDsp(int box, bool checked) { m_chDsp.at(static_cast<size_t>(box)) = checked; }
    /// Indexes of the rows that the chDsp boxes let through, in order.
    [[nodiscard]] std::vector<int> visibleRows() const;

    /// Ticks or unticks by hand. Does nothing where there is no box, where the row is blocked and
    /// once it holds a state.
    void setTicked(int index, bool ticked);
    /// The same for every row that has this action; rows that are held back are ticked one by one
    /// only.
    void tickAll(Action action, bool ticked);
    /// Whether the row takes part: its own tick, or the tick of the folder that covers it.
    [[nodiscard]] bool included(int index) const;
    /// What executing the row does: the action of the row, "上書" for a compared file that was
    /// ticked by hand, the covering folder's action for a covered row; None when not included.
    [[nodiscard]] Action plannedAction(int index) const;

    /// Text of the action cell: "(追加)", "(削除)", "(上書)", "対象外", "*" or empty.
    [[nodiscard]] QString actionText(int index) const;
    /// "a", "r" or empty.
    [[nodiscard]] QString stateText(int index) const;
    /// The name as a list shows it: a folder's path is followed by " [ﾌｫﾙﾀﾞ]".
    [[nodiscard]] QString listText(int index) const;

    /// Has its own tick set and no state, and may be executed.
    [[nodiscard]] bool pending(int index) const;
    [[nodiscard]] int pendingCount() const;
    /// Writes "a" (done) or "r" into the row and the rows it covers.
    void markRow(int index, bool done);
    /// Notes that the row was worked on, however that ended.
    void noteTried(int index) { m_rows.at(static_cast<size_t>(index)).tried = true; }
    /// The rows that this whole-folder operation covers.
    [[nodiscard]] const std::vector<int> &coveredBy(int index) const
    {
        return m_covered.at(static_cast<size_t>(index));
    }

    /// Items (covered ones included) per planned action, and what has become of the rows.
    struct Counts {
        int add = 0;
        int remove = 0;
        int overwrite = 0;
        qint64 bytes = 0; ///< of the files to be transferred
        int held = 0;     ///< rows that would do something and are held back
        int done = 0;     ///< rows with their own tick
        int givenUp = 0;
        int pending = 0;
    };
    [[nodiscard]] Counts counts() const;
    /// True when something that a synchronisation of the pair asks for was not carried out: rows
    /// pending, given up or held back, or a side that could not be relied on. What a person or an
    /// option left out does not count.
    [[nodiscard]] bool leftOver() const;

    /// Full paths of a row on both sides, in the spelling each side has.
    [[nodiscard]] QString localPath(int index) const;
    [[nodiscard]] QString remotePath(int index) const;
    /// The same of the folder that holds it.
    [[nodiscard]] QString localParent(int index) const;
    [[nodiscard]] QString remoteParent(int index) const;

    /// One line a row: tick, state, kind, path, action, reason.
    [[nodiscard]] QString print() const;

private:
    friend class ReviewLoader;
    using Spelling = QHash<QString, QString>;

    [[nodiscard]] static QString spelled(const QString &sPh, const Spelling &spelling);
    void decide(SyncRow &row) const;
    void decideFolder(SyncRow &row) const;
    void decideAll(bool keepHandMade);
    [[nodiscard]] QString tickedActionText(int index) const;
    [[nodiscard]] QString folderPath(int index) const;

    ComparisonResult m_comparison;
    std::array<bool, 2> m_chCmp;
    std::array<bool, 2> m_chDsp{true, true};
    std::vector<SyncRow> m_rows;
    std::vector<std::vector<int>> m_covered; ///< per row, the rows it covers
    /// Folders that only the local side has, below one that the FTP side spells in other letter
    /// case: folded path of the row -> path in the FTP side's spelling.
    QHash<QString, QString> m_remoteSpelling;
};

} // namespace venlo
