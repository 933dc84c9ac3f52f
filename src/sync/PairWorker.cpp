#include "sync/PairWorker.h"

#include <QDir>
#include <QFile>

#include "ftp/ErrorLog.h"
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "platform/EntryLook.h"
#include "platform/FileNames.h"
#include "platform/Files.h"
#include "shared/FrontEnd.h"
#include "sync/LocalFolder.h"
#include "sync/LookAgain.h"
#include "sync/SyncReview.h"

namespace venlo
{

namespace
{
/// Why what is done under the path would be done somewhere else: a folder between the root and the
/// item has become a link since the comparison, or a name is another entry's short one. Empty when
/// it would not.
QString whyElsewhere(const SyncPair &pair, const QString &path)
{
    QString root = QDir::fromNativeSeparators(pair.localPath(QStringLiteral(".")));
    while (root.endsWith(QLatin1Char('/')))
        root.chop(1);
    QString folder = QDir::fromNativeSeparators(path);
    while (folder.size() > root.size()) {
        if (const QString why = whyAnotherEntry(folder); !why.isEmpty())
            return why;
        const auto last = folder.lastIndexOf(QLatin1Char('/'));
        if (last <= root.size())
            break;
        folder.truncate(last);
        if (isLink(folder))
            return QStringLiteral("途中のﾌｫﾙﾀﾞがﾘﾝｸです");
    }
    return {};
}

/// Paths that the operations' lists cannot carry: one of them would be read as a list itself.
bool breaksNameList(const QString &path)
{
    return path.contains(QLatin1Char('\r')) || path.contains(QLatin1Char('\t'));
}

/// Why this side must be left alone, empty when it may be dealt with.
QString whyNot(const SyncReview &review, int row)
{
    const QString local = review.localPath(row);
    if (const QString why = whyElsewhere(review.pair(), local); !why.isEmpty())
        return why;
    if (review.row(row).folder && isLink(local))
        return QStringLiteral("ﾌｫﾙﾀﾞがﾘﾝｸに変わりました");
    return LookAgain(review, row).why();
}

bool removeLocalFile(const QString &path, QString &why)
{
    QFile file(path);
    if (file.remove())
        return true;
    (void)file.setPermissions(file.permissions() | QFile::WriteUser);
    if (file.remove())
        return true;
    why = file.errorString();
    return false;
}
} // namespace

PairWorker::PairWorker(Session &session, RemoteOperations &operations, FrontEnd &frontEnd)
    : m_session(session), m_operations(operations), m_frontEnd(frontEnd)
{
}

void PairWorker::begin()
{
    m_operations.lookAnew();
}

bool PairWorker::connected()
{
    return m_session.connected();
}

bool PairWorker::reconnect()
{
    bool ok = false;
    m_session.ftReConect(ok);
    return ok;
}

void PairWorker::log(const QString &line)
{
    m_session.errorLog().LogError(line);
}

RowEnd PairWorker::work(const SyncReview &review, int row)
{
    const QString local = review.localPath(row);
    if (breaksNameList(local))
        return giveUp(local, QStringLiteral("名前に制御文字があります"));
    const QString why = whyNot(review, row);
    if (!why.isEmpty())
        return giveUp(local, why);
    if (review.plannedAction(row) != Action::Remove)
        return transfer(review, row);
    return review.pair().down ? removeLocal(review, row) : removeRemote(review, row);
}

RowEnd PairWorker::transfer(const SyncReview &review, int row)
{
    const SyncRow &here = review.row(row);
    const QString localParent = review.localParent(row);
    const QString remoteParent = review.remoteParent(row);
    const int givenUp = m_operations.counts().givenUp;
    RowEnd end;
    if (here.folder && review.pair().down)
        m_operations.ftGetFold(localParent, here.name, remoteParent, end.ok);
    else if (here.folder)
        m_operations.ftPutFold(localParent, here.name, remoteParent, end.ok);
    else if (review.pair().down)
        m_operations.ftGetFile(remoteParent, here.name, localParent, end.ok);
    else
        m_operations.ftPutFile(remoteParent, review.localPath(row), localParent, end.ok);
    end.givenUp = m_operations.counts().givenUp > givenUp;
    return end;
}

RowEnd PairWorker::removeRemote(const SyncReview &review, int row)
{
    const int givenUp = m_operations.counts().givenUp;
    RowEnd end;
    if (review.row(row).folder)
        m_operations.ftRemDir(review.remoteParent(row), review.remotePath(row), end.ok);
    else
        m_operations.ftDelFile(review.remoteParent(row), review.remotePath(row), end.ok);
    end.givenUp = m_operations.counts().givenUp > givenUp;
    return end;
}

RowEnd PairWorker::removeLocal(const SyncReview &review, int row)
{
    const QString path = review.localPath(row);
    const bool folder = review.row(row).folder;
    if (!EntryLook(path).exists() && !isLink(path))
        return {};
    const auto shown = m_operations.shows(review.remoteParent(row), review.row(row).name);
    if (!shown && !m_session.connected())
        return {false, false, shown.error().words};
    if (!shown || shown.value())
        return giveUp(path, shown ? QStringLiteral("ｻｰﾊﾞｰにあります") : shown.error().words);
    // The server took its time to answer.
    QString why = whyNot(review, row);
    if (!why.isEmpty())
        return giveUp(path, why);
    const bool gone = folder ? removeFolderTree(path, why) : removeLocalFile(path, why);
    if (!gone)
        return giveUp(path, why);
    m_frontEnd.outcome(
        {folder ? Outcome::Kind::FolderRemovedLocal : Outcome::Kind::DeletedLocal, path, {}, {}});
    return {};
}

/// What this side refuses is not worth another pass, and must not hold up the rows after it.
RowEnd PairWorker::giveUp(const QString &path, const QString &why)
{
    m_session.eventLog().note(QStringLiteral("given up: %1: %2").arg(path, why));
    m_frontEnd.outcome({Outcome::Kind::GivenUp, path, {}, why});
    return {true, true, why};
}

} // namespace venlo
