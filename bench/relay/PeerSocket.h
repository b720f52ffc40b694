#pragma once

#include <openssl/ssl.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

/** A connection to a server of this machine, with or without TLS, that never waits but where it says so. */
class PeerSocket
{
public:
    /** Connects, and agrees on TLS; waits. Throws std::runtime_error. @param tls null for none */
    PeerSocket(std::uint16_t port, SSL_CTX* tls);
    ~PeerSocket();
    PeerSocket(const PeerSocket&) = delete;
    PeerSocket& operator=(const PeerSocket&) = delete;

    /** Sends bytes; keeps what the system does not take. */
    void send(std::string_view bytes);

    /** Sends what was kept. */
    void flush();

    /** Returns the bytes that were kept. */
    std::size_t unsent() const { return m_out.size() - m_sent; }

    /** Appends all bytes that have come to received(). Throws std::runtime_error when it was closed. */
    void receive();

    /** Waits for bytes, then as receive. Throws std::runtime_error when none come within ten seconds. */
    void waitAndReceive();

    /** Returns the bytes that have come and were not taken. */
    std::string_view received() const { return {m_in.data() + m_taken, m_in.size() - m_taken}; }

    /** Removes bytes from the front of received(). */
    void take(std::size_t bytes);

    int descriptor() const { return m_socket; }

private:
    void secure(SSL_CTX* tls);
    /** @return bytes, or 0 when it would have to wait */
    std::size_t readSome(char* to, std::size_t size);
    std::size_t writeSome(std::string_view bytes);

    int m_socket = -1;
    std::unique_ptr<SSL, void (*)(SSL*)> m_tls{nullptr, SSL_free};
    std::string m_out;
    std::size_t m_sent = 0; ///< Bytes of m_out.
    std::string m_in;
    std::size_t m_taken = 0; ///< Bytes of m_in.
};
