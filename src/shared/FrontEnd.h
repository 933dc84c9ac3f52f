#pragma once

#include <QString>

namespace venlo
{

/// Standing answer of the overwrite confirmation; the numbers are the ones the transfers test.
enum class OverwriteMode {
    Ask = 0,          ///< ask for every file
    OverwriteAll = 1, ///< overwrite from now on
    KeepNewer = 2,    ///< from now on skip where the existing file is newer
    CancelAll = 3     ///< leave the whole transfer
};

/// What the overwrite confirmation shows. Dates and sizes are display texts.
struct OverwriteQuestion {
    QString fileName;
    QString existingSize;
    QString existingDate;
    QString newSize;
    QString newDate;
};

/// The answer: the mode stands for the rest of the transfer, the flag is for this file.
struct OverwriteAnswer {
    OverwriteMode mode = OverwriteMode::Ask;
    bool overwrite = false;
};

/// How far the file in hand has come. Sizes in bytes; total is -1 when unknown.
struct TransferProgress {
    QString name;
    qint64 done = 0;
    qint64 total = -1;
};

/// What became of one file or folder; printed by unattended runs, counted by the review.
struct Outcome {
    enum class Kind {
        Uploaded,
        Downloaded,
        DeletedRemote,
        DeletedLocal,
        FolderMade,
        FolderRemovedRemote,
        FolderRemovedLocal,
        Skipped, ///< left alone on purpose: not newer, or the person said no
        GivenUp  ///< not carried out after all attempts; logged
    };
    Kind kind = Kind::Skipped;
    QString from; ///< full path of the source, or of the item that was deleted or made
    QString to;   ///< full path of the target; empty for deletions
    QString why;  ///< the server's or the system's words for GivenUp, may be empty
};

/// How the engine talks to a person. The main window, the console and the tests implement it;
/// the engine never shows anything by itself. No member blocks for longer than its answer takes,
/// and an unattended implementation never waits at all.
class FrontEnd
{
public:
    virtual ~FrontEnd();

    /// A message box with OK.
    virtual void message(const QString &text) = 0;
    /// A question with OK and Cancel; true is OK.
    [[nodiscard]] virtual bool question(const QString &text) = 0;
    /// A failure with Retry and Cancel; true is Retry.
    [[nodiscard]] virtual bool retryOrCancel(const QString &text) = 0;
    /// Lets the person pick a folder, starting at an existing one; empty after Cancel.
    [[nodiscard]] virtual QString pickFolder(const QString &start, const QString &title) = 0;
    /// The overwrite confirmation.
    [[nodiscard]] virtual OverwriteAnswer askOverwrite(const OverwriteQuestion &question) = 0;

    virtual void showWait(const QString &text) = 0;
    virtual void closeWait() = 0;

    /// The main window's message line; an empty text clears it.
    virtual void setMessageLine(const QString &text) = 0;
    /// One line for the status list of the window in front; nothing where no window is.
    virtual void addStatus(const QString &text) = 0;
    virtual void progress(const TransferProgress &progress) = 0;
    /// What became of one file; never goes through the status list.
    virtual void outcome(const Outcome &outcome) = 0;
    /// One line of an unattended run's result, for stdout.
    virtual void printResult(const QString &line) = 0;
    /// One line a person must be able to read later whatever shows now (stderr without a window).
    virtual void warn(const QString &line) = 0;

    /// True once the person asked the running operation to stop.
    [[nodiscard]] virtual bool cancelled() const = 0;
    /// True once the operation is to end after the file in hand; whatever is cancelled is.
    [[nodiscard]] virtual bool stopWanted() const { return cancelled(); }
    /// A new operation starts: a Cancel that was meant for an earlier one no longer counts.
    virtual void beginOperation() {}
    /// Lets pending window events run; the only way for the engine to do so.
    virtual void yield() = 0;
};

} // namespace venlo
