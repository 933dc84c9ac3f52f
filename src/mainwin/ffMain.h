#pragma once

#include <memory>
#include <vector>

#include <QMainWindow>
#include <QStringList>
#include <QTimer>

#include "mainwin/FileOpener.h"
#include "mainwin/MainPanes.h"
#include "mainwin/MainRooms.h"
#include "mainwin/MainSettings.h"
#include "shared/WindowDesk.h"
#include "sync/PatternHost.h"
#include "sync/WindowHost.h"

class QSplitter;

namespace venlo
{

class FetchFolder;
class MainStatusBar;
class MainTransfers;
class PatternDesk;
class RemoteEdits;
class StatusList;

/// The main window: hosts both panes, which never speak to each other, answers their events, and
/// keeps its layout in the settings. Closing it while an operation runs cancels that first.
class ffMain : public QMainWindow, public PatternHost, public WindowHost, public OperationView
{
    Q_OBJECT

public:
    ffMain(MainRooms rooms, const LaunchLayout &launch);
    ~ffMain() override;

    /// Shows a registered pattern in both panes; the caller has the turn.
    [[nodiscard]] ShownPattern SyncPtn(const QString &sSync) override;
    void showMainWindow(const QString &connectedSite) override;
    /// A text in the status bar; carriage returns become " ,".
    void SetMsg(const QString &text);

    void showProgress(const TransferProgress &progress) override { (void)progress; }
    void showOutcome(const Outcome &outcome) override;
    void showWarning(const QString &line) override;

Q_SIGNALS:
    /// The window was closed, its settings are saved.
    void closed();

protected:
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void build();
    void buildMenus();
    void buildFilePane();
    void buildFtpPane();
    /// A pane that was built anew comes last, wherever it stands.
    void orderTabs();
    void wireFilePane();
    void wireFtpPane();
    /// The keys of a pane ran out: it is built anew and shows what it showed.
    [[nodiscard]] bool waitsForRebuild(void (ffMain::*rebuild)());
    void rebuildFilePane();
    void rebuildFtpPane();

    void loadSettings();
    void saveSettings();
    void applyLayout(const PaneLayout &layout);
    [[nodiscard]] PaneLayout presentLayout() const;
    void placeOnAScreen(QRect wanted);

    void mnFtp(int index);
    void quit();
    void ftpAct(const QString &word);
    void openLocal(const QString &selection, int mode);
    void help();
    void operationEnded();
    void tellGivenUp();
    [[nodiscard]] bool readyToClose();
    /// Changes of remote files that lie on this computer alone.
    [[nodiscard]] QStringList unsentWork() const;

    MainRooms m_rooms;
    LaunchLayout m_launch;
    MainPanes m_panes;
    FileOpener m_opener;
    std::unique_ptr<MainTransfers> m_transfers;
    std::unique_ptr<PatternDesk> m_patterns;
    RemoteEdits *m_edits = nullptr;
    std::vector<std::unique_ptr<FetchFolder>> m_handedOut; ///< what the FTP pane gave away
    QSplitter *m_splitter = nullptr;                       ///< the panes above, pList below
    QSplitter *m_paneSplit = nullptr;                      ///< pFile and pFTP
    QWidget *m_pFile = nullptr;
    QWidget *m_pFTP = nullptr;
    StatusList *m_status = nullptr;
    MainStatusBar *m_bar = nullptr;
    QTimer m_watch; ///< looks whether the system asks the program to end
    QStringList m_givenUp;
    int m_givenUpCount = 0;
    bool m_warned = false; ///< the message line holds what is to be read after the operation
    bool m_loading = true;
    bool m_wasShown = false;
    bool m_closeWanted = false;
    bool m_closed = false;
};

} // namespace venlo
