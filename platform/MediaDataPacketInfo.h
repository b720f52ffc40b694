#pragma once

/**
 * @file
 * The media packet record that the capture library fills and that the playback path consumes.
 */

#include <cstddef>
#include <cstdint>

#ifdef _WIN32
#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>
#undef DeleteFile // a macro there, a word of the vocabulary here
#else
/** An unsigned 32-bit integer, under the name that Windows gives it. */
using DWORD = std::uint32_t;
#endif
static_assert(sizeof(DWORD) == 4, "DWORD is an unsigned 32-bit integer everywhere");

struct TMediaDataPacketInfo;

/** Functions by which the holders of a reference-counted packet take and drop references. */
struct MediaPacketRefOps
{
    std::int32_t (*addReference)(TMediaDataPacketInfo* packet); ///< Takes a reference; returns 0.
    std::int32_t (*release)(TMediaDataPacketInfo* packet);      ///< Drops a reference; returns 0.
};

/**
 * One media packet. Unnamed bytes are zero in every record that this system builds.
 *
 * The fields up to ExtraDataSize are the plain record; the rest is used by the reference-counted form.
 */
struct TMediaDataPacketInfo
{
    std::uint8_t* Buffer;            ///< Offset bytes of header, then the bitstream.
    std::uint32_t Offset;            ///< Header bytes in front of the bitstream.
    std::uint32_t BitstreamSize;     ///< Bitstream bytes.
    std::uint32_t StreamType;        ///< Codec; one bit of the StreamType values.
    std::uint32_t FrameNumber;       ///< Codec frames in this packet.
    std::uint8_t reserved24[16];     ///< 0.
    std::uint32_t AudioSamplingFreq; ///< Hz.
    std::uint8_t AudioChannelNum;    ///< Channel count.
    std::uint8_t reserved45[39];     ///< 0.
    std::uint32_t AudioBitRate;      ///< Bits per second of a G.726 stream.
    std::uint8_t AudioPackingMode;   ///< G.726: not 0 selects packing 1, 0 packing 2.
    std::uint8_t reserved89[31];     ///< 0.
    std::uint8_t* ExtraData;         ///< Optional extra block.
    std::uint32_t ExtraDataSize;     ///< Its size in bytes.
    std::uint32_t reserved132;       ///< 0.
    const MediaPacketRefOps* RefOps; ///< Reference counting; null in a plain record.
    std::uint8_t reserved144[80];    ///< 0.
    void* SelfRef;                   ///< If not null, points to offset 56 of the record itself.
    std::uint8_t* BitstreamRef;      ///< If not null, points into the packet.
    std::uint32_t BitstreamRefBase;  ///< Bytes from BitstreamRef to the header's end.
    std::uint32_t reserved244;       ///< 0.
    std::uint8_t ItemCount;          ///< Number of 32-byte side items.
    std::uint8_t reserved249[7];     ///< 0.
    std::uint8_t* Items;             ///< The side items.
};

static_assert(sizeof(TMediaDataPacketInfo) == 264);
static_assert(offsetof(TMediaDataPacketInfo, Buffer) == 0);
static_assert(offsetof(TMediaDataPacketInfo, Offset) == 8);
static_assert(offsetof(TMediaDataPacketInfo, BitstreamSize) == 12);
static_assert(offsetof(TMediaDataPacketInfo, StreamType) == 16);
static_assert(offsetof(TMediaDataPacketInfo, FrameNumber) == 20);
static_assert(offsetof(TMediaDataPacketInfo, AudioSamplingFreq) == 40);
static_assert(offsetof(TMediaDataPacketInfo, AudioChannelNum) == 44);
static_assert(offsetof(TMediaDataPacketInfo, AudioBitRate) == 84);
static_assert(offsetof(TMediaDataPacketInfo, AudioPackingMode) == 88);
static_assert(offsetof(TMediaDataPacketInfo, ExtraData) == 120);
static_assert(offsetof(TMediaDataPacketInfo, ExtraDataSize) == 128);
static_assert(offsetof(TMediaDataPacketInfo, RefOps) == 136);
static_assert(offsetof(TMediaDataPacketInfo, SelfRef) == 224);
static_assert(offsetof(TMediaDataPacketInfo, BitstreamRef) == 232);
static_assert(offsetof(TMediaDataPacketInfo, BitstreamRefBase) == 240);
static_assert(offsetof(TMediaDataPacketInfo, ItemCount) == 248);
static_assert(offsetof(TMediaDataPacketInfo, Items) == 256);
