#pragma once

#include "db/JetCatalogue.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace venlo
{

class JetLexer;

/// "Create Table" behind the table's name. The limits of the column types become constraints of
/// the file, so that no way of writing goes past them.
[[nodiscard]] QStringList translateCreateTable(JetLexer &lexer, const QString &table);

struct JetIndex {
    QString table;
    QString name; ///< unique within its table only
    std::vector<const JetColumn *> columns;
    bool unique = false;
};

/// "Create Index" behind the column list. The columns of a primary key are never Null.
[[nodiscard]] QStringList translateCreateIndex(JetLexer &lexer, const JetIndex &index);

} // namespace venlo
