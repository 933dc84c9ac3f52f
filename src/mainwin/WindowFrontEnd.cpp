#include "mainwin/WindowFrontEnd.h"

#include <utility>

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QInputDialog>
#include <QMainWindow>
#include <QPushButton>

#include "localpane/sfOwt.h"
#include "mainwin/ModalLimit.h"
#include "mainwin/popup/sfWait.h"
#include "platform/SpecialFolders.h"
#include "shared/ConsolePrinter.h"
#include "shared/Flags.h"

namespace venlo
{

namespace
{
constexpr qsizetype mostWarnings = 1000;
constexpr int longestYield = 50; // ms

/// The ordinary pointer while a window waits for an answer, whatever else is being waited for.
class PlainCursor
{
public:
    PlainCursor() : m_overridden(QApplication::overrideCursor() != nullptr)
    {
        if (m_overridden)
            QApplication::setOverrideCursor(Qt::ArrowCursor);
    }
    ~PlainCursor()
    {
        if (m_overridden)
            QApplication::restoreOverrideCursor();
    }
    PlainCursor(const PlainCursor &) = delete;
    PlainCursor &operator=(const PlainCursor &) = delete;

private:
    bool m_overridden;
};

/// The window the person is at, other than besides; null while that is another program's.
QWidget *activeWindow(const QWidget *besides)
{
    if (QWidget *modal = QApplication::activeModalWidget())
        return modal;
    QWidget *active = QApplication::activeWindow();
    return active != besides ? active : nullptr;
}

QWidget *shownMainWindow()
{
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && qobject_cast<QMainWindow *>(window) != nullptr)
            return window;
    }
    return nullptr;
}
} // namespace

WindowFrontEnd::WindowFrontEnd(ConsolePrinter &printer, const Flags &flags)
    : WindowFrontEnd(printer, flags, Options())
{
}

WindowFrontEnd::WindowFrontEnd(ConsolePrinter &printer, const Flags &flags, Options options)
    : m_printer(printer), m_flags(flags), m_options(std::move(options))
{
}

WindowFrontEnd::~WindowFrontEnd() = default;

QWidget *WindowFrontEnd::windowInFront() const
{
    if (QWidget *active = activeWindow(nullptr))
        return active;
    return m_wait && m_wait->isVisible() ? m_wait.get() : shownMainWindow();
}

std::chrono::milliseconds WindowFrontEnd::boxLimit() const
{
    return m_flags.unattendedRun ? m_options.boxLimit : std::chrono::milliseconds(0);
}

QMessageBox::StandardButton WindowFrontEnd::ask(const QString &text, QMessageBox::Icon icon,
                                                QMessageBox::StandardButtons buttons,
                                                Button byItself)
{
    if (m_flags.batch)
        m_printer.printError(text);
    const PlainCursor cursor;
    QMessageBox box(icon, QStringLiteral("Venlo FTP"), text, buttons, windowInFront());
    box.setObjectName(QStringLiteral("messageBox"));
    box.setTextFormat(Qt::PlainText);
    for (const auto &[button, caption] : {std::pair(QMessageBox::Ok, QStringLiteral("OK")),
                                          std::pair(QMessageBox::Cancel, QStringLiteral("ｷｬﾝｾﾙ")),
                                          std::pair(QMessageBox::Retry, QStringLiteral("再試行"))})
        if (QAbstractButton *widget = box.button(button))
            widget->setText(caption);
    const ModalLimit limit(box, {boxLimit(), [&box, byItself] { box.button(byItself)->click(); },
                                 m_options.interrupted});
    return static_cast<Button>(box.exec());
}

void WindowFrontEnd::message(const QString &text)
{
    (void)ask(text, QMessageBox::Information, QMessageBox::Ok, QMessageBox::Ok);
}

bool WindowFrontEnd::question(const QString &text)
{
    return ask(text, QMessageBox::Question, QMessageBox::Ok | QMessageBox::Cancel,
               QMessageBox::Ok) == QMessageBox::Ok;
}

bool WindowFrontEnd::retryOrCancel(const QString &text)
{
    return ask(text, QMessageBox::Warning, QMessageBox::Retry | QMessageBox::Cancel,
               QMessageBox::Cancel) == QMessageBox::Retry;
}

OverwriteAnswer WindowFrontEnd::askOverwrite(const OverwriteQuestion &question)
{
    const PlainCursor cursor;
    sfOwt window(windowInFront());
    if (m_flags.batch)
        m_printer.printError(question.fileName + QStringLiteral(": ") + window.windowTitle());
    const ModalLimit limit(window,
                           {boxLimit(), [&window] { window.reject(); }, m_options.interrupted});
    return window.cMsg(question);
}

QString WindowFrontEnd::pickFolder(const QString &start, const QString &title)
{
    const PlainCursor cursor;
    const QUrl from = start.isEmpty() ? computerFolder() : QUrl::fromLocalFile(start);
    return QDir::toNativeSeparators(
        QFileDialog::getExistingDirectoryUrl(windowInFront(), title, from,
                                             QFileDialog::ShowDirsOnly, {QStringLiteral("file")})
            .toLocalFile());
}

std::optional<QString> WindowFrontEnd::askText(const QString &prompt, const QString &title,
                                               const QString &proposed)
{
    const PlainCursor cursor;
    QInputDialog dialog(windowInFront());
    dialog.setObjectName(QStringLiteral("textBox"));
    dialog.setWindowTitle(title);
    dialog.setLabelText(prompt);
    dialog.setTextValue(proposed);
    dialog.setOkButtonText(QStringLiteral("OK"));
    dialog.setCancelButtonText(QStringLiteral("ｷｬﾝｾﾙ"));
    const ModalLimit limit(dialog,
                           {boxLimit(), [&dialog] { dialog.reject(); }, m_options.interrupted});
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    return dialog.textValue();
}

bool WindowFrontEnd::offer(const QString &text, const QString &caption)
{
    if (m_flags.batch)
        m_printer.printError(text);
    const PlainCursor cursor;
    QMessageBox box(QMessageBox::Information, QStringLiteral("Venlo FTP"), text, QMessageBox::Ok,
                    windowInFront());
    box.setObjectName(QStringLiteral("messageBox"));
    box.setTextFormat(Qt::PlainText);
    box.button(QMessageBox::Ok)->setText(QStringLiteral("OK"));
    const QAbstractButton *more = box.addButton(caption, QMessageBox::ActionRole);
    box.setDefaultButton(QMessageBox::Ok);
    box.setEscapeButton(QMessageBox::Ok);
    const ModalLimit limit(
        box, {boxLimit(), [&box] { box.button(QMessageBox::Ok)->click(); }, m_options.interrupted});
    box.exec();
    return box.clickedButton() == more;
}

void WindowFrontEnd::showWait(const QString &text)
{
    if (!m_wait) {
        m_wait = std::make_unique<sfWait>();
        QObject::connect(m_wait.get(), &sfWait::cancelWanted, m_wait.get(),
                         [this] { requestCancel(); });
    }
    const QWidget *active = activeWindow(m_wait.get());
    m_wait->standBefore(active != nullptr ? active : shownMainWindow());
    m_wait->cMsg(text);
    yield();
}

void WindowFrontEnd::closeWait()
{
    if (m_wait)
        m_wait->cEnd();
}

void WindowFrontEnd::setMessageLine(const QString &text)
{
    m_messageText = text;
    if (m_messageLine != nullptr)
        m_messageLine->showMessageLine(text);
}

void WindowFrontEnd::setMessageLineSink(MessageLineSink *sink)
{
    m_messageLine = sink;
    if (sink != nullptr)
        sink->showMessageLine(m_messageText);
}

void WindowFrontEnd::addStatus(const QString &text)
{
    if (m_status.add(text))
        yield();
}

void WindowFrontEnd::addOperationView(OperationView &view)
{
    m_views.push_back(&view);
}

void WindowFrontEnd::removeOperationView(OperationView &view)
{
    std::erase(m_views, &view);
}

void WindowFrontEnd::progress(const TransferProgress &progress)
{
    for (OperationView *view : m_views)
        view->showProgress(progress);
}

void WindowFrontEnd::outcome(const Outcome &outcome)
{
    m_printer.printOutcome(outcome);
    m_cancelled = m_cancelled || m_stopWanted;
    for (OperationView *view : m_views)
        view->showOutcome(outcome);
}

void WindowFrontEnd::printResult(const QString &line)
{
    m_printer.printResult(line);
}

void WindowFrontEnd::warn(const QString &line)
{
    m_printer.printError(line);
    setMessageLine(line);
    m_status.flush();
    for (OperationView *view : m_views)
        view->showWarning(line);
    if (m_views.empty() && m_warnings.size() < mostWarnings)
        m_warnings += line;
}

QStringList WindowFrontEnd::takeWarnings()
{
    return std::exchange(m_warnings, {});
}

bool WindowFrontEnd::cancelled() const
{
    return m_cancelled || m_options.interrupted();
}

/// Handlers that run inside may say something themselves, which must not run events once more.
void WindowFrontEnd::yield()
{
    if (m_yielding)
        return;
    m_yielding = true;
    QCoreApplication::processEvents(QEventLoop::AllEvents, longestYield);
    m_yielding = false;
}

} // namespace venlo
