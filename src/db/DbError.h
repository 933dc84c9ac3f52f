#pragma once

#include <QString>

#include <stdexcept>

namespace venlo
{

/// A statement the store refused. words() are the store's own; brokenBy() is the value that broke
/// the statement (one that holds a quote), empty otherwise.
class DbError : public std::runtime_error
{
public:
    explicit DbError(const QString &words, const QString &brokenBy = {})
        : std::runtime_error(words.toStdString()), m_words(words), m_brokenBy(brokenBy)
    {
    }
    [[nodiscard]] const QString &words() const { return m_words; }
    [[nodiscard]] const QString &brokenBy() const { return m_brokenBy; }

private:
    QString m_words;
    QString m_brokenBy;
};

} // namespace venlo
