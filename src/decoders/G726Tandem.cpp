#include "src/decoders/G726Tandem.h"

#include "src/decoders/G726State.h"
#include "src/decoders/Integer.h"

#include <algorithm>

namespace {

constexpr std::int32_t positiveSign = 0x80;
constexpr std::int32_t evenBits = 0x55; // inverted on an A-law line
constexpr std::int32_t maxALaw = 4095;
constexpr std::int32_t maxMuLaw = 8158;
constexpr std::int32_t muLawBias = 33;
constexpr std::int32_t unrepresentable = -32768; // has no magnitude in 16 bits

/** Bytes of a law as numbers from the lowest signal, 0, to the highest, 255. */
std::int32_t rankOf(std::int32_t law, std::int32_t byte)
{
    const std::int32_t plain = law == G726ALaw ? byte ^ evenBits : byte ^ 0x7F;
    const std::int32_t magnitude = plain & 0x7F;
    return (plain & positiveSign) != 0 ? 128 + magnitude : 127 - magnitude;
}

std::int32_t byteOf(std::int32_t law, std::int32_t rank)
{
    const std::int32_t plain = rank >= 128 ? positiveSign | (rank - 128) : 127 - rank;
    return law == G726ALaw ? plain ^ evenBits : plain ^ 0x7F;
}

std::int32_t compressALaw(std::int32_t signal)
{
    const bool negative = signal < 0;
    const std::int32_t halved = signal == unrepresentable ? 0
                                : negative                ? ((-signal + 1) >> 1) - 1
                                                          : signal >> 1;
    const std::int32_t magnitude = std::min(halved, maxALaw);
    const int segment = std::max(topBitIndex(static_cast<std::uint32_t>(magnitude)) - 4, 0);
    const std::int32_t code = segment == 0 ? magnitude >> 1 : segment << 4 | (magnitude >> segment & 15);
    return (negative ? code : code | positiveSign) ^ evenBits;
}

std::int32_t compressMuLaw(std::int32_t signal)
{
    const bool negative = signal < 0;
    const std::int32_t magnitude =
        (signal == unrepresentable ? 0 : std::min(negative ? -signal : signal, maxMuLaw)) + muLawBias;
    const int segment = topBitIndex(static_cast<std::uint32_t>(magnitude)) - 5;
    const std::int32_t code = segment << 4 | (magnitude >> (segment + 1) & 15);
    return (negative ? code : code | positiveSign) ^ 0x7F;
}

} // namespace

std::int32_t G726Tandem::compress(std::int32_t law, std::int32_t signal)
{
    return law == G726ALaw ? compressALaw(signal) : compressMuLaw(signal);
}

std::int32_t G726Tandem::expand(std::int32_t law, std::int32_t byte)
{
    const std::int32_t plain = law == G726ALaw ? byte ^ evenBits : byte ^ 0x7F;
    const std::int32_t segment = plain >> 4 & 7;
    const std::int32_t step = (plain & 15) * 2;
    std::int32_t magnitude = 0;
    if (law == G726ALaw) {
        magnitude = segment == 0 ? (step + 1) * 2 : (step + 33) << segment;
    } else {
        magnitude = ((step + muLawBias) << segment) - muLawBias;
    }
    return (plain & positiveSign) != 0 ? magnitude : -magnitude;
}

std::int32_t G726Tandem::nextLower(std::int32_t law, std::int32_t byte)
{
    // Both zeros of mu-law are the same signal: a step from one of them passes over the other.
    const std::int32_t step = law == G726MuLaw && byte == 0xFF ? 2 : 1;
    return byteOf(law, std::max(rankOf(law, byte) - step, 0));
}

std::int32_t G726Tandem::nextHigher(std::int32_t law, std::int32_t byte)
{
    const std::int32_t step = law == G726MuLaw && byte == 0x7F ? 2 : 1;
    return byteOf(law, std::min(rankOf(law, byte) + step, 255));
}
