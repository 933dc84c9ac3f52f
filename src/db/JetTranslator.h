#pragma once

#include "db/JetCatalogue.h"

#include <QDate>
#include <QString>
#include <QStringList>
#include <QVariantList>

namespace venlo
{

/// A Jet statement as the store runs it.
struct JetStatement {
    enum class Kind {
        Query,  ///< gives rows
        Change, ///< changes rows
        Schema  ///< changes tables; all its statements happen or none
    };
    Kind kind = Kind::Query;
    QStringList sql;     ///< one, for Schema one or more
    QVariantList values; ///< for the "?" of the one statement
};

/// Translates one Jet statement. What is no statement of the dialect is a DbError with the
/// position; nothing is handed on that was not understood. The dialect:
///
///   Select * | Count(*) | expression, … From T [Where …] [Order By column [Asc|Desc], …]
///   Insert Into T [(column, …)] Values (expression, …)
///   Update T Set column=expression, … [Where …]
///   Delete [*] From T [Where …]
///   Create Table T (column type, …)      types Text(n) Memo Byte Long Date DateTime YesNo Bit
///   Create [Unique] Index I On T(column, …) [With Primary]
///   Drop Table T
///
/// Expressions: texts in single quotes, numbers, #dates#, True, False, Null, columns, Mid, + and -,
/// comparisons, Like with * and ?, Is [Not] Null, Not, And, Or, parentheses. A table is whatever
/// stands between its keyword and the next blank or parenthesis. There are no comments. A single
/// ";" may end a statement (behind a table name only after a blank: names may hold one).
[[nodiscard]] JetStatement translateJet(const QString &statement, const JetCatalogue &catalogue,
                                        const QDate &today);

} // namespace venlo
