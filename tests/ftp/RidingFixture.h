#pragma once

#include "ftp/ClientTransfers.h"
#include "ftp/protocol/Waiter.h"

#include <QBuffer>
#include <QStringList>

#include <chrono>

namespace venlo::test
{

/// A client that sends and fetches small files as the engine does, with a Cancel button and its
/// trace.
struct RidingClient {
    RidingClient() : waiter([this] { return cancelled; }), client(waiter, limits())
    {
        client.setTrace([this](const QString &line) { trace.append(line); });
    }
    [[nodiscard]] static ClientLimits limits()
    {
        using namespace std::chrono_literals;
        ClientLimits limits;
        limits.connect = 3s;
        limits.reply = 1500ms;
        limits.idleData = 3s;
        return limits;
    }
    [[nodiscard]] static QDateTime time() { return {QDate(2024, 2, 29), QTime(1, 2, 4), Qt::UTC}; }

    [[nodiscard]] Result<qint64> put(const QByteArray &name, const QByteArray &bytes)
    {
        QBuffer buffer;
        buffer.setData(bytes);
        buffer.open(QIODevice::ReadOnly);
        there = StoredFile{time()};
        return client.storeWhole(name, buffer, {}, there);
    }
    /// The bytes, or the words of the error in brackets.
    [[nodiscard]] QByteArray get(const QByteArray &name, qint64 expected)
    {
        return getBytes(client, name, expected);
    }
    /// Why commands were no longer sent ahead, in order.
    [[nodiscard]] QStringList slowings() const
    {
        return trace.filter(QStringLiteral("! commands are no longer sent ahead"));
    }

    bool cancelled = false;
    QStringList trace;
    Waiter waiter;
    FtpClient client;
    StoredFile there; ///< of the last put
};

} // namespace venlo::test
