#include "audio/PcmFormat.h"

namespace {

constexpr int sampleSize = 16; // bits

QString pcmCodec()
{
    return QStringLiteral("audio/pcm");
}

} // namespace

QAudioFormat pcmFormat(int sampleRate)
{
    QAudioFormat format;
    format.setSampleRate(sampleRate);
    format.setChannelCount(1);
    format.setSampleSize(sampleSize);
    format.setCodec(pcmCodec());
    format.setByteOrder(QAudioFormat::LittleEndian);
    format.setSampleType(QAudioFormat::SignedInt);
    return format;
}

std::optional<SampleFormat> sampleFormatOf(const QAudioFormat& format)
{
    if (format.codec() != pcmCodec() || format.byteOrder() != QAudioFormat::LittleEndian) {
        return std::nullopt;
    }
    if (format.sampleType() == QAudioFormat::SignedInt && format.sampleSize() == 16) {
        return SampleFormat::S16;
    }
    if (format.sampleType() == QAudioFormat::SignedInt && format.sampleSize() == 32) {
        return SampleFormat::S32;
    }
    if (format.sampleType() == QAudioFormat::UnSignedInt && format.sampleSize() == 8) {
        return SampleFormat::U8;
    }
    if (format.sampleType() == QAudioFormat::Float && format.sampleSize() == 32) {
        return SampleFormat::Float;
    }
    return std::nullopt;
}
