// The toy codec, by its row of the codec table.

#include "platform/MediaDataPacketInfo.h"
#include "src/decoders/CodecTable.h"
#include "src/decoders/DecoderContext.h"

#include <QTest>

class TestToy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodes();
    void refusesWhatDoesNotFit();

private:
    static DecoderContext* create();
};

DecoderContext* TestToy::create()
{
    const Codec* codec = Codec::byName("toy");
    return codec != nullptr ? codec->createDecoder(TMediaDataPacketInfo()) : nullptr;
}

void TestToy::decodes()
{
    DecoderContext* decoder = create();
    QVERIFY(decoder != nullptr);
    const std::uint8_t bytes[] = {1, 0xFF};
    const EncodedChunk chunk{bytes, 2, 1};
    std::uint8_t pcm[6] = {};
    std::uint32_t size = sizeof pcm;
    QCOMPARE(decoder->DecodeAudio(pcm, &size, &chunk), 0);
    QCOMPARE(size, 4U);
    QCOMPARE(QByteArray(reinterpret_cast<const char*>(pcm), 4), QByteArray("\0\x01\0\xFF", 4));
    decoder->Release();
}

void TestToy::refusesWhatDoesNotFit()
{
    DecoderContext* decoder = create();
    QVERIFY(decoder != nullptr);
    const std::uint8_t bytes[] = {1, 2};
    const EncodedChunk chunk{bytes, 2, 1};
    std::uint8_t pcm[3] = {};
    std::uint32_t size = sizeof pcm;
    QCOMPARE(decoder->DecodeAudio(pcm, &size, &chunk), -1);
    QCOMPARE(size, 3U);
    decoder->Release();
}

QTEST_GUILESS_MAIN(TestToy)
#include "tst_toy.moc"
