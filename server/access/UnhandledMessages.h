#pragma once

#include <QtGlobal>

#include <atomic>

/**
 * Messages of one client that have come and that the server's thread has not handled yet. The thread of the
 * sockets counts up and stops to read the client; the server's thread counts down, and has to wake the other
 * one for a client alone that is not read.
 */
class UnhandledMessages
{
public:
    /** A message has come. From the thread of the sockets, as mayRead. */
    void add(qint64 bytes)
    {
        ++m_messages;
        m_bytes += bytes;
    }

    /** Returns whether there is room for another one; if not, handled says so when there is. */
    bool mayRead(int maxMessages, qint64 maxBytes)
    {
        const auto hasRoom = [&] { return m_messages < maxMessages && m_bytes <= maxBytes; };
        if (hasRoom()) {
            return true;
        }
        m_stopped = true;
        return hasRoom(); // what was handled meanwhile did not see it stopped
    }

    /** Some were handled. From the server's thread. @return whether the client may be waiting to be read */
    bool handled(int messages, qint64 bytes)
    {
        m_messages -= messages;
        m_bytes -= bytes;
        return m_stopped.exchange(false);
    }

private:
    std::atomic<int> m_messages{0};
    std::atomic<qint64> m_bytes{0};
    std::atomic<bool> m_stopped{false};
};
