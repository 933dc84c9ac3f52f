#pragma once

#include <QListWidget>

#include "shared/WindowDesk.h"

namespace venlo
{

/// The main window's status list (ltMsg): lines at the end, the last one current, cleared before a
/// line when it holds more than fifty.
class StatusList : public QListWidget, public StatusTarget
{
    Q_OBJECT

public:
    explicit StatusList(QWidget *parent = nullptr);
    [[nodiscard]] bool isShowing() const override { return window()->isVisible(); }
    void addLines(const QStringList &lines) override;
};

} // namespace venlo
