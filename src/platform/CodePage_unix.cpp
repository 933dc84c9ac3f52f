#include <iconv.h>

#include <QtGlobal>

#include "platform/CodePageConverter.h"

namespace venlo
{

namespace
{
/// One direction of the C library's converter; closed with its scope.
class Iconv
{
public:
    Iconv(const char *to, const char *from) : m_handle(iconv_open(to, from)) {}
    ~Iconv()
    {
        if (isOpen())
            iconv_close(m_handle);
    }
    Iconv(const Iconv &) = delete;
    Iconv &operator=(const Iconv &) = delete;

    [[nodiscard]] std::optional<QByteArray> convert(const QByteArray &input) const
    {
        if (!isOpen())
            return std::nullopt;
        // No character of these code pages grows to more than four bytes either way.
        QByteArray output(input.size() * 4 + 4, Qt::Uninitialized);
        QByteArray source = input;
        char *in = source.data();
        char *out = output.data();
        auto inLeft = static_cast<size_t>(source.size());
        auto outLeft = static_cast<size_t>(output.size());
        const size_t failed = static_cast<size_t>(-1);
        if (iconv(m_handle, &in, &inLeft, &out, &outLeft) == failed || inLeft != 0)
            return std::nullopt;
        output.truncate(out - output.data());
        return output;
    }

private:
    [[nodiscard]] bool isOpen() const
    {
        // The C library's failure value is this cast of -1.
        return reinterpret_cast<qintptr>(m_handle) != -1;
    }

    iconv_t m_handle;
};

const char *iconvName(CodePage page)
{
    return page == CodePage::Cp932 ? "CP932" : "EUC-JP-MS";
}

constexpr const char *utf16 = Q_BYTE_ORDER == Q_LITTLE_ENDIAN ? "UTF-16LE" : "UTF-16BE";
} // namespace

std::optional<QString> systemDecode(CodePage page, const QByteArray &bytes)
{
    const auto units = Iconv(utf16, iconvName(page)).convert(bytes);
    if (!units)
        return std::nullopt;
    return QString(reinterpret_cast<const QChar *>(units->constData()),
                   units->size() / static_cast<qsizetype>(sizeof(QChar)));
}

std::optional<QByteArray> systemEncode(CodePage page, const QString &text)
{
    const auto units = QByteArray(reinterpret_cast<const char *>(text.utf16()),
                                  text.size() * static_cast<qsizetype>(sizeof(QChar)));
    return Iconv(iconvName(page), utf16).convert(units);
}

} // namespace venlo
