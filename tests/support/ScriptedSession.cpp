#include "support/ScriptedSession.h"

#include <array>
#include <utility>

namespace venlo::test
{

namespace
{

constexpr qsizetype longestNoted = 4096; ///< bytes of a reply that the record keeps

bool needsNoLogin(const QByteArray &verb)
{
    return verb == "USER" || verb == "PASS" || verb == "QUIT" || verb == "FEAT" || verb == "SYST" ||
           verb == "OPTS" || verb == "NOOP";
}

bool movesData(const QByteArray &verb)
{
    return verb == "LIST" || verb == "MLSD" || verb == "NLST" || verb == "RETR" || verb == "STOR";
}

} // namespace

ScriptedSession::ScriptedSession(ServerContext &context, Socket socket)
    : m_context(context),
      m_control(std::move(socket), *context.bell, context.options.firstLineOnly),
      m_transfer(context.options, *context.bell), m_number(context.log.addConnection()),
      m_directory(context.options.home)
{
}

ScriptedSession::Handler ScriptedSession::handlerOf(const QByteArray &verb)
{
    static const std::array<std::pair<const char *, Handler>, 38> handlers{{
        {"USER", &ScriptedSession::doUser}, {"PASS", &ScriptedSession::doPass},
        {"QUIT", &ScriptedSession::doQuit}, {"FEAT", &ScriptedSession::doFeat},
        {"OPTS", &ScriptedSession::doOpts}, {"TYPE", &ScriptedSession::doFine},
        {"MODE", &ScriptedSession::doFine}, {"STRU", &ScriptedSession::doFine},
        {"NOOP", &ScriptedSession::doFine}, {"ALLO", &ScriptedSession::doFine},
        {"SYST", &ScriptedSession::doSyst}, {"PWD", &ScriptedSession::doPwd},
        {"XPWD", &ScriptedSession::doPwd},  {"CWD", &ScriptedSession::doCwd},
        {"XCWD", &ScriptedSession::doCwd},  {"CDUP", &ScriptedSession::doCdup},
        {"XCUP", &ScriptedSession::doCdup}, {"MKD", &ScriptedSession::doMkd},
        {"XMKD", &ScriptedSession::doMkd},  {"RMD", &ScriptedSession::doRmd},
        {"XRMD", &ScriptedSession::doRmd},  {"DELE", &ScriptedSession::doDele},
        {"RNFR", &ScriptedSession::doRnfr}, {"RNTO", &ScriptedSession::doRnto},
        {"SIZE", &ScriptedSession::doSize}, {"MDTM", &ScriptedSession::doMdtm},
        {"MFMT", &ScriptedSession::doMfmt}, {"ABOR", &ScriptedSession::doAbor},
        {"EPSV", &ScriptedSession::doEpsv}, {"PASV", &ScriptedSession::doPasv},
        {"EPRT", &ScriptedSession::doEprt}, {"PORT", &ScriptedSession::doPort},
        {"LIST", &ScriptedSession::doList}, {"MLSD", &ScriptedSession::doMlsd},
        {"RETR", &ScriptedSession::doRetr}, {"STOR", &ScriptedSession::doStor},
        {"STAT", &ScriptedSession::doStat}, {"MLST", &ScriptedSession::doMlst},
    }};
    if (verb == "NLST")
        return &ScriptedSession::doNlst;
    for (const auto &[name, handler] : handlers) {
        if (verb == name)
            return handler;
    }
    return nullptr;
}

void ScriptedSession::run()
{
    perform("CONNECT", {}, m_context.script.actionFor("CONNECT", {}));
    while (m_control.isOpen()) {
        const auto line = m_control.readLine();
        if (!line)
            break;
        handle(*line);
    }
    m_control.close();
}

void ScriptedSession::handle(const ControlLine::Line &came)
{
    const QByteArray &line = came.text;
    m_context.log.addCommand(m_number, line, came.batch);
    const auto blank = line.indexOf(' ');
    const QByteArray verb = (blank < 0 ? line : line.left(blank)).toUpper();
    const QByteArray argument = blank < 0 ? QByteArray("") : line.mid(blank + 1);
    const bool owed = std::exchange(m_owesCompletion, false);
    perform(verb, argument, m_context.script.actionFor(verb, argument));
    if (owed)
        reply(226, "Done");
    if (m_context.options.closesAfterEachCommand && m_loggedIn)
        m_control.close();
}

void ScriptedSession::perform(const QByteArray &verb, const QByteArray &argument,
                              const Action &action)
{
    if (action.call)
        action.call();
    if (action.delayMs > 0 && m_context.bell->waitFor(action.delayMs))
        return;
    if (action.hang)
        m_control.waitForClose();
    if (action.dropBefore || action.hang) {
        m_control.close();
        return;
    }
    if (!action.flood.isEmpty() && (!sendFlood(action) || !action.reply)) {
        m_control.close();
        return;
    }
    if (!action.reply || action.carryOut) {
        m_muted = action.reply.has_value();
        carryOut(verb, argument, action);
        m_muted = false;
    }
    if (action.reply) {
        if (movesData(verb))
            m_transfer.reset();
        send(*action.reply);
    }
    for (int i = 0; i < action.afterwardsTimes && m_control.isOpen(); ++i)
        send(action.afterwards);
    if (action.dropAfter)
        m_control.close();
}

void ScriptedSession::carryOut(const QByteArray &verb, const QByteArray &argument,
                               const Action &action)
{
    const Handler handler = handlerOf(verb);
    if (verb == "CONNECT")
        reply(220, m_context.options.greeting);
    else if (handler == nullptr || !isSupported(verb))
        reply(500, "Unknown command");
    else if (!m_loggedIn && !needsNoLogin(verb))
        reply(530, "Please log in");
    else
        (this->*handler)(argument, action);
}

bool ScriptedSession::isSupported(const QByteArray &verb) const
{
    const ServerOptions &o = m_context.options;
    const std::array<std::pair<const char *, bool>, 12> optional{{
        {"FEAT", o.feat},
        {"EPSV", o.epsv},
        {"PASV", o.pasv},
        {"PORT", o.active},
        {"EPRT", o.active},
        {"MLSD", o.mlsd},
        {"MLST", o.mlsd},
        {"MFMT", o.mfmt},
        {"MDTM", o.mdtm},
        {"SIZE", o.size},
        {"ABOR", o.abor},
        {"OPTS", o.feat},
    }};
    for (const auto &[name, supported] : optional) {
        if (verb == name)
            return supported;
    }
    return true;
}

bool ScriptedSession::sendFlood(const Action &action)
{
    m_context.log.addReply(m_number, action.flood.left(80) + "... (endless)");
    for (qint64 sent = 0; sent < action.floodBytes; sent += action.flood.size()) {
        if (!m_control.send(action.flood))
            return false;
    }
    return true;
}

void ScriptedSession::send(const QByteArray &bytes)
{
    if (m_muted || bytes.isEmpty())
        return;
    m_context.log.addReply(m_number, bytes.left(longestNoted));
    if (!m_control.send(bytes))
        m_control.close();
}

void ScriptedSession::say(const QByteArray &bytes)
{
    m_context.log.addReply(m_number, bytes);
    static_cast<void>(m_control.send(bytes));
}

} // namespace venlo::test
