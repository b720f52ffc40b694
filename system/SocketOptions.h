#pragma once

#include <QtGlobal>

/** Options of sockets that Qt does not reach. */
namespace SocketOptions {

/**
 * Sends what is written at once (TCP_NODELAY), not only when the peer has acknowledged what was sent before.
 * Sockets that a listening one accepts have it from there. @return false when the system refuses
 */
bool setNoDelay(qintptr socket);

} // namespace SocketOptions
