#pragma once

#include "db/JetLexer.h"
#include "db/JetTranslator.h"

#include <QString>
#include <QVariantList>

#include <optional>
#include <vector>

namespace venlo
{

/// A statement text with placeholders that was translated once: its literals are lifted out, and
/// values of the same kinds go straight to the store without being written into the text and read
/// back. Gives exactly what filling and translating would give. Made and kept by the Store as long
/// as the tables stay as they are.
class JetShape
{
public:
    /// Takes the filled text and what it was translated to. Nothing when a placeholder is no whole
    /// literal (a table name, a part of a pattern) or the translation hangs on more than the text
    /// (a date written into it, patterns).
    [[nodiscard]] static std::optional<JetShape> of(const QString &sql, const QVariantList &values,
                                                    const JetStatement &translated);

    /// The translated statement with these values; nothing when one is of another kind than
    /// before or has to be looked at (a quote, an unusual length, no date). today: for years of
    /// two digits.
    [[nodiscard]] std::optional<JetStatement> bind(const QVariantList &values,
                                                   const QDate &today) const;

private:
    struct Lifted {
        qsizetype literal; ///< its place among the statement's values
        JetLexer::Kind kind;
    };

    JetStatement m_statement;
    std::vector<Lifted> m_lifted; ///< one for each placeholder, in order
};

} // namespace venlo
