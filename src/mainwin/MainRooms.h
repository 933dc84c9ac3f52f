#pragma once

#include <QString>

namespace venlo
{

class Database;
class DirectoryCache;
class OperationGate;
class RemoteOperations;
class Session;
class ShellHelpers;
class SyncRunner;
class WindowDesk;
class yIni;
struct Flags;

/// What the main window works with; the program object owns it.
struct MainRooms {
    WindowDesk &desk;
    Flags &flags;
    OperationGate &gate;
    yIni &settings;
    Database &database;
    Session &session;
    DirectoryCache &cache;
    RemoteOperations &operations;
    SyncRunner &syncRunner;
    ShellHelpers &shell;
    QString errorLogPath; ///< "FtpErr.Log"
};

} // namespace venlo
