#include <algorithm>
#include <array>

#include <QFile>
#include <QScopeGuard>

#include "ftp/FileStamp.h"
#include "ftp/ProgressThrottle.h"
#include "ftp/RemoteUploads.h"
#include "ftp/Session.h"

namespace venlo
{

namespace
{
constexpr int maxChanges = 5;

/// Whether an upload that failed may have touched the file on the server. Bytes can leave before
/// the server says no; the replies below never come behind the opening one (RFC 959, 5.4).
bool mayHaveStored(const Error &error, bool moved)
{
    constexpr std::array before{500, 501, 502, 503, 504, 530, 532, 553};
    if (error.kind != ErrorClass::Refused)
        return true;
    return moved && std::find(before.begin(), before.end(), error.replyCode) == before.end();
}
} // namespace

void RemoteUploads::noteUnfinished(const Item &item)
{
    m_context.keepCache(item.remote, [&] {
        m_context.cache.unfinished().begin(m_context.session.currentSite(), item.dir, item.name);
    });
}

OperationContext::Step RemoteUploads::sendStep(const Item &item, FileStamp &stamp)
{
    return [this, &item, &stamp]() -> Result<void> {
        auto whole = send(item);
        if (!whole)
            return whole.error();
        stamp = std::move(whole.value());
        return {};
    };
}

Result<FileStamp> RemoteUploads::send(const Item &item)
{
    for (int change = 0; change < maxChanges; ++change) {
        auto whole = sendOnce(item);
        if (!whole || whole.value().isFile())
            return whole;
        m_context.note(QStringLiteral("%1 changed while it was sent").arg(item.path));
        if (!m_context.mayGoOn()) {
            noteUnfinished(item);
            return Error{ErrorClass::Cancelled, {}, 0};
        }
    }
    noteUnfinished(item);
    return Error{ErrorClass::Local, QStringLiteral("送信中にﾌｧｲﾙが変更されました"), 0};
}

/// An empty stamp where the file is not the one any more that was sent.
Result<FileStamp> RemoteUploads::sendOnce(const Item &item)
{
    const FileStamp before(item.path);
    // Opening anything else than a file may wait for ever.
    if (!before.isFile())
        return Error{ErrorClass::Local, QStringLiteral("ﾌｧｲﾙがありません"), 0};
    QFile file(item.path);
    if (!file.open(QIODevice::ReadOnly))
        return Error{ErrorClass::Local, file.errorString(), 0};
    if (item.folder != nullptr && item.folder->leadsAway())
        return Error{ErrorClass::Local, SteadyFolder::words(), 0};
    if (auto current = m_context.stepInto(item.dir); !current)
        return current.error();
    const QByteArray raw = m_context.cache.rawName(item.dir, item.name);
    ProgressThrottle meter(m_context.frontEnd, item.name, before.size);
    bool moved = false;
    UnfinishedUploads &unfinished = m_context.cache.unfinished();
    unfinished.sending(m_context.session.currentSite(), item.dir, item.name);
    const auto settled = qScopeGuard([&unfinished] { unfinished.settled(); });
    // With its local time both compare equal afterwards.
    StoredFile there{before.modified.toUTC()};
    const auto stored = m_context.session.client().storeWhole(
        raw, file,
        [&](qint64 done) {
            moved = moved || done > 0;
            meter.moved(done);
        },
        there);
    if (!stored) {
        if (there.timeTouched || mayHaveStored(stored.error(), moved))
            noteUnfinished(item);
        // A file that is being rewritten may break off under the reader's hands.
        if (stored.error().kind == ErrorClass::Local && before != FileStamp(item.path))
            return FileStamp();
        return stored.error();
    }
    meter.finished(stored.value());
    const bool unchanged = stored.value() == before.size && before == FileStamp(item.path);
    if (!unchanged)
        return FileStamp();
    // A data connection that the server, or something on the way, closes early looks like a whole
    // one to both: only the size tells. What the server does not say counts as whole.
    if (there.sizeThere && *there.sizeThere != stored.value()) {
        noteUnfinished(item);
        return Error{ErrorClass::Retry, QStringLiteral("送信した大きさが一致しません"), 0};
    }
    if (there.timeNotSet)
        m_context.note(
            QStringLiteral("time of %1 not set: %2").arg(item.remote, there.timeNotSet->words));
    return before;
}

void RemoteUploads::sent(const Item &item, const FileStamp &stamp)
{
    m_context.keepRows(item.remote, [&] {
        m_context.cache.unfinished().end(m_context.session.currentSite(), item.dir, item.name);
        m_context.cache.caAddFile(stamp, item.dir, item.name);
    });
    m_context.done(Outcome::Kind::Uploaded, item.path, item.remote);
}

} // namespace venlo
