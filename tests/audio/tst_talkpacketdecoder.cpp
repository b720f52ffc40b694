// Talk packets at a server: what is taken apart, what is refused, and that mu-law is expanded as libavcodec
// does.

#include "audio/PacketHeader.h"
#include "audio/TalkPacketDecoder.h"
#include "src/vocabulary/StreamType.h"
#include "tests/support/WavFiles.h"

#include <QTest>

#include <set>

class TestTalkPacketDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyByte();
    void headerIsRead();
    void nothingSaid();
    void refusals_data();
    void refusals();
};

namespace {

PacketHeader header()
{
    PacketHeader made;
    made.channels = 1;
    made.streamType = StreamType::G711MuLaw;
    made.sampleRate = 8000;
    made.position = 640;
    made.captureTime = 0x123456789AU;
    return made;
}

QByteArray packetOf(const PacketHeader& header, const QByteArray& bitstream)
{
    const auto bytes = header.toBytes();
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())) +
           bitstream;
}

} // namespace

void TestTalkPacketDecoder::everyByte()
{
    QByteArray bytes;
    for (int byte = 0; byte < 256; ++byte) {
        bytes.append(static_cast<char>(byte));
    }
    const auto talk = TalkPacketDecoder::decode(packetOf(header(), bytes));
    QVERIFY(talk);
    QCOMPARE(talk->samples.size(), std::size_t{256});
    // Exactly the 255 values that G.711 has, as libavcodec has them, and both zeros.
    QCOMPARE(std::set<std::int16_t>(talk->samples.begin(), talk->samples.end()).size(), std::size_t{255});
    QCOMPARE(WavFiles::throughMuLaw(talk->samples), talk->samples);
    for (std::size_t byte = 0; byte < 256; ++byte) {
        QCOMPARE(talk->samples[byte] + talk->samples[byte ^ 0x80U], 0);
        QVERIFY(byte < 128 ? talk->samples[byte] <= 0 : talk->samples[byte] >= 0);
    }
    QCOMPARE(talk->samples[0], std::int16_t{-32124});
    QCOMPARE(talk->samples[0x80], std::int16_t{32124});
    QCOMPARE(talk->samples[0xFF], std::int16_t{0});
}

void TestTalkPacketDecoder::headerIsRead()
{
    PacketHeader longer = header();
    longer.length = 34;
    const auto talk = TalkPacketDecoder::decode(packetOf(longer, QByteArray("ab") + QByteArray(7, '\xFF')));
    QVERIFY(talk);
    QCOMPARE(talk->position, 640U);
    QCOMPARE(talk->captureTime, std::uint64_t{0x123456789A});
    QCOMPARE(talk->samples, std::vector<std::int16_t>(7));
}

void TestTalkPacketDecoder::nothingSaid()
{
    const auto talk = TalkPacketDecoder::decode(packetOf(header(), QByteArray()));
    QVERIFY(talk);
    QVERIFY(talk->samples.empty());
}

void TestTalkPacketDecoder::refusals_data()
{
    QTest::addColumn<QByteArray>("packet");
    QTest::addColumn<bool>("refused");
    const QByteArray sound(640, 'x');
    const auto row = [&](const char* name, auto change, bool refused = true) {
        PacketHeader changed = header();
        change(changed);
        QTest::newRow(name) << packetOf(changed, sound) << refused;
    };
    row(
        "right", [](PacketHeader&) {}, false);
    row("A-law", [](PacketHeader& changed) { changed.streamType = StreamType::G711ALaw; });
    row("stereo", [](PacketHeader& changed) { changed.channels = 2; });
    row("16000 Hz", [](PacketHeader& changed) { changed.sampleRate = 16000; });
    QTest::newRow("longest") << packetOf(header(), QByteArray(16384, 'x')) << false;
    QTest::newRow("too long") << packetOf(header(), QByteArray(16385, 'x')) << true;
    QTest::newRow("no header") << sound << true;
    QTest::newRow("nothing") << QByteArray() << true;
    QTest::newRow("half a header") << packetOf(header(), QByteArray()).left(20) << true;
}

void TestTalkPacketDecoder::refusals()
{
    QFETCH(QByteArray, packet);
    QFETCH(bool, refused);
    QCOMPARE(!TalkPacketDecoder::decode(packet), refused);
    QCOMPARE(!TalkPacketDecoder::bitstreamOf(packet), refused);
}

QTEST_APPLESS_MAIN(TestTalkPacketDecoder)
#include "tst_talkpacketdecoder.moc"
