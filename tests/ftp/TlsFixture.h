#pragma once

#include "ftp/ClientTransfers.h"
#include "ftp/protocol/Waiter.h"
#include "support/Certificates.h"
#include "support/FtpDaemon.h"

#include <QStringList>

#include <utility>
#include <vector>

namespace venlo::test
{

/// One client of one daemon that speaks TLS.
struct TlsFixture {
    TlsFixture(FtpDaemon::Kind kind, DaemonOptions options, ClientLimits limits = {})
        : daemon(kind, std::move(options)), waiter([this] { return cancelled; }),
          client(waiter, limits)
    {
        client.setTrace([this](const QString &line) { trace.append(line); });
    }
    [[nodiscard]] bool start()
    {
        QString why;
        if (daemon.start(&why))
            return true;
        qWarning("%s", qPrintable(why));
        return false;
    }
    /// prefix stands before the server text.
    [[nodiscard]] Result<void> login(const QString &prefix = {}, bool passive = true,
                                     const QString &proxy = {})
    {
        auto opened =
            client.open({prefix + daemon.server(), daemon.user(), daemon.password(), proxy, passive,
                         [this](const ServerCertificate &certificate) {
                             shown.push_back(certificate);
                             return accepts ? accepts(certificate) : certificate.verified();
                         }});
        if (!opened)
            words = opened.error().words;
        return opened;
    }
    [[nodiscard]] Result<qint64> put(const QByteArray &name, const QByteArray &bytes)
    {
        return putBytes(client, name, bytes);
    }
    /// The bytes, or the words of the error in brackets.
    [[nodiscard]] QByteArray get(const QByteArray &name) { return getBytes(client, name); }
    [[nodiscard]] QString report() const
    {
        return trace.join(QLatin1Char('\n')) + QLatin1Char('\n') + daemon.log();
    }

    FtpDaemon daemon;
    bool cancelled = false;
    Waiter waiter;
    FtpClient client;
    CertificateTest accepts;
    std::vector<ServerCertificate> shown;
    QStringList trace;
    QString words;
};

} // namespace venlo::test
