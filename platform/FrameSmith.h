#pragma once

/**
 * @file
 * The interface of the closed capture and packet library, as this system calls it.
 *
 * Every function returns a 32-bit code, 0 for success. The Delete and Release functions take the address of
 * the handle. Records and the order of their fields are a binary contract.
 */

#include "MediaDataPacketInfo.h"

#include <cstddef>
#include <cstdint>

/**
 * @def FRAMESMITH_API
 * Exports the functions from the library that defines them.
 */
#if defined(_WIN32) && defined(FRAMESMITH_LIBRARY)
#define FRAMESMITH_API __declspec(dllexport)
#elif !defined(_WIN32)
#define FRAMESMITH_API __attribute__((visibility("default")))
#else
#define FRAMESMITH_API
#endif

/** Names an object of the library: the library itself, a packet channel or a capture channel. */
using FrameSmithHandle = void*;

/** The version of the interface that FrameSmith_Initial is asked for. */
constexpr std::uint32_t FrameSmithVersion = 0x5000302;

/** The volume, as a setting of FrameSmith_UpdateChannelSettings; its value is 0 to 100. */
constexpr std::uint32_t FrameSmithSettingVolume = 1;

/** The mute switch, as an option of FrameSmith_SetAudioCaptureChannelOption; its value is 0 or 1. */
constexpr std::uint32_t FrameSmithOptionMute = 6;

/** Options of a packet channel, for FrameSmith_CreateChannel. */
struct FrameSmithChannelOptions
{
    std::uint32_t constant0;       ///< 7, a constant of the library's interface.
    std::uint32_t streamType;      ///< Codec of the packets.
    std::uint32_t sampleRate;      ///< Hz.
    std::uint32_t channels;        ///< Channel count.
    std::uint32_t constant16;      ///< 1, a constant of the library's interface.
    std::uint32_t samplesPerFrame; ///< Samples of one packet.
};

static_assert(sizeof(FrameSmithChannelOptions) == 24);
static_assert(offsetof(FrameSmithChannelOptions, streamType) == 4);
static_assert(offsetof(FrameSmithChannelOptions, sampleRate) == 8);
static_assert(offsetof(FrameSmithChannelOptions, channels) == 12);
static_assert(offsetof(FrameSmithChannelOptions, samplesPerFrame) == 20);

/**
 * Receives one packet on a thread of the library. @p delay is the packet's duration in milliseconds.
 * The library delivers the next packet after the callback has returned; the result is not used.
 */
using FrameSmithPacketCallback = std::uint32_t (*)(void* context, TMediaDataPacketInfo* packet, DWORD delay);

/** Options of a capture channel, for FrameSmith_CreateAudioCaptureChannel. */
struct FrameSmithCaptureOptions
{
    std::uint32_t constant0;                 ///< 0, a constant of the library's interface.
    std::uint32_t streamType;                ///< Codec of the packets.
    std::uint32_t sampleRate;                ///< Hz.
    std::uint32_t channels;                  ///< Channel count.
    std::uint32_t constant16;                ///< 1, a constant of the library's interface.
    std::uint32_t samplesPerFrame;           ///< Samples of one packet.
    std::uint32_t bitsPerSample;             ///< Bits of one sample before it is encoded.
    std::uint32_t reserved28[3];             ///< 0.
    void* context;                           ///< First argument of the callback.
    void* reserved48;                        ///< Null.
    FrameSmithPacketCallback packetCallback; ///< Receives the packets.
};

static_assert(sizeof(FrameSmithCaptureOptions) == 64);
static_assert(offsetof(FrameSmithCaptureOptions, streamType) == 4);
static_assert(offsetof(FrameSmithCaptureOptions, samplesPerFrame) == 20);
static_assert(offsetof(FrameSmithCaptureOptions, bitsPerSample) == 24);
static_assert(offsetof(FrameSmithCaptureOptions, context) == 40);
static_assert(offsetof(FrameSmithCaptureOptions, packetCallback) == 56);

extern "C" {

/** Opens the library. @p reserved is 0, @p version is FrameSmithVersion. */
FRAMESMITH_API std::int32_t FrameSmith_Initial(FrameSmithHandle* library, std::uint32_t reserved,
                                               std::uint32_t version);

/** Closes the library and clears the handle. */
FRAMESMITH_API std::int32_t FrameSmith_Release(FrameSmithHandle* library);

/** Creates a packet channel for FrameSmith_MakeAudioPacket. */
FRAMESMITH_API std::int32_t FrameSmith_CreateChannel(FrameSmithHandle library, FrameSmithHandle* channel,
                                                     const FrameSmithChannelOptions* options);

/** Deletes a packet channel and clears the handle. */
FRAMESMITH_API std::int32_t FrameSmith_DeleteChannel(FrameSmithHandle* channel);

/** Creates a microphone capture channel; nothing is captured yet. */
FRAMESMITH_API std::int32_t FrameSmith_CreateAudioCaptureChannel(FrameSmithHandle library,
                                                                 FrameSmithHandle* channel,
                                                                 const FrameSmithCaptureOptions* options);

/** Deletes a capture channel, which ends its capture, and clears the handle. */
FRAMESMITH_API std::int32_t FrameSmith_DeleteAudioCaptureChannel(FrameSmithHandle* channel);

/** Starts the delivery of packets to the channel's callback. */
FRAMESMITH_API std::int32_t FrameSmith_StartAudioCapture(FrameSmithHandle channel);

/** Ends the delivery; no callback runs after the return. */
FRAMESMITH_API std::int32_t FrameSmith_StopAudioCapture(FrameSmithHandle channel);

/** Changes a setting of a capture channel; @p reserved is 0. */
FRAMESMITH_API std::int32_t FrameSmith_UpdateChannelSettings(FrameSmithHandle channel, std::uint32_t setting,
                                                             std::int32_t value, std::uint32_t reserved);

/** Changes an option of a capture channel; @p reserved is 0. */
FRAMESMITH_API std::int32_t FrameSmith_SetAudioCaptureChannelOption(FrameSmithHandle channel,
                                                                    std::uint32_t option, std::int32_t value,
                                                                    std::uint32_t reserved);

/**
 * Makes one packet from a block of PCM.
 *
 * @param channel      a packet channel
 * @param pcm          16-bit samples
 * @param pcmSize      their size in bytes
 * @param bufferSize   size of the record's Buffer in bytes
 * @param reportedSize out: bytes of PCM that the packet carries
 * @param packet       the record to fill; the packet is written to its Buffer
 */
FRAMESMITH_API std::int32_t FrameSmith_MakeAudioPacket(FrameSmithHandle channel, const void* pcm,
                                                       std::uint32_t pcmSize, std::uint32_t bufferSize,
                                                       std::uint32_t* reportedSize,
                                                       TMediaDataPacketInfo* packet);
}
