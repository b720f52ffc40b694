#pragma once

#include "bench/relay/RelayClient.h"

#include <string>
#include <unordered_map>
#include <vector>

/** A client of `voicedesk serve`: each of its talks is one to the echoing camera. */
class DeskClient final : public RelayClient
{
public:
    /** Name and password of the user that all clients log in as. */
    static const std::string user;
    static const std::string password;

    /** Logs in; waits. Throws std::runtime_error. */
    DeskClient(std::uint16_t port, SSL_CTX* tls, Listener& listener);

    void openTalk(std::uint32_t talk) override;
    void sendPacket(std::uint32_t talk, std::uint32_t packet) override;

private:
    void shakeHands();
    void takeMessages() override;
    void takeMessage(std::string_view message);
    void takeReply(std::uint32_t request, std::string_view payload, std::string_view code,
                   std::string_view text);
    void takeEcho(std::string_view payload);
    void sendFrame(unsigned opcode, std::string_view payload);
    void sendCommand(std::uint32_t request, std::string_view name, std::string_view payload);

    bool m_welcome = false;
    std::string m_opened; ///< The token in the last answer to a request of a talk.
    std::unordered_map<std::string, std::uint32_t> m_talks;   ///< By token.
    std::unordered_map<std::uint32_t, std::string> m_targets; ///< "targets" of each talk.
};
