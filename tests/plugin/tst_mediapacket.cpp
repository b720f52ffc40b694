#include "src/MediaPacket.h"

#include <QByteArray>
#include <QTest>

#include <thread>

class TestMediaPacket : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void copiesEverything_data();
    void copiesEverything();
    void referencesIntoThePacketAreRebased();
    void nullBufferGivesZeroBytes();
    void countsReferences();
    void referencesFromSeveralThreads();
};

namespace {

// What the whole block was allowed to take; anything beyond is for the address sanitizer to find.
QByteArray pattern(std::size_t size, int seed)
{
    QByteArray bytes(static_cast<int>(size), 0);
    for (int i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<char>(i * 31 + seed);
    }
    return bytes;
}

std::uint8_t* data(QByteArray& bytes)
{
    return reinterpret_cast<std::uint8_t*>(bytes.data());
}

QByteArray copyOf(const void* start, std::size_t size)
{
    return QByteArray(static_cast<const char*>(start), static_cast<int>(size));
}

} // namespace

void TestMediaPacket::copiesEverything_data()
{
    QTest::addColumn<unsigned>("offset");
    QTest::addColumn<unsigned>("size");
    QTest::addColumn<unsigned>("extra");
    QTest::addColumn<int>("items");
    for (const unsigned offset : {0U, 1U, 15U, 16U, 20U, 33U}) {
        for (const unsigned size : {0U, 1U, 3U, 4U, 5U, 640U, 641U}) {
            for (const unsigned extra : {0U, 1U, 7U, 100U}) {
                for (const int items : {0, 1, 255}) {
                    QTest::addRow("%u+%u, extra %u, items %d", offset, size, extra, items)
                        << offset << size << extra << items;
                }
            }
        }
    }
}

void TestMediaPacket::copiesEverything()
{
    QFETCH(unsigned, offset);
    QFETCH(unsigned, size);
    QFETCH(unsigned, extra);
    QFETCH(int, items);
    QByteArray packet = pattern(offset + size, 1);
    QByteArray extraBlock = pattern(extra, 2);
    QByteArray sideItems = pattern(static_cast<std::size_t>(items) * 32, 3);
    TMediaDataPacketInfo record{};
    record.Buffer = data(packet);
    record.Offset = offset;
    record.BitstreamSize = size;
    record.StreamType = 8192;
    record.FrameNumber = 7;
    record.AudioSamplingFreq = 8000;
    record.AudioChannelNum = 2;
    record.AudioBitRate = 32000;
    record.AudioPackingMode = 1;
    record.ExtraData = extra > 0 ? data(extraBlock) : nullptr;
    record.ExtraDataSize = extra;
    record.ItemCount = static_cast<std::uint8_t>(items);
    record.Items = items > 0 ? data(sideItems) : nullptr;

    const MediaPacketPtr copy = makeMediaPacket(record);
    QVERIFY(copy);
    QVERIFY(copy->Buffer != record.Buffer);
    QCOMPARE(copyOf(copy->Buffer, offset + size), packet);
    const std::uint8_t* bitstream = copy->Buffer + copy->Offset;
    QCOMPARE(reinterpret_cast<std::uintptr_t>(bitstream) % 16, std::uintptr_t{0});
    const std::uint8_t* paddingEnd = bitstream + size / 4 * 4 + 32;
    for (const std::uint8_t* byte = bitstream + size; byte < paddingEnd; ++byte) {
        QCOMPARE(int{*byte}, 0);
    }
    QVERIFY(paddingEnd - (bitstream + size) >= 29);
    QCOMPARE(copy->StreamType, 8192U);
    QCOMPARE(copy->FrameNumber, 7U);
    QCOMPARE(copy->AudioSamplingFreq, 8000U);
    QCOMPARE(int{copy->AudioChannelNum}, 2);
    QCOMPARE(copy->AudioBitRate, 32000U);
    QCOMPARE(int{copy->AudioPackingMode}, 1);
    QCOMPARE(copy->ExtraDataSize, extra);
    if (extra > 0) {
        QCOMPARE(static_cast<void*>(copy->ExtraData), static_cast<void*>(copy.get() + 1));
        QCOMPARE(copyOf(copy->ExtraData, extra), extraBlock);
    } else {
        QCOMPARE(copy->ExtraData, nullptr);
    }
    if (items > 0) {
        QCOMPARE(static_cast<const void*>(copy->Items), static_cast<const void*>(paddingEnd));
        QCOMPARE(copyOf(copy->Items, static_cast<std::size_t>(items) * 32), sideItems);
    }
    QCOMPARE(copy->SelfRef, nullptr);
    QCOMPARE(copy->BitstreamRef, nullptr);

    // The header in front of the record: the count, and the block's size in units of 16 bytes.
    const auto* header = reinterpret_cast<const std::uint32_t*>(copy.get()) - 2;
    const std::size_t contents = offset + size + extra + static_cast<std::size_t>(items) * 32;
    QCOMPARE(header[0], 1U);
    QCOMPARE(std::size_t{header[1]}, (311 + contents + 31) / 16);
}

void TestMediaPacket::referencesIntoThePacketAreRebased()
{
    QByteArray packet = pattern(30, 1);
    TMediaDataPacketInfo record{};
    record.Buffer = data(packet);
    record.Offset = 20;
    record.BitstreamSize = 10;
    record.SelfRef = reinterpret_cast<std::uint8_t*>(&record) + 56;
    record.BitstreamRef = record.Buffer + 12;
    record.BitstreamRefBase = 8;
    const MediaPacketPtr copy = makeMediaPacket(record);
    QCOMPARE(copy->SelfRef, static_cast<void*>(reinterpret_cast<std::uint8_t*>(copy.get()) + 56));
    QCOMPARE(copy->BitstreamRef, copy->Buffer + 12);
    QCOMPARE(int{*copy->BitstreamRef}, int{packet[12]});
}

void TestMediaPacket::nullBufferGivesZeroBytes()
{
    TMediaDataPacketInfo record{};
    record.Offset = 5;
    record.BitstreamSize = 6;
    record.ItemCount = 3; // no items behind it
    record.ExtraDataSize = 100;
    const MediaPacketPtr copy = makeMediaPacket(record);
    QCOMPARE(copyOf(copy->Buffer, 11), QByteArray(11, 0));
    QCOMPARE(copy->Items, nullptr);
    QCOMPARE(copy->ExtraData, nullptr);
}

void TestMediaPacket::countsReferences()
{
    TMediaDataPacketInfo record{};
    MediaPacketPtr first = makeMediaPacket(record);
    const auto* count = reinterpret_cast<const std::uint32_t*>(first.get()) - 2;
    QCOMPARE(*count, 1U);
    {
        const MediaPacketPtr second = first;
        QCOMPARE(*count, 2U);
        QCOMPARE(first->RefOps->addReference(first.get()), 0);
        QCOMPARE(*count, 3U);
        QCOMPARE(first->RefOps->release(first.get()), 0);
    }
    QCOMPARE(*count, 1U);
}

void TestMediaPacket::referencesFromSeveralThreads()
{
    QByteArray packet = pattern(660, 1);
    TMediaDataPacketInfo record{};
    record.Buffer = data(packet);
    record.BitstreamSize = 660;
    MediaPacketPtr shared = makeMediaPacket(record);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([copy = shared] {
            for (int turn = 0; turn < 10000; ++turn) {
                const MediaPacketPtr another = copy;
            }
        });
    }
    shared.reset(); // the last thread to end frees the packet
    for (std::thread& thread : threads) {
        thread.join();
    }
}

QTEST_APPLESS_MAIN(TestMediaPacket)
#include "tst_mediapacket.moc"
