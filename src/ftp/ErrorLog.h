#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QTimer>

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
    /// clock may tell any time zone's time; the log has this machine's.
    explicit EventLog(const QString &userDataFolder,
                      ErrorLog::Clock clock = &QDateTime::currentDateTimeUtc);
    ~EventLog();
    EventLog(const EventLog &) = delete;
    EventLog &operator=(const EventLog &) = delete;

    /// One line with the time in front; control characters are escaped. Failures are silent. It is
    /// in the file, and all before it, when this returns.
    void note(const QString &line);
    /// The same for one of many lines: several go to the file in one write, at the next flush(), at
    /// the next note or in the next turn of an event loop after a twentieth of a second.
    void noteSoon(const QString &line);
    void flush();
    [[nodiscard]] QString path() const { return m_path; }
    /// What was written before the present file reached its limit.
    [[nodiscard]] QString olderPath() const;

private:
    [[nodiscard]] bool open();
    [[nodiscard]] bool add(const QString &line);
    void stamp(QByteArray &text);
    void rotate();

    QString m_path;
    ErrorLog::Clock m_clock;
    std::unique_ptr<QFile> m_file; ///< stays open between notes
    qint64 m_size = 0;             ///< bytes, with those that wait
    QByteArray m_waiting;          ///< whole lines
    QTimer m_soon;
    qint64 m_second = 0;   ///< since 1970: what the stamp was made for
    QByteArray m_dateText; ///< up to the point in front of the milliseconds
};

} // namespace venlo
