#pragma once

#include <QElapsedTimer>

#include "localpane/FileOperationWindow.h"
#include "platform/ShellFileOperation.h"

namespace venlo
{

class WindowDesk;

/// The person at a file operation: asks the shell's questions, shows how far it has come and hears
/// Cancel, in its own window and anywhere else.
class FileOperationWatcher final : public ShellFileWatcher
{
public:
    FileOperationWatcher(WindowDesk &desk, QWidget &pane);

    [[nodiscard]] bool confirmDelete(const QStringList &paths, bool forGood) override;
    [[nodiscard]] ShellAnswer clash(const ShellClash &clash) override;
    [[nodiscard]] bool failed(const QString &path, const QString &why, bool more) override;
    [[nodiscard]] bool goOn(const ShellFileProgress &progress) override;

private:
    WindowDesk &m_desk;
    QWidget &m_pane;
    FileOperationWindow m_window;
    QElapsedTimer m_sinceYield;
};

} // namespace venlo
