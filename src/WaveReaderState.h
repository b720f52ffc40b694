#pragma once

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

/** Where FrameSmithWrapper::ParseWaveToPacket stands in its file. */
struct WaveReaderState
{
    static constexpr std::size_t bufferSize = 19200;

    WaveReaderState() = default;
    WaveReaderState(const WaveReaderState&) = delete;
    WaveReaderState& operator=(const WaveReaderState&) = delete;

    ~WaveReaderState()
    {
        closeFile();
        std::free(reserved);
    }

    void closeFile()
    {
        if (file != nullptr) {
            std::fclose(file);
            file = nullptr;
        }
    }

    std::uint32_t sampleRate = 0;
    std::FILE* file = nullptr;
    std::uint32_t remaining = 0; ///< Bytes up to the data's end; written, never read.
    std::array<std::uint8_t, bufferSize> readBuffer{};
    std::array<std::uint8_t, bufferSize> packetBuffer{};
    void* reserved = nullptr;
    std::uint32_t currentPosition = 0; ///< File offset of the block being read; 0: start anew.
    std::uint32_t nextPosition = 0;    ///< File offset of the next block.
};
