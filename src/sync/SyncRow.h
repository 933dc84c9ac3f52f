#pragma once

#include <QString>

#include "sync/OverwriteRule.h"

namespace venlo
{

/// The mark the comparison left on a row.
enum class Mark {
    Compare, ///< "比較": both sides have it
    Add,     ///< "追加": only the master has it
    Remove   ///< "削除": only the side that is made equal has it
};

/// What is to be done about a row.
enum class Action { None, Add, Remove, Overwrite };

/// How far a row is held back.
enum class Hold {
    Free,
    NotUnattended, ///< starts unticked; a person may tick it, an unattended run leaves it alone
    Blocked        ///< no tick, no execution
};

/// The state cell.
enum class RowState {
    Pending,
    Done,   ///< "a"
    GivenUp ///< "r": not carried out after all attempts; never tried again in this review
};

/// One row of the review. The texts of the cells come from SyncReview.
struct SyncRow {
    bool folder = false;
    QString sPh;  ///< relative path of the folder, or of the folder that holds the file
    QString name; ///< last component; "." for the roots
    FileCopy master;
    FileCopy other;
    Mark mark = Mark::Compare;
    Action action = Action::None; ///< what mark, rule and options say, whatever the tick
    bool outOfScope = false;      ///< "対象外" by the second option
    bool unfinished = false;      ///< its upload was cut: what the server has may be a part
    int owner = -1;               ///< row of the whole-folder operation that covers it, or -1
    bool box = false;             ///< has a tick box
    bool ticked = false;
    bool byHand = false; ///< a person made this tick
    Hold hold = Hold::Free;
    QString why;           ///< why it is held back, in words for a person
    bool owed = true;      ///< held back and left so, it counts as not carried out
    bool rootPair = false; ///< held back because the pair's remote folder is the server's root
    bool tried = false;    ///< worked on before, so that a part of it may be there already
    RowState state = RowState::Pending;
};

} // namespace venlo
