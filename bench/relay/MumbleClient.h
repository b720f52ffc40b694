#pragma once

#include "bench/relay/RelayClient.h"

/**
 * A client of mumble-server: packets go through the control channel to the loopback target. The server
 * neither decodes nor keeps nor answers them.
 */
class MumbleClient final : public RelayClient
{
public:
    /** Logs in; waits. Throws std::runtime_error. @param number of the client, for its name */
    MumbleClient(std::uint16_t port, SSL_CTX* tls, Listener& listener, unsigned number);

    void openTalk(std::uint32_t talk) override;
    void sendPacket(std::uint32_t talk, std::uint32_t packet) override;

private:
    void sendMessage(unsigned type, std::string_view body);
    void takeMessages() override;

    bool m_welcome = false;
    std::uint32_t m_sequence = 0;
};
