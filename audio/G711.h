#pragma once

#include "src/decoders/G726State.h"
#include "src/decoders/G726Tandem.h"

#include <QByteArray>

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

/** Samples of G.711 (ITU-T G.711) and from one law to the other. */
namespace G711 {

/** Returns the 14-bit sample of a byte of mu-law. */
inline std::int32_t expandMuLaw(char byte)
{
    return G726Tandem::expand(G726MuLaw, static_cast<std::uint8_t>(byte));
}

/** Returns the 16-bit samples of all bytes of mu-law. */
inline const std::array<std::int16_t, 256>& muLawSamples()
{
    static const auto samples = [] {
        std::array<std::int16_t, 256> made{};
        for (std::size_t byte = 0; byte < made.size(); ++byte) {
            made[byte] = static_cast<std::int16_t>(expandMuLaw(static_cast<char>(byte)) * 4);
        }
        return made;
    }();
    return samples;
}

/** Returns the 16-bit samples of mu-law. */
inline std::vector<std::int16_t> decodeMuLaw(const QByteArray& bytes)
{
    const auto& values = muLawSamples();
    std::vector<std::int16_t> samples(static_cast<std::size_t>(bytes.size()));
    std::transform(bytes.begin(), bytes.end(), samples.begin(),
                   [&](char byte) { return values[static_cast<std::uint8_t>(byte)]; });
    return samples;
}

/** Returns the mu-law of 16-bit samples. */
inline QByteArray encodeMuLaw(const std::vector<std::int16_t>& samples)
{
    QByteArray bytes;
    bytes.reserve(static_cast<int>(samples.size()));
    for (const std::int16_t sample : samples) {
        bytes.append(static_cast<char>(G726Tandem::compress(G726MuLaw, sample >> 2)));
    }
    return bytes;
}

/** Returns the 16-bit samples of A-law. */
inline std::vector<std::int16_t> decodeALaw(const QByteArray& bytes)
{
    std::vector<std::int16_t> samples;
    samples.reserve(static_cast<std::size_t>(bytes.size()));
    for (const char byte : bytes) {
        samples.push_back(
            static_cast<std::int16_t>(G726Tandem::expand(G726ALaw, static_cast<std::uint8_t>(byte)) * 4));
    }
    return samples;
}

/** Returns the A-law of mu-law. */
inline QByteArray muLawToALaw(const QByteArray& muLaw)
{
    QByteArray bytes = muLaw;
    for (char& byte : bytes) {
        byte = static_cast<char>(G726Tandem::compress(G726ALaw, expandMuLaw(byte)));
    }
    return bytes;
}

} // namespace G711
