#pragma once

#include <QTemporaryDir>

#include "db/Database.h"
#include "ftp/DirectoryCache.h"
#include "ftp/ErrorLog.h"
#include "ftp/RemoteOperations.h"
#include "ftp/Session.h"
#include "shared/Flags.h"
#include "support/ScriptedPerson.h"
#include "support/Trees.h"
#include "sync/BatchRunner.h"
#include "sync/Comparison.h"
#include "sync/ConsoleReviewHost.h"
#include "sync/PairWorker.h"
#include "sync/PlainPatternHost.h"
#include "sync/SyncReview.h"
#include "sync/SyncRunner.h"

namespace venlo::test
{

/// The whole engine over a throwaway user data folder and a throwaway local folder, without a
/// window, connected to whatever server a test started. Messages are recorded and need not be
/// announced. "/b" is set.
class SyncWorld
{
public:
    explicit SyncWorld(ClientLimits limits = shortWaits());
    [[nodiscard]] static ClientLimits shortWaits();

    [[nodiscard]] QString local() const { return m_local.path(); }
    [[nodiscard]] QString userData() const { return m_data.path() + QLatin1Char('/'); }

    void registerSite(const QString &server, const QString &user, const QString &password,
                      bool keepsCache = false);
    void registerPattern(const QString &sSync, const QString &sFph, bool bCfl = false,
                         bool bCfd = false);
    /// Connects to the registered site.
    [[nodiscard]] bool connectToSite();

    /// The comparison, its work tables and the review over them.
    [[nodiscard]] ComparisonResult compare(bool down, const QString &sFph);
    [[nodiscard]] QString plan(bool down, const QString &sFph);
    /// One line a row: "FD path|local|remote|mark", then "FL folder|name|local size|remote
    /// size|mark"; times are shown as "L" and "F" where there are any.
    [[nodiscard]] QString tables();
    /// Bytes of the error log behind its first line.
    [[nodiscard]] QByteArray errorLogText() const;
    [[nodiscard]] bool warned(const QString &part) const;

    /// patterns: instead of the plain pattern host.
    [[nodiscard]] BatchRunner batch(PatternHost &patterns, WindowHost *window = nullptr);
    [[nodiscard]] BatchRunner batch() { return batch(patternHost); }

private:
    QTemporaryDir m_data;
    QTemporaryDir m_local;

public:
    ScriptedPerson person;
    Flags flags;
    Database database;
    ErrorLog errorLog;
    mutable EventLog eventLog; ///< flushed by those who read its file
    Session session;
    DirectoryCache cache;
    RemoteOperations operations;
    Comparison comparison;
    PairWorker worker;
    ConsoleReviewHost reviewHost;
    PlainPatternHost patternHost;
    SyncRunner runner;
};

} // namespace venlo::test
