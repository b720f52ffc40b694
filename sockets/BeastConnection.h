#pragma once

#include "sockets/SocketStream.h"

#include "sockets/SocketConnection.h"

/** A connection by Boost.Beast. Handlers hold it; closing the socket ends them all. */
class BeastConnection : public SocketConnection, public std::enable_shared_from_this<BeastConnection>
{
protected:
    using SocketConnection::SocketConnection;

    /** Makes the stream, or another one in its place. @param tls null for none, else outlives the object */
    void makeStream(SocketStream::Socket&& socket, ssl::context* tls)
    {
        m_stream.emplace(std::move(socket), tls);
        // Beast's own idle time-out counts what is read alone.
        m_stream->set_option(websocket::stream_base::timeout{websocket::stream_base::none(),
                                                             websocket::stream_base::none(), false});
        m_stream->auto_fragment(false);                    // else frames of 4 KiB
        m_stream->write_buffer_bytes(SendQueue::maxPiece); // in which a client masks
        m_stream->binary(true);
        m_stream->control_callback([this](websocket::frame_type, beast::string_view) { controlHeard(); });
        tcpStream().onTeardown([this] { closeBegun(); });
    }

    bool hasStream() const { return m_stream.has_value(); }
    WebSocketStream& stream() { return *m_stream; }
    SocketStream& tcpStream() { return m_stream->next_layer(); }
    SocketStream::Socket& socket() { return tcpStream().next_layer(); }
    beast::flat_buffer& buffer() { return m_buffer; } ///< Of what was read beyond the handshake.

    /** Returns an error in the system's words. */
    static QString words(error_code error) { return QString::fromLocal8Bit(error.message().c_str()); }

    void closeSocket() override
    {
        if (m_stream) {
            error_code ignored;
            socket().close(ignored);
        }
    }

private:
    void startRead() override { readSome(); }

    /** Reads a message by pieces: each is a sign of life. */
    void readSome()
    {
        m_stream->async_read_some(m_buffer, SendQueue::maxPiece,
                                  [this, self = shared_from_this()](error_code error, std::size_t) {
                                      if (isEnded()) {
                                          return;
                                      }
                                      if (error) {
                                          abort(reasonOf(error));
                                          return;
                                      }
                                      heard();
                                      m_stream->is_message_done() ? takeMessage() : readSome();
                                  });
    }

    void takeMessage()
    {
        const QByteArray message(static_cast<const char*>(m_buffer.cdata().data()),
                                 static_cast<int>(m_buffer.size()));
        m_buffer.clear();
        if (m_buffer.capacity() > SendQueue::maxPiece) {
            m_buffer.shrink_to_fit(); // or a large message would be kept for ever
        }
        messageRead(message, m_stream->got_binary());
    }

    void startWrite(const SendQueue::Piece& piece) override
    {
        m_stream->async_write_some(piece.isLast, net::buffer(piece.data, piece.size),
                                   [this, self = shared_from_this()](error_code error, std::size_t) {
                                       if (isEnded()) {
                                           return;
                                       }
                                       if (!error) {
                                           pieceWritten();
                                       } else if (!isReading()) { // which knows better why
                                           abort(words(error));
                                       }
                                   });
    }

    void startPing() override
    {
        m_stream->async_ping({}, [this, self = shared_from_this()](error_code) { pingWritten(); });
    }

    void startClose(quint16 code, const QString& reason) override
    {
        websocket::close_reason why(code);
        const QByteArray text = reason.toUtf8();
        if (text.size() <= static_cast<int>(why.reason.max_size())) { // cut it might end inside a character
            why.reason.assign(text.constData(), static_cast<std::size_t>(text.size()));
        }
        m_stream->async_close(why, [this, self = shared_from_this()](error_code) { abort(QString()); });
    }

    /** Why reading ended, in the words of the peer, if it gave any. */
    QString reasonOf(error_code error) const
    {
        const auto& reason = m_stream->reason().reason;
        if (!reason.empty()) {
            return QString::fromUtf8(reason.data(), static_cast<int>(reason.size()));
        }
        return error == websocket::error::closed || error == net::error::eof
                   ? QStringLiteral("the other side closed the connection")
                   : words(error);
    }

    std::optional<WebSocketStream> m_stream;
    beast::flat_buffer m_buffer;
};
