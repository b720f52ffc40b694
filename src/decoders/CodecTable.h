#pragma once

/**
 * @file
 * The codecs of media packets: one row each, for decoders, queues, encoders, commands, dumps and cameras.
 */

#include <cstddef>
#include <cstdint>
#include <string_view>

class DecoderContext;
struct TMediaDataPacketInfo;

/** A codec, a row of the table. */
struct Codec
{
    /** The source of the duration of a packet. */
    enum Timing
    {
        ByFrameCount, ///< The packet's number of frames.
        ByRate,       ///< The packet's sample rate; it holds one frame.
        BySize,       ///< The packet's bytes, at bitRate.
        ByBitRate,    ///< The packet's bytes, at the packet's bit rate.
    };

    std::uint32_t streamType;   ///< Its value in media packets, of StreamType.
    const char* name;           ///< Its name for users; null for a codec that users cannot choose.
    std::uint32_t rate;         ///< Usual sample rate, Hz.
    std::uint8_t channels;      ///< Usual number.
    bool fixedFormat;           ///< Whether rate and channels are the only ones, whatever a packet says.
    std::uint32_t frameSamples; ///< Samples of each channel in a frame; 0 for a codec without frames.
    std::uint32_t frameBytes;   ///< Bytes of the largest frame; 0 when open, or for a codec without frames.
    std::uint32_t bitRate;      ///< Usual bit/s of a codec without frames, else 0.
    Timing timing;              ///< The source of the duration of a packet.

    /** Makes a decoder for packets like this; returns null on failure. Null for a codec without a decoder. */
    DecoderContext* (*createDecoder)(const TMediaDataPacketInfo& packet);

    /** Returns the duration of a packet in ms, modulo 2^32; 0 where its fields leave it open. */
    std::uint32_t packetTime(const TMediaDataPacketInfo& packet) const;

    /** Returns the row of a stream type; null for a type off the table. */
    static const Codec* byType(std::uint32_t streamType);

    /** Returns the row of a name, letter by letter; null for a name off the table. */
    static const Codec* byName(std::string_view name);
};

/** The rows of a table of codecs. */
class CodecRows
{
public:
    /** @param rows outlive the object */
    template<std::size_t count>
    constexpr explicit CodecRows(const Codec (&rows)[count]) : m_rows(rows), m_count(count)
    {
    }

    /** Returns the first row. */
    constexpr const Codec* begin() const { return m_rows; }
    /** Returns the place behind the last row. */
    constexpr const Codec* end() const { return m_rows + m_count; }
    /** Returns the number of rows. */
    constexpr std::size_t size() const { return m_count; }

private:
    const Codec* m_rows;
    std::size_t m_count;
};

/** The codecs in the order in which users read them. Constant from before the program's start. */
extern const CodecRows codecTable;
