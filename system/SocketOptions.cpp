#include "system/SocketOptions.h"

#ifdef _WIN32
#include <winsock2.h>
#else
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#endif

bool SocketOptions::setNoDelay(qintptr socket)
{
    const int on = 1;
#ifdef _WIN32
    return setsockopt(static_cast<SOCKET>(socket), IPPROTO_TCP, TCP_NODELAY,
                      reinterpret_cast<const char*>(&on), sizeof(on)) == 0;
#else
    return setsockopt(static_cast<int>(socket), IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on)) == 0;
#endif
}
