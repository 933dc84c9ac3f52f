#pragma once

#include "ftp/DirectoryCache.h"

#include "shared/FrontEnd.h"
#include "shared/Result.h"

#include <QString>

#include <functional>
#include <memory>

namespace venlo
{

/// What the transfers and deletions since the last reset gave up or left alone.
struct OperationCounts {
    int done = 0;
    int givenUp = 0;
    int skipped = 0;
};

/// The operations that change or move remote files. Each tests the session first and does nothing
/// unless connected, keeps the cache in step with what the server confirmed, and turns ok false
/// only when the session is lost for good, the directory cannot be made current, or the person
/// cancelled; what the server refuses after all attempts is logged, counted and gone past.
/// Remote paths are in normal form, local paths have native separators, names are "\r"-separated.
class RemoteOperations
{
public:
    RemoteOperations(Session &session, DirectoryCache &cache, FrontEnd &frontEnd, Flags &flags);
    ~RemoteOperations();
    RemoteOperations(const RemoteOperations &) = delete;
    RemoteOperations &operator=(const RemoteOperations &) = delete;

    /// ok in: create the directory if it is missing; out: success.
    void sjCrntDir(const QString &dir, bool &ok);
    void sjMakePrDir(const QString &dir, bool &ok);
    void ftGetFile(const QString &dir, const QString &names, const QString &localFolder, bool &ok);
    void ftGetFold(const QString &localParent, const QString &name, const QString &remoteParent,
                   bool &ok);
    /// names: upload lines (with tabs) or one local path.
    void ftPutFile(const QString &dir, const QString &names, const QString &localFolder, bool &ok);
    void ftPutFold(const QString &localParent, const QString &name, const QString &remoteParent,
                   bool &ok);
    void ftRename(const QString &dir, const QString &oldName, QString newName, bool folder,
                  bool &ok);
    /// Names of dir; with the unattended-transfer flag, names is one full path and dir is unused.
    void ftDelFile(const QString &dir, const QString &names, bool &ok);
    void ftMakeDir(const QString &dir, const QString &name, bool &ok);
    /// As ftDelFile.
    void ftRemDir(const QString &dir, const QString &names, bool &ok);

    /// Whether the server shows an entry right now, see RemoteLook; an error when it does not say.
    [[nodiscard]] Result<bool> shows(const QString &dir, const QString &name);
    /// What shows() has seen up to now does not count any more.
    void lookAnew();

    [[nodiscard]] const OperationCounts &counts() const { return m_counts; }
    void resetCounts() { m_counts = {}; }

    /// The overwrite window's standing answer for the transfer in hand.
    OverwriteMode standingAnswer = OverwriteMode::Ask;

private:
    /// Runs an operation when connected. false from it turns ok false, and so does a store that
    /// cannot be read.
    void carryOut(bool &ok, const std::function<bool()> &operation);
    void rename(const QString &dir, const QString &oldName, const QString &newName, bool folder);
    /// Why a name must not be given to an entry, empty when it may.
    [[nodiscard]] QString whyNotRenamed(const QString &dir, const QString &oldName,
                                        const QString &newName);
    /// Asks the server, which stands in the directory, whether a new name is free: the listing may
    /// be old.
    [[nodiscard]] Result<void> checkFree(const QString &oldName, const QString &newName);

    struct Parts;
    OperationCounts m_counts;
    std::unique_ptr<Parts> m;
};

} // namespace venlo
