#include "system/SocketOptions.h"

#ifndef _WIN32
#include <dirent.h>
#include <netdb.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#endif

#ifndef _WIN32
namespace {

/** Whether two addresses are the same, an IPv4 address in IPv6's form being itself. */
bool areEqual(const sockaddr_storage& one, const sockaddr& other)
{
    if (one.ss_family == AF_INET && other.sa_family == AF_INET) {
        const auto& first = reinterpret_cast<const sockaddr_in&>(one);
        const auto& second = reinterpret_cast<const sockaddr_in&>(other);
        return first.sin_port == second.sin_port && first.sin_addr.s_addr == second.sin_addr.s_addr;
    }
    if (one.ss_family != AF_INET6) {
        return false;
    }
    const auto& first = reinterpret_cast<const sockaddr_in6&>(one);
    if (other.sa_family == AF_INET6) {
        const auto& second = reinterpret_cast<const sockaddr_in6&>(other);
        return first.sin6_port == second.sin6_port &&
               std::memcmp(&first.sin6_addr, &second.sin6_addr, sizeof(first.sin6_addr)) == 0;
    }
    constexpr std::size_t prefix = 12;
    const auto& second = reinterpret_cast<const sockaddr_in&>(other);
    return other.sa_family == AF_INET && IN6_IS_ADDR_V4MAPPED(&first.sin6_addr) &&
           first.sin6_port == second.sin_port &&
           std::memcmp(first.sin6_addr.s6_addr + prefix, &second.sin_addr, sizeof(second.sin_addr)) == 0;
}

bool isConnectionTo(int socket, const addrinfo* peers)
{
    sockaddr_storage peer{};
    socklen_t size = sizeof(peer);
    if (getpeername(socket, reinterpret_cast<sockaddr*>(&peer), &size) != 0) {
        return false;
    }
    for (const addrinfo* each = peers; each != nullptr; each = each->ai_next) {
        if (areEqual(peer, *each->ai_addr)) {
            return true;
        }
    }
    return false;
}

} // namespace
#endif

int SocketOptions::adjustConnections(const QString& host, int port, bool noDelay, int trafficClass)
{
#ifdef _WIN32
    Q_UNUSED(host)
    Q_UNUSED(port)
    Q_UNUSED(noDelay)
    Q_UNUSED(trafficClass)
    return 0;
#else
    addrinfo hints{};
    hints.ai_socktype = SOCK_STREAM;
    addrinfo* found = nullptr;
    if (getaddrinfo(host.toUtf8().constData(), QByteArray::number(port).constData(), &hints, &found) != 0) {
        return 0;
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> peers(found, &freeaddrinfo);
    const std::unique_ptr<DIR, int (*)(DIR*)> open(opendir("/proc/self/fd"), &closedir);
    int count = 0;
    while (const dirent* entry = open ? readdir(open.get()) : nullptr) {
        const int socket = std::atoi(entry->d_name);
        if (entry->d_name[0] == '.' || !isConnectionTo(socket, peers.get())) {
            continue;
        }
        const int on = noDelay ? 1 : 0;
        ++count;
        setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
        setsockopt(socket, IPPROTO_IP, IP_TOS, &trafficClass, sizeof(trafficClass));
        setsockopt(socket, IPPROTO_IPV6, IPV6_TCLASS, &trafficClass, sizeof(trafficClass));
    }
    return count;
#endif
}
