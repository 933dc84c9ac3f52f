#pragma once

#include <thread>

#include <QByteArray>

namespace venlo::test
{

/// A display server of a test, on a free loopback port or a local socket. Answers every connection
/// in a thread of its own until it is destroyed.
class FakeDisplayServer
{
public:
    /// Answers a set-up request that holds the text with 1, any other with 0. An empty text lets
    /// everybody in.
    [[nodiscard]] static FakeDisplayServer network(const QByteArray &wantedText);
    /// Takes connections and never says a word.
    [[nodiscard]] static FakeDisplayServer silent();
    [[nodiscard]] static FakeDisplayServer local(const QByteArray &path);
    ~FakeDisplayServer();
    FakeDisplayServer(const FakeDisplayServer &) = delete;
    FakeDisplayServer &operator=(const FakeDisplayServer &) = delete;

    /// The display's text, "127.0.0.1:number".
    [[nodiscard]] QByteArray display() const;
    [[nodiscard]] QByteArray number() const;

private:
    FakeDisplayServer(int listener, QByteArray wantedText, bool answers);
    void serve(const std::stop_token &stop) const;
    void answer(int connection) const;

    int m_listener;
    QByteArray m_wantedText;
    bool m_answers;
    std::jthread m_thread;
};

} // namespace venlo::test
