#include "audio/PacketHeader.h"

#include <QByteArray>
#include <QTest>

#include <vector>

class TestPacketHeader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void bytes();
    void roundTrip();
    void longerHeader();
    void refusesOthers();
};

namespace {

PacketHeader example()
{
    PacketHeader header;
    header.channels = 1;
    header.streamType = 8192;
    header.sampleRate = 8000;
    header.position = 0x89ABCDEF;
    header.captureTime = 0x0123456789ABCDEF;
    return header;
}

} // namespace

void TestPacketHeader::bytes()
{
    const auto bytes = example().toBytes();
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(bytes.data()), 32).toHex(),
             QByteArray("56444150012001000020000040"
                        "1f0000efcdab8900000000efcdab8967452301"));
    QCOMPARE((PacketHeader::size + 640) % 3, std::size_t{0}); // no padding in the Base64 text of a packet
}

void TestPacketHeader::roundTrip()
{
    const auto bytes = example().toBytes();
    const auto header = PacketHeader::fromBytes(bytes.data(), bytes.size());
    QVERIFY(header);
    QCOMPARE(int{header->channels}, 1);
    QCOMPARE(header->streamType, 8192U);
    QCOMPARE(header->sampleRate, 8000U);
    QCOMPARE(header->position, 0x89ABCDEFU);
    QCOMPARE(header->captureTime, std::uint64_t{0x0123456789ABCDEF});
    QCOMPARE(int{header->length}, 32);
}

void TestPacketHeader::longerHeader()
{
    const auto bytes = example().toBytes();
    std::vector<std::uint8_t> longer(bytes.begin(), bytes.end());
    longer[5] = 34;
    QVERIFY(!PacketHeader::fromBytes(longer.data(), longer.size())); // it is not all there
    longer.resize(34);
    const auto header = PacketHeader::fromBytes(longer.data(), longer.size());
    QVERIFY(header);
    QCOMPARE(int{header->length}, 34);
    QCOMPARE(header->position, 0x89ABCDEFU);
}

void TestPacketHeader::refusesOthers()
{
    const auto bytes = example().toBytes();
    for (std::size_t size = 0; size < PacketHeader::size; ++size) {
        QVERIFY(!PacketHeader::fromBytes(bytes.data(), size));
    }
    for (const std::size_t place : {0U, 3U, 4U, 5U}) {
        auto broken = bytes;
        broken[place] ^= 0x20;
        QVERIFY(!PacketHeader::fromBytes(broken.data(), broken.size()));
    }
}

QTEST_APPLESS_MAIN(TestPacketHeader)
#include "tst_packetheader.moc"
