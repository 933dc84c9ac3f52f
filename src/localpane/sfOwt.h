#pragma once

#include <QDialog>

#include "shared/FrontEnd.h"

class QLabel;
class QVBoxLayout;

namespace venlo
{

/// The overwrite confirmation: shows the file that exists and the one that would replace it, and
/// keeps the answer for its caller. It transfers nothing. Closing it by hand is the last button.
class sfOwt : public QDialog
{
    Q_OBJECT

public:
    explicit sfOwt(QWidget *parent = nullptr);

    /// Shows the question and waits for the answer.
    [[nodiscard]] OverwriteAnswer cMsg(const OverwriteQuestion &question);
    [[nodiscard]] OverwriteAnswer answer() const { return m_answer; }

    /// As if the button of that index (0 to 4) was pressed.
    void choose(int button);
    void reject() override;

private:
    void addLabels(QVBoxLayout &layout);
    void addButtons(QVBoxLayout &layout);
    void showTexts(const OverwriteQuestion &question);
    [[nodiscard]] QLabel *lbMsg(int index) const;

    OverwriteAnswer m_answer;
};

} // namespace venlo
