#include "src/decoders/PcmBlock.h"
#include "src/playback/AudioDevice.h"
#include "tests/support/MediaPackets.h"
#include "tests/support/WavFiles.h"

#include <QTest>

#include <atomic>
#include <cstring>
#include <thread>

class TestAudioDevice : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void openModes();
    void emptyQueueGivesSilence();
    void requestOfNothing();
    void smallRequestsLeaveTheRest();
    void arrivingPacketIsHeardAtTheNextPull();
    void capacities_data();
    void capacities();
    void fullRingDropsTheNewest();
    void fullRingAtTheSwapIsThrownAway();
    void capacityOneIsSilentForEver();
    void packetSizeMayChange();
    void ringIsBoundedInBytes();
    void offsetCountsAgainstTheBound();
    void ringFullOfBytesIsStillPlayed();
    void waitingPusherIsBoundedInBytes();
    void packetBeyondTheBoundIsDropped();
    void failingPacketsGiveSilence();
    void emptyPacketsAreSkipped();
    void silenceLargerThanTheBlock();
    void silenceLastsForTheRequest();
    void conversionOfTheLargestPacket();
    void waitingPusherWakesAtTheSwap();
    void waitingPusherOverwritesNothing();
    void pushFromAnotherThread();
    void neverOpenedDeviceDropsAll();
    void writingIsRefused();
    void keys();
    void packetsAreReleasedWithTheDevice();
};

namespace {

constexpr int S16 = 1;

/** The device as QAudioOutput sees it. */
struct Device : AudioDevice
{
    explicit Device(const MediaPacketPtr& first, SwrConverter&& converter = SwrConverter())
        : AudioDevice(std::move(converter), first.get())
    {
    }
    using AudioDevice::readData;
    using AudioDevice::writeData;

    QByteArray pull(int bytes)
    {
        QByteArray data(bytes, 0x5A);
        const qint64 result = readData(data.data(), bytes);
        return result == bytes ? data : QByteArray();
    }
};

/** A packet of 640 equal mu-law bytes. */
MediaPacketPtr packetOf(char code, int size = 640)
{
    return MediaPackets::make(QByteArray(size, code));
}

/** What such a packet sounds like, in bytes of PCM. */
QByteArray soundOf(char code, int size = 640)
{
    const int inverted = ~code & 0xFF;
    const int magnitude = ((((inverted & 0x0F) << 3) + 0x84) << ((inverted & 0x70) >> 4)) - 0x84;
    const auto sample = static_cast<std::int16_t>((inverted & 0x80) != 0 ? -magnitude : magnitude);
    const WavFiles::Samples samples(static_cast<std::size_t>(size), sample);
    return QByteArray(reinterpret_cast<const char*>(samples.data()), size * 2);
}

const QByteArray silence(1280, '\0');

std::uint32_t referencesOf(const MediaPacketPtr& packet)
{
    return reinterpret_cast<const std::uint32_t*>(packet.get())[-2];
}

/** How many packets like this one fit the ring. */
std::uint32_t capacityFor(const MediaPacketPtr& first)
{
    Device device(first);
    const std::uint32_t before = referencesOf(first);
    for (int i = 0; i < 1000; ++i) {
        device.Push(first, true);
    }
    return referencesOf(first) - before;
}

} // namespace

void TestAudioDevice::openModes()
{
    Device device(packetOf('\x10'));
    QVERIFY(device.isOpen());
    QVERIFY(device.isSequential());
    QCOMPARE(static_cast<int>(device.openMode()), 33);
}

void TestAudioDevice::emptyQueueGivesSilence()
{
    Device device(packetOf('\x10'));
    QCOMPARE(device.pull(1280), silence);
    QCOMPARE(device.pull(1), QByteArray(1, '\0'));
}

void TestAudioDevice::requestOfNothing()
{
    Device device(packetOf('\x10'));
    device.Push(packetOf('\x10'), true);
    char untouched = 0x5A;
    QCOMPARE(device.readData(&untouched, 0), qint64{0});
    QCOMPARE(device.readData(&untouched, -3), qint64{-3});
    QCOMPARE(untouched, '\x5A');
    QCOMPARE(device.pull(1280), soundOf('\x10'));
}

void TestAudioDevice::smallRequestsLeaveTheRest()
{
    Device device(packetOf('\x10'));
    device.Push(packetOf('\x10'), true);
    device.Push(packetOf('\x20'), true);
    QByteArray heard;
    for (const int bytes : {1, 2, 317, 320, 640, 1, 1279}) {
        heard += device.pull(bytes);
    }
    QCOMPARE(heard, soundOf('\x10') + soundOf('\x20'));
}

void TestAudioDevice::arrivingPacketIsHeardAtTheNextPull()
{
    Device device(packetOf('\x10'));
    QCOMPARE(device.pull(6), QByteArray(6, '\0'));
    device.Push(packetOf('\x10'), true);
    // The silence was for one request only: nothing of it stands before the sound.
    QCOMPARE(device.pull(1280), soundOf('\x10'));
    // A request that starts in a packet and outlasts it ends in silence.
    device.Push(packetOf('\x20'), true);
    QCOMPARE(device.pull(2560), soundOf('\x20') + silence);
}

void TestAudioDevice::capacities_data()
{
    QTest::addColumn<unsigned>("streamType");
    QTest::addColumn<unsigned>("rate");
    QTest::addColumn<unsigned>("frames");
    QTest::addColumn<unsigned>("bitRate");
    QTest::addColumn<int>("size");
    QTest::addColumn<unsigned>("capacity");
    QTest::newRow("G.711, 80 ms") << 8192U << 8000U << 1U << 0U << 640 << 6U;
    QTest::newRow("G.711, 20 ms") << 8192U << 8000U << 1U << 0U << 160 << 25U;
    QTest::newRow("A-law, 20 ms") << 16384U << 8000U << 1U << 0U << 160 << 25U;
    QTest::newRow("G.711, 1 ms") << 8192U << 8000U << 1U << 0U << 8 << 500U;
    QTest::newRow("G.711, 250 ms") << 8192U << 8000U << 1U << 0U << 2007 << 2U;
    QTest::newRow("G.711, 251 ms") << 8192U << 8000U << 1U << 0U << 2008 << 1U;
    QTest::newRow("G.711, longer than the ring") << 8192U << 8000U << 1U << 0U << 5000 << 1U;
    QTest::newRow("AMR, 1 frame") << 4096U << 8000U << 1U << 0U << 32 << 25U;
    QTest::newRow("G.722.1, 3 frames") << 256U << 16000U << 3U << 0U << 180 << 8U;
    QTest::newRow("type 2048") << 2048U << 16000U << 1U << 0U << 20 << 25U;
    QTest::newRow("G.729A, 1 frame") << 512U << 8000U << 1U << 0U << 11 << 50U;
    QTest::newRow("AAC, 48000 Hz") << 1024U << 48000U << 1U << 0U << 200 << 23U;
    QTest::newRow("AAC, 8000 Hz") << 1024U << 8000U << 1U << 0U << 200 << 3U;
    QTest::newRow("G.726, 20 ms") << 32768U << 8000U << 1U << 32000U << 80 << 25U;
    QTest::newRow("type off the table") << 1U << 8000U << 1U << 0U << 80 << 21U;
    // Where the frame time comes to 0 or would divide by 0, the fallback of 23 ms stands in.
    QTest::newRow("G.711, 7 bytes") << 8192U << 8000U << 1U << 0U << 7 << 21U;
    QTest::newRow("G.711, no bytes") << 8192U << 8000U << 1U << 0U << 0 << 21U;
    QTest::newRow("AMR, no frames") << 4096U << 8000U << 0U << 0U << 32 << 21U;
    QTest::newRow("G.729A, no frames") << 512U << 8000U << 0U << 0U << 32 << 21U;
    QTest::newRow("AAC, 0 Hz") << 1024U << 0U << 1U << 0U << 200 << 21U;
    QTest::newRow("AAC, 2 MHz") << 1024U << 2000000U << 1U << 0U << 200 << 21U;
    QTest::newRow("G.726, 0 bit/s") << 32768U << 8000U << 1U << 0U << 80 << 21U;
    // 32-bit arithmetic: a product that wraps, and one that is negative when it is read as signed.
    QTest::newRow("frames that wrap") << 4096U << 8000U << 214748365U << 0U << 32 << 125U;
    QTest::newRow("negative frame time") << 4096U << 8000U << 0x07FFFFFFU << 0U << 32 << 1U;
}

void TestAudioDevice::capacities()
{
    QFETCH(unsigned, streamType);
    QFETCH(unsigned, rate);
    QFETCH(unsigned, frames);
    QFETCH(unsigned, bitRate);
    QFETCH(int, size);
    QFETCH(unsigned, capacity);
    const auto packet =
        MediaPackets::make(QByteArray(size, '\x10'), {streamType, rate, 1, frames, bitRate, 0});
    QCOMPARE(capacityFor(packet), capacity);
}

void TestAudioDevice::fullRingDropsTheNewest()
{
    Device device(packetOf('\x10'));
    device.Push(packetOf('\x00'), true);
    QCOMPARE(device.pull(2), soundOf('\x00').left(2)); // the ring being read is empty from here on
    for (char code = 1; code <= 5; ++code) {
        device.Push(packetOf(code), true);
    }
    device.pull(1278);                    // the rest of the first packet; no swap yet
    device.Push(packetOf('\x06'), true);  // full now
    device.Push(packetOf('\x07'), true);  // lost
    QCOMPARE(device.pull(1280), silence); // the full ring goes at the swap
    device.Push(packetOf('\x08'), true);
    QCOMPARE(device.pull(1280), soundOf('\x08'));

    const auto oldest = packetOf('\x01');
    const auto newest = packetOf('\x07');
    Device full(packetOf('\x10'));
    full.Push(oldest, true);
    for (char code = 2; code <= 6; ++code) {
        full.Push(packetOf(code), true);
    }
    full.Push(newest, true);
    QCOMPARE(referencesOf(oldest), 2U); // what is queued stays
    QCOMPARE(referencesOf(newest), 1U);
}

void TestAudioDevice::fullRingAtTheSwapIsThrownAway()
{
    Device device(packetOf('\x10'));
    for (char code = 1; code <= 5; ++code) {
        device.Push(packetOf(code), true);
    }
    QCOMPARE(device.pull(1280), soundOf('\x01'));
    for (char code = 11; code <= 16; ++code) {
        device.Push(packetOf(code), true);
    }
    for (char code = 2; code <= 5; ++code) {
        QCOMPARE(device.pull(1280), soundOf(code)); // the ring being read is not touched
    }
    QCOMPARE(device.pull(1280), silence);
    QCOMPARE(device.pull(1280), silence);
    device.Push(packetOf('\x20'), true);
    QCOMPARE(device.pull(1280), soundOf('\x20'));
}

void TestAudioDevice::capacityOneIsSilentForEver()
{
    Device device(packetOf('\x10', 2008));
    for (int i = 0; i < 10; ++i) {
        device.Push(packetOf('\x10', 2008), true);
        QCOMPARE(device.pull(4016), QByteArray(4016, '\0'));
    }
}

void TestAudioDevice::packetSizeMayChange()
{
    Device device(packetOf('\x10'));
    for (int i = 0; i < 5; ++i) {
        device.Push(packetOf('\x20', 160), true);
    }
    QCOMPARE(device.pull(1600), soundOf('\x20', 800));
    for (int i = 0; i < 6; ++i) {
        device.Push(packetOf('\x20', 160), true);
    }
    QCOMPARE(device.pull(320), silence.left(320)); // still six packets, though they are shorter now
}

namespace {

constexpr int megabyte = 1024 * 1024;
constexpr std::uint32_t maxLargePackets = 32;

} // namespace

void TestAudioDevice::ringIsBoundedInBytes()
{
    Device device(packetOf('\x10', 8)); // 500 places
    const auto large = packetOf('\x20', megabyte);
    for (int i = 0; i < 100; ++i) {
        device.Push(large, true);
    }
    QCOMPARE(referencesOf(large), 1 + maxLargePackets);
    device.Push(packetOf('\x30', 8), true); // no room in bytes either
    device.pull(2);                         // the swap empties the ring
    for (int i = 0; i < 100; ++i) {
        device.Push(large, true);
    }
    QCOMPARE(referencesOf(large), 1 + 2 * maxLargePackets - 1); // one has been decoded
    // Packets as the first fill all places.
    Device usual(packetOf('\x10', 8));
    const auto small = packetOf('\x20', 1400);
    for (int i = 0; i < 1000; ++i) {
        usual.Push(small, true);
    }
    QCOMPARE(referencesOf(small), 501U);
}

void TestAudioDevice::offsetCountsAgainstTheBound()
{
    // A packet of few bytes may stand behind an offset that takes up much more memory.
    MediaPackets::Format format;
    format.offset = megabyte - 8;
    const auto large = MediaPackets::make(QByteArray(8, '\x20'), format);
    Device device(packetOf('\x10', 8));
    for (int i = 0; i < 100; ++i) {
        device.Push(large, true);
    }
    QCOMPARE(referencesOf(large), 1 + maxLargePackets);
    format.offset = maxLargePackets * megabyte - 7;
    const auto absurd = MediaPackets::make(QByteArray(8, '\x20'), format);
    Device other(packetOf('\x10', 8));
    other.Push(absurd, false); // does not wait for room that never comes
    QCOMPARE(referencesOf(absurd), 1U);
    --format.offset;
    const auto largest = MediaPackets::make(QByteArray(8, '\x20'), format);
    other.Push(largest, true);
    QCOMPARE(referencesOf(largest), 2U);
}

void TestAudioDevice::ringFullOfBytesIsStillPlayed()
{
    // The rule by which a full ring is thrown away counts packets, not bytes.
    Device device(packetOf('\x10', 8));
    const auto large = packetOf('\x20', megabyte / 4);
    for (int i = 0; i < 200; ++i) {
        device.Push(large, true);
    }
    QCOMPARE(device.pull(1280), soundOf('\x20'));
}

void TestAudioDevice::waitingPusherIsBoundedInBytes()
{
    Device device(packetOf('\x10', 8));
    const auto large = packetOf('\x20', megabyte / 4);
    for (std::uint32_t i = 0; i < 4 * maxLargePackets; ++i) {
        device.Push(large, true);
    }
    const auto last = packetOf('\x30');
    std::atomic<bool> pushed{false};
    std::thread pusher([&] {
        device.Push(last, false);
        pushed = true;
    });
    device.pull(2);
    QTRY_VERIFY(pushed);
    pusher.join();
    QCOMPARE(referencesOf(last), 2U);
}

void TestAudioDevice::packetBeyondTheBoundIsDropped()
{
    Device device(packetOf('\x10', 8));
    const auto absurd = packetOf('\x20', static_cast<int>(maxLargePackets) * megabyte + 1);
    device.Push(absurd, true);
    device.Push(absurd, false); // does not wait for room that never comes
    QCOMPARE(referencesOf(absurd), 1U);
    device.Push(packetOf('\x30'), true);
    QCOMPARE(device.pull(1280), soundOf('\x30'));
}

void TestAudioDevice::failingPacketsGiveSilence()
{
    const auto undecodable = MediaPackets::make(QByteArray(640, 'x'), {2048, 8000, 1, 1, 0, 0});
    Device device(undecodable);
    for (int i = 0; i < 3; ++i) {
        device.Push(undecodable, true);
    }
    QCOMPARE(device.pull(100), QByteArray(100, '\0'));
    QCOMPARE(device.pull(100), QByteArray(100, '\0'));
    device.Push(packetOf('\x10'), true);
    QCOMPARE(device.pull(100), QByteArray(100, '\0')); // the third of them
    QCOMPARE(device.pull(1280), soundOf('\x10'));      // the queue drains on
}

void TestAudioDevice::emptyPacketsAreSkipped()
{
    Device device(packetOf('\x10'));
    device.Push(packetOf('\x10', 0), true);
    device.Push(packetOf('\x10', 0), true);
    device.Push(packetOf('\x20'), true);
    QCOMPARE(device.pull(1280), soundOf('\x20'));
}

void TestAudioDevice::silenceLargerThanTheBlock()
{
    Device device(packetOf('\x10'));
    QCOMPARE(device.pull(3 * pcmBlockSize + 17), QByteArray(3 * pcmBlockSize + 17, '\0'));
}

void TestAudioDevice::silenceLastsForTheRequest()
{
    // What a packet that fails leaves of a request is silent as a whole, also beyond the size of a block.
    const auto undecodable = MediaPackets::make(QByteArray(640, 'x'), {2048, 8000, 1, 1, 0, 0});
    Device device(packetOf('\x10'));
    device.Push(undecodable, true);
    device.Push(packetOf('\x20'), true);
    constexpr int request = 2 * pcmBlockSize + 5;
    QCOMPARE(device.pull(request), QByteArray(request, '\0'));
    QCOMPARE(device.pull(1280), soundOf('\x20'));
}

void TestAudioDevice::conversionOfTheLargestPacket()
{
    // 288,000 bytes of G.711 fill the block; made wider and faster they would fill 24 of them.
    SwrConverter converter;
    QCOMPARE(converter.Setup(3, 48000, 2, S16, 8000, 1), 1);
    Device device(packetOf('\x10'), std::move(converter));
    device.Push(packetOf('\x10', 288000), true);
    const QByteArray heard = device.pull(pcmBlockSize);
    QVERIFY(std::any_of(heard.begin(), heard.end(), [](char byte) { return byte != 0; }));
}

void TestAudioDevice::waitingPusherWakesAtTheSwap()
{
    Device device(packetOf('\x10'));
    for (char code = 1; code <= 6; ++code) {
        device.Push(packetOf(code), true);
    }
    std::atomic<bool> pushed{false};
    std::thread pusher([&] {
        device.Push(packetOf('\x30'), false);
        pushed = true;
    });
    // The swap throws the full ring away and lets the pusher in.
    QTRY_VERIFY(device.pull(1280) == soundOf('\x30') || pushed);
    pusher.join();
    QVERIFY(pushed);
}

void TestAudioDevice::waitingPusherOverwritesNothing()
{
    // The ring is full, so its swap loses what is in it; what a pusher waited with comes after that. Whether
    // the pusher is already waiting at the swap is up to the system: often enough it is.
    for (int round = 0; round < 300; ++round) {
        Device device(packetOf('\x10'));
        for (char code = 1; code <= 6; ++code) {
            device.Push(packetOf(code), true);
        }
        std::atomic<bool> running{false};
        std::atomic<bool> pushed{false};
        std::thread pusher([&] {
            running = true;
            device.Push(packetOf('\x30'), false);
            pushed = true;
        });
        while (!running) {
            std::this_thread::yield();
        }
        for (int i = 0; i < round % 50; ++i) {
            std::this_thread::yield();
        }
        const QByteArray swapped = device.pull(1280);
        pusher.join();
        const QByteArray heard = swapped == silence ? device.pull(1280) : swapped;
        QVERIFY(pushed);
        QCOMPARE(heard, soundOf('\x30'));
    }
}

void TestAudioDevice::pushFromAnotherThread()
{
    Device device(packetOf('\x10'));
    constexpr int packets = 2000;
    std::thread pusher([&device] {
        for (int i = 0; i < packets; ++i) {
            device.Push(packetOf('\x10', 160), i % 2 == 0);
        }
    });
    int sounding = 0;
    std::atomic<bool> done{false};
    std::thread joiner([&] {
        pusher.join();
        done = true;
    });
    while (!done) {
        const QByteArray heard = device.pull(320);
        sounding += heard == soundOf('\x10', 160) ? 1 : 0;
        QVERIFY(heard.size() == 320);
    }
    joiner.join();
    QVERIFY(sounding <= packets);
}

void TestAudioDevice::neverOpenedDeviceDropsAll()
{
    const auto packet = packetOf('\x10');
    AudioDevice device(*packet);
    QVERIFY(!device.isOpen());
    for (int i = 0; i < 10; ++i) {
        device.Push(packet, true);
        device.Push(packet, false); // does not wait
    }
    QVERIFY(device.hasKeyOf(*packet));
}

void TestAudioDevice::writingIsRefused()
{
    Device device(packetOf('\x10'));
    QCOMPARE(device.writeData("abc", 3), qint64{-1});
}

void TestAudioDevice::keys()
{
    const auto packet = packetOf('\x10');
    const Device device(packet);
    QVERIFY(device.hasKeyOf(*packetOf('\x20', 1)));
    QVERIFY(!device.hasKeyOf(*MediaPackets::make("x", {16384})));
    QVERIFY(!device.hasKeyOf(*MediaPackets::make("x", {8192, 16000})));
    QVERIFY(!device.hasKeyOf(*MediaPackets::make("x", {8192, 8000, 2})));
    QVERIFY(device.hasKeyOf(*MediaPackets::make("x", {8192, 8000, 1, 9, 77, 1})));
}

void TestAudioDevice::packetsAreReleasedWithTheDevice()
{
    const auto packet = packetOf('\x10');
    {
        Device device(packet);
        for (int i = 0; i < 4; ++i) {
            device.Push(packet, true);
        }
        device.pull(2);
        device.Push(packet, true);
        QCOMPARE(referencesOf(packet), 5U); // three being read, one pending, ours
    }
    QCOMPARE(referencesOf(packet), 1U);
}

QTEST_GUILESS_MAIN(TestAudioDevice)
#include "tst_audiodevice.moc"
