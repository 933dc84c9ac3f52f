#pragma once

#include <QDateTime>
#include <QString>

#include <functional>
#include <memory>

class QFile;

namespace venlo
{

/// The error log "FtpErr.Log": restarted with a date stamp at the first open of the session in a
/// run, then one line per failure that was given up. Holds nothing but those lines, in CP932 after
/// a UTF-16 creation. Private to the user (0600). Write errors are silent.
class ErrorLog
{
public:
    using Clock = std::function<QDateTime()>;
    /// userDataFolder ends with a separator.
    explicit ErrorLog(const QString &userDataFolder, Clock clock = &QDateTime::currentDateTime);

    /// Empties an existing log (system code page) or creates one (UTF-16 with a byte order mark),
    /// and writes "yyyy/mm/dd hh:mm:ss" CR LF.
    void StartErrorLog();
    /// Appends "dd/mm hh:mm" (day/month), " : ", the message, CR LF in the system code page to the
    /// existing log.
    void LogError(const QString &message);
    [[nodiscard]] QString path() const { return m_path; }

private:
    QString m_path;
    Clock m_clock;
};

/// The second log, "FtpEvent.Log": everything worth knowing that the error log has no words for
/// (dialogues, refusals, reasons). UTF-8, no passwords, at most two files of maxBytes. 0600.
class EventLog
{
public:
    static constexpr qint64 maxBytes = 2LL * 1024 * 1024;
    explicit EventLog(const QString &userDataFolder,
                      ErrorLog::Clock clock = &QDateTime::currentDateTime);
    ~EventLog();
    EventLog(const EventLog &) = delete;
    EventLog &operator=(const EventLog &) = delete;

    /// One line with the time in front; control characters are escaped. Failures are silent.
    void note(const QString &line);
    [[nodiscard]] QString path() const { return m_path; }
    /// What was written before the present file reached its limit.
    [[nodiscard]] QString olderPath() const;

private:
    [[nodiscard]] bool open();
    void rotate();

    QString m_path;
    ErrorLog::Clock m_clock;
    std::unique_ptr<QFile> m_file; ///< stays open between notes
    qint64 m_size = 0;
};

} // namespace venlo
