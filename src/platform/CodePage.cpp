#include "platform/CodePage.h"

#include <algorithm>
#include <cctype>

#include "platform/CodePageConverter.h"

namespace venlo
{

namespace
{
constexpr QLatin1String escapeStart("&#x");
constexpr int maxEscapeDigits = 6;

bool isAscii(const QByteArray &bytes)
{
    return std::all_of(bytes.begin(), bytes.end(), [](char c) { return (c & 0x80) == 0; });
}

bool isAscii(const QString &text)
{
    return std::all_of(text.begin(), text.end(), [](QChar c) { return c.unicode() < 0x80; });
}

/// Converters disagree about C1 controls and single bytes outside the code page; no file name and
/// no setting holds them, so they count as undecodable everywhere.
bool hasC1Control(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c.unicode() >= 0x80 && c.unicode() < 0xA0; });
}

std::optional<QString> decode(CodePage page, const QByteArray &bytes)
{
    if (isAscii(bytes))
        return QString::fromLatin1(bytes);
    std::optional<QString> text = systemDecode(page, bytes);
    if (text && hasC1Control(*text))
        return std::nullopt;
    return text;
}

/// A converter also takes look-alikes (U+301C for U+FF5E); only what comes back unchanged counts.
std::optional<QByteArray> encode(CodePage page, const QString &text)
{
    if (isAscii(text))
        return text.toLatin1();
    std::optional<QByteArray> bytes = systemEncode(page, text);
    if (bytes && decode(page, *bytes) != text)
        return std::nullopt;
    return bytes;
}

bool isLeadByte(char c)
{
    const auto byte = static_cast<unsigned char>(c);
    return (byte >= 0x81 && byte <= 0x9F) || (byte >= 0xE0 && byte <= 0xFC);
}

QString decodeReplacingBadBytes(const QByteArray &bytes)
{
    QString text;
    for (qsizetype i = 0; i < bytes.size();) {
        const qsizetype length = isLeadByte(bytes[i]) && i + 1 < bytes.size() ? 2 : 1;
        if (const auto one = decodeCp932(bytes.mid(i, length))) {
            text += *one;
            i += length;
        } else {
            text += QChar::ReplacementCharacter;
            ++i; // the next byte may begin something valid
        }
    }
    return text;
}

/// The character at index i; a surrogate without its partner stands for itself.
char32_t codePointAt(const QString &text, qsizetype i)
{
    if (text[i].isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate())
        return QChar::surrogateToUcs4(text[i], text[i + 1]);
    return text[i].unicode();
}

QString fromCodePoint(char32_t code)
{
    if (QChar::requiresSurrogates(code))
        return QString(QChar(QChar::highSurrogate(code))) + QChar(QChar::lowSurrogate(code));
    return QString(QChar(static_cast<char16_t>(code)));
}

/// An escape sequence found in a text.
struct Escape {
    qsizetype length = 0;
    QString character;
};

std::optional<Escape> escapeAt(const QString &text, qsizetype start)
{
    const qsizetype digits = start + escapeStart.size();
    const qsizetype end = text.indexOf(QLatin1Char(';'), digits);
    if (end <= digits || end - digits > maxEscapeDigits)
        return std::nullopt;
    const QString number = text.mid(digits, end - digits);
    const bool allHex = std::all_of(number.begin(), number.end(), [](QChar c) {
        return c.unicode() < 0x80 && std::isxdigit(static_cast<unsigned char>(c.toLatin1())) != 0;
    });
    if (!allHex)
        return std::nullopt;
    const char32_t code = number.toUInt(nullptr, 16);
    if (code > QChar::LastValidCodePoint)
        return std::nullopt;
    const QString character = fromCodePoint(code);
    if (encodeCp932(character))
        return std::nullopt;
    return Escape{end + 1 - start, character};
}
} // namespace

std::optional<QString> decodeCp932(const QByteArray &bytes)
{
    return decode(CodePage::Cp932, bytes);
}

std::optional<QByteArray> encodeCp932(const QString &text)
{
    return encode(CodePage::Cp932, text);
}

std::optional<QString> decodeEucJp(const QByteArray &bytes)
{
    return decode(CodePage::EucJp, bytes);
}

std::optional<QByteArray> encodeEucJp(const QString &text)
{
    return encode(CodePage::EucJp, text);
}

QByteArray toSystemText(const QString &text)
{
    if (auto whole = encodeCp932(text))
        return *whole;
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size();) {
        const char32_t code = codePointAt(text, i);
        const QString character = fromCodePoint(code);
        if (const auto encoded = encodeCp932(character))
            bytes += *encoded;
        else
            bytes += "&#x" + QByteArray::number(code, 16).toUpper().rightJustified(4, '0') + ';';
        i += character.size();
    }
    return bytes;
}

QString fromSystemText(const QByteArray &bytes)
{
    const auto strict = decodeCp932(bytes);
    const QString text = strict ? *strict : decodeReplacingBadBytes(bytes);
    QString result;
    qsizetype done = 0;
    for (auto at = text.indexOf(escapeStart); at >= 0; at = text.indexOf(escapeStart, at)) {
        if (const auto escape = escapeAt(text, at)) {
            result += text.mid(done, at - done) + escape->character;
            at += escape->length;
            done = at;
        } else {
            at += escapeStart.size();
        }
    }
    return result + text.mid(done);
}

} // namespace venlo
