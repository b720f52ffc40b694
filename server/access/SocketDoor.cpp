#include "server/access/SocketDoor.h"

#include "server/access/DoorThread.h"

#include <map>
#include <unordered_map>
#include <utility>

namespace {

// With more the thread of the sockets begins meanwhile, and clients wait less.
constexpr std::size_t maxOrders = 32;

} // namespace

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
    std::vector<DoorThread::Order> orders;   ///< Not handed over yet.
    bool delivers = false;                   ///< Orders are handed over at the end.
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

/** What is ordered while messages are delivered goes together: each time it may have to wake up the thread.
 */
template<class Order>
void SocketDoor::order(Order order)
{
    m_clients->orders.push_back(std::move(order));
    if (!m_clients->delivers || m_clients->orders.size() == maxOrders) {
        handOver();
    }
}

void SocketDoor::handOver()
{
    if (m_thread && !m_clients->orders.empty()) {
        m_thread->order(std::exchange(m_clients->orders, {}));
    }
}

void SocketDoor::deliver()
{
    m_clients->delivers = true;
    for (const DoorThread::Event& event : m_thread->takeEvents()) {
        switch (event.kind) {
        case DoorThread::Event::Opened:
            m_clients->flows.emplace(event.client, Clients::Flow{event.waiting, event.unhandled});
            Q_EMIT opened(event.client, event.text);
            break;
        case DoorThread::Event::Received: {
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
    countHandled(); // behind the answers that sessions have given at once
    m_clients->delivers = false;
    handOver();
}

void SocketDoor::countHandled()
{
    for (const auto& [client, handled] : std::exchange(m_clients->handled, {})) {
        const auto flow = m_clients->flows.find(client);
        if (flow != m_clients->flows.end() &&
            flow->second.unhandled->handled(handled.messages, handled.bytes)) {
            order(DoorThread::Order{DoorThread::Order::ReadOn, client, QByteArray(), 0, QString()});
        }
    }
}

void SocketDoor::send(quint64 client, const QByteArray& message)
{
    const auto found = m_clients->flows.find(client);
    if (found != m_clients->flows.end()) {
        *found->second.waiting += message.size();
        order(DoorThread::Order{DoorThread::Order::Send, client, message, 0, QString()});
    }
}

qint64 SocketDoor::waitingBytes(quint64 client) const
{
    const auto found = m_clients->flows.find(client);
    return found != m_clients->flows.end() ? found->second.waiting->load() : 0;
}

void SocketDoor::admit(quint64 client)
{
    order(DoorThread::Order{DoorThread::Order::Admit, client, QByteArray(), 0, QString()});
}

void SocketDoor::close(quint64 client, quint16 code, const QString& reason)
{
    order(DoorThread::Order{DoorThread::Order::Close, client, QByteArray(), code, reason});
}

void SocketDoor::abort(quint64 client)
{
    order(DoorThread::Order{DoorThread::Order::Abort, client, QByteArray(), 0, QString()});
}
