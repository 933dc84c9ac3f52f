#pragma once

#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"
#include "shared/FrontEnd.h"

namespace venlo
{

/// The front end of a run without a display: messages go to stderr, results to stdout, questions
/// are OK under "/b" and Cancel without it. It never waits for anybody and never asks to retry. An
/// interrupt is its Cancel.
class ConsoleFrontEnd : public FrontEnd
{
public:
    ConsoleFrontEnd(ConsolePrinter &printer, const Flags &flags);

    void message(const QString &text) override;
    [[nodiscard]] bool question(const QString &text) override;
    [[nodiscard]] bool retryOrCancel(const QString &text) override;
    [[nodiscard]] QString pickFolder(const QString &start, const QString &title) override;
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

private:
    [[nodiscard]] bool answer(const QString &text);

    ConsolePrinter &m_printer;
    const Flags &m_flags;
};

} // namespace venlo
