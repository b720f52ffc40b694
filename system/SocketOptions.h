#pragma once

#include <QString>

/** Options of sockets that Qt does not reach. */
namespace SocketOptions {

/**
 * Sets options of all TCP connections that this process has with a peer; for libraries that keep their
 * sockets to themselves. Looks the name up, and so may block. Does nothing on Windows.
 *
 * @param host          name or address of the peer
 * @param port          of the peer
 * @param noDelay       TCP_NODELAY
 * @param trafficClass  of IP packets, the differentiated services field (RFC 2474), 0 to 255
 * @return the number of connections that were found
 */
int adjustConnections(const QString& host, int port, bool noDelay, int trafficClass);

} // namespace SocketOptions
