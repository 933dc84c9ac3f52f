#pragma once

#include <optional>

#include <QString>
#include <QStringList>

#include "shared/FrontEnd.h"

namespace venlo
{

/// A window with a status list.
class StatusTarget
{
public:
    virtual ~StatusTarget() = default;
    [[nodiscard]] virtual bool isShowing() const = 0;
    /// At least one; the last becomes the current one.
    virtual void addLines(const QStringList &lines) = 0;
    void addLine(const QString &text) { addLines({text}); }
};

/// Which windows come first where several with a status list show; smaller comes first.
enum class StatusRank { MessageWindow, SyncWindow, MainWindow };

/// A window in which a person watches the running operation.
class OperationView
{
public:
    virtual ~OperationView() = default;
    virtual void showProgress(const TransferProgress &progress) = 0;
    virtual void showOutcome(const Outcome &outcome) = 0;
    virtual void showWarning(const QString &line) = 0;
};

/// A window with a message line.
class MessageLineSink
{
public:
    virtual ~MessageLineSink() = default;
    virtual void showMessageLine(const QString &text) = 0;
};

/// The front end as its own windows see it: they register here to be shown what an operation says,
/// and hand a person's Cancel to it. Windows never own it; each takes itself out before it goes.
class WindowDesk : public FrontEnd
{
public:
    /// Status lines go to the showing window of the smallest rank.
    virtual void addStatusTarget(StatusTarget &target, StatusRank rank) = 0;
    virtual void removeStatusTarget(StatusTarget &target) = 0;
    /// Every registered view is told about progress, outcomes and warnings.
    virtual void addOperationView(OperationView &view) = 0;
    virtual void removeOperationView(OperationView &view) = 0;
    /// Gets the current text at once and every change; null for none.
    virtual void setMessageLineSink(MessageLineSink *sink) = 0;

    /// A line of text from the person, proposed is in the box; nothing after Cancel.
    [[nodiscard]] virtual std::optional<QString>
    askText(const QString &prompt, const QString &title, const QString &proposed) = 0;
    /// A message with OK and a button for one thing more; true is that button.
    [[nodiscard]] virtual bool offer(const QString &text, const QString &caption) = 0;

    void beginOperation() override = 0;
    /// Cancel was pressed: cancelled() is true until the next operation begins.
    virtual void requestCancel() = 0;
    /// Cancel that lets the file in hand end: stopWanted() is true at once, cancelled() once an
    /// outcome was told.
    virtual void requestStop() = 0;
    /// The system asks the program to end (an interrupt): windows close without asking.
    [[nodiscard]] virtual bool mustEnd() const = 0;
    /// Warnings since the last call, for a window that opens after they came.
    [[nodiscard]] virtual QStringList takeWarnings() = 0;
};

} // namespace venlo
