#pragma once

#include <QByteArray>

#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace venlo::test
{

/// What a scripted server does for one command instead of, or on top of, carrying it out.
struct Action {
    /// How a data connection ends once dataLimit bytes went through it.
    enum class DataEnd {
        Whole,       ///< as if that were all: closed, then the completion reply
        DropControl, ///< closed together with the control connection, no completion reply
        Reset,       ///< data connection reset (RST), then the completion reply
        Stall        ///< kept open, nothing more moves
    };

    int delayMs = 0;
    bool hang = false;                 ///< no reply; the connection stays
    bool dropBefore = false;           ///< closes the control connection instead of replying
    bool dropAfter = false;            ///< closes it after the last reply of the command
    bool carryOut = false;             ///< with a reply: the command is done all the same, unseen
    QByteArray flood;                  ///< sent again and again instead of the reply
    qint64 floodBytes = 0;             ///< then comes the reply, or the end of the connection
    bool closedPort = false;           ///< EPSV, PASV: names a port where nobody listens
    std::optional<QByteArray> reply;   ///< bytes sent instead of doing the command
    std::optional<QByteArray> opening; ///< instead of "150 ..."; empty: none is sent
    std::optional<QByteArray> completion; ///< instead of "226 ..."; empty: none is sent
    std::optional<QByteArray> data;       ///< instead of the file or listing
    bool dataRepeats = false;             ///< data is sent again and again, without end
    std::optional<qint64> dataLimit;      ///< bytes
    DataEnd dataEnd = DataEnd::Whole;
    bool discards = false; ///< what an upload sends is counted and forgotten
    int chunk = 0;         ///< bytes that move at a time, with chunkDelayMs between; 0: all at once
    int chunkDelayMs = 0;
    QByteArray afterwards; ///< bytes sent after everything, that nobody asked for
    int afterwardsTimes = 1;
    std::function<void()> call; ///< run first, in the server's thread
};

/// The rules of a scripted server. Safe from all threads.
class Script
{
    struct Rule;

public:
    /// Shapes one rule; every member returns the rule itself, so that they chain:
    ///     server.on("RETR").nth(2).dropAfterBytes(1000);
    class On
    {
    public:
        // When: every time, unless one of these is said.
        On &once() { return nth(1); }
        On &nth(int occurrence);
        On &first(int times);
        On &from(int occurrence);

        // What.
        /// "code text"; a text with "\n" becomes a multi-line reply (RFC 959, 4.2).
        On &reply(int code, const QByteArray &text);
        /// Bytes as they are, line ends included.
        On &rawReply(const QByteArray &bytes);
        /// The reply is a lie: the command is carried out first.
        On &butDoIt();
        On &thenClose();
        On &dropBeforeReply();
        On &hang();
        On &delay(int ms);
        /// A reply that goes on like this, by default with lines of a multi-line one; 256 MiB stand
        /// for ever.
        On &endlessReply(const QByteArray &block = QByteArray("211-and so on\r\n").repeated(1000));
        /// So many bytes of a block, then the reply that the rule has, if any.
        On &flood(const QByteArray &block, qint64 bytes);
        On &closedPort();
        On &opening(const QByteArray &line);
        On &completion(const QByteArray &line);
        On &withoutCompletion() { return completion({}); }
        On &data(const QByteArray &bytes);
        /// Data of such blocks that ends only with the client, or where truncateAfter says so.
        On &endlessData(const QByteArray &block);
        /// Takes an upload without keeping it.
        On &discards();
        /// The data ends after so many bytes; completion stays 226 unless said otherwise.
        On &truncateAfter(qint64 bytes);
        On &dropAfterBytes(qint64 bytes);
        On &resetAfterBytes(qint64 bytes);
        On &stallAfterBytes(qint64 bytes);
        On &slow(int chunk, int delayMs);
        On &afterwards(const QByteArray &bytes, int times = 1);
        On &call(std::function<void()> action);

    private:
        friend class Script;
        On(std::mutex &mutex, std::shared_ptr<Rule> rule);
        template <typename Change>
        On &change(Change set);
        On &limit(qint64 bytes, Action::DataEnd end);

        std::mutex &m_mutex;
        std::shared_ptr<Rule> m_rule;
    };

    /// A rule for a verb ("RETR"; "CONNECT" is the greeting) and, unless it is null, for exactly
    /// this argument. The rule made last is asked first.
    [[nodiscard]] On on(const QByteArray &verb, const QByteArray &argument = {});
    void clear();

    /// What to do about this command; counts the occurrence.
    [[nodiscard]] Action actionFor(const QByteArray &verb, const QByteArray &argument);

    /// "code text" with line ends, multi-line where the text has "\n".
    [[nodiscard]] static QByteArray replyText(int code, const QByteArray &text);

private:
    std::mutex m_mutex;
    std::vector<std::shared_ptr<Rule>> m_rules;
};

} // namespace venlo::test
