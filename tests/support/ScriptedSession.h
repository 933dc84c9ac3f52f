#pragma once

#include "support/ControlLine.h"
#include "support/ScriptedTransfer.h"
#include "support/ServerContext.h"

namespace venlo::test
{

/// One control connection of a scripted server, run by a thread of its own. It carries commands out
/// on the tree, unless the script says otherwise.
class ScriptedSession
{
public:
    ScriptedSession(ServerContext &context, Socket socket);

    /// Greeting to end; ends soon after the bell rings.
    void run();

    // For the test's thread, while run() runs.
    /// Sends bytes that nobody asked for.
    void say(const QByteArray &bytes);
    /// Ends the connection from outside.
    void shutDown() const { m_control.socket().shutDown(); }

private:
    using Handler = void (ScriptedSession::*)(const QByteArray &argument, const Action &action);
    [[nodiscard]] static Handler handlerOf(const QByteArray &verb);

    void handle(const ControlLine::Line &came);
    void perform(const QByteArray &verb, const QByteArray &argument, const Action &action);
    void carryOut(const QByteArray &verb, const QByteArray &argument, const Action &action);
    [[nodiscard]] bool isSupported(const QByteArray &verb) const;
    /// False when the client left meanwhile.
    [[nodiscard]] bool sendFlood(const Action &action);
    void reply(int code, const QByteArray &text) { send(Script::replyText(code, text)); }
    void send(const QByteArray &bytes);
    [[nodiscard]] QByteArray resolve(const QByteArray &argument) const;
    [[nodiscard]] QByteArray quoted(QByteArray path) const;

    void doUser(const QByteArray &argument, const Action &action);
    void doPass(const QByteArray &argument, const Action &action);
    void doQuit(const QByteArray &argument, const Action &action);
    void doFeat(const QByteArray &argument, const Action &action);
    void doOpts(const QByteArray &argument, const Action &action);
    void doFine(const QByteArray &argument, const Action &action);
    void doSyst(const QByteArray &argument, const Action &action);
    void doPwd(const QByteArray &argument, const Action &action);
    void doCwd(const QByteArray &argument, const Action &action);
    void doCdup(const QByteArray &argument, const Action &action);
    void doMkd(const QByteArray &argument, const Action &action);
    void doRmd(const QByteArray &argument, const Action &action);
    void doDele(const QByteArray &argument, const Action &action);
    void doRnfr(const QByteArray &argument, const Action &action);
    void doRnto(const QByteArray &argument, const Action &action);
    void doSize(const QByteArray &argument, const Action &action);
    void doMdtm(const QByteArray &argument, const Action &action);
    void doMfmt(const QByteArray &argument, const Action &action);
    void doAbor(const QByteArray &argument, const Action &action);
    void doStat(const QByteArray &argument, const Action &action);
    void doMlst(const QByteArray &argument, const Action &action);

    void doEpsv(const QByteArray &argument, const Action &action);
    void doPasv(const QByteArray &argument, const Action &action);
    void doEprt(const QByteArray &argument, const Action &action);
    void doPort(const QByteArray &argument, const Action &action);
    void doList(const QByteArray &argument, const Action &action);
    void doMlsd(const QByteArray &argument, const Action &action);
    void doNlst(const QByteArray &argument, const Action &action);
    void doRetr(const QByteArray &argument, const Action &action);
    void doStor(const QByteArray &argument, const Action &action);
    [[nodiscard]] quint16 passivePort(const Action &action);
    void setModified(const QByteArray &time, const QByteArray &path, const QByteArray &verb);
    void sendListing(const QByteArray &folder, const QByteArray &text, const Action &action);
    void sendData(const QByteArray &bytes, const Action &action);
    /// The opening reply and the connection; false when there is none.
    [[nodiscard]] bool openData(const Action &action);
    /// The reply that the end of a transfer earns.
    void closeData(ScriptedTransfer::End end, const Action &action);

    ServerContext &m_context;
    ControlLine m_control;
    ScriptedTransfer m_transfer;
    int m_number = 0;
    bool m_userGiven = false;
    bool m_loggedIn = false;
    bool m_owesCompletion = false; ///< see EarlyLines::AnswerFirst
    bool m_muted = false;          ///< a command is carried out whose replies are scripted
    QByteArray m_directory;
    QByteArray m_renameFrom;
};

} // namespace venlo::test
