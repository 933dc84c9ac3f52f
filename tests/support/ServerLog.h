#pragma once

#include <QByteArray>
#include <QList>

#include <mutex>

namespace venlo::test
{

/// The dialogue of a scripted server, connection by connection, for assertions. Safe from all
/// threads; every accessor gives a copy of what was said up to now.
class ServerLog
{
public:
    [[nodiscard]] int addConnection();
    /// batch: see ControlLine; 0 where it does not matter.
    void addCommand(int connection, const QByteArray &line, int batch = 0);
    void addReply(int connection, const QByteArray &bytes);
    void addLogin();
    void clear();

    [[nodiscard]] int connections() const;
    [[nodiscard]] int logins() const;
    /// The command lines in order ("STOR a"), of one connection (from 1) or of all (0).
    [[nodiscard]] QList<QByteArray> commands(int connection = 0) const;
    /// Only the verbs.
    [[nodiscard]] QList<QByteArray> verbs(int connection = 0) const;
    /// The verbs that came in one go, joined by blanks ("STOR SIZE EPSV"): what a client sent
    /// without waiting for a reply in between. As many as it waited for.
    [[nodiscard]] QList<QByteArray> batches(int connection = 0) const;
    /// How often a verb came, with exactly that argument unless it is null.
    [[nodiscard]] int count(const QByteArray &verb, const QByteArray &argument = {}) const;
    /// "1> USER user", "1< 331 ...", with the number of the connection; one line each.
    [[nodiscard]] QList<QByteArray> dialogue() const;

private:
    struct Line {
        int connection = 0;
        bool command = false;
        QByteArray text;
        int batch = 0;
    };
    mutable std::mutex m_mutex;
    QList<Line> m_lines;
    int m_connections = 0;
    int m_logins = 0;
};

} // namespace venlo::test
