#pragma once

#include "db/JetCatalogue.h"
#include "db/JetLexer.h"

#include <QDate>
#include <QVariantList>

namespace venlo
{

/// A piece of a translated statement and what it yields.
struct JetPiece {
    enum class Kind { Null, Text, Number, Date, YesNo, Truth };
    QString sql;
    Kind kind = Kind::Null;
    bool column = false;  ///< a column by itself: it brings its own text comparison
    bool literal = false; ///< a text literal by itself: the last of the values
};

/// Reads Jet expressions and writes them for the store. Literals become "?" and go to the values,
/// so that statements that differ in values only are one statement below. Kinds are checked here;
/// what Jet calls a type mismatch is a DbError.
class JetExpression
{
public:
    JetExpression(JetLexer &lexer, const JetTable &table, const QDate &today, QVariantList &values);

    /// What a "Where" takes.
    [[nodiscard]] QString condition();
    /// What a column list takes.
    [[nodiscard]] QString value();
    /// What a column of the type can be set to.
    [[nodiscard]] QString valueFor(const JetColumn &column);
    /// A column of the table by its name in any case; position is for the complaint.
    [[nodiscard]] const JetColumn &column(const QString &name, qsizetype at) const;

private:
    JetPiece either();
    JetPiece both();
    JetPiece negation();
    JetPiece comparison();
    JetPiece isNull(const JetPiece &left);
    JetPiece like(const JetPiece &left, bool negated);
    JetPiece compared(const JetPiece &left, const QString &sign, const JetPiece &right);
    JetPiece sum();
    JetPiece sign();
    JetPiece primary();
    JetPiece word();
    JetPiece mid();
    JetPiece number();
    JetPiece date();
    JetPiece bound(const QVariant &value, JetPiece::Kind kind);
    void requireTruth(const JetPiece &piece, qsizetype at) const;

    JetLexer &m_lexer;
    const JetTable &m_table;
    QDate m_today;
    QVariantList &m_values;
    int m_depth = 0;
};

} // namespace venlo
