#pragma once

#include "sockets/BeastConnection.h" // first, because of windows.h

#include <boost/beast/http/empty_body.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>

#include "server/access/SocketDoor.h"

/**
 * One connection of the door; lives on the door's thread.
 *
 * A client is read only while little of it waits for the server's thread and little waits for it: one that
 * asks and does not read the answers costs no more memory than that.
 */
class DoorConnection final : public BeastConnection
{
public:
    /** What the door is told; on its thread. */
    class Listener
    {
    public:
        virtual ~Listener() = default;
        /** The web socket is open. @param peer its address */
        virtual void opened(quint64 client, const QString& peer, const WaitingBytes& waiting) = 0;
        /** A message has come. */
        virtual void received(quint64 client, const QByteArray& message) = 0;
        /** The connection has ended; the listener drops it. @param wasOpen whether opened was called */
        virtual void ended(quint64 client, bool wasOpen) = 0;
    };

    /** @param listener and @p config outlive the object */
    DoorConnection(Listener& listener, const DoorConfig& config, quint64 client,
                   SocketStream::Socket&& socket, ssl::context* tls)
        : BeastConnection(config.idleTime), m_listener(listener), m_config(config), m_client(client)
    {
        makeStream(std::move(socket), tls);
    }

    bool isAdmitted() const { return m_admitted; } ///< Whether it has logged in.
    bool hasSpoken() const { return m_spoken; }    ///< Whether a message of it has come.

    /** Waits for the client's request. */
    void start()
    {
        setCommonOptions(socket());
        tcpStream().async_secure(ssl::stream_base::server,
                                 [this, self = shared_from_this()](error_code error) {
                                     error ? abort(QString()) : readRequest();
                                 });
    }

    /** The server's thread is done with some messages. */
    void release(int messages, qint64 bytes)
    {
        m_messages -= messages;
        m_bytes -= bytes;
        readOn();
    }

    /** It has logged in: from its next message on the larger limit holds. */
    void admit()
    {
        m_admitted = true;
        stream().read_message_max(m_config.maxMessageBytes);
    }

    /** Ends it also when it floods the door, or is too late with its first message. */
    void tick(Clock::time_point now) override
    {
        if (std::exchange(m_controls, 0) > m_config.maxControls) {
            abort(QString());
        } else if (!m_spoken && !isClosing()) {
            if (now - m_begin > m_config.loginTime) {
                close(websocket::policy_error, QStringLiteral("no login"));
            }
        } else {
            SocketConnection::tick(now);
        }
    }

private:
    /** Reads the request itself: Beast's own way has room for 1,536 bytes of it. */
    void readRequest()
    {
        if (isEnded()) {
            return;
        }
        constexpr std::uint32_t maxRequestBytes = 8 << 10;
        m_request.emplace();
        m_request->header_limit(maxRequestBytes);
        http::async_read_header(tcpStream(), buffer(), *m_request,
                                [this, self = shared_from_this()](error_code error, std::size_t) {
                                    // A client waits for the answer (RFC 6455, 4.1).
                                    error || buffer().size() != 0 ? abort(QString()) : acceptRequest();
                                });
    }

    void acceptRequest()
    {
        if (isEnded()) {
            return;
        }
        stream().set_option(websocket::stream_base::decorator(
            [](websocket::response_type& response) { response.set(http::field::server, "VoiceDesk"); }));
        stream().read_message_max(m_config.maxLoginBytes);
        stream().async_accept(m_request->get(), [this, self = shared_from_this()](error_code error) {
            m_request.reset();
            if (error || isEnded()) { // a request that is no upgrade has been answered
                abort(QString());
                return;
            }
            const auto peer = socket().remote_endpoint(error);
            m_listener.opened(m_client, QString::fromStdString(peer.address().to_string()), waiting());
            opened();
        });
    }

    bool mayRead() const override
    {
        return m_messages < m_config.maxUnhandled && m_bytes <= m_config.readMark &&
               waiting()->load() <= m_config.readMark;
    }

    void controlHeard() override
    {
        SocketConnection::controlHeard();
        ++m_controls;
    }

    void received(const QByteArray& message) override
    {
        m_spoken = true;
        ++m_messages;
        m_bytes += message.size();
        m_listener.received(m_client, message);
    }

    void pieceGone(const SendQueue::Piece&) override {}
    void ended(const QString&) override { m_listener.ended(m_client, isOpen()); }

    Listener& m_listener;
    const DoorConfig& m_config;
    const quint64 m_client;
    std::optional<http::request_parser<http::empty_body>> m_request;
    int m_messages = 0; ///< Received, and not done with by the server's thread.
    qint64 m_bytes = 0; ///< Of these.
    int m_controls = 0; ///< Pings and pongs since the last tick.
    bool m_admitted = false;
    bool m_spoken = false;
    const Clock::time_point m_begin = Clock::now();
};
