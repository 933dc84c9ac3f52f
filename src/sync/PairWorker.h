#pragma once

#include "sync/RowWorker.h"

#include <chrono>
#include <optional>

namespace venlo
{

class FrontEnd;
class RemoteOperations;
class Session;

/// Works on a real pair: transfers and remote deletions through RemoteOperations, local deletions
/// through the file system. Never follows a link out of the local root.
class PairWorker : public RowWorker
{
public:
    PairWorker(Session &session, RemoteOperations &operations, FrontEnd &frontEnd);

    /// How long after the comparison its picture of the server is acted on without another look:
    /// one costs a listing a folder.
    void setTrustedFor(std::chrono::milliseconds limit) { m_trustedFor = limit; }

    void begin() override;
    [[nodiscard]] bool connected() override;
    [[nodiscard]] bool reconnect() override;
    [[nodiscard]] RowEnd work(const SyncReview &review, int row) override;
    void log(const QString &line) override;

private:
    [[nodiscard]] std::optional<RowEnd> lookThere(const SyncReview &review, int row);
    [[nodiscard]] RowEnd transfer(const SyncReview &review, int row);
    [[nodiscard]] RowEnd removeRemote(const SyncReview &review, int row);
    [[nodiscard]] RowEnd removeLocal(const SyncReview &review, int row);
    [[nodiscard]] RowEnd giveUp(const QString &path, const QString &why);

    Session &m_session;
    RemoteOperations &m_operations;
    FrontEnd &m_frontEnd;
    std::chrono::milliseconds m_trustedFor = std::chrono::minutes(2);
};

} // namespace venlo
