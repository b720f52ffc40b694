#pragma once

#include <cstddef>
#include <cstdint>

/** Order of the codewords in the bytes of a stream. */
enum G726Packing : std::int32_t
{
    G726PackingNone = 0,  ///< One codeword in each byte.
    G726PackingLeft = 1,  ///< From the most significant bit on.
    G726PackingRight = 2, ///< From the least significant bit on.
};

/** The form of the samples on the linear side. */
enum G726SampleCoding : std::int32_t
{
    G726Linear = 0, ///< 16 bits.
    G726MuLaw = 1,  ///< A byte of G.711 mu-law.
    G726ALaw = 2,   ///< A byte of G.711 A-law, even bits inverted as on the line.
};

/**
 * The state of a G.726 coder between samples, and between packets (ITU-T G.726, clause 4.2). The 16-bit
 * fields wrap on store.
 */
struct G726State
{
    std::int32_t rate;         ///< bit/s: 16000, 24000, 32000, 40000.
    std::int32_t sampleCoding; ///< G726SampleCoding.
    std::int32_t codeBits;     ///< 2 to 5.
    std::int32_t packing;      ///< G726Packing.
    std::int32_t yl;           ///< Slow scale factor, Q15.
    std::int16_t yu;           ///< Fast scale factor, Q9.
    std::int16_t dms;          ///< Short-term mean of F(I), Q9.
    std::int16_t dml;          ///< Long-term mean of F(I), Q11.
    std::int16_t ap;           ///< Speed control, Q8.
    std::int16_t a[2];         ///< Pole predictor, Q14.
    std::int16_t b[6];         ///< Zero predictor, Q14.
    std::int16_t pk[2];        ///< Signs of the partial signal, newest first.
    std::int16_t dq[6];        ///< Differences, floating format, newest first.
    std::int16_t sr[2];        ///< Reconstructed signal, floating format, newest first.
    std::int32_t td;           ///< Whether the next sample may be data (a tone).
    std::uint32_t bitBuffer;   ///< Bits fetched and not yet used.
    std::int32_t bitCount;     ///< Number of these bits.
    std::int32_t (*encode)(G726State* state, std::int32_t sample); ///< 14-bit sample to code.
    std::int32_t (*decode)(G726State* state, std::int32_t code);   ///< Code to a sample as sampleCoding says.
};
static_assert(offsetof(G726State, yu) == 20);
static_assert(offsetof(G726State, a) == 28);
static_assert(offsetof(G726State, dq) == 48);
static_assert(offsetof(G726State, td) == 64);
