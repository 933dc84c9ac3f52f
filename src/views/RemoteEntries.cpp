#include "views/RemoteEntries.h"

#include <QDataStream>
#include <QIODevice>
#include <QMimeData>
#include <QUuid>

namespace venlo
{

namespace
{

constexpr auto streamVersion = QDataStream::Qt_6_0;

QString mimeType()
{
    return QStringLiteral("application/x-venloftp-remote-entries");
}

/// Names this process: a process id alone may come again while the clipboard outlives us.
QByteArray processMark()
{
    static const QByteArray mark = QUuid::createUuid().toRfc4122();
    return mark;
}

std::optional<RemoteEntry> readEntry(QDataStream &stream)
{
    RemoteEntry entry;
    quint8 isFolder = 0;
    stream >> entry.dir >> entry.name >> isFolder;
    if (stream.status() != QDataStream::Ok || isFolder > 1)
        return std::nullopt;
    entry.tag = isFolder == 1 ? EntryTag::FD : EntryTag::FL;
    return entry;
}

} // namespace

void setRemoteEntries(QMimeData &data, const QString &site, const QList<RemoteEntry> &entries)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(streamVersion);
    stream << processMark() << site << static_cast<quint32>(entries.size());
    for (const RemoteEntry &entry : entries)
        stream << entry.dir << entry.name << static_cast<quint8>(entry.tag == EntryTag::FD);
    data.setData(mimeType(), bytes);
}

bool hasRemoteEntries(const QMimeData &data)
{
    return data.hasFormat(mimeType());
}

std::optional<QList<RemoteEntry>> remoteEntries(const QMimeData &data, const QString &site)
{
    const QByteArray bytes = data.data(mimeType());
    QDataStream stream(bytes);
    stream.setVersion(streamVersion);
    QByteArray process;
    QString writtenSite;
    quint32 count = 0;
    stream >> process >> writtenSite >> count;
    if (stream.status() != QDataStream::Ok || process != processMark() || writtenSite != site)
        return std::nullopt;
    QList<RemoteEntry> entries;
    for (quint32 number = 0; number < count; ++number) {
        const std::optional<RemoteEntry> entry = readEntry(stream);
        if (!entry)
            return std::nullopt;
        entries.append(*entry);
    }
    if (!stream.atEnd())
        return std::nullopt;
    return entries;
}

} // namespace venlo
