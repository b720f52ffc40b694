// The one source of the server that reaches Boost, which comes first.
#include "server/access/DoorConnection.h"

#include "server/access/DoorThread.h"
#include "server/access/ServerCertificate.h"
#include "sockets/Mailbox.h"

#include <deque>
#include <map>
#include <thread>
#include <unordered_map>
#include <vector>

namespace {

using Socket = SocketStream::Socket;
using Executor = SocketStream::executor_type;
using Clock = DoorConnection::Clock;
using Acceptor = net::basic_socket_acceptor<tcp, Executor>;
using Timer = net::basic_waitable_timer<Clock, net::wait_traits<Clock>, Executor>;

constexpr std::chrono::milliseconds acceptPause(100); // after an error such as too many open files
constexpr std::chrono::milliseconds stopTime(500);    // for the closing handshakes at the end
constexpr int backlog = 128;

} // namespace

/** What is on the door's thread. The mailboxes alone are shared. */
class DoorThread::Core final : public DoorConnection::Listener
{
public:
    Core(const DoorConfig& config, std::function<void()> wake) : m_config(config), m_wake(std::move(wake)) {}
    ~Core() override;

    bool listen(const ServerCertificate* certificate, QString* error);
    quint16 port() const { return m_port; }
    std::vector<Event> takeEvents() { return m_events.takeAll(); }

    /** From the server's thread. */
    void order(std::vector<Order> orders)
    {
        if (m_orders.putAll(std::move(orders))) {
            net::post(m_context, [this] { obey(); });
        }
    }

    void opened(quint64 client, const QString& peer, const DoorConnection::WaitingBytes& waiting,
                const std::shared_ptr<UnhandledMessages>& unhandled) override
    {
        report({Event::Opened, client, QByteArray(), peer, waiting, unhandled});
    }
    void received(quint64 client, const QByteArray& message) override
    {
        report({Event::Received, client, message, QString(), nullptr, nullptr});
    }
    void ended(quint64 client, bool wasOpen) override;

private:
    void report(Event event)
    {
        if (m_events.put(std::move(event))) {
            m_wake();
        }
    }

    bool setUpTls(const ServerCertificate& certificate, QString* error);
    void run();
    void resume();
    void accept();
    void add(Socket&& socket);
    bool makeRoom();
    void watch();
    void obey();
    void obey(DoorConnection& connection, const Order& order);
    void stop();

    const DoorConfig m_config;
    const std::function<void()> m_wake;
    Mailbox<Event> m_events;
    Mailbox<Order> m_orders;
    std::deque<Order> m_obeyed; ///< Taken of them, and not obeyed yet.
    net::io_context m_context{1};
    std::optional<ssl::context> m_tls;
    Acceptor m_acceptor{m_context};
    Timer m_pause{m_context};
    Timer m_ticker{m_context};
    bool m_accepts = false; ///< accept, or a pause before it, is under way.
    bool m_ticks = false;   ///< The ticker runs.
    std::map<quint64, std::shared_ptr<DoorConnection>> m_connections; ///< By number, which is by age, too.
    quint64 m_lastClient = 0;
    bool m_stopping = false;
    quint16 m_port = 0;
    std::thread m_thread;
};

DoorThread::Core::~Core()
{
    if (m_thread.joinable()) {
        net::post(m_context, [this] { stop(); });
        m_thread.join();
    }
}

bool DoorThread::Core::setUpTls(const ServerCertificate& certificate, QString* error)
{
    m_tls.emplace(ssl::context::tls_server);
    restrictTls(*m_tls);
    SSL_CTX* native = m_tls->native_handle();
    SSL_CTX_set_options(native, SSL_OP_NO_TICKET | SSL_OP_CIPHER_SERVER_PREFERENCE);
    SSL_CTX_set_session_cache_mode(native, SSL_SESS_CACHE_OFF);
    if (!certificate.applyTo(native)) {
        *error = QStringLiteral("the certificate and its key do not fit each other");
        return false;
    }
    return true;
}

bool DoorThread::Core::listen(const ServerCertificate* certificate, QString* error)
{
    if (certificate != nullptr && !setUpTls(*certificate, error)) {
        return false;
    }
    error_code failed;
    const auto address = net::ip::make_address(m_config.address.toString().toStdString(), failed);
    const tcp::endpoint endpoint(address, m_config.port);
    if (!failed) {
        m_acceptor.open(endpoint.protocol(), failed);
    }
    if (!failed && address.is_v6()) {
        m_acceptor.set_option(net::ip::v6_only(true), failed);
    }
#ifndef Q_OS_WIN // there another server could take the port as well
    if (!failed) {
        m_acceptor.set_option(net::socket_base::reuse_address(true), failed);
    }
#endif
    if (!failed) {
        m_acceptor.bind(endpoint, failed);
    }
    if (!failed) {
        m_acceptor.listen(backlog, failed);
    }
    if (failed) {
        *error = QString::fromLocal8Bit(failed.message().c_str());
        return false;
    }
    m_port = m_acceptor.local_endpoint(failed).port();
    m_thread = std::thread([this] { run(); });
    return true;
}

/** An exception, as for want of memory, costs what met it, not the thread. */
void DoorThread::Core::run()
{
    for (;;) {
        try {
            resume();
            m_context.run();
            return;
        } catch (const std::exception& exception) {
            qWarning("the thread of the sockets: %s", exception.what());
        }
    }
}

/** Starts what goes on for ever, or what an exception has cut off of it. */
void DoorThread::Core::resume()
{
    if (!m_accepts && !m_stopping) {
        accept();
    }
    if (!m_ticks && !m_connections.empty()) {
        watch();
    }
    obey();
}

void DoorThread::Core::accept()
{
    m_acceptor.async_accept([this](error_code error, Socket socket) {
        m_accepts = false;
        if (m_stopping) {
            return;
        }
        if (error) {
            m_pause.expires_after(acceptPause);
            m_pause.async_wait([this](error_code) {
                m_accepts = false;
                if (!m_stopping) {
                    accept();
                }
            });
            m_accepts = true;
            return;
        }
        add(std::move(socket));
        accept();
    });
    m_accepts = true;
}

void DoorThread::Core::add(Socket&& socket)
{
    if (!makeRoom()) {
        return; // the socket closes
    }
    const quint64 client = ++m_lastClient;
    const auto connection = std::make_shared<DoorConnection>(*this, m_config, client, std::move(socket),
                                                             m_tls ? &*m_tls : nullptr);
    m_connections.emplace(client, connection);
    if (!m_ticks) {
        watch();
    }
    connection->start();
}

/**
 * Returns whether there is room for one more that has not logged in: for as many as may log in, so that all
 * clients can come back at once. The one that has been silent for longest leaves for it: others cannot keep
 * everybody out by saying nothing.
 */
bool DoorThread::Core::makeRoom()
{
    int strangers = 0;
    std::shared_ptr<DoorConnection> silent;
    for (const auto& [client, connection] : m_connections) {
        if (!connection->isAdmitted()) {
            ++strangers;
            if (!silent && !connection->hasSpoken()) {
                silent = connection;
            }
        }
    }
    if (strangers < m_config.maxClients) {
        return true;
    }
    if (silent) {
        silent->abort(QString());
    }
    return silent != nullptr;
}

/** One timer for all; it rests while there are none. */
void DoorThread::Core::watch()
{
    m_ticker.expires_after(m_config.tickTime);
    m_ticker.async_wait([this](error_code) {
        m_ticks = false;
        const auto now = Clock::now();
        for (auto next = m_connections.begin(); next != m_connections.end();) {
            const auto connection = (next++)->second; // which may end in its tick
            connection->tick(now);
        }
        if (!m_connections.empty() && !m_ticks) {
            watch();
        }
    });
    m_ticks = true;
}

void DoorThread::Core::ended(quint64 client, bool wasOpen)
{
    m_connections.erase(client); // the handler that runs holds it
    if (m_stopping && m_connections.empty()) {
        m_ticker.cancel();
        m_pause.cancel();
    }
    if (wasOpen) {
        report({Event::Closed, client, QByteArray(), QString(), nullptr, nullptr});
    }
}

void DoorThread::Core::obey()
{
    for (Order& order : m_orders.takeAll()) {
        m_obeyed.push_back(std::move(order));
    }
    while (!m_obeyed.empty()) { // an exception leaves those of other clients
        const Order order = std::move(m_obeyed.front());
        m_obeyed.pop_front();
        const auto found = m_connections.find(order.client);
        if (found != m_connections.end()) {
            const auto connection = found->second;
            obey(*connection, order);
        }
    }
}

void DoorThread::Core::obey(DoorConnection& connection, const Order& order)
{
    switch (order.kind) {
    case Order::Send:
        connection.send(order.bytes);
        break;
    case Order::ReadOn:
        connection.readOn();
        break;
    case Order::Admit:
        connection.admit();
        break;
    case Order::Close:
        connection.close(order.code, order.text);
        break;
    case Order::Abort:
        connection.abort(QString());
        break;
    }
}

/** Nothing is left to be done when all connections have gone, and run returns by itself. */
void DoorThread::Core::stop()
{
    m_stopping = true;
    error_code ignored;
    m_acceptor.close(ignored);
    m_pause.cancel();
    for (auto next = m_connections.begin(); next != m_connections.end();) {
        const auto connection = (next++)->second;
        connection->close(websocket::going_away, QStringLiteral("the server ends"));
    }
    if (m_connections.empty()) {
        m_ticker.cancel();
        return;
    }
    m_pause.expires_after(stopTime);
    m_pause.async_wait([this](error_code) {
        for (auto next = m_connections.begin(); next != m_connections.end();) {
            const auto connection = (next++)->second;
            connection->abort(QString());
        }
    });
}

DoorThread::DoorThread(const DoorConfig& config, std::function<void()> wake)
    : m_core(std::make_unique<Core>(config, std::move(wake)))
{
}

DoorThread::~DoorThread() = default;

bool DoorThread::listen(const ServerCertificate* certificate, QString* error)
{
    return m_core->listen(certificate, error);
}

quint16 DoorThread::port() const
{
    return m_core->port();
}

std::vector<DoorThread::Event> DoorThread::takeEvents()
{
    return m_core->takeEvents();
}

void DoorThread::order(std::vector<Order> orders)
{
    m_core->order(std::move(orders));
}
