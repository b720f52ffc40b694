#pragma once

#include "protocol/TalkDataPayload.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

#include <optional>

/**
 * One message between a client and a server in another process: a CBOR map, the payload of a binary WebSocket
 * message.
 *
 *   client                                         server
 *   Login   user, password or token         -->
 *                                           <--    Welcome, or Refused with a text and the end
 *   Command id, name, payload               -->
 *                                           <--    Reply   id, name, payload, code, text
 *                                           <--    Event   name, payload
 *
 * Each reply to a command carries the command's id, also the second and later ones, such as the progress of a
 * playback. A reply that answers no command carries 0.
 */
struct WireMessage
{
    /** Kinds of messages. */
    enum Kind
    {
        Login = 1,   ///< From the client, first.
        Welcome = 2, ///< The login was right.
        Refused = 3, ///< The login was wrong; the connection ends.
        Command = 4, ///< From the client.
        Reply = 5,   ///< To a command.
        Event = 6,   ///< From the server.
    };

    /** How the payload of a TalkData command is read. */
    enum TalkDataAs
    {
        Variants, ///< As that of any other command.
        Texts,    ///< To talkData in place of the payload, if it is a regular one.
    };

    static constexpr int version = 1; ///< Of the protocol; messages of other versions are refused.

    Kind kind = Login; ///< The message's kind.
    quint32 id = 0;    ///< Of a command and of its replies; 0 for none.
    QString name;      ///< Of a command, a reply's command or an event; the user of a login.
    QString secret;    ///< Password or token of a login.
    QVariant payload;  ///< Of a command, a reply or an event; invalid for none.
    QString code;      ///< Return code of a reply.
    QString text;      ///< Error text of a reply, reason of a refusal.

    QByteArray encodedPayload; ///< A payload that is CBOR already, in place of the other; never read.
    std::optional<TalkDataPayload> talkData; ///< See TalkDataAs; never written.

    /** Returns the message as CBOR. */
    QByteArray toBytes() const;

    /**
     * Reads a message. Of two values of the same key the first one counts.
     *
     * @param error receives the reason of a failure, with the unknown version, kind or key; at most 100 bytes
     *              of UTF-8, printable; may be null
     * @param as    what a server that handles talk packets wants of them
     * @return empty for any other bytes
     */
    static std::optional<WireMessage> fromBytes(const QByteArray& bytes, QString* error = nullptr,
                                                TalkDataAs as = Variants);
};
