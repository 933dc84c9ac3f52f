#include "ftppane/RemoteFetchData.h"

#include <utility>

#include "shared/Flags.h"

namespace venlo
{

namespace
{
QString urlList()
{
    return QStringLiteral("text/uri-list");
}
} // namespace

RemoteFetchData::RemoteFetchData(Fetch fetch) : m_fetch(std::move(fetch)) {}

bool RemoteFetchData::hasFormat(const QString &mimeType) const
{
    return mimeType == urlList() || QMimeData::hasFormat(mimeType);
}

QStringList RemoteFetchData::formats() const
{
    return QMimeData::formats() + QStringList(urlList());
}

QVariant RemoteFetchData::retrieveData(const QString &mimeType, QMetaType type) const
{
    if (mimeType != urlList())
        return QMimeData::retrieveData(mimeType, type);
    // The fetch lets events run, and one of them may ask again.
    if (m_fetching)
        return {};
    if (!m_urls) {
        const FlagScope fetching(m_fetching);
        m_urls = m_fetch();
    }
    if (type.id() == QMetaType::QByteArray) {
        QByteArray bytes;
        for (const QUrl &url : std::as_const(*m_urls))
            bytes += url.toEncoded() + "\r\n";
        return bytes;
    }
    QVariantList urls;
    for (const QUrl &url : std::as_const(*m_urls))
        urls.append(url);
    return urls;
}

} // namespace venlo
