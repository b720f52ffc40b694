#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/** The position of FrameSmithWrapper::ParseWaveToPacket in its file, and its buffers. */
struct WaveReaderState
{
    static constexpr std::size_t bufferSize = 19200; ///< Bytes of each buffer.

    WaveReaderState() = default;
    WaveReaderState(const WaveReaderState&) = delete;
    WaveReaderState& operator=(const WaveReaderState&) = delete;

    ~WaveReaderState()
    {
        closeFile();
        std::free(reserved);
    }

    /** Closes the file if it is open. */
    void closeFile()
    {
        if (file != nullptr) {
            std::fclose(file);
            file = nullptr;
        }
    }

    std::uint32_t sampleRate = 0; ///< Hz.
    std::FILE* file = nullptr;    ///< Open during a call, and after one whose seek failed.
    std::uint32_t remaining = 0;  ///< Bytes up to the data's end; written, never read.
    std::array<std::uint8_t, bufferSize> readBuffer{};   ///< Samples of the block.
    std::array<std::uint8_t, bufferSize> packetBuffer{}; ///< The packet made of the block.
    void* reserved = nullptr;                            ///< Freed with the record; not used.
    std::uint32_t currentPosition = 0; ///< File offset of the block being read; 0: start at the first sample.
    std::uint32_t nextPosition = 0;    ///< File offset of the next block.
};
