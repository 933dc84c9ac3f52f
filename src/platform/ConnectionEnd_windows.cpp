#include "platform/ConnectionEnd.h"

#include <winsock2.h>

namespace venlo
{

namespace
{
/// The same connection once more: it outlives the socket that it was made from.
SOCKET secondHandle(SOCKET first)
{
    WSAPROTOCOL_INFOW info = {};
    if (WSADuplicateSocketW(first, GetCurrentProcessId(), &info) != 0)
        return INVALID_SOCKET;
    const SOCKET second = WSASocketW(FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO, FROM_PROTOCOL_INFO,
                                     &info, 0, WSA_FLAG_OVERLAPPED);
    u_long on = 1;
    if (second != INVALID_SOCKET)
        ioctlsocket(second, FIONBIO, &on); // a look at it must never wait
    return second;
}

constexpr qintptr none = -1;
} // namespace

ConnectionEnd::ConnectionEnd(qintptr descriptor)
    : m_descriptor(descriptor < 0
                       ? none
                       : static_cast<qintptr>(secondHandle(static_cast<SOCKET>(descriptor))))
{
}

ConnectionEnd::~ConnectionEnd()
{
    if (m_descriptor != none)
        closesocket(static_cast<SOCKET>(m_descriptor));
}

bool ConnectionEnd::wasReset() const
{
    if (m_descriptor == none)
        return false;
    // A peer that closed in order leaves nothing to read; a reset is told to every reader.
    char byte = 0;
    if (recv(static_cast<SOCKET>(m_descriptor), &byte, 1, MSG_PEEK) != SOCKET_ERROR)
        return false;
    const int why = WSAGetLastError();
    return why == WSAECONNRESET || why == WSAECONNABORTED || why == WSAENETRESET;
}

} // namespace venlo
