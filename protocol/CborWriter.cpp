#include "protocol/CborWriter.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace {

enum MajorType : unsigned // RFC 8949, clause 3.1
{
    Unsigned = 0,
    Negative = 1,
    Bytes = 2,
    Text = 3,
    Array = 4,
    Map = 5,
    Tag = 6,
};

constexpr char falseItem = '\xF4';
constexpr char trueItem = '\xF5';
constexpr char undefinedItem = '\xF7';
constexpr char doubleHead = '\xFB';

/** The first byte of an item. */
char initialByte(unsigned type, unsigned information)
{
    return static_cast<char>(type << 5U | information);
}

bool isAscii(const QString& text)
{
    constexpr ushort firstOther = 0x80;
    return std::all_of(text.begin(), text.end(), [](QChar each) { return each.unicode() < firstOther; });
}

} // namespace

void CborWriter::head(unsigned type, quint64 argument)
{
    constexpr unsigned mostInside = 23;
    constexpr unsigned oneByte = 24;
    if (argument <= mostInside) {
        m_out.append(initialByte(type, static_cast<unsigned>(argument)));
        return;
    }
    unsigned width = 0; // 1, 2, 4 or 8 bytes, as a power of two
    while (width < 3 && argument >> (8U << width) != 0) {
        ++width;
    }
    const int length = 1 << width;
    char bytes[8];
    qToBigEndian(argument, bytes);
    m_out.append(initialByte(type, oneByte + width));
    m_out.append(bytes + sizeof(bytes) - length, length);
}

void CborWriter::undefined()
{
    m_out.append(undefinedItem);
}

void CborWriter::boolean(bool value)
{
    m_out.append(value ? trueItem : falseItem);
}

void CborWriter::integer(qint64 value)
{
    const auto bits = static_cast<quint64>(value);
    head(value < 0 ? Negative : Unsigned, value < 0 ? ~bits : bits);
}

void CborWriter::real(double value)
{
    quint64 bits = 0;
    std::memcpy(&bits, &value, sizeof(bits));
    char bytes[sizeof(bits)];
    qToBigEndian(bits, bytes);
    m_out.append(doubleHead);
    m_out.append(bytes, sizeof(bytes));
}

void CborWriter::bytes(const QByteArray& value)
{
    head(Bytes, static_cast<quint64>(value.size()));
    m_out.append(value);
}

void CborWriter::text(const QString& value)
{
    if (isAscii(value)) {
        char* out = asciiText(value.size());
        for (const QChar character : value) {
            *out++ = static_cast<char>(character.unicode());
        }
        return;
    }
    const QByteArray utf8 = value.toUtf8();
    head(Text, static_cast<quint64>(utf8.size()));
    m_out.append(utf8);
}

char* CborWriter::asciiText(int length)
{
    head(Text, static_cast<quint64>(length));
    const int begin = m_out.size();
    m_out.resize(begin + length);
    return m_out.data() + begin;
}

void CborWriter::tag(quint64 number)
{
    head(Tag, number);
}

void CborWriter::array(int length)
{
    head(Array, static_cast<quint64>(length));
}

void CborWriter::map(int length)
{
    head(Map, static_cast<quint64>(length));
}
