#include "src/Base64.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>

namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Two characters for each value of twelve bits: half the look-ups of a table of single characters.
struct CharacterPair
{
    char characters[2];
};

constexpr std::array<CharacterPair, 4096> makePairs()
{
    std::array<CharacterPair, 4096> pairs{};
    for (std::size_t value = 0; value < pairs.size(); ++value) {
        pairs[value] = {{alphabet[value >> 6U], alphabet[value & 63U]}};
    }
    return pairs;
}

constexpr std::array<CharacterPair, 4096> pairs = makePairs();

constexpr std::uint32_t endsGroup = 1U << 31U;

/** Values of the characters, shifted to the place in their group; "=" has the mark where it ends a group. */
constexpr std::array<std::uint32_t, 256> makeValues(unsigned shift, bool mayEndGroup)
{
    std::array<std::uint32_t, 256> values{};
    for (std::uint32_t value = 0; value < 64; ++value) {
        values[static_cast<unsigned char>(alphabet[value])] = value << shift;
    }
    values[static_cast<unsigned char>('=')] = mayEndGroup ? endsGroup : 0;
    return values;
}

constexpr std::array<std::uint32_t, 256> firstValues = makeValues(18, false);
constexpr std::array<std::uint32_t, 256> secondValues = makeValues(12, false);
constexpr std::array<std::uint32_t, 256> thirdValues = makeValues(6, true);
constexpr std::array<std::uint32_t, 256> fourthValues = makeValues(0, true);

constexpr unsigned char noValue = 0x80;

/** Values of the characters; noValue for those outside the alphabet. */
constexpr std::array<unsigned char, 256> makeStrictValues()
{
    std::array<unsigned char, 256> values{};
    for (unsigned char& value : values) {
        value = noValue;
    }
    for (unsigned char value = 0; value < 64; ++value) {
        values[static_cast<unsigned char>(alphabet[value])] = value;
    }
    return values;
}

constexpr std::array<unsigned char, 256> strictValues = makeStrictValues();

/** Text and output of a decoding that goes character by character. */
class GroupDecoder
{
public:
    GroupDecoder(const unsigned char* in, unsigned left, unsigned char* out, unsigned room)
        : m_in(in), m_left(left), m_out(out), m_room(room)
    {
    }

    void decodeGroup()
    {
        std::uint32_t bits = firstValues[take()];
        bits |= secondValues[take()];
        put(bits >> 16U);
        if (peek() != '=') {
            bits |= thirdValues[take()];
            put(bits >> 8U);
            if (peek() != '=') {
                bits |= fourthValues[take()];
                put(bits);
            }
        }
    }

    const unsigned char* in() const { return m_in; }
    unsigned left() const { return m_left; }
    unsigned char* out() const { return m_out; }
    unsigned room() const { return m_room; }

private:
    unsigned char peek() const { return m_left > 0 ? *m_in : 0; }

    unsigned char take()
    {
        if (m_left == 0) {
            return 0;
        }
        --m_left;
        return *m_in++;
    }

    void put(std::uint32_t byte)
    {
        if (m_room > 0) {
            --m_room;
            *m_out++ = static_cast<unsigned char>(byte);
        }
    }

    const unsigned char* m_in;
    unsigned m_left;
    unsigned char* m_out;
    unsigned m_room;
};

} // namespace

int Base64Encode(const unsigned char* in, unsigned inLength, char* out, unsigned outCapacity)
{
    unsigned written = 0;
    unsigned left = inLength;
    for (; left >= 3; left -= 3, in += 3) {
        if (written >= outCapacity) {
            return static_cast<int>(written);
        }
        const std::uint32_t bits = std::uint32_t{in[0]} << 16U | std::uint32_t{in[1]} << 8U | in[2];
        std::memcpy(out + written, pairs[bits >> 12U].characters, 2);
        std::memcpy(out + written + 2, pairs[bits & 4095U].characters, 2);
        written += 4;
    }
    if (left > 0) {
        const std::uint32_t bits =
            std::uint32_t{in[0]} << 16U | (left == 2 ? std::uint32_t{in[1]} << 8U : 0U);
        out[written] = alphabet[bits >> 18U];
        out[written + 1] = alphabet[bits >> 12U & 63U];
        out[written + 2] = left == 2 ? alphabet[bits >> 6U & 63U] : '=';
        out[written + 3] = '=';
        written += 4;
    }
    return static_cast<int>(written);
}

unsigned Base64Decode(const char* in, unsigned inLength, unsigned char* out, unsigned outCapacity)
{
    if (inLength / 4 * 3 > outCapacity) {
        return std::numeric_limits<unsigned>::max();
    }
    if (inLength == 0) {
        return 0;
    }
    const auto* text = reinterpret_cast<const unsigned char*>(in);
    unsigned left = inLength;
    unsigned char* to = out;
    unsigned room = outCapacity;
    for (unsigned groups = (inLength - 1) / 4 + 1; groups > 0; --groups) {
        if (left >= 4 && room >= 3) {
            const std::uint32_t bits =
                firstValues[text[0]] | secondValues[text[1]] | thirdValues[text[2]] | fourthValues[text[3]];
            if ((bits & endsGroup) == 0) {
                to[0] = static_cast<unsigned char>(bits >> 16U);
                to[1] = static_cast<unsigned char>(bits >> 8U);
                to[2] = static_cast<unsigned char>(bits);
                text += 4;
                left -= 4;
                to += 3;
                room -= 3;
                continue;
            }
        }
        GroupDecoder decoder(text, left, to, room);
        decoder.decodeGroup();
        text = decoder.in();
        left = decoder.left();
        to = decoder.out();
        room = decoder.room();
    }
    return static_cast<unsigned>(to - out);
}

std::optional<unsigned> Base64DecodeStrict(const char* in, unsigned inLength, unsigned char* out)
{
    const auto* text = reinterpret_cast<const unsigned char*>(in);
    unsigned left = inLength;
    if (left > 0 && left % 4 == 0 && text[left - 1] == '=') {
        left -= text[left - 2] == '=' ? 2 : 1;
    }
    unsigned char* to = out;
    for (; left >= 4; left -= 4, text += 4, to += 3) {
        const unsigned char first = strictValues[text[0]];
        const unsigned char second = strictValues[text[1]];
        const unsigned char third = strictValues[text[2]];
        const unsigned char fourth = strictValues[text[3]];
        if (((first | second | third | fourth) & noValue) != 0) {
            return std::nullopt;
        }
        to[0] = static_cast<unsigned char>(first << 2U | second >> 4U);
        to[1] = static_cast<unsigned char>(second << 4U | third >> 2U);
        to[2] = static_cast<unsigned char>(third << 6U | fourth);
    }
    std::uint32_t bits = 0;
    for (unsigned i = 0; i < left; ++i) {
        const unsigned char value = strictValues[text[i]];
        if (value == noValue) {
            return std::nullopt;
        }
        bits |= std::uint32_t{value} << (18U - 6U * i);
    }
    for (unsigned i = 0; i + 1 < left; ++i) {
        *to++ = static_cast<unsigned char>(bits >> (16U - 8U * i));
    }
    return static_cast<unsigned>(to - out);
}
