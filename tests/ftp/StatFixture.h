#pragma once

#include "ftp/CacheFixture.h"

namespace venlo::test
{

/// The same for all servers of a run.
[[nodiscard]] QDateTime daysAgo(int days);
/// Rows as listings show time: MLSD to the second, STAT to the minute.
[[nodiscard]] QStringList toTheMinute(QStringList rows);

/// A connected cache over a scripted server that knows STAT.
struct StatFixture : CacheFixture {
    explicit StatFixture(StatPath stat = StatPath::Listed) { server.options().stat = stat; }

    [[nodiscard]] QStringList refreshed()
    {
        cache.caRefresh(slash());
        return toTheMinute(cacheRows(web()));
    }
    /// As many folders with two files each, the first in "/d00".
    void putFolders(int count);
    [[nodiscard]] static QByteArray folder(int i)
    {
        return "/d" + QByteArray::number(i).rightJustified(2, '0');
    }
    /// Names, times, links and depths of many kinds.
    void putMixedTree();
};

/// What the same server shows a client that knows no STAT.
template <typename Prepare>
QStringList rowsWithoutStat(const Prepare &prepare)
{
    StatFixture f(StatPath::Unknown);
    prepare(f);
    f.server.options().stat = StatPath::Unknown;
    return f.start() ? f.refreshed() : QStringList();
}

} // namespace venlo::test
