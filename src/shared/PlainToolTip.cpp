#include "shared/PlainToolTip.h"

#include <QRegularExpression>

namespace venlo
{

QString breakable(const QString &text)
{
    static const QRegularExpression longWord(QStringLiteral("(\\S{40})(?=\\S)"));
    return QString(text).replace(longWord, QStringLiteral("\\1\u200b"));
}

QString plainToolTip(const QString &text)
{
    if (text.isEmpty())
        return {};
    return QStringLiteral("<span style=\"white-space:pre-wrap\">") +
           breakable(text).toHtmlEscaped() + QStringLiteral("</span>");
}

} // namespace venlo
