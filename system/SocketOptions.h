#pragma once

#include <QtGlobal>

/** Options of sockets that Qt does not reach. */
namespace SocketOptions {

/**
 * Sends written bytes at once (TCP_NODELAY), without waiting for the acknowledgement of earlier ones. Sockets
 * that a listening socket accepts inherit the option.
 *
 * @return false when the system refuses
 */
bool setNoDelay(qintptr socket);

} // namespace SocketOptions
