#pragma once

#include "shared/WindowDesk.h"

namespace venlo::test
{

/// Stands for the main window's status list, which always shows.
class MainList final : public StatusTarget
{
public:
    explicit MainList(WindowDesk &desk) : m_desk(desk)
    {
        m_desk.addStatusTarget(*this, StatusRank::MainWindow);
    }
    ~MainList() override { m_desk.removeStatusTarget(*this); }
    MainList(const MainList &) = delete;
    MainList &operator=(const MainList &) = delete;

    [[nodiscard]] bool isShowing() const override { return true; }
    void addLines(const QStringList &added) override { lines += added; }

    QStringList lines;

private:
    WindowDesk &m_desk;
};

} // namespace venlo::test
