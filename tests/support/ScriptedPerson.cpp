#include "support/ScriptedPerson.h"

#include <algorithm>

#include <QCoreApplication>

namespace venlo::test
{

namespace
{

QLatin1String nameOf(ScriptedPerson::What what)
{
    using What = ScriptedPerson::What;
    switch (what) {
    case What::Message:
        return QLatin1String("message");
    case What::Question:
        return QLatin1String("question");
    case What::RetryOrCancel:
        return QLatin1String("retry question");
    case What::Overwrite:
        return QLatin1String("overwrite question");
    case What::ShowWait:
        return QLatin1String("wait window");
    case What::CloseWait:
        return QLatin1String("end of the wait window");
    case What::PickFolder:
        return QLatin1String("folder question");
    case What::AskText:
        return QLatin1String("text question");
    case What::Offer:
        return QLatin1String("offer");
    case What::MessageLine:
        return QLatin1String("message line");
    case What::Status:
        return QLatin1String("status line");
    case What::Progress:
        return QLatin1String("progress");
    case What::Outcome:
        return QLatin1String("outcome");
    case What::Result:
        return QLatin1String("result");
    case What::Warning:
        return QLatin1String("warning");
    }
    return {};
}

QString describe(ScriptedPerson::What what, const QString &text)
{
    return nameOf(what) + QLatin1String(" \"") + text + QLatin1Char('"');
}

} // namespace

void ScriptedPerson::expectMessage(const QString &text)
{
    m_expected.push_back({What::Message, text, false, {}, {}});
}

void ScriptedPerson::expectQuestion(const QString &text, bool ok)
{
    m_expected.push_back({What::Question, text, ok, {}, {}});
}

void ScriptedPerson::expectRetryOrCancel(const QString &text, bool retry)
{
    m_expected.push_back({What::RetryOrCancel, text, retry, {}, {}});
}

void ScriptedPerson::expectOverwrite(const QString &fileName, OverwriteAnswer answer)
{
    m_expected.push_back({What::Overwrite, fileName, false, answer, {}});
}

void ScriptedPerson::expectPickFolder(const QString &title, const QString &folder)
{
    m_expected.push_back({What::PickFolder, title, false, {}, folder});
}

void ScriptedPerson::expectAskText(const QString &prompt, const std::optional<QString> &answer)
{
    m_expected.push_back({What::AskText, prompt, false, {}, answer});
}

void ScriptedPerson::expectOffer(const QString &text, bool taken)
{
    m_expected.push_back({What::Offer, text, taken, {}, {}});
}

void ScriptedPerson::allowMessages()
{
    m_allowMessages = true;
}

void ScriptedPerson::allowQuestions()
{
    m_allowQuestions = true;
}

void ScriptedPerson::cancelAfter(int yields)
{
    m_cancelAfter = yields;
}

void ScriptedPerson::cancelAt(What what, const QString &text)
{
    m_cancelAt = {what, text};
    m_cancelAtSet = true;
}

void ScriptedPerson::resetCancel()
{
    m_cancelAfter = 0;
    m_cancelAtSet = false;
    m_cancelled = false;
}

QStringList ScriptedPerson::failures() const
{
    QStringList all = m_failures;
    for (const Expected &expected : m_expected)
        all << QLatin1String("never came: ") + describe(expected.what, expected.text);
    return all;
}

bool ScriptedPerson::verify() const
{
    const QStringList all = failures();
    for (const QString &failure : all)
        qWarning("person: %s", qUtf8Printable(failure));
    return all.isEmpty();
}

QStringList ScriptedPerson::texts(What what) const
{
    QStringList found;
    for (const Event &event : m_events) {
        if (event.what == what)
            found << event.text;
    }
    return found;
}

std::vector<Outcome> ScriptedPerson::outcomes(Outcome::Kind kind) const
{
    std::vector<Outcome> found;
    std::copy_if(m_outcomes.begin(), m_outcomes.end(), std::back_inserter(found),
                 [kind](const Outcome &outcome) { return outcome.kind == kind; });
    return found;
}

void ScriptedPerson::clear()
{
    m_events.clear();
    m_outcomes.clear();
    m_progresses.clear();
    m_overwriteQuestions.clear();
    m_failures.clear();
    m_yields = 0;
}

void ScriptedPerson::record(What what, const QString &text)
{
    m_events.push_back({what, text});
    if (m_cancelAtSet && m_cancelAt.what == what && m_cancelAt.text == text)
        m_cancelled = true;
}

std::optional<ScriptedPerson::Expected> ScriptedPerson::take(What what, const QString &text,
                                                             bool allowed)
{
    record(what, text);
    if (!m_expected.empty() && m_expected.front().what == what && m_expected.front().text == text) {
        const Expected expected = m_expected.front();
        m_expected.pop_front();
        return expected;
    }
    if (!allowed) {
        QString failure = QLatin1String("unexpected ") + describe(what, text);
        if (!m_expected.empty())
            failure += QLatin1String(", announced was ") +
                       describe(m_expected.front().what, m_expected.front().text);
        m_failures << failure;
    }
    return std::nullopt;
}

void ScriptedPerson::message(const QString &text)
{
    static_cast<void>(take(What::Message, text, m_allowMessages));
}

bool ScriptedPerson::question(const QString &text)
{
    const auto expected = take(What::Question, text, m_allowQuestions);
    return expected ? expected->yes : m_allowQuestions;
}

bool ScriptedPerson::retryOrCancel(const QString &text)
{
    // Never allowed unannounced with Retry: that could go on for ever.
    const auto expected = take(What::RetryOrCancel, text, m_allowQuestions);
    return expected && expected->yes;
}

QString ScriptedPerson::pickFolder(const QString &start, const QString &title)
{
    m_proposal = start;
    const auto expected = take(What::PickFolder, title, false);
    return expected ? expected->answer.value_or(QString()) : QString();
}

std::optional<QString> ScriptedPerson::askText(const QString &prompt, const QString &,
                                               const QString &proposed)
{
    m_proposal = proposed;
    const auto expected = take(What::AskText, prompt, false);
    return expected ? expected->answer : std::nullopt;
}

bool ScriptedPerson::offer(const QString &text, const QString &)
{
    const auto expected = take(What::Offer, text, m_allowMessages);
    return expected && expected->yes;
}

OverwriteAnswer ScriptedPerson::askOverwrite(const OverwriteQuestion &question)
{
    m_overwriteQuestions.push_back(question);
    const auto expected = take(What::Overwrite, question.fileName, m_allowQuestions);
    if (expected)
        return expected->overwrite;
    return {OverwriteMode::Ask, m_allowQuestions};
}

void ScriptedPerson::showWait(const QString &text)
{
    ++m_openWaits;
    record(What::ShowWait, text);
}

void ScriptedPerson::closeWait()
{
    if (m_openWaits > 0)
        --m_openWaits;
    record(What::CloseWait, {});
}

void ScriptedPerson::setMessageLine(const QString &text)
{
    record(What::MessageLine, text);
    if (m_messageLine != nullptr)
        m_messageLine->showMessageLine(text);
}

void ScriptedPerson::addStatusTarget(StatusTarget &target, StatusRank rank)
{
    m_statusTargets.emplace_back(rank, &target);
    std::stable_sort(m_statusTargets.begin(), m_statusTargets.end(),
                     [](const auto &left, const auto &right) { return left.first < right.first; });
}

void ScriptedPerson::removeStatusTarget(StatusTarget &target)
{
    std::erase_if(m_statusTargets, [&](const auto &entry) { return entry.second == &target; });
}

void ScriptedPerson::addOperationView(OperationView &view)
{
    m_views.push_back(&view);
}

void ScriptedPerson::removeOperationView(OperationView &view)
{
    std::erase(m_views, &view);
}

void ScriptedPerson::addStatus(const QString &text)
{
    record(What::Status, text);
    for (const auto &[rank, target] : m_statusTargets) {
        if (target->isShowing()) {
            target->addLine(text);
            return;
        }
    }
}

void ScriptedPerson::progress(const TransferProgress &progress)
{
    m_progresses.push_back(progress);
    record(What::Progress, progress.name);
    for (OperationView *view : m_views)
        view->showProgress(progress);
}

void ScriptedPerson::outcome(const Outcome &outcome)
{
    m_outcomes.push_back(outcome);
    record(What::Outcome, outcome.from);
    for (OperationView *view : m_views)
        view->showOutcome(outcome);
}

void ScriptedPerson::printResult(const QString &line)
{
    record(What::Result, line);
}

void ScriptedPerson::warn(const QString &line)
{
    record(What::Warning, line);
    for (OperationView *view : m_views)
        view->showWarning(line);
}

void ScriptedPerson::yield()
{
    ++m_yields;
    if (m_cancelAfter > 0 && --m_cancelAfter == 0)
        m_cancelled = true;
    if (m_onYield)
        m_onYield();
    QCoreApplication::processEvents();
}

} // namespace venlo::test
