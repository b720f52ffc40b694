#pragma once

#include "server/access/SocketDoor.h"
#include "server/access/UnhandledMessages.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

/**
 * The thread of a door's sockets. The one place of the server that reaches Boost. All functions are called on
 * one other thread, the server's.
 */
class DoorThread
{
public:
    /** What the server's thread is told. */
    struct Event
    {
        enum Kind
        {
            Opened,
            Received,
            Closed
        } kind;
        quint64 client;
        QByteArray bytes;                             ///< Of Received.
        QString text;                                 ///< Of Opened: the address of the peer.
        std::shared_ptr<std::atomic<qint64>> waiting; ///< Of Opened: bytes that have not gone.
        std::shared_ptr<UnhandledMessages> unhandled; ///< Of Opened.
    };

    /** What the door's thread is to do. */
    struct Order
    {
        enum Kind
        {
            Send,
            ReadOn, ///< UnhandledMessages has room again.
            Admit,
            Close,
            Abort
        } kind;
        quint64 client;
        QByteArray bytes; ///< Of Send.
        quint16 code = 0; ///< Of Close.
        QString text;     ///< Of Close.
    };

    /** @param wake called on the door's thread when there are events where there were none */
    DoorThread(const DoorConfig& config, std::function<void()> wake);
    /** Ends all connections, with close code 1001; takes half a second at most. */
    ~DoorThread();

    /** As SocketDoor::listen. */
    bool listen(const ServerCertificate* certificate, QString* error);

    /** Returns the port that it listens at. */
    quint16 port() const;

    /** Takes the events since the last call, in their order. */
    std::vector<Event> takeEvents();

    /** Has things done, in their order; for a client that has gone they are dropped. */
    void order(std::vector<Order> orders);

private:
    class Core;

    std::unique_ptr<Core> m_core;
};
