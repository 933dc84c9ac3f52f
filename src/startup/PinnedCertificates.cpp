#include "startup/PinnedCertificates.h"

#include <QRegularExpression>

#include "startup/settings/SettingsFile.h"

namespace venlo
{

namespace
{
QString group()
{
    return QStringLiteral("証明書");
}

bool isFingerprint(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("\\A[0-9a-f]{64}\\z"));
    return form.match(text).hasMatch();
}

bool isPlain(QChar c)
{
    return (c >= QLatin1Char('a') && c <= QLatin1Char('z')) ||
           (c >= QLatin1Char('0') && c <= QLatin1Char('9')) || c == QLatin1Char('.') ||
           c == QLatin1Char('-');
}
} // namespace

QString PinnedCertificates::keyOf(const QString &server)
{
    QString key;
    const QString folded = server.toLower();
    for (const QChar c : folded) {
        if (isPlain(c))
            key += c;
        else
            key += QStringLiteral("_%1").arg(c.unicode(), 4, 16, QLatin1Char('0'));
    }
    return key;
}

QString PinnedCertificates::pin(const QString &server)
{
    m_settings.GetGtx(group());
    const auto value = m_settings.vGtVal(keyOf(server), QString());
    const QString text = value ? value.value().toString() : QString();
    return isFingerprint(text) ? text : QString();
}

void PinnedCertificates::remember(const QString &server, const QString &fingerprint)
{
    if (!isFingerprint(fingerprint))
        return;
    m_settings.GetGtx(group());
    m_settings.SetVal(keyOf(server), fingerprint);
    m_settings.SetGtx();
    bool saved = false; // where it cannot be saved now it is at shut-down
    m_settings.SetTxt(saved);
}

} // namespace venlo
