#include "db/TextFold.h"

#include <string>

#include <QChar>

namespace venlo
{

namespace
{
constexpr char32_t lastCodePoint = 0x10FFFF;
/// Bytes that are no UTF-8 sort behind every character, each as itself.
constexpr char32_t strayByte = 0x110000;

char32_t foldAscii(unsigned char byte)
{
    return byte >= 'A' && byte <= 'Z' ? byte + U'\x20' : byte;
}

unsigned sequenceLength(unsigned char lead)
{
    if (lead >= 0xF0 && lead < 0xF8)
        return 4;
    if (lead >= 0xE0)
        return lead < 0xF0 ? 3 : 1;
    return lead >= 0xC0 ? 2 : 1;
}

/// Reads the folded character at the front and takes it off the text, which must not be empty.
char32_t takeFolded(std::string_view &text)
{
    const auto lead = static_cast<unsigned char>(text.front());
    if (lead < 0x80) {
        text.remove_prefix(1);
        return foldAscii(lead);
    }
    const unsigned length = sequenceLength(lead);
    if (length == 1 || length > text.size()) {
        text.remove_prefix(1);
        return strayByte + lead;
    }
    char32_t character = lead & (0xFFU >> (length + 1));
    for (unsigned i = 1; i < length; ++i)
        character = (character << 6) | (static_cast<unsigned char>(text[i]) & 0x3FU);
    text.remove_prefix(length);
    return character > lastCodePoint ? strayByte + character : QChar::toCaseFolded(character);
}

/// The smallest folded character above the given folded one, nothing when there is none.
std::optional<char32_t> nextFolded(char32_t character)
{
    for (char32_t next = character + 1; next <= lastCodePoint; ++next) {
        if (QChar::isSurrogate(next) || QChar::isNonCharacter(next))
            continue;
        const char32_t folded = QChar::toCaseFolded(next);
        if (folded > character)
            return folded;
    }
    return std::nullopt;
}

std::optional<QString> justAbove(const QString &prefix)
{
    std::u32string characters = prefix.toStdU32String();
    while (!characters.empty()) {
        const auto next = nextFolded(QChar::toCaseFolded(characters.back()));
        characters.pop_back();
        if (next) {
            characters.push_back(*next);
            return QString::fromStdU32String(characters);
        }
    }
    return std::nullopt;
}
} // namespace

int compareFolded(std::string_view left, std::string_view right)
{
    while (!left.empty() && !right.empty()) {
        // Paths share long beginnings.
        const auto lead = static_cast<unsigned char>(left.front());
        if (left.front() == right.front() && lead < 0x80) {
            left.remove_prefix(1);
            right.remove_prefix(1);
            continue;
        }
        const char32_t a = takeFolded(left);
        const char32_t b = takeFolded(right);
        if (a != b)
            return a < b ? -1 : 1;
    }
    return static_cast<int>(!left.empty()) - static_cast<int>(!right.empty());
}

LikePattern::LikePattern(std::string_view utf8)
{
    m_folded.reserve(utf8.size());
    while (!utf8.empty())
        m_folded.push_back(takeFolded(utf8));
}

/// Only the last "*" is ever tried again, so the time is bounded by text length times pattern
/// length.
bool LikePattern::matches(std::string_view utf8) const
{
    size_t at = 0;
    std::optional<size_t> star;
    std::string_view retry;
    while (!utf8.empty()) {
        if (at < m_folded.size() && m_folded[at] == U'*') {
            star = ++at;
            retry = utf8;
            continue;
        }
        std::string_view rest = utf8;
        const char32_t character = takeFolded(rest);
        if (at < m_folded.size() && (m_folded[at] == U'?' || m_folded[at] == character)) {
            ++at;
            utf8 = rest;
        } else if (star) {
            (void)takeFolded(retry);
            utf8 = retry;
            at = *star;
        } else {
            return false;
        }
    }
    while (at < m_folded.size() && m_folded[at] == U'*')
        ++at;
    return at == m_folded.size();
}

std::optional<LikeBounds> likeBounds(const QString &pattern)
{
    qsizetype length = 0;
    while (length < pattern.size() && pattern[length] != QLatin1Char('*') &&
           pattern[length] != QLatin1Char('?'))
        ++length;
    const QString prefix = pattern.left(length);
    const auto high = justAbove(prefix);
    if (!high)
        return std::nullopt;
    return LikeBounds{prefix, *high};
}

} // namespace venlo
