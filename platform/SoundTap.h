#pragma once

#include <cstddef>
#include <cstdint>

/**
 * @def SOUNDTAP_API
 * Exports the function from the library that defines it.
 */
#if defined(_WIN32) && defined(SOUNDTAP_LIBRARY)
#define SOUNDTAP_API __declspec(dllexport)
#elif !defined(_WIN32)
#define SOUNDTAP_API __attribute__((visibility("default")))
#else
#define SOUNDTAP_API
#endif

/** The argument and the result of SoundTap_GetWAVInfo; the caller clears all but the path. */
struct SoundTapWavInfo
{
    const char* path;         ///< In: the file's name in the local 8-bit encoding.
    std::uint32_t reserved8;  ///< Not read.
    std::uint32_t sampleRate; ///< Out: samples per second and channel.
    std::uint32_t reserved16; ///< Not read.
    std::uint32_t dataBegin;  ///< Out: file offset of the first sample.
    std::uint32_t dataEnd;    ///< Out: file offset behind the last sample.
    std::uint32_t reserved28; ///< Not read.
};

static_assert(sizeof(SoundTapWavInfo) == 32);
static_assert(offsetof(SoundTapWavInfo, sampleRate) == 12);
static_assert(offsetof(SoundTapWavInfo, dataBegin) == 20);
static_assert(offsetof(SoundTapWavInfo, dataEnd) == 24);

/** Reads the header of a WAV file. Returns a negative value on failure. Thread-safe. */
extern "C" SOUNDTAP_API std::int32_t SoundTap_GetWAVInfo(SoundTapWavInfo* info);
