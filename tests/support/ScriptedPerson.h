#pragma once

#include "shared/WindowDesk.h"

#include <QStringList>

#include <deque>
#include <functional>
#include <optional>
#include <utility>
#include <vector>

namespace venlo::test
{

/// The person of a test: answers the engine from a list that the test wrote beforehand and keeps
/// everything the engine said, in order. A message or question that nobody announced, one that
/// comes in the wrong order, and an announced one that never came make verify() fail; a question
/// nobody announced is answered with the careful answer (Cancel, do not overwrite).
/// The test owns it. It never shows anything and never waits.
class ScriptedPerson final : public WindowDesk
{
public:
    enum class What {
        Message,
        Question,
        RetryOrCancel,
        Overwrite,
        PickFolder,
        AskText,
        Offer,
        ShowWait,
        CloseWait,
        MessageLine,
        Status,
        Progress,
        Outcome,
        Result,
        Warning
    };
    struct Event {
        What what = What::Message;
        QString text;
    };

    // What the test announces. Texts are compared as a whole.
    void expectMessage(const QString &text);
    void expectQuestion(const QString &text, bool ok);
    void expectRetryOrCancel(const QString &text, bool retry);
    void expectOverwrite(const QString &fileName, OverwriteAnswer answer);
    /// title is compared; the folder that is picked, empty for Cancel.
    void expectPickFolder(const QString &title, const QString &folder);
    /// prompt is compared; nothing for Cancel.
    void expectAskText(const QString &prompt, const std::optional<QString> &answer);
    void expectOffer(const QString &text, bool taken);
    /// Messages are recorded, but need not be announced (tests that look at something else).
    void allowMessages();
    /// Every question that is not announced is answered with OK and is no failure.
    void allowQuestions();

    /// cancelled() turns true within the n-th yield from now (1 is the next one).
    void cancelAfter(int yields);
    /// The same when a status line, outcome or progress of that text comes.
    void cancelAt(What what, const QString &text);
    void cancelNow() { m_cancelled = true; }
    /// Runs inside every yield, for tests that act while an operation runs.
    void onYield(std::function<void()> action) { m_onYield = std::move(action); }
    void resetCancel();

    /// True when everything came as announced; otherwise prints what did not.
    [[nodiscard]] bool verify() const;
    /// What went wrong so far, one line each, and what was announced and has not come.
    [[nodiscard]] QStringList failures() const;

    [[nodiscard]] const std::vector<Event> &events() const { return m_events; }
    /// The texts of one kind, in order.
    [[nodiscard]] QStringList texts(What what) const;
    [[nodiscard]] QStringList messages() const { return texts(What::Message); }
    [[nodiscard]] QStringList statusLines() const { return texts(What::Status); }
    [[nodiscard]] QStringList results() const { return texts(What::Result); }
    [[nodiscard]] QStringList warnings() const { return texts(What::Warning); }
    [[nodiscard]] QStringList messageLines() const { return texts(What::MessageLine); }
    [[nodiscard]] const std::vector<Outcome> &outcomes() const { return m_outcomes; }
    [[nodiscard]] std::vector<Outcome> outcomes(Outcome::Kind kind) const;
    [[nodiscard]] const std::vector<TransferProgress> &progresses() const { return m_progresses; }
    [[nodiscard]] const std::vector<OverwriteQuestion> &overwriteQuestions() const
    {
        return m_overwriteQuestions;
    }
    [[nodiscard]] int yields() const { return m_yields; }
    /// Wait windows that are open now: 0 after any operation.
    [[nodiscard]] int openWaits() const { return m_openWaits; }
    /// Forgets what was recorded; announcements stay.
    void clear();

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
    [[nodiscard]] bool cancelled() const override { return m_cancelled; }
    [[nodiscard]] bool stopWanted() const override { return m_cancelled; }
    void beginOperation() override {} // the test decides when a Cancel is over: resetCancel()
    void requestCancel() override { m_cancelled = true; }
    void requestStop() override { m_cancelled = true; }
    [[nodiscard]] bool mustEnd() const override { return false; }
    [[nodiscard]] QStringList takeWarnings() override { return {}; }
    void addStatusTarget(StatusTarget &target, StatusRank rank) override;
    void removeStatusTarget(StatusTarget &target) override;
    void addOperationView(OperationView &view) override;
    void removeOperationView(OperationView &view) override;
    void setMessageLineSink(MessageLineSink *sink) override { m_messageLine = sink; }
    void yield() override;
    /// What the last pickFolder started at, the last askText proposed.
    [[nodiscard]] const QString &proposal() const { return m_proposal; }

private:
    struct Expected {
        What what = What::Message;
        QString text;
        bool yes = false;
        OverwriteAnswer overwrite;
        std::optional<QString> answer;
    };
    void record(What what, const QString &text);
    /// The announcement that this event meets; nothing, and a failure unless allowed, when none
    /// does.
    [[nodiscard]] std::optional<Expected> take(What what, const QString &text, bool allowed);

    std::deque<Expected> m_expected;
    std::vector<Event> m_events;
    std::vector<Outcome> m_outcomes;
    std::vector<TransferProgress> m_progresses;
    std::vector<OverwriteQuestion> m_overwriteQuestions;
    QStringList m_failures;
    Event m_cancelAt;
    QString m_proposal;
    std::vector<std::pair<StatusRank, StatusTarget *>> m_statusTargets;
    std::vector<OperationView *> m_views;
    MessageLineSink *m_messageLine = nullptr;
    std::function<void()> m_onYield;
    int m_cancelAfter = 0;
    int m_yields = 0;
    int m_openWaits = 0;
    bool m_cancelAtSet = false;
    bool m_cancelled = false;
    bool m_allowMessages = false;
    bool m_allowQuestions = false;
};

} // namespace venlo::test
