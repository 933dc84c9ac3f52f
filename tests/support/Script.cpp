#include "support/Script.h"

#include <limits>
#include <utility>

#include <QList>

namespace venlo::test
{

struct Script::Rule {
    QByteArray verb;
    QByteArray argument; ///< null: any
    int from = 1;
    int until = std::numeric_limits<int>::max();
    int seen = 0;
    Action action;
};

Script::On::On(std::mutex &mutex, std::shared_ptr<Rule> rule)
    : m_mutex(mutex), m_rule(std::move(rule))
{
}

template <typename Change>
Script::On &Script::On::change(Change set)
{
    const std::scoped_lock lock(m_mutex);
    set(*m_rule);
    return *this;
}

Script::On &Script::On::nth(int occurrence)
{
    return change([=](Rule &r) { r.from = r.until = occurrence; });
}

Script::On &Script::On::first(int times)
{
    return change([=](Rule &r) { r.until = times; });
}

Script::On &Script::On::from(int occurrence)
{
    return change([=](Rule &r) { r.from = occurrence; });
}

Script::On &Script::On::reply(int code, const QByteArray &text)
{
    return rawReply(replyText(code, text));
}

Script::On &Script::On::rawReply(const QByteArray &bytes)
{
    return change([&](Rule &r) { r.action.reply = bytes; });
}

Script::On &Script::On::butDoIt()
{
    return change([](Rule &r) { r.action.carryOut = true; });
}

Script::On &Script::On::thenClose()
{
    return change([](Rule &r) { r.action.dropAfter = true; });
}

Script::On &Script::On::dropBeforeReply()
{
    return change([](Rule &r) { r.action.dropBefore = true; });
}

Script::On &Script::On::hang()
{
    return change([](Rule &r) { r.action.hang = true; });
}

Script::On &Script::On::delay(int ms)
{
    return change([=](Rule &r) { r.action.delayMs = ms; });
}

Script::On &Script::On::endlessReply(const QByteArray &block)
{
    constexpr qint64 forEver = 256LL * 1024 * 1024;
    return flood(block, forEver);
}

Script::On &Script::On::flood(const QByteArray &block, qint64 bytes)
{
    return change([&](Rule &r) {
        r.action.flood = block;
        r.action.floodBytes = bytes;
    });
}

Script::On &Script::On::closedPort()
{
    return change([](Rule &r) { r.action.closedPort = true; });
}

Script::On &Script::On::opening(const QByteArray &line)
{
    return change([&](Rule &r) { r.action.opening = line; });
}

Script::On &Script::On::completion(const QByteArray &line)
{
    return change([&](Rule &r) { r.action.completion = line; });
}

Script::On &Script::On::data(const QByteArray &bytes)
{
    return change([&](Rule &r) { r.action.data = bytes; });
}

Script::On &Script::On::discards()
{
    return change([](Rule &r) { r.action.discards = true; });
}

Script::On &Script::On::endlessData(const QByteArray &block)
{
    return change([&](Rule &r) {
        r.action.data = block;
        r.action.dataRepeats = true;
    });
}

Script::On &Script::On::limit(qint64 bytes, Action::DataEnd end)
{
    return change([=](Rule &r) {
        r.action.dataLimit = bytes;
        r.action.dataEnd = end;
    });
}

Script::On &Script::On::truncateAfter(qint64 bytes)
{
    return limit(bytes, Action::DataEnd::Whole);
}

Script::On &Script::On::dropAfterBytes(qint64 bytes)
{
    return limit(bytes, Action::DataEnd::DropControl);
}

Script::On &Script::On::resetAfterBytes(qint64 bytes)
{
    return limit(bytes, Action::DataEnd::Reset);
}

Script::On &Script::On::stallAfterBytes(qint64 bytes)
{
    return limit(bytes, Action::DataEnd::Stall);
}

Script::On &Script::On::slow(int chunk, int delayMs)
{
    return change([=](Rule &r) {
        r.action.chunk = chunk;
        r.action.chunkDelayMs = delayMs;
    });
}

Script::On &Script::On::afterwards(const QByteArray &bytes, int times)
{
    return change([&](Rule &r) {
        r.action.afterwards = bytes;
        r.action.afterwardsTimes = times;
    });
}

Script::On &Script::On::call(std::function<void()> action)
{
    return change([&](Rule &r) { r.action.call = std::move(action); });
}

Script::On Script::on(const QByteArray &verb, const QByteArray &argument)
{
    auto rule = std::make_shared<Rule>();
    rule->verb = verb;
    rule->argument = argument;
    const std::scoped_lock lock(m_mutex);
    m_rules.push_back(rule);
    return {m_mutex, std::move(rule)};
}

void Script::clear()
{
    const std::scoped_lock lock(m_mutex);
    m_rules.clear();
}

Action Script::actionFor(const QByteArray &verb, const QByteArray &argument)
{
    const std::scoped_lock lock(m_mutex);
    const Rule *chosen = nullptr;
    for (auto it = m_rules.rbegin(); it != m_rules.rend(); ++it) {
        Rule &rule = **it;
        if (rule.verb != verb || (!rule.argument.isNull() && rule.argument != argument))
            continue;
        ++rule.seen;
        if (chosen == nullptr && rule.seen >= rule.from && rule.seen <= rule.until)
            chosen = &rule;
    }
    return chosen == nullptr ? Action() : chosen->action;
}

QByteArray Script::replyText(int code, const QByteArray &text)
{
    const QByteArray number = QByteArray::number(code);
    const QList<QByteArray> lines = text.split('\n');
    QByteArray all;
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const bool last = i + 1 == lines.size();
        all += last ? number + ' ' : i == 0 ? number + '-' : QByteArray();
        all += lines.at(i) + "\r\n";
    }
    return all;
}

} // namespace venlo::test
