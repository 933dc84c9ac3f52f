#include "ftp/protocol/WireText.h"

#include "platform/CodePage.h"

#include <QStringDecoder>

namespace venlo
{

std::optional<QString> decodeUtf8Strictly(const QByteArray &bytes)
{
    QStringDecoder decoder(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless |
                                                     QStringDecoder::Flag::ConvertInitialBom);
    QString text = decoder.decode(bytes);
    if (decoder.hasError())
        return std::nullopt;
    return text;
}

QString decodeLeniently(const QByteArray &bytes)
{
    auto decoded = decodeUtf8Strictly(bytes);
    if (!decoded)
        decoded = decodeCp932(bytes);
    QString text = decoded ? *std::move(decoded) : QString::fromLatin1(bytes);
    text.remove(QChar(0));
    return text;
}

} // namespace venlo
