#pragma once

#include <QString>
#include <QStringList>

namespace venlo
{

/// Names as panes and transfers pass them: one a line, lines separated by CR, none behind the last.
[[nodiscard]] QStringList splitNames(const QString &names);
[[nodiscard]] QString joinNames(const QStringList &names);

/// One line of an upload list: name, date text and size text separated by tabs.
struct UploadLine {
    QString name;
    QString dateText; ///< "yy/MM/dd hh:mm:ss", local wall clock
    QString sizeText; ///< display text, see FormatSizeText

    [[nodiscard]] QString text() const;
    /// Missing fields stay empty.
    [[nodiscard]] static UploadLine parse(const QString &line);
};

} // namespace venlo
