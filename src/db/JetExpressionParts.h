#pragma once

#include "db/JetCatalogue.h"
#include "db/JetExpression.h"
#include "db/JetLexer.h"

namespace venlo
{

/// Counts a level of nesting for a scope; one too many is a DbError.
class JetNesting
{
public:
    JetNesting(int &depth, const JetLexer &lexer);
    ~JetNesting() { --m_depth; }
    JetNesting(const JetNesting &) = delete;
    JetNesting &operator=(const JetNesting &) = delete;

private:
    /// Enough for any person, few enough for the stack.
    static constexpr int deepest = 50;

    int &m_depth;
};

/// What a column of the type yields.
[[nodiscard]] JetPiece::Kind jetKindOf(JetType type);

/// A type mismatch at the position, as a DbError.
[[noreturn]] void failJetKinds(qsizetype at);

} // namespace venlo
