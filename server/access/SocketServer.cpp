#include "server/access/SocketServer.h"

#include "server/access/ServerCertificate.h"
#include "server/access/SocketClient.h"
#include "system/SocketOptions.h"

#include <QSslConfiguration>
#include <QWebSocket>

SocketServer::SocketServer(CommandExecutor& server, SocketConfig config, const ServerCertificate* certificate)
    : m_executor(server), m_config(std::move(config)), m_logins(m_config.users),
      m_server(QStringLiteral("VoiceDesk"),
               certificate != nullptr ? QWebSocketServer::SecureMode : QWebSocketServer::NonSecureMode)
{
    if (certificate != nullptr) {
        QSslConfiguration tls = QSslConfiguration::defaultConfiguration();
        tls.setLocalCertificate(certificate->certificate);
        tls.setPrivateKey(certificate->key);
        tls.setPeerVerifyMode(QSslSocket::VerifyNone); // clients show who they are by logging in
        m_server.setSslConfiguration(tls);
    }
    m_server.setMaxPendingConnections(m_config.maxClients);
    connect(&m_server, &QWebSocketServer::newConnection, this, &SocketServer::accept);
}

SocketServer::~SocketServer()
{
    m_server.close();
    m_clients.clear();
}

bool SocketServer::listen()
{
    if (!m_server.listen(m_config.address, m_config.port)) {
        return false;
    }
    // Else an answer waits for the acknowledgement of the one before, which the client may delay for 40 ms.
    SocketOptions::setNoDelay(m_server.nativeDescriptor());
    return true;
}

void SocketServer::accept()
{
    while (QWebSocket* socket = m_server.nextPendingConnection()) {
        if (clients() >= m_config.maxClients) {
            socket->close(QWebSocketProtocol::CloseCodePolicyViolated, QStringLiteral("too many clients"));
            socket->deleteLater();
            continue;
        }
        auto client = std::make_unique<SocketClient>(m_executor, m_config, m_logins, socket);
        SocketClient* key = client.get();
        connect(
            key, &SocketClient::gone, this, [this, key] { m_clients.erase(key); }, Qt::QueuedConnection);
        m_clients.emplace(key, std::move(client));
    }
}
