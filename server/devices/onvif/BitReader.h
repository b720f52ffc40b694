#pragma once

#include <cstdint>

/** Reads bits from the most significant one on. Behind the end there are zeros. */
class BitReader
{
public:
    /** @param data outlives the object @param size its bytes */
    BitReader(const void* data, int size) : m_data(static_cast<const std::uint8_t*>(data)), m_bits(size * 8LL)
    {
    }

    /** Returns the next bits as a number. @param count 0 to 32 */
    std::uint32_t read(int count)
    {
        std::uint32_t value = 0;
        for (int i = 0; i < count; ++i, ++m_next) {
            const unsigned bit = m_next < m_bits ? m_data[m_next / 8] >> (7 - m_next % 8) & 1U : 0U;
            value = value << 1U | bit;
        }
        return value;
    }

    /** Whether all that was read was there. */
    bool isGood() const { return m_next <= m_bits; }

private:
    const std::uint8_t* m_data;
    long long m_bits;
    long long m_next = 0;
};
