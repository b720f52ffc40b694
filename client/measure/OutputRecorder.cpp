#include "client/measure/OutputRecorder.h"

#include "audio/PcmFormat.h"
#include "audio/SteadyClock.h"
#include "audio/WaveFileWriter.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr std::size_t maxSamples = 600U * OutputRecorder::sampleRate; // ten minutes

/** Returns whether an input records what an output plays; sound servers show that in its name. */
bool isMonitor(const QString& input, const QString& output)
{
    return !output.isEmpty() && (input == output + QLatin1String(".monitor") ||   // PulseAudio
                                 input == QLatin1String("Monitor of ") + output); // the same under Wine
}

} // namespace

std::optional<QAudioDeviceInfo> OutputRecorder::findMonitor()
{
    const auto outputs = QAudioDeviceInfo::availableDevices(QAudio::AudioOutput);
    const auto inputs = QAudioDeviceInfo::availableDevices(QAudio::AudioInput);
    for (const QAudioDeviceInfo& output : outputs) {
        for (const QAudioDeviceInfo& input : inputs) {
            if (isMonitor(input.deviceName(), output.deviceName())) {
                return input;
            }
        }
    }
    return std::nullopt;
}

bool OutputRecorder::start()
{
    const auto monitor = findMonitor();
    if (!monitor) {
        return false;
    }
    const QAudioFormat format = pcmFormat(sampleRate);
    if (!monitor->isFormatSupported(format)) {
        return false;
    }
    m_sound = TimedSound();
    m_sound.sampleRate = sampleRate;
    m_input = std::make_unique<QAudioInput>(*monitor, format);
    m_stream = m_input->start();
    if (m_stream == nullptr) {
        m_input.reset();
        return false;
    }
    connect(m_stream, &QIODevice::readyRead, this, &OutputRecorder::read);
    return true;
}

void OutputRecorder::stop()
{
    if (m_input) {
        read();
        m_input->stop();
        m_input.reset();
        m_stream = nullptr;
    }
}

void OutputRecorder::read()
{
    const QByteArray bytes = m_partial + m_stream->readAll();
    const auto count = static_cast<std::size_t>(bytes.size()) / sizeof(std::int16_t);
    const std::size_t before = m_sound.samples.size();
    if (count == 0 || before + count > maxSamples) {
        return;
    }
    m_sound.samples.resize(before + count);
    std::memcpy(m_sound.samples.data() + before, bytes.constData(), count * sizeof(std::int16_t));
    m_partial = bytes.mid(static_cast<int>(count * sizeof(std::int16_t)));
    // Pieces arrive with varying delays; the one with the smallest gives the time of the first sample best.
    const double start = SteadyClock::now() - static_cast<double>(before + count) / sampleRate;
    m_sound.startTime = before == 0 ? start : std::min(m_sound.startTime, start);
    if (before == 0) {
        Q_EMIT started();
    }
}

bool OutputRecorder::write(const QString& path) const
{
    WaveFileWriter writer(path, sampleRate);
    return writer.write(m_sound.samples) && writer.flush();
}
