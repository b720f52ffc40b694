#include "src/decoders/DecoderContext.h"
#include "src/decoders/DecoderFactories.h"
#include "src/decoders/PcmBlock.h"
#include "src/decoders/g7221/G7221.h"
#include "src/decoders/g7221/G7221Tables.h"
#include "tests/decoders/VectorFiles.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <cstring>
#include <memory>

using VectorFiles::crc32;
using VectorFiles::Generator;

class TestG7221 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tables_data();
    void tables();
    void creation();
    void refusedOptions();
    void failedCreationSaysSo();
    void firstOutput();
    void callersMemory();
    void refusedSetups();
    void setupLeavesWhatIsNotGiven();
    void inputIsSwappedBack();
    void recordedStreams_data();
    void recordedStreams();
    void lostFrames();
    void generatedStreams_data();
    void generatedStreams();
    void lostGeneratedFrames();
    void shortFrameIsHeard();
    void frameThatFailsAtItsEnd();
    void failedFrameHasNoSamples();
    void highBandIsZero();
    void outputHasFourteenBits();

private:
    static QByteArray decodeFrames(const QByteArray& frames, int frameSize, const QList<int>& lost = {});
};

namespace {

struct Delete
{
    void operator()(G7221State* engine) const { G7221_Delete(&engine); }
};
using Engine = std::unique_ptr<G7221State, Delete>;

SpeechEngineOptions goodOptions()
{
    SpeechEngineOptions options{};
    options.g7221.type = 4;
    options.g7221.bitRate = 24000;
    return options;
}

Engine makeEngine()
{
    const SpeechEngineOptions options = goodOptions();
    G7221State* engine = nullptr;
    G7221_Create(&engine, &options);
    return Engine(engine);
}

/** One frame with readable zeros behind it, and its PCM. */
struct Frame
{
    explicit Frame(const QByteArray& frame) : size(static_cast<std::uint32_t>(frame.size()))
    {
        std::memcpy(bytes, frame.constData(), static_cast<std::size_t>(std::min(frame.size(), 96)));
    }

    SpeechFrameSetup setup(std::uint32_t bitRate, bool lost = false)
    {
        return {4, 60, bytes, size, 0, pcm, bitRate, lost ? 1U : 0U};
    }

    std::uint8_t bytes[128] = {};
    std::uint32_t size;
    alignas(4) std::int16_t pcm[320] = {};
};

QByteArray pcmOf(const Frame& frame)
{
    return QByteArray(reinterpret_cast<const char*>(frame.pcm), sizeof frame.pcm);
}

} // namespace

void TestG7221::tables_data()
{
    using namespace G7221Tables;
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<unsigned>("crc");
    const auto row = [](const char* name, const std::int16_t* table, int size, unsigned crc) {
        QTest::newRow(name) << QByteArray(reinterpret_cast<const char*>(table), 2 * size) << crc;
    };
    row("power tree", differentialRegionPowerTree, 644, 0x38DD04C3);
    row("category 0", categoryTree0, 360, 0x44A24C69);
    row("category 1", categoryTree1, 186, 0x610848C1);
    row("category 2", categoryTree2, 94, 0x4FF8CD91);
    row("category 3", categoryTree3, 1038, 0xFDEDD49E);
    row("category 4", categoryTree4, 416, 0x3EE5B6A2);
    row("category 5", categoryTree5, 382, 0xAA161A04);
    row("category 6", categoryTree6, 62, 0x65B4A91F);
    row("centroid", centroid, 98, 0x1AEA1813);
    row("deviation", regionStandardDeviation, 54, 0x601524DA);
    row("window", window, 320, 0xD863BFD5);
    row("bias", synthesisBias, 320, 0x41994AEF);
    row("core", dctCore, 100, 0x64B687B3);
    row("rounding", dctRounding, 320, 0xCC289F8B);
    row("rotation 0", dctRotation0, 20, 0x0DFF1A22);
    row("rotation 1", dctRotation1, 40, 0x2F7055EB);
    row("rotation 2", dctRotation2, 80, 0xA70A0BE0);
    row("rotation 3", dctRotation3, 160, 0xA6D6110E);
    row("rotation 4", dctRotation4, 320, 0xD5F3903F);
}

void TestG7221::tables()
{
    QFETCH(QByteArray, bytes);
    QFETCH(unsigned, crc);
    QCOMPARE(crc32(bytes), crc);
}

void TestG7221::creation()
{
    const Engine engine = makeEngine();
    QVERIFY(engine);
    QCOMPARE(engine->bitsPerFrame, 480U);
    QCOMPARE(engine->wordsPerFrame, 30U);
    QCOMPARE(engine->swapBytes, 1U);
    QCOMPARE(engine->external, 0U);
    QCOMPARE(engine->oldSamples, engine->sampleBufferA + 160);
    QCOMPARE(engine->newSamples, engine->sampleBufferB);
    for (const std::uint16_t seed : engine->randSeed) {
        QCOMPARE(int{seed}, 1);
    }
    G7221State* none = nullptr;
    QCOMPARE(G7221_Delete(&none), -1);
    QCOMPARE(G7221_Delete(nullptr), -1);
}

void TestG7221::refusedOptions()
{
    const auto refused = [](auto change) {
        SpeechEngineOptions options = goodOptions();
        change(options.g7221);
        G7221State* engine = nullptr;
        const bool failed = G7221_Create(&engine, &options) == -1 && engine == nullptr;
        G7221_Delete(&engine);
        return failed;
    };
    QVERIFY(refused([](G7221Options& o) { o.type = 1; }));
    QVERIFY(refused([](G7221Options& o) { o.type = 0; }));
    QVERIFY(refused([](G7221Options& o) { o.bitRate = 16000; }));
    QVERIFY(refused([](G7221Options& o) { o.bitRate = 0; }));
    QVERIFY(refused([](G7221Options& o) { o.byteOrder = 2; }));
    QVERIFY(refused([](G7221Options& o) { o.ringSize = 3; }));       // the reader's refusal
    QVERIFY(!refused([](G7221Options& o) { o.type = 0xAB00CD04; })); // bits outside of the mask do not count
    QVERIFY(!refused([](G7221Options& o) { o.bitRate = 32000; }));
}

void TestG7221::failedCreationSaysSo()
{
    // On the standard output, so a process of its own makes it: this program, with the test before.
    QProcess child;
    child.start(QCoreApplication::applicationFilePath(), {QStringLiteral("refusedOptions")});
    QVERIFY(child.waitForFinished());
    QCOMPARE(child.exitCode(), 0);
    QByteArray output = child.readAllStandardOutput();
    QCOMPARE(output.replace('\r', "").count("Initialize GB Engine object fail!!\n"), 1);
}

void TestG7221::firstOutput()
{
    Frame frame(Generator(1).take(60));
    SpeechEngineOptions options = goodOptions();
    options.g7221.output = frame.pcm;
    G7221State* engine = nullptr;
    QCOMPARE(G7221_Create(&engine, &options), 0);
    SpeechFrameSetup setup = frame.setup(24000);
    setup.fields = SpeechSetupInput;
    setup.output = nullptr;
    QCOMPARE(G7221_SetupFrame(engine, &setup), 0);
    QCOMPARE(G7221_DecodeFrame(engine, nullptr), 0);
    QCOMPARE(crc32(pcmOf(frame)), 0xD7558F14U);
    G7221_Delete(&engine);
}

void TestG7221::callersMemory()
{
    for (std::size_t offset = 0; offset < 8; ++offset) {
        std::vector<std::uint8_t> memory(offset + G7221_MemorySize() + 8, 0x5A);
        SpeechEngineOptions options = goodOptions();
        options.g7221.memory = memory.data() + offset;
        G7221State* engine = nullptr;
        if (offset % 4 != 0) {
            QCOMPARE(G7221_Create(&engine, &options), -1); // the block is used as given
            QCOMPARE(engine, nullptr);
            continue;
        }
        QCOMPARE(G7221_Create(&engine, &options), 0);
        QCOMPARE(static_cast<void*>(engine), options.g7221.memory);
        QCOMPARE(static_cast<void*>(engine->reader),
                 static_cast<void*>(engine + 1)); // right behind the state
        QCOMPARE(engine->external, 1U);
        Frame frame(Generator(1).take(60));
        const SpeechFrameSetup setup = frame.setup(24000);
        QCOMPARE(G7221_SetupFrame(engine, &setup), 0);
        QCOMPARE(G7221_DecodeFrame(engine, nullptr), 0);
        QCOMPARE(crc32(pcmOf(frame)), 0xD7558F14U);
        QCOMPARE(G7221_Delete(&engine), 0); // and frees nothing
        QCOMPARE(engine, nullptr);
        QVERIFY(std::all_of(memory.end() - 8, memory.end(), [](int byte) { return byte == 0x5A; }));
    }
}

void TestG7221::refusedSetups()
{
    const auto result = [](auto change) {
        const Engine engine = makeEngine();
        Frame frame(QByteArray(60, 'x'));
        SpeechFrameSetup setup = frame.setup(24000);
        change(setup);
        return G7221_SetupFrame(engine.get(), &setup);
    };
    QCOMPARE(result([](SpeechFrameSetup&) {}), 0);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.type = 1; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.input = nullptr; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.inputSize = 0; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.output = nullptr; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.output = static_cast<char*>(s.output) + 2; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.mode = 48000; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) {
                 s.fields = 0; // nothing of it is looked at
                 s.input = nullptr;
                 s.output = nullptr;
                 s.mode = 1;
             }),
             0);
    SpeechEngineOptions straight = goodOptions();
    straight.g7221.byteOrder = 1; // an engine that swaps nothing takes no input by a set-up
    G7221State* engine = nullptr;
    QCOMPARE(G7221_Create(&engine, &straight), 0);
    Frame frame(QByteArray(60, 'x'));
    const SpeechFrameSetup setup = frame.setup(24000);
    QCOMPARE(G7221_SetupFrame(engine, &setup), -1);
    QCOMPARE(G7221_DecodeFrame(engine, nullptr), -1);
    G7221_Delete(&engine);
}

void TestG7221::setupLeavesWhatIsNotGiven()
{
    const Engine engine = makeEngine();
    Frame frame(Generator(1).take(80));
    SpeechFrameSetup setup = frame.setup(32000, true);
    QCOMPARE(G7221_SetupFrame(engine.get(), &setup), 0);
    QCOMPARE(engine->bitsPerFrame, 640U);
    QCOMPARE(engine->frameLost, 1U);
    setup.fields = 8; // output alone
    setup.mode = 24000;
    setup.lost = 0;
    QCOMPARE(G7221_SetupFrame(engine.get(), &setup), 0);
    QCOMPARE(engine->bitsPerFrame, 640U);
    QCOMPARE(engine->frameLost, 1U);
}

void TestG7221::inputIsSwappedBack()
{
    for (const int size : {60, 61, 59}) {
        const Engine engine = makeEngine();
        Frame frame(Generator(5).take(96));
        frame.size = static_cast<std::uint32_t>(size);
        const QByteArray before(reinterpret_cast<const char*>(frame.bytes), 96);
        const SpeechFrameSetup setup = frame.setup(24000);
        QCOMPARE(G7221_SetupFrame(engine.get(), &setup), 0);
        QCOMPARE(static_cast<char>(frame.bytes[0]), before[1]);
        // With an odd size the byte behind the frame takes part.
        QCOMPARE(static_cast<char>(frame.bytes[60]), before[size > 60 ? 61 : 60]);
        G7221_DecodeFrame(engine.get(), nullptr);
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(frame.bytes), 96), before);
    }
}

QByteArray TestG7221::decodeFrames(const QByteArray& frames, int frameSize, const QList<int>& lost)
{
    const Engine engine = makeEngine();
    QByteArray decoded;
    for (int i = 0; i < frames.size() / frameSize; ++i) {
        Frame frame(frames.mid(i * frameSize, frameSize));
        const SpeechFrameSetup setup = frame.setup(frameSize == 80 ? 32000 : 24000, lost.contains(i));
        G7221FrameResult result{};
        if (G7221_SetupFrame(engine.get(), &setup) != 0 || G7221_DecodeFrame(engine.get(), &result) != 0 ||
            result.samples != 320 || result.position != 0) {
            return QByteArray("failed");
        }
        decoded += pcmOf(frame);
    }
    return decoded;
}

void TestG7221::recordedStreams_data()
{
    QTest::addColumn<int>("frameSize");
    QTest::newRow("speech5_24000") << 60;
    QTest::newRow("mixed_32000") << 80;
}

void TestG7221::recordedStreams()
{
    QFETCH(int, frameSize);
    const QString name = QStringLiteral("g7221/") + QString::fromLatin1(QTest::currentDataTag());
    const QByteArray expected = VectorFiles::data(name + ".pcm");
    QVERIFY(!expected.isEmpty());
    QCOMPARE(decodeFrames(VectorFiles::data(name + ".g7221"), frameSize), expected);
}

void TestG7221::lostFrames()
{
    QList<int> lost;
    for (const QByteArray& number : VectorFiles::data("g7221/lost_24000.txt").simplified().split(' ')) {
        lost.append(number.toInt());
    }
    QVERIFY(lost.size() > 3);
    QCOMPARE(decodeFrames(VectorFiles::data("g7221/lost_24000.g7221"), 60, lost),
             VectorFiles::data("g7221/lost_24000.pcm"));
}

void TestG7221::generatedStreams_data()
{
    QTest::addColumn<int>("frameSize");
    QTest::addColumn<int>("seed");               // -1: zeros, -2: ones
    QTest::addColumn<QVector<unsigned>>("crcs"); // after 1, 2, 10, 100, 1000 frames
    using Crcs = QVector<unsigned>;
    QTest::newRow("24000 zeros") << 60 << -1 << Crcs{0xDC63C10A, 0xBF53FC5F, 0x42BC2661};
    QTest::newRow("32000 zeros") << 80 << -1 << Crcs{0xDC63C10A, 0x477B27E9, 0xBB6D27D4};
    QTest::newRow("24000 ones") << 60 << -2 << Crcs{0xB2E44B5D, 0x038650EE, 0xC8602A6C};
    QTest::newRow("32000 ones") << 80 << -2 << Crcs{0xCBA8E637, 0x7E696E68, 0xD92D3B7E};
    QTest::newRow("24000 seed 1") << 60 << 1
                                  << Crcs{0xD7558F14, 0xC9EBCFB5, 0x88EB1516, 0x892E0902, 0x2BCA8638};
    QTest::newRow("24000 seed 2") << 60 << 2
                                  << Crcs{0xCB5E7497, 0x2C9ECCCF, 0xFE564CE3, 0x232F80A7, 0xF3165E9E};
    QTest::newRow("32000 seed 1") << 80 << 1
                                  << Crcs{0x8CD3A55E, 0x4FEEAF13, 0xD36A75EB, 0x6745409A, 0x45EECE1F};
    QTest::newRow("32000 seed 2") << 80 << 2
                                  << Crcs{0x71B691C2, 0x6F550062, 0x76414203, 0x2A2954A1, 0xB74530E4};
}

void TestG7221::generatedStreams()
{
    QFETCH(int, frameSize);
    QFETCH(int, seed);
    QFETCH(QVector<unsigned>, crcs);
    const int counts[] = {1, 2, 10, 100, 1000};
    const int most = counts[crcs.size() - 1] * frameSize;
    const QByteArray frames = seed < 0 ? QByteArray(most, seed == -1 ? '\0' : '\xFF')
                                       : Generator(static_cast<std::uint32_t>(seed)).take(most);
    const QByteArray decoded = decodeFrames(frames, frameSize);
    for (int i = 0; i < crcs.size(); ++i) {
        QCOMPARE(crc32(decoded.left(counts[i] * 640)), crcs[i]);
    }
}

void TestG7221::lostGeneratedFrames()
{
    const QByteArray decoded = decodeFrames(Generator(1).take(300), 60, {2, 3, 4});
    const unsigned crcs[] = {0xD7558F14, 0x9A0F2A5B, 0x5C4654E4, 0x189F44B7, 0x6E5B9133};
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(crc32(decoded.mid(i * 640, 640)), crcs[i]);
    }
}

void TestG7221::shortFrameIsHeard()
{
    const Engine engine = makeEngine();
    Frame frame(Generator(1).take(20));
    const SpeechFrameSetup setup = frame.setup(24000);
    QCOMPARE(G7221_SetupFrame(engine.get(), &setup), 0);
    G7221FrameResult result{};
    QCOMPARE(G7221_DecodeFrame(engine.get(), &result), 5);
    QCOMPARE(result.samples, 320U);
    QVERIFY(result.position > 0 && result.position <= 20);
    // Its spectrum is not kept: a lost frame behind it repeats what was good before, here silence.
    QVERIFY(
        std::all_of(engine->oldMltCoefs, engine->oldMltCoefs + 320, [](std::int16_t c) { return c == 0; }));
}

void TestG7221::frameThatFailsAtItsEnd()
{
    // All is decoded, and the input ends in the fill: the shift that a lost frame would repeat is still that
    // of the good frame before it.
    int found = 0;
    for (std::uint32_t seed = 1; seed <= 400; ++seed) {
        const Engine engine = makeEngine();
        Frame good(Generator(seed).take(60));
        SpeechFrameSetup setup = good.setup(24000);
        G7221_SetupFrame(engine.get(), &setup);
        QCOMPARE(G7221_DecodeFrame(engine.get(), nullptr), 0);
        QCOMPARE(engine->oldMagShift, engine->magShift);
        const std::int16_t shift = engine->oldMagShift;
        const int used = (480 - engine->bitsLeft + 7) / 8;
        if (engine->bitsLeft < 16) {
            continue; // no fill to speak of
        }
        Frame other(Generator(seed + 1000).take(60));
        setup = other.setup(24000);
        G7221_SetupFrame(engine.get(), &setup);
        QCOMPARE(G7221_DecodeFrame(engine.get(), nullptr), 0);
        const std::int16_t otherShift = engine->oldMagShift;
        Frame cut(Generator(seed).take(60));
        cut.size = static_cast<std::uint32_t>(used + 1);
        setup = cut.setup(24000);
        G7221_SetupFrame(engine.get(), &setup);
        QCOMPARE(G7221_DecodeFrame(engine.get(), nullptr), 5);
        QCOMPARE(engine->magShift, shift);
        QCOMPARE(engine->oldMagShift, otherShift);
        found += shift != otherShift ? 1 : 0;
    }
    QVERIFY2(found > 5, qPrintable(QString::number(found)));
}

void TestG7221::failedFrameHasNoSamples()
{
    const Engine engine = makeEngine();
    G7221FrameResult result{7, 8};
    QCOMPARE(G7221_DecodeFrame(engine.get(), &result), -1); // nothing is set up
    QCOMPARE(result.samples, 0U);
}

void TestG7221::highBandIsZero()
{
    const Engine engine = makeEngine();
    Generator generator(3);
    for (int i = 0; i < 20; ++i) {
        Frame frame(generator.take(80));
        const SpeechFrameSetup setup = frame.setup(32000, i % 5 == 4);
        G7221_SetupFrame(engine.get(), &setup);
        engine->mltCoefs[290] = 1000;
        QCOMPARE(G7221_DecodeFrame(engine.get(), nullptr), 0);
        QVERIFY(std::all_of(engine->mltCoefs + 280, engine->mltCoefs + 320,
                            [](std::int16_t c) { return c == 0; }));
    }
}

void TestG7221::outputHasFourteenBits()
{
    const QByteArray decoded = decodeFrames(Generator(2).take(80 * 300), 80);
    bool clamped = false;
    for (int i = 0; i + 1 < decoded.size(); i += 2) {
        std::int16_t sample = 0;
        std::memcpy(&sample, decoded.constData() + i, 2);
        QCOMPARE(sample & 3, 0);
        clamped = clamped || sample == 32764 || sample == -32768;
    }
    QVERIFY(clamped);
}

QTEST_GUILESS_MAIN(TestG7221)
#include "tst_g7221.moc"
