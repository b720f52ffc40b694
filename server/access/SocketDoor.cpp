#include "server/access/SocketDoor.h"

#include "server/access/DoorThread.h"

#include <map>
#include <unordered_map>
#include <utility>

/** The side of the server's thread. */
struct SocketDoor::Clients
{
    struct Handled
    {
        int messages = 0;
        qint64 bytes = 0;
    };

    struct Flow
    {
        std::shared_ptr<std::atomic<qint64>> waiting;
        std::shared_ptr<UnhandledMessages> unhandled;
    };

    std::unordered_map<quint64, Flow> flows; ///< Of those that are open.
    std::map<quint64, Handled> handled;      ///< Delivered, and not counted as handled yet.
};

SocketDoor::SocketDoor() : m_clients(std::make_unique<Clients>())
{
    connect(this, &SocketDoor::woken, this, &SocketDoor::deliver, Qt::QueuedConnection);
}

SocketDoor::~SocketDoor()
{
    m_thread.reset(); // while its thread may still wake the object
}

bool SocketDoor::listen(const DoorConfig& config, const ServerCertificate* certificate, QString* error)
{
    auto thread = std::make_unique<DoorThread>(config, [this] { Q_EMIT woken(QPrivateSignal()); });
    if (!thread->listen(certificate, error)) {
        return false;
    }
    m_thread = std::move(thread);
    return true;
}

quint16 SocketDoor::port() const
{
    return m_thread ? m_thread->port() : 0;
}

void SocketDoor::deliver()
{
    for (const DoorThread::Event& event : m_thread->takeEvents()) {
        switch (event.kind) {
        case DoorThread::Event::Opened:
            m_clients->flows.emplace(event.client, Clients::Flow{event.waiting, event.unhandled});
            Q_EMIT opened(event.client, event.text);
            break;
        case DoorThread::Event::Received: {
            if (m_clients->handled.empty()) {
                // Queued behind the answers of what is delivered here, which a session gives by then.
                QMetaObject::invokeMethod(this, &SocketDoor::countHandled, Qt::QueuedConnection);
            }
            Clients::Handled& handled = m_clients->handled[event.client];
            ++handled.messages;
            handled.bytes += event.bytes.size();
            Q_EMIT received(event.client, event.bytes);
            break;
        }
        case DoorThread::Event::Closed:
            m_clients->flows.erase(event.client);
            Q_EMIT closed(event.client);
            break;
        }
    }
}

void SocketDoor::countHandled()
{
    for (const auto& [client, handled] : std::exchange(m_clients->handled, {})) {
        const auto flow = m_clients->flows.find(client);
        if (flow != m_clients->flows.end() &&
            flow->second.unhandled->handled(handled.messages, handled.bytes)) {
            m_thread->order({DoorThread::Order::ReadOn, client, QByteArray(), 0, QString()});
        }
    }
}

void SocketDoor::send(quint64 client, const QByteArray& message)
{
    const auto found = m_clients->flows.find(client);
    if (found != m_clients->flows.end()) {
        *found->second.waiting += message.size();
        m_thread->order({DoorThread::Order::Send, client, message, 0, QString()});
    }
}

qint64 SocketDoor::waitingBytes(quint64 client) const
{
    const auto found = m_clients->flows.find(client);
    return found != m_clients->flows.end() ? found->second.waiting->load() : 0;
}

void SocketDoor::admit(quint64 client)
{
    m_thread->order({DoorThread::Order::Admit, client, QByteArray(), 0, QString()});
}

void SocketDoor::close(quint64 client, quint16 code, const QString& reason)
{
    m_thread->order({DoorThread::Order::Close, client, QByteArray(), code, reason});
}

void SocketDoor::abort(quint64 client)
{
    m_thread->order({DoorThread::Order::Abort, client, QByteArray(), 0, QString()});
}
