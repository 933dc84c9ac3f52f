#pragma once

#include <QString>

#include "ftp/CertificatePins.h"

namespace venlo
{

class yIni;

/// The accepted certificates among the user's settings: the group "証明書", one key a server. What
/// stands there and is no fingerprint counts as nothing. Owned by the program object.
class PinnedCertificates final : public TrustStore
{
public:
    explicit PinnedCertificates(yIni &settings) : m_settings(settings) {}

    [[nodiscard]] QString pin(const QString &server) override;
    void remember(const QString &server, const QString &fingerprint) override;

    /// The key of "host:port": no letter of it can end a tag or is lost in the settings' code page.
    [[nodiscard]] static QString keyOf(const QString &server);

private:
    yIni &m_settings;
};

} // namespace venlo
