#include "sync/SyncReview.h"

#include <algorithm>

#include "sync/ReviewLoader.h"

namespace venlo
{

namespace
{
Action actionOf(Mark mark)
{
    switch (mark) {
    case Mark::Add:
        return Action::Add;
    case Mark::Remove:
        return Action::Remove;
    case Mark::Compare:
        break;
    }
    return Action::Overwrite;
}

bool mayTick(const SyncRow &row)
{
    return row.box && row.state == RowState::Pending;
}
} // namespace

SyncReview::SyncReview(ComparisonResult comparison, ReviewOptions options)
    : m_comparison(std::move(comparison)), m_chCmp{options.bCfl, options.bCfd}
{
}

void SyncReview::load(Database &database)
{
    ReviewLoader(*this).load(database);
}

void SyncReview::setChCmp(int box, bool checked)
{
    m_chCmp.at(static_cast<size_t>(box)) = checked;
    decideAll(true);
}

void SyncReview::decideAll(bool keepHandMade)
{
    for (SyncRow &row : m_rows) {
        if (row.state != RowState::Pending)
            continue;
        const Action before = row.action;
        decide(row);
        if (keepHandMade && row.byHand && row.action == before)
            continue;
        row.byHand = false;
        row.ticked = row.box && row.action != Action::None && row.hold == Hold::Free;
    }
}

void SyncReview::decide(SyncRow &row) const
{
    row.action = Action::None;
    row.outOfScope = false;
    row.box = false;
    if (row.owner >= 0)
        return;
    if (row.folder) {
        decideFolder(row);
        return;
    }
    row.box = row.hold != Hold::Blocked;
    const bool cut = row.unfinished && !pair().down;
    if (row.mark != Mark::Compare || cut || overwriteStands(row.master, row.other, m_chCmp[0]))
        row.action = actionOf(row.mark);
}

void SyncReview::decideFolder(SyncRow &row) const
{
    if (row.mark == Mark::Compare)
        return;
    row.box = row.hold != Hold::Blocked;
    const bool firstLevel = row.sPh.lastIndexOf(QLatin1Char('/')) == 0;
    row.outOfScope = firstLevel && m_chCmp[1];
    if (!row.outOfScope)
        row.action = actionOf(row.mark);
}

std::vector<int> SyncReview::visibleRows() const
{
    std::vector<int> visible;
    visible.reserve(m_rows.size());
    for (int i = 0; i < count(); ++i) {
        const SyncRow &here = row(i);
        bool shown = here.owner < 0;
        if (!shown && here.folder)
            shown = m_chDsp[0];
        else if (!shown)
            shown = m_chDsp[1] && (m_chDsp[0] || here.sPh == row(here.owner).sPh);
        if (shown)
            visible.push_back(i);
    }
    return visible;
}

void SyncReview::setTicked(int index, bool ticked)
{
    SyncRow &here = m_rows.at(static_cast<size_t>(index));
    if (!mayTick(here))
        return;
    here.ticked = ticked;
    here.byHand = true;
}

void SyncReview::tickAll(Action action, bool ticked)
{
    for (int i = 0; i < count(); ++i) {
        if (row(i).action == action && (!ticked || row(i).hold == Hold::Free))
            setTicked(i, ticked);
    }
}

bool SyncReview::included(int index) const
{
    const SyncRow &here = row(index);
    return here.owner >= 0 ? row(here.owner).ticked : here.ticked;
}

Action SyncReview::plannedAction(int index) const
{
    if (!included(index))
        return Action::None;
    const SyncRow &here = row(index);
    return actionOf(here.owner >= 0 ? row(here.owner).mark : here.mark);
}

bool SyncReview::pending(int index) const
{
    const SyncRow &here = row(index);
    return here.ticked && mayTick(here) && here.hold != Hold::Blocked;
}

int SyncReview::pendingCount() const
{
    int pendingRows = 0;
    for (int i = 0; i < count(); ++i)
        pendingRows += pending(i) ? 1 : 0;
    return pendingRows;
}

void SyncReview::markRow(int index, bool done)
{
    const RowState state = done ? RowState::Done : RowState::GivenUp;
    m_rows.at(static_cast<size_t>(index)).state = state;
    for (const int covered : m_covered.at(static_cast<size_t>(index)))
        m_rows[static_cast<size_t>(covered)].state = state;
}

SyncReview::Counts SyncReview::counts() const
{
    Counts counts;
    for (int i = 0; i < count(); ++i) {
        const SyncRow &here = row(i);
        const Action planned = plannedAction(i);
        counts.add += planned == Action::Add ? 1 : 0;
        counts.remove += planned == Action::Remove ? 1 : 0;
        counts.overwrite += planned == Action::Overwrite ? 1 : 0;
        if (!here.folder && (planned == Action::Add || planned == Action::Overwrite))
            counts.bytes += here.master.size;
        if (here.hold != Hold::Free && here.action != Action::None && planned == Action::None)
            ++counts.held;
        if (here.owner >= 0)
            continue;
        counts.done += here.state == RowState::Done ? 1 : 0;
        counts.givenUp += here.state == RowState::GivenUp ? 1 : 0;
        counts.pending += pending(i) ? 1 : 0;
    }
    return counts;
}

bool SyncReview::leftOver() const
{
    const auto left = [](const SyncRow &here) {
        const bool held =
            here.hold != Hold::Free && here.owed && !here.ticked && here.action != Action::None;
        return held || here.state == RowState::GivenUp;
    };
    return m_comparison.unreliable || pendingCount() > 0 ||
           std::any_of(m_rows.cbegin(), m_rows.cend(), left);
}

} // namespace venlo
