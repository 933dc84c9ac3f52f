#include "mainwin/ffMain.h"

#include <chrono>
#include <map>
#include <utility>

#include <QApplication>
#include <QCloseEvent>
#include <QKeyEvent>

#include "db/Database.h"
#include "ftp/FetchFolder.h"
#include "ftp/Session.h"
#include "ftppane/uFtp.h"
#include "localpane/uFile.h"
#include "mainwin/MainStatusBar.h"
#include "mainwin/MainTransfers.h"
#include "mainwin/PatternDesk.h"
#include "mainwin/RemoteEdits.h"
#include "mainwin/StatusList.h"
#include "mainwin/popup/pfFtp.h"
#include "mainwin/popup/sfMsg.h"
#include "platform/ShellOpen.h"
#include "shared/Flags.h"
#include "shared/OperationGate.h"
#include "startup/settings/ShellHelpers.h"

namespace venlo
{

namespace
{
constexpr auto watchInterval = std::chrono::milliseconds(200);
constexpr int namesShown = 5;
} // namespace

ffMain::ffMain(MainRooms rooms, const LaunchLayout &launch)
    : m_rooms(std::move(rooms)), m_launch(launch),
      m_transfers(std::make_unique<MainTransfers>(m_rooms, m_panes)),
      m_patterns(std::make_unique<PatternDesk>(m_rooms, m_panes, *this)),
      m_edits(new RemoteEdits(m_rooms, m_opener, this))
{
    build();
    loadSettings();
    m_loading = false;
    m_rooms.desk.addOperationView(*this);
    m_rooms.desk.addStatusTarget(*m_status, StatusRank::MainWindow);
    connect(&m_rooms.gate, &OperationGate::busyChanged, this, [this](bool busy) {
        if (!busy)
            operationEnded();
    });
    connect(m_edits, &RemoteEdits::uploaded, this, [this] { m_panes.ftp->ReFresh(); });
    connect(&m_watch, &QTimer::timeout, this, [this] {
        if (m_rooms.desk.mustEnd())
            close();
    });
    m_watch.start(watchInterval);
    qApp->installEventFilter(this);
    m_rooms.desk.yield();
}

ffMain::~ffMain()
{
    m_rooms.desk.removeStatusTarget(*m_status);
    m_rooms.desk.removeOperationView(*this);
}

ShownPattern ffMain::SyncPtn(const QString &sSync)
{
    return m_patterns->SyncPtn(sSync);
}

void ffMain::showMainWindow(const QString &connectedSite)
{
    m_wasShown = true;
    show();
    raise();
    if (auto *tree = m_panes.file->findChild<QWidget *>(QStringLiteral("TrView")))
        tree->setFocus();
    activateWindow();
    // Behind the window: the server may take its time over the folders.
    if (!connectedSite.isEmpty())
        m_panes.ftp->showConnected(connectedSite);
}

void ffMain::SetMsg(const QString &text)
{
    m_rooms.desk.setMessageLine(text);
}

void ffMain::mnFtp(int index)
{
    if (index == 3) {
        quit();
        return;
    }
    // Disconnecting empties the site's cache, with which another process may be working.
    const auto turn = m_rooms.gate.begin();
    if (!turn)
        return;
    m_panes.ftp->disconnectSite();
    if (index == 1)
        m_rooms.database.CompactDb();
}

/// Neither what runs here nor another process is waited for.
void ffMain::quit()
{
    if (!m_rooms.gate.busy()) {
        QObject asking;
        connect(&m_rooms.gate, &OperationGate::busyChanged, &asking, [this](bool busy) {
            if (busy)
                m_rooms.desk.requestCancel();
        });
        const auto turn = m_rooms.gate.begin();
        if (turn)
            m_panes.ftp->disconnectSite();
    }
    close();
}

void ffMain::ftpAct(const QString &word)
{
    if (word == QStringLiteral("同期"))
        m_transfers->synchronise(true);
    else if (word == QStringLiteral("登録"))
        m_patterns->registerShown();
    else if (word == QStringLiteral("編集"))
        m_patterns->edit(QString());
    else if (word == QStringLiteral("切断"))
        mnFtp(0);
}

void ffMain::openLocal(const QString &selection, int mode)
{
    for (const QString &path : m_opener.open(selection, mode))
        m_rooms.desk.message(path + QStringLiteral(" を開けませんでした"));
}

void ffMain::showOutcome(const Outcome &outcome)
{
    m_transfers->noteOutcome(outcome);
    // What was refused while a name was edited has been said there.
    if (outcome.kind != Outcome::Kind::GivenUp || m_transfers->synchronising() ||
        m_panes.ftp->tellsRefusals())
        return;
    ++m_givenUpCount;
    if (m_givenUp.size() < namesShown)
        m_givenUp += outcome.from;
}

void ffMain::showWarning(const QString &line)
{
    (void)line;
    m_warned = true;
}

void ffMain::operationEnded()
{
    if (!std::exchange(m_warned, false))
        SetMsg(QString());
    m_panes.ftp->lookAtSession();
    // Behind whatever the operation's own handler still has to show.
    QMetaObject::invokeMethod(
        this,
        [this] {
            tellGivenUp();
            if (m_closeWanted)
                close();
        },
        Qt::QueuedConnection);
}

void ffMain::tellGivenUp()
{
    if (m_givenUpCount == 0 || m_rooms.gate.busy() || m_closed)
        return;
    QString text = QStringLiteral("%1 件を処理できませんでした\n\n").arg(m_givenUpCount) +
                   m_givenUp.join(QLatin1Char('\n'));
    if (m_givenUpCount > m_givenUp.size())
        text += QStringLiteral("\n････");
    m_givenUpCount = 0;
    m_givenUp.clear();
    if (m_rooms.desk.offer(text, QStringLiteral("ﾛｸﾞを開く")))
        openLocal(m_rooms.errorLogPath, static_cast<int>(OpenMode::Editor));
}

/// False while an operation runs: it is cancelled, unwinds, and the window closes behind it.
bool ffMain::readyToClose()
{
    if (!m_rooms.gate.busy())
        return true;
    m_closeWanted = true;
    m_rooms.desk.requestCancel();
    SetMsg(QStringLiteral("実行中の処理を中止して終了します････"));
    return false;
}

QStringList ffMain::unsentWork() const
{
    QStringList files = m_edits->changedCopies();
    for (const auto &folder : m_handedOut)
        files += folder->work();
    return files;
}

void ffMain::closeEvent(QCloseEvent *event)
{
    if (m_closed)
        return;
    if (!readyToClose()) {
        event->ignore();
        return;
    }
    const QStringList changed = unsentWork();
    if (!changed.isEmpty() && !m_rooms.desk.mustEnd())
        m_rooms.desk.message(
            QStringLiteral("ｱｯﾌﾟﾛｰﾄﾞされていない変更は次のﾌｧｲﾙに残っています\n\n") +
            changed.join(QLatin1Char('\n')));
    if (m_closed) // while that was read
        return;
    m_closed = true;
    m_watch.stop();
    m_panes.window->cOff();
    m_rooms.session.CloseInternet();
    saveSettings();
    event->accept();
    Q_EMIT closed();
}

void ffMain::help()
{
    static const std::map<QString, QString> pages{
        {QStringLiteral("ffMain"), QStringLiteral("main")},
        {QStringLiteral("sfSite"), QStringLiteral("site")},
        {QStringLiteral("sfSPtn"), QStringLiteral("pattern")},
        {QStringLiteral("sfSync"), QStringLiteral("sync")},
        {QStringLiteral("sfFlst"), QStringLiteral("filelist")},
        {QStringLiteral("sfOwt"), QStringLiteral("overwrite")},
        {QStringLiteral("sfMsg"), QStringLiteral("message")}};
    const QWidget *front = QApplication::activeWindow();
    const auto page = pages.find(front != nullptr ? front->objectName() : QString());
    m_rooms.shell.W_Help(page != pages.end() ? page->second : QStringLiteral("index"));
}

/// F1 in every window of the program.
bool ffMain::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() != QEvent::KeyPress || !object->isWidgetType() ||
        static_cast<QKeyEvent *>(event)->key() != Qt::Key_F1)
        return QMainWindow::eventFilter(object, event);
    help();
    return true;
}

} // namespace venlo
