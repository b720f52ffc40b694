#include "standins/framesmith/MicrophoneSource.h"

#include "audio/PcmFormat.h"
#include "standins/framesmith/SampleQueue.h"

#include <QAudioDeviceInfo>
#include <QAudioInput>
#include <QCoreApplication>
#include <QThread>
#include <QTimer>

#include <atomic>
#include <future>

namespace framesmith {

namespace {

constexpr std::size_t queueCapacity = std::size_t{2} * PcmConverter::captureRate; // two seconds
constexpr int reopenInterval = 1000;                                              // ms

QAudioDeviceInfo findDevice(const QString& name)
{
    if (name.isEmpty()) {
        return QAudioDeviceInfo::defaultInputDevice();
    }
    const auto devices = QAudioDeviceInfo::availableDevices(QAudio::AudioInput);
    for (const QAudioDeviceInfo& device : devices) {
        if (device.deviceName() == name) {
            return device;
        }
    }
    return {};
}

} // namespace

/** Runs the QAudioInput on an event loop of its own and puts what it hears into the queue. */
class MicrophoneThread : public QThread
{
public:
    MicrophoneThread(QString deviceName, SampleQueue& queue)
        : m_deviceName(std::move(deviceName)), m_queue(queue)
    {
    }

    /** Whether the device opened; waits for the thread to try. */
    bool opened() { return m_opened.get_future().get(); }

    /** Ends the thread; from then on all that it did is visible. */
    void end()
    {
        quit();
        wait();
        m_ended.load(std::memory_order_acquire);
    }

protected:
    void run() override
    {
        capture();
        m_ended.store(true, std::memory_order_release);
    }

private:
    void capture()
    {
        const QAudioDeviceInfo device = findDevice(m_deviceName);
        // Where there is no device, Qt may offer one without a format in its place.
        const QAudioFormat format =
            device.isNull() ? QAudioFormat() : device.nearestFormat(pcmFormat(PcmConverter::captureRate));
        const auto sampleFormat = sampleFormatOf(format);
        if (!sampleFormat) {
            m_opened.set_value(false);
            return;
        }
        PcmConverter converter(*sampleFormat, format.sampleRate(), format.channelCount());
        QAudioInput input(device, format);
        QIODevice* stream = converter.valid() ? input.start() : nullptr;
        if (stream == nullptr || input.error() != QAudio::NoError) {
            m_opened.set_value(false);
            return;
        }

        std::vector<std::int16_t> samples;
        QByteArray pending;
        QObject receiver; // its connections end with this function
        const auto record = [&] {
            pending += stream->readAll();
            const std::size_t frames = static_cast<std::size_t>(pending.size()) / converter.bytesPerFrame();
            samples.clear();
            converter.convert(pending.constData(), frames, samples);
            pending.remove(0, static_cast<int>(frames * converter.bytesPerFrame()));
            m_queue.push(samples);
        };
        const auto listen = [&] { QObject::connect(stream, &QIODevice::readyRead, &receiver, record); };
        listen();

        // A microphone that was pulled out may come back.
        QTimer reopen;
        reopen.setSingleShot(true);
        reopen.setInterval(reopenInterval);
        QObject::connect(&input, &QAudioInput::stateChanged, &receiver, [&](QAudio::State state) {
            if (state == QAudio::StoppedState && input.error() != QAudio::NoError) {
                reopen.start();
            }
        });
        QObject::connect(&reopen, &QTimer::timeout, &receiver, [&] {
            QIODevice* again = input.start();
            if (again != nullptr && input.error() == QAudio::NoError) {
                stream = again;
                listen();
            } else {
                reopen.start();
            }
        });

        m_opened.set_value(true);
        exec();
        QObject::disconnect(&input, nullptr, &receiver, nullptr);
        input.stop();
    }

    QString m_deviceName;
    SampleQueue& m_queue;
    std::promise<bool> m_opened;
    std::atomic<bool> m_ended{false};
};

MicrophoneSource::MicrophoneSource(QString deviceName)
    : m_queue(std::make_unique<SampleQueue>(queueCapacity)),
      m_thread(std::make_unique<MicrophoneThread>(std::move(deviceName), *m_queue))
{
}

MicrophoneSource::~MicrophoneSource()
{
    MicrophoneSource::stop();
    m_thread->end();
}

Code MicrophoneSource::start()
{
    if (QCoreApplication::instance() == nullptr) {
        return NoInputDevice; // Qt's sound needs an application
    }
    m_thread->start();
    return m_thread->opened() ? Success : NoInputDevice;
}

bool MicrophoneSource::read(std::int16_t* samples, std::size_t count)
{
    return m_queue->pop(samples, count);
}

void MicrophoneSource::stop()
{
    m_queue->close();
}

} // namespace framesmith
