// A ring gives the bits of a plain buffer, whatever way its bytes arrive.

#include "src/decoders/GBEngine.h"
#include "src/decoders/SpeechEngine.h"
#include "tests/decoders/G729AFrames.h"

#include <QTest>

#include <atomic>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

class TestGBRings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyValueAsFromABuffer_data();
    void everyValueAsFromABuffer();
    void bytesThatArriveJustInTime();
    void stuffedZeroThatArrivesLate();
    void skippingRefills();
    void skippingMoreThanThereIs();
    void looksRefill();
    void framesArriveOneByOne_data();
    void framesArriveOneByOne();
    void anotherThreadFills_data();
    void anotherThreadFills();
};

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t ringSize = 64;

/** Where a ring's bytes come from. */
struct Source
{
    const Bytes* bytes = nullptr;
    std::size_t next = 0;
    int step = 1; ///< Bytes that each refill brings.
    int calls = 0;
    GBEngine* ring = nullptr;

    /** Puts so many bytes into the ring, if they are there and fit. */
    void push(int count)
    {
        while (count-- > 0 && next < bytes->size() && GB_PushBytes(ring, bytes->data() + next, 1) == 0) {
            ++next;
        }
    }

    static std::int32_t refill(void* context)
    {
        auto* source = static_cast<Source*>(context);
        ++source->calls;
        source->push(source->step);
        return 0;
    }
};

struct Reader
{
    explicit Reader(std::uint32_t mode, Source* source = nullptr)
    {
        GBOptions options{};
        options.type = SpeechTypeWord::GB;
        options.mode = mode;
        options.ringSize = source != nullptr ? ringSize : 0;
        options.retries = 500;
        options.refillCallback = source != nullptr ? Source::refill : nullptr;
        options.refillContext = source;
        GB_Create(&engine, &options);
        if (source != nullptr) {
            source->ring = engine;
        }
    }
    ~Reader() { GB_Delete(&engine); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    GBEngine* engine = nullptr;
};

/** Random bytes, a third of which take part in stuffing. */
Bytes randomBytes(std::mt19937& random, std::size_t size)
{
    Bytes bytes(size);
    for (std::uint8_t& byte : bytes) {
        const unsigned kind = random() % 6;
        byte = kind == 0   ? std::uint8_t{0xFF}
               : kind == 1 ? std::uint8_t{0}
                           : static_cast<std::uint8_t>(random());
    }
    return bytes;
}

/** One operation, and what came of it. */
struct Outcome
{
    std::int32_t status;
    std::uint32_t value; ///< The wanted bits alone.
    std::uint32_t bitOffset;

    bool operator==(const Outcome& other) const
    {
        return status == other.status && value == other.value && bitOffset == other.bitOffset;
    }
};

Outcome run(GBEngine* engine, unsigned operation, std::uint32_t amount)
{
    std::uint32_t word = 0;
    std::int32_t status = 0;
    switch (operation) {
    case 0:
        status = GB_Align(engine);
        break;
    case 1:
        status = GB_SkipBits(engine, amount);
        break;
    case 2:
        status = GB_SkipBytes(engine, amount % 10);
        break;
    case 3:
        status = GB_Peek8(engine, &word);
        break;
    case 4:
        status = GB_Peek16(engine, &word);
        break;
    case 5:
        status = GB_Peek24(engine, &word);
        break;
    case 6:
        status = GB_Peek32(engine, &word);
        break;
    default:
        status = GB_ReadBits(engine, amount, &word);
        word = amount == 0 ? 0 : word >> (32U - amount);
    }
    return {status, word, engine->bitOffset};
}

} // namespace

void TestGBRings::everyValueAsFromABuffer_data()
{
    QTest::addColumn<unsigned>("bufferMode");
    QTest::addColumn<int>("refill"); // bytes that each refill brings; 0: they are pushed between the reads
    for (const unsigned mode : {1U, 3U}) {
        for (const int refill : {1, 2, 3, 5, 64, 0}) {
            QTest::addRow("mode %u, %d bytes a refill", mode + 1, refill) << mode << refill;
        }
    }
}

void TestGBRings::everyValueAsFromABuffer()
{
    QFETCH(unsigned, bufferMode);
    QFETCH(int, refill);
    for (unsigned seed = 1; seed <= 40; ++seed) {
        std::mt19937 random(seed);
        const Bytes bytes = randomBytes(random, 1000); // many times around the ring
        Bytes buffer = bytes;
        buffer.resize(bytes.size() + 3); // what a buffer's reader may look at
        Source source{&bytes, 0, refill, 0, nullptr};
        const Reader ring(bufferMode + 1, &source);
        const Reader plain(bufferMode);
        GB_SetBuffer(plain.engine, buffer.data(), static_cast<std::uint32_t>(bytes.size()));
        QCOMPARE(GB_Prime(ring.engine), GB_Prime(plain.engine));
        for (int step = 0; step < 5000; ++step) {
            const unsigned operation = random() % 14;
            const std::uint32_t amount = random() % 25;
            if (refill == 0) {
                source.push(step % 2 == 0 ? 64 : 40); // more than an operation takes
            }
            const Outcome expected = run(plain.engine, operation, amount);
            const Outcome outcome = run(ring.engine, operation, amount);
            if (!(outcome == expected)) {
                QFAIL(qPrintable(QStringLiteral("seed %1, step %2, operation %3 (%4): %5 %6, not %7 %8")
                                     .arg(seed)
                                     .arg(step)
                                     .arg(operation)
                                     .arg(amount)
                                     .arg(outcome.status)
                                     .arg(outcome.value, 0, 16)
                                     .arg(expected.status)
                                     .arg(expected.value, 0, 16)));
            }
            if (plain.engine->consumed == plain.engine->available) {
                break; // a buffer that is released as a whole starts anew
            }
            if (ring.engine->consumed > 20 || random() % 4 == 0) {
                GB_Release(ring.engine);
                GB_Release(plain.engine);
                QCOMPARE(GB_Prime(ring.engine), 0);
                QCOMPARE(GB_Prime(plain.engine), 0);
            }
            QVERIFY(step < 4999);
        }
    }
}

void TestGBRings::bytesThatArriveJustInTime()
{
    const Bytes bytes{0x12, 0x34, 0x56, 0x78, 0x9A};
    Source source{&bytes};
    const Reader ring(4, &source);
    QCOMPARE(GB_Prime(ring.engine), 0);
    QCOMPARE(run(ring.engine, 9, 3).value, 0U);
    QCOMPARE(run(ring.engine, 9, 13).value, 0x1234U);
    QCOMPARE(source.calls, 2);
    QCOMPARE(run(ring.engine, 9, 24).value, 0x56789AU);
    QCOMPARE(source.calls, 5);
    QCOMPARE(GB_Position(ring.engine), 5U);
    QCOMPARE(run(ring.engine, 9, 8).status, -1);
    QCOMPARE(source.calls, 505);
}

void TestGBRings::stuffedZeroThatArrivesLate()
{
    // Whether a zero is stuffed is only known once it is there, which may be after a release.
    const Bytes bytes{0xFF, 0x00, 0x00, 0x12, 0xFF, 0x01};
    for (const bool release : {false, true}) {
        Source source{&bytes};
        const Reader ring(2, &source);
        QCOMPARE(GB_Prime(ring.engine), 0);
        for (const unsigned expected : {0xFFU, 0x00U, 0x12U, 0xFFU, 0x01U}) {
            QCOMPARE(run(ring.engine, 9, 8).value, expected);
            if (release) {
                GB_Release(ring.engine);
                QCOMPARE(GB_Prime(ring.engine), 0);
            }
        }
    }
}

void TestGBRings::skippingRefills()
{
    const Bytes bytes{1, 2, 3, 4, 5, 6, 7, 8};
    for (const unsigned mode : {2U, 4U}) {
        Source source{&bytes};
        const Reader ring(mode, &source);
        QCOMPARE(GB_Prime(ring.engine), 0);
        QCOMPARE(GB_SkipBytes(ring.engine, 5), 0);
        QCOMPARE(source.calls, 5);
        QCOMPARE(GB_Position(ring.engine), 5U);
        QCOMPARE(run(ring.engine, 9, 8).value, 6U);
        QCOMPARE(GB_SkipBits(ring.engine, 12), 0);
        QCOMPARE(GB_Align(ring.engine), 0);
        QCOMPARE(GB_Position(ring.engine), 8U);
    }
}

void TestGBRings::skippingMoreThanThereIs()
{
    const Bytes bytes(200, 7);
    for (const unsigned mode : {2U, 4U}) {
        Source source{&bytes};
        const Reader ring(mode, &source);
        QCOMPARE(GB_Prime(ring.engine), 0);
        for (const std::uint32_t tooMany : {ringSize + 1, 0xFFFFFFFFU}) {
            QCOMPARE(GB_SkipBytes(ring.engine, tooMany), -1); // the ring never holds so many
            QCOMPARE(GB_Position(ring.engine), 0U);
        }
        QCOMPARE(GB_SkipBytes(ring.engine, ringSize), 0);
        QCOMPARE(GB_Position(ring.engine), ringSize);
    }
}

void TestGBRings::looksRefill()
{
    const Bytes bytes{0x12, 0x34, 0x56, 0x78};
    Source source{&bytes};
    const Reader ring(4, &source);
    QCOMPARE(run(ring.engine, 3, 0).value, 0x12U);
    QCOMPARE(run(ring.engine, 5, 0).value, 0x123456U);
    QCOMPARE(run(ring.engine, 6, 0).value, 0x12345678U);
    QCOMPARE(GB_Position(ring.engine), 0U);
    QCOMPARE(source.calls, 4);
}

namespace {

Source* speechSource = nullptr; // the engine's options have no room for a pointer

} // namespace

void TestGBRings::framesArriveOneByOne_data()
{
    QTest::addColumn<int>("step");
    QTest::newRow("a frame a refill") << 11;
    QTest::newRow("a byte a refill") << 1;
    QTest::newRow("a frame pushed before each decode") << 0;
}

void TestGBRings::framesArriveOneByOne()
{
    using namespace G729AFrames;
    QFETCH(int, step);
    const auto frames = cut(speech());
    QVERIFY(frames.size() > 30);
    const QByteArray stream = speech();
    const Bytes bytes(stream.begin(), stream.end());
    Source source{&bytes, 0, step, 0, nullptr};
    speechSource = &source;
    SpeechEngineOptions options = usualOptions();
    options.g729a.fields |= G729AOptionFrameHeader | G729AOptionRefill;
    options.g729a.frameHeader = 1;
    options.g729a.ringMode = 1;
    options.g729a.ringSize = ringSize;
    options.g729a.refillCallback = [](void*) { return Source::refill(speechSource); };
    const Engine engine = makeEngine(options);
    source.ring = engine->reader;
    alignas(4) std::int16_t pcm[G729AFrameSamples] = {};
    SpeechFrameSetup setup{};
    setup.type = SpeechTypeWord::G729A;
    setup.fields = SpeechSetupOutput;
    setup.output = pcm;
    QCOMPARE(G729A_SetupFrame(engine.get(), &setup), 0);
    const Engine other = makeEngine();
    for (const QByteArray& frame : frames) {
        source.push(step == 0 ? frame.size() : 0);
        std::uint32_t consumed = 0;
        QCOMPARE(G729A_DecodeFrame(engine.get(), &consumed), 0);
        QCOMPARE(static_cast<int>(consumed), frame.size());
        QCOMPARE(QByteArray(reinterpret_cast<const char*>(pcm), sizeof pcm), decode(other.get(), frame).pcm);
    }
}

void TestGBRings::anotherThreadFills_data()
{
    QTest::addColumn<unsigned>("mode");
    QTest::newRow("stuffed") << 2U;
    QTest::newRow("plain") << 4U;
}

void TestGBRings::anotherThreadFills()
{
    QFETCH(unsigned, mode);
    std::mutex mutex;
    GBOptions options{};
    options.type = SpeechTypeWord::GB;
    options.mode = mode;
    options.ringSize = ringSize;
    options.retries = 0xFFFFFFFF; // the other thread needs its time
    options.lockContext = &mutex;
    options.lockCallback = [](void* context) { static_cast<std::mutex*>(context)->lock(); };
    options.unlockCallback = [](void* context) { static_cast<std::mutex*>(context)->unlock(); };
    options.refillCallback = [](void* /*context*/) {
        std::this_thread::yield();
        return 0;
    };
    GBEngine* ring = nullptr;
    QCOMPARE(GB_Create(&ring, &options), 0);

    constexpr unsigned count = 200000;
    const auto valueOf = [](unsigned index) { return static_cast<std::uint8_t>(index % 251 + 1); }; // never 0
    std::atomic<bool> stop{false};
    std::thread filler([&] {
        for (unsigned next = 0; next < count && !stop;) {
            const std::uint8_t bytes[3] = {valueOf(next), valueOf(next + 1), valueOf(next + 2)};
            const unsigned size = next % 3 + 1;
            if (GB_PushBytes(ring, bytes, size) == 0) {
                next += size;
            } else {
                std::this_thread::yield();
            }
        }
    });
    unsigned wrong = 0;
    GB_Prime(ring);
    for (unsigned i = 0; i < count && wrong == 0; ++i) {
        std::uint32_t word = 0;
        wrong += GB_ReadBits(ring, 8, &word) != 0 || word >> 24U != valueOf(i) ? 1 : 0;
        GB_Release(ring);
    }
    stop = true;
    filler.join();
    GB_Delete(&ring);
    QCOMPARE(wrong, 0U);
}

QTEST_APPLESS_MAIN(TestGBRings)
#include "tst_gbrings.moc"
