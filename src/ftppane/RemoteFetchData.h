#pragma once

#include <functional>
#include <optional>

#include <QList>
#include <QMimeData>
#include <QUrl>

namespace venlo
{

/// What a drag of remote entries carries: beside the program's private type the urls of real
/// files, which are fetched from the server only once somebody reads them.
class RemoteFetchData final : public QMimeData
{
    Q_OBJECT

public:
    /// Fetches the entries; the urls of what arrived whole, none when it was refused or cancelled.
    using Fetch = std::function<QList<QUrl>()>;
    explicit RemoteFetchData(Fetch fetch);

    [[nodiscard]] bool hasFormat(const QString &mimeType) const override;
    [[nodiscard]] QStringList formats() const override;

protected:
    [[nodiscard]] QVariant retrieveData(const QString &mimeType, QMetaType type) const override;

private:
    Fetch m_fetch;
    mutable std::optional<QList<QUrl>> m_urls; ///< once they were fetched
    mutable bool m_fetching = false;
};

} // namespace venlo
