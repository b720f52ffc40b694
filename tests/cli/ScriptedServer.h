#pragma once

#include "protocol/ReturnCode.h"
#include "protocol/WireMessage.h"
#include "tests/support/WebSocketPeer.h"

#include <functional>

/** A server that lets everybody in and answers commands as the test says. */
class ScriptedServer : public QObject
{
public:
    /** Gives the replies to a command, whose number and name they have unless it changes them. */
    using Script = std::function<QList<WireMessage>(const WireMessage& command)>;

    explicit ScriptedServer(Script script) : m_script(std::move(script))
    {
        listening = m_server.isListening();
        connect(&m_server, &WebSocketListener::peerCame, this, [this] {
            WebSocketPeer* client = m_server.nextPeer();
            connect(client, &WebSocketPeer::binaryMessageReceived, client,
                    [this, client](const QByteArray& bytes) { answer(client, bytes); });
        });
    }

    /** The reply to a command that has succeeded. */
    static WireMessage replyTo(const WireMessage& command, const QVariant& payload = QVariant())
    {
        WireMessage reply;
        reply.kind = WireMessage::Reply;
        reply.id = command.id;
        reply.name = command.name;
        reply.code = ReturnCode::success;
        reply.payload = payload;
        return reply;
    }

    QString url() const { return m_server.url().toString(); }

    bool listening = false;

private:
    void answer(WebSocketPeer* client, const QByteArray& bytes)
    {
        const auto asked = WireMessage::fromBytes(bytes);
        if (asked && asked->kind == WireMessage::Login) {
            WireMessage welcome;
            welcome.kind = WireMessage::Welcome;
            client->sendBinaryMessage(welcome.toBytes());
        } else if (asked) {
            for (const WireMessage& reply : m_script(*asked)) {
                client->sendBinaryMessage(reply.toBytes());
            }
        }
    }

    Script m_script;
    WebSocketListener m_server;
};
