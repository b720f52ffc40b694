// The engine as a whole: streams bit for bit, how it is made and set up, and what it refuses.

#include "src/decoders/g729a/G729AHighPass.h"
#include "src/decoders/g729a/G729ATables.h"
#include "tests/decoders/G729AFrames.h"
#include "tests/decoders/VectorFiles.h"

#include <QDir>
#include <QTest>

using namespace G729AFrames;
using VectorFiles::contents;
using VectorFiles::crc32;

class TestG729A : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void tables_data();
    void tables();
    void recordedStreams_data();
    void recordedStreams();
    void sequencesOfTheRecommendation_data();
    void sequencesOfTheRecommendation();
    void creation();
    void refusedOptions();
    void callersMemory();
    void firstInputAndOutput();
    void callbacksCountOnlyWithTheirFields();
    void refusedSetups();
    void nothingSetUp();
    void ring();
    void withoutTypeByte();
    void withoutPostFilter();
};

void TestG729A::tables_data()
{
    using namespace G729ATables;
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<unsigned>("crc");
    const auto row = [](const char* name, const void* table, std::size_t size, unsigned crc) {
        QTest::newRow(name) << QByteArray(static_cast<const char*>(table), static_cast<int>(size)) << crc;
    };
    row("lspcb1", &lspcb1, sizeof lspcb1, 0xD372CE8B);
    row("lspcb2", &lspcb2, sizeof lspcb2, 0x771CE736);
    row("fg", &fg, sizeof fg, 0x24EABB43);
    row("fgSum", &fgSum, sizeof fgSum, 0xAFE587C0);
    row("fgSumInv", &fgSumInv, sizeof fgSumInv, 0x12B99D17);
    row("freqPrevReset", &freqPrevReset, sizeof freqPrevReset, 0xFC287051);
    row("table2", &table2, sizeof table2, 0x4F8B0847);
    row("slope", &slope, sizeof slope, 0x9ED41B14);
    row("inter3l", &inter3l, sizeof inter3l, 0x3F88CAE9);
    row("gbk1", &gbk1, sizeof gbk1, 0x9028220C);
    row("gbk2", &gbk2, sizeof gbk2, 0x47AE3B3F);
    row("imap1", &imap1, sizeof imap1, 0x3AFD35A2);
    row("imap2", &imap2, sizeof imap2, 0xB720B96E);
    row("gainPrediction", &gainPrediction, sizeof gainPrediction, 0xF5B29FD0);
    row("tablog", &tablog, sizeof tablog, 0x5474B326);
    row("tabpow", &tabpow, sizeof tabpow, 0xE3E9FE51);
    row("tabsqr", &tabsqr, sizeof tabsqr, 0xD97BB52F);
    row("PtrTab_1", &PtrTab_1, sizeof PtrTab_1, 0x761E5ECE);
    row("PtrTab_2", &PtrTab_2, sizeof PtrTab_2, 0xA78A9E16);
    row("noiseFgSum", &noiseFgSum, sizeof noiseFgSum, 0x48443F03);
    row("tabSidgain", &tabSidgain, sizeof tabSidgain, 0x3F782D26);
}

void TestG729A::tables()
{
    QFETCH(QByteArray, bytes);
    QFETCH(unsigned, crc);
    QCOMPARE(crc32(bytes), crc);
}

void TestG729A::recordedStreams_data()
{
    QTest::addColumn<int>("frames");
    QTest::addColumn<unsigned>("crc"); // of the samples
    QTest::newRow("speech1_dtx0") << 480 << 0xFC0492EBU;
    QTest::newRow("speech1_dtx1") << 480 << 0xB7246559U;
    QTest::newRow("speech2_dtx0") << 480 << 0x3A37B51BU;
    QTest::newRow("speech2_dtx1") << 480 << 0xDECC200BU;
    QTest::newRow("speech3_dtx0") << 480 << 0x037D71BEU;
    QTest::newRow("speech3_dtx1") << 480 << 0xB6DDE83CU;
    QTest::newRow("signals_dtx1") << 380 << 0x7B80B9C6U;
    QTest::newRow("erased_light") << 480 << 0x2814E1A8U;
    QTest::newRow("erased_heavy") << 480 << 0xCAF2BAD7U;
    QTest::newRow("unknown_types") << 480 << 0x4FCF91AFU;
    QTest::newRow("sid_first") << 142 << 0xAC28A1A5U;
    QTest::newRow("sid_gain31") << 71 << 0x4136F857U;
    QTest::newRow("more_sid_levels") << 192 << 0xDF124500U;
    QTest::newRow("nothing_first") << 110 << 0x10481102U;
    QTest::newRow("more_zero_first") << 121 << 0x49803FDAU;
    QTest::newRow("silence_without_sid") << 240 << 0x7B0CF77EU;
    QTest::newRow("noise1000") << 1041 << 0x170067BAU;
    QTest::newRow("more_parity") << 300 << 0x25EDA70DU;
    QTest::newRow("more_lags") << 153 << 0x77532AD8U;
    QTest::newRow("loud") << 300 << 0x97BF78E0U;
    QTest::newRow("more_loud1") << 120 << 0xDED43571U;
    QTest::newRow("more_loud2") << 120 << 0xDD27F332U;
    QTest::newRow("random") << 450 << 0xCE1358D4U;
}

void TestG729A::recordedStreams()
{
    QFETCH(int, frames);
    QFETCH(unsigned, crc);
    const auto stream = cut(VectorFiles::data(QStringLiteral("g729a/%1.g729f").arg(QTest::currentDataTag())));
    QCOMPARE(static_cast<int>(stream.size()), frames);
    const Engine engine = makeEngine();
    QCOMPARE(crc32(decodeAll(engine.get(), stream)), crc);
}

void TestG729A::sequencesOfTheRecommendation_data()
{
    QTest::addColumn<QString>("base");
    const QDir folder(QStringLiteral(ITU_VECTORS_DIR "/g729"));
    QTest::newRow("all") << QString();
    for (const QString& name : folder.entryList({QStringLiteral("*.g729f")}, QDir::Files)) {
        QTest::newRow(qPrintable(name.chopped(6))) << folder.filePath(name.chopped(6));
    }
}

void TestG729A::sequencesOfTheRecommendation()
{
    if (!QDir(QStringLiteral(ITU_VECTORS_DIR "/g729")).exists()) {
        QSKIP(
            "The Recommendation's sequences are not here (ITU_VECTORS_DIR): nothing was compared with them.");
    }
    QFETCH(QString, base);
    if (base.isEmpty()) {
        QCOMPARE(QDir(QStringLiteral(ITU_VECTORS_DIR "/g729"), QStringLiteral("*.g729f")).count(), 12U);
        return;
    }
    // Where the gain control's energy rule changes a few samples, they are laid down beside the original's.
    const QString own = base + QStringLiteral(".pcm");
    const QByteArray expected = contents(QFile::exists(own) ? own : base + QStringLiteral(".itu.pcm"));
    QVERIFY(!expected.isEmpty());
    const Engine engine = makeEngine();
    const QByteArray pcm = decodeAll(engine.get(), cut(contents(base + QStringLiteral(".g729f"))));
    QVERIFY(pcm == expected);
}

void TestG729A::creation()
{
    const Engine engine = makeEngine();
    QVERIFY(engine);
    QCOMPARE(engine->external, 0U);
    QCOMPARE(engine->frameHeader, 0U);
    QCOMPARE(int{engine->noiseFg[0][2][3]}, int{G729ATables::fg[0][2][3]});
    QCOMPARE(int{engine->noiseFg[1][2][3]},
             (39320 * G729ATables::fg[0][2][3] + 26214 * G729ATables::fg[1][2][3]) >> 16);
    for (int i = 0; i < G729APredictors; ++i) {
        QCOMPARE(int{engine->pastQuaEn[i]}, -14336);
        QCOMPARE(int{engine->freqPrev[i][9]}, 23396);
    }
    QCOMPARE(int{engine->noiseTable[0]}, 10260);
    QCOMPARE(int{engine->prevLsf[0]}, 2339);
    QCOMPARE(int{engine->seedFer}, 21845);
    QCOMPARE(int{engine->pastFtyp}, 1);
    QCOMPARE(int{engine->lspOld[0]}, 30000);
    QCOMPARE(int{engine->lspOld[9]}, -26000);
    QCOMPARE(int{engine->sidSav}, 0);
    QCOMPARE(int{engine->shSidSav}, 1);
    QCOMPARE(int{engine->sharp}, 3277);
    QCOMPARE(int{engine->oldT0}, 60);
    QCOMPARE(engine->exc, engine->oldExc + 156);
    QCOMPARE(engine->postFilterOn, 1U);
    QCOMPARE(int{engine->postFilterState->pastGain}, 4096);
    QVERIFY(std::equal(engine->prevLsf, engine->prevLsf + G729AOrder, engine->noiseState->lspSid));
    QCOMPARE(int{engine->noiseState->curGain}, 0);
    QCOMPARE(int{engine->noiseState->sidGain}, 2);
    G729AState* none = nullptr;
    QCOMPARE(G729A_Delete(&none), -1);
    QCOMPARE(G729A_Delete(nullptr), -1);
}

void TestG729A::refusedOptions()
{
    const auto refused = [](auto change) {
        SpeechEngineOptions options = usualOptions();
        change(options.g729a);
        auto* engine = reinterpret_cast<G729AState*>(&options);
        const bool failed = G729A_Create(&engine, &options) == -1 && engine == nullptr;
        G729A_Delete(&engine);
        return failed;
    };
    const auto ringOf = [](std::uint32_t size) {
        return [size](G729AOptions& options) {
            options.ringMode = 1;
            options.ringSize = size;
        };
    };
    alignas(4) std::int16_t pcm[G729AFrameSamples + 2] = {};
    QVERIFY(refused([](G729AOptions& o) { o.type = 4; }));
    QVERIFY(!refused([](G729AOptions& o) { o.type = 0xAB00CD01; })); // bits outside of the mask do not count
    QVERIFY(refused(ringOf(0)));
    QVERIFY(refused(ringOf(32)));
    QVERIFY(refused(ringOf(96)));
    QVERIFY(!refused(ringOf(64)));
    QVERIFY(!refused([](G729AOptions& o) { o.ringSize = 3; })); // there is no ring
    QVERIFY(refused([](G729AOptions& o) { o.fields |= G729AOptionInput; }));
    QVERIFY(refused([](G729AOptions& o) { o.fields |= G729AOptionOutput; }));
    QVERIFY(refused([&pcm](G729AOptions& o) {
        o.fields |= G729AOptionOutput;
        o.output = pcm + 1;
    }));
    QVERIFY(!refused([&pcm](G729AOptions& o) {
        o.fields |= G729AOptionOutput;
        o.output = pcm;
    }));
}

void TestG729A::callersMemory()
{
    const SpeechEngineOptions usual = usualOptions();
    const std::uint32_t size = G729A_MemorySize(&usual);
    const auto frames = cut(speech().left(110));
    const Engine own = makeEngine();
    const QByteArray expected = decodeAll(own.get(), frames);
    for (std::uint32_t offset = 0; offset < 8; ++offset) {
        // Exactly as long as was asked for: the address sanitizer watches the end.
        std::vector<std::uint8_t> memory(offset + size);
        SpeechEngineOptions options = usual;
        options.g729a.memory = memory.data() + offset;
        G729AState* engine = nullptr;
        QCOMPARE(G729A_Create(&engine, &options), 0);
        const std::uint32_t moved = (offset + 3) / 4 * 4;
        QCOMPARE(static_cast<void*>(engine), static_cast<void*>(memory.data() + moved));
        QCOMPARE(engine->external, 1U);
        QCOMPARE(engine->noiseState->external, 1U);
        QCOMPARE(engine->postFilterState->external, 1U);
        QCOMPARE(decodeAll(engine, frames), expected);
        QCOMPARE(G729A_Delete(&engine), 0); // and frees nothing
        QCOMPARE(engine, nullptr);
    }
}

void TestG729A::firstInputAndOutput()
{
    const auto frames = cut(speech().left(33));
    const Engine other = makeEngine();
    QByteArray input = frames[0] + frames[1] + QByteArray(3, '\0');
    alignas(4) std::int16_t pcm[G729AFrameSamples] = {};
    SpeechEngineOptions options = usualOptions();
    options.g729a.fields |= G729AOptionInput | G729AOptionOutput | G729AOptionFrameHeader;
    options.g729a.input = reinterpret_cast<std::uint8_t*>(input.data());
    options.g729a.inputSize = 22;
    options.g729a.output = pcm;
    options.g729a.frameHeader = 1;
    const Engine engine = makeEngine(options);
    QVERIFY(engine);
    for (int i = 0; i < 2; ++i) {
        std::uint32_t consumed = 0;
        QCOMPARE(G729A_DecodeFrame(engine.get(), &consumed), 0);
        QCOMPARE(consumed, 11U);
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(pcm), sizeof pcm),
                 decode(other.get(), frames[static_cast<std::size_t>(i)]).pcm);
    }
    QCOMPARE(G729A_DecodeFrame(engine.get(), nullptr), -1);
    // Without their fields none of them counts.
    options.g729a.fields = usualOptions().g729a.fields;
    const Engine bare = makeEngine(options);
    QCOMPARE(bare->output, nullptr);
    QCOMPARE(bare->reader->buffer, nullptr);
    QCOMPARE(bare->frameHeader, 0U);
}

namespace {

std::vector<void*> lockContexts;
std::vector<void*> refillContexts;

} // namespace

void TestG729A::callbacksCountOnlyWithTheirFields()
{
    for (const std::uint32_t fields : {0U, 1U, 2U, 3U}) {
        lockContexts.clear();
        refillContexts.clear();
        SpeechEngineOptions options = usualOptions();
        options.g729a.fields |= fields;
        options.g729a.lockCallback = [](void* context) { lockContexts.push_back(context); };
        options.g729a.unlockCallback = options.g729a.lockCallback;
        options.g729a.refillCallback = [](void* context) {
            refillContexts.push_back(context);
            return 0;
        };
        options.g729a.lockContext = 17;
        options.g729a.refillContext = 19;
        const Engine engine = makeEngine(options);
        QCOMPARE(decode(engine.get(), speech().left(11)).status, 0);
        QCOMPARE(decode(engine.get(), speech().left(4)).status, -1);
        const bool locks = (fields & G729AOptionLocks) != 0;
        const bool refills = (fields & G729AOptionRefill) != 0;
        QVERIFY(lockContexts == std::vector<void*>(locks ? 2 : 0, reinterpret_cast<void*>(17)));
        QVERIFY(refillContexts == std::vector<void*>(refills ? 1 : 0, reinterpret_cast<void*>(19)));
    }
}

void TestG729A::refusedSetups()
{
    const auto result = [](auto change) {
        const Engine engine = makeEngine();
        std::uint8_t input[16] = {};
        alignas(4) std::int16_t pcm[G729AFrameSamples + 2] = {};
        SpeechFrameSetup setup{};
        setup.type = SpeechTypeWord::G729A;
        setup.fields = SpeechSetupInput | SpeechSetupOutput | SpeechSetupMode;
        setup.input = input;
        setup.inputSize = 11;
        setup.output = pcm;
        change(setup);
        return G729A_SetupFrame(engine.get(), &setup);
    };
    QCOMPARE(result([](SpeechFrameSetup&) {}), 0);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.type = 4; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.input = nullptr; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.inputSize = 0; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.output = nullptr; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) { s.output = static_cast<char*>(s.output) + 2; }), -1);
    QCOMPARE(result([](SpeechFrameSetup& s) {
                 s.fields = 0; // nothing of it is looked at
                 s.input = nullptr;
                 s.output = nullptr;
             }),
             0);
}

void TestG729A::nothingSetUp()
{
    const Engine engine = makeEngine();
    QCOMPARE(G729A_DecodeFrame(engine.get(), nullptr), -1);
}

void TestG729A::ring()
{
    SpeechEngineOptions options = usualOptions();
    options.g729a.ringMode = 1;
    options.g729a.ringSize = 64;
    options.g729a.fields |= G729AOptionFrameHeader;
    options.g729a.frameHeader = 1;
    const Engine engine = makeEngine(options);
    QVERIFY(engine);
    const auto frames = cut(speech());
    const Engine other = makeEngine();
    alignas(4) std::int16_t pcm[G729AFrameSamples] = {};
    SpeechFrameSetup setup{};
    setup.type = SpeechTypeWord::G729A;
    setup.fields = SpeechSetupOutput;
    setup.output = pcm;
    QCOMPARE(G729A_SetupFrame(engine.get(), &setup), 0);
    const auto push = [&engine](const QByteArray& frame) {
        return GB_PushBytes(engine->reader, reinterpret_cast<const std::uint8_t*>(frame.constData()), 11);
    };
    for (std::size_t i = 0; i < frames.size(); ++i) {
        QCOMPARE(push(frames[i]), 0);
        std::uint32_t consumed = 0;
        QCOMPARE(G729A_DecodeFrame(engine.get(), &consumed), 0);
        QCOMPARE(consumed, 11U);
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(pcm), sizeof pcm),
                 decode(other.get(), frames[i]).pcm);
    }
}

void TestG729A::withoutTypeByte()
{
    const Engine typed = makeEngine();
    const Engine bare = makeEngine();
    for (const QByteArray& frame : cut(speech().left(11 * 20))) {
        const Decoded decoded = decode(bare.get(), frame.mid(1), false);
        QCOMPARE(decoded.status, 0);
        QCOMPARE(decoded.consumed, 10U);
        QCOMPARE(decoded.pcm, decode(typed.get(), frame).pcm);
    }
}

void TestG729A::withoutPostFilter()
{
    // Deliberate: from sample 20 of the synthesis on, and beyond it into the excitation.
    SpeechEngineOptions options = usualOptions();
    options.g729a.postFilter = 0;
    const Engine engine = makeEngine(options);
    QCOMPARE(engine->postFilterState, nullptr);
    G729AState filter{};
    for (const QByteArray& frame : cut(speech().left(11 * 20))) {
        const Decoded decoded = decode(engine.get(), frame);
        alignas(4) std::int16_t expected[G729AFrameSamples];
        std::copy_n(engine->synth + 20, 60, expected);
        std::copy_n(engine->oldExc, 20, expected + 60);
        filter.output = expected;
        G729AHighPass::filterFrame(filter);
        QCOMPARE(decoded.pcm, QByteArray(reinterpret_cast<const char*>(expected), sizeof expected));
    }
}

QTEST_APPLESS_MAIN(TestG729A)
#include "tst_g729a.moc"
