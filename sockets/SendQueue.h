#pragma once

#include <QByteArray>

#include <cstddef>
#include <deque>

/**
 * Messages that wait to be sent, and how far the first of them has gone. It goes in pieces: a ping gets
 * between two of them, and each that has gone shows that the peer reads. Not for several threads.
 */
class SendQueue
{
public:
    /** Bytes of a message that are to be written next. */
    struct Piece
    {
        const char* data; ///< Valid until the piece is written.
        std::size_t size; ///< May be 0, of an empty message.
        bool isLast;      ///< Of its message.
        bool isWhole;     ///< It is all of its message.
    };

    /** Bytes of a piece at most. */
    static constexpr std::size_t maxPiece = 64 << 10;

    /** Appends a message, which is kept, not copied. */
    void push(const QByteArray& message) { m_messages.push_back(message); }

    /** Returns whether nothing waits. */
    bool isEmpty() const { return m_messages.empty(); }

    /** Returns the next piece. Not of an empty queue. */
    Piece next() const;

    /** Removes the piece that next returned. @return whether its message has gone with it */
    bool written();

private:
    std::deque<QByteArray> m_messages;
    std::size_t m_done = 0; ///< Bytes of the first message that have gone.
};
