#include "audio/PcmConverter.h"
#include "platform/FrameSmith.h"
#include "standins/framesmith/CaptureChannel.h"
#include "standins/framesmith/FrameSmithErrors.h"
#include "standins/framesmith/PacketClock.h"
#include "standins/framesmith/WaveFileSource.h"
#include "tests/standins/CaptureHarness.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <QTemporaryDir>
#include <QTest>
#include <QtMath>

#include <cmath>

using namespace framesmith;

class TestFrameSmith : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup();
    void initialAndRelease();
    void wrongHandles();
    void wrongArguments();
    void outOfOrder();
    void releaseWithOpenChannels();
    void handlesAreNeverReused();
    void fileIsHeardAsMuLaw();
    void packetFormat();
    void silenceAfterTheFile();
    void captureStartsAnew();
    void fileOfAnotherFormat_data();
    void fileOfAnotherFormat();
    void brokenFile_data();
    void brokenFile();
    void volume_data();
    void volume();
    void mute();
    void inRealTime();
    void noDriftOverAnHour();
    void slowCallbackCatchesUp();
    void stopEndsTheDelivery();
    void endedCaptureIsStoppedOnce();
    void stopFromTheCallback();
    void withoutAMicrophone();
    void makeAudioPacket();
    void makeAudioPacketFailures();
};

namespace {

/** Makes the file the microphone of this process until cleanup. */
void speak(const QString& path)
{
    qputenv("FRAMESMITH_CAPTURE_FILE", QFile::encodeName(path));
}

QByteArray bitstreams(const std::vector<CaptureHarness::Packet>& packets)
{
    QByteArray all;
    for (const auto& packet : packets) {
        all += packet.bitstream();
    }
    return all;
}

void* const foreignHandle = reinterpret_cast<void*>(0x12345678);

} // namespace

void TestFrameSmith::cleanup()
{
    qunsetenv("FRAMESMITH_CAPTURE_FILE");
}

void TestFrameSmith::initialAndRelease()
{
    FrameSmithHandle library = nullptr;
    QCOMPARE(FrameSmith_Initial(&library, 0, FrameSmithVersion), std::int32_t{Success});
    QVERIFY(library != nullptr);
    FrameSmithHandle second = nullptr;
    QCOMPARE(FrameSmith_Initial(&second, 0, FrameSmithVersion), std::int32_t{Success});
    QVERIFY(second != library);
    QCOMPARE(FrameSmith_Release(&library), std::int32_t{Success});
    QCOMPARE(library, nullptr);
    QCOMPARE(FrameSmith_Release(&library), std::int32_t{InvalidHandle});
    QCOMPARE(FrameSmith_Release(&second), std::int32_t{Success});
    QCOMPARE(FrameSmith_Release(nullptr), std::int32_t{InvalidArgument});
    QCOMPARE(FrameSmith_Initial(nullptr, 0, FrameSmithVersion), std::int32_t{InvalidArgument});
    QCOMPARE(FrameSmith_Initial(&library, 0, 0x5000303), std::int32_t{UnsupportedVersion});
    QCOMPARE(library, nullptr);
}

void TestFrameSmith::wrongHandles()
{
    CaptureHarness harness;
    FrameSmithHandle channel = nullptr;
    const FrameSmithChannelOptions options{7, 8192, 8000, 1, 1, 640};
    const FrameSmithCaptureOptions capture = CaptureHarness::captureOptions(nullptr);
    QCOMPARE(FrameSmith_CreateChannel(harness.library, &channel, &options), std::int32_t{Success});
    // Null, foreign, and handles of another kind.
    for (FrameSmithHandle wrong : {FrameSmithHandle(nullptr), foreignHandle, harness.channel, channel}) {
        FrameSmithHandle copy = wrong;
        QCOMPARE(FrameSmith_Release(&copy), std::int32_t{InvalidHandle});
        QCOMPARE(FrameSmith_CreateChannel(wrong, &copy, &options), std::int32_t{InvalidHandle});
        QCOMPARE(FrameSmith_CreateAudioCaptureChannel(wrong, &copy, &capture), std::int32_t{InvalidHandle});
    }
    for (FrameSmithHandle wrong : {FrameSmithHandle(nullptr), foreignHandle, harness.library, channel}) {
        FrameSmithHandle copy = wrong;
        QCOMPARE(FrameSmith_StartAudioCapture(wrong), std::int32_t{InvalidHandle});
        QCOMPARE(FrameSmith_StopAudioCapture(wrong), std::int32_t{InvalidHandle});
        QCOMPARE(FrameSmith_UpdateChannelSettings(wrong, 1, 50, 0), std::int32_t{InvalidHandle});
        QCOMPARE(FrameSmith_SetAudioCaptureChannelOption(wrong, 6, 1, 0), std::int32_t{InvalidHandle});
        QCOMPARE(FrameSmith_DeleteAudioCaptureChannel(&copy), std::int32_t{InvalidHandle});
        QCOMPARE(copy, wrong);
    }
    for (FrameSmithHandle wrong :
         {FrameSmithHandle(nullptr), foreignHandle, harness.library, harness.channel}) {
        FrameSmithHandle copy = wrong;
        TMediaDataPacketInfo packet{};
        std::uint32_t reported = 0;
        const std::int16_t sample = 0;
        QCOMPARE(FrameSmith_DeleteChannel(&copy), std::int32_t{InvalidHandle});
        QCOMPARE(FrameSmith_MakeAudioPacket(wrong, &sample, 2, 100, &reported, &packet),
                 std::int32_t{InvalidHandle});
    }
    FrameSmith_DeleteChannel(&channel);
}

void TestFrameSmith::wrongArguments()
{
    CaptureHarness harness;
    FrameSmithHandle channel = nullptr;
    const FrameSmithChannelOptions good{7, 8192, 8000, 1, 1, 640};
    const auto create = [&](auto change) {
        FrameSmithChannelOptions options = good;
        change(options);
        return FrameSmith_CreateChannel(harness.library, &channel, &options);
    };
    QCOMPARE(create([](auto& o) { o.streamType = 1024; }), std::int32_t{InvalidArgument});
    QCOMPARE(create([](auto& o) { o.sampleRate = 0; }), std::int32_t{InvalidArgument});
    QCOMPARE(create([](auto& o) { o.channels = 2; }), std::int32_t{InvalidArgument});
    QCOMPARE(create([](auto& o) { o.samplesPerFrame = 0; }), std::int32_t{InvalidArgument});
    QCOMPARE(create([](auto& o) { o.samplesPerFrame = 0xFFFFFFFF; }), std::int32_t{InvalidArgument});
    QCOMPARE(FrameSmith_CreateChannel(harness.library, nullptr, &good), std::int32_t{InvalidArgument});
    QCOMPARE(FrameSmith_CreateChannel(harness.library, &channel, nullptr), std::int32_t{InvalidArgument});
    QCOMPARE(FrameSmith_DeleteChannel(nullptr), std::int32_t{InvalidArgument});
    QCOMPARE(FrameSmith_DeleteAudioCaptureChannel(nullptr), std::int32_t{InvalidArgument});
    FrameSmithCaptureOptions capture = CaptureHarness::captureOptions(nullptr);
    capture.packetCallback = nullptr;
    QCOMPARE(FrameSmith_CreateAudioCaptureChannel(harness.library, &channel, &capture),
             std::int32_t{InvalidArgument});
    capture = CaptureHarness::captureOptions(nullptr);
    capture.bitsPerSample = 8;
    QCOMPARE(FrameSmith_CreateAudioCaptureChannel(harness.library, &channel, &capture),
             std::int32_t{InvalidArgument});
    for (const std::int32_t volume : {-1, 101}) {
        QCOMPARE(FrameSmith_UpdateChannelSettings(harness.channel, 1, volume, 0),
                 std::int32_t{InvalidArgument});
    }
    QCOMPARE(FrameSmith_UpdateChannelSettings(harness.channel, 2, 50, 0), std::int32_t{InvalidArgument});
    QCOMPARE(FrameSmith_SetAudioCaptureChannelOption(harness.channel, 6, 2, 0),
             std::int32_t{InvalidArgument});
    QCOMPARE(FrameSmith_SetAudioCaptureChannelOption(harness.channel, 5, 1, 0),
             std::int32_t{InvalidArgument});
}

void TestFrameSmith::outOfOrder()
{
    speak(ANNOUNCEMENT_WAV);
    CaptureHarness harness;
    QCOMPARE(FrameSmith_StopAudioCapture(harness.channel), std::int32_t{WrongState});
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{Success});
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{WrongState});
    QCOMPARE(FrameSmith_StopAudioCapture(harness.channel), std::int32_t{Success});
    QCOMPARE(FrameSmith_StopAudioCapture(harness.channel), std::int32_t{WrongState});
    FrameSmithHandle stale = harness.channel;
    QCOMPARE(FrameSmith_DeleteAudioCaptureChannel(&harness.channel), std::int32_t{Success});
    QCOMPARE(FrameSmith_StartAudioCapture(stale), std::int32_t{InvalidHandle});
    QCOMPARE(FrameSmith_DeleteAudioCaptureChannel(&stale), std::int32_t{InvalidHandle});
}

void TestFrameSmith::releaseWithOpenChannels()
{
    CaptureHarness harness;
    FrameSmithHandle library = harness.library;
    QCOMPARE(FrameSmith_Release(&library), std::int32_t{WrongState});
    QCOMPARE(library, harness.library);
    QCOMPARE(FrameSmith_DeleteAudioCaptureChannel(&harness.channel), std::int32_t{Success});
    QCOMPARE(FrameSmith_Release(&harness.library), std::int32_t{Success});
}

void TestFrameSmith::handlesAreNeverReused()
{
    std::vector<void*> seen;
    for (int i = 0; i < 50; ++i) {
        const CaptureHarness harness;
        for (void* handle : {harness.library, harness.channel}) {
            QVERIFY(std::find(seen.begin(), seen.end(), handle) == seen.end());
            seen.push_back(handle);
        }
    }
}

void TestFrameSmith::fileIsHeardAsMuLaw()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("speech.wav");
    const auto samples = WavFiles::resample(WavFiles::read(ANNOUNCEMENT_WAV), 16000, 8000);
    const WavFiles::Samples second(samples.begin(), samples.begin() + 6400);
    QVERIFY(WavFiles::write(path, second, 8000));
    speak(path);
    CaptureHarness harness;
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{Success});
    QVERIFY(harness.waitForPackets(10));
    FrameSmith_StopAudioCapture(harness.channel);
    auto packets = harness.taken();
    packets.resize(10);
    QCOMPARE(bitstreams(packets), WavFiles::toMuLaw(second)); // to the bit
}

void TestFrameSmith::packetFormat()
{
    speak(ANNOUNCEMENT_WAV);
    CaptureHarness harness;
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(3));
    FrameSmith_StopAudioCapture(harness.channel);
    std::uint32_t position = 0;
    for (const auto& packet : harness.taken()) {
        QCOMPARE(packet.bytes.size(), 672);
        QCOMPARE(packet.offset, 32U);
        QCOMPARE(packet.bitstreamSize, 640U);
        QCOMPARE(packet.streamType, 8192U);
        QCOMPARE(packet.sampleRate, 8000U);
        QCOMPARE(packet.channels, 1);
        QCOMPARE(packet.delay, DWORD{80});
        QCOMPARE(packet.position(), position);
        position += 640;
    }
}

void TestFrameSmith::silenceAfterTheFile()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("short.wav");
    QVERIFY(WavFiles::write(path, WavFiles::Samples(700, 12000), 8000));
    speak(path);
    CaptureHarness harness;
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(4));
    FrameSmith_StopAudioCapture(harness.channel);
    const QByteArray all = bitstreams(harness.taken());
    QCOMPARE(all.mid(699, 2), QByteArray(1, all[0]) + QByteArray("\xFF")); // mu-law 0xFF is 0
    QCOMPARE(all.mid(700), QByteArray(all.size() - 700, '\xFF'));
}

void TestFrameSmith::captureStartsAnew()
{
    speak(ANNOUNCEMENT_WAV);
    CaptureHarness harness;
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(2));
    FrameSmith_StopAudioCapture(harness.channel);
    const std::size_t before = harness.taken().size();
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(before + 2));
    FrameSmith_StopAudioCapture(harness.channel);
    const auto packets = harness.taken();
    QCOMPARE(packets[before].bitstream(), packets[0].bitstream());
    QCOMPARE(packets[before].position(), 0U);
}

void TestFrameSmith::fileOfAnotherFormat_data()
{
    QTest::addColumn<int>("rate");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("bits");
    QTest::newRow("44.1 kHz stereo, 16 bits") << 44100 << 2 << 16;
    QTest::newRow("48 kHz mono, 24 bits") << 48000 << 1 << 24;
    QTest::newRow("16 kHz mono, 8 bits") << 16000 << 1 << 8;
    QTest::newRow("8 kHz stereo, 16 bits") << 8000 << 2 << 16;
    QTest::newRow("11.025 kHz, 6 channels, 32 bits") << 11025 << 6 << 32;
}

void TestFrameSmith::fileOfAnotherFormat()
{
    QFETCH(int, rate);
    QFETCH(int, channels);
    QFETCH(int, bits);
    QByteArray data;
    for (int i = 0; i < rate; ++i) {
        const double value = 0.4 * std::sin(2.0 * M_PI * 440.0 * i / rate);
        for (int channel = 0; channel < channels; ++channel) {
            const auto sample = static_cast<std::int64_t>(value * std::pow(2.0, bits - 1));
            const std::int64_t stored = bits == 8 ? sample + 128 : sample;
            for (int byte = 0; byte < bits / 8; ++byte) {
                data.append(static_cast<char>(stored >> (8 * byte)));
            }
        }
    }
    const QTemporaryDir folder;
    QFile file(folder.filePath("tone.wav"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(WavFiles::riff(WavFiles::chunk("fmt ", WavFiles::pcmFormat(channels, rate, bits)) +
                              WavFiles::chunk("data", data)));
    file.close();
    speak(file.fileName());
    CaptureHarness harness;
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{Success});
    QVERIFY(harness.waitForPackets(8));
    FrameSmith_StopAudioCapture(harness.channel);
    // mu-law by the Recommendation's rule: sign, exponent, mantissa.
    WavFiles::Samples heard;
    for (const char byte : bitstreams(harness.taken()).mid(800, 4000)) {
        const int code = ~byte & 0xFF;
        const int magnitude = ((((code & 0x0F) << 3) + 0x84) << ((code & 0x70) >> 4)) - 0x84;
        heard.push_back(static_cast<std::int16_t>((code & 0x80) != 0 ? -magnitude : magnitude));
    }
    QVERIFY(std::abs(SignalMeasure::toneFrequency(heard, 8000) - 440.0) < 0.5);
    const double level = SignalMeasure::levelDbfs(heard);
    const double expected = 20.0 * std::log10(0.4) - 3.01;
    if (channels <= 2) {
        QVERIFY2(std::abs(level - expected) < 0.3, qPrintable(QString::number(level)));
    } else {
        QVERIFY2(level > -40.0 && level < 0.0, qPrintable(QString::number(level)));
    }
}

void TestFrameSmith::brokenFile_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("this is no sound");
    QTest::newRow("header alone") << QByteArray("RIFF\xFF\xFF\xFF\xFFWAVE");
    QTest::newRow("format without rate")
        << WavFiles::riff(WavFiles::chunk("fmt ", WavFiles::pcmFormat(1, 0, 16)) +
                          WavFiles::chunk("data", QByteArray(100, 'x')));
    QTest::newRow("format without channels")
        << WavFiles::riff(WavFiles::chunk("fmt ", WavFiles::pcmFormat(0, 8000, 16)) +
                          WavFiles::chunk("data", QByteArray(100, 'x')));
}

void TestFrameSmith::brokenFile()
{
    QFETCH(QByteArray, bytes);
    const QTemporaryDir folder;
    QFile file(folder.filePath("broken.wav"));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
    file.close();
    speak(file.fileName());
    CaptureHarness harness;
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{FileFailed});
    speak(folder.filePath("absent.wav"));
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{FileFailed});
    speak(ANNOUNCEMENT_WAV); // the channel is still good
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{Success});
}

void TestFrameSmith::volume_data()
{
    QTest::addColumn<int>("volume");
    QTest::addColumn<int>("given");
    QTest::addColumn<int>("expected");
    QTest::newRow("50 leaves it") << 50 << 1000 << 1000;
    QTest::newRow("100 doubles") << 100 << 1000 << 2000;
    QTest::newRow("25 halves") << 25 << 1000 << 500;
    QTest::newRow("0 silences") << 0 << 1000 << 0;
    QTest::newRow("100 saturates above") << 100 << 30000 << 32767;
    QTest::newRow("100 saturates below") << 100 << -30000 << -32768;
}

void TestFrameSmith::volume()
{
    QFETCH(int, volume);
    QFETCH(int, given);
    QFETCH(int, expected);
    const QTemporaryDir folder;
    const QString path = folder.filePath("level.wav");
    WavFiles::write(path, WavFiles::Samples(8000, static_cast<std::int16_t>(given)), 8000);
    speak(path);
    CaptureHarness harness;
    QCOMPARE(FrameSmith_UpdateChannelSettings(harness.channel, 1, volume, 0), std::int32_t{Success});
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(1));
    const WavFiles::Samples samples(640, static_cast<std::int16_t>(expected));
    QCOMPARE(harness.taken()[0].bitstream(), WavFiles::toMuLaw(samples));
}

void TestFrameSmith::mute()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath("level.wav");
    WavFiles::write(path, WavFiles::Samples(80000, 1000), 8000);
    speak(path);
    CaptureHarness harness;
    QCOMPARE(FrameSmith_SetAudioCaptureChannelOption(harness.channel, 6, 1, 0), std::int32_t{Success});
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(1));
    QCOMPARE(harness.taken()[0].bitstream(), QByteArray(640, '\xFF'));
    QCOMPARE(FrameSmith_SetAudioCaptureChannelOption(harness.channel, 6, 0, 0), std::int32_t{Success});
    const std::size_t before = harness.taken().size();
    QVERIFY(harness.waitForPackets(before + 2)); // while it runs
    QCOMPARE(harness.taken().back().bitstream(), WavFiles::toMuLaw(WavFiles::Samples(640, 1000)));
}

void TestFrameSmith::inRealTime()
{
    speak(ANNOUNCEMENT_WAV);
    CaptureHarness harness;
    harness.inCallback = [](std::size_t) { std::this_thread::sleep_for(std::chrono::milliseconds(72)); };
    const auto start = std::chrono::steady_clock::now();
    FrameSmith_StartAudioCapture(harness.channel);
    constexpr int count = 26;
    QVERIFY(harness.waitForPackets(count));
    const auto packets = harness.taken();
    // No packet before it has been spoken; lateness of a busy machine is not added up.
    double latest = 0;
    for (int i = 0; i < count; ++i) {
        const double time =
            std::chrono::duration<double, std::milli>(packets[static_cast<std::size_t>(i)].time - start)
                .count();
        QVERIFY2(time >= (i + 1) * 80.0, qPrintable(QString::number(time)));
        latest = time - (i + 1) * 80.0;
    }
    QVERIFY2(latest < 200.0, qPrintable(QString::number(latest)));
}

void TestFrameSmith::noDriftOverAnHour()
{
    const auto start = PacketClock::Clock::now();
    const PacketClock clock(start, 640, 8000);
    QCOMPARE(clock.dueTime(0) - start, PacketClock::Clock::duration(std::chrono::milliseconds(80)));
    QCOMPARE(clock.dueTime(44999) - start, PacketClock::Clock::duration(std::chrono::hours(1)));
    // Neither where a packet is no whole number of nanoseconds, nor after years.
    const PacketClock odd(start, 1, 44100);
    QCOMPARE(odd.dueTime(44100ULL * 3600 - 1) - start, PacketClock::Clock::duration(std::chrono::hours(1)));
    const auto years = std::chrono::hours(24 * 365 * 50);
    QCOMPARE(clock.dueTime(45000ULL * 24 * 365 * 50 - 1) - start, PacketClock::Clock::duration(years));
}

void TestFrameSmith::slowCallbackCatchesUp()
{
    speak(ANNOUNCEMENT_WAV);
    CaptureHarness harness;
    harness.inCallback = [](std::size_t number) {
        if (number == 1) {
            std::this_thread::sleep_for(std::chrono::milliseconds(500)); // late by six packets, once
        }
    };
    const auto start = std::chrono::steady_clock::now();
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(16));
    const auto packets = harness.taken();
    for (std::size_t i = 0; i < 16; ++i) {
        QCOMPARE(packets[i].position(), static_cast<std::uint32_t>(i * 640)); // none lost
    }
    const double last = std::chrono::duration<double, std::milli>(packets[15].time - start).count();
    QVERIFY2(last < 16 * 80.0 + 250.0, qPrintable(QString::number(last)));
}

void TestFrameSmith::stopEndsTheDelivery()
{
    speak(ANNOUNCEMENT_WAV);
    CaptureHarness harness;
    std::atomic<bool> inside = false;
    harness.inCallback = [&](std::size_t) {
        inside = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        inside = false;
    };
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(1));
    FrameSmith_StopAudioCapture(harness.channel);
    QVERIFY(!inside); // the last callback has returned
    const std::size_t count = harness.taken().size();
    harness.inCallback = nullptr;
    // What comes next is the next capture, from its start.
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(count + 3));
    FrameSmith_StopAudioCapture(harness.channel);
    const auto packets = harness.taken();
    for (std::uint32_t i = 0; i < 3; ++i) {
        QCOMPARE(packets[count + i].position(), i * 640);
    }
}

void TestFrameSmith::endedCaptureIsStoppedOnce()
{
    CaptureHarness harness;
    CaptureChannel channel(CaptureHarness::captureOptions(&harness),
                           [] { return std::make_unique<WaveFileSource>(QStringLiteral(ANNOUNCEMENT_WAV)); });
    channel.end(); // nothing to end
    QCOMPARE(channel.stop(), WrongState);
    for (int capture = 1; capture <= 2; ++capture) {
        QCOMPARE(channel.start(), Success);
        const std::size_t before = harness.taken().size();
        QVERIFY(harness.waitForPackets(before + 1));
        channel.end();
        channel.end();
        QCOMPARE(channel.start(), WrongState); // it counts as started
        QCOMPARE(channel.stop(), Success);
        QCOMPARE(channel.stop(), WrongState);
    }
}

void TestFrameSmith::stopFromTheCallback()
{
    speak(ANNOUNCEMENT_WAV);
    CaptureHarness harness;
    std::atomic<std::int32_t> stopped = Success;
    std::atomic<std::int32_t> deleted = Success;
    harness.inCallback = [&](std::size_t) {
        stopped = FrameSmith_StopAudioCapture(harness.channel);
        FrameSmithHandle copy = harness.channel;
        deleted = FrameSmith_DeleteAudioCaptureChannel(&copy);
    };
    FrameSmith_StartAudioCapture(harness.channel);
    QVERIFY(harness.waitForPackets(2));
    QCOMPARE(stopped.load(), std::int32_t{WrongThread});
    QCOMPARE(deleted.load(), std::int32_t{WrongThread});
}

void TestFrameSmith::withoutAMicrophone()
{
    // This program sees no sound server; Qt then offers a device that is none.
    CaptureHarness harness;
    QCOMPARE(FrameSmith_StartAudioCapture(harness.channel), std::int32_t{NoInputDevice});
    QCOMPARE(FrameSmith_StopAudioCapture(harness.channel), std::int32_t{WrongState});
}

void TestFrameSmith::makeAudioPacket()
{
    CaptureHarness harness;
    FrameSmithHandle channel = nullptr;
    const FrameSmithChannelOptions options{7, 8192, 8000, 1, 1, 640};
    QCOMPARE(FrameSmith_CreateChannel(harness.library, &channel, &options), std::int32_t{Success});
    const auto samples = WavFiles::sine(500, 0.5, 0.08, 8000);
    std::vector<std::uint8_t> buffer(1400, 0xAA);
    TMediaDataPacketInfo packet{};
    packet.Buffer = buffer.data();
    packet.AudioBitRate = 77;
    std::uint32_t reported = 0;
    for (std::uint32_t turn = 0; turn < 3; ++turn) {
        QCOMPARE(FrameSmith_MakeAudioPacket(channel, samples.data(), 1280, 1400, &reported, &packet),
                 std::int32_t{Success});
        QCOMPARE(reported, 1280U);
        QCOMPARE(packet.Offset, 32U);
        QCOMPARE(packet.BitstreamSize, 640U);
        QCOMPARE(packet.StreamType, 8192U);
        QCOMPARE(packet.AudioSamplingFreq, 8000U);
        QCOMPARE(int{packet.AudioChannelNum}, 1);
        QCOMPARE(packet.AudioBitRate, 77U); // not its business
        const QByteArray bytes(reinterpret_cast<const char*>(buffer.data()), 672);
        QCOMPARE(bytes.mid(32), WavFiles::toMuLaw(samples));
        QCOMPARE(PacketHeader::fromBytes(buffer.data(), 672)->position, turn * 640);
        QCOMPARE(int{buffer[672]}, 0xAA);
    }
    QCOMPARE(FrameSmith_DeleteChannel(&channel), std::int32_t{Success});
    QCOMPARE(channel, nullptr);
}

void TestFrameSmith::makeAudioPacketFailures()
{
    CaptureHarness harness;
    FrameSmithHandle channel = nullptr;
    const FrameSmithChannelOptions options{7, 8192, 8000, 1, 1, 640};
    FrameSmith_CreateChannel(harness.library, &channel, &options);
    std::vector<std::int16_t> samples(640);
    std::vector<std::uint8_t> buffer(672, 0xAA);
    TMediaDataPacketInfo packet{};
    std::uint32_t reported = 99;
    const auto make = [&](const void* pcm, std::uint32_t size, std::uint32_t room) {
        return FrameSmith_MakeAudioPacket(channel, pcm, size, room, &reported, &packet);
    };
    QCOMPARE(make(samples.data(), 1280, 1400), std::int32_t{InvalidArgument}); // no buffer
    packet.Buffer = buffer.data();
    QCOMPARE(make(nullptr, 1280, 672), std::int32_t{InvalidArgument});
    QCOMPARE(make(samples.data(), 0, 672), std::int32_t{InvalidArgument});
    QCOMPARE(make(samples.data(), 1279, 672), std::int32_t{InvalidArgument});
    QCOMPARE(make(samples.data(), 0xFFFFFFFE, 672), std::int32_t{InvalidArgument});
    QCOMPARE(make(samples.data(), 1280, 659), std::int32_t{BufferTooSmall});
    QCOMPARE(reported, 99U);
    QCOMPARE(packet.BitstreamSize, 0U);
    QCOMPARE(int{buffer[0]}, 0xAA);
    QCOMPARE(make(samples.data(), 1280, 672), std::int32_t{Success}); // room for it to the byte
    FrameSmith_DeleteChannel(&channel);
}

QTEST_GUILESS_MAIN(TestFrameSmith)
#include "tst_framesmith.moc"
