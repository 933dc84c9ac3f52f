// How the main window makes its panes, answers their signals and builds one anew.
#include <chrono>
#include <memory>

#include <QApplication>
#include <QLayout>
#include <QTimer>

#include "ftppane/uFtp.h"
#include "localpane/uFile.h"
#include "mainwin/MainTransfers.h"
#include "mainwin/RemoteEdits.h"
#include "mainwin/StatusList.h"
#include "mainwin/ffMain.h"
#include "mainwin/popup/pfFtp.h"
#include "mainwin/popup/sfMsg.h"
#include "platform/ShellOpen.h"
#include "shared/OperationGate.h"

namespace venlo
{

namespace
{
constexpr std::chrono::milliseconds rebuildRetry(100);

/// What Tab goes through inside a pane, in the pane's own order.
QList<QWidget *> tabChain(const QWidget &pane)
{
    QList<QWidget *> chain;
    for (QWidget *at = pane.nextInFocusChain(); at != &pane; at = at->nextInFocusChain()) {
        if (pane.isAncestorOf(at) && at->focusProxy() == nullptr &&
            (at->focusPolicy() & Qt::TabFocus) != 0)
            chain << at;
    }
    return chain;
}
} // namespace

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
                  m_rooms.cache, m_rooms.operations, *m_panes.menus, *m_panes.window, m_handedOut},
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

/// One by one: a pane takes no focus itself, and what takes none has no place in the order.
void ffMain::orderTabs()
{
    QList<QWidget *> chain = tabChain(*m_panes.file) + tabChain(*m_panes.ftp);
    chain << m_status;
    for (qsizetype i = 1; i < chain.size(); ++i)
        setTabOrder(chain.at(i - 1), chain.at(i));
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
    orderTabs();
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
    std::unique_ptr<uFtp> earlier(m_panes.ftp);
    buildFtpPane();
    m_panes.ftp->takeOver(*earlier);
    earlier.reset(); // it must not answer to what the new one does
    orderTabs();
    m_panes.ftp->setICbSvr(selected);
    m_panes.ftp->setLsClsWd(widths);
    m_panes.ftp->setTrvHi(height);
    const auto turn = m_rooms.gate.begin();
    if (turn && connected) {
        m_panes.ftp->showConnected(site);
        m_panes.ftp->setFsFllPh(path);
    }
}

} // namespace venlo
