#pragma once

#include "src/MediaPacket.h"
#include "src/decoders/PcmBlock.h"
#include "src/playback/DecoderSlot.h"
#include "src/playback/SwrConverter.h"

#include <QIODevice>

#include <boost/circular_buffer.hpp>
#include <boost/thread/condition_variable.hpp>
#include <boost/thread/mutex.hpp>

#include <array>

/** Bytes of packets that a ring holds at most; real streams stay far below. */
inline constexpr std::uint64_t ringByteLimit = 32 * 1024 * 1024;

/**
 * The sound of one stream, for QAudioOutput to pull: packets in, PCM of the output device out.
 *
 *   Push --> [pending] --swap--> [reading] --> DecoderSlot --> block --> SwrConverter --> readData
 *
 * Nobody waits for sound: a full ring drops the newest packet, an empty one is answered with silence, and a
 * ring that was full when the reader came is thrown away, so that the sound catches up with the present. How
 * many packets make a ring full is a matter of the first one's duration; so that packets much larger than the
 * first do not fill the memory, a ring also takes no more than ringByteLimit bytes.
 * Push runs on the thread of AudioRenderer, reading on the AudioOutput's.
 */
class AudioDevice : public QIODevice
{
public:
    /**
     * An open device whose rings hold 500 ms of packets like the first.
     *
     * @param firstPacket sizes the rings and is the stream's key; it is not queued
     */
    AudioDevice(SwrConverter&& converter, const _TMediaDataPacketInfoV3* firstPacket);

    /** A device that is never open: drops every packet and only remembers the stream's key. */
    explicit AudioDevice(const _TMediaDataPacketInfoV3& firstPacket);

    ~AudioDevice() override;

    /** Whether the packet is of the stream that this device was made for. */
    bool hasKeyOf(const _TMediaDataPacketInfoV3& packet) const;

    /**
     * Queues a packet; one that is larger than ringByteLimit is dropped.
     *
     * @param dropWhenFull drops it when the ring has no room; otherwise waits for room
     */
    void Push(const MediaPacketPtr& packet, bool dropWhenFull);

    bool isSequential() const override { return true; }

protected:
    /** Always fills the whole request; returns maxlen. */
    qint64 readData(char* data, qint64 maxlen) override;
    qint64 writeData(const char* data, qint64 len) override;

private:
    bool hasRoomFor(std::uint64_t bytes) const;
    bool PopFront(MediaPacketPtr& out);
    bool refill();

    boost::mutex m_mutex; ///< Guards m_pending and its bytes, and m_reading during a swap.
    boost::condition_variable m_condition;
    boost::circular_buffer<MediaPacketPtr> m_pending; ///< Filled by Push.
    boost::circular_buffer<MediaPacketPtr> m_reading; ///< Drained by PopFront.
    DecoderSlot m_decoder;
    alignas(4) std::array<std::uint8_t, pcmBlockSize> m_block; ///< The current PCM; decoders want it aligned.
    std::uint32_t m_blockLength = 0;                           ///< Valid bytes of the block.
    std::uint32_t m_blockPosition = 0;                         ///< Bytes of the block already delivered.
    SwrConverter m_converter;
    std::uint32_t m_streamType;
    std::uint32_t m_sampleRate;
    std::uint8_t m_channels;
    std::uint64_t m_pendingBytes = 0; ///< Of the packets in m_pending.
};
