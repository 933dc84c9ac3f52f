#pragma once

#include <optional>

#include <QByteArray>
#include <QString>

namespace venlo
{

enum class CodePage { Cp932, EucJp };

/// The system's own converter, all or nothing: a sequence or character without a counterpart gives
/// nothing. It may still map two characters to one; who needs the way back checks it.
[[nodiscard]] std::optional<QString> systemDecode(CodePage page, const QByteArray &bytes);
[[nodiscard]] std::optional<QByteArray> systemEncode(CodePage page, const QString &text);

} // namespace venlo
