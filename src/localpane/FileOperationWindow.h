#pragma once

#include <QDialog>
#include <QElapsedTimer>

#include "platform/ShellFileOperation.h"

class QLabel;
class QProgressBar;

namespace venlo
{

/// Shows how far a file operation has come, once it takes longer than a moment, with a Cancel. It
/// blocks nothing; closing it cancels. It carries nothing out.
class FileOperationWindow : public QDialog
{
    Q_OBJECT

public:
    explicit FileOperationWindow(QWidget *parent);

    void showProgress(const ShellFileProgress &progress);
    [[nodiscard]] bool cancelled() const { return m_cancelled; }
    void reject() override;

private:
    QLabel *m_name;
    QProgressBar *m_bar;
    QElapsedTimer m_since;
    bool m_cancelled = false;
};

} // namespace venlo
