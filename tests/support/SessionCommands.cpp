// The commands of a scripted session that need no data connection (RFC 959, 2389, 3659).
#include "support/ListingText.h"
#include "support/ScriptedSession.h"

namespace venlo::test
{

QByteArray ScriptedSession::resolve(const QByteArray &argument) const
{
    return ScriptedTree::resolve(m_directory, argument);
}

QByteArray ScriptedSession::quoted(QByteArray path) const
{
    path.replace("\"", "\"\"");
    path.replace("\xFF", "\xFF\xFF");
    return '"' + path + '"';
}

void ScriptedSession::doUser(const QByteArray &argument, const Action & /*action*/)
{
    m_loggedIn = false;
    m_userGiven = argument == m_context.options.user;
    reply(331, "Password?");
}

void ScriptedSession::doPass(const QByteArray &argument, const Action & /*action*/)
{
    m_loggedIn = m_userGiven && argument == m_context.options.password;
    if (m_loggedIn)
        m_context.log.addLogin();
    m_loggedIn ? reply(230, "Welcome") : reply(530, "Login incorrect");
}

void ScriptedSession::doQuit(const QByteArray & /*argument*/, const Action & /*action*/)
{
    reply(221, "Bye");
    m_control.close();
}

void ScriptedSession::doFeat(const QByteArray & /*argument*/, const Action & /*action*/)
{
    const ServerOptions &o = m_context.options;
    QByteArray text = "Features:";
    if (o.epsv)
        text += "\n EPSV";
    if (o.mdtm)
        text += "\n MDTM";
    if (o.mfmt)
        text += "\n MFMT";
    if (o.mlsd)
        text += "\n MLST modify*;size*;type*;";
    if (o.size)
        text += "\n SIZE";
    if (o.utf8)
        text += "\n UTF8";
    reply(211, text + "\nEnd");
}

void ScriptedSession::doOpts(const QByteArray &argument, const Action & /*action*/)
{
    const bool utf8 = argument.toUpper() == "UTF8 ON" && m_context.options.utf8;
    utf8 ? reply(200, "UTF8 it is") : reply(501, "Option not understood");
}

void ScriptedSession::doFine(const QByteArray & /*argument*/, const Action & /*action*/)
{
    reply(200, "Fine");
}

void ScriptedSession::doSyst(const QByteArray & /*argument*/, const Action & /*action*/)
{
    const bool dos = m_context.options.dialect == ListDialect::Dos;
    reply(215, dos ? "Windows_NT" : "UNIX Type: L8");
}

void ScriptedSession::doPwd(const QByteArray & /*argument*/, const Action & /*action*/)
{
    reply(257, quoted(m_directory) + " is current");
}

void ScriptedSession::doCwd(const QByteArray &argument, const Action & /*action*/)
{
    const QByteArray path = resolve(argument);
    const auto node = m_context.tree.node(path);
    const bool folder = node && node->kind == ScriptedTree::Kind::Folder;
    if (!folder && !m_context.options.agreesToAll) {
        reply(550, "No such directory");
        return;
    }
    m_directory = path;
    if (m_context.options.forgetsPortAtCwd)
        m_transfer.reset();
    reply(250, "Directory changed");
}

void ScriptedSession::doCdup(const QByteArray & /*argument*/, const Action &action)
{
    doCwd("..", action);
}

void ScriptedSession::doMkd(const QByteArray &argument, const Action & /*action*/)
{
    const QByteArray path = resolve(argument);
    m_context.tree.make(path) || m_context.options.agreesToAll ? reply(257, quoted(path) + " made")
                                                               : reply(550, "Cannot make it");
}

void ScriptedSession::doRmd(const QByteArray &argument, const Action & /*action*/)
{
    const bool done = m_context.tree.removeFolder(resolve(argument));
    done || m_context.options.agreesToAll ? reply(250, "Removed") : reply(550, "Cannot remove it");
}

void ScriptedSession::doDele(const QByteArray &argument, const Action & /*action*/)
{
    const bool done = m_context.tree.removeFile(resolve(argument));
    done || m_context.options.agreesToAll ? reply(250, "Deleted") : reply(550, "No such file");
}

void ScriptedSession::doRnfr(const QByteArray &argument, const Action & /*action*/)
{
    m_renameFrom = resolve(argument);
    m_context.tree.exists(m_renameFrom) ? reply(350, "To?") : reply(550, "No such file");
}

void ScriptedSession::doRnto(const QByteArray &argument, const Action & /*action*/)
{
    if (m_renameFrom.isEmpty()) {
        reply(503, "RNFR first");
        return;
    }
    const bool done = m_context.tree.rename(m_renameFrom, resolve(argument));
    m_renameFrom.clear();
    done ? reply(250, "Renamed") : reply(553, "Cannot rename it");
}

void ScriptedSession::doSize(const QByteArray &argument, const Action & /*action*/)
{
    const auto node = m_context.tree.node(resolve(argument));
    if (node && node->kind == ScriptedTree::Kind::File)
        reply(213, QByteArray::number(node->bytes.size()));
    else
        reply(550, "No such file");
}

void ScriptedSession::doMdtm(const QByteArray &argument, const Action & /*action*/)
{
    const QByteArray time = argument.left(argument.indexOf(' '));
    if (m_context.options.mdtmSets && time.size() == 14 && fromTimeVal(time).isValid()) {
        setModified(time, argument.mid(15), "MDTM");
        return;
    }
    const auto node = m_context.tree.node(resolve(argument));
    if (node && node->kind == ScriptedTree::Kind::File)
        reply(213, timeVal(node->modified));
    else
        reply(550, "No such file");
}

void ScriptedSession::doMfmt(const QByteArray &argument, const Action & /*action*/)
{
    const auto blank = argument.indexOf(' ');
    setModified(argument.left(blank), argument.mid(blank + 1), "MFMT");
}

void ScriptedSession::setModified(const QByteArray &time, const QByteArray &path,
                                  const QByteArray &verb)
{
    const bool done = m_context.tree.setModified(resolve(path), fromTimeVal(time));
    if (done)
        reply(213, verb == "MFMT" ? "Modify=" + time + "; " + path : QByteArray("Time set"));
    else
        reply(550, "Cannot set the time");
}

void ScriptedSession::doAbor(const QByteArray & /*argument*/, const Action & /*action*/)
{
    m_transfer.reset();
    reply(226, "Nothing to abort");
}

} // namespace venlo::test
