#include "Base64.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

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
