// Opening, feeding and ending the codec. Audio and pictures have files of their own.

#include "src/decoders/DecoderIsolated_FFmpeg.h"

#include <boost/thread/mutex.hpp>
#include <boost/thread/once.hpp>

#include <limits>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace {

constexpr std::uint32_t maxChunkSize = std::numeric_limits<int>::max() - AV_INPUT_BUFFER_PADDING_SIZE;

/** Held around the opening and the closing of a codec, which libavcodec wants one at a time. */
boost::mutex& codecMutex()
{
    static boost::once_flag once = BOOST_ONCE_INIT;
    static boost::mutex* mutex = nullptr; // never destroyed: decoders may end after static objects do
    boost::call_once(once, [] { mutex = new boost::mutex; });
    return *mutex;
}

} // namespace

DecoderContext* CreateDecoderFFmpeg(AVCodecID codec, std::uint32_t sampleRate, std::uint32_t channels,
                                    int bitsPerCodedSample)
{
    const AVCodec* decoder = avcodec_find_decoder(codec);
    if (decoder == nullptr) {
        return nullptr;
    }
    AVCodecContext* context = avcodec_alloc_context3(decoder);
    if (context == nullptr) {
        return nullptr;
    }
    context->sample_rate = static_cast<int>(sampleRate);
    context->channels = static_cast<int>(channels);
    context->bits_per_coded_sample = bitsPerCodedSample;
    context->request_sample_fmt = AV_SAMPLE_FMT_S16;
    const boost::mutex::scoped_lock lock(codecMutex());
    if (avcodec_open2(context, decoder, nullptr) < 0) {
        avcodec_free_context(&context);
        return nullptr;
    }
    return new DecoderIsolated_FFmpeg(context);
}

DecoderIsolated_FFmpeg::DecoderIsolated_FFmpeg(AVCodecContext* context) : m_context(context) {}

DecoderIsolated_FFmpeg::~DecoderIsolated_FFmpeg()
{
    {
        const boost::mutex::scoped_lock lock(codecMutex());
        avcodec_free_context(&m_context);
    }
    sws_freeContext(m_scaler);
    swr_free(&m_resampler);
    while (!m_decoded.empty()) {
        FramePool::release(m_decoded.back());
        m_decoded.pop_back();
    }
}

void DecoderIsolated_FFmpeg::Release()
{
    delete releasedObject(this);
}

std::int64_t DecoderIsolated_FFmpeg::pcmSize(const Frame& frame)
{
    return std::int64_t{frame.nb_samples} * frame.channels * static_cast<std::int64_t>(sizeof(std::int16_t));
}

/**
 * Sends a chunk to the codec and takes the frames that come of it.
 *
 * @param maxPcm bytes of PCM in the deque beyond which the rest of the chunk is thrown away; pictures count
 * nothing
 * @return 0; 1 when the codec took nothing or gave an error, which costs this packet alone; -1 when it takes
 * no packets
 */
std::int32_t DecoderIsolated_FFmpeg::sendAndCollect(const EncodedChunk& chunk, std::int64_t maxPcm)
{
    if (chunk.data == nullptr || chunk.size > maxChunkSize) {
        return 1; // null data would mean the end of the stream to the codec
    }
    AVPacket packet;
    av_init_packet(&packet);
    packet.data = const_cast<std::uint8_t*>(chunk.data);
    packet.size = static_cast<int>(chunk.size);

    std::int64_t collected = 0;
    for (const Frame* frame : m_decoded) {
        collected += pcmSize(*frame);
    }
    bool retry = false;
    do {
        const int sent = avcodec_send_packet(m_context, &packet);
        if (sent < 0 && sent != AVERROR(EAGAIN)) {
            return 1;
        }
        if (sent == AVERROR(EAGAIN)) {
            if (retry) {
                return -1;
            }
            retry = true;
        } else {
            retry = false;
        }
        for (;;) {
            Frame* frame = m_audioFrames.acquire();
            const int received = avcodec_receive_frame(m_context, frame);
            if (received < 0 || frame->data[0] == nullptr) {
                FramePool::release(frame);
                if (received < 0 && received != AVERROR(EAGAIN)) {
                    return 1;
                }
                break;
            }
            m_decoded.push_back(frame);
            collected += pcmSize(*frame);
            if (collected > maxPcm) {
                avcodec_flush_buffers(m_context); // a packet may hold frames for gigabytes of samples
                return 0;
            }
        }
    } while (retry);
    return 0;
}

/** Takes the front frame with its reference off the deque. */
Frame* DecoderIsolated_FFmpeg::takeFront()
{
    Frame* frame = m_decoded.front();
    if (m_decoded.size() == 1) {
        m_decoded.pop_back(); // unlike pop_front, does not wander through the deque's memory
    } else {
        m_decoded.pop_front();
    }
    return frame;
}
