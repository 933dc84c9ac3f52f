#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include <QMessageBox>

#include "mainwin/StatusFlow.h"
#include "platform/Interrupt.h"
#include "shared/WindowDesk.h"

namespace venlo
{

class ConsolePrinter;
class sfWait;
struct Flags;

/// The front end of a run with a display: message boxes, the overwrite confirmation, the wait
/// window, and what the registered windows show. Under the batch flag every box is written to
/// stderr too. In an unattended run it answers itself after a while, for nobody may be there: with
/// OK, but it neither retries nor overwrites by itself. Owned by main; owns only the wait window.
class WindowFrontEnd : public WindowDesk
{
public:
    struct Options {
        std::chrono::milliseconds boxLimit{60'000}; ///< how long a box stays in an unattended run
        std::function<bool()> interrupted = venlo::interrupted;
    };
    WindowFrontEnd(ConsolePrinter &printer, const Flags &flags);
    WindowFrontEnd(ConsolePrinter &printer, const Flags &flags, Options options);
    ~WindowFrontEnd() override;

    void message(const QString &text) override;
    [[nodiscard]] bool question(const QString &text) override;
    [[nodiscard]] bool retryOrCancel(const QString &text) override;
    [[nodiscard]] QString pickFolder(const QString &start, const QString &title) override;
    [[nodiscard]] std::optional<QString> askText(const QString &prompt, const QString &title,
                                                 const QString &proposed) override;
    [[nodiscard]] bool offer(const QString &text, const QString &caption) override;
    [[nodiscard]] OverwriteAnswer askOverwrite(const OverwriteQuestion &question) override;
    void showWait(const QString &text) override;
    void closeWait() override;
    void setMessageLine(const QString &text) override;
    void addStatus(const QString &text) override;
    void progress(const TransferProgress &progress) override;
    void outcome(const Outcome &outcome) override;
    void printResult(const QString &line) override;
    void warn(const QString &line) override;
    [[nodiscard]] bool cancelled() const override;
    void yield() override;

    void addStatusTarget(StatusTarget &target, StatusRank rank) override
    {
        m_status.addTarget(target, rank);
    }
    void removeStatusTarget(StatusTarget &target) override { m_status.removeTarget(target); }
    void addOperationView(OperationView &view) override;
    void removeOperationView(OperationView &view) override;
    void setMessageLineSink(MessageLineSink *sink) override;
    [[nodiscard]] bool stopWanted() const override { return m_stopWanted || cancelled(); }
    void beginOperation() override { m_cancelled = m_stopWanted = false; }
    void requestCancel() override { m_cancelled = true; }
    void requestStop() override { m_stopWanted = true; }
    [[nodiscard]] bool mustEnd() const override { return m_options.interrupted(); }
    [[nodiscard]] QStringList takeWarnings() override;

    /// The window that a box or a dialog belongs to; the main window while the person works in
    /// another program. Null where none shows.
    [[nodiscard]] QWidget *windowInFront() const;

private:
    using Button = QMessageBox::StandardButton;
    [[nodiscard]] Button ask(const QString &text, QMessageBox::Icon icon,
                             QMessageBox::StandardButtons buttons, Button byItself);
    [[nodiscard]] std::chrono::milliseconds boxLimit() const;

    ConsolePrinter &m_printer;
    const Flags &m_flags;
    Options m_options;
    std::unique_ptr<sfWait> m_wait;
    StatusFlow m_status;
    std::vector<OperationView *> m_views;
    MessageLineSink *m_messageLine = nullptr;
    QString m_messageText;
    QStringList m_warnings;
    bool m_cancelled = false;
    bool m_stopWanted = false;
    bool m_yielding = false;
};

} // namespace venlo
