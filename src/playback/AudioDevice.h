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
 * Nothing waits for sound: a full ring drops the newest packet, an empty one is played as silence, and a ring
 * that was full when it was read is dropped, so that the sound is not late. The first packet's duration
 * decides how many packets a ring holds. It also holds no more than ringByteLimit bytes, so that packets much
 * larger than the first do not fill the memory. Push runs on the thread of AudioRenderer, reading on the
 * AudioOutput's.
 */
class AudioDevice : public QIODevice
{
public:
    /**
     * Makes an open device whose rings hold 500 ms of packets like the first.
     *
     * @param converter   converts to the output's format
     * @param firstPacket sizes the rings and is the stream's key; it is not queued
     */
    AudioDevice(SwrConverter&& converter, const _TMediaDataPacketInfoV3* firstPacket);

    /** Makes a device that is never open: it drops every packet and only stores the stream's key. */
    explicit AudioDevice(const _TMediaDataPacketInfoV3& firstPacket);

    ~AudioDevice() override;

    /** Returns whether the packet is of the stream that this device was made for. */
    bool hasKeyOf(const _TMediaDataPacketInfoV3& packet) const;

    /**
     * Queues a packet; one that is larger than ringByteLimit is dropped.
     *
     * @param packet       the packet
     * @param dropWhenFull drops it when the ring has no room; otherwise waits for room
     */
    void Push(const MediaPacketPtr& packet, bool dropWhenFull);

    /** Returns true. */
    bool isSequential() const override { return true; }

protected:
    /** Always fills the whole request; returns maxlen. */
    qint64 readData(char* data, qint64 maxlen) override;
    /** Returns -1: the device cannot be written. */
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
