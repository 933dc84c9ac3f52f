#include "mainwin/RemoteEdits.h"

#include <chrono>

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

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

/// A copy that an editor still holds open on Windows cannot be removed and stays.
RemoteEdits::~RemoteEdits()
{
    for (const Edit &edit : m_edits) {
        const Stamp now = stampOf(edit.copy);
        if (now == edit.whole || !now.modified.isValid())
            (void)QDir(QFileInfo(edit.copy).path()).removeRecursively();
    }
}

RemoteEdits::Stamp RemoteEdits::stampOf(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() ? Stamp{info.lastModified(), info.size()} : Stamp{};
}

QString RemoteEdits::remoteStateOf(const Edit &edit)
{
    QString date;
    QString size;
    m_rooms.cache.caEntInfo(edit.dir, edit.name, false, date, size);
    return date + size;
}

QString RemoteEdits::makeFolder() const
{
    QTemporaryDir folder(QDir::temp().filePath(QStringLiteral("VenloFtp-XXXXXX")));
    folder.setAutoRemove(false);
    return folder.isValid() ? folder.path() : QString();
}

void RemoteEdits::open(const QString &remoteDir, const QString &name, bool textEditor)
{
    const auto turn = m_rooms.gate.begin();
    if (!turn)
        return;
    const QString dir = m_rooms.cache.normalised(remoteDir);
    const QString folder = whyNotAFileName(name).isEmpty() ? makeFolder() : QString();
    Edit edit{
        m_rooms.session.currentSite(), dir, name, QDir(folder).filePath(name), {}, {}, {}, {}};
    bool ok = !folder.isEmpty();
    m_rooms.operations.resetCounts();
    if (ok) {
        const FlagScope unattended(m_rooms.flags.unattendedTransfer);
        m_rooms.operations.ftGetFile(dir, name, QDir::toNativeSeparators(folder), ok);
    }
    edit.whole = edit.seen = stampOf(edit.copy);
    m_rooms.desk.setMessageLine({});
    if (!ok || !edit.whole.modified.isValid()) {
        if (!folder.isEmpty())
            (void)QDir(folder).removeRecursively();
        // A refusal of the server is told with those of other operations.
        if (m_rooms.operations.counts().givenUp == 0 && !m_rooms.desk.cancelled())
            m_rooms.desk.message(name + QStringLiteral(" をﾀﾞｳﾝﾛｰﾄﾞできませんでした"));
        return;
    }
    edit.remoteState = remoteStateOf(edit);
    m_edits.push_back(edit);
    m_timer.start();
    const auto mode = static_cast<int>(textEditor ? OpenMode::Editor : OpenMode::Open);
    if (!m_opener.open(edit.copy, mode).isEmpty())
        m_rooms.desk.message(name + QStringLiteral(" を開けませんでした"));
}

QStringList RemoteEdits::changedCopies() const
{
    QStringList changed;
    for (const Edit &edit : m_edits) {
        const Stamp now = stampOf(edit.copy);
        if (now.modified.isValid() && now != edit.whole)
            changed += QDir::toNativeSeparators(edit.copy);
    }
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
        const Stamp now = stampOf(edit.copy);
        const bool still = now == edit.seen;
        edit.seen = now;
        if (still && now.modified.isValid() && now != edit.whole && now != edit.declined)
            offer(edit);
    }
}

void RemoteEdits::offer(Edit &edit)
{
    const QString target = remoteChild(edit.dir, edit.name);
    const Stamp offered = edit.seen;
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
    const Stamp sent = stampOf(edit.copy);
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
    edit.whole = sent;
    edit.remoteState = remoteStateOf(edit);
    Q_EMIT uploaded();
}

} // namespace venlo
