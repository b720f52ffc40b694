#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <string_view>

/**
 * Returns whether bytes are one whole item of CBOR (RFC 8949) and nothing behind it: well-formed
 * (clause 5.3.1), each piece of a text in UTF-8, and arrays, maps and tags nested at most
 * CborReader::maxDepth deep. Takes no memory for lengths that it reads. Any thread.
 */
bool isCbor(const QByteArray& bytes);

/**
 * Reads the items of CBOR one by one. Only of bytes that isCbor has passed: nothing is checked again. Arrays
 * and maps are entered, and what follows a tag is an item of its own.
 */
class CborReader
{
public:
    static constexpr int maxDepth = 1024; ///< Arrays, maps and tags inside each other.

    /** Types of items. */
    enum Type
    {
        Unsigned,
        Negative, ///< -1 - argument().
        Bytes,
        Text,
        Array,
        Map,
        Tag,    ///< argument() is its number, and the item follows.
        Simple, ///< argument() is one of those below, or has no meaning.
        Real,
    };
    static constexpr quint64 falseValue = 20;     ///< Argument of a simple value.
    static constexpr quint64 trueValue = 21;      ///< Argument of a simple value.
    static constexpr quint64 undefinedValue = 23; ///< Argument of a simple value.

    /** What is left of an array or a map. */
    struct Entries
    {
        quint64 left;    ///< Items, or pairs.
        bool indefinite; ///< A mark ends them.
    };

    /** @param bytes outlive the object */
    explicit CborReader(const QByteArray& bytes) : m_at(bytes.constData()), m_end(m_at + bytes.size()) {}

    /** Returns the type of the next item. */
    Type type() const;

    /** Reads the argument of a number, a tag or a simple value. */
    quint64 argument();

    /** Reads a number; empty when no 64 bits with a sign can hold it, and @p rounded is it then. */
    std::optional<qint64> integer(double* rounded);

    /** Reads a number with a fraction, of any width. */
    double real();

    /** Reads a byte string or the UTF-8 of a text; refers to the bytes that are read where it can. */
    QByteArray string();

    /** Reads the same if it is in one piece. @return empty, and nothing is read, if it is not */
    std::optional<std::string_view> wholeString();

    /** Reads a text. */
    QString text();

    /** Begins to read the entries of an array or a map. */
    Entries enter();

    /** Returns whether there is another entry, which is read next. */
    bool hasNext(Entries& entries);

    /** Reads an item and what is inside it. */
    void skip();

private:
    const char* m_at;
    const char* m_end;
};
