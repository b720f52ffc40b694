#include "audio/AudioFileReader.h"

#include "audio/FfmpegPtr.h"
#include "audio/PcmConverter.h"
#include "system/MediaFiles.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <algorithm>

namespace {

constexpr int msPerSecond = 1000;
// Sample rates of real files, Hz. Below and above them a resampler takes gigabytes, for its output or its
// filter.
constexpr int leastRate = 1000;
constexpr int maxRate = 384000;
constexpr std::size_t maxMeasured = 600U * AudioFileReader::sampleRate; // decoded to learn a length, samples

} // namespace

struct AudioFileReader::Private
{
    FfmpegPtr<AVFormatContext> file;
    FfmpegPtr<AVCodecContext> codec;
    std::unique_ptr<PcmConverter> converter; ///< Made at the first frame.
    FfmpegPtr<AVPacket> packet{av_packet_alloc()};
    FfmpegPtr<AVFrame> frame{av_frame_alloc()};
    int stream = -1;
    bool ended = false;
    bool broken = false;
    std::vector<std::int16_t> pending; ///< Decoded and not yet read.
    std::size_t pendingPosition = 0;

    bool open(const char* path)
    {
        // No playlists, no network: a file is what its own bytes say.
        AVDictionary* options = nullptr;
        av_dict_set(&options, "protocol_whitelist", "file", 0);
        av_dict_set(&options, "format_whitelist", "wav,mp3,aac,mov,mp4,m4a,flac,ogg,aiff,w64", 0);
        AVFormatContext* input = nullptr;
        const int opened = avformat_open_input(&input, path, nullptr, &options);
        av_dict_free(&options);
        file.reset(input); // null when it did not open
        if (opened < 0 || avformat_find_stream_info(input, nullptr) < 0) {
            return false;
        }
        const AVCodec* decoder = nullptr;
        stream = av_find_best_stream(input, AVMEDIA_TYPE_AUDIO, -1, -1, &decoder, 0);
        codec.reset(stream >= 0 && decoder != nullptr ? avcodec_alloc_context3(decoder) : nullptr);
        return codec != nullptr &&
               avcodec_parameters_to_context(codec.get(), input->streams[stream]->codecpar) >= 0 &&
               avcodec_open2(codec.get(), decoder, nullptr) >= 0;
    }

    bool ensureConverter()
    {
        if (converter != nullptr) {
            return converter->valid() && frame->ch_layout.nb_channels == codec->ch_layout.nb_channels &&
                   frame->format == codec->sample_fmt;
        }
        if (codec->sample_rate < leastRate || codec->sample_rate > maxRate ||
            codec->ch_layout.nb_channels <= 0) {
            return false;
        }
        converter = std::make_unique<PcmConverter>(codec->sample_fmt, codec->sample_rate, codec->ch_layout,
                                                   sampleRate);
        return converter->valid();
    }

    void convertFrame()
    {
        if (!ensureConverter()) {
            broken = true;
            return;
        }
        converter->convertPlanes(frame->extended_data, static_cast<std::size_t>(frame->nb_samples), pending);
    }

    /** Decodes one packet more; false at the end. */
    bool decodeMore()
    {
        if (ended || broken) {
            return false;
        }
        int read = 0;
        do {
            av_packet_unref(packet.get());
            read = av_read_frame(file.get(), packet.get());
        } while (read >= 0 && packet->stream_index != stream);
        ended = read < 0;
        broken = broken || (read < 0 && read != AVERROR_EOF);
        const int sent = avcodec_send_packet(codec.get(), ended ? nullptr : packet.get());
        broken = broken || (sent < 0 && sent != AVERROR_EOF);
        while (!broken && avcodec_receive_frame(codec.get(), frame.get()) >= 0) {
            convertFrame();
            av_frame_unref(frame.get());
        }
        av_packet_unref(packet.get());
        return true;
    }
};

AudioFileReader::AudioFileReader() : m_private(std::make_unique<Private>()) {}

AudioFileReader::~AudioFileReader() = default;

bool AudioFileReader::open(const QString& path)
{
    m_private = std::make_unique<Private>();
    return m_private->open(MediaFiles::ffmpegName(path).constData());
}

void AudioFileReader::read(std::size_t count, std::vector<std::int16_t>& out)
{
    Private& d = *m_private;
    if (d.codec == nullptr) {
        return;
    }
    while (d.pending.size() - d.pendingPosition < count && d.decodeMore()) {
    }
    const std::size_t taken = std::min(count, d.pending.size() - d.pendingPosition);
    const auto begin = d.pending.begin() + static_cast<std::ptrdiff_t>(d.pendingPosition);
    out.insert(out.end(), begin, begin + static_cast<std::ptrdiff_t>(taken));
    d.pendingPosition += taken;
    if (d.pendingPosition == d.pending.size()) {
        d.pending.clear();
        d.pendingPosition = 0;
    }
}

bool AudioFileReader::isBroken() const
{
    return m_private->broken;
}

std::optional<int> AudioFileReader::duration(const QString& path)
{
    AudioFileReader reader;
    std::vector<std::int16_t> samples;
    if (!reader.open(path)) {
        return std::nullopt;
    }
    reader.read(sampleRate, samples);
    if (samples.empty() || reader.isBroken()) {
        return std::nullopt;
    }
    const Private& d = *reader.m_private;
    const bool estimated = d.file->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
    if (d.file->duration > 0 && !estimated) {
        return static_cast<int>(
            std::clamp<std::int64_t>(d.file->duration / (AV_TIME_BASE / msPerSecond), 1, INT32_MAX));
    }
    // The container does not say: count.
    std::size_t count = samples.size();
    while (count < maxMeasured) {
        samples.clear();
        reader.read(sampleRate, samples);
        if (samples.empty()) {
            break;
        }
        count += samples.size();
    }
    return std::max(1, static_cast<int>(count * msPerSecond / sampleRate));
}
