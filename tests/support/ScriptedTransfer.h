#pragma once

#include "support/ControlLine.h"
#include "support/Script.h"
#include "support/ServerOptions.h"

namespace venlo::test
{

/// The data connections of one scripted session: where the next one comes from, and the moving of
/// bytes with the faults of an Action.
class ScriptedTransfer
{
public:
    enum class End {
        Done,        ///< as the action wanted; the completion reply follows
        DropControl, ///< the action ends the control connection
        Aborted,     ///< ABOR came
        BrokenOff,   ///< a line came that this server takes for the end
        Gone         ///< the client or the server ended
    };

    ScriptedTransfer(const ServerOptions &options, const StopBell &bell)
        : m_options(options), m_bell(bell)
    {
    }

    /// A port for the next passive connection; 0 when none is to be had.
    [[nodiscard]] quint16 listen();
    /// The address of the next active one; false when it is not of this machine.
    [[nodiscard]] bool setTarget(const QByteArray &address, quint16 port);
    /// Opens the prepared connection; false when nobody comes.
    [[nodiscard]] bool open();
    void close();
    /// Forgets what was prepared; a client that has connected already is cut off.
    void reset();

    [[nodiscard]] End send(QByteArray bytes, const Action &action, ControlLine &control);
    /// Takes bytes until the client closes or the limit of the action.
    [[nodiscard]] End receive(QByteArray &bytes, const Action &action, ControlLine &control);

private:
    /// Looks at what came on the control connection.
    [[nodiscard]] std::optional<End> interrupted(ControlLine &control) const;
    /// The same for a line; kept are those for later.
    [[nodiscard]] std::optional<End> atLine(const ControlLine::Line &line, ControlLine &control,
                                            std::deque<ControlLine::Line> &kept) const;
    /// After the last byte, for the ends that are no plain close.
    [[nodiscard]] End finish(const Action &action, ControlLine &control);
    void pause(const Action &action) const;

    const ServerOptions &m_options;
    const StopBell &m_bell;
    Socket m_listener;
    Socket m_data;
    QByteArray m_targetAddress;
    quint16 m_targetPort = 0;
};

} // namespace venlo::test
