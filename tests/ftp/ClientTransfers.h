#pragma once

#include "ftp/protocol/FtpClient.h"

#include <QBuffer>

namespace venlo::test
{

/// Uploads bytes as a file of the current directory.
[[nodiscard]] inline Result<qint64> putBytes(FtpClient &client, const QByteArray &name,
                                             const QByteArray &bytes)
{
    QBuffer buffer;
    buffer.setData(bytes);
    buffer.open(QIODevice::ReadOnly);
    return client.store(name, buffer, {});
}

/// The bytes of a file of the current directory, or the words of the error in brackets. expected:
/// see FtpClient::retrieve.
[[nodiscard]] inline QByteArray getBytes(FtpClient &client, const QByteArray &name,
                                         qint64 expected = -1)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    const auto got = client.retrieve(name, buffer, {}, expected);
    return got ? buffer.data() : '[' + got.error().words.toUtf8() + ']';
}

} // namespace venlo::test
