#pragma once

#include <QString>
#include <QTextDocument>

namespace venlo::test
{

/// What a person reads in a tool tip of that text, places to break at left out.
[[nodiscard]] inline QString shownToolTip(const QString &toolTip)
{
    if (!Qt::mightBeRichText(toolTip))
        return toolTip;
    QTextDocument document;
    document.setHtml(toolTip);
    return document.toPlainText().remove(QChar(u'\u200b'));
}

} // namespace venlo::test
