#include "src/decoders/DecoderContext.h"
#include "src/decoders/DecoderFactories.h"
#include "src/decoders/PcmBlock.h"
#include "tests/decoders/VectorFiles.h"

#include <QTest>

#include <memory>
#include <vector>

using VectorFiles::crc32;
using VectorFiles::Generator;

/** The walk of the G.722.1 decoder over packets of several frames. */
class TestG7221Packets : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void packetsOfSeveralFrames_data();
    void packetsOfSeveralFrames();
    void mixedFrameSizes();
    void countsThatDoNotDivide();
    void tooLittleRoom();
    void frameCountOfZero();
    void misalignedOutput();
    void picturesAreNotItsAffair();
};

namespace {

struct Release
{
    void operator()(DecoderContext* decoder) const { decoder->Release(); }
};
using Decoder = std::unique_ptr<DecoderContext, Release>;

struct Room
{
    Room() : pcm(pcmBlockSize) {}

    int decode(const Decoder& decoder, const QByteArray& packet, unsigned frames,
               std::uint32_t room = pcmBlockSize)
    {
        // A block of the packet's own size: the address sanitizer watches what lies behind it.
        const std::vector<std::uint8_t> bytes(packet.begin(), packet.end());
        const EncodedChunk chunk{bytes.data(), static_cast<std::uint32_t>(bytes.size()), frames};
        size = room;
        return decoder->DecodeAudio(pcm.data(), &size, &chunk);
    }

    QByteArray bytes() const
    {
        return QByteArray(reinterpret_cast<const char*>(pcm.data()), static_cast<int>(size));
    }

    std::vector<std::uint8_t> pcm;
    std::uint32_t size = 0;
};

} // namespace

void TestG7221Packets::packetsOfSeveralFrames_data()
{
    QTest::addColumn<unsigned>("room");
    QTest::addColumn<QString>("expected");
    QTest::newRow("packets") << 576000U << "packets.pcm";
    QTest::newRow("room1281") << 1281U << "room1281.pcm";
    QTest::newRow("oddsizes") << 576000U << "oddsizes.pcm";
    QTest::newRow("midbyte") << 576000U << "midbyte.kept.pcm"; // the bit offset outlives a failed frame
}

void TestG7221Packets::packetsOfSeveralFrames()
{
    QFETCH(unsigned, room);
    QFETCH(QString, expected);
    const QString name = QStringLiteral("g7221/") + QString::fromLatin1(QTest::currentDataTag());
    const auto packets = VectorFiles::packets(name + ".rec");
    const QList<QByteArray> frames = VectorFiles::data(name + ".frames").simplified().split(' ');
    const QList<QByteArray> results = VectorFiles::data(name + ".results").simplified().split(' ');
    QCOMPARE(static_cast<int>(packets.size()), frames.size());
    const Decoder decoder(CreateDecoderSorvixG7221());
    Room block;
    QByteArray decoded;
    for (int i = 0; i < frames.size(); ++i) {
        const int result =
            block.decode(decoder, packets[static_cast<std::size_t>(i)], frames[i].toUInt(), room);
        QCOMPARE(result, results[2 * i].toInt());
        QCOMPARE(block.size, results[2 * i + 1].toUInt());
        decoded += result == 0 ? block.bytes() : QByteArray();
    }
    QCOMPARE(decoded, VectorFiles::data("g7221/" + expected));
}

void TestG7221Packets::mixedFrameSizes()
{
    const Decoder decoder(CreateDecoderSorvixG7221());
    Generator generator(7);
    Room room;
    QByteArray decoded;
    const std::pair<int, unsigned> packets[] = {{60, 1},  {120, 2}, {160, 2}, {240, 3}, {61, 1},
                                                {122, 2}, {79, 1},  {80, 1},  {90, 1}};
    for (const auto& [size, frames] : packets) {
        QCOMPARE(room.decode(decoder, generator.take(size), frames), 0);
        QCOMPARE(room.size, 640U * frames);
        decoded += room.bytes();
    }
    QCOMPARE(crc32(decoded), 0xDDFDDA15U);
}

void TestG7221Packets::countsThatDoNotDivide()
{
    // 125 bytes in two frames are walked as three of 62; the third is all but empty.
    Room room;
    const Decoder first(CreateDecoderSorvixG7221());
    QCOMPARE(room.decode(first, Generator(1).take(125), 2, 1280), -1);
    QCOMPARE(room.size, 1280U);
    const Decoder second(CreateDecoderSorvixG7221());
    QCOMPARE(room.decode(second, Generator(1).take(125), 2, 1920), 0);
    QCOMPARE(room.size, 1920U);
    QCOMPARE(crc32(room.bytes().left(1280)), 0x02398C1EU);
}

void TestG7221Packets::tooLittleRoom()
{
    const Decoder decoder(CreateDecoderSorvixG7221());
    Room room;
    room.pcm[0] = 0x5A;
    QCOMPARE(room.decode(decoder, Generator(1).take(80), 1, 639), -1);
    QCOMPARE(room.size, 639U);
    QCOMPARE(int{room.pcm[0]}, 0x5A);
}

void TestG7221Packets::frameCountOfZero()
{
    const Decoder decoder(CreateDecoderSorvixG7221());
    Room room;
    QCOMPARE(room.decode(decoder, QByteArray(60, 'x'), 0), -1);
    QCOMPARE(room.decode(decoder, QByteArray(), 0), -1);
    QCOMPARE(room.decode(decoder, QByteArray(3, 'x'), 5), -1); // frames of no bytes
    QCOMPARE(room.decode(decoder, QByteArray(3, 'x'), 0xFFFFFFFF), -1);
    QCOMPARE(room.decode(decoder, QByteArray(), 1), 0);
    QCOMPARE(room.size, 0U);
}

void TestG7221Packets::misalignedOutput()
{
    const Decoder decoder(CreateDecoderSorvixG7221());
    std::vector<std::uint8_t> pcm(1000);
    const QByteArray frame = Generator(1).take(60);
    const EncodedChunk chunk{reinterpret_cast<const std::uint8_t*>(frame.constData()), 60, 1};
    std::uint32_t size = 900;
    QCOMPARE(decoder->DecodeAudio(pcm.data() + 2, &size, &chunk), -1);
    QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), 0);
}

void TestG7221Packets::picturesAreNotItsAffair()
{
    const Decoder decoder(CreateDecoderSorvixG7221());
    DecodedPicture picture;
    std::uint32_t state = 7;
    const EncodedChunk chunk{};
    QCOMPARE(decoder->DecodeVideo(&picture, &state, &chunk), -1);
    QCOMPARE(static_cast<std::uint32_t>(decoder->QueryFrame(&picture, 2)), 0x80000004U);
}

QTEST_GUILESS_MAIN(TestG7221Packets)
#include "tst_g7221packets.moc"
