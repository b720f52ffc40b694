#include "tests/support/WavFiles.h"

#include <QFile>
#include <QtEndian>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
#include <libswresample/swresample.h>
}
#include "system/MediaFiles.h"

#include <cmath>
#include <cstring>

namespace WavFiles {

namespace {

template<typename Number>
QByteArray littleEndian(Number value)
{
    QByteArray bytes(sizeof value, 0);
    qToLittleEndian(value, bytes.data());
    return bytes;
}

} // namespace

Samples sine(double frequency, double amplitude, double seconds, int sampleRate)
{
    Samples samples(static_cast<std::size_t>(seconds * sampleRate));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double phase = 2.0 * M_PI * frequency * static_cast<double>(i) / sampleRate;
        samples[i] = static_cast<std::int16_t>(std::lround(amplitude * 32767.0 * std::sin(phase)));
    }
    return samples;
}

bool write(const QString& path, const Samples& samples, int sampleRate)
{
    const QByteArray data(reinterpret_cast<const char*>(samples.data()),
                          static_cast<int>(samples.size() * 2));
    QFile file(path);
    const QByteArray bytes = riff(chunk("fmt ", pcmFormat(1, sampleRate, 16)) + chunk("data", data));
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

Samples read(const QString& path, int* sampleRate)
{
    SF_INFO info{};
    SNDFILE* file = MediaFiles::open(path, SFM_READ, &info);
    if (file == nullptr || info.channels != 1) {
        if (file != nullptr) {
            sf_close(file);
        }
        return {};
    }
    Samples samples(static_cast<std::size_t>(info.frames));
    samples.resize(static_cast<std::size_t>(sf_read_short(file, samples.data(), info.frames)));
    sf_close(file);
    if (sampleRate != nullptr) {
        *sampleRate = info.samplerate;
    }
    return samples;
}

Samples resample(const Samples& samples, int fromRate, int toRate)
{
    SwrContext* context = nullptr;
    AVChannelLayout mono{};
    av_channel_layout_default(&mono, 1);
    if (swr_alloc_set_opts2(&context, &mono, AV_SAMPLE_FMT_S16, toRate, &mono, AV_SAMPLE_FMT_S16, fromRate, 0,
                            nullptr) < 0 ||
        swr_init(context) < 0) {
        swr_free(&context);
        return {};
    }
    Samples out(samples.size() * static_cast<std::size_t>(toRate) / static_cast<std::size_t>(fromRate) + 256);
    const auto* source = reinterpret_cast<const std::uint8_t*>(samples.data());
    auto* target = reinterpret_cast<std::uint8_t*>(out.data());
    int made = swr_convert(context, &target, static_cast<int>(out.size()), &source,
                           static_cast<int>(samples.size()));
    target += made * 2;
    made += swr_convert(context, &target, static_cast<int>(out.size()) - made, nullptr, 0);
    out.resize(static_cast<std::size_t>(made));
    swr_free(&context);
    return out;
}

QByteArray toMuLaw(const Samples& samples)
{
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PCM_MULAW);
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->sample_fmt = AV_SAMPLE_FMT_S16;
    context->sample_rate = 8000;
    av_channel_layout_default(&context->ch_layout, 1);
    avcodec_open2(context, codec, nullptr);
    AVFrame* frame = av_frame_alloc();
    AVPacket* packet = av_packet_alloc();
    frame->format = AV_SAMPLE_FMT_S16;
    frame->nb_samples = static_cast<int>(samples.size());
    av_channel_layout_default(&frame->ch_layout, 1);
    av_frame_get_buffer(frame, 0);
    std::memcpy(frame->data[0], samples.data(), samples.size() * 2);
    avcodec_send_frame(context, frame);
    avcodec_receive_packet(context, packet);
    const QByteArray bytes(reinterpret_cast<const char*>(packet->data), packet->size);
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&context);
    return bytes;
}

Samples throughMuLaw(const Samples& samples)
{
    const QByteArray encoded = toMuLaw(samples);
    const AVCodec* codec = avcodec_find_decoder(AV_CODEC_ID_PCM_MULAW);
    AVCodecContext* context = avcodec_alloc_context3(codec);
    context->sample_rate = 8000;
    av_channel_layout_default(&context->ch_layout, 1);
    avcodec_open2(context, codec, nullptr);
    AVFrame* frame = av_frame_alloc();
    AVPacket* packet = av_packet_alloc();
    av_new_packet(packet, encoded.size());
    std::memcpy(packet->data, encoded.constData(), static_cast<std::size_t>(encoded.size()));
    avcodec_send_packet(context, packet);
    avcodec_receive_frame(context, frame);
    const auto* decoded = reinterpret_cast<const std::int16_t*>(frame->data[0]);
    Samples out(decoded, decoded + frame->nb_samples);
    av_packet_free(&packet);
    av_frame_free(&frame);
    avcodec_free_context(&context);
    return out;
}

QByteArray chunkOfSize(const char* id, std::uint32_t size, const QByteArray& body)
{
    return QByteArray(id, 4) + littleEndian(size) + body;
}

QByteArray chunk(const char* id, const QByteArray& body)
{
    return chunkOfSize(id, static_cast<std::uint32_t>(body.size()), body) + QByteArray(body.size() % 2, 0);
}

QByteArray pcmFormat(int channels, int sampleRate, int bits)
{
    const int frame = channels * bits / 8;
    return littleEndian<quint16>(1) + littleEndian<quint16>(static_cast<quint16>(channels)) +
           littleEndian<quint32>(static_cast<quint32>(sampleRate)) +
           littleEndian<quint32>(static_cast<quint32>(sampleRate * frame)) +
           littleEndian<quint16>(static_cast<quint16>(frame)) +
           littleEndian<quint16>(static_cast<quint16>(bits));
}

QByteArray extensibleFormat(int channels, int sampleRate, int bits)
{
    QByteArray format = pcmFormat(channels, sampleRate, bits);
    format.replace(0, 2, QByteArray("\xFE\xFF", 2));
    return format + littleEndian<quint16>(22) + littleEndian<quint16>(static_cast<quint16>(bits)) +
           littleEndian<quint32>(0) +
           QByteArray("\x01\x00\x00\x00\x00\x00\x10\x00\x80\x00\x00\xAA\x00\x38\x9B\x71", 16);
}

QByteArray riff(const QByteArray& chunks)
{
    return chunk("RIFF", "WAVE" + chunks);
}

} // namespace WavFiles
