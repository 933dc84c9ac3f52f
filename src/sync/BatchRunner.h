#pragma once

#include <QString>

namespace venlo
{

class Database;
class DirectoryCache;
class FrontEnd;
class PatternHost;
class RemoteOperations;
class Session;
class SyncRunner;
class WindowHost;
struct Flags;

/// Runs the one operation that the command line names. Every runner returns the exit status and
/// leaves ending the program to its caller.
class BatchRunner
{
public:
    enum Status {
        Ok = 0,            ///< done or nothing to do
        NotCarriedOut = 1, ///< rows left or given up, connection lost, refused, cancelled
        Unusable = 2       ///< unknown pattern or site, no window
    };
    /// What the runners work with; window is null where none can be shown.
    struct Rooms {
        FrontEnd &frontEnd;
        Flags &flags;
        Database &database;
        Session &session;
        DirectoryCache &cache;
        RemoteOperations &operations;
        SyncRunner &syncRunner;
        PatternHost &patternHost;
        WindowHost *window = nullptr;
    };
    explicit BatchRunner(Rooms rooms);

    [[nodiscard]] int RunSyncPattern(const QString &sSync, bool upwards);
    /// names: file names separated by ",".
    [[nodiscard]] int RunTransfer(const QString &localFolder, const QString &site,
                                  const QString &remoteFolder, const QString &names, bool upload);
    /// Shows the main window on a site, none where the site cannot be reached.
    [[nodiscard]] int OpenSite(const QString &site);
    /// Shows the main window, also where the pattern cannot be shown in it.
    [[nodiscard]] int OpenPattern(const QString &sSync);
    /// One of these two showed the main window, which stays until the person closes it.
    [[nodiscard]] bool opened() const { return m_opened; }

    /// Connects to a registered site; false in ok when it is not registered or cannot be reached.
    void ConnectSite(const QString &site, bool &ok);
    /// Uploads named files; one that is missing turns ok false and nothing is uploaded.
    void PutList(QString localFolder, const QString &names, const QString &remoteFolder, bool &ok);

private:
    [[nodiscard]] int synchronise(const QString &sSync, const QString &localFolder,
                                  const QString &remoteFolder, bool upwards, bool &leftOver);
    void refreshKeptCache(const QString &remoteFolder);
    void printResult(const QString &localFolder, const QString &remoteFolder, bool upwards,
                     int result);

    Rooms m_rooms;
    bool m_siteKnown = false;
    bool m_opened = false;
};

} // namespace venlo
