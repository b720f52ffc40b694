#include "src/decoders/G726.h"

#include "src/decoders/G726Step.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::int16_t zeroInHistory = 32; // floating format
constexpr std::int32_t startOfYl = 34816;
constexpr std::int16_t startOfYu = 544;

template<class Rate>
void setRate(G726State& state)
{
    state.codeBits = Rate::codeBits;
    state.encode = &G726Step<Rate>::encode;
    state.decode = &G726Step<Rate>::decode;
}

bool setRate(G726State& state, std::int32_t bitRate)
{
    switch (bitRate) {
    case 16000:
        setRate<G726Rate16>(state);
        return true;
    case 24000:
        setRate<G726Rate24>(state);
        return true;
    case 32000:
        setRate<G726Rate32>(state);
        return true;
    case 40000:
        setRate<G726Rate40>(state);
        return true;
    default:
        return false;
    }
}

/** Takes codewords out of bytes; left-over bits stay in the state. */
class CodewordReader
{
public:
    CodewordReader(G726State& state, const std::uint8_t* data, std::int32_t size)
        : m_state(state), m_next(data), m_end(data + size),
          m_mask((1U << static_cast<unsigned>(state.codeBits)) - 1U)
    {
    }

    /** False when no codeword is complete. */
    bool read(std::int32_t& code)
    {
        if (m_state.packing == G726PackingNone) {
            if (m_next == m_end) {
                return false;
            }
            code = *m_next++;
            return true;
        }
        const bool left = m_state.packing == G726PackingLeft;
        if (m_state.bitCount < m_state.codeBits && !fetch(left)) {
            return false;
        }
        m_state.bitCount -= m_state.codeBits;
        if (left) {
            // Spent bits stay above the counted ones and fall off the top with time.
            code = static_cast<std::int32_t>(m_state.bitBuffer >> static_cast<unsigned>(m_state.bitCount) &
                                             m_mask);
        } else {
            code = static_cast<std::int32_t>(m_state.bitBuffer & m_mask);
            m_state.bitBuffer >>= static_cast<unsigned>(m_state.codeBits);
        }
        return true;
    }

private:
    bool fetch(bool left)
    {
        if (m_next == m_end) {
            return false;
        }
        const std::uint32_t byte = *m_next++;
        m_state.bitBuffer = left ? m_state.bitBuffer << 8U | byte
                                 : m_state.bitBuffer | byte << static_cast<unsigned>(m_state.bitCount);
        m_state.bitCount += 8;
        return true;
    }

    G726State& m_state;
    const std::uint8_t* m_next;
    const std::uint8_t* m_end;
    std::uint32_t m_mask;
};

} // namespace

G726State* G726_Create(G726State* state, std::int32_t bitRate, std::int32_t extCoding, std::int32_t packing)
{
    G726State fresh{};
    if (!setRate(fresh, bitRate)) {
        return nullptr;
    }
    if (state == nullptr) {
        state = static_cast<G726State*>(std::malloc(sizeof(G726State)));
        if (state == nullptr) {
            return nullptr;
        }
    }
    fresh.rate = bitRate;
    fresh.sampleCoding = extCoding;
    fresh.packing = packing;
    fresh.yl = startOfYl;
    fresh.yu = startOfYu;
    for (std::int16_t& word : fresh.dq) {
        word = zeroInHistory;
    }
    for (std::int16_t& word : fresh.sr) {
        word = zeroInHistory;
    }
    return new (state) G726State(fresh);
}

std::int32_t G726_Release(G726State* state)
{
    std::free(state);
    return 0;
}

std::int32_t G726_DecodeBytes(G726State* state, void* samples, const std::uint8_t* data, std::int32_t size)
{
    CodewordReader reader(*state, data, size);
    std::int32_t code = 0;
    std::int32_t count = 0;
    if (state->sampleCoding == G726Linear) {
        auto* out = static_cast<std::uint8_t*>(samples);
        while (reader.read(code)) {
            const auto sample = static_cast<std::int16_t>(state->decode(state, code));
            std::memcpy(out + static_cast<std::ptrdiff_t>(count) * 2, &sample, sizeof sample);
            ++count;
        }
    } else {
        auto* out = static_cast<std::uint8_t*>(samples);
        while (reader.read(code)) {
            out[count++] = static_cast<std::uint8_t>(state->decode(state, code));
        }
    }
    return count;
}
