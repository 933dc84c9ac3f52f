#include <algorithm>
#include <chrono>

#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>

#include "ftppane/uFtp.h"
#include "localpane/uFile.h"
#include "mainwin/MainStatusBar.h"
#include "mainwin/MainTransfers.h"
#include "mainwin/PatternDesk.h"
#include "mainwin/RemoteEdits.h"
#include "mainwin/StatusList.h"
#include "mainwin/ffMain.h"
#include "mainwin/popup/pfFtp.h"
#include "mainwin/popup/sfMsg.h"
#include "platform/ShellOpen.h"
#include "shared/OperationGate.h"
#include "startup/settings/ShellHelpers.h"

namespace venlo
{

namespace
{
// The designed size, in device-independent pixels.
constexpr int designedWidth = 1100;
constexpr int designedHeight = 720;
constexpr int listHeight = 96;
constexpr double filePaneShare = 0.45;
constexpr std::chrono::milliseconds rebuildRetry(100);
constexpr int leastVisible = 48; ///< of the window that must lie on a screen to be reached

QWidget *panel(const char *name, QWidget *parent)
{
    auto *widget = new QWidget(parent);
    widget->setObjectName(QLatin1String(name));
    auto *layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    return widget;
}

/// Gives the first of two parts that size, the second what is left of the splitter's length.
void giveFirst(QSplitter &splitter, int first, int length)
{
    splitter.setSizes({first, std::max(1, length - splitter.handleWidth() - first)});
}
} // namespace

void ffMain::build()
{
    setObjectName(QStringLiteral("ffMain"));
    setWindowTitle(QStringLiteral("Venlo FTP"));
    setAccessibleName(QStringLiteral("ﾒｲﾝ画面"));
    m_splitter = new QSplitter(Qt::Vertical, this);
    m_splitter->setObjectName(QStringLiteral("Splitter"));
    m_splitter->setChildrenCollapsible(false);
    m_paneSplit = new QSplitter(Qt::Horizontal, m_splitter);
    m_paneSplit->setObjectName(QStringLiteral("PaneSplitter"));
    m_paneSplit->setChildrenCollapsible(false);
    m_pFile = panel("pFile", m_paneSplit);
    m_pFTP = panel("pFTP", m_paneSplit);
    QWidget *pList = panel("pList", m_splitter);
    QWidget *pPnl = panel("pPnl", pList);
    m_status = new StatusList(pPnl);
    pPnl->layout()->addWidget(m_status);
    pList->layout()->addWidget(pPnl);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 0);
    setCentralWidget(m_splitter);
    m_bar = new MainStatusBar(m_rooms.desk, m_rooms.gate, this);
    setStatusBar(m_bar);
    m_panes.menus = new pfFtp(m_rooms.database, this);
    m_panes.menus->hide();
    m_panes.window = new sfMsg(m_rooms.desk, this);
    buildFilePane();
    buildFtpPane();
    setTabOrder(m_panes.file, m_panes.ftp);
    setTabOrder(m_panes.ftp, m_status);
    buildMenus();
    resize(QSize(designedWidth, designedHeight)
               .boundedTo(QGuiApplication::primaryScreen()->availableSize()));
    const int fileWidth = static_cast<int>(designedWidth * filePaneShare);
    m_paneSplit->setSizes({fileWidth, designedWidth - fileWidth});
    m_splitter->setSizes({designedHeight - listHeight, listHeight});
}

void ffMain::buildMenus()
{
    QMenu *ftp = menuBar()->addMenu(QStringLiteral("&FTP"));
    ftp->setObjectName(QStringLiteral("mnFtp"));
    const auto entry = [&](QMenu *menu, const QString &caption, auto action) {
        QAction *made = menu->addAction(caption);
        connect(made, &QAction::triggered, this, action);
        return made;
    };
    QAction *disconnectEntry = entry(ftp, QStringLiteral("切断"), [this] { mnFtp(0); });
    QAction *compact = entry(ftp, QStringLiteral("ﾃﾞｰﾀｰﾍﾞｰｽの最適化"), [this] { mnFtp(1); });
    ftp->addSeparator();
    QAction *quit = entry(ftp, QStringLiteral("終了"), [this] { mnFtp(3); });
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(&m_rooms.gate, &OperationGate::busyChanged, this,
            [disconnectEntry, compact](bool busy) {
                disconnectEntry->setEnabled(!busy);
                compact->setEnabled(!busy);
            });
    QMenu *helpMenu = menuBar()->addMenu(QStringLiteral("ﾍﾙﾌﾟ(&H)"));
    helpMenu->setObjectName(QStringLiteral("mnHelp"));
    // F1 itself is caught for every window at once; here it is only shown.
    entry(helpMenu, QStringLiteral("ﾍﾙﾌﾟ\tF1"), [this] { help(); });
    entry(helpMenu, QStringLiteral("｢送る｣にｼｮｰﾄｶｯﾄを作成"), [this] { m_rooms.shell.W_SendTo(); });
}

void ffMain::buildFilePane()
{
    m_panes.file = new uFile({m_rooms.desk, m_rooms.flags, m_rooms.gate, m_rooms.session,
                              m_rooms.operations, *m_panes.menus, *m_panes.window},
                             m_pFile);
    m_panes.file->setObjectName(QStringLiteral("uFile"));
    m_pFile->layout()->addWidget(m_panes.file);
    wireFilePane();
}

void ffMain::buildFtpPane()
{
    m_panes.ftp =
        new uFtp({m_rooms.desk, m_rooms.flags, m_rooms.gate, m_rooms.database, m_rooms.session,
                  m_rooms.cache, m_rooms.operations, *m_panes.menus, *m_panes.window},
                 m_pFTP);
    m_panes.ftp->setObjectName(QStringLiteral("uFtp"));
    m_pFTP->layout()->addWidget(m_panes.ftp);
    m_panes.ftp->fillSites();
    wireFtpPane();
}

void ffMain::wireFilePane()
{
    const uFile *pane = m_panes.file;
    connect(pane, &uFile::eSlcFL, this, [this](bool doubleClick, const QString &path) {
        if (doubleClick)
            openLocal(path, static_cast<int>(OpenMode::Open));
    });
    connect(pane, &uFile::eAct, this, [this](const QString &job) {
        if (job == QStringLiteral("検索"))
            (void)searchFolder(m_panes.file->NodePath());
        else if (job == QStringLiteral("同期"))
            m_transfers->synchronise(false);
    });
    connect(pane, &uFile::eOpnFL, this,
            [this](int mode, const QString &selection) { openLocal(selection, mode); });
    connect(pane, &uFile::eBfrPut, this, [this](bool &goAhead, QString &target) {
        target = m_panes.ftp->FsFllPh();
        goAhead = m_transfers->confirmUpload(target);
    });
    connect(pane, &uFile::eEndPut, this, [this] {
        SetMsg(QString());
        m_panes.ftp->ReFresh();
    });
    connect(pane, &uFile::eMsg, this, &ffMain::SetMsg);
    connect(pane, &uFile::fetchWanted, this,
            [this](const QList<RemoteEntry> &entries, const QString &folder) {
                m_transfers->fetch(entries, folder);
            });
    connect(pane, &uFile::keysRanOut, this, &ffMain::rebuildFilePane, Qt::QueuedConnection);
}

void ffMain::wireFtpPane()
{
    const uFtp *pane = m_panes.ftp;
    connect(pane, &uFtp::eBfrGet, this, [this](QString &localFolder, bool &proceed) {
        localFolder = m_panes.file->NodePath();
        proceed = m_transfers->confirmDownload(localFolder);
    });
    connect(pane, &uFtp::eEndGet, this, [this] {
        SetMsg(QString());
        m_panes.file->ReFresh();
    });
    connect(pane, &uFtp::eAct, this, &ffMain::ftpAct);
    connect(pane, &uFtp::eOpnFL, this,
            [this](const QString &dir, const QString &name, bool editor) {
                m_edits->open(dir, name, editor);
            });
    connect(pane, &uFtp::eSync, this, [this](const QString &sSync) {
        const auto turn = m_rooms.gate.begin();
        if (turn)
            (void)SyncPtn(sSync);
    });
    connect(pane, &uFtp::eMsg, this, &ffMain::SetMsg);
    connect(pane, &uFtp::storeWanted, this, [this](const QStringList &paths, const QString &dir) {
        m_transfers->store(paths, dir);
    });
    connect(pane, &uFtp::keysRanOut, this, &ffMain::rebuildFtpPane, Qt::QueuedConnection);
}

/// A pane is not taken away under what works in it or has come up from it.
bool ffMain::waitsForRebuild(void (ffMain::*rebuild)())
{
    if (!m_rooms.gate.busy() && QApplication::activePopupWidget() == nullptr &&
        QApplication::activeModalWidget() == nullptr)
        return false;
    QTimer::singleShot(rebuildRetry, this, rebuild);
    return true;
}

void ffMain::rebuildFilePane()
{
    if (waitsForRebuild(&ffMain::rebuildFilePane))
        return;
    QString ActPh;
    QString LsCwd;
    int TrvHi = 0;
    m_panes.file->GetRr(ActPh, LsCwd, TrvHi);
    const QString root = m_panes.file->Root();
    const std::unique_ptr<uFile> earlier(m_panes.file);
    buildFilePane();
    m_panes.file->takeOver(*earlier);
    // In one go: the list of the root would take keys for nothing.
    m_panes.file->cOn(root + QLatin1Char('\r') + ActPh);
    m_panes.file->SetRr(ActPh, LsCwd, TrvHi);
}

void ffMain::rebuildFtpPane()
{
    if (waitsForRebuild(&ffMain::rebuildFtpPane))
        return;
    const QString site = m_panes.ftp->FsSvr();
    const QString path = m_panes.ftp->FsFllPh();
    const QString widths = m_panes.ftp->LsClsWd();
    const int height = m_panes.ftp->TrvHi();
    const int selected = m_panes.ftp->iCbSvr();
    const bool connected = m_panes.ftp->cOn();
    delete m_panes.ftp;
    buildFtpPane();
    m_panes.ftp->setICbSvr(selected);
    m_panes.ftp->setLsClsWd(widths);
    m_panes.ftp->setTrvHi(height);
    const auto turn = m_rooms.gate.begin();
    if (turn && connected) {
        m_panes.ftp->showConnected(site);
        m_panes.ftp->setFsFllPh(path);
    }
}

void ffMain::loadSettings()
{
    const MainSettings values = loadMainSettings(m_rooms.settings, m_rooms.flags, m_launch);
    m_panes.ftp->setICbSvr(values.CbSvr);
    if (values.window.width() >= 1 && values.window.height() >= 1)
        placeOnAScreen(values.window);
    applyLayout(values.panes);
    m_panes.file->setRootHistory(values.rootHistory);
    m_panes.file->cOn(values.Root);
    m_panes.file->SetRr(values.ActPh, values.panes.LsCwd, values.panes.TrvHi);
}

/// The splitters get their size first: parts whose sum is not their splitter's are all scaled, and
/// the layout would creep from start to start.
void ffMain::applyLayout(const PaneLayout &layout)
{
    QWidget::layout()->activate();
    if (layout.HiFL > 0)
        giveFirst(*m_splitter, layout.HiFL, m_splitter->height());
    if (layout.WdFL > 0)
        giveFirst(*m_paneSplit, layout.WdFL, m_paneSplit->width());
    if (layout.TrHiF > 0)
        m_panes.ftp->setTrvHi(layout.TrHiF);
    m_panes.ftp->setLsClsWd(layout.LsWdF);
}

/// A window whose title bar would lie on no screen is moved into the nearest one.
void ffMain::placeOnAScreen(QRect wanted)
{
    const QPoint grip(wanted.center().x(), wanted.top() + leastVisible / 2);
    const QScreen *screen = QGuiApplication::screenAt(grip);
    if (screen == nullptr)
        screen = QGuiApplication::primaryScreen();
    const QRect area = screen->availableGeometry();
    wanted.setSize(wanted.size().boundedTo(area.size()));
    if (!area.contains(grip)) {
        wanted.moveLeft(std::clamp(wanted.left(), area.left(), area.right() - wanted.width() + 1));
        wanted.moveTop(std::clamp(wanted.top(), area.top(), area.bottom() - wanted.height() + 1));
    }
    move(wanted.topLeft());
    resize(wanted.size());
}

PaneLayout ffMain::presentLayout() const
{
    PaneLayout layout;
    layout.WdFL = m_pFile->width();
    layout.HiFL = m_pFile->height();
    QString ActPh;
    m_panes.file->GetRr(ActPh, layout.LsCwd, layout.TrvHi);
    layout.TrHiF = m_panes.ftp->TrvHi();
    layout.LsWdF = m_panes.ftp->LsClsWd();
    return layout;
}

void ffMain::saveSettings()
{
    MainSettings values;
    QString LsCwd;
    int TrvHi = 0;
    m_panes.file->GetRr(values.ActPh, LsCwd, TrvHi);
    values.Root = m_panes.file->Root();
    values.rootHistory = m_panes.file->rootHistory();
    // The size without the frame, the position with it: what resize() and move() take.
    const bool normal = !isMaximized() && !isFullScreen() && !isMinimized();
    values.window =
        normal ? QRect(pos(), size()) : QRect(normalGeometry().topLeft(), normalGeometry().size());
    values.panes = presentLayout();
    values.CbSvr = m_panes.ftp->iCbSvr();
    saveMainSettings(m_rooms.settings, m_rooms.flags, values, m_wasShown);
}

} // namespace venlo
