#pragma once

#include <functional>
#include <memory>
#include <vector>

#include <QStringList>
#include <QTemporaryDir>

#include "db/Database.h"
#include "support/ScriptedPerson.h"
#include "sync/RowWorker.h"
#include "sync/SyncReview.h"

namespace venlo::test
{

/// Work tables filled by hand in a database of their own, and reviews of them.
class ReviewTables
{
public:
    ReviewTables();
    /// Times are "yy/MM/dd hh:mm", empty for a side that has no such item.
    void folder(const QString &sPh, const QString &local, const QString &remote,
                const QString &mark);
    struct Side {
        QString time;
        qint64 size = 0;
    };
    void file(const QString &sPh, const QString &name, const Side &local, const Side &remote,
              const QString &mark);
    /// Many added files below the root, in folders of a thousand.
    void manyFiles(int count);

    [[nodiscard]] std::unique_ptr<SyncReview> review(bool down = false, SyncBlocks blocks = {},
                                                     ReviewOptions options = {});

private:
    QTemporaryDir m_folder;
    ScriptedPerson m_person;
    std::unique_ptr<Database> m_database;
};

/// A small pair that holds one row of every kind; up.
///   /both (files: newer, same), /new (file, /new/sub with a file), /old (file), root files
void fillEveryKind(ReviewTables &tables);

/// Row of the review that print() shows under this path ("/a/" for folders); -1 when none.
[[nodiscard]] int rowOf(const SyncReview &review, const QString &path);

/// Works on rows without a server: notes each and ends as the test says.
class ScriptedWorker : public RowWorker
{
public:
    [[nodiscard]] bool connected() override { return true; }
    [[nodiscard]] bool reconnect() override { return reconnects; }
    [[nodiscard]] RowEnd work(const SyncReview &review, int row) override;
    void log(const QString &) override {}

    bool reconnects = true;
    /// Called within every row, after it was noted.
    std::function<void(const QString &path)> onRow;
    /// How a row ends; well where there is none.
    std::function<RowEnd(const QString &path)> end;
    QStringList worked;
};

} // namespace venlo::test
