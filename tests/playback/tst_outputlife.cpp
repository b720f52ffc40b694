// What AudioRenderer asks of QAudioOutput, in which order, with a QAudioOutput whose calls are replaced.

#include "src/playback/AudioRenderer.h"
#include "tests/support/MediaPackets.h"
#include "tests/support/SystemOverrides.h"

#include <QAudioOutput>
#include <QCoreApplication>
#include <QTest>

#include <algorithm>
#include <mutex>
#include <optional>
#include <vector>

namespace {

/** Calls of the output, as they come on either thread. */
struct Calls
{
    void note(const QString& call)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        list.append(call);
    }

    QStringList take()
    {
        const std::lock_guard<std::mutex> lock(mutex);
        QStringList taken;
        taken.swap(list);
        return taken;
    }

    std::mutex mutex;
    QStringList list;
};

Calls calls;
double outputVolume = 1.0;

} // namespace

// These come before Qt's.

void QAudioOutput::start(QIODevice* device)
{
    calls.note(device->isOpen() ? QStringLiteral("start") : QStringLiteral("start of a closed device"));
    connect(
        device, &QIODevice::aboutToClose, device, [] { calls.note(QStringLiteral("close")); },
        Qt::DirectConnection);
}

void QAudioOutput::stop()
{
    calls.note(QStringLiteral("stop"));
}

void QAudioOutput::setVolume(qreal volume)
{
    calls.note(QStringLiteral("volume %1").arg(volume));
    outputVolume = std::clamp(volume, 0.0, 1.0);
}

qreal QAudioOutput::volume() const
{
    return outputVolume;
}

class TestOutputLife : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup() { m_application.reset(); }
    void outputEndsBeforeItsDevice_data();
    void outputEndsBeforeItsDevice();
    void volumeReachesTheOutput();
    void laterVolumesReachTheOutput();
    void volumeIsKeptForTheNextOutput();
    void outputEndsWithEachApplication();
    void nothingIsOpenedWithoutAnApplication();

private:
    void startApplication();

    std::optional<QCoreApplication> m_application;
};

namespace {

MediaPacketPtr packetOf(std::uint32_t streamType)
{
    return MediaPackets::make(QByteArray(640, '\x10'), {streamType});
}

} // namespace

void TestOutputLife::startApplication()
{
    static int count = 1;
    static char name[] = "tst_outputlife";
    static char* arguments[] = {name, nullptr};
    m_application.emplace(count, arguments);
}

void TestOutputLife::init()
{
    startApplication();
    QAudioFormat plain;
    plain.setSampleRate(8000);
    plain.setChannelCount(1);
    plain.setSampleSize(16);
    plain.setSampleType(QAudioFormat::SignedInt);
    plain.setByteOrder(QAudioFormat::LittleEndian);
    plain.setCodec(QStringLiteral("audio/pcm"));
    SystemOverrides::setOutputFormats({plain});
    calls.take();
    outputVolume = 1.0;
}

void TestOutputLife::outputEndsBeforeItsDevice_data()
{
    QTest::addColumn<QString>("cause");
    for (const char* cause : {"switched off", "another format", "end of the renderer"}) {
        QTest::newRow(cause) << cause;
    }
}

void TestOutputLife::outputEndsBeforeItsDevice()
{
    QFETCH(QString, cause);
    {
        AudioRenderer renderer;
        renderer.SetAudioOn(true);
        renderer.Play(packetOf(8192), true);
        QCOMPARE(calls.take(), (QStringList{"start", "volume 1"}));
        if (cause == QLatin1String("switched off")) {
            renderer.SetAudioOn(false);
        } else if (cause == QLatin1String("another format")) {
            renderer.Play(packetOf(16384), true);
            QCOMPARE(calls.take(), (QStringList{"stop", "close", "start", "volume 1"}));
            renderer.SetAudioOn(false);
        }
    }
    QCOMPARE(calls.take(), (QStringList{"stop", "close"}));
}

void TestOutputLife::volumeReachesTheOutput()
{
    AudioRenderer renderer;
    renderer.SetVolume(0.25);
    QCOMPARE(renderer.volume(), 0.25);
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(8192), true);
    QCOMPARE(calls.take(), (QStringList{"start", "volume 0.25"}));
    QCOMPARE(renderer.volume(), 0.25);
}

void TestOutputLife::laterVolumesReachTheOutput()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(8192), true);
    calls.take();
    const std::vector<std::pair<double, double>> volumes{{100.0, 1.0}, {0.5, 0.5}, {-3.0, 0.0}};
    for (const auto& [asked, given] : volumes) {
        renderer.SetVolume(asked);
        QCOMPARE(calls.take(), QStringList{QStringLiteral("volume %1").arg(asked)});
        QCOMPARE(renderer.volume(), given); // what the output made of it
    }
}

void TestOutputLife::volumeIsKeptForTheNextOutput()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(8192), true);
    renderer.SetVolume(0.5);
    calls.take();
    renderer.Play(packetOf(16384), true);
    QCOMPARE(calls.take(), (QStringList{"stop", "close", "start", "volume 0.5"}));
    renderer.Play(packetOf(16384), true);
    QCOMPARE(calls.take(), QStringList()); // once an output, not for each packet
}

void TestOutputLife::outputEndsWithEachApplication()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    for (int application = 1; application <= 3; ++application) {
        renderer.Play(packetOf(8192), true);
        QCOMPARE(calls.take(), (QStringList{"start", "volume 1"}));
        m_application.reset();
        QCOMPARE(calls.take(), (QStringList{"stop", "close"}));
        QCOMPARE(renderer.state(), AudioRenderer::State::Armed);
        startApplication();
    }
}

void TestOutputLife::nothingIsOpenedWithoutAnApplication()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    m_application.reset();
    renderer.Play(packetOf(8192), true);
    QCOMPARE(renderer.state(), AudioRenderer::State::Armed);
    QCOMPARE(SystemOverrides::outputListings(), 0);
    QCOMPARE(calls.take(), QStringList());
    startApplication();
    renderer.Play(packetOf(8192), true);
    QCOMPARE(renderer.state(), AudioRenderer::State::Playing);
    QCOMPARE(calls.take(), (QStringList{"start", "volume 1"}));
}

QTEST_APPLESS_MAIN(TestOutputLife)
#include "tst_outputlife.moc"
