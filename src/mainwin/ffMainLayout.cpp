#include <QAction>
#include <QApplication>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QSplitter>
#include <QVBoxLayout>

#include "ftppane/uFtp.h"
#include "localpane/uFile.h"
#include "mainwin/MainStatusBar.h"
#include "mainwin/StatusList.h"
#include "mainwin/ffMain.h"
#include "mainwin/popup/pfFtp.h"
#include "mainwin/popup/sfMsg.h"
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

QWidget *panel(const char *name, QWidget *parent)
{
    auto *widget = new QWidget(parent);
    widget->setObjectName(QLatin1String(name));
    auto *layout = new QVBoxLayout(widget);
    layout->setContentsMargins(0, 0, 0, 0);
    return widget;
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
    orderTabs();
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

} // namespace venlo
