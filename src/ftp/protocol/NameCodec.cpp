#include "ftp/protocol/NameCodec.h"

#include "ftp/protocol/WireText.h"
#include "platform/CodePage.h"

#include <algorithm>

namespace venlo
{

namespace
{
bool isAscii(const QByteArray &bytes)
{
    return std::all_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Two-byte sequences of UTF-8 are also pairs of half-width katakana in CP932, so a name that has
/// no longer sequence proves little.
bool surelyUtf8(const QByteArray &bytes)
{
    return std::any_of(bytes.begin(), bytes.end(),
                       [](char c) { return static_cast<unsigned char>(c) >= 0xe0; });
}
} // namespace

void NameCodec::reset(bool serverSaysUtf8)
{
    m_fixed = serverSaysUtf8;
    m_seen = Encoding::Utf8;
}

QString NameCodec::decode(const QByteArray &bytes)
{
    if (isAscii(bytes))
        return QString::fromLatin1(bytes);
    if (auto utf8 = decodeUtf8Strictly(bytes)) {
        if (!m_fixed && surelyUtf8(bytes))
            m_seen = Encoding::Utf8;
        return *std::move(utf8);
    }
    if (auto cp932 = decodeCp932(bytes)) {
        // Many EUC-JP names are CP932 by accident; they do not undo one that is surely EUC-JP.
        if (!m_fixed && (m_seen != Encoding::EucJp || !decodeEucJp(bytes)))
            m_seen = Encoding::Cp932;
        return *std::move(cp932);
    }
    if (auto eucJp = decodeEucJp(bytes)) {
        if (!m_fixed)
            m_seen = Encoding::EucJp;
        return *std::move(eucJp);
    }
    return QString::fromLatin1(bytes);
}

QByteArray NameCodec::encode(const QString &name) const
{
    std::optional<QByteArray> bytes;
    if (m_seen == Encoding::Cp932)
        bytes = encodeCp932(name);
    else if (m_seen == Encoding::EucJp)
        bytes = encodeEucJp(name);
    return bytes ? *std::move(bytes) : name.toUtf8();
}

} // namespace venlo
