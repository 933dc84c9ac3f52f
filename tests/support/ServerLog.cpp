#include "support/ServerLog.h"

namespace venlo::test
{

namespace
{

QByteArray verbOf(const QByteArray &line)
{
    return line.split(' ').first();
}

} // namespace

int ServerLog::addConnection()
{
    const std::scoped_lock lock(m_mutex);
    return ++m_connections;
}

void ServerLog::addCommand(int connection, const QByteArray &line, int batch)
{
    const std::scoped_lock lock(m_mutex);
    m_lines.push_back({connection, true, line, batch});
}

void ServerLog::addReply(int connection, const QByteArray &bytes)
{
    const std::scoped_lock lock(m_mutex);
    m_lines.push_back({connection, false, bytes.trimmed(), 0});
}

void ServerLog::addLogin()
{
    const std::scoped_lock lock(m_mutex);
    ++m_logins;
}

void ServerLog::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_lines.clear();
}

int ServerLog::connections() const
{
    const std::scoped_lock lock(m_mutex);
    return m_connections;
}

int ServerLog::logins() const
{
    const std::scoped_lock lock(m_mutex);
    return m_logins;
}

QList<QByteArray> ServerLog::commands(int connection) const
{
    const std::scoped_lock lock(m_mutex);
    QList<QByteArray> found;
    for (const Line &line : m_lines) {
        if (line.command && (connection == 0 || line.connection == connection))
            found << line.text;
    }
    return found;
}

QList<QByteArray> ServerLog::verbs(int connection) const
{
    QList<QByteArray> found = commands(connection);
    for (QByteArray &line : found)
        line = verbOf(line);
    return found;
}

QList<QByteArray> ServerLog::batches(int connection) const
{
    const std::scoped_lock lock(m_mutex);
    QList<QByteArray> found;
    std::pair<int, int> last{0, 0};
    for (const Line &line : m_lines) {
        if (!line.command || (connection != 0 && line.connection != connection))
            continue;
        const std::pair now{line.connection, line.batch};
        if (now == last)
            found.last() += ' ' + verbOf(line.text);
        else
            found << verbOf(line.text);
        last = now;
    }
    return found;
}

int ServerLog::count(const QByteArray &verb, const QByteArray &argument) const
{
    int found = 0;
    const QList<QByteArray> lines = commands();
    for (const QByteArray &line : lines) {
        if (verbOf(line) == verb && (argument.isNull() || line == verb + ' ' + argument))
            ++found;
    }
    return found;
}

QList<QByteArray> ServerLog::dialogue() const
{
    const std::scoped_lock lock(m_mutex);
    QList<QByteArray> all;
    for (const Line &line : m_lines)
        all << QByteArray::number(line.connection) + (line.command ? "> " : "< ") + line.text;
    return all;
}

} // namespace venlo::test
