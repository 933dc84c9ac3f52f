#include "platform/XCookies.h"

#include <QFile>

namespace venlo
{

namespace
{
constexpr qint64 maxFileSize = 1 << 20;
constexpr qsizetype maxCookies = 8;
constexpr qsizetype padTo = 4;

QByteArray cookieName()
{
    return QByteArrayLiteral("MIT-MAGIC-COOKIE-1");
}

/// Reads the fields of an X authority file: numbers of two bytes, high byte first, and byte
/// strings behind their length.
class Fields
{
public:
    explicit Fields(QByteArray bytes) : m_bytes(std::move(bytes)) {}

    /// False once the bytes run out.
    bool skipNumber() { return take(2).size() == 2; }
    bool readString(QByteArray &value)
    {
        const QByteArray length = take(2);
        if (length.size() < 2)
            return false;
        const auto size =
            static_cast<unsigned char>(length[0]) * 256 + static_cast<unsigned char>(length[1]);
        value = take(size);
        return value.size() == size;
    }

private:
    QByteArray take(qsizetype size)
    {
        QByteArray part = m_bytes.mid(m_position, size);
        m_position += part.size();
        return part;
    }

    QByteArray m_bytes;
    qsizetype m_position = 0;
};

QByteArray authorityFile()
{
    QString path = qEnvironmentVariable("XAUTHORITY");
    if (path.isEmpty())
        path = qEnvironmentVariable("HOME") + QStringLiteral("/.Xauthority");
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.read(maxFileSize) : QByteArray();
}

/// Two bytes, low byte first.
QByteArray cardinal16(qsizetype number)
{
    return {QByteArray(1, static_cast<char>(number & 0xFF)) + static_cast<char>(number >> 8)};
}

QByteArray padded(const QByteArray &bytes)
{
    return bytes + QByteArray((padTo - bytes.size() % padTo) % padTo, '\0');
}
} // namespace

QList<QByteArray> xCookies(const QByteArray &displayNumber)
{
    QList<QByteArray> cookies;
    Fields fields(authorityFile());
    QByteArray address;
    QByteArray number;
    QByteArray name;
    QByteArray data;
    while (cookies.size() < maxCookies && fields.skipNumber() && fields.readString(address) &&
           fields.readString(number) && fields.readString(name) && fields.readString(data)) {
        const bool forDisplay = number.isEmpty() || number == displayNumber;
        if (forDisplay && name == cookieName() && !cookies.contains(data))
            cookies.append(data);
    }
    return cookies;
}

QByteArray xSetupRequest(const QByteArray &cookie)
{
    constexpr qsizetype major = 11;
    const QByteArray name = cookie.isEmpty() ? QByteArray() : cookieName();
    return QByteArray("l\0", 2) + cardinal16(major) + cardinal16(0) + cardinal16(name.size()) +
           cardinal16(cookie.size()) + cardinal16(0) + padded(name) + padded(cookie);
}

} // namespace venlo
