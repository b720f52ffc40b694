#pragma once

#include "bench/relay/RelayClient.h"
#include "bench/relay/ScratchFolder.h"
#include "bench/relay/ServerProcess.h"

#include <chrono>
#include <memory>
#include <string>
#include <vector>

/** A server that relays talk packets, in a process of its own with new data. */
class RelayServer
{
public:
    /** What a server is. */
    struct Kind
    {
        enum Protocol
        {
            Desk,
            Mumble
        } protocol;
        bool tls;
        std::string program; ///< Path.
        std::string name;    ///< For people.
    };

    /** Starts one; waits until it listens. Throws std::runtime_error. */
    RelayServer(const Kind& kind, const ScratchFolder& folder);

    /** Connects a client. */
    std::unique_ptr<RelayClient> makeClient(RelayClient::Listener& listener);

    /** Returns the time that a packet takes on purpose. */
    std::chrono::milliseconds echoDelay() const;

    ServerProcess& process() { return *m_process; }

    /** Returns the path of mumble-server; empty if it is not installed. */
    static std::string findMumble();

private:
    void startDesk(const std::string& folder);
    void startMumble(const std::string& folder);

    const Kind m_kind;
    std::unique_ptr<SSL_CTX, void (*)(SSL_CTX*)> m_tls;
    std::unique_ptr<ServerProcess> m_process;
    std::uint16_t m_port = 0;
    unsigned m_clients = 0;
};
