#pragma once

#include "ftp/ClientTransfers.h"
#include "ftp/protocol/Waiter.h"
#include "support/DaemonTests.h"

#include <QStringList>

#include <utility>
#include <vector>

namespace venlo::test
{

/// One client of one daemon.
struct DaemonClient {
    explicit DaemonClient(FtpDaemon::Kind kind, DaemonOptions options = {},
                          ClientLimits limits = {})
        : daemon(kind, std::move(options)), waiter([this] { return cancelled; }),
          client(waiter, limits)
    {
        client.setTrace([this](const QString &line) { trace.append(line); });
    }
    [[nodiscard]] bool start() { return daemon.start(); }
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
    /// The first words of the commands that were sent.
    [[nodiscard]] QStringList verbs() const
    {
        QStringList all;
        for (const QString &line : trace) {
            if (line.startsWith(QLatin1String("> ")))
                all.append(line.section(QLatin1Char(' '), 1, 1));
        }
        return all;
    }
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
