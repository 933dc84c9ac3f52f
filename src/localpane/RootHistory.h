#pragma once

#include <QString>
#include <QStringList>

namespace venlo
{

/// The roots that were shown, newest first, as one text in which "," stands in front of each. A
/// path that itself holds a "," falls apart in it.
class RootHistory
{
public:
    void enter(const QString &root);
    [[nodiscard]] const QString &text() const { return m_text; }
    void setText(const QString &text) { m_text = text; }
    [[nodiscard]] QStringList roots() const;

private:
    QString m_text;
};

} // namespace venlo
