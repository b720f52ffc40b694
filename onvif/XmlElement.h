#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

/**
 * An element of an XML document that came from outside, with what is in it. Elements are found by their local
 * names: devices use prefixes, and now and then namespaces, of their own.
 */
struct XmlElement
{
    static constexpr int maxDepth = 32;       ///< Elements inside each other.
    static constexpr int maxElements = 8192;  ///< Of a document.
    static constexpr int maxAttributes = 256; ///< Of an element, namespaces included.

    QString name;                     ///< Without its prefix.
    QString space;                    ///< The namespace.
    QString token;                    ///< The attribute "token", by which ONVIF names its entities.
    QString text;                     ///< Its own characters, without blanks around them.
    std::vector<XmlElement> children; ///< In the order of the document.

    /**
     * Reads a document in UTF-8.
     *
     * @param maxBytes of a document that is read at all
     * @return empty for what is not well-formed, is beyond a limit, or has a document type declaration, which
     *         SOAP does not allow (SOAP 1.2 Part 1, clause 5) and which could declare entities
     */
    static std::optional<XmlElement> read(const QByteArray& document, int maxBytes);

    /** Returns the first child of a name; null when there is none. */
    const XmlElement* child(const char* wanted) const;
    /** Returns the first element of a name in the order of the document, however deep; null when there is
     * none. */
    const XmlElement* find(const char* wanted) const;
    /** Returns all elements of a name, however deep, but none inside another one of them. They live as long
     * as this object. */
    std::vector<const XmlElement*> all(const char* wanted) const;
    /** Returns the text of what find returns; empty when there is none. */
    QString textOf(const char* wanted) const;
};

/**
 * Makes a text from outside fit for people, a terminal and a log: one line without characters that cannot be
 * seen.
 *
 * @param maxLength in characters; what is longer is cut
 */
QString plainText(const QString& text, int maxLength = 128);
