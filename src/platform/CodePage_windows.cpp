#include <array>
#include <limits>

#include <windows.h>

#include <QByteArrayView>

#include "platform/CodePageConverter.h"

namespace venlo
{

namespace
{
constexpr UINT windowsNumber(CodePage page)
{
    return page == CodePage::Cp932 ? 932 : 20932;
}

/// Characters for which the code page of EUC-JP has others than CP932, which is what counts here.
struct Variant {
    char16_t ours;
    char16_t theirs;
};
constexpr std::array<Variant, 6> eucVariants{{{u'\uFF5E', u'\u301C'},
                                              {u'\u2225', u'\u2016'},
                                              {u'\uFF0D', u'\u2212'},
                                              {u'\uFFE0', u'\u00A2'},
                                              {u'\uFFE1', u'\u00A3'},
                                              {u'\uFFE2', u'\u00AC'}}};

QString replaced(QString text, char16_t Variant::*from, char16_t Variant::*to)
{
    for (const Variant &variant : eucVariants)
        text.replace(QChar(variant.*from), QChar(variant.*to));
    return text;
}

bool between(char c, unsigned from, unsigned to)
{
    const auto byte = static_cast<unsigned char>(c);
    return byte >= from && byte <= to;
}

/// How many bytes the character at the beginning has, 0 when they make none.
qsizetype lengthInCp932(QByteArrayView bytes)
{
    if (!between(bytes[0], 0x81, 0x9F) && !between(bytes[0], 0xE0, 0xFC))
        return 1;
    return bytes.size() > 1 && between(bytes[1], 0x40, 0xFC) && bytes[1] != 0x7F ? 2 : 0;
}

qsizetype lengthInEucJp(QByteArrayView bytes)
{
    constexpr unsigned first = 0xA1;
    constexpr unsigned last = 0xFE;
    if (between(bytes[0], 0, 0x7F))
        return 1;
    if (bytes[0] == '\x8F')
        return bytes.size() > 2 && between(bytes[1], first, last) && between(bytes[2], first, last)
                   ? 3
                   : 0;
    return bytes.size() > 1 && (bytes[0] == '\x8E' || between(bytes[0], first, last)) &&
                   between(bytes[1], first, last)
               ? 2
               : 0;
}

/// Not every system refuses a second byte that can be none, such as "/".
bool wellFormed(CodePage page, const QByteArray &bytes)
{
    QByteArrayView left(bytes);
    while (!left.isEmpty()) {
        const qsizetype length =
            page == CodePage::Cp932 ? lengthInCp932(left) : lengthInEucJp(left);
        if (length == 0)
            return false;
        left = left.sliced(length);
    }
    return true;
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
    if (!fits(bytes.size()) || !wellFormed(page, bytes))
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
    return page == CodePage::EucJp ? replaced(text, &Variant::theirs, &Variant::ours) : text;
}

namespace
{
std::optional<QByteArray> encodeIn(UINT number, const QString &text)
{
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
} // namespace

std::optional<QByteArray> systemEncode(CodePage page, const QString &text)
{
    if (text.isEmpty())
        return QByteArray();
    if (!fits(text.size()))
        return std::nullopt;
    const UINT number = windowsNumber(page);
    if (page == CodePage::Cp932)
        return encodeIn(number, text);
    if (const auto bytes = encodeIn(number, text))
        return bytes;
    return encodeIn(number, replaced(text, &Variant::ours, &Variant::theirs));
}

} // namespace venlo
