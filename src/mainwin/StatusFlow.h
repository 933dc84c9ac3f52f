#pragma once

#include <map>

#include <QElapsedTimer>
#include <QStringList>
#include <QTimer>

#include "shared/WindowDesk.h"

namespace venlo
{

/// Takes status lines to the window in front: at once as long as they come slowly, otherwise
/// thirty times a second with all that came meanwhile, for a picture costs as much as hundreds of
/// lines. A line belongs to the window that was in front when it came.
class StatusFlow : public QObject
{
    Q_OBJECT

public:
    StatusFlow();

    void addTarget(StatusTarget &target, StatusRank rank);
    void removeTarget(StatusTarget &target);
    /// True when the line shows already, and it is time to let it be drawn.
    [[nodiscard]] bool add(const QString &line);
    /// Shows what waits.
    void flush();

private:
    [[nodiscard]] StatusTarget *inFront() const;

    std::multimap<StatusRank, StatusTarget *> m_targets;
    StatusTarget *m_target = nullptr; ///< of the lines that wait
    QStringList m_waiting;
    QElapsedTimer m_sinceShown;
    QTimer m_later;
};

} // namespace venlo
