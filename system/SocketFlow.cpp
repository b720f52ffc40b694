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

// Offsets in the answer to TCP_INFO (linux/tcp.h); newer systems answer more.
constexpr std::size_t acknowledgedAt = 120;
constexpr std::size_t receivedAt = 128;
constexpr std::size_t windowAt = 228;

template<class Number>
qint64 numberAt(const std::array<char, 256>& bytes, std::size_t at)
{
    Number number = 0;
    std::memcpy(&number, bytes.data() + at, sizeof(number));
    return static_cast<qint64>(number);
}

} // namespace
#endif

std::optional<SocketFlow> SocketFlow::of(qintptr socket)
{
#ifdef __linux__
    std::array<char, 256> info{};
    socklen_t size = info.size();
    int waiting = 0; // bytes that the peer has not acknowledged
    if (getsockopt(static_cast<int>(socket), IPPROTO_TCP, TCP_INFO, info.data(), &size) != 0 ||
        size < receivedAt + sizeof(quint64) || ioctl(static_cast<int>(socket), SIOCOUTQ, &waiting) != 0) {
        return std::nullopt;
    }
    const qint64 acknowledged = numberAt<quint64>(info, acknowledgedAt);
    SocketFlow flow;
    flow.received = numberAt<quint64>(info, receivedAt);
    flow.written = acknowledged + waiting;
    if (size >= windowAt + sizeof(quint32)) {
        flow.end = acknowledged + numberAt<quint32>(info, windowAt);
    }
    return flow;
#else
    Q_UNUSED(socket)
    return std::nullopt;
#endif
}
