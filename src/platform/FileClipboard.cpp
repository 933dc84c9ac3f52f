#include "platform/FileClipboard.h"

#include <optional>

#include <QDir>
#include <QMimeData>
#include <QUrl>
#include <QtEndian>

#include "platform/CodePage.h"

namespace venlo
{

namespace
{
const QString gnomeType = QStringLiteral("x-special/gnome-copied-files");
const QString kdeType = QStringLiteral("application/x-kde-cutselection");
constexpr quint32 headerSize = 20;
constexpr int wideFlagAt = 16;

QByteArray gnomeMarker(const QList<QUrl> &urls, bool cut)
{
    QByteArray marker = cut ? "cut" : "copy";
    for (const QUrl &url : urls)
        marker += '\n' + url.toEncoded();
    return marker;
}

quint32 effectOf(const QMimeData &data)
{
    if (data.hasFormat(gnomeType)) {
        const QByteArray word = data.data(gnomeType).split('\n').constFirst().trimmed();
        return word == "cut" ? cutEffect : word == "copy" ? copyEffect : dropEffectNone;
    }
    if (data.hasFormat(kdeType)) {
        const QByteArray mark = data.data(kdeType);
        return mark.startsWith('1') ? cutEffect : copyEffect;
    }
    return dropEffectNone;
}

QStringList localOnly(const QList<QUrl> &urls)
{
    QStringList paths;
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            paths << QDir::toNativeSeparators(QDir::cleanPath(url.toLocalFile()));
    }
    return paths;
}

QList<QUrl> gnomeUrls(const QMimeData &data)
{
    QList<QUrl> urls;
    const auto lines = data.data(gnomeType).split('\n');
    for (qsizetype i = 1; i < lines.size(); ++i)
        urls << QUrl::fromEncoded(lines.at(i).trimmed());
    return urls;
}

/// All paths in the code page, each ended by NUL; nothing when one of them does not survive it.
std::optional<QByteArray> narrowList(const QStringList &paths)
{
    QByteArray list;
    for (const QString &path : paths) {
        const auto bytes = encodeCp932(path);
        if (!bytes || decodeCp932(*bytes) != path)
            return std::nullopt;
        list += *bytes + '\0';
    }
    return list;
}

QByteArray wideList(const QStringList &paths)
{
    QByteArray list;
    for (const QString &path : paths) {
        for (const QChar unit : path + QChar(0)) {
            char bytes[sizeof(quint16)];
            qToLittleEndian<quint16>(unit.unicode(), bytes);
            list.append(bytes, sizeof bytes);
        }
    }
    return list;
}
} // namespace

std::unique_ptr<QMimeData> fileClipData(const QStringList &paths, quint32 effect)
{
    QList<QUrl> urls;
    for (const QString &path : paths)
        urls << QUrl::fromLocalFile(path);
    const bool cut = (effect & dropEffectCopy) == 0;
    auto data = std::make_unique<QMimeData>();
    data->setUrls(urls);
    data->setData(gnomeType, gnomeMarker(urls, cut));
    data->setData(kdeType, cut ? "1" : "0");
    return data;
}

QStringList localPaths(const QMimeData &data)
{
    return localOnly(data.urls());
}

FileClip readFileClipData(const QMimeData &data)
{
    QStringList paths = localPaths(data);
    if (paths.isEmpty())
        paths = localOnly(gnomeUrls(data));
    return {paths, paths.isEmpty() ? dropEffectNone : effectOf(data)};
}

QByteArray dropFilesBlock(const QStringList &paths, bool &wide)
{
    const auto narrow = wide ? std::nullopt : narrowList(paths);
    wide = !narrow.has_value();
    QByteArray header(headerSize, '\0');
    qToLittleEndian<quint32>(headerSize, header.data());
    qToLittleEndian<quint32>(wide ? 1 : 0, header.data() + wideFlagAt);
    return header + (wide ? wideList(paths) : *narrow) + QByteArray(wide ? 2 : 1, '\0');
}

} // namespace venlo
