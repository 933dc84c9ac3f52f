#include <limits>

#include <windows.h>

#include "platform/CodePageConverter.h"

namespace venlo
{

namespace
{
constexpr UINT windowsNumber(CodePage page)
{
    return page == CodePage::Cp932 ? 932 : 20932;
}

/// The converters take lengths as int; nothing this program converts comes near that.
bool fits(qsizetype size)
{
    return size < std::numeric_limits<int>::max() / 4;
}
} // namespace

std::optional<QString> systemDecode(CodePage page, const QByteArray &bytes)
{
    if (bytes.isEmpty())
        return QString();
    if (!fits(bytes.size()))
        return std::nullopt;
    const UINT number = windowsNumber(page);
    const int size = static_cast<int>(bytes.size());
    QString text(size, Qt::Uninitialized);
    const int length = MultiByteToWideChar(number, MB_ERR_INVALID_CHARS, bytes.constData(), size,
                                           reinterpret_cast<wchar_t *>(text.data()),
                                           static_cast<int>(text.size()));
    if (length <= 0)
        return std::nullopt;
    text.truncate(length);
    // 0xA0 and 0xFD to 0xFF come out as these although the code page does not define them.
    for (const QChar c : std::as_const(text)) {
        if (c.unicode() == 0x00A0 || (c.unicode() >= 0xF8F0 && c.unicode() <= 0xF8F3))
            return std::nullopt;
    }
    return text;
}

std::optional<QByteArray> systemEncode(CodePage page, const QString &text)
{
    if (text.isEmpty())
        return QByteArray();
    if (!fits(text.size()))
        return std::nullopt;
    const UINT number = windowsNumber(page);
    const auto *wide = reinterpret_cast<const wchar_t *>(text.utf16());
    BOOL replaced = FALSE;
    QByteArray bytes(text.size() * 4, Qt::Uninitialized);
    const int length =
        WideCharToMultiByte(number, WC_NO_BEST_FIT_CHARS, wide, static_cast<int>(text.size()),
                            bytes.data(), static_cast<int>(bytes.size()), nullptr, &replaced);
    if (length <= 0 || replaced != FALSE)
        return std::nullopt;
    bytes.truncate(length);
    return bytes;
}

} // namespace venlo
