// What the playback path asks of FFmpeg's libraries, with calls that are replaced: they wait, fail, and note
// what they were given.

#include "src/decoders/DecoderContext.h"
#include "src/decoders/DecoderFactories.h"
#include "src/decoders/PcmBlock.h"
#include "src/playback/AudioDevice.h"
#include "src/playback/SwrConverter.h"
#include "tests/decoders/AacStream.h"
#include "tests/support/MediaPackets.h"

#include <QTest>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <dlfcn.h>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libswresample/swresample.h>
}

namespace {

template<class Function>
Function original(const char* name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/** Watches how many threads are inside the opening or the closing of a codec. */
struct Gate
{
    /** Waits a while for another one to come in, too, if a test wants to know. */
    void pass()
    {
        std::unique_lock<std::mutex> lock(mutex);
        ++inside;
        most = std::max(most, inside);
        changed.notify_all();
        if (watching) {
            changed.wait_for(lock, std::chrono::milliseconds(100), [this] { return inside > 1; });
        }
        --inside;
    }

    std::mutex mutex;
    std::condition_variable changed;
    bool watching = false;
    int inside = 0;
    int most = 0;
};

Gate gate;

bool openingFails = false;
int failingConversion = 0; ///< Which conversion from now on fails; 0 for none.
int resamplers = 0;        ///< Made or made anew.
int outCount = -1;         ///< Of the last conversion.
std::int64_t delay = -1;   ///< To report; -1 for the real one.

} // namespace

extern "C" {

int avcodec_open2(AVCodecContext* avctx, const AVCodec* codec, AVDictionary** options)
{
    gate.pass();
    if (openingFails) {
        return AVERROR(ENOMEM);
    }
    return original<decltype(&avcodec_open2)>("avcodec_open2")(avctx, codec, options);
}

void avcodec_free_context(AVCodecContext** avctx)
{
    gate.pass();
    original<decltype(&avcodec_free_context)>("avcodec_free_context")(avctx);
}

int swr_init(SwrContext* s)
{
    ++resamplers;
    return original<decltype(&swr_init)>("swr_init")(s);
}

int swr_convert(SwrContext* s, std::uint8_t** out, int out_count, const std::uint8_t** in, int in_count)
{
    outCount = out_count;
    if (failingConversion > 0 && --failingConversion == 0) {
        return AVERROR(EINVAL);
    }
    return original<decltype(&swr_convert)>("swr_convert")(s, out, out_count, in, in_count);
}

std::int64_t swr_get_delay(SwrContext* s, std::int64_t base)
{
    return delay >= 0 ? delay : original<decltype(&swr_get_delay)>("swr_get_delay")(s, base);
}
}

class TestFFmpegCalls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void openingAndClosingOneAtATime_data();
    void openingAndClosingOneAtATime();
    void failedOpeningIsTriedAgain();
    void failedConversionIsSkipped();
    void failedConversionOfAFrame();
    void resamplerIsBuiltOnce();
    void resamplerFollowsTheStream();
    void outputCountCoversTheDelay_data();
    void outputCountCoversTheDelay();
};

namespace {

struct Releaser
{
    void operator()(DecoderContext* decoder) const { decoder->Release(); }
};
using Decoder = std::unique_ptr<DecoderContext, Releaser>;

constexpr int S16 = 1;

} // namespace

void TestFFmpegCalls::init()
{
    openingFails = false;
    failingConversion = 0;
    delay = -1;
}

void TestFFmpegCalls::openingAndClosingOneAtATime_data()
{
    QTest::addColumn<bool>("closing");
    QTest::newRow("two openings") << false;
    QTest::newRow("an opening and a closing") << true;
}

void TestFFmpegCalls::openingAndClosingOneAtATime()
{
    QFETCH(bool, closing);
    Decoder old(CreateDecoder_MuLaw(8000, 1));
    QVERIFY(old);
    gate.most = 0;
    gate.watching = true;
    Decoder made[2];
    std::thread opener([&made] { made[0].reset(CreateDecoder_MuLaw(8000, 1)); });
    if (closing) {
        old.reset();
    } else {
        made[1].reset(CreateDecoder_AAC(16000, 1));
    }
    opener.join();
    gate.watching = false;
    QCOMPARE(gate.most, 1);
    QVERIFY(made[0]);
}

void TestFFmpegCalls::failedOpeningIsTriedAgain()
{
    DecoderSlot slot;
    std::vector<std::uint8_t> pcm(1280);
    std::uint32_t size = 1280;
    const auto packet = MediaPackets::make(QByteArray(640, '\x10'));
    openingFails = true;
    QCOMPARE(slot.Decode(pcm.data(), &size, *packet), -1);
    QCOMPARE(slot.Decode(pcm.data(), &size, *packet), -1);
    openingFails = false;
    QCOMPARE(slot.Decode(pcm.data(), &size, *packet), 0);
}

void TestFFmpegCalls::failedConversionIsSkipped()
{
    // A packet whose conversion fails gives nothing, not silence: the next one is heard at once.
    SwrConverter converter;
    QCOMPARE(converter.Setup(2, 8000, 1, S16, 8000, 1), 1); // widens the samples alone
    struct Device : AudioDevice
    {
        using AudioDevice::AudioDevice;
        using AudioDevice::readData;
    };
    const auto first = MediaPackets::make(QByteArray(640, '\x10'));
    Device device(std::move(converter), first.get());
    device.Push(first, true);
    device.Push(MediaPackets::make(QByteArray(640, '\x20')), true);
    constexpr std::int32_t expected = -7932 * 65536; // of the byte 0x20
    std::int32_t heard[4] = {};
    failingConversion = 2; // the decoder has one of its own
    QCOMPARE(device.readData(reinterpret_cast<char*>(heard), 16), qint64{16});
    QVERIFY(std::all_of(heard, heard + 4, [](std::int32_t sample) { return sample == expected; }));

    SwrConverter failing;
    QCOMPARE(failing.Setup(2, 8000, 1, S16, 8000, 1), 1);
    std::vector<std::uint8_t> block(pcmBlockSize);
    failingConversion = 1;
    QCOMPARE(failing.ConvertInPlace(block.data(), 640), 0);
}

void TestFFmpegCalls::failedConversionOfAFrame()
{
    const Decoder decoder(CreateDecoder_MuLaw(8000, 1));
    std::vector<std::uint8_t> pcm(1280);
    const QByteArray bytes(640, '\x20');
    const EncodedChunk chunk{reinterpret_cast<const std::uint8_t*>(bytes.constData()), 640, 1};
    std::uint32_t size = 1280;
    failingConversion = 1;
    QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), -1);
    QCOMPARE(size, 1280U);
    QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), 0);
    QCOMPARE(size, 1280U);
}

void TestFFmpegCalls::resamplerIsBuiltOnce()
{
    resamplers = 0;
    const Decoder decoder(CreateDecoder_MuLaw(8000, 2));
    std::vector<std::uint8_t> pcm(1280);
    const QByteArray bytes(640, '\x20');
    const EncodedChunk chunk{reinterpret_cast<const std::uint8_t*>(bytes.constData()), 640, 1};
    for (int i = 0; i < 5; ++i) {
        std::uint32_t size = 1280;
        QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), 0);
    }
    QCOMPARE(resamplers, 1);
}

void TestFFmpegCalls::resamplerFollowsTheStream()
{
    // A stream may turn from one channel into two, and back.
    resamplers = 0;
    const Decoder decoder(CreateDecoder_AAC(16000, 1));
    std::vector<std::uint8_t> pcm(pcmBlockSize);
    for (const unsigned channels : {1U, 1U, 2U, 2U, 1U}) {
        const QByteArray frame = AacStream::silentFrame(channels);
        const EncodedChunk chunk{reinterpret_cast<const std::uint8_t*>(frame.constData()),
                                 static_cast<std::uint32_t>(frame.size()), 1};
        std::uint32_t size = pcmBlockSize;
        QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), 0);
        QCOMPARE(size, channels * 2048U);
    }
    QCOMPARE(resamplers, 3);
}

void TestFFmpegCalls::outputCountCoversTheDelay_data()
{
    QTest::addColumn<int>("outRate");
    QTest::addColumn<int>("inRate");
    QTest::addColumn<int>("waiting"); // samples of input that the library still holds
    QTest::addColumn<int>("expected");
    QTest::newRow("six times") << 48000 << 8000 << 0 << 3840;
    QTest::newRow("six times, and what waits") << 48000 << 8000 << 100 << 4440;
    QTest::newRow("a fraction counts as a whole") << 44100 << 8000 << 0 << 3528;
    QTest::newRow("a fraction of what waits, too") << 44100 << 8000 << 1 << 3534; // 3533.5
    QTest::newRow("down, rounded up") << 8000 << 44100 << 0 << 117;               // 116.1
    QTest::newRow("down, with what waits") << 8000 << 44100 << 441 << 197;        // 196.1
}

void TestFFmpegCalls::outputCountCoversTheDelay()
{
    QFETCH(int, outRate);
    QFETCH(int, inRate);
    QFETCH(int, waiting);
    QFETCH(int, expected);
    SwrConverter converter;
    QCOMPARE(converter.Setup(S16, outRate, 1, S16, inRate, 1), 1);
    std::vector<std::uint8_t> block(pcmBlockSize);
    delay = waiting;
    QVERIFY(converter.ConvertInPlace(block.data(), 1280) >= 0);
    QCOMPARE(outCount, expected);
}

QTEST_GUILESS_MAIN(TestFFmpegCalls)
#include "tst_ffmpegcalls.moc"
