#pragma once

#include <QList>
#include <QSslConfiguration>
#include <QSslSocket>
#include <QString>
#include <QTcpServer>

#include <functional>
#include <map>

namespace venlo::test
{

/// Makes every connection one that can speak TLS once it is told to.
class TlsCapableListener final : public QTcpServer
{
public:
    [[nodiscard]] QSslSocket *next() { return qobject_cast<QSslSocket *>(nextPendingConnection()); }

protected:
    void incomingConnection(qintptr descriptor) override;
};

/// An FTP server under TLS in the test's own event loop that knows how to log in and to list an
/// empty folder, for answers that no real daemon gives.
class TinyTlsServer
{
public:
    explicit TinyTlsServer(QSslConfiguration configuration);

    [[nodiscard]] bool start();
    [[nodiscard]] QString server() const;
    /// The reply to a verb by the version of the control connection, instead of the usual one.
    using Answer = std::function<QByteArray(QSsl::SslProtocol)>;
    void on(const QByteArray &verb, Answer answer) { m_answers[verb] = std::move(answer); }
    /// The verbs that came, in order.
    [[nodiscard]] const QList<QByteArray> &verbs() const { return m_verbs; }

private:
    void handle(QSslSocket *control, const QByteArray &verb);
    [[nodiscard]] QByteArray usual(const QByteArray &verb) const;
    void sendListing(QSslSocket *control);

    QSslConfiguration m_configuration;
    TlsCapableListener m_control;
    TlsCapableListener m_data;
    std::map<QByteArray, Answer> m_answers;
    QList<QByteArray> m_verbs;
    bool m_protected = false;
};

} // namespace venlo::test
