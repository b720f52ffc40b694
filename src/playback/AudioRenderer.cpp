#include "src/playback/AudioRenderer.h"

#include "lifetime/ApplicationEnd.h"
#include "lifetime/NeverDestroyed.h"
#include "src/playback/AudioDevice.h"
#include "src/playback/AudioOutput.h"
#include "src/playback/SystemProbe.h"

#include <QAudioOutput>
#include <QCoreApplication>

#include <mutex>
#include <set>

namespace {

// Numbering of SwrConverter.
constexpr int sampleFormatU8 = 0;
constexpr int sampleFormatS16 = 1;
constexpr int sampleFormatS32 = 2;
constexpr int sampleFormatFloat = 3;

// Hz. Below it, 20 ms hold no frame: Qt's PulseAudio plug-in divides by the frames of such a period, and Qt
// itself by a rate of 0 where it looks for the nearest format. Both end the process.
constexpr std::uint32_t lowestSampleRate = 50;

const QString pcmCodec = QStringLiteral("audio/pcm");

QAudioFormat formatOf(const _TMediaDataPacketInfoV3& packet)
{
    QAudioFormat format;
    format.setSampleRate(static_cast<int>(packet.AudioSamplingFreq));
    format.setChannelCount(packet.AudioChannelNum);
    format.setSampleSize(16);
    format.setCodec(pcmCodec);
    format.setByteOrder(QAudioFormat::LittleEndian);
    format.setSampleType(QAudioFormat::SignedInt);
    return format;
}

/** The format in SwrConverter's numbering; -1 when it has none. */
int sampleFormatOf(const QAudioFormat& format)
{
    const bool littleEndian = format.byteOrder() == QAudioFormat::LittleEndian;
    switch (format.sampleType()) {
    case QAudioFormat::SignedInt:
        if (littleEndian && format.sampleSize() == 16) {
            return sampleFormatS16;
        }
        return littleEndian && format.sampleSize() == 32 ? sampleFormatS32 : -1;
    case QAudioFormat::UnSignedInt:
        return format.sampleSize() == 8 ? sampleFormatU8 : -1;
    case QAudioFormat::Float:
        return littleEndian && format.sampleSize() == 32 ? sampleFormatFloat : -1;
    default:
        return -1;
    }
}

/** The renderers that have an output. */
struct Playing
{
    std::mutex mutex;
    std::set<AudioRenderer*> renderers;
};

Playing& playing()
{
    static NeverDestroyed<Playing> playing; // the plug-in may be destroyed after the static objects
    return playing.value;
}

} // namespace

AudioRenderer::AudioRenderer() = default;

AudioRenderer::~AudioRenderer()
{
    closeDevice();
}

AudioRenderer::State AudioRenderer::state() const
{
    if (!m_audioOn) {
        return State::Off;
    }
    if (!m_device) {
        return State::Armed;
    }
    return m_output ? State::Playing : State::MuteSink;
}

void AudioRenderer::closeAll()
{
    std::set<AudioRenderer*> open;
    {
        const std::lock_guard lock(playing().mutex);
        open = playing().renderers;
    }
    for (AudioRenderer* renderer : open) {
        renderer->closeDevice();
    }
}

double AudioRenderer::volume() const
{
    return m_volume;
}

void AudioRenderer::closeDevice()
{
    {
        const std::lock_guard lock(playing().mutex);
        playing().renderers.erase(this);
    }
    m_output.reset();
    m_device.reset();
}

/** The output's thread must not outlive the application object, without which Qt's sound does not work. */
void AudioRenderer::closeWithApplication()
{
    {
        const std::lock_guard lock(playing().mutex);
        playing().renderers.insert(this);
    }
    // Made when a device has been opened: what Qt's sound has of static objects outlives this one.
    static ApplicationEnd applicationEnd(&AudioRenderer::closeAll);
    applicationEnd.arm();
}

void AudioRenderer::SetAudioOn(bool on)
{
    if (on == m_audioOn) {
        return;
    }
    m_audioOn = on;
    if (!on) {
        closeDevice();
    }
}

void AudioRenderer::SetVolume(double volume)
{
    if (m_output) {
        applyVolume(volume);
    } else {
        m_volume = volume;
    }
}

void AudioRenderer::applyVolume(double volume)
{
    QAudioOutput* output = m_output->audioOutput();
    output->setVolume(volume);
    m_volume = output->volume();
}

void AudioRenderer::Play(const boost::intrusive_ptr<_TMediaDataPacketInfoV3>& packet, bool dropWhenFull)
{
    if (!m_audioOn || !packet) {
        return;
    }
    if (m_device && !m_device->hasKeyOf(*packet)) {
        closeDevice();
    }
    if (!m_device) {
        if (QCoreApplication::instance() == nullptr) {
            return; // Qt's sound needs an application
        }
        openDevice(*packet);
    }
    m_device->Push(packet, dropWhenFull);
}

void AudioRenderer::openDevice(const _TMediaDataPacketInfoV3& packet)
{
    const QAudioFormat desired = formatOf(packet);
    QList<QAudioDeviceInfo> outputs;
    if (packet.AudioSamplingFreq >= lowestSampleRate) { // otherwise no device is asked, and none suits
        outputs = SystemProbe::current().audioDevices(QAudio::AudioOutput);
    }
    // Deliberate: the first device that suits wins, whichever is the default one.
    for (const QAudioDeviceInfo& info : outputs) {
        const QAudioFormat nearest = SystemProbe::current().nearestFormat(info, desired);
        if (nearest.codec() != pcmCodec) {
            continue;
        }
        SwrConverter converter;
        if (converter.Setup(sampleFormatOf(nearest), nearest.sampleRate(), nearest.channelCount(),
                            sampleFormatS16, desired.sampleRate(), desired.channelCount()) < 0) {
            continue;
        }
        m_device = std::make_unique<AudioDevice>(std::move(converter), &packet);
        m_output = std::make_unique<AudioOutput>(info, nearest, m_device.get());
        m_output->start(QThread::InheritPriority);
        while (m_output->audioOutput() == nullptr) {
            QThread::yieldCurrentThread();
        }
        applyVolume(m_volume);
        closeWithApplication();
        return;
    }
    m_device = std::make_unique<AudioDevice>(packet);
}
