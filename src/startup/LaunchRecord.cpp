#include "startup/LaunchRecord.h"

#include <limits>

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include "platform/CodePage.h"

namespace venlo
{

namespace
{
constexpr qint64 textLimit = std::numeric_limits<quint16>::max();
constexpr qint64 longestRecord = 4 * sizeof(qint32) + 2 * (sizeof(quint16) + textLimit);

/// Takes values off the front; once one is incomplete, all that follow are empty.
class Reader
{
public:
    explicit Reader(const QByteArray &bytes) : m_bytes(bytes) {}

    template <typename T>
    T number()
    {
        const QByteArray part = take(sizeof(T));
        return part.isEmpty() ? T{} : qFromLittleEndian<T>(part.constData());
    }
    QString text() { return fromSystemText(take(number<quint16>())); }

private:
    QByteArray take(qsizetype size)
    {
        if (m_bytes.size() - m_position < size) {
            m_position = m_bytes.size();
            return {};
        }
        m_position += size;
        return m_bytes.mid(m_position - size, size);
    }

    const QByteArray &m_bytes;
    qsizetype m_position = 0;
};
} // namespace

LaunchRecord LaunchRecord::parse(const QByteArray &bytes)
{
    Reader reader(bytes);
    LaunchRecord record;
    record.left = reader.number<qint32>();
    record.top = reader.number<qint32>();
    record.width = reader.number<qint32>();
    record.height = reader.number<qint32>();
    record.root = reader.text();
    record.actPh = reader.text();
    return record;
}

LaunchRecord LaunchRecord::read(const QString &path)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly))
        return {};
    return parse(file.read(longestRecord));
}

} // namespace venlo
