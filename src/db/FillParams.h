#pragma once

#include <QString>
#include <QVariant>
#include <QVariantList>

namespace venlo
{

/// Puts the values into the "?" of a statement, in order. Every "?" is removed from a value first,
/// so that it cannot introduce a placeholder; a null QVariant makes its placeholder vanish. No
/// other escaping is done: a value that holds a quote breaks the statement it is put into.
void FillParams(QString &sql, const QVariantList &values);

/// The same as an expression.
[[nodiscard]] QString filled(const QString &sql, const QVariantList &values);

} // namespace venlo
