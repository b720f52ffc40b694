#pragma once

#include "bench/relay/PeerSocket.h"

#include <cstddef>
#include <cstdint>
#include <utility>

/**
 * A client of a server that relays talk packets: each packet that it sends comes back to it. Talks have
 * numbers, over all clients; the packets of a talk are counted from 0.
 */
class RelayClient
{
public:
    /** What comes back. */
    class Listener
    {
    public:
        virtual ~Listener() = default;
        /** The server has answered a packet. */
        virtual void answered(std::uint32_t talk, std::uint32_t packet) = 0;
        /** A packet has come back. */
        virtual void echoed(std::uint32_t talk, std::uint32_t packet) = 0;
    };

    /** Bytes of a packet: 640 samples at 8000 Hz as G.711, and 32 bytes of header. */
    static constexpr std::size_t packetBytes = 672;
    static constexpr std::uint32_t packetSamples = 640; ///< Of a packet.

    virtual ~RelayClient() = default;

    /** Opens a talk; waits. Throws std::runtime_error. */
    virtual void openTalk(std::uint32_t talk) = 0;

    /** Sends a packet of an open talk. */
    virtual void sendPacket(std::uint32_t talk, std::uint32_t packet) = 0;

    /** Takes what has come. Throws std::runtime_error when the connection has ended. */
    void receive()
    {
        m_socket.receive();
        takeMessages();
    }

    PeerSocket& socket() { return m_socket; }

protected:
    RelayClient(std::uint16_t port, SSL_CTX* tls, Listener& listener)
        : m_socket(port, tls), m_listener(listener)
    {
    }

    /** Takes whole messages from the socket. */
    virtual void takeMessages() = 0;

    /** Takes messages until something is true. */
    template<class Condition>
    void waitFor(Condition condition)
    {
        while (!condition()) {
            m_socket.waitAndReceive();
            takeMessages();
        }
    }

    Listener& listener() { return m_listener; }

private:
    PeerSocket m_socket;
    Listener& m_listener;
};
