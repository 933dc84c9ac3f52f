#include "sync/FoldCase.h"

namespace venlo
{

QString foldCase(const QString &text)
{
    QString folded;
    folded.reserve(text.size());
    for (qsizetype i = 0; i < text.size(); ++i) {
        char32_t point = text.at(i).unicode();
        if (text.at(i).isHighSurrogate() && i + 1 < text.size() &&
            text.at(i + 1).isLowSurrogate()) {
            point = QChar::surrogateToUcs4(text.at(i), text.at(i + 1));
            ++i;
        }
        const char32_t simple = QChar::toCaseFolded(point);
        if (QChar::requiresSurrogates(simple))
            folded.append(QChar(QChar::highSurrogate(simple)))
                .append(QChar(QChar::lowSurrogate(simple)));
        else
            folded.append(QChar(static_cast<char16_t>(simple)));
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
