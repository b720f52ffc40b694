#pragma once

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

/**
 * One message between a desk and a server in another process: a CBOR map, the payload of a binary WebSocket
 * message.
 *
 *   client                                         server
 *   Login   user, password or token         -->
 *                                           <--    Welcome, or Refused with a text and the end
 *   Command id, name, payload               -->
 *                                           <--    Reply   id, name, payload, code, text
 *                                           <--    Event   name, payload
 *
 * The first reply to a command carries the command's id. Further ones, such as the progress of a playback,
 * carry 0.
 */
struct WireMessage
{
    enum Kind
    {
        Login = 1,
        Welcome = 2,
        Refused = 3,
        Command = 4,
        Reply = 5,
        Event = 6,
    };

    static constexpr int version = 1; ///< Of the protocol; other versions are not understood.

    Kind kind = Login;
    quint32 id = 0; ///< Of a command, and of its replies; 0 for a reply to nothing in particular.
    QString name;   ///< Of a command, a reply's command, an event; the user of a login.
    QString secret; ///< Password or token of a login.
    QVariant payload;
    QString code; ///< Return code of a reply.
    QString text; ///< Error text of a reply, reason of a refusal.

    QByteArray toBytes() const;

    /** Empty for anything that is not a message. */
    static std::optional<WireMessage> fromBytes(const QByteArray& bytes);
};
