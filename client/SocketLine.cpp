// The one source of the client that reaches Boost, which comes first.
#include "client/LineConnection.h"

#include "client/SocketLine.h"

#include <QHostInfo>
#include <QPointer>

#include <mutex>
#include <thread>
#include <vector>

namespace {

constexpr std::chrono::milliseconds
    leavingTime(125);                  // for what waits when the line is destroyed, and for the handshake
constexpr qint64 unreadMark = 8 << 20; // bytes that the line has not taken, with which no more are read
constexpr int portOfTls = 443;
constexpr int portWithoutTls = 80;

} // namespace

/** The thread of all lines; it ends with the last of them, when their connections have. */
class SocketLine::Loop
{
public:
    static std::shared_ptr<Loop> shared()
    {
        static std::mutex mutex;
        static std::weak_ptr<Loop> running;
        const std::lock_guard lock(mutex);
        std::shared_ptr<Loop> loop = running.lock();
        if (!loop) {
            loop = std::make_shared<Loop>();
            running = loop;
        }
        return loop;
    }

    Loop() : m_work(net::make_work_guard(context)), m_thread([this] { run(); }) {}
    ~Loop()
    {
        m_work.reset();
        m_thread.join();
    }

    net::io_context context{1};

private:
    /** An exception, as for want of memory, costs what met it, not the thread. */
    void run()
    {
        for (;;) {
            try {
                context.run();
                return;
            } catch (const std::exception& exception) {
                qWarning("the thread of the sockets: %s", exception.what());
            }
        }
    }

    net::executor_work_guard<SocketStream::executor_type> m_work;
    std::thread m_thread;
};

/** What the two threads share of a connection: events for the line, and messages for the socket. */
class SocketLine::Channel final : public LineConnection::Listener
{
public:
    /** What the line is told. */
    struct Event
    {
        enum Kind
        {
            Opened,
            Received,
            Progressed,
            Lost
        } kind;
        QByteArray bytes;
        QString text;
    };

    explicit Channel(SocketLine& line) : m_line(&line) {}

    // On the line's thread.

    /** After this nothing reaches the line any more. */
    void leave()
    {
        const std::lock_guard lock(m_mutex);
        m_line = nullptr;
    }

    /** @param wasFull receives whether the connection was not read because of them */
    std::vector<Event> takeEvents(bool* wasFull)
    {
        const std::lock_guard lock(m_mutex);
        *wasFull = std::exchange(m_unread, 0) > unreadMark;
        return std::exchange(m_events, {});
    }

    // On the thread of all lines.

    void opened() override { report({Event::Opened, QByteArray(), QString()}); }
    void received(const QByteArray& message) override { report({Event::Received, message, QString()}); }
    void progressed() override { report({Event::Progressed, QByteArray(), QString()}); }
    void lost(const QString& reason) override { report({Event::Lost, QByteArray(), reason}); }
    bool takesMore() override
    {
        const std::lock_guard lock(m_mutex);
        return m_unread <= unreadMark;
    }

private:
    void report(Event event)
    {
        const std::lock_guard lock(m_mutex);
        m_unread += event.bytes.size();
        m_events.push_back(std::move(event));
        // Under the lock: the line cannot go before it is woken.
        if (m_events.size() == 1 && m_line != nullptr) {
            Q_EMIT m_line->woken(QPrivateSignal());
        }
    }

    std::mutex m_mutex; ///< Of all below.
    SocketLine* m_line;
    std::vector<Event> m_events;
    qint64 m_unread = 0; ///< Bytes of messages in these.
};

/** One connection, as the line's thread has it. */
struct SocketLine::Connection
{
    std::shared_ptr<Loop> loop; ///< Before what runs on it.
    std::shared_ptr<Channel> channel;
    std::shared_ptr<LineConnection> socket;

    /** Does something on the thread of all lines. */
    template<class Work>
    void post(Work work) const
    {
        net::post(loop->context, [socket = socket, work = std::move(work)] { work(*socket); });
    }
};

SocketLine::SocketLine()
{
    connect(this, &SocketLine::woken, this, &SocketLine::deliver, Qt::QueuedConnection);
}

SocketLine::~SocketLine()
{
    drop();
}

void SocketLine::drop()
{
    if (m_lookup >= 0) {
        QHostInfo::abortHostLookup(m_lookup);
        m_lookup = -1;
    }
    if (m_connection) {
        m_connection->channel->leave();
        m_connection->post(
            [](LineConnection& socket) { socket.close(websocket::going_away, QString(), leavingTime); });
        m_connection.reset();
    }
}

void SocketLine::open(const QUrl& url, const QString& fingerprint)
{
    const std::shared_ptr<Loop> loop = Loop::shared(); // before an earlier connection leaves it
    drop();
    m_closed = false;
    m_connection = std::make_shared<Connection>();
    m_connection->loop = loop;
    m_connection->channel = std::make_shared<Channel>(*this);
    m_connection->socket =
        std::make_shared<LineConnection>(m_connection->channel, loop->context, url, fingerprint);
    if (!fingerprint.isEmpty() && !m_connection->socket->usesTls()) {
        fail(QStringLiteral("it shows no certificate, expected was one with the fingerprint %1")
                 .arg(fingerprint));
        return;
    }
    const int port = url.port(m_connection->socket->usesTls() ? portOfTls : portWithoutTls);
    const QHostAddress address(url.host());
    if (!address.isNull()) {
        connectTo({address}, port);
        return;
    }
    // Qt looks names up: Boost's way cannot be given up, and would hold the end of the program.
    m_lookup = QHostInfo::lookupHost(url.host(), this, [this, port](const QHostInfo& found) {
        m_lookup = -1;
        if (found.addresses().isEmpty()) {
            fail(found.errorString());
        } else {
            connectTo(found.addresses(), port);
        }
    });
}

void SocketLine::connectTo(const QList<QHostAddress>& addresses, int port)
{
    std::deque<tcp::endpoint> endpoints;
    for (const QHostAddress& each : addresses) {
        error_code error;
        const auto address = net::ip::make_address(each.toString().toStdString(), error);
        if (!error) {
            endpoints.emplace_back(address, static_cast<quint16>(port));
        }
    }
    if (endpoints.empty()) {
        fail(QStringLiteral("it has no address"));
        return;
    }
    m_connection->post(
        [endpoints = std::move(endpoints)](LineConnection& socket) { socket.connectTo(endpoints); });
}

void SocketLine::fail(const QString& reason)
{
    m_connection->post([reason](LineConnection& socket) { socket.abort(reason); });
}

void SocketLine::send(const QByteArray& message)
{
    if (m_connection && !m_closed) {
        *m_connection->socket->waiting() += message.size();
        m_connection->post([message](LineConnection& socket) { socket.send(message); });
    }
}

qint64 SocketLine::waitingBytes() const
{
    return m_connection ? m_connection->socket->waiting()->load() : 0;
}

void SocketLine::close(quint16 code, const QString& reason)
{
    if (m_connection && !m_closed) {
        m_closed = true;
        m_connection->post([code, reason](LineConnection& socket) { socket.close(code, reason); });
    }
}

void SocketLine::deliver()
{
    const std::shared_ptr<Connection> connection = m_connection;
    const QPointer<SocketLine> self(this);
    if (!connection) {
        return;
    }
    bool wasFull = false;
    const std::vector<Channel::Event> events = connection->channel->takeEvents(&wasFull);
    if (wasFull) {
        connection->post([](LineConnection& socket) { socket.readOn(); });
    }
    for (const Channel::Event& event : events) {
        switch (event.kind) {
        case Channel::Event::Opened:
            Q_EMIT connected();
            break;
        case Channel::Event::Received:
            if (!m_closed) {
                Q_EMIT received(event.bytes);
            }
            break;
        case Channel::Event::Progressed:
            Q_EMIT progressed();
            break;
        case Channel::Event::Lost:
            Q_EMIT lost(event.text);
            break;
        }
        if (!self || m_connection != connection) {
            return; // a receiver has destroyed the line, or opened it again
        }
    }
}
