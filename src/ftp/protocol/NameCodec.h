#pragma once

#include <QByteArray>
#include <QString>

namespace venlo
{

/// Names between the wire and the program. Bytes that are valid UTF-8 are UTF-8; otherwise CP932,
/// EUC-JP when only that decodes; otherwise each byte stands for the character of the same number
/// (so that the entry still shows). Remembers what the server has shown, for new names.
class NameCodec
{
public:
    enum class Encoding { Utf8, Cp932, EucJp };

    /// Forgets what was seen; serverSaysUtf8 when FEAT lists UTF8 (RFC 2640).
    void reset(bool serverSaysUtf8);
    /// Decodes a received name and remembers its encoding when it is not plain ASCII.
    [[nodiscard]] QString decode(const QByteArray &bytes);
    /// Encoding for a name that the server has not shown: UTF-8 when FEAT has UTF8 or nothing else
    /// was seen, otherwise what its names are in. A name that encoding lacks goes in UTF-8.
    [[nodiscard]] QByteArray encode(const QString &name) const;
    [[nodiscard]] Encoding encodingForNewNames() const { return m_seen; }

private:
    bool m_fixed = false;
    Encoding m_seen = Encoding::Utf8;
};

} // namespace venlo
