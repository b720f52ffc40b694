#include "tests/support/SoundFiles.h"

#include "system/MediaFiles.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
}

#include <algorithm>

namespace {

struct Writer
{
    AVFormatContext* file = nullptr;
    AVCodecContext* codec = nullptr;
    AVFrame* frame = av_frame_alloc();
    AVPacket* packet = av_packet_alloc();

    ~Writer()
    {
        if (file != nullptr && file->pb != nullptr) {
            avio_closep(&file->pb);
        }
        avformat_free_context(file);
        avcodec_free_context(&codec);
        av_frame_free(&frame);
        av_packet_free(&packet);
    }

    bool open(const char* path, int sampleRate)
    {
        if (avformat_alloc_output_context2(&file, nullptr, nullptr, path) < 0) {
            return false;
        }
        const AVCodec* encoder = avcodec_find_encoder(file->oformat->audio_codec);
        AVStream* stream = avformat_new_stream(file, nullptr);
        codec = encoder != nullptr ? avcodec_alloc_context3(encoder) : nullptr;
        if (codec == nullptr || stream == nullptr) {
            return false;
        }
        codec->sample_rate = sampleRate;
        codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
        codec->bit_rate = 64000;
        av_channel_layout_default(&codec->ch_layout, 1);
        if ((file->oformat->flags & AVFMT_GLOBALHEADER) != 0) {
            codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        }
        if (avcodec_open2(codec, encoder, nullptr) < 0 ||
            avcodec_parameters_from_context(stream->codecpar, codec) < 0) {
            return false;
        }
        frame->format = codec->sample_fmt;
        frame->sample_rate = sampleRate;
        frame->nb_samples = codec->frame_size;
        av_channel_layout_default(&frame->ch_layout, 1);
        return av_frame_get_buffer(frame, 0) >= 0 && avio_open(&file->pb, path, AVIO_FLAG_WRITE) >= 0 &&
               avformat_write_header(file, nullptr) >= 0;
    }

    bool drain(const AVFrame* input)
    {
        if (avcodec_send_frame(codec, input) < 0) {
            return false;
        }
        while (avcodec_receive_packet(codec, packet) == 0) {
            av_packet_rescale_ts(packet, {1, codec->sample_rate}, file->streams[0]->time_base);
            if (av_interleaved_write_frame(file, packet) < 0) {
                return false;
            }
        }
        return true;
    }
};

} // namespace

bool SoundFiles::write(const QString& path, const WavFiles::Samples& samples, int sampleRate)
{
    Writer writer;
    if (!writer.open(MediaFiles::ffmpegName(path).constData(), sampleRate)) {
        return false;
    }
    const auto frameSize = static_cast<std::size_t>(writer.frame->nb_samples);
    for (std::size_t begin = 0; begin + frameSize <= samples.size(); begin += frameSize) {
        if (av_frame_make_writable(writer.frame) < 0) {
            return false;
        }
        std::transform(samples.begin() + static_cast<std::ptrdiff_t>(begin),
                       samples.begin() + static_cast<std::ptrdiff_t>(begin + frameSize),
                       reinterpret_cast<float*>(writer.frame->data[0]),
                       [](std::int16_t sample) { return static_cast<float>(sample) / 32768.0F; });
        writer.frame->pts = static_cast<std::int64_t>(begin);
        if (!writer.drain(writer.frame)) {
            return false;
        }
    }
    return writer.drain(nullptr) && av_write_trailer(writer.file) >= 0;
}
