#include "src/playback/DecoderSlot.h"

#include "src/MediaPacket.h"
#include "src/decoders/CodecTable.h"

#include <boost/mem_fn.hpp>

#include <cstddef>
#include <type_traits>

/** Pins the order of the fields: the decoder, its deleter, the key. */
struct DecoderSlot::Layout
{
    static_assert(std::is_standard_layout_v<DecoderSlot>);
    static_assert(sizeof(void*) != 8 || sizeof(m_decoder) == 16);
    static_assert(sizeof(void*) != 8 || offsetof(DecoderSlot, m_key) == 16);
    static_assert(offsetof(Key, sampleRate) == 4 && offsetof(Key, channels) == 8);
    static_assert(offsetof(Key, bitRate) == 12 && offsetof(Key, packingMode) == 16);
    static_assert(sizeof(void*) != 8 || sizeof(DecoderSlot) == 40);
};

namespace {

DecoderContext* createDecoder(const _TMediaDataPacketInfoV3& packet)
{
    const Codec* codec = Codec::byType(packet.StreamType);
    return codec != nullptr && codec->createDecoder != nullptr ? codec->createDecoder(packet) : nullptr;
}

} // namespace

std::int32_t DecoderSlot::Decode(std::uint8_t* pcm, std::uint32_t* size,
                                 const _TMediaDataPacketInfoV3& packet)
{
    ensureDecoder(packet);
    if (!m_decoder) {
        return -1;
    }
    const EncodedChunk chunk{packet.Buffer + packet.Offset, packet.BitstreamSize, packet.FrameNumber};
    return m_decoder->DecodeAudio(pcm, size, &chunk);
}

void DecoderSlot::ensureDecoder(const _TMediaDataPacketInfoV3& packet)
{
    if (m_key.streamType == packet.StreamType && m_key.sampleRate == packet.AudioSamplingFreq &&
        m_key.channels == packet.AudioChannelNum && m_key.bitRate == packet.AudioBitRate &&
        m_key.packingMode == packet.AudioPackingMode) {
        return;
    }
    m_decoder.reset();
    m_key = Key{};
    DecoderContext* decoder = createDecoder(packet);
    if (decoder == nullptr) {
        return; // tried again at the next packet
    }
    m_decoder.reset(decoder, boost::mem_fn(&DecoderContext::Release));
    m_key = {packet.StreamType, packet.AudioSamplingFreq, packet.AudioChannelNum, packet.AudioBitRate,
             packet.AudioPackingMode};
}
