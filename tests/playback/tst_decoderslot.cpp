// The codecs of the playback path against recorded streams, and the rules by which a decoder comes and goes.

#include "audio/PacketDump.h"
#include "src/decoders/DecoderFactories.h"
#include "src/decoders/PcmBlock.h"
#include "src/playback/DecoderSlot.h"
#include "src/playback/UniquePtr.h"
#include "tests/support/MediaPackets.h"

#include <QFile>
#include <QTest>

#include <boost/mem_fn.hpp>

#include <functional>

Q_DECLARE_METATYPE(std::function<DecoderContext*()>)

class TestDecoderSlot : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void recordedStreams_data();
    void recordedStreams();
    void typesWithoutDecoder_data();
    void typesWithoutDecoder();
    void failedFactoryIsTriedAgain();
    void changedKeyReplacesTheDecoder_data();
    void changedKeyReplacesTheDecoder();
    void changedTypeReplacesTheDecoder();
    void emptySlotHasAnEmptyKey();
    void recordedG726_data();
    void recordedG726();
    void headerIsNotDecoded();
    void tooLittleRoomFails();
    void chunkWithoutAFrameGivesNoBytes();
    void refusedPacketCostsThatPacketOnly();
    void nullObjectsAreReleased_data();
    void nullObjectsAreReleased();
    void deleterCallsTheMemberFunction();
    void deleterSeesANullPointerInTheSlot();
};

namespace {

struct Room
{
    Room() : pcm(pcmBlockSize) {}

    std::int32_t decode(DecoderSlot& slot, const MediaPacketPtr& packet)
    {
        size = pcmBlockSize;
        return slot.Decode(pcm.data(), &size, *packet);
    }

    QByteArray bytes() const
    {
        return QByteArray(reinterpret_cast<const char*>(pcm.data()), static_cast<int>(size));
    }

    std::vector<std::uint8_t> pcm;
    std::uint32_t size = 0;
};

QByteArray fileContents(const QString& name)
{
    QFile file(QStringLiteral(TEST_DATA_DIR "/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

std::vector<QByteArray> packetsOf(const QString& name)
{
    QString error;
    const auto dump = PacketDump::parse(fileContents(name), &error);
    return dump ? dump->packets : std::vector<QByteArray>();
}

} // namespace

void TestDecoderSlot::recordedStreams_data()
{
    QTest::addColumn<unsigned>("streamType");
    QTest::addColumn<unsigned>("rate");
    QTest::addColumn<int>("channels");
    QTest::addColumn<int>("tolerance"); // the float decoders round differently from build to build
    QTest::newRow("g711/ulaw") << 8192U << 8000U << 1 << 0;
    QTest::newRow("g711/alaw") << 16384U << 8000U << 1 << 0;
    QTest::newRow("g711/ulaw_2ch") << 8192U << 16000U << 2 << 0;
    QTest::newRow("g711/alaw_2ch") << 16384U << 16000U << 2 << 0;
    QTest::newRow("aac/mono16k") << 1024U << 16000U << 1 << 1;
    QTest::newRow("aac/stereo48k") << 1024U << 48000U << 2 << 1;
    QTest::newRow("amr/amr_mode0") << 4096U << 8000U << 1 << 1;
    QTest::newRow("amr/amr_mode7") << 4096U << 8000U << 1 << 1;
}

void TestDecoderSlot::recordedStreams()
{
    QFETCH(unsigned, streamType);
    QFETCH(unsigned, rate);
    QFETCH(int, channels);
    QFETCH(int, tolerance);
    const QString name = QString::fromLatin1(QTest::currentDataTag());
    const auto packets = packetsOf(name + QStringLiteral(".rec"));
    const QByteArray expected = fileContents(name + QStringLiteral(".pcm"));
    const QList<QByteArray> sizes = fileContents(name + QStringLiteral(".sizes")).simplified().split(' ');
    QVERIFY(!packets.empty());
    QCOMPARE(static_cast<int>(packets.size()), sizes.size());

    DecoderSlot slot;
    Room room;
    QByteArray decoded;
    for (std::size_t i = 0; i < packets.size(); ++i) {
        const auto packet =
            MediaPackets::make(packets[i], {streamType, rate, static_cast<std::uint8_t>(channels), 1, 0, 0});
        QCOMPARE(room.decode(slot, packet), 0);
        QCOMPARE(room.size, sizes[static_cast<int>(i)].toUInt());
        decoded += room.bytes();
    }
    QCOMPARE(decoded.size(), expected.size());
    const auto* actual = reinterpret_cast<const std::int16_t*>(decoded.constData());
    const auto* wanted = reinterpret_cast<const std::int16_t*>(expected.constData());
    for (int i = 0; i < decoded.size() / 2; ++i) {
        if (std::abs(actual[i] - wanted[i]) > tolerance) {
            QFAIL(qPrintable(QStringLiteral("sample %1 is %2, not %3").arg(i).arg(actual[i]).arg(wanted[i])));
        }
    }
}

void TestDecoderSlot::typesWithoutDecoder_data()
{
    QTest::addColumn<unsigned>("streamType");
    for (const unsigned type : {0U, 1U, 128U, 2048U, 8193U, 65536U, 0xFFFFFFFFU}) {
        QTest::addRow("%u", type) << type;
    }
}

void TestDecoderSlot::typesWithoutDecoder()
{
    QFETCH(unsigned, streamType);
    DecoderSlot slot;
    Room room;
    const auto packet = MediaPackets::make(QByteArray(640, 'x'), {streamType});
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(room.decode(slot, packet), -1);
        QCOMPARE(room.size, static_cast<unsigned>(pcmBlockSize));
    }
}

void TestDecoderSlot::failedFactoryIsTriedAgain()
{
    // A rate that no codec opens with leaves the slot empty, and a good packet fills it.
    DecoderSlot slot;
    Room room;
    QCOMPARE(room.decode(slot, MediaPackets::make(QByteArray(640, 'x'), {8192, 0x80000000U})), -1);
    QCOMPARE(room.decode(slot, MediaPackets::make(QByteArray(640, 'x'))), 0);
    QCOMPARE(room.size, 1280U);
}

void TestDecoderSlot::changedKeyReplacesTheDecoder_data()
{
    QTest::addColumn<unsigned>("rate"); // the codec reads rate and channels from the stream
    QTest::addColumn<int>("channels");
    QTest::addColumn<unsigned>("bitRate");
    QTest::addColumn<int>("packing");
    QTest::addColumn<bool>("fresh");
    QTest::newRow("same key") << 16000U << 1 << 0U << 0 << false;
    QTest::newRow("rate") << 8000U << 1 << 0U << 0 << true;
    QTest::newRow("channels") << 16000U << 2 << 0U << 0 << true;
    QTest::newRow("bit rate") << 16000U << 1 << 1U << 0 << true;
    QTest::newRow("packing") << 16000U << 1 << 0U << 1 << true;
}

void TestDecoderSlot::changedKeyReplacesTheDecoder()
{
    // An AAC decoder's first frame overlaps with nothing, so it tells a fresh decoder from one with a
    // history.
    QFETCH(unsigned, rate);
    QFETCH(int, channels);
    QFETCH(unsigned, bitRate);
    QFETCH(int, packing);
    QFETCH(bool, fresh);
    const auto packets = packetsOf(QStringLiteral("aac/mono16k.rec"));
    const MediaPackets::Format format{1024, 16000, 1, 1, 0, 0};
    MediaPackets::Format changed = format;
    changed.sampleRate = rate;
    changed.channels = static_cast<std::uint8_t>(channels);
    changed.bitRate = bitRate;
    changed.packing = static_cast<std::uint8_t>(packing);

    DecoderSlot first;
    Room room;
    QCOMPARE(room.decode(first, MediaPackets::make(packets[10], format)), 0);
    const QByteArray withoutHistory = room.bytes();

    DecoderSlot slot;
    for (std::size_t i = 0; i < 10; ++i) {
        QCOMPARE(room.decode(slot, MediaPackets::make(packets[i], format)), 0);
    }
    QCOMPARE(room.decode(slot, MediaPackets::make(packets[10], changed)), 0);
    QCOMPARE(room.bytes() == withoutHistory, fresh);
}

void TestDecoderSlot::changedTypeReplacesTheDecoder()
{
    DecoderSlot slot;
    Room room;
    const QByteArray bytes(10, '\x20');
    QCOMPARE(room.decode(slot, MediaPackets::make(bytes, {8192})), 0);
    const QByteArray muLaw = room.bytes();
    QCOMPARE(room.decode(slot, MediaPackets::make(bytes, {16384})), 0);
    const QByteArray aLaw = room.bytes();
    QCOMPARE(aLaw.size(), 20);
    QVERIFY(aLaw != muLaw);
    QCOMPARE(room.decode(slot, MediaPackets::make(bytes, {8192})), 0);
    QCOMPARE(room.bytes(), muLaw);
}

void TestDecoderSlot::emptySlotHasAnEmptyKey()
{
    // A type without a decoder ends the one before it, so that the stream starts anew behind it.
    const auto packets = packetsOf(QStringLiteral("aac/mono16k.rec"));
    const MediaPackets::Format format{1024, 16000, 1, 1, 0, 0};
    DecoderSlot first;
    Room room;
    QCOMPARE(room.decode(first, MediaPackets::make(packets[10], format)), 0);
    const QByteArray withoutHistory = room.bytes();
    DecoderSlot slot;
    QCOMPARE(room.decode(slot, MediaPackets::make(packets[9], format)), 0);
    QCOMPARE(room.decode(slot, MediaPackets::make(packets[9], {2048, 16000})), -1);
    QCOMPARE(room.decode(slot, MediaPackets::make(packets[10], format)), 0);
    QCOMPARE(room.bytes(), withoutHistory);
}

void TestDecoderSlot::recordedG726_data()
{
    QTest::addColumn<unsigned>("rate");
    QTest::addColumn<int>("packingMode");
    for (const int kilobits : {16, 24, 32, 40}) {
        QTest::addRow("random1_%dk_left", kilobits) << kilobits * 1000U << 1;
        QTest::addRow("random1_%dk_right", kilobits) << kilobits * 1000U << 0;
    }
}

void TestDecoderSlot::recordedG726()
{
    QFETCH(unsigned, rate);
    QFETCH(int, packingMode);
    const QString name = QStringLiteral("g726/") + QString::fromLatin1(QTest::currentDataTag());
    const auto packets = packetsOf(name + QStringLiteral(".rec"));
    QVERIFY(!packets.empty());
    DecoderSlot slot;
    Room room;
    QByteArray decoded;
    for (const QByteArray& packet : packets) {
        const MediaPackets::Format format{32768, 8000, 1, 1, rate, static_cast<std::uint8_t>(packingMode)};
        QCOMPARE(room.decode(slot, MediaPackets::make(packet, format)), 0);
        decoded += room.bytes();
    }
    QCOMPARE(decoded, fileContents(name + QStringLiteral(".pcm")));
}

void TestDecoderSlot::headerIsNotDecoded()
{
    QByteArray bytes = QByteArray(7, '\x7F') + QByteArray(100, '\x20');
    TMediaDataPacketInfo record{};
    record.StreamType = 8192;
    record.AudioSamplingFreq = 8000;
    record.AudioChannelNum = 1;
    record.FrameNumber = 1;
    record.Buffer = reinterpret_cast<std::uint8_t*>(bytes.data());
    record.Offset = 7;
    record.BitstreamSize = 100;
    DecoderSlot slot;
    Room room;
    QCOMPARE(room.decode(slot, makeMediaPacket(record)), 0);
    const QByteArray decoded = room.bytes();
    QCOMPARE(room.decode(slot, MediaPackets::make(QByteArray(100, '\x20'))), 0);
    QCOMPARE(decoded, room.bytes());
}

void TestDecoderSlot::tooLittleRoomFails()
{
    DecoderSlot slot;
    std::vector<std::uint8_t> pcm(1279, 0x5A);
    std::uint32_t size = 1279;
    const auto packet = MediaPackets::make(QByteArray(640, 'x'));
    QCOMPARE(slot.Decode(pcm.data(), &size, *packet), -1);
    QCOMPARE(size, 1279U);
    pcm.resize(1280);
    size = 1280;
    QCOMPARE(slot.Decode(pcm.data(), &size, *packet), 0);
    QCOMPARE(size, 1280U);
}

void TestDecoderSlot::chunkWithoutAFrameGivesNoBytes()
{
    DecoderSlot slot;
    Room room;
    QCOMPARE(room.decode(slot, MediaPackets::make(QByteArray())), 0);
    QCOMPARE(room.size, 0U);
    // The stream goes on after it.
    QCOMPARE(room.decode(slot, MediaPackets::make(QByteArray(640, 'x'))), 0);
    QCOMPARE(room.size, 1280U);
}

void TestDecoderSlot::refusedPacketCostsThatPacketOnly()
{
    const auto packets = packetsOf(QStringLiteral("aac/mono16k.rec"));
    const MediaPackets::Format format{1024, 16000, 1, 1, 0, 0};
    DecoderSlot slot;
    Room room;
    QCOMPARE(room.decode(slot, MediaPackets::make(packets[0], format)), 0);
    QCOMPARE(room.decode(slot, MediaPackets::make(QByteArray(200, 'x'), format)), 0);
    QCOMPARE(room.size, 0U);
    QCOMPARE(room.decode(slot, MediaPackets::make(packets[1], format)), 0);
    QCOMPARE(room.size, 2048U);
}

void TestDecoderSlot::nullObjectsAreReleased_data()
{
    QTest::addColumn<std::function<DecoderContext*()>>("create");
    using Create = std::function<DecoderContext*()>;
    QTest::newRow("G.722.1") << Create(CreateDecoderSorvixG7221);
    QTest::newRow("G.729A") << Create(CreateDecoderSorvixG729A);
    QTest::newRow("G.726") << Create([] { return CreateDecoderG726Left(32000); });
    QTest::newRow("FFmpeg") << Create([] { return CreateDecoder_MuLaw(8000, 1); });
}

void TestDecoderSlot::nullObjectsAreReleased()
{
    // A null object has no table of its own; a caller that kept the entry of another one calls this.
    QFETCH(std::function<DecoderContext*()>, create);
    DecoderContext* decoder = create();
    QVERIFY(decoder);
    using Release = void (*)(DecoderContext*);
    constexpr std::size_t place = 2;
    const Release release = (*reinterpret_cast<Release**>(decoder))[place];
    release(nullptr);
    release(decoder); // the leak checker watches
}

namespace {

struct Ending
{
    void end() { ++ended; }
    int ended = 0;
};

} // namespace

void TestDecoderSlot::deleterCallsTheMemberFunction()
{
    Ending first;
    Ending second;
    {
        QRNL::SDK::Utility::unique_ptr<Ending> pointer;
        QVERIFY(!pointer);
        pointer.reset(&first, boost::mem_fn(&Ending::end));
        QCOMPARE(pointer.get(), &first);
        QCOMPARE(first.ended, 0);
        pointer.reset(&second, boost::mem_fn(&Ending::end));
        QCOMPARE(first.ended, 1);
        QCOMPARE(second.ended, 0);
    }
    QCOMPARE(first.ended, 1);
    QCOMPARE(second.ended, 1);
}

void TestDecoderSlot::deleterSeesANullPointerInTheSlot()
{
    Ending ending;
    QRNL::SDK::Utility::unique_ptr<Ending> pointer;
    bool wasNull = false;
    pointer.reset(&ending, [&](Ending*) { wasNull = !pointer; });
    pointer.reset();
    QVERIFY(wasNull);
}

QTEST_GUILESS_MAIN(TestDecoderSlot)
#include "tst_decoderslot.moc"
