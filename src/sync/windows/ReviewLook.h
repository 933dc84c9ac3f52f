#pragma once

#include <QColor>
#include <QIcon>
#include <QPalette>

#include "sync/SyncRow.h"

namespace venlo
{

/// Icons and colours of the review, made once for a palette. Every colour stands beside a text that
/// says the same.
class ReviewLook
{
public:
    explicit ReviewLook(const QPalette &palette);

    /// Text of a row that does something, does nothing (None), or takes no part.
    [[nodiscard]] QColor colour(Action action) const;
    [[nodiscard]] QColor pale() const { return m_pale; }

    QIcon folder;
    QIcon file;
    QIcon done;
    QIcon givenUp;
    QIcon running;
    QIcon held;

private:
    bool m_dark;
    QColor m_text;
    QColor m_pale;
};

} // namespace venlo
