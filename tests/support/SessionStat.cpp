// What a scripted session shows of folders and entries on the control connection (RFC 959, 3659).
#include "support/ListingText.h"
#include "support/ScriptedSession.h"

namespace venlo::test
{

void ScriptedSession::doStat(const QByteArray &argument, const Action & /*action*/)
{
    const ServerOptions &options = m_context.options;
    if (options.stat == StatPath::Unknown) {
        reply(502, "STAT not implemented");
        return;
    }
    if (argument.isEmpty()) {
        reply(211, "All is well");
        return;
    }
    const bool all = argument.startsWith("-a ") && options.statAll != StatAll::PartOfThePath;
    if (all && options.statAll == StatAll::Refused) {
        reply(501, "No options");
        return;
    }
    const bool heeded =
        options.stat != StatPath::NotHeeded && !(all && options.statAll == StatAll::NotHeeded);
    const QByteArray path = heeded ? resolve(all ? argument.mid(3) : argument) : m_directory;
    const auto node = m_context.tree.node(path);
    QByteArray text;
    const bool silent = all && options.statAll == StatAll::Nothing;
    if (!silent && node && node->kind == ScriptedTree::Kind::Folder)
        text = statText(m_context.tree.list(path), options, all);
    send("213-Status follows:\r\n" + text + "213 End of status\r\n");
}

void ScriptedSession::doMlst(const QByteArray &argument, const Action & /*action*/)
{
    const QByteArray path = resolve(argument);
    const auto node = m_context.tree.node(path);
    if (node)
        reply(250, "Entry:\n " + mlsdLine({path, *node}) + "\nEnd");
    else
        reply(550, "No such file");
}

} // namespace venlo::test
