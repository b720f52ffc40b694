#include "system/SocketFlow.h"

#ifdef __linux__
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include <array>
#include <cstring>

namespace {

constexpr std::size_t receivedAt = 128; // in the answer to TCP_INFO (linux/tcp.h); newer systems answer more

} // namespace
#endif

std::optional<SocketFlow> SocketFlow::of(qintptr socket)
{
#ifdef __linux__
    std::array<char, 256> info{};
    socklen_t size = info.size();
    quint64 received = 0;
    int waiting = 0;
    if (getsockopt(static_cast<int>(socket), IPPROTO_TCP, TCP_INFO, info.data(), &size) != 0 ||
        size < receivedAt + sizeof(received) || ioctl(static_cast<int>(socket), SIOCOUTQ, &waiting) != 0) {
        return std::nullopt;
    }
    std::memcpy(&received, info.data() + receivedAt, sizeof(received));
    return SocketFlow{static_cast<qint64>(received), waiting};
#else
    Q_UNUSED(socket)
    return std::nullopt;
#endif
}
