#pragma once

#include <QByteArray>
#include <QVariant>

#include <optional>
#include <string_view>

class CborReader;

/**
 * The payload of a TalkData command as a server needs it: its texts are not taken out of the message that
 * they came in. docs/PROTOCOL.md has the command.
 */
struct TalkDataPayload
{
    QByteArray message;        ///< What the texts are in.
    std::string_view targets;  ///< In ASCII, at most Limits::maxTargetsLength.
    std::string_view talkData; ///< In ASCII, at most Limits::maxTalkDataLength.
    QVariant sequence;         ///< An int or a uint; invalid for none.

    /**
     * Reads the payload of a message.
     *
     * @param reader is at the payload, in @p message
     * @return empty for a payload that has something else, or something twice: it is no packet, or has to be
     * looked at more closely
     */
    static std::optional<TalkDataPayload> read(CborReader& reader, const QByteArray& message);

    /** Returns what any other reader of the message gets. */
    QVariantMap toMap() const;
};
