#pragma once

#include "client/SocketLink.h"
#include "protocol/WireMessage.h"
#include "tests/support/WebSocketPeer.h"

/** A server that lets everybody in unless it is told not to, keeps what it is asked, and answers what it is
 * told to. */
class LyingServer : public QObject
{
public:
    LyingServer()
    {
        connect(&m_server, &WebSocketListener::peerCame, this, [this] {
            client = m_server.nextPeer();
            connect(client, &WebSocketPeer::binaryMessageReceived, this, [this](const QByteArray& bytes) {
                const std::optional<WireMessage> message = WireMessage::fromBytes(bytes);
                if (!message) {
                    return;
                }
                if (message->kind == WireMessage::Login && !welcomes) {
                    client->sendBinaryMessage(inPlaceOfAWelcome);
                } else if (message->kind == WireMessage::Login) {
                    WireMessage welcome;
                    welcome.kind = WireMessage::Welcome;
                    client->sendBinaryMessage(welcome.toBytes());
                } else {
                    commands.append(*message);
                }
            });
        });
    }

    void reply(quint32 number, const QString& name, const QString& code, const QVariant& payload = QVariant())
    {
        WireMessage message;
        message.kind = WireMessage::Reply;
        message.id = number;
        message.name = name;
        message.code = code;
        message.payload = payload;
        client->sendBinaryMessage(message.toBytes());
    }

    /** The last command of a name. */
    quint32 numberOf(const QString& name) const
    {
        quint32 number = 0;
        for (const WireMessage& command : commands) {
            number = command.name == name ? command.id : number;
        }
        return number;
    }

    SocketLinkConfig config() const
    {
        SocketLinkConfig made;
        made.url = m_server.url();
        made.user = QStringLiteral("anna");
        return made;
    }

    bool welcomes = true;
    QByteArray inPlaceOfAWelcome; ///< Sent after a login if it does not welcome.
    WebSocketPeer* client = nullptr;
    QList<WireMessage> commands;

private:
    WebSocketListener m_server;
};
