#include "protocol/CborReader.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

namespace {

// The first byte of an item: a major type in three bits, then its argument, or how many bytes have it. RFC
// 8949, clause 3.
constexpr unsigned typeShift = 5;
constexpr unsigned informationMask = 31;
constexpr unsigned oneByte = 24;
constexpr unsigned eightBytes = 27;
constexpr unsigned indefinite = 31;
constexpr char breakItem = '\xFF';

enum MajorType : unsigned
{
    TextType = 3,
    ArrayType = 4,
    MapType = 5,
    TagType = 6,
    SimpleType = 7,
};

unsigned majorType(char head)
{
    return static_cast<unsigned char>(head) >> typeShift;
}

unsigned information(char head)
{
    return static_cast<unsigned char>(head) & informationMask;
}

/** Reads the argument behind an item's first byte, and goes on behind it. */
quint64 readArgument(const char*& at)
{
    const unsigned info = information(*at++);
    if (info < oneByte || info == indefinite) {
        return info;
    }
    quint64 value = 0;
    for (unsigned left = 1U << (info - oneByte); left > 0; --left) {
        value = value << 8U | static_cast<unsigned char>(*at++);
    }
    return value;
}

/** Returns a number of 16 bits, binary16 of IEEE 754. */
double halfPrecision(unsigned bits)
{
    const unsigned exponent = bits >> 10U & 31U;
    const unsigned fraction = bits & 1023U;
    double value = 0;
    if (exponent == 31) {
        value = fraction == 0 ? std::numeric_limits<double>::infinity() : std::nan("");
    } else if (exponent == 0) {
        value = std::ldexp(fraction, -24);
    } else {
        value = std::ldexp(fraction + 1024, static_cast<int>(exponent) - 25);
    }
    return bits >> 15U != 0 ? -value : value;
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

/** Returns the length of the character of more than a byte that UTF-8 begins with (RFC 3629, clause 4), or 0.
 */
int lengthOfCharacter(const char* at, const char* end)
{
    const auto first = static_cast<unsigned char>(*at);
    const int length = first >= 0xC2 && first <= 0xDF ? 2 : first >= 0xE0 && first <= 0xEF ? 3 : 4;
    if (first < 0xC2 || first > 0xF4 || end - at < length) {
        return 0;
    }
    for (int i = 1; i < length; ++i) {
        if (!isContinuation(at[i])) {
            return 0;
        }
    }
    const auto second = static_cast<unsigned char>(at[1]);
    const bool tooLong = (first == 0xE0 && second < 0xA0) || (first == 0xF0 && second < 0x90);
    const bool beyond = (first == 0xED && second > 0x9F) || (first == 0xF4 && second > 0x8F);
    return tooLong || beyond ? 0 : length;
}

bool isUtf8(const char* at, const char* end)
{
    constexpr quint64 highBits = 0x8080808080808080U;
    while (at < end) {
        quint64 eight = 0;
        while (end - at >= static_cast<std::ptrdiff_t>(sizeof(eight))) {
            std::memcpy(&eight, at, sizeof(eight));
            if ((eight & highBits) != 0) {
                break;
            }
            at += sizeof(eight);
        }
        while (at < end && static_cast<signed char>(*at) >= 0) {
            ++at;
        }
        if (at < end) {
            const int length = lengthOfCharacter(at, end);
            if (length == 0) {
                return false;
            }
            at += length;
        }
    }
    return true;
}

/** Checks items without going into each other by calls: how deep they nest is the sender's choice. */
class Checker
{
public:
    explicit Checker(const QByteArray& bytes) : m_at(bytes.constData()), m_end(m_at + bytes.size()) {}

    bool isOneItem()
    {
        m_levels.push_back({1, false, false});
        while (!m_levels.empty()) {
            Level& level = m_levels.back();
            if (!level.indefinite && level.left == 0) {
                m_levels.pop_back();
            } else if (level.indefinite && m_at < m_end && *m_at == breakItem) {
                if (level.pairs && level.left % 2 != 0) {
                    return false; // a key without its value
                }
                ++m_at;
                m_levels.pop_back();
            } else {
                level.left +=
                    level.indefinite ? 1U : ~quint64{0}; // one more of it is there, or one less to come
                if (!checkItem()) {
                    return false;
                }
            }
        }
        return m_at == m_end;
    }

private:
    struct Level
    {
        quint64 left;
        bool indefinite;
        bool pairs;
    };

    bool checkItem()
    {
        const auto left = [this] { return static_cast<quint64>(m_end - m_at); };
        if (left() == 0) {
            return false;
        }
        const unsigned type = majorType(*m_at);
        const unsigned info = information(*m_at);
        if ((info > eightBytes && info != indefinite) ||
            (info >= oneByte && info <= eightBytes && left() <= quint64{1} << (info - oneByte))) {
            return false;
        }
        const quint64 argument = readArgument(m_at);
        switch (type) {
        case ArrayType:
        case MapType:
            if (info == indefinite) {
                return enter({0, true, type == MapType});
            }
            return argument <= left() && enter({type == MapType ? argument * 2 : argument, false, false});
        case TagType:
            return info != indefinite && enter({1, false, false});
        case SimpleType:
            return info != indefinite && (info != oneByte || argument > informationMask);
        default:
            break;
        }
        if (type < 2) {
            return info != indefinite;
        }
        return info == indefinite ? checkPieces(type) : checkString(type, argument);
    }

    bool enter(const Level& level)
    {
        m_levels.push_back(level);
        return m_levels.size() <= CborReader::maxDepth + 1U;
    }

    bool checkString(unsigned type, quint64 length)
    {
        if (length > static_cast<quint64>(m_end - m_at)) {
            return false;
        }
        const char* const begin = m_at;
        m_at += length;
        return type != TextType || isUtf8(begin, m_at);
    }

    bool checkPieces(unsigned type)
    {
        while (m_at < m_end && *m_at != breakItem) {
            if (majorType(*m_at) != type || information(*m_at) == indefinite || !checkItem()) {
                return false;
            }
        }
        return m_at++ < m_end;
    }

    const char* m_at;
    const char* m_end;
    std::vector<Level> m_levels;
};

} // namespace

bool isCbor(const QByteArray& bytes)
{
    return Checker(bytes).isOneItem();
}

CborReader::Type CborReader::type() const
{
    const unsigned major = majorType(*m_at);
    return major == SimpleType && information(*m_at) > oneByte ? Real : static_cast<Type>(major);
}

quint64 CborReader::argument()
{
    return readArgument(m_at);
}

std::optional<qint64> CborReader::integer(double* rounded)
{
    const bool negative = type() == Negative;
    const quint64 value = argument();
    if (value <= static_cast<quint64>(std::numeric_limits<qint64>::max())) {
        return negative ? -1 - static_cast<qint64>(value) : static_cast<qint64>(value);
    }
    *rounded = negative ? -1.0 - static_cast<double>(value) : static_cast<double>(value);
    return std::nullopt;
}

double CborReader::real()
{
    constexpr unsigned twoBytes = 25;
    constexpr unsigned fourBytes = 26;
    const unsigned info = information(*m_at);
    const quint64 bits = argument();
    if (info == twoBytes) {
        return halfPrecision(static_cast<unsigned>(bits));
    }
    if (info == fourBytes) {
        const auto single = static_cast<quint32>(bits);
        float value = 0;
        std::memcpy(&value, &single, sizeof(single));
        return static_cast<double>(value);
    }
    double value = 0;
    std::memcpy(&value, &bits, sizeof(bits));
    return value;
}

std::optional<std::string_view> CborReader::wholeString()
{
    if (information(*m_at) == indefinite) {
        return std::nullopt;
    }
    const auto length = static_cast<std::size_t>(argument());
    const char* const begin = m_at;
    m_at += length;
    return std::string_view(begin, length);
}

QByteArray CborReader::string()
{
    if (const auto whole = wholeString()) {
        return QByteArray::fromRawData(whole->data(), static_cast<int>(whole->size()));
    }
    QByteArray pieces;
    for (++m_at; *m_at != breakItem;) {
        const auto piece = *wholeString();
        pieces.append(piece.data(), static_cast<int>(piece.size()));
    }
    ++m_at;
    return pieces;
}

QString CborReader::text()
{
    const QByteArray utf8 = string();
    return QString::fromUtf8(utf8.constData(), utf8.size()); // which may have zeros
}

CborReader::Entries CborReader::enter()
{
    const bool open = information(*m_at) == indefinite;
    return {argument(), open};
}

bool CborReader::hasNext(Entries& entries)
{
    if (entries.indefinite) {
        const bool ends = *m_at == breakItem;
        m_at += ends ? 1 : 0;
        return !ends;
    }
    return entries.left-- > 0;
}

void CborReader::skip()
{
    switch (type()) {
    case Bytes:
    case Text:
        if (!wholeString()) {
            string();
        }
        break;
    case Array:
        for (Entries entries = enter(); hasNext(entries);) {
            skip();
        }
        break;
    case Map:
        for (Entries entries = enter(); hasNext(entries);) {
            skip();
            skip();
        }
        break;
    case Tag:
        argument();
        skip();
        break;
    default:
        argument();
    }
}
