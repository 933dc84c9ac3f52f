#pragma once

#include <QString>

#include <utility>
#include <variant>

namespace venlo
{

/// What can be done about an error.
enum class ErrorClass {
    Retry,     ///< transient (a 4xx reply, a data connection that broke): the same call may work
    Lost,      ///< the control connection is gone; nothing works before a reconnect
    Refused,   ///< the server said no for good (a 5xx reply)
    Cancelled, ///< the person asked to stop; the session stays
    Local      ///< this side failed: disk, permission, a name that cannot be sent
};

/// An error and, where a server or the system said something, its own words.
struct Error {
    ErrorClass kind = ErrorClass::Local;
    QString words;
    int replyCode = 0; ///< three-digit FTP reply code (RFC 959, 4.2), 0 when there was none
};

/// A value or an Error. Ask ok() first; value() of a failed result is a programming error.
template <typename T>
class [[nodiscard]] Result
{
public:
    Result(T value) : m_state(std::move(value)) {}
    Result(Error error) : m_state(std::move(error)) {}

    [[nodiscard]] bool ok() const { return std::holds_alternative<T>(m_state); }
    explicit operator bool() const { return ok(); }
    [[nodiscard]] const T &value() const { return std::get<T>(m_state); }
    [[nodiscard]] T &value() { return std::get<T>(m_state); }
    [[nodiscard]] const Error &error() const { return std::get<Error>(m_state); }

private:
    std::variant<T, Error> m_state;
};

/// Success or an Error.
template <>
class [[nodiscard]] Result<void>
{
public:
    Result() = default;
    Result(Error error) : m_error(std::move(error)), m_ok(false) {}

    [[nodiscard]] bool ok() const { return m_ok; }
    explicit operator bool() const { return m_ok; }
    [[nodiscard]] const Error &error() const { return m_error; }

private:
    Error m_error;
    bool m_ok = true;
};

} // namespace venlo
