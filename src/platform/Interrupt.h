#pragma once

namespace venlo
{

/// Lets a person or the system stop an unattended run in order: the first interrupt (Ctrl+C,
/// SIGTERM, SIGHUP, a closing console) is only noted, so that the transfer in hand is unwound and
/// nothing is left half done; a later one ends the process as the system would. Signals that the
/// caller had ignored (nohup, a shell's background jobs) stay ignored. Call it once.
void noteInterrupts();

/// True once an interrupt was noted.
[[nodiscard]] bool interrupted();

} // namespace venlo
