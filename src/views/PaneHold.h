#pragma once

#include "views/PaneView.h"

#include <QPointer>

namespace venlo
{

/// Keeps chosen() back until the view is through with a click or a key: in the middle of one the
/// selection is still the old one, and whoever listens may change the model.
class PaneView::Hold
{
public:
    explicit Hold(PaneView &view) : m_view(&view) { ++view.m_holds; }
    Hold(const Hold &) = delete;
    Hold &operator=(const Hold &) = delete;
    ~Hold()
    {
        if (m_view && --m_view->m_holds == 0 && m_view->m_chosenWaits)
            m_view->announce();
    }

private:
    QPointer<PaneView> m_view;
};

} // namespace venlo
