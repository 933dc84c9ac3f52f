// The commands of a scripted session that prepare or use a data connection (RFC 959, 2428, 3659).
#include "support/ListingText.h"
#include "support/ScriptedSession.h"

namespace venlo::test
{

namespace
{

/// LIST's argument without options such as "-a".
QByteArray withoutOptions(QByteArray argument)
{
    while (argument.startsWith('-')) {
        const auto blank = argument.indexOf(' ');
        argument = blank < 0 ? QByteArray() : argument.mid(blank + 1);
    }
    return argument;
}

} // namespace

quint16 ScriptedSession::passivePort(const Action &action)
{
    const quint16 port = m_transfer.listen();
    if (action.closedPort)
        m_transfer.reset();
    return port;
}

void ScriptedSession::doEpsv(const QByteArray &argument, const Action &action)
{
    if (argument == "ALL") {
        reply(200, "EPSV only");
        return;
    }
    const QByteArray port = QByteArray::number(passivePort(action));
    reply(229, "Entering Extended Passive Mode (|||" + port + "|)");
}

void ScriptedSession::doPasv(const QByteArray & /*argument*/, const Action &action)
{
    const quint16 port = passivePort(action);
    reply(227, "Entering Passive Mode (" + m_context.options.pasvHost + ',' +
                   QByteArray::number(port / 256) + ',' + QByteArray::number(port % 256) + ')');
}

void ScriptedSession::doEprt(const QByteArray &argument, const Action & /*action*/)
{
    const QList<QByteArray> parts = argument.split(argument.isEmpty() ? '|' : argument.at(0));
    const bool done = parts.size() == 5 && m_transfer.setTarget(parts[2], parts[3].toUShort());
    done ? reply(200, "EPRT fine") : reply(501, "EPRT not understood");
}

void ScriptedSession::doPort(const QByteArray &argument, const Action & /*action*/)
{
    const QList<QByteArray> parts = argument.split(',');
    if (parts.size() != 6) {
        reply(501, "PORT not understood");
        return;
    }
    const auto port = static_cast<quint16>(parts[4].toInt() * 256 + parts[5].toInt());
    const QByteArray address = parts.mid(0, 4).join('.');
    m_transfer.setTarget(address, port) ? reply(200, "PORT fine") : reply(501, "Not that address");
}

void ScriptedSession::doList(const QByteArray &argument, const Action &action)
{
    const QByteArray folder = resolve(withoutOptions(argument));
    sendListing(folder, listText(m_context.tree.list(folder), m_context.options), action);
}

void ScriptedSession::doMlsd(const QByteArray &argument, const Action &action)
{
    const QByteArray folder = resolve(argument);
    sendListing(folder, mlsdText(m_context.tree.list(folder), m_context.options), action);
}

void ScriptedSession::doNlst(const QByteArray &argument, const Action &action)
{
    const QByteArray folder = resolve(withoutOptions(argument));
    sendListing(folder, nlstText(m_context.tree.list(folder), m_context.options), action);
}

void ScriptedSession::sendListing(const QByteArray &folder, const QByteArray &text,
                                  const Action &action)
{
    if (!m_context.tree.exists(folder) && !m_context.options.agreesToAll) {
        m_transfer.reset();
        reply(550, "No such directory");
        return;
    }
    sendData(m_context.rawListing(folder).value_or(text), action);
}

void ScriptedSession::doRetr(const QByteArray &argument, const Action &action)
{
    const auto node = m_context.tree.node(resolve(argument));
    if (node && node->kind == ScriptedTree::Kind::File) {
        sendData(node->bytes, action);
        return;
    }
    if (m_context.options.agreesToAll) {
        sendData("evil", action);
        return;
    }
    m_transfer.reset();
    reply(550, "No such file");
}

void ScriptedSession::doStor(const QByteArray &argument, const Action &action)
{
    const QByteArray path = resolve(argument);
    const auto parent = m_context.tree.node(ScriptedTree::parentOf(path));
    const auto old = m_context.tree.node(path);
    const bool taken = old && old->kind == ScriptedTree::Kind::Folder;
    const bool possible = parent && parent->kind == ScriptedTree::Kind::Folder && !taken;
    if (!possible && !m_context.options.agreesToAll) {
        m_transfer.reset();
        reply(553, "Cannot store it there");
        return;
    }
    if (!openData(action))
        return;
    QByteArray bytes("");
    const ScriptedTransfer::End end = m_transfer.receive(bytes, action, m_control);
    // Whatever came is there, as with real servers: a broken upload leaves half a file.
    const bool stored = m_context.tree.store(path, bytes) || m_context.options.agreesToAll;
    if (!stored && end == ScriptedTransfer::End::Done)
        reply(451, "It went away meanwhile");
    else
        closeData(end, action);
}

void ScriptedSession::sendData(const QByteArray &bytes, const Action &action)
{
    if (openData(action))
        closeData(m_transfer.send(action.data.value_or(bytes), action, m_control), action);
}

bool ScriptedSession::openData(const Action &action)
{
    const QByteArray opening = action.opening.value_or("150 Here it comes");
    const QByteArray line = opening.isEmpty() ? QByteArray() : opening + "\r\n";
    if (!m_context.options.acceptsBeforeOpening)
        send(line);
    if (!m_transfer.open()) {
        reply(425, "No data connection");
        return false;
    }
    if (m_context.options.acceptsBeforeOpening)
        send(line);
    return true;
}

void ScriptedSession::closeData(ScriptedTransfer::End end, const Action &action)
{
    switch (end) {
    case ScriptedTransfer::End::Done: {
        const QByteArray completion = action.completion.value_or("226 Done");
        if (!completion.isEmpty())
            send(completion + "\r\n");
        break;
    }
    case ScriptedTransfer::End::Aborted:
        m_context.log.addCommand(m_number, "ABOR");
        reply(426, "Aborted");
        reply(226, "ABOR fine");
        break;
    case ScriptedTransfer::End::DropControl:
        m_control.close();
        break;
    case ScriptedTransfer::End::BrokenOff:
        m_owesCompletion = m_context.options.earlyLines == EarlyLines::AnswerFirst;
        break; // the line that did it is answered next
    case ScriptedTransfer::End::Gone:
        reply(426, "Broken");
        break;
    }
    m_transfer.close();
}

} // namespace venlo::test
