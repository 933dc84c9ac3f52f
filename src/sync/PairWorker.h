#pragma once

#include "sync/RowWorker.h"

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

    void begin() override;
    [[nodiscard]] bool connected() override;
    [[nodiscard]] bool reconnect() override;
    [[nodiscard]] RowEnd work(const SyncReview &review, int row) override;
    void log(const QString &line) override;

private:
    [[nodiscard]] RowEnd transfer(const SyncReview &review, int row);
    [[nodiscard]] RowEnd removeRemote(const SyncReview &review, int row);
    [[nodiscard]] RowEnd removeLocal(const SyncReview &review, int row);
    [[nodiscard]] RowEnd giveUp(const QString &path, const QString &why);

    Session &m_session;
    RemoteOperations &m_operations;
    FrontEnd &m_frontEnd;
};

} // namespace venlo
