#include "ftp/OperationContext.h"

#include "db/DbError.h"
#include "ftp/ErrorLog.h"
#include "ftp/Session.h"
#include "shared/Flags.h"

namespace venlo
{

namespace
{
constexpr int maxAttempts = 5;
}

OperationContext::OperationContext(Session &sharedSession, DirectoryCache &sharedCache,
                                   FrontEnd &person, const Flags &programFlags,
                                   OperationCounts &sharedCounts, OverwriteMode &answer)
    : session(sharedSession), cache(sharedCache), frontEnd(person), counts(sharedCounts),
      standingAnswer(answer), m_flags(programFlags)
{
}

bool OperationContext::unattended() const
{
    return m_flags.unattendedTransfer;
}

bool OperationContext::mayGoOn() const
{
    return session.connected() && !frontEnd.cancelled();
}

OverwriteAnswer OperationContext::askOverwrite(const OverwriteQuestion &question)
{
    session.catchUp();
    return frontEnd.askOverwrite(question);
}

void OperationContext::status(const QString &text)
{
    if (unattended())
        return;
    frontEnd.setMessageLine(text);
    frontEnd.addStatus(text);
}

void OperationContext::note(const QString &text)
{
    session.eventLog().note(text);
}

void OperationContext::done(Outcome::Kind kind, const QString &from, const QString &to)
{
    session.catchUp();
    ++counts.done;
    frontEnd.outcome({kind, from, to, {}});
}

void OperationContext::skipped(const QString &from, const QString &to, const QString &why)
{
    session.catchUp();
    ++counts.skipped;
    frontEnd.outcome({Outcome::Kind::Skipped, from, to, why});
}

void OperationContext::giveUp(const QString &logLine, const QString &from, const QString &to,
                              const Error &error)
{
    session.catchUp();
    ++counts.givenUp;
    session.errorLog().LogError(logLine);
    note(QStringLiteral("given up: %1: %2").arg(logLine, error.words));
    frontEnd.outcome({Outcome::Kind::GivenUp, from, to, error.words});
}

bool OperationContext::enter(const QString &dir, bool create)
{
    bool ok = create;
    cache.currentDirectory().sjCrntDir(dir, ok);
    return ok;
}

Result<void> OperationContext::stepInto(const QString &dir)
{
    return session.client().changeDirectory(cache.rawPath(dir));
}

bool OperationContext::reconnect()
{
    bool ok = false;
    session.ftReConect(ok);
    return ok;
}

bool OperationContext::loadIfAbsent(const QString &dir)
{
    QString names;
    bool ok = false;
    try {
        cache.caLoadDir(dir, DirectoryCache::IfAbsent, names, ok);
    } catch (const DbError &error) {
        note(QStringLiteral("not wholly cached: %1: %2").arg(dir, error.words()));
    }
    return ok;
}

void OperationContext::keepCache(const QString &what, const std::function<void()> &upkeep)
{
    try {
        upkeep();
    } catch (const DbError &error) {
        note(QStringLiteral("cache not in step: %1: %2").arg(what, error.words()));
    }
}

void OperationContext::keepRows(const QString &what, const std::function<void()> &upkeep)
{
    keepCache(what, [&] { cache.grouped(upkeep); });
}

bool OperationContext::isCancelled(const Error &error) const
{
    return error.kind == ErrorClass::Cancelled || frontEnd.cancelled();
}

OperationContext::Attempted OperationContext::fiveAttempts(const QString &what, const Step &step,
                                                           const AskAgain &askAgain)
{
    Error error;
    for (int attempt = 1; attempt <= maxAttempts;) {
        if (frontEnd.cancelled())
            return {End::Stop, {ErrorClass::Cancelled, {}, 0}};
        const auto result = step();
        if (result)
            return {End::Done, {}};
        error = result.error();
        note(what + QStringLiteral(", attempt %1: ").arg(attempt) + error.words);
        // What is lost to commands sent ahead has not been tried: it goes on without them.
        const bool ridden = error.kind == ErrorClass::Lost && session.client().lostToRiders();
        attempt += ridden ? 0 : 1;
        if (isCancelled(error) || (!ridden && askAgain && !askAgain()))
            return {End::Stop, error};
        if (error.kind == ErrorClass::Local) {
            if (!askAgain)
                return {End::GivenUp, error};
            continue; // the server had no part in it
        }
        if (!reconnect())
            return {End::Stop, error};
    }
    return {End::GivenUp, error};
}

OperationContext::Attempted OperationContext::attemptOnce(const QString &what, const Step &step)
{
    auto result = step();
    for (bool again = true;
         again && !result && result.error().kind == ErrorClass::Lost && !frontEnd.cancelled();) {
        again = session.client().lostToRiders();
        note(QStringLiteral("%1: %2").arg(what, result.error().words));
        if (!reconnect())
            return {End::Stop, result.error()};
        result = step();
    }
    if (result)
        return {End::Done, {}};
    note(QStringLiteral("%1: %2").arg(what, result.error().words));
    return {isCancelled(result.error()) ? End::Stop : End::GivenUp, result.error()};
}

} // namespace venlo
