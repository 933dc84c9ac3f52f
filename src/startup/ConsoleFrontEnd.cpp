#include "startup/ConsoleFrontEnd.h"

#include "platform/Interrupt.h"

#include <QCoreApplication>

namespace venlo
{

ConsoleFrontEnd::ConsoleFrontEnd(ConsolePrinter &printer, const Flags &flags)
    : m_printer(printer), m_flags(flags)
{
}

bool ConsoleFrontEnd::answer(const QString &text)
{
    const bool ok = m_flags.batch;
    m_printer.printError(text + (ok ? QStringLiteral(" [OK]") : QStringLiteral(" [ｷｬﾝｾﾙ]")));
    return ok;
}

void ConsoleFrontEnd::message(const QString &text)
{
    m_printer.printError(text);
}

bool ConsoleFrontEnd::question(const QString &text)
{
    return answer(text);
}

bool ConsoleFrontEnd::retryOrCancel(const QString &text)
{
    m_printer.printError(text + QStringLiteral(" [ｷｬﾝｾﾙ]"));
    return false; // with nobody there the same thing would fail for ever
}

QString ConsoleFrontEnd::pickFolder(const QString &, const QString &title)
{
    m_printer.printError(title + QStringLiteral(" [ｷｬﾝｾﾙ]"));
    return {};
}

OverwriteAnswer ConsoleFrontEnd::askOverwrite(const OverwriteQuestion &question)
{
    const bool ok = answer(QStringLiteral("このﾌｫﾙﾀﾞには既に '") + question.fileName +
                           QStringLiteral("' ﾌｧｲﾙが存在します｡"));
    return {ok ? OverwriteMode::Ask : OverwriteMode::CancelAll, ok};
}

void ConsoleFrontEnd::showWait(const QString &) {}

void ConsoleFrontEnd::closeWait() {}

void ConsoleFrontEnd::setMessageLine(const QString &) {}

void ConsoleFrontEnd::addStatus(const QString &) {}

void ConsoleFrontEnd::progress(const TransferProgress &) {}

void ConsoleFrontEnd::outcome(const Outcome &outcome)
{
    m_printer.printOutcome(outcome);
}

void ConsoleFrontEnd::printResult(const QString &line)
{
    m_printer.printResult(line);
}

void ConsoleFrontEnd::warn(const QString &line)
{
    m_printer.printError(line);
}

bool ConsoleFrontEnd::cancelled() const
{
    return interrupted();
}

void ConsoleFrontEnd::yield()
{
    QCoreApplication::processEvents();
}

} // namespace venlo
