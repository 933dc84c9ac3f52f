#pragma once

#include <QString>
#include <QVariantList>

#include <optional>

namespace venlo
{

/// The first text value that would change a statement's meaning once it is filled in: one with a
/// quote, or one with a blank or a parenthesis where no quotes or number signs stand around the
/// placeholder (a table name would end there). Nothing when all are sound.
[[nodiscard]] std::optional<QString> brokenValue(const QString &sql, const QVariantList &values);

} // namespace venlo
