// The choice of the output device, with devices and their formats as the tests want them. No sound is made.

#include "src/playback/AudioRenderer.h"
#include "tests/support/MediaPackets.h"
#include "tests/support/SystemOverrides.h"

#include <QTest>

using SystemOverrides::askedFormats;
using SystemOverrides::outputListings;
using SystemOverrides::setOutputFormats;

class TestAudioRenderer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void offIgnoresPackets();
    void asksForTheStreamsFormat();
    void onePairForOneFormat();
    void anotherFormatBuildsANewPair_data();
    void anotherFormatBuildsANewPair();
    void firstSuitableDeviceWins();
    void formatsOfDevices_data();
    void formatsOfDevices();
    void noDeviceMakesAMuteSink();
    void unsuitableChannelCounts_data();
    void unsuitableChannelCounts();
    void absurdRateMakesAMuteSink();
    void muteSinkRetriesOnAnotherFormat();
    void switchingOff();
    void volumes();
    void nullPacket();
};

namespace {

QAudioFormat format(int rate, int channels, int bits, QAudioFormat::SampleType type,
                    QAudioFormat::Endian order = QAudioFormat::LittleEndian, const char* codec = "audio/pcm")
{
    QAudioFormat made;
    made.setSampleRate(rate);
    made.setChannelCount(channels);
    made.setSampleSize(bits);
    made.setSampleType(type);
    made.setByteOrder(order);
    made.setCodec(QString::fromLatin1(codec));
    return made;
}

const QAudioFormat plain = format(8000, 1, 16, QAudioFormat::SignedInt);
const QAudioFormat cdQuality = format(44100, 2, 16, QAudioFormat::SignedInt);

MediaPacketPtr packetOf(const MediaPackets::Format& stream = MediaPackets::Format())
{
    return MediaPackets::make(QByteArray(640, '\x10'), stream);
}

} // namespace

void TestAudioRenderer::init()
{
    setOutputFormats({plain});
}

void TestAudioRenderer::offIgnoresPackets()
{
    AudioRenderer renderer;
    QVERIFY(renderer.state() == AudioRenderer::State::Off);
    renderer.Play(packetOf(), true);
    QCOMPARE(outputListings(), 0);
    renderer.SetAudioOn(true);
    QVERIFY(renderer.state() == AudioRenderer::State::Armed);
    QCOMPARE(outputListings(), 0);
}

void TestAudioRenderer::asksForTheStreamsFormat()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.Play(packetOf({16384, 16000, 2}), true);
    QCOMPARE(askedFormats().size(), 1);
    QCOMPARE(askedFormats()[0], format(16000, 2, 16, QAudioFormat::SignedInt));
}

void TestAudioRenderer::onePairForOneFormat()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    for (int i = 0; i < 5; ++i) {
        renderer.Play(packetOf(), true);
        QVERIFY(renderer.state() == AudioRenderer::State::Playing);
    }
    QCOMPARE(outputListings(), 1);
    // Neither the bit rate nor the packing nor the frame count are part of a stream's key.
    renderer.Play(packetOf({8192, 8000, 1, 7, 99, 1}), true);
    QCOMPARE(outputListings(), 1);
}

void TestAudioRenderer::anotherFormatBuildsANewPair_data()
{
    QTest::addColumn<unsigned>("streamType");
    QTest::addColumn<unsigned>("rate");
    QTest::addColumn<int>("channels");
    QTest::newRow("stream type") << 16384U << 8000U << 1;
    QTest::newRow("rate") << 8192U << 16000U << 1;
    QTest::newRow("channels") << 8192U << 8000U << 2;
}

void TestAudioRenderer::anotherFormatBuildsANewPair()
{
    QFETCH(unsigned, streamType);
    QFETCH(unsigned, rate);
    QFETCH(int, channels);
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(), true);
    renderer.Play(packetOf({streamType, rate, static_cast<std::uint8_t>(channels)}), true);
    QCOMPARE(outputListings(), 2);
    renderer.Play(packetOf(), true); // and back
    QCOMPARE(outputListings(), 3);
    QVERIFY(renderer.state() == AudioRenderer::State::Playing);
}

void TestAudioRenderer::firstSuitableDeviceWins()
{
    setOutputFormats({format(8000, 1, 16, QAudioFormat::SignedInt, QAudioFormat::LittleEndian, "audio/x"),
                      format(8000, 9, 16, QAudioFormat::SignedInt), cdQuality, plain});
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(), true);
    QVERIFY(renderer.state() == AudioRenderer::State::Playing);
    QCOMPARE(askedFormats().size(), 3); // the fourth was not asked
}

void TestAudioRenderer::formatsOfDevices_data()
{
    QTest::addColumn<QAudioFormat>("nearest");
    QTest::addColumn<bool>("suits");
    using F = QAudioFormat;
    QTest::newRow("signed 16") << plain << true;
    QTest::newRow("signed 16, big endian") << format(8000, 1, 16, F::SignedInt, F::BigEndian) << false;
    QTest::newRow("signed 32") << format(48000, 2, 32, F::SignedInt) << true;
    QTest::newRow("signed 32, big endian") << format(48000, 2, 32, F::SignedInt, F::BigEndian) << false;
    QTest::newRow("signed 8") << format(8000, 1, 8, F::SignedInt) << false;
    QTest::newRow("signed 24") << format(8000, 1, 24, F::SignedInt) << false;
    QTest::newRow("unsigned 8") << format(8000, 1, 8, F::UnSignedInt) << true;
    QTest::newRow("unsigned 8, big endian") << format(8000, 1, 8, F::UnSignedInt, F::BigEndian) << true;
    QTest::newRow("unsigned 16") << format(8000, 1, 16, F::UnSignedInt) << false;
    QTest::newRow("float") << format(48000, 2, 32, F::Float) << true;
    QTest::newRow("float, big endian") << format(48000, 2, 32, F::Float, F::BigEndian) << false;
    QTest::newRow("float of 64 bits") << format(48000, 2, 64, F::Float) << false;
    QTest::newRow("unknown") << format(8000, 1, 16, F::Unknown) << false;
    QTest::newRow("another codec") << format(8000, 1, 16, F::SignedInt, F::LittleEndian, "audio/x-raw")
                                   << false;
    QTest::newRow("another case") << format(8000, 1, 16, F::SignedInt, F::LittleEndian, "AUDIO/PCM") << false;
    QTest::newRow("no sound system") << QAudioFormat() << false;
}

void TestAudioRenderer::formatsOfDevices()
{
    QFETCH(QAudioFormat, nearest);
    QFETCH(bool, suits);
    setOutputFormats({nearest});
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(), true);
    QVERIFY(renderer.state() == (suits ? AudioRenderer::State::Playing : AudioRenderer::State::MuteSink));
}

void TestAudioRenderer::noDeviceMakesAMuteSink()
{
    setOutputFormats({});
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    for (int i = 0; i < 20; ++i) {
        renderer.Play(packetOf(), true);
        renderer.Play(packetOf(), false); // does not wait for room that never comes
    }
    QVERIFY(renderer.state() == AudioRenderer::State::MuteSink);
    QCOMPARE(outputListings(), 1); // the devices are not listed again for each packet
}

void TestAudioRenderer::unsuitableChannelCounts_data()
{
    QTest::addColumn<int>("channels");
    QTest::newRow("none") << 0;
    QTest::newRow("nine") << 9;
    QTest::newRow("255") << 255;
}

void TestAudioRenderer::unsuitableChannelCounts()
{
    QFETCH(int, channels);
    setOutputFormats({plain, cdQuality});
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.Play(packetOf({8192, 8000, static_cast<std::uint8_t>(channels)}), true);
    QCOMPARE(askedFormats().size(), 2);
    QVERIFY(renderer.state() == AudioRenderer::State::MuteSink);
}

void TestAudioRenderer::absurdRateMakesAMuteSink()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    for (const std::uint32_t rate : {0U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        renderer.Play(packetOf({8192, rate}), true);
        QVERIFY(renderer.state() == AudioRenderer::State::MuteSink);
    }
}

void TestAudioRenderer::muteSinkRetriesOnAnotherFormat()
{
    setOutputFormats({});
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(), true);
    setOutputFormats({plain});
    renderer.Play(packetOf(), true);
    QVERIFY(renderer.state() == AudioRenderer::State::MuteSink);
    renderer.Play(packetOf({16384}), true);
    QVERIFY(renderer.state() == AudioRenderer::State::Playing);
}

void TestAudioRenderer::switchingOff()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(), true);
    renderer.SetAudioOn(true); // changes nothing
    QVERIFY(renderer.state() == AudioRenderer::State::Playing);
    renderer.SetAudioOn(false);
    QVERIFY(renderer.state() == AudioRenderer::State::Off);
    renderer.Play(packetOf(), true);
    QCOMPARE(outputListings(), 1);
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(), true);
    QCOMPARE(outputListings(), 2);
}

void TestAudioRenderer::volumes()
{
    AudioRenderer renderer;
    QCOMPARE(renderer.volume(), 1.0);
    renderer.SetVolume(100.0);
    QCOMPARE(renderer.volume(), 100.0);
    renderer.SetAudioOn(true);
    renderer.Play(packetOf(), true);
    QCOMPARE(renderer.volume(), 1.0); // what the output made of it
    renderer.SetVolume(100.0);
    QCOMPARE(renderer.volume(), 1.0);
    renderer.SetAudioOn(false);
    renderer.SetVolume(0.25);
    QCOMPARE(renderer.volume(), 0.25);
}

void TestAudioRenderer::nullPacket()
{
    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    renderer.Play(nullptr, true);
    QVERIFY(renderer.state() == AudioRenderer::State::Armed);
}

QTEST_GUILESS_MAIN(TestAudioRenderer)
#include "tst_audiorenderer.moc"
