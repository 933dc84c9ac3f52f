#pragma once

#include <array>
#include <cstdio>
#include <memory>

#include <QByteArray>
#include <QString>

namespace venlo::test
{

/// Two streams that a test reads back instead of stdout and stderr.
class CaughtStreams
{
public:
    CaughtStreams()
        : m_results(std::tmpfile(), &std::fclose), m_messages(std::tmpfile(), &std::fclose)
    {
        if (!m_results || !m_messages)
            qFatal("no temporary file");
    }
    [[nodiscard]] std::FILE *results() const { return m_results.get(); }
    [[nodiscard]] std::FILE *messages() const { return m_messages.get(); }
    [[nodiscard]] QString resultText() const { return read(m_results.get()); }
    [[nodiscard]] QString messageText() const { return read(m_messages.get()); }

private:
    [[nodiscard]] static QString read(std::FILE *file)
    {
        std::rewind(file);
        QByteArray bytes;
        std::array<char, 4096> piece{};
        while (const size_t count = std::fread(piece.data(), 1, piece.size(), file))
            bytes.append(piece.data(), static_cast<qsizetype>(count));
        return QString::fromLocal8Bit(bytes);
    }

    using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;
    File m_results;
    File m_messages;
};

} // namespace venlo::test
