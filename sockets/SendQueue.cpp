#include "sockets/SendQueue.h"

#include <algorithm>

SendQueue::Piece SendQueue::next() const
{
    const QByteArray& first = m_messages.front();
    const std::size_t left = static_cast<std::size_t>(first.size()) - m_done;
    const std::size_t size = std::min(left, maxPiece);
    return {first.constData() + m_done, size, size == left, size == left && m_done == 0};
}

bool SendQueue::written()
{
    const Piece piece = next();
    m_done += piece.size;
    if (piece.isLast) {
        m_messages.pop_front();
        m_done = 0;
    }
    return piece.isLast;
}
