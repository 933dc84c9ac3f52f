#pragma once

#include <chrono>
#include <functional>

#include <QObject>

class QDialog;

namespace venlo
{

/// Sees to it that a modal window never waits for nobody: closes it with a given answer after a
/// limit, and with Cancel when the system asks the program to end. Lives as long as the window.
class ModalLimit : public QObject
{
    Q_OBJECT

public:
    struct Rule {
        std::chrono::milliseconds limit{0}; ///< 0: no limit
        std::function<void()> answer;       ///< gives the answer and closes, at the limit
        std::function<bool()> mustEnd;      ///< the program is asked to end
    };
    ModalLimit(QDialog &dialog, Rule rule);

private:
    void look();

    QDialog &m_dialog;
    Rule m_rule;
};

} // namespace venlo
