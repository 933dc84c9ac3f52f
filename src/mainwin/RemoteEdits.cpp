#include "mainwin/RemoteEdits.h"

#include <chrono>
#include <utility>

#include <QApplication>
#include <QDir>
#include <QFileInfo>

#include "db/DisplayFormat.h"
#include "ftp/DirectoryCache.h"
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "platform/FileNames.h"
#include "shared/Flags.h"
#include "shared/NameList.h"
#include "shared/OperationGate.h"
#include "shared/RemotePath.h"
#include "shared/WindowDesk.h"

namespace venlo
{

RemoteEdits::RemoteEdits(MainRooms &rooms, const FileOpener &opener, QObject *parent)
    : QObject(parent), m_rooms(rooms), m_opener(opener)
{
    connect(&m_timer, &QTimer::timeout, this, &RemoteEdits::look);
    m_timer.setInterval(std::chrono::seconds(2));
}

QString RemoteEdits::remoteStateOf(const Edit &edit)
{
    QString date;
    QString size;
    m_rooms.cache.caEntInfo(edit.dir, edit.name, false, date, size);
    return date + size;
}

void RemoteEdits::open(const QString &remoteDir, const QString &name, bool textEditor)
{
    const auto turn = m_rooms.gate.begin();
    if (!turn)
        return;
    const QString dir = m_rooms.cache.normalised(remoteDir);
    auto folder = whyNotAFileName(name).isEmpty() ? std::make_unique<FetchFolder>() : nullptr;
    bool ok = folder && !folder->path().isEmpty();
    m_rooms.operations.resetCounts();
    if (ok) {
        const FlagScope unattended(m_rooms.flags.unattendedTransfer);
        m_rooms.operations.ftGetFile(dir, name, QDir::toNativeSeparators(folder->path()), ok);
    }
    m_rooms.desk.setMessageLine({});
    const QString copy = ok ? QDir(folder->path()).filePath(name) : QString();
    if (!ok || !QFileInfo::exists(copy)) {
        // A refusal of the server is told with those of other operations.
        if (m_rooms.operations.counts().givenUp == 0 && !m_rooms.desk.cancelled())
            m_rooms.desk.message(name + QStringLiteral(" をﾀﾞｳﾝﾛｰﾄﾞできませんでした"));
        return;
    }
    folder->remember();
    Edit edit{m_rooms.session.currentSite(), dir, name, copy, folder->fetched(copy), {}, {}, {}};
    edit.remoteState = remoteStateOf(edit);
    edit.folder = std::move(folder);
    m_edits.push_back(std::move(edit));
    m_timer.start();
    const auto mode = static_cast<int>(textEditor ? OpenMode::Editor : OpenMode::Open);
    if (!m_opener.open(copy, mode).isEmpty())
        m_rooms.desk.message(name + QStringLiteral(" を開けませんでした"));
}

QStringList RemoteEdits::changedCopies() const
{
    QStringList changed;
    for (const Edit &edit : m_edits)
        changed += edit.folder->work();
    return changed;
}

/// A change is offered once it stood still for one look: an editor may still be writing. Not over
/// an open menu or in the middle of a drag.
void RemoteEdits::look()
{
    if (m_offering || m_rooms.gate.busy() || QApplication::activeModalWidget() != nullptr ||
        QApplication::activePopupWidget() != nullptr ||
        QGuiApplication::mouseButtons() != Qt::NoButton)
        return;
    const FlagScope offering(m_offering);
    for (Edit &edit : m_edits) {
        const FileStamp now(edit.copy);
        const bool still = now == edit.seen;
        edit.seen = now;
        if (still && now.isFile() && now != edit.folder->fetched(edit.copy) && now != edit.declined)
            offer(edit);
    }
}

void RemoteEdits::offer(Edit &edit)
{
    const QString target = remoteChild(edit.dir, edit.name);
    const FileStamp offered = edit.seen;
    if (!m_rooms.desk.question(edit.name + QStringLiteral(" が変更されました ") + target +
                               QStringLiteral(" にｱｯﾌﾟﾛｰﾄﾞします"))) {
        edit.declined = offered;
        return;
    }
    if (!m_rooms.session.connected() || m_rooms.session.currentSite() != edit.site) {
        edit.declined = offered;
        m_rooms.desk.message(QStringLiteral("接続されていないためｱｯﾌﾟﾛｰﾄﾞできません\r") +
                             QDir::toNativeSeparators(edit.copy) +
                             QStringLiteral(" に保存されています"));
        return;
    }
    upload(edit);
}

/// Somebody may have changed the file on the server meanwhile: the person decides.
bool RemoteEdits::mayReplace(const Edit &edit)
{
    bool listed = false;
    QString names;
    m_rooms.cache.caLoadDir(edit.dir, DirectoryCache::Replace, names, listed);
    if (listed && remoteStateOf(edit) == edit.remoteState)
        return true;
    return m_rooms.desk.question(remoteChild(edit.dir, edit.name) +
                                 QStringLiteral(" はｻｰﾊﾞｰ側でも変更されています 上書きします"));
}

void RemoteEdits::upload(Edit &edit)
{
    const auto turn = m_rooms.gate.begin();
    if (!turn)
        return;
    const FileStamp sent(edit.copy);
    if (!mayReplace(edit)) {
        edit.declined = sent;
        return;
    }
    bool ok = true;
    {
        const FlagScope unattended(m_rooms.flags.unattendedTransfer);
        m_rooms.operations.resetCounts();
        const UploadLine line{edit.name, FormatDateText(sent.modified), FormatSizeText(sent.size)};
        m_rooms.operations.ftPutFile(edit.dir, line.text(),
                                     QDir::toNativeSeparators(QFileInfo(edit.copy).path()), ok);
    }
    if (!ok || m_rooms.operations.counts().done == 0) {
        edit.declined = sent;
        m_rooms.desk.message(edit.name + QStringLiteral(" をｱｯﾌﾟﾛｰﾄﾞできませんでした\r") +
                             QDir::toNativeSeparators(edit.copy) +
                             QStringLiteral(" に保存されています"));
        return;
    }
    edit.folder->remember(edit.copy, sent);
    edit.remoteState = remoteStateOf(edit);
    Q_EMIT uploaded();
}

} // namespace venlo
