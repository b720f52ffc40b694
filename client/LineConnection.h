#pragma once

#include "sockets/BeastConnection.h" // first, because of windows.h

#include "client/ServerTrust.h"
#include "protocol/Limits.h"

#include <QUrl>

#include <deque>

/** One connection of a SocketLine, from its addresses to its end; lives on the thread of all lines. */
class LineConnection final : public BeastConnection
{
public:
    /** What the line is told; on the thread of all lines. */
    class Listener
    {
    public:
        virtual ~Listener() = default;
        /** The web socket is open. */
        virtual void opened() = 0;
        /** A message has come. */
        virtual void received(const QByteArray& message) = 0;
        /** Some of a large message has gone. */
        virtual void progressed() = 0;
        /** The connection has ended. @param reason not empty */
        virtual void lost(const QString& reason) = 0;
        /** Whether what has been received is taken quickly enough to go on. */
        virtual bool takesMore() = 0;
    };

    /** @param listener of whom connections hold a share */
    LineConnection(std::shared_ptr<Listener> listener, net::io_context& context, QUrl url,
                   const QString& fingerprint)
        : BeastConnection(Milliseconds(Limits::maxIdleTime)), m_listener(std::move(listener)),
          m_context(context), m_ticker(context), m_url(std::move(url)), m_trust(fingerprint)
    {
        if (usesTls()) {
            m_tls.emplace(ssl::context::tls_client);
            restrictTls(*m_tls);
            m_trust.applyTo(m_tls->native_handle());
        }
    }

    bool usesTls() const { return m_url.scheme() == QLatin1String("wss"); } ///< Whether it is encrypted.

    /** Connects to the first address that answers. */
    void connectTo(std::deque<tcp::endpoint> addresses)
    {
        m_addresses = std::move(addresses);
        if (!isEnded()) {
            watch();
            connectNext();
        }
    }

    /** Reads on, when what was received has been taken. */
    using SocketConnection::readOn;

    /** Ends it also when it does not open; goes on to the next address when one does not answer. */
    void tick(Clock::time_point now) override
    {
        constexpr Milliseconds attemptTime(5000);
        constexpr std::chrono::seconds connectTime(30);
        if (isOpen() || isClosing()) {
            SocketConnection::tick(now);
        } else if (now - m_begin > connectTime) {
            abort(QStringLiteral("it does not answer"));
        } else if (now - m_attempt > attemptTime && !m_addresses.empty()) {
            closeSocket();
        }
    }

private:
    using Timer = net::basic_waitable_timer<Clock, net::wait_traits<Clock>, SocketStream::executor_type>;

    std::shared_ptr<LineConnection> self()
    {
        return std::static_pointer_cast<LineConnection>(shared_from_this());
    }

    void connectNext()
    {
        const tcp::endpoint address = m_addresses.front();
        m_addresses.pop_front();
        m_attempt = Clock::now();
        makeStream(SocketStream::Socket(m_context), m_tls ? &*m_tls : nullptr);
        stream().read_message_max(Limits::maxMessageToClientBytes);
        if (usesTls()) {
            ServerTrust::setHost(tcpStream().tls(), m_url.host(QUrl::FullyEncoded).toLatin1());
        }
        socket().async_connect(address, [this, self = self()](error_code error) {
            if (isEnded()) {
                return;
            }
            if (!error) {
                m_addresses.clear();
                setCommonOptions(socket());
                secure();
            } else if (!m_addresses.empty()) {
                connectNext();
            } else {
                abort(words(error));
            }
        });
    }

    void secure()
    {
        tcpStream().async_secure(ssl::stream_base::client, [this, self = self()](error_code error) {
            if (isEnded()) {
                return;
            }
            if (!error) {
                shakeHands();
                return;
            }
            const QString refusal = m_trust.refusal(tcpStream().tls());
            abort(!refusal.isEmpty() ? refusal
                                     : QStringLiteral("it does not agree on TLS: %1").arg(words(error)));
        });
    }

    void shakeHands()
    {
        const QByteArray host = m_url.authority(QUrl::FullyEncoded | QUrl::RemoveUserInfo).toLatin1();
        QByteArray target = m_url.path(QUrl::FullyEncoded).toLatin1();
        target = target.isEmpty() ? "/" : target;
        if (m_url.hasQuery()) {
            target += '?' + m_url.query(QUrl::FullyEncoded).toLatin1();
        }
        stream().async_handshake(
            host.toStdString(), target.toStdString(), [this, self = self()](error_code error) {
                if (isEnded()) {
                    return;
                }
                if (error) {
                    abort(QStringLiteral("it opens no web socket: %1").arg(words(error)));
                    return;
                }
                m_listener->opened();
                opened();
            });
    }

    void watch()
    {
        constexpr Milliseconds tickTime(100);
        m_ticker.expires_after(tickTime);
        m_ticker.async_wait([this, self = self()](error_code) {
            if (!isEnded()) {
                tick(Clock::now());
            }
            if (!isEnded()) {
                watch();
            }
        });
    }

    bool mayRead() const override { return m_listener->takesMore(); }
    void received(const QByteArray& message) override { m_listener->received(message); }

    void pieceGone(const SendQueue::Piece& piece) override
    {
        if (!piece.isWhole) { // small ones are gone before anybody could look
            m_listener->progressed();
        }
    }

    void ended(const QString& reason) override
    {
        m_ticker.cancel();
        m_listener->lost(!reason.isEmpty() ? reason : QStringLiteral("the connection was closed"));
    }

    const std::shared_ptr<Listener> m_listener;
    net::io_context& m_context;
    Timer m_ticker;
    const QUrl m_url;
    ServerTrust m_trust;
    std::optional<ssl::context> m_tls;
    std::deque<tcp::endpoint> m_addresses; ///< To be tried yet.
    const Clock::time_point m_begin = Clock::now();
    Clock::time_point m_attempt = m_begin;
};
