#pragma once

#include <QString>

#include "platform/EntryLook.h"

namespace venlo
{

class SyncReview;

/// Looks at the local side of a row once more before it is worked on: minutes may lie between what
/// a person or a rule decided on and what is there now. One an attempt; it changes nothing.
class LookAgain
{
public:
    LookAgain(const SyncReview &review, int row) : m_review(review), m_row(row) {}

    /// Why the row must be given up, in words for a person; empty when nothing has changed.
    [[nodiscard]] QString why() const;

private:
    [[nodiscard]] QString whyNotReplaced() const;
    [[nodiscard]] QString whyNotRemoved() const;
    [[nodiscard]] bool mayReplace(int index) const;
    [[nodiscard]] bool holdsOnlyRows(const QString &folder) const;
    [[nodiscard]] bool asCompared(int index, const EntryLook &now) const;

    const SyncReview &m_review;
    int m_row;
};

} // namespace venlo
