#include "src/playback/AudioDevice.h"
#include "src/decoders/CodecTable.h"
#include "src/decoders/PcmBlock.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::uint32_t fallbackFrameTime = 23; // ms
constexpr std::int32_t ringTime = 500;          // ms

/** Duration of a packet in ms, modulo 2^32; 0 where it is unknown. */
std::uint32_t frameTime(const _TMediaDataPacketInfoV3& packet)
{
    const Codec* codec = Codec::byType(packet.StreamType);
    return codec != nullptr ? codec->packetTime(packet) : fallbackFrameTime;
}

/** Packets that a ring holds. */
std::size_t ringCapacity(const _TMediaDataPacketInfoV3& packet)
{
    auto time = static_cast<std::int32_t>(frameTime(packet));
    if (time == 0) {
        time = fallbackFrameTime;
    }
    return static_cast<std::size_t>(std::max(ringTime / time, 1));
}

} // namespace

AudioDevice::AudioDevice(SwrConverter&& converter, const _TMediaDataPacketInfoV3* firstPacket)
    : m_converter(std::move(converter)), m_streamType(firstPacket->StreamType),
      m_sampleRate(firstPacket->AudioSamplingFreq), m_channels(firstPacket->AudioChannelNum)
{
    const std::size_t capacity = ringCapacity(*firstPacket);
    m_pending.set_capacity(capacity);
    m_reading.set_capacity(capacity);
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
}

AudioDevice::AudioDevice(const _TMediaDataPacketInfoV3& firstPacket)
    : m_streamType(firstPacket.StreamType), m_sampleRate(firstPacket.AudioSamplingFreq),
      m_channels(firstPacket.AudioChannelNum)
{
}

AudioDevice::~AudioDevice()
{
    close();
}

bool AudioDevice::hasKeyOf(const _TMediaDataPacketInfoV3& packet) const
{
    return m_streamType == packet.StreamType && m_sampleRate == packet.AudioSamplingFreq &&
           m_channels == packet.AudioChannelNum;
}

void AudioDevice::Push(const MediaPacketPtr& packet, bool dropWhenFull)
{
    if (!isOpen()) {
        return;
    }
    const std::uint64_t bytes = std::uint64_t{packet->Offset} + packet->BitstreamSize;
    if (bytes > ringByteLimit) {
        return; // there will never be room for it
    }
    boost::mutex::scoped_lock lock(m_mutex);
    if (!hasRoomFor(bytes) && dropWhenFull) {
        return; // deliberate: the newest packet goes, what is queued stays
    }
    while (!hasRoomFor(bytes)) {
        m_condition.wait(lock);
    }
    m_pending.push_back(packet);
    m_pendingBytes += bytes;
}

bool AudioDevice::hasRoomFor(std::uint64_t bytes) const
{
    return !m_pending.full() && m_pendingBytes + bytes <= ringByteLimit;
}

bool AudioDevice::PopFront(MediaPacketPtr& out)
{
    if (m_reading.empty()) {
        {
            const boost::mutex::scoped_lock lock(m_mutex);
            if (m_pending.empty()) {
                return false;
            }
            m_pending.swap(m_reading);
            m_pendingBytes = 0;
        }
        m_condition.notify_one();
        // Deliberate, also for a capacity of 1, where nothing is ever played: a full ring means that the
        // reader is 500 ms behind.
        if (m_reading.full()) {
            m_reading.clear();
            return false;
        }
    }
    out = std::move(m_reading.front());
    m_reading.pop_front();
    return true;
}

/** Puts the next packet's PCM into the block; false, and an empty block, when there is none to be had. */
bool AudioDevice::refill()
{
    m_blockPosition = 0;
    m_blockLength = 0;
    MediaPacketPtr packet;
    std::uint32_t size = pcmBlockSize;
    if (!PopFront(packet) || m_decoder.Decode(m_block.data(), &size, *packet) < 0) {
        return false;
    }
    m_blockLength =
        static_cast<std::uint32_t>(m_converter.ConvertInPlace(m_block.data(), static_cast<int>(size)));
    return true;
}

qint64 AudioDevice::readData(char* data, qint64 maxlen)
{
    qint64 done = 0;
    while (done < maxlen) {
        const qint64 wanted = maxlen - done;
        if (m_blockPosition >= m_blockLength && !refill()) {
            // Silence lasts for what the request still wants, also if that is more than a block.
            std::memset(data + done, 0, static_cast<std::size_t>(wanted));
            break;
        }
        const auto count =
            static_cast<std::uint32_t>(std::min<qint64>(m_blockLength - m_blockPosition, wanted));
        std::memcpy(data + done, m_block.data() + m_blockPosition, count);
        m_blockPosition += count;
        done += count;
    }
    return maxlen;
}

qint64 AudioDevice::writeData(const char* /*data*/, qint64 /*len*/)
{
    return -1;
}
