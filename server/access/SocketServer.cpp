#include "server/access/SocketServer.h"

#include "server/access/SocketClient.h"

#include <algorithm>

SocketServer::SocketServer(CommandExecutor& server, SocketConfig config, const ServerCertificate* certificate)
    : m_executor(server), m_config(std::move(config)), m_certificate(certificate), m_logins(m_config.users)
{
    connect(&m_door, &SocketDoor::opened, this, &SocketServer::accept);
    connect(&m_door, &SocketDoor::received, this, [this](quint64 number, const QByteArray& message) {
        if (const auto client = m_clients.find(number); client != m_clients.end()) {
            client->second->receive(message);
        }
    });
    connect(&m_door, &SocketDoor::closed, this, [this](quint64 number) { m_clients.erase(number); });
}

SocketServer::~SocketServer() = default;

bool SocketServer::listen()
{
    DoorConfig door;
    door.address = m_config.address;
    door.port = m_config.port;
    door.maxClients = m_config.maxClients;
    door.maxMessageBytes = m_config.maxMessageBytes;
    door.loginTime = std::chrono::milliseconds(m_config.loginTimeout);
    return m_door.listen(door, m_certificate, &m_error);
}

QUrl SocketServer::url() const
{
    QUrl made;
    made.setScheme(m_certificate != nullptr ? QStringLiteral("wss") : QStringLiteral("ws"));
    made.setHost(m_config.address.toString());
    made.setPort(m_door.port());
    return made;
}

bool SocketServer::isFull() const
{
    const auto served = std::count_if(m_clients.begin(), m_clients.end(),
                                      [](const auto& client) { return client.second->isServed(); });
    return served >= m_config.maxClients;
}

void SocketServer::accept(quint64 number, const QString& peer)
{
    if (isFull()) {
        m_door.close(number, SocketClient::policyViolated, SocketClient::tooManyClients());
        return;
    }
    auto client = std::make_unique<SocketClient>(m_executor, m_config, m_logins, m_door, number, peer);
    client->onLogin([this] { return !isFull(); });
    m_clients.emplace(number, std::move(client));
}
