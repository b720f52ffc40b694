#include "src/decoders/GBEngine.h"
#include "src/decoders/SpeechEngine.h"

#include <QTest>

#include <algorithm>
#include <memory>
#include <vector>

class TestGBEngine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusedOptions();
    void memory();
    void readsFromTheTop();
    void readMovesTheOffsetAlsoWhenItFails();
    void looksAtThreeBytesBehind_data();
    void looksAtThreeBytesBehind();
    void primesFromTheStart_data();
    void primesFromTheStart();
    void guard();
    void locksAndRefills();
    void offsetOutlivesTheBuffer();
    void alignsAndSkips();
    void releasesWhatWasTaken();
    void looksAhead();
    void stuffedBytesAreSkipped();
    void ringIsRefilled();
    void emptyRingGivesUp();
    void ringWraps();
    void stuffedRing();
    void unusedOperations();
};

namespace {

struct Reader
{
    explicit Reader(std::uint32_t mode, std::uint32_t ringSize = 0, GBOptions options = {})
    {
        options.type = 5;
        options.mode = mode;
        options.ringSize = ringSize;
        options.retries = 500;
        status = GB_Create(&engine, &options);
    }
    ~Reader() { GB_Delete(&engine); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    void set(const std::vector<std::uint8_t>& input)
    {
        bytes = input;
        bytes.resize(input.size() + 8); // what the window looks at
        GB_SetBuffer(engine, bytes.data(), static_cast<std::uint32_t>(input.size()));
        GB_Prime(engine);
    }

    /** The value of the next bits; -1 when they can't be read. */
    int bits(std::uint32_t count)
    {
        std::uint32_t word = 0;
        const int read = GB_ReadBits(engine, count, &word);
        return read < 0 ? -1 : static_cast<int>(count == 0 ? 0 : word >> (32U - count));
    }

    GBEngine* engine = nullptr;
    int status = 0;
    std::vector<std::uint8_t> bytes;
};

} // namespace

void TestGBEngine::refusedOptions()
{
    for (const std::uint32_t mode : {0U, 5U, 0xFFFFFFFFU}) {
        QCOMPARE(Reader(mode).status, -1);
    }
    QCOMPARE(Reader(3, 12).status, -1); // no power of two
    QCOMPARE(Reader(4, 0).status, -1);  // a ring of nothing
    QCOMPARE(Reader(4, 64).status, 0);
    GBOptions options{};
    options.mode = 3;
    GBEngine* engine = nullptr;
    for (const std::uint32_t type : {0U, 4U, 0x0105U}) { // bits 8 to 15 count here
        options.type = type;
        QCOMPARE(GB_Create(&engine, &options), -1);
        QCOMPARE(engine, nullptr);
    }
    options.type = 0xFF000005; // the highest do not
    QCOMPARE(GB_Create(&engine, &options), 0);
    QCOMPARE(GB_Delete(&engine), 0);
    QCOMPARE(GB_Delete(&engine), -1);
}

void TestGBEngine::memory()
{
    QCOMPARE(GB_MemorySize(3, 0), 195U);
    QCOMPARE(GB_MemorySize(1, 64), 195U);
    QCOMPARE(GB_MemorySize(4, 64), 259U);
    // A given block may start anywhere; the reader moves up to a multiple of 4.
    for (const std::uint32_t mode : {3U, 4U}) {
        for (std::uint32_t offset = 0; offset < 8; ++offset) {
            const std::uint32_t ringSize = mode == 4 ? 64 : 0;
            const std::uint32_t size = GB_MemorySize(mode, ringSize);
            std::vector<std::uint8_t> block(offset + size + 8, 0x5A);
            GBOptions options{};
            options.type = 5;
            options.mode = mode;
            options.ringSize = ringSize;
            options.memory = block.data() + offset;
            GBEngine* engine = nullptr;
            QCOMPARE(GB_Create(&engine, &options), 0);
            const std::uint32_t moved = (offset + 3) / 4 * 4;
            QCOMPARE(static_cast<void*>(engine), static_cast<void*>(block.data() + moved));
            QCOMPARE(engine->external, 1U);
            if (mode == 4) {
                QCOMPARE(engine->buffer, block.data() + moved + 192);
                const std::vector<std::uint8_t> bytes(64, 0xA5);
                QCOMPARE(GB_PushBytes(engine, bytes.data(), 64), 0);
                QCOMPARE(GB_SkipBytes(engine, 63), 0);
                std::uint32_t word = 0;
                QCOMPARE(GB_ReadBits(engine, 8, &word), 0);
                QCOMPARE(word >> 24U, 0xA5U);
            }
            QCOMPARE(GB_Delete(&engine), 0);
            QVERIFY(std::all_of(block.begin(), block.begin() + offset, [](int b) { return b == 0x5A; }));
            QVERIFY(std::all_of(block.end() - 8, block.end(), [](int b) { return b == 0x5A; }));
        }
    }
}

void TestGBEngine::readsFromTheTop()
{
    Reader reader(3);
    reader.set({0xA5, 0x3C, 0xFF, 0x01, 0x80, 0x7E});
    QCOMPARE(reader.bits(1), 1);
    QCOMPARE(reader.bits(3), 2);
    QCOMPARE(reader.bits(0), 0);
    QCOMPARE(reader.bits(8), 0x53);
    QCOMPARE(reader.bits(24), 0xCFF018);
    QCOMPARE(reader.bits(12), 0x07E);
    QCOMPARE(GB_Position(reader.engine), 6U);
    QCOMPARE(reader.bits(8), -1);
    std::uint32_t word = 0;
    QCOMPARE(GB_ReadBits(reader.engine, 25, &word), -1); // more than a read may take
}

void TestGBEngine::readMovesTheOffsetAlsoWhenItFails()
{
    Reader reader(3);
    reader.set({0xA5});
    QCOMPARE(reader.bits(3), 5);
    QCOMPARE(reader.bits(16), -1);
    QCOMPARE(reader.engine->bitOffset, 3U); // (3 + 16) & 7
    QCOMPARE(GB_Position(reader.engine), 0U);
    QCOMPARE(reader.bits(5), 5);
    // After the last byte up to seven bits of the one behind can be read.
    QCOMPARE(reader.bits(7), 0);
    QCOMPARE(reader.bits(1), -1);
}

void TestGBEngine::looksAtThreeBytesBehind_data()
{
    QTest::addColumn<unsigned>("mode");
    QTest::newRow("1") << 1U;
    QTest::newRow("3") << 3U;
}

void TestGBEngine::looksAtThreeBytesBehind()
{
    // Exactly three readable bytes behind the data, of which the address sanitizer watches the end.
    QFETCH(unsigned, mode);
    for (std::uint32_t size = 0; size < 6; ++size) {
        std::vector<std::uint8_t> bytes(size + 3, 0xA1);
        Reader reader(mode);
        QCOMPARE(GB_SetBuffer(reader.engine, bytes.data(), size), 0);
        QCOMPARE(GB_Prime(reader.engine), 0);
        for (std::uint32_t i = 0; i < size; ++i) {
            QCOMPARE(reader.engine->window, 0xA1A1A1A1U);
            QCOMPARE(reader.bits(8), 0xA1);
        }
        QCOMPARE(reader.engine->window, 0xA1A1A100U); // the byte behind them is not looked at
        QCOMPARE(reader.bits(7), 0x50);
        QCOMPARE(reader.bits(1), -1);
        QCOMPARE(GB_SkipBytes(reader.engine, 0), 0);
        QCOMPARE(reader.engine->window, 0xA1A1A100U);
    }
    // What lies behind the data decides nothing: 0xFF 0x00 there is no stuffing.
    std::vector<std::uint8_t> bytes{0x11, 0xFF, 0x00, 0xFF, 0x00};
    Reader reader(mode);
    GB_SetBuffer(reader.engine, bytes.data(), 2);
    GB_Prime(reader.engine);
    QCOMPARE(reader.bits(8), 0x11);
    QCOMPARE(reader.bits(8), 0xFF);
    QCOMPARE(GB_Position(reader.engine), 2U);
}

void TestGBEngine::primesFromTheStart_data()
{
    looksAtThreeBytesBehind_data();
}

void TestGBEngine::primesFromTheStart()
{
    // Priming without a new buffer starts over at the first four bytes, and there is nothing to take.
    QFETCH(unsigned, mode);
    Reader reader(mode);
    std::vector<std::uint8_t> bytes{1, 2, 3, 4, 5, 6, 7, 8, 9};
    for (int round = 0; round < 2; ++round) {
        GB_SetBuffer(reader.engine, bytes.data(), 6);
        QCOMPARE(GB_Prime(reader.engine), 0);
        QCOMPARE(reader.engine->window, 0x01020304U);
        QCOMPARE(reader.engine->readIndex, 4U);
        QCOMPARE(GB_SkipBytes(reader.engine, 6), 0);
        GB_Release(reader.engine);
        for (int again = 0; again < 3; ++again) {
            QCOMPARE(GB_Prime(reader.engine), 0);
            QCOMPARE(reader.engine->window, 0x01020304U);
            QCOMPARE(reader.engine->readIndex, 4U);
            QCOMPARE(reader.bits(8), -1);
            QCOMPARE(GB_SkipBytes(reader.engine, 1), -1);
            GB_Release(reader.engine);
        }
    }
}

void TestGBEngine::guard()
{
    Reader reader(3);
    QCOMPARE(reader.engine->guard, -1);
    QCOMPARE(reader.engine->needsPrime, 1U);
    reader.set({1, 2, 3});
    QCOMPARE(reader.engine->guard, 0);
    QCOMPARE(reader.engine->needsPrime, 0U);
    reader.engine->guard = 7;
    reader.engine->needsPrime = 1;
    GB_Prime(reader.engine);
    QCOMPARE(reader.engine->guard, 7); // only -1 is replaced
}

namespace {

struct Calls
{
    QByteArray log;
    static void lock(void* calls) { static_cast<Calls*>(calls)->log += 'l'; }
    static void unlock(void* calls) { static_cast<Calls*>(calls)->log += 'u'; }
    static std::int32_t refill(void* calls)
    {
        static_cast<Calls*>(calls)->log += 'r';
        return 0;
    }
};

} // namespace

void TestGBEngine::locksAndRefills()
{
    for (const std::uint32_t mode : {1U, 3U}) {
        Calls calls;
        Calls refills;
        GBOptions options{};
        options.lockContext = &calls;
        options.lockCallback = Calls::lock;
        options.unlockCallback = Calls::unlock;
        options.refillContext = &refills;
        options.refillCallback = Calls::refill;
        Reader reader(mode, 0, options);
        reader.set({1, 2, 3});
        reader.bits(16);
        QCOMPARE(calls.log + refills.log, QByteArray());
        GB_Release(reader.engine);
        QCOMPARE(calls.log, QByteArray("lu"));
        QCOMPARE(reader.bits(16), -1);
        QCOMPARE(refills.log, QByteArray("r")); // once; whether it helps shows at the next read
        QCOMPARE(GB_SkipBytes(reader.engine, 9), -1);
        QCOMPARE(refills.log, QByteArray("r")); // a buffer's skip does not ask
    }
    Calls calls;
    GBOptions options{};
    options.lockContext = &calls;
    options.lockCallback = Calls::lock;
    options.unlockCallback = Calls::unlock;
    Reader ring(4, 64, options);
    const std::uint8_t byte = 1;
    GB_PushBytes(ring.engine, &byte, 1);
    QCOMPARE(calls.log, QByteArray("lu"));
    GB_Release(ring.engine);
    QCOMPARE(calls.log, QByteArray("lulu"));
}

void TestGBEngine::offsetOutlivesTheBuffer()
{
    Reader reader(3);
    reader.set({0xFF});
    QCOMPARE(reader.bits(3), 7);
    reader.set({0x10, 0x00});
    QCOMPARE(reader.bits(1), 1); // deliberate: the fourth bit of the new buffer
}

void TestGBEngine::alignsAndSkips()
{
    Reader reader(3);
    reader.set({1, 2, 3, 4, 5, 6, 7, 8});
    QCOMPARE(GB_Align(reader.engine), 0);
    QCOMPARE(GB_Position(reader.engine), 0U);
    reader.bits(3);
    QCOMPARE(GB_Align(reader.engine), 0);
    QCOMPARE(GB_Position(reader.engine), 1U);
    QCOMPARE(reader.bits(8), 2);
    QCOMPARE(GB_SkipBytes(reader.engine, 3), 0);
    QCOMPARE(reader.bits(8), 6);
    QCOMPARE(GB_SkipBits(reader.engine, 12), 0);
    QCOMPARE(reader.bits(4), 8);
    QCOMPARE(GB_SkipBytes(reader.engine, 1), -1);
    QCOMPARE(GB_SkipBytes(reader.engine, 0xFFFFFFFF), -1);
    QCOMPARE(GB_SkipBytes(reader.engine, 0), 0);
    QCOMPARE(GB_SkipBits(reader.engine, 25), -1);
    Reader empty(3);
    empty.set({});
    empty.bits(2);
    QCOMPARE(GB_Align(empty.engine), -1);
}

void TestGBEngine::releasesWhatWasTaken()
{
    Reader reader(3);
    reader.set({1, 2, 3});
    reader.bits(8);
    GB_Release(reader.engine);
    QCOMPARE(GB_Position(reader.engine), 0U);
    QCOMPARE(reader.engine->available, 2U);
    QCOMPARE(reader.engine->needsPrime, 0U);
    reader.bits(16);
    GB_Release(reader.engine);
    QCOMPARE(reader.engine->available, 0U);
    QCOMPARE(reader.engine->needsPrime, 1U);
    QCOMPARE(reader.engine->guard, -1);
}

void TestGBEngine::looksAhead()
{
    Reader reader(3);
    reader.set({0x12, 0x34, 0x56, 0x78});
    std::uint32_t word = 0;
    QCOMPARE(GB_Peek8(reader.engine, &word), 0);
    QCOMPARE(word, 0x12U);
    GB_Peek16(reader.engine, &word);
    QCOMPARE(word, 0x1234U);
    GB_Peek24(reader.engine, &word);
    QCOMPARE(word, 0x123456U);
    GB_Peek32(reader.engine, &word);
    QCOMPARE(word, 0x12345678U);
    reader.bits(4);
    GB_Peek16(reader.engine, &word);
    QCOMPARE(word, 0x2345U);
    QCOMPARE(GB_Position(reader.engine), 0U);
}

void TestGBEngine::stuffedBytesAreSkipped()
{
    Reader reader(1);
    reader.set({0x11, 0xFF, 0x00, 0x22, 0xFF, 0x33, 0x44, 0xFF, 0x00, 0x55, 0x66, 0x77});
    for (const int expected : {0x11, 0xFF, 0x22, 0xFF, 0x33, 0x44, 0xFF, 0x55}) {
        QCOMPARE(reader.bits(8), expected);
    }
}

namespace {

/** Feeds a ring with the numbers that follow each other. */
struct Feeder
{
    GBEngine* engine = nullptr;
    int next = 0;
    int calls = 0;
    int step = 3;

    static std::int32_t refill(void* context)
    {
        auto* feeder = static_cast<Feeder*>(context);
        ++feeder->calls;
        for (int i = 0; i < feeder->step; ++i) {
            const auto byte = static_cast<std::uint8_t>(feeder->next);
            if (GB_PushBytes(feeder->engine, &byte, 1) < 0) {
                return -1;
            }
            ++feeder->next;
        }
        return 0;
    }
};

GBOptions fedBy(Feeder& feeder)
{
    GBOptions options{};
    options.refillCallback = Feeder::refill;
    options.refillContext = &feeder;
    return options;
}

} // namespace

void TestGBEngine::ringIsRefilled()
{
    Feeder feeder;
    Reader reader(4, 64, fedBy(feeder));
    feeder.engine = reader.engine;
    const std::uint8_t first[] = {0xAA, 0xBB, 0xCC, 0xDD, 0xEE};
    QCOMPARE(GB_PushBytes(reader.engine, first, 5), 0);
    QCOMPARE(GB_Prime(reader.engine), 0);
    for (const int expected : {0xAA, 0xBB, 0xCC, 0xDD, 0xEE}) {
        QCOMPARE(reader.bits(8), expected);
    }
    QCOMPARE(feeder.calls, 0);
    QCOMPARE(reader.bits(8), 0); // not there yet: refill brings 0, 1 and 2
    QCOMPARE(feeder.calls, 1);
    QCOMPARE(reader.bits(24), 0x010203);
    QCOMPARE(feeder.calls, 2);
}

void TestGBEngine::emptyRingGivesUp()
{
    Feeder feeder;
    feeder.step = 0;
    Reader reader(4, 64, fedBy(feeder));
    feeder.engine = reader.engine;
    QCOMPARE(GB_Prime(reader.engine), 0);
    QCOMPARE(reader.bits(8), -1);
    QCOMPARE(feeder.calls, 500); // as often as the options say, then no more
}

void TestGBEngine::ringWraps()
{
    Reader reader(4, 64);
    std::uint8_t next = 0;
    int expected = 0;
    for (int round = 0; round < 20; ++round) {
        for (int i = 0; i < 40; ++i, ++next) {
            QCOMPARE(GB_PushBytes(reader.engine, &next, 1), 0);
        }
        QCOMPARE(GB_Prime(reader.engine), 0);
        for (int i = 0; i < 40; ++i, ++expected) {
            QCOMPARE(reader.bits(8), expected & 0xFF);
        }
        GB_Release(reader.engine);
    }
    std::vector<std::uint8_t> tooMuch(65);
    QCOMPARE(GB_PushBytes(reader.engine, tooMuch.data(), 65), -1);
    QCOMPARE(GB_PushBytes(reader.engine, tooMuch.data(), 64), 0);
    QCOMPARE(GB_PushBytes(reader.engine, tooMuch.data(), 1), -1);
}

void TestGBEngine::stuffedRing()
{
    Reader reader(2, 64);
    const std::uint8_t bytes[] = {0x11, 0xFF, 0x00, 0x22, 0x33, 0x44, 0x55, 0x66};
    QCOMPARE(GB_PushBytes(reader.engine, bytes, 8), 0);
    QCOMPARE(GB_Prime(reader.engine), 0);
    for (const int expected : {0x11, 0xFF, 0x22, 0x33}) {
        QCOMPARE(reader.bits(8), expected);
    }
}

void TestGBEngine::unusedOperations()
{
    Reader buffer(3);
    const std::uint8_t byte = 1;
    QCOMPARE(GB_PushBytes(buffer.engine, &byte, 1), -1);
    Reader ring(4, 64);
    std::uint8_t bytes[8] = {};
    QCOMPARE(GB_SetBuffer(ring.engine, bytes, 8), -1);
}

QTEST_APPLESS_MAIN(TestGBEngine)
#include "tst_gbengine.moc"
