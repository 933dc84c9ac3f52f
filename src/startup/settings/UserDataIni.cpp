#include "startup/settings/UserDataIni.h"

#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>

#include "platform/CodePage.h"

namespace venlo
{

namespace
{
constexpr qint64 maxIniSize = 65536; ///< far more than the longest path

QString decoded(const QByteArray &bytes)
{
    const auto marked = QStringConverter::encodingForData(bytes);
    QStringDecoder decoder(marked.value_or(QStringConverter::Utf8));
    const QString text = decoder(bytes);
    // CP932 text is hardly ever valid UTF-8 by accident, but the other way round it may be.
    return marked || !decoder.hasError() ? text : fromSystemText(bytes);
}

QString firstLine(const QString &text)
{
    qsizetype end = 0;
    while (end < text.size() && text[end] != QLatin1Char('\r') && text[end] != QLatin1Char('\n'))
        ++end;
    while (end > 0 && (text[end - 1] == QLatin1Char(' ') || text[end - 1] == QLatin1Char('\t')))
        --end;
    return text.left(end);
}
} // namespace

std::optional<QString> readUserDataToken(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return firstLine(decoded(file.read(maxIniSize)));
}

} // namespace venlo
