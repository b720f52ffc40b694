// The rows of the codec table: what they say, and that they agree with the decoders that they make.

#include "src/decoders/CodecTable.h"

#include "platform/MediaDataPacketInfo.h"
#include "src/decoders/DecoderContext.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <set>
#include <string>

class TestCodecTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows_data();
    void rows();
    void rowsAreDistinct();
    void everyStreamTypeHasARow();
    void everyCodecHasSeeds();
    void nothingIsFoundOffTheTable();
    void decodersAreMadeAsThePacketSays();
};

void TestCodecTable::rows_data()
{
    QTest::addColumn<unsigned>("streamType");
    QTest::addColumn<unsigned>("rate");
    QTest::addColumn<unsigned>("time"); // of a packet of 3 frames, 320 bytes, at 40000 Hz and 16000 bit/s; ms
    QTest::addColumn<bool>("decoded");
    QTest::newRow("g7221") << 256U << 16000U << 60U << true;
    QTest::newRow("g729a") << 512U << 8000U << 30U << true;
    QTest::newRow("aac") << 1024U << 16000U << 25U << true;
    QTest::newRow("") << 2048U << 8000U << 60U << false;
    QTest::newRow("amr") << 4096U << 8000U << 60U << true;
    QTest::newRow("pcmu") << 8192U << 8000U << 40U << true;
    QTest::newRow("pcma") << 16384U << 8000U << 40U << true;
    QTest::newRow("g726") << 32768U << 8000U << 160U << true;
}

void TestCodecTable::rows()
{
    QFETCH(unsigned, streamType);
    QFETCH(unsigned, rate);
    QFETCH(unsigned, time);
    QFETCH(bool, decoded);
    const std::string name = QTest::currentDataTag();
    const Codec* codec = Codec::byType(streamType);
    QVERIFY(codec != nullptr);
    QCOMPARE(codec->streamType, streamType);
    QCOMPARE(codec->rate, rate);
    QCOMPARE(Codec::byName(name), name.empty() ? nullptr : codec);
    QCOMPARE(codec->createDecoder != nullptr, decoded);
    TMediaDataPacketInfo packet{};
    packet.StreamType = streamType;
    packet.FrameNumber = 3;
    packet.BitstreamSize = 320;
    packet.AudioSamplingFreq = 40000;
    packet.AudioBitRate = 16000;
    QCOMPARE(codec->packetTime(packet), time);
}

void TestCodecTable::rowsAreDistinct()
{
    std::set<std::uint32_t> types;
    std::set<std::string> names;
    std::size_t named = 0;
    for (const Codec& codec : codecTable) {
        QCOMPARE(codec.streamType & (codec.streamType - 1), 0U);
        types.insert(codec.streamType);
        QVERIFY((codec.frameSamples == 0) != (codec.bitRate == 0)); // else a dump has no duration
        // What users can choose is decoded, and nothing else.
        QCOMPARE(codec.name != nullptr, codec.createDecoder != nullptr);
        if (codec.name != nullptr) {
            ++named;
            names.insert(codec.name);
        }
    }
    QCOMPARE(types.size(), codecTable.size());
    QCOMPARE(names.size(), named);
}

void TestCodecTable::everyStreamTypeHasARow()
{
    QFile header(QStringLiteral(PROJECT_FOLDER "/src/vocabulary/StreamType.h"));
    QVERIFY(header.open(QIODevice::ReadOnly));
    auto found = QRegularExpression("uint32_t (\\w+) = (\\d+);").globalMatch(header.readAll());
    std::size_t types = 0;
    while (found.hasNext()) {
        const QRegularExpressionMatch type = found.next();
        QVERIFY2(Codec::byType(type.captured(2).toUInt()) != nullptr, qPrintable(type.captured(1)));
        ++types;
    }
    QCOMPARE(types, codecTable.size());
}

/** Without a seed its fuzz target does not start. */
void TestCodecTable::everyCodecHasSeeds()
{
    for (const Codec& codec : codecTable) {
        if (codec.name != nullptr) {
            const QString folder = QStringLiteral(PROJECT_FOLDER "/fuzz/corpus/fuzz_decoder_") + codec.name;
            QVERIFY2(!QDir(folder).isEmpty(), qPrintable(folder));
        }
    }
}

void TestCodecTable::nothingIsFoundOffTheTable()
{
    for (const std::uint32_t type : {0U, 1U, 128U, 8193U, 0x80000000U, 0xFFFFFFFFU}) {
        QCOMPARE(Codec::byType(type), static_cast<const Codec*>(nullptr));
    }
    for (const char* name : {"", "PCMU", "pcm", "pcmu ", "8192"}) {
        QCOMPARE(Codec::byName(name), static_cast<const Codec*>(nullptr));
    }
    QCOMPARE(Codec::byName(std::string_view("aac\0", 4)), static_cast<const Codec*>(nullptr));
}

void TestCodecTable::decodersAreMadeAsThePacketSays()
{
    TMediaDataPacketInfo packet{};
    for (const Codec& codec : codecTable) {
        if (codec.createDecoder == nullptr) {
            continue;
        }
        packet.AudioSamplingFreq = codec.rate;
        packet.AudioChannelNum = codec.channels;
        packet.AudioBitRate = codec.bitRate;
        DecoderContext* decoder = codec.createDecoder(packet);
        QVERIFY2(decoder != nullptr, codec.name);
        decoder->Release();
    }
    packet.AudioBitRate = 1;
    QCOMPARE(Codec::byName("g726")->createDecoder(packet), static_cast<DecoderContext*>(nullptr));
}

QTEST_GUILESS_MAIN(TestCodecTable)
#include "tst_codectable.moc"
