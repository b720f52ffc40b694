// Frames of every kind, whole, lost and short, and packets of them.

#include "src/decoders/DecoderContext.h"
#include "src/decoders/DecoderFactories.h"
#include "src/decoders/PcmBlock.h"
#include "src/decoders/g729a/G729AFrameBits.h"
#include "src/decoders/g729a/G729ANoisePath.h"
#include "src/decoders/g729a/G729ATables.h"
#include "tests/decoders/G729AFrames.h"
#include "tests/decoders/VectorFiles.h"

#include <QTest>

using namespace G729AFrames;
using VectorFiles::crc32;
using VectorFiles::Generator;

class TestG729AFrames : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void kindsOfFrames_data();
    void kindsOfFrames();
    void erasedAfterSpeech();
    void nothingAfterSpeech();
    void maxSidGain();
    void parityErrorRepeatsTheLag();
    void thousandFramesOfNoise();
    void shortFrames_data();
    void shortFrames();
    void packets();
    void shortFrameInAPacket();
    void lastFrameIsFilledUp();
    void refusedPackets();
    void picturesAreNotItsAffair();

private:
    struct Release
    {
        void operator()(DecoderContext* decoder) const { decoder->Release(); }
    };
    using Decoder = std::unique_ptr<DecoderContext, Release>;

    /** Through the plug-in's wrapper. @return bytes written, or -1 */
    int decodePacket(const Decoder& decoder, const QByteArray& packet, unsigned frames,
                     std::uint32_t room = pcmBlockSize);
    QByteArray written(int size) const
    {
        return QByteArray(reinterpret_cast<const char*>(m_pcm.data()), size);
    }

    std::vector<std::uint8_t> m_pcm = std::vector<std::uint8_t>(pcmBlockSize);
    std::uint32_t m_size = 0;
};

namespace {

/** An engine in the middle of speech. */
Engine speaking()
{
    Engine engine = makeEngine();
    decodeAll(engine.get(), cut(speech().left(11 * 60)));
    return engine;
}

const QByteArray nothing(1, '\0');
const QByteArray erased(1, '\3');

} // namespace

int TestG729AFrames::decodePacket(const Decoder& decoder, const QByteArray& packet, unsigned frames,
                                  std::uint32_t room)
{
    // A block of the packet's own size: the address sanitizer watches what lies behind it.
    const std::vector<std::uint8_t> bytes(packet.begin(), packet.end());
    const EncodedChunk chunk{bytes.data(), static_cast<std::uint32_t>(bytes.size()), frames};
    m_size = room;
    return decoder->DecodeAudio(m_pcm.data(), &m_size, &chunk) == 0 ? static_cast<int>(m_size) : -1;
}

void TestG729AFrames::kindsOfFrames_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("consumed");
    QTest::addColumn<int>("ftypAfterSpeech");
    QTest::addColumn<int>("ftypAfterNoise");
    QTest::addColumn<int>("bfi");
    QTest::newRow("no transmission") << 0 << 1 << 0 << 0 << 0;
    QTest::newRow("speech") << 1 << 11 << 1 << 1 << 0;
    QTest::newRow("SID") << 2 << 3 << 2 << 2 << 0;
    QTest::newRow("erased") << 3 << 1 << 1 << 0 << 1;
    QTest::newRow("erased speech") << 4 << 11 << 1 << 0 << 1;
    QTest::newRow("erased SID") << 5 << 3 << 1 << 0 << 1;
    QTest::newRow("6") << 6 << 1 << 0 << 0 << 0;
    QTest::newRow("255") << 255 << 1 << 0 << 0 << 0;
}

void TestG729AFrames::kindsOfFrames()
{
    QFETCH(int, type);
    QFETCH(int, consumed);
    QFETCH(int, ftypAfterSpeech);
    QFETCH(int, ftypAfterNoise);
    QFETCH(int, bfi);
    const QByteArray frame = static_cast<char>(type) + Generator(9).take(consumed - 1);
    for (const bool afterNoise : {false, true}) {
        const Engine engine = speaking();
        if (afterNoise) {
            decode(engine.get(), sidFrame(0, 3, 4, 5));
        }
        const Decoded decoded = decode(engine.get(), frame);
        QCOMPARE(decoded.status, 0);
        QCOMPARE(static_cast<int>(decoded.consumed), consumed);
        QCOMPARE(int{engine->ftyp}, afterNoise ? ftypAfterNoise : ftypAfterSpeech);
        QCOMPARE(int{engine->pastFtyp}, int{engine->ftyp});
        QCOMPARE(int{engine->bfi}, bfi);
        const int cleared = type == 4 ? 11 : type == 5 ? 4 : 0;
        for (int i = 0; i < cleared; ++i) {
            QCOMPARE(int{engine->parm[i]}, type == 4 && i == 3 ? 1 : 0); // parity of nothing: a bad one
        }
    }
}

void TestG729AFrames::erasedAfterSpeech()
{
    const Engine engine = speaking();
    const int lag = engine->oldT0;
    const int gain = engine->gainCode;
    const std::int16_t sidSav = engine->sidSav;
    const Decoded decoded = decode(engine.get(), erased);
    QCOMPARE(decoded.status, 0);
    QCOMPARE(decoded.consumed, 1U);
    QVERIFY(decoded.pcm.count('\0') < 100); // it is heard
    QCOMPARE(int{engine->oldT0}, lag + 2);  // one longer each subframe
    QCOMPARE(int{engine->gainCode}, (((gain * 32111) >> 15) * 32111) >> 15);
    QCOMPARE(engine->sidSav, sidSav); // of good frames only
    for (int i = 0; i < 300; ++i) {
        QCOMPARE(decode(engine.get(), erased).consumed, 1U);
    }
    QCOMPARE(int{engine->oldT0}, 143);
    QCOMPARE(int{engine->gainCode}, 0);
}

void TestG729AFrames::nothingAfterSpeech()
{
    const Engine engine = speaking();
    const int index = G729ANoisePath::gainIndex(engine->sidSav, engine->shSidSav);
    QVERIFY(index > 0 && index < 31);
    QCOMPARE(decode(engine.get(), nothing).status, 0);
    QCOMPARE(int{engine->noiseState->sidGain}, int{G729ATables::tabSidgain[index]});
    QCOMPARE(engine->noiseState->curGain, engine->noiseState->sidGain);
    // No SID frame ever came: deliberately, LSF stand where LSP are due.
    QVERIFY(std::equal(engine->lspOld, engine->lspOld + G729AOrder, G729ATables::freqPrevReset));
    QCOMPARE(int{engine->sharp}, 3277);
    // Later frames keep that gain, smoothed with both terms rounded on their own.
    const int before = engine->noiseState->curGain;
    const int gain = engine->noiseState->sidGain;
    decode(engine.get(), nothing);
    QCOMPARE(int{engine->noiseState->curGain}, ((before * 7 + 4) >> 3) + ((gain + 4) >> 3));
}

void TestG729AFrames::maxSidGain()
{
    const Engine engine = speaking();
    const QByteArray frame = sidFrame(1, 31, 15, 31);
    QCOMPARE(frame.size(), 3);
    QCOMPARE(decode(engine.get(), frame).consumed, 3U);
    QCOMPARE(int{engine->parm[3]}, 31);
    QCOMPARE(int{engine->noiseState->sidGain}, 15962);
    QCOMPARE(int{engine->noiseState->curGain}, 15962);
}

void TestG729AFrames::parityErrorRepeatsTheLag()
{
    const Engine engine = speaking();
    const int before = engine->oldT0;
    const QByteArray frame = speech().mid(11 * 60, 11);
    QByteArray flipped = frame;
    flipped[4] = static_cast<char>(flipped[4] ^ 0x20); // P0, behind 18 + 8 bits
    const Engine twin = speaking();
    decode(twin.get(), frame);
    QCOMPARE(int{twin->parm[G729AFrameBits::LagParity]}, 0);
    QCOMPARE(decode(engine.get(), flipped).status, 0); // nobody is told
    QCOMPARE(int{engine->parm[G729AFrameBits::LagParity]}, 1);
    QCOMPARE(int{engine->parm[G729AFrameBits::Lag1]}, int{twin->parm[G729AFrameBits::Lag1]});
    // The second lag lies around the one that was repeated.
    QVERIFY(std::abs(engine->oldT0 - before) <= 6);
}

void TestG729AFrames::thousandFramesOfNoise()
{
    const Engine engine = speaking();
    std::uint16_t seed = 11111;
    for (int frame = 0; frame < 1000; ++frame) {
        for (const std::int16_t word : engine->noiseTable) {
            seed = static_cast<std::uint16_t>(seed * 31821U + 13849U);
            QCOMPARE(static_cast<std::uint16_t>(word), seed);
        }
        QCOMPARE(decode(engine.get(), nothing).status, 0);
    }
    // Speech brings the generator back to its start.
    decode(engine.get(), speech().left(11));
    QCOMPARE(int{engine->noiseTable[0]}, 10260);
}

void TestG729AFrames::shortFrames_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("size");
    for (const int type : {1, 2, 4, 5}) {
        for (int size = 1; size < frameSize(static_cast<char>(type)); ++size) {
            QTest::addRow("type %d, %d bytes", type, size) << type << size;
        }
    }
}

void TestG729AFrames::shortFrames()
{
    QFETCH(int, type);
    QFETCH(int, size);
    const Engine engine = speaking();
    const Engine untouched = speaking();
    const QByteArray shortFrame = static_cast<char>(type) + Generator(4).take(size - 1);
    QCOMPARE(decode(engine.get(), shortFrame).status, -1);
    // History is as it was, and the reader stands at a whole byte again.
    QCOMPARE(engine->reader->bitOffset, 0U);
    const auto rest = cut(speech().mid(11 * 60));
    const QByteArray decoded = decodeAll(engine.get(), rest);
    QVERIFY(decoded.size() > 100);
    QVERIFY(decoded == decodeAll(untouched.get(), rest));
}

void TestG729AFrames::packets()
{
    const Decoder decoder(CreateDecoderSorvixG729A());
    const QByteArray stream = VectorFiles::data("g729a/speech1_dtx0.g729f");
    QByteArray pcm;
    for (int at = 0; at < stream.size(); at += 33) {
        QCOMPARE(decodePacket(decoder, stream.mid(at, 33), 3), 480);
        pcm += written(480);
    }
    QCOMPARE(crc32(pcm), 0xFC0492EBU);
    // The walk goes by what each frame took, not by their number.
    const Decoder mixed(CreateDecoderSorvixG729A());
    QCOMPARE(decodePacket(mixed, stream.left(11) + sidFrame(0, 1, 2, 3) + nothing + nothing, 1), 4 * 160);
}

void TestG729AFrames::shortFrameInAPacket()
{
    const QByteArray stream = speech();
    const Decoder decoder(CreateDecoderSorvixG729A());
    // 14 bytes in two frames: 7 bytes are what a frame may take, too few for speech.
    QCOMPARE(decodePacket(decoder, stream.left(11) + sidFrame(0, 1, 2, 3), 2), -1);
    // A frame that fails in the middle: what came before it stays written, the size as it was.
    const Decoder second(CreateDecoderSorvixG729A());
    std::fill(m_pcm.begin(), m_pcm.end(), std::uint8_t{0x5A});
    const QByteArray packet = nothing + nothing + stream.left(11);
    QCOMPARE(decodePacket(second, packet, 2, 1000), -1);
    QCOMPARE(m_size, 1000U);
    QVERIFY(written(320) != QByteArray(320, '\x5A'));
    QCOMPARE(written(340).right(20), QByteArray(20, '\x5A'));
}

void TestG729AFrames::lastFrameIsFilledUp()
{
    // Cut short at the packet's end while its share would suffice: zeros follow.
    const QByteArray stream = speech();
    const Decoder decoder(CreateDecoderSorvixG729A());
    const Engine engine = makeEngine();
    QCOMPARE(decodePacket(decoder, stream.left(11 + 7), 1), 320);
    QByteArray expected = decode(engine.get(), stream.left(11)).pcm;
    expected += decode(engine.get(), stream.mid(11, 7) + QByteArray(4, '\0')).pcm;
    QCOMPARE(written(320), expected);
}

void TestG729AFrames::refusedPackets()
{
    const Decoder decoder(CreateDecoderSorvixG729A());
    const QByteArray frame = speech().left(11);
    m_pcm[0] = 0x5A;
    QCOMPARE(decodePacket(decoder, frame, 1, 159), -1); // before anything is decoded
    QCOMPARE(m_size, 159U);
    QCOMPARE(int{m_pcm[0]}, 0x5A);
    QCOMPARE(decodePacket(decoder, frame, 0), -1);
    QCOMPARE(decodePacket(decoder, frame, 12), -1); // frames of no bytes
    QCOMPARE(decodePacket(decoder, frame, 0xFFFFFFFF), -1);
    QCOMPARE(decodePacket(decoder, QByteArray(), 1), 0);
    // None of it has touched the history.
    const Engine engine = makeEngine();
    QCOMPARE(decodePacket(decoder, frame, 1, 160), 160);
    QCOMPARE(written(160), decode(engine.get(), frame).pcm);
}

void TestG729AFrames::picturesAreNotItsAffair()
{
    const Decoder decoder(CreateDecoderSorvixG729A());
    DecodedPicture picture;
    std::uint32_t state = 7;
    const EncodedChunk chunk{};
    QCOMPARE(decoder->DecodeVideo(&picture, &state, &chunk), -1);
    QCOMPARE(static_cast<std::uint32_t>(decoder->QueryFrame(&picture, 2)), 0x80000004U);
}

QTEST_APPLESS_MAIN(TestG729AFrames)
#include "tst_g729aframes.moc"
