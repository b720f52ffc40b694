#pragma once

#include "onvif/XmlElement.h"

#include <QStringList>

#include <optional>

/** Messages of SOAP 1.2 (SOAP 1.2 Part 1); replies in SOAP 1.1 are read, too. */
struct SoapMessage
{
    static constexpr int maxBytes = 256 << 10; ///< Of a reply.

    /** What a device answers in place of a result. */
    struct Fault
    {
        QStringList codes; ///< Code and subcodes without prefixes, the most general one first.
        QString reason;    ///< For people; may be empty.
    };

    XmlElement header;          ///< Without children when there is none.
    XmlElement body;            ///< What is in the body; without a name when it is a fault.
    std::optional<Fault> fault; ///< Empty for a result.

    /** Makes a message of its header's and its body's content: XML with the namespaces of their own. */
    static QByteArray write(const QString& header, const QString& body);

    /** Reads a message; empty for what is none, or has more bytes than the limit. */
    static std::optional<SoapMessage> read(const QByteArray& bytes, int limit);
};
