#pragma once

// Included by the one source of each side that reaches Boost, first of all: on Windows Boost comes before
// anything that includes windows.h.
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/ip/v6_only.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/ssl/ssl_stream.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace net = boost::asio;
namespace ssl = boost::asio::ssl;
namespace beast = boost::beast;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using beast::error_code;
using net::ip::tcp;

/**
 * TCP with or without TLS behind one type, since each type of stream costs half a minute of compilation. All
 * on the thread that runs its context.
 */
class SocketStream
{
public:
    // Executors by name: with any_io_executor each operation costs more allocations and virtual calls.
    using executor_type = net::io_context::executor_type; ///< As Beast asks for it.
    /** A TCP socket. */
    using Socket = net::basic_stream_socket<tcp, executor_type>;
    using next_layer_type = Socket; ///< As Beast asks for it.

    /** @param tls null for none, else outlives the object */
    SocketStream(Socket&& socket, ssl::context* tls) : m_socket(std::move(socket))
    {
        if (tls != nullptr) {
            m_tls.emplace(m_socket, *tls);
        }
    }
    SocketStream(const SocketStream&) = delete;
    SocketStream& operator=(const SocketStream&) = delete;

    /** Returns where its handlers run. */
    executor_type get_executor() noexcept { return m_socket.get_executor(); }

    /** Returns the TCP socket. */
    Socket& next_layer() noexcept { return m_socket; }
    /** Returns the TCP socket. */
    const Socket& next_layer() const noexcept { return m_socket; }

    /** Returns OpenSSL's object; null without TLS. */
    SSL* tls() { return m_tls ? m_tls->native_handle() : nullptr; }

    /**
     * Calls a function when the last frame has gone and the peer is to end TLS and TCP, which it may not do:
     * its owner then closes the socket after a time.
     */
    void onTeardown(std::function<void()> called) { m_onTeardown = std::move(called); }

    /** Agrees on TLS, or does nothing without it. @param handler takes an error_code */
    template<class Handler>
    void async_secure(ssl::stream_base::handshake_type side, Handler&& handler)
    {
        if (m_tls) {
            m_tls->async_handshake(side, std::forward<Handler>(handler));
        } else {
            net::post(get_executor(),
                      [handler = std::forward<Handler>(handler)]() mutable { handler(error_code()); });
        }
    }

    /** Reads some bytes. */
    template<class Buffers, class Handler>
    void async_read_some(const Buffers& buffers, Handler&& handler)
    {
        if (m_tls) {
            m_tls->async_read_some(buffers, std::forward<Handler>(handler));
        } else {
            m_socket.async_read_some(buffers, std::forward<Handler>(handler));
        }
    }

    /** Writes some bytes; with TLS they have gone when their encrypted form has. */
    template<class Buffers, class Handler>
    void async_write_some(const Buffers& buffers, Handler&& handler)
    {
        if (m_tls) {
            m_tls->async_write_some(buffers, std::forward<Handler>(handler));
        } else {
            m_socket.async_write_some(buffers, std::forward<Handler>(handler));
        }
    }

    /** Ends TLS and TCP after the last frame, as Beast asks for it; the owner closes the socket. */
    template<class Handler>
    friend void async_teardown(beast::role_type role, SocketStream& stream, Handler&& handler)
    {
        if (stream.m_onTeardown) {
            stream.m_onTeardown();
        }
        if (stream.m_tls) {
            stream.m_tls->async_shutdown(
                [role, &stream, handler = std::forward<Handler>(handler)](error_code error) mutable {
                    if (error) { // as when the peer still sends
                        stream.endSending(role, std::move(handler));
                    } else {
                        handler(error);
                    }
                });
        } else {
            stream.endSending(role, std::forward<Handler>(handler));
        }
    }

private:
    using Discarded = std::array<char, 16 << 10>; ///< What is read at once, in bytes.

    /** A server ends TCP's own direction before the client does (RFC 6455, 7.1.1). */
    template<class Handler>
    void endSending(beast::role_type role, Handler&& handler)
    {
        if (role == beast::role_type::server) {
            error_code ignored;
            m_socket.shutdown(net::socket_base::shutdown_send, ignored);
        }
        discard(std::make_unique<Discarded>(), std::forward<Handler>(handler));
    }

    /**
     * Reads until the peer closes: a socket that is closed with unread bytes resets the connection, which on
     * Windows takes the close frame away from the peer. Beast's own teardown ends at the first bytes.
     */
    template<class Handler>
    void discard(std::unique_ptr<Discarded> bytes, Handler&& handler)
    {
        const net::mutable_buffer buffer = net::buffer(*bytes);
        m_socket.async_read_some(buffer,
                                 [this, bytes = std::move(bytes), handler = std::forward<Handler>(handler)](
                                     error_code error, std::size_t) mutable {
                                     if (error) {
                                         handler(error == net::error::eof ? error_code() : error);
                                     } else {
                                         discard(std::move(bytes), std::move(handler));
                                     }
                                 });
    }

    Socket m_socket;
    // Beast's, not Asio's: it joins the header and the payload of a frame in one record.
    std::optional<beast::ssl_stream<Socket&>> m_tls;
    std::function<void()> m_onTeardown;
};

/** What both sides ask of a web socket: no compression, since that is code and bombs. */
using WebSocketStream = websocket::stream<SocketStream, false>;

/** Sets what both sides ask of TLS: version 1.2 or later, and no suites in CBC mode. */
inline void restrictTls(ssl::context& tls)
{
    SSL_CTX* native = tls.native_handle();
    SSL_CTX_set_min_proto_version(native, TLS1_2_VERSION);
    SSL_CTX_set_cipher_list(native, "ECDHE+AESGCM:ECDHE+CHACHA20"); // of 1.2; 1.3 has none
    SSL_CTX_set_options(native,
                        SSL_OP_NO_RENEGOTIATION | SSL_OP_NO_COMPRESSION | SSL_OP_IGNORE_UNEXPECTED_EOF);
    SSL_CTX_set_mode(native, SSL_MODE_RELEASE_BUFFERS); // 34 KiB less for each idle connection
}

/** Sets what both sides ask of TCP. */
inline void setCommonOptions(SocketStream::Socket& socket)
{
    error_code ignored;
    socket.set_option(tcp::no_delay(true), ignored);
    // For a peer whose cable was pulled while nothing is to be sent.
    socket.set_option(net::socket_base::keep_alive(true), ignored);
    // Else Linux takes 4 MiB for a connection, and says that there is room again when a third of them has
    // gone: for a slow peer that is long after the last sign of life.
    constexpr int systemBuffer = 256 << 10; // bytes
    socket.set_option(net::socket_base::send_buffer_size(systemBuffer), ignored);
}
