#pragma once

#include <cstdint>
#include <vector>

struct SwrContext;

/**
 * A conversion from decoded PCM to the output device's format, by libswresample. It is continuous from block
 * to block. Used by one thread at a time.
 *
 * Sample formats are numbered as AVSampleFormat: 0 unsigned 8 bits, 1 signed 16, 2 signed 32, 3 float; all
 * interleaved.
 */
class SwrConverter
{
public:
    SwrConverter() = default;
    SwrConverter(SwrConverter&& other) noexcept; ///< Leaves @p other as after construction.
    ~SwrConverter();
    SwrConverter(const SwrConverter&) = delete;
    SwrConverter& operator=(const SwrConverter&) = delete;
    SwrConverter& operator=(SwrConverter&&) = delete;

    /**
     * Sets up the conversion. Called once.
     *
     * @param outFormat   number of the output's sample format
     * @param outRate     Hz, 1 to 768000
     * @param outChannels 1 to 8
     * @param inFormat    number of the input's sample format
     * @param inRate      Hz, 1 to 768000
     * @param inChannels  1 to 8
     * @return 0: no conversion is needed; 1: it is set up; -1: it is not possible
     */
    int Setup(int outFormat, int outRate, int outChannels, int inFormat, int inRate, int inChannels);

    /**
     * Converts the first @p size bytes of a block in place. Input whose output would not fit into the block
     * is dropped.
     *
     * @param block pcmBlockSize bytes
     * @param size  bytes of input
     * @return bytes of converted PCM; 0 on failure
     */
    int ConvertInPlace(std::uint8_t* block, int size);

private:
    SwrContext* m_context = nullptr; ///< Null when no conversion is needed.
    int m_outBytesPerSample = 0;
    int m_outChannels = 0;
    int m_outRate = 0;
    int m_inBytesPerSample = 0;
    int m_inChannels = 0;
    int m_inRate = 0;
    std::vector<std::uint8_t> m_input; ///< Room for a block; empty when no conversion is needed.
};
