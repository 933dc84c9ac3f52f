// The operations of FtpClient that move bytes: download, upload.
#include "ftp/protocol/FtpClient.h"

#include "ftp/protocol/FtpClientState.h"

#include <QIODevice>

#include <algorithm>
#include <limits>

namespace venlo
{

Result<qint64> FtpClient::retrieve(const QByteArray &name, QIODevice &to, const Progress &progress,
                                   qint64 expected)
{
    return m->withOneRepeat([&]() -> Result<qint64> {
        State::Transfer transfer(DataChannel::Direction::Receive);
        if (auto begun = m->begin(transfer, "RETR " + name, expected); !begun)
            return begun.error();
        const auto ended = m->run(transfer, [&] {
            const QByteArray bytes = transfer.data.read();
            if (!bytes.isEmpty() && to.write(bytes) != bytes.size()) {
                transfer.stopped = {ErrorClass::Local, to.errorString(), 0};
                return State::Step::Stop;
            }
            if (!bytes.isEmpty() && progress)
                progress(transfer.data.movedBytes());
            return transfer.data.atEnd() ? State::Step::Done : State::Step::More;
        });
        if (!ended)
            return ended.error();
        if (transfer.rode() && transfer.data.movedBytes() != expected)
            m->doubt(State::Pace::Together, QStringLiteral("another size than expected"));
        return transfer.data.movedBytes();
    });
}

namespace
{
/// Feeds a device into a data connection, a window ahead of what the network takes.
class Sender
{
public:
    Sender(QIODevice &from, DataChannel &to)
        : m_from(from), m_to(to), m_left(from.isSequential() ? std::numeric_limits<qint64>::max()
                                                             : from.size() - from.pos())
    {
    }

    /// False when the device cannot be read.
    bool push()
    {
        while (!m_finished && m_to.wantsBytes()) {
            const QByteArray bytes = m_from.read(std::min<qint64>(DataChannel::chunk, m_left));
            m_left -= bytes.size();
            if (bytes.isEmpty()) {
                if (m_left > 0 && !m_from.atEnd())
                    return false;
                m_finished = true;
                m_to.finishWriting();
                break;
            }
            m_to.write(bytes);
        }
        return true;
    }
    [[nodiscard]] bool done() const { return m_finished && m_to.allSent(); }

private:
    QIODevice &m_from;
    DataChannel &m_to;
    qint64 m_left; ///< bytes; a file that grows as fast as it is sent would have no end
    bool m_finished = false;
};
} // namespace

Result<qint64> FtpClient::State::storeOnce(const QByteArray &name, QIODevice &from,
                                           const Progress &progress,
                                           std::vector<Follower> &followers)
{
    Transfer transfer(DataChannel::Direction::Send);
    transfer.riders = followers;
    transfer.rewindable = !from.isSequential();
    if (auto begun = begin(transfer, "STOR " + name, from.size()); !begun)
        return begun.error();
    Sender sender(from, transfer.data);
    const auto ended = run(transfer, [&] {
        if (!sender.push()) {
            transfer.stopped = {ErrorClass::Local, from.errorString(), 0};
            return Step::Stop;
        }
        if (progress)
            progress(transfer.data.movedBytes());
        return sender.done() ? Step::Done : Step::More;
    });
    std::copy_n(transfer.riders.begin(), std::min(transfer.riders.size(), followers.size()),
                followers.begin());
    if (!ended)
        return ended.error();
    return transfer.data.movedBytes();
}

Result<qint64> FtpClient::store(const QByteArray &name, QIODevice &from, const Progress &progress)
{
    std::vector<State::Follower> nothing;
    const qint64 start = from.pos();
    return m->withOneRepeat([&]() -> Result<qint64> {
        if (from.pos() != start && !from.seek(start))
            return Error{ErrorClass::Local, from.errorString(), 0};
        return m->storeOnce(name, from, progress, nothing);
    });
}

Result<qint64> FtpClient::storeWhole(const QByteArray &name, QIODevice &from,
                                     const Progress &progress, StoredFile &file)
{
    using Kind = State::Follower::Kind;
    const bool setsTime = file.time && canSetTime();
    // A server without MFMT has to show once that it keeps the time as UTC.
    const bool shows = m->setTimeSeen || m->features.contains("MFMT");
    std::vector<State::Follower> followers;
    if (hasSize())
        followers.push_back({Kind::Size, "SIZE " + name});
    if (setsTime && shows)
        followers.push_back({Kind::Time, m->setTimeCommand(name, *file.time)});
    const auto touched = [](const State::Follower &follower) {
        const bool refused = follower.reply && !follower.reply->completion();
        return follower.kind == Kind::Time && follower.sent && !refused;
    };
    const qint64 start = from.pos();
    auto sent = m->withOneRepeat([&]() -> Result<qint64> {
        if (from.pos() != start && !from.seek(start))
            return Error{ErrorClass::Local, from.errorString(), 0};
        for (auto &follower : followers) {
            file.timeTouched = file.timeTouched || touched(follower);
            follower = {follower.kind, follower.command};
        }
        return m->storeOnce(name, from, progress, followers);
    });
    if (!sent) {
        file.timeTouched =
            file.timeTouched || std::any_of(followers.begin(), followers.end(), touched);
        return sent;
    }
    const bool rode = !followers.empty() && followers.front().reply;
    if (!rode) {
        if (auto followed = m->follow(followers); !followed)
            return followed.error();
    }
    Result<void> time;
    for (const State::Follower &follower : followers) {
        if (follower.kind == Kind::Size)
            file.sizeThere = State::sizeIn(*follower.reply);
        else if (follower.kind == Kind::Time)
            time = m->timeWasSet(*follower.reply);
    }
    if (rode && file.sizeThere && *file.sizeThere != sent.value())
        m->slowDown(State::Pace::Together, QStringLiteral("another size than was sent"));
    if (setsTime && !shows)
        time = setModificationTime(name, *file.time);
    if (!time && time.error().kind == ErrorClass::Lost)
        return time.error();
    if (!time)
        file.timeNotSet = time.error();
    return sent;
}

} // namespace venlo
