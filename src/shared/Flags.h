#pragma once

namespace venlo
{

/// The program-wide flags. There is one of them, owned by the program object.
struct Flags {
    /// The command line held "/b": confirmations that test it count as answered OK.
    bool batch = false;
    /// The command line runs a synchronisation or a transfer under "/b": nobody need be there.
    bool unattendedRun = false;
    /// A synchronisation, a command-line transfer or a temporary download runs: the transfer and
    /// cache operations ask no overwrite questions and show no status messages.
    bool unattendedTransfer = false;
    /// A launch record with a usable size was read; its values replace the saved layout.
    bool launchLayout = false;
};

/// Sets a flag for a scope and restores what it was.
class FlagScope
{
public:
    explicit FlagScope(bool &flag, bool value = true) : m_flag(flag), m_before(flag)
    {
        m_flag = value;
    }
    ~FlagScope() { m_flag = m_before; }
    FlagScope(const FlagScope &) = delete;
    FlagScope &operator=(const FlagScope &) = delete;

private:
    bool &m_flag;
    bool m_before;
};

} // namespace venlo
