#include "sync/FoldCase.h"

namespace venlo
{

/// A text that is folded already is returned as it is, sharing its characters.
QString foldCase(const QString &text)
{
    QString folded = text;
    const auto put = [&](qsizetype at, QChar c) {
        if (text.at(at) != c)
            folded[at] = c;
    };
    for (qsizetype i = 0; i < text.size(); ++i) {
        const char16_t unit = text.at(i).unicode();
        if (unit < 0x80) {
            if (unit >= u'A' && unit <= u'Z')
                put(i, QChar(static_cast<char16_t>(unit + 0x20)));
        } else if (text.at(i).isHighSurrogate() && i + 1 < text.size() &&
                   text.at(i + 1).isLowSurrogate()) {
            // No simple folding leads from one plane to another.
            const char32_t simple =
                QChar::toCaseFolded(QChar::surrogateToUcs4(text.at(i), text.at(i + 1)));
            put(i, QChar(QChar::highSurrogate(simple)));
            put(++i, QChar(QChar::lowSurrogate(simple)));
        } else {
            put(i, QChar(static_cast<char16_t>(QChar::toCaseFolded(char32_t(unit)))));
        }
    }
    return folded;
}

QString pathKey(const QString &relative)
{
    constexpr QLatin1Char slash('/');
    const QString folded = foldCase(relative);
    if (folded == QLatin1String("."))
        return QString(slash);
    return folded.startsWith(slash) ? folded : slash + folded;
}

} // namespace venlo
