#pragma once

#include <arpa/inet.h>
#include <linux/if_ether.h>
#include <linux/if_packet.h>
#include <net/if.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <vector>

/** Sees the IPv4 packets on the loopback interface as a receiver does; for programs that may (CAP_NET_RAW).
 */
class WireTap
{
public:
    /** The header of one packet. */
    struct Packet
    {
        int protocol;     ///< IPPROTO_TCP or IPPROTO_UDP.
        int trafficClass; ///< Differentiated services field.
        int port;         ///< Of the destination.
        int size;         ///< Bytes behind the header of TCP or UDP.
    };

    WireTap() : m_socket(socket(AF_PACKET, SOCK_DGRAM, htons(ETH_P_IP)))
    {
        sockaddr_ll address{};
        address.sll_family = AF_PACKET;
        address.sll_protocol = htons(ETH_P_IP);
        address.sll_ifindex = static_cast<int>(if_nametoindex("lo"));
        m_isOpen = m_socket >= 0 &&
                   bind(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    }
    ~WireTap()
    {
        if (m_socket >= 0) {
            ::close(m_socket);
        }
    }
    WireTap(const WireTap&) = delete;
    WireTap& operator=(const WireTap&) = delete;

    bool isOpen() const { return m_isOpen; }

    /** Returns what has come since the last call. */
    std::vector<Packet> take()
    {
        std::vector<Packet> packets;
        std::array<std::uint8_t, 128> bytes{};
        sockaddr_ll from{};
        for (;;) {
            socklen_t length = sizeof(from);
            const ssize_t size = recvfrom(m_socket, bytes.data(), bytes.size(), MSG_DONTWAIT | MSG_TRUNC,
                                          reinterpret_cast<sockaddr*>(&from), &length);
            if (size < 0) {
                return packets;
            }
            const std::size_t header = (bytes[0] & 15U) * 4U; // RFC 791
            if (from.sll_pkttype == PACKET_OUTGOING || header + 14 > bytes.size()) {
                continue; // each is seen when it is sent and when it is received
            }
            const int protocol = bytes[9];
            const int own = protocol == IPPROTO_UDP ? 8 : (bytes[header + 12] >> 4) * 4; // RFC 9293
            packets.push_back({protocol, bytes[1], bytes[header + 2] << 8 | bytes[header + 3],
                               static_cast<int>(size) - static_cast<int>(header) - own});
        }
    }

private:
    int m_socket;
    bool m_isOpen = false;
};
