#pragma once

#include <QByteArray>
#include <QString>

/**
 * Writes items of CBOR (RFC 8949) behind each other, each with the shortest head. What is inside an array, a
 * map or a tag follows it.
 */
class CborWriter
{
public:
    /** @param out is appended to, and outlives the object */
    explicit CborWriter(QByteArray& out) : m_out(out) {}

    void undefined();
    void boolean(bool value);
    void integer(qint64 value);
    void real(double value);             ///< With 64 bits.
    void bytes(const QByteArray& value); ///< A byte string.
    void text(const QString& value);     ///< In UTF-8; half a surrogate pair becomes a question mark.

    /** Makes room for a text of ASCII alone. @return where its @p length characters are to be put, until the
     * next item is written */
    char* asciiText(int length);

    void tag(quint64 number); ///< Of the item that follows.
    void array(int length);   ///< So many items follow.
    void map(int length);     ///< So many pairs of items follow.

    /** Writes items that somebody else has encoded. */
    void encoded(const QByteArray& items) { m_out.append(items); }

private:
    void head(unsigned type, quint64 argument);

    QByteArray& m_out;
};
