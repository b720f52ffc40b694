// The decoder of libavcodec behind its interface: frames, pictures and the pool.

#include "src/decoders/DecoderContext.h"
#include "src/decoders/DecoderFactories.h"
#include "src/decoders/DecoderIsolated_FFmpeg.h"
#include "src/decoders/Frame.h"
#include "src/decoders/PcmBlock.h"
#include "tests/decoders/AacStream.h"
#include "tests/decoders/PictureStream.h"

#include <QElapsedTimer>
#include <QTest>

#include <cstring>
#include <set>
#include <thread>

using FramePool = QRNL::SDK::Utility::FrameQueue<Frame>;

class TestFFmpegDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void poolRecyclesFrames();
    void poolOutlivesItsHandle();
    void framesReturnFromOtherThreads();
    void unknownCodecGivesNull();
    void everyChannelCountOfG711_data();
    void everyChannelCountOfG711();
    void nullChunkDoesNotEndTheStream();
    void absurdSizeIsRefused();
    void packetOfManyFramesIsCutShort();
    void framesThatDidNotFitStay();
    void heldFramesAreBounded_data();
    void heldFramesAreBounded();
    void pictures_data();
    void pictures();
    void pictureOfAnotherSize();
    void noPictureYet();
    void queryFrame();
    void queryFrameVersions();
    void heldFrameOutlivesTheDecoder();
    void openingAndReleasingInParallel();
    void slotsOfTheTable();
};

namespace {

struct Releaser
{
    void operator()(DecoderContext* decoder) const { decoder->Release(); }
};
using Decoder = std::unique_ptr<DecoderContext, Releaser>;

EncodedChunk chunkOf(const QByteArray& bytes)
{
    return {reinterpret_cast<const std::uint8_t*>(bytes.constData()),
            static_cast<std::uint32_t>(bytes.size()), 1};
}

} // namespace

void TestFFmpegDecoder::poolRecyclesFrames()
{
    const FramePool pool;
    Frame* first = pool.acquire();
    QCOMPARE(first->references.load(), 1U);
    QVERIFY(first->owner);
    FramePool::addReference(first);
    FramePool::release(first);
    Frame* second = pool.acquire();
    QVERIFY(second != first); // the first is still held
    FramePool::release(first);
    QVERIFY(!first->owner);
    QCOMPARE(pool.acquire(), first);
    FramePool::release(first);
    FramePool::release(second);
}

void TestFFmpegDecoder::poolOutlivesItsHandle()
{
    Frame* held = nullptr;
    {
        const FramePool pool;
        held = pool.acquire();
        FramePool::release(pool.acquire());
    }
    QCOMPARE(held->references.load(), 1U);
    FramePool::release(held); // ends the pool and both frames; the leak checker watches
}

void TestFFmpegDecoder::framesReturnFromOtherThreads()
{
    const FramePool pool;
    std::set<Frame*> seen;
    for (int round = 0; round < 200; ++round) {
        std::vector<Frame*> frames;
        for (int i = 0; i < 8; ++i) {
            frames.push_back(pool.acquire());
            seen.insert(frames.back());
        }
        std::thread other([&frames] {
            for (int i = 0; i < 4; ++i) {
                FramePool::release(frames[static_cast<std::size_t>(i)]);
            }
        });
        for (int i = 4; i < 8; ++i) {
            FramePool::release(frames[static_cast<std::size_t>(i)]);
        }
        other.join();
    }
    QCOMPARE(seen.size(), std::size_t{8});
}

void TestFFmpegDecoder::unknownCodecGivesNull()
{
    QCOMPARE(CreateDecoderFFmpeg(AV_CODEC_ID_NONE, 8000, 1, 0), nullptr);
    QCOMPARE(CreateDecoderFFmpeg(static_cast<AVCodecID>(0x7FFFFFFF), 8000, 1, 0), nullptr);
}

void TestFFmpegDecoder::everyChannelCountOfG711_data()
{
    QTest::addColumn<int>("channels");
    for (int channels = 0; channels <= 255; channels += channels < 9 ? 1 : 41) {
        QTest::addRow("%d", channels) << channels;
    }
}

void TestFFmpegDecoder::everyChannelCountOfG711()
{
    // One to eight channels have a default layout; any other count is silence, not a crash.
    QFETCH(int, channels);
    const Decoder decoder(CreateDecoder_MuLaw(8000, static_cast<std::uint32_t>(channels)));
    std::vector<std::uint8_t> pcm(pcmBlockSize);
    std::uint32_t size = pcmBlockSize;
    const QByteArray bytes(840, 'x');
    const EncodedChunk chunk = chunkOf(bytes);
    const std::int32_t result = decoder ? decoder->DecodeAudio(pcm.data(), &size, &chunk) : -1;
    if (channels >= 1 && channels <= 8) {
        QCOMPARE(result, 0);
        QCOMPARE(size, 1680U / (2U * static_cast<unsigned>(channels)) * 2U * static_cast<unsigned>(channels));
    } else {
        QVERIFY(result < 0 || size == 0);
    }
}

void TestFFmpegDecoder::nullChunkDoesNotEndTheStream()
{
    const Decoder decoder(CreateDecoder_ALaw(8000, 1));
    std::vector<std::uint8_t> pcm(2000);
    const EncodedChunk nothing{};
    std::uint32_t size = 2000;
    QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &nothing), 0);
    QCOMPARE(size, 0U);
    const QByteArray bytes(160, 'x');
    const EncodedChunk chunk = chunkOf(bytes);
    size = 2000;
    QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), 0);
    QCOMPARE(size, 320U);
}

void TestFFmpegDecoder::absurdSizeIsRefused()
{
    const Decoder decoder(CreateDecoder_ALaw(8000, 1));
    std::vector<std::uint8_t> pcm(2000);
    const QByteArray bytes(16, 'x');
    EncodedChunk chunk = chunkOf(bytes);
    for (const std::uint32_t absurd : {0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
        chunk.size = absurd; // never read: the size alone is enough to refuse it
        std::uint32_t size = 2000;
        QCOMPARE(decoder->DecodeAudio(pcm.data(), &size, &chunk), 0);
        QCOMPARE(size, 0U);
    }
}

namespace {

std::uint32_t decodeAudio(const Decoder& decoder, std::vector<std::uint8_t>& pcm, const QByteArray& bytes,
                          std::int32_t expected = 0)
{
    auto size = static_cast<std::uint32_t>(pcm.size());
    const EncodedChunk chunk = chunkOf(bytes);
    const std::int32_t result = decoder->DecodeAudio(pcm.data(), &size, &chunk);
    return result == expected ? size : 0xFFFFFFFF;
}

} // namespace

void TestFFmpegDecoder::packetOfManyFramesIsCutShort()
{
    const QByteArray frame = AacStream::silentFrame();
    constexpr std::uint32_t frameSize = 2048; // bytes of PCM
    const Decoder decoder(CreateDecoder_AAC(16000, 1));
    std::vector<std::uint8_t> pcm(pcmBlockSize);
    QCOMPARE(decodeAudio(decoder, pcm, frame.repeated(2)), 2 * frameSize);

    // All frames of this packet would be 190 MB of samples. Each is a call of the codec, which the time
    // shows.
    const QByteArray packet = frame.repeated(1024 * 1024 / frame.size());
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < 20; ++i) {
        QCOMPARE(decodeAudio(decoder, pcm, packet, -1), static_cast<std::uint32_t>(pcmBlockSize));
    }
    QVERIFY2(clock.elapsed() < 10000, qPrintable(QString::number(clock.elapsed())));

    // Neither the codec nor the decoder keeps anything of it.
    QCOMPARE(decodeAudio(decoder, pcm, frame), frameSize);
    QCOMPARE(decodeAudio(decoder, pcm, frame.repeated(3)), 3 * frameSize);
    QCOMPARE(decodeAudio(decoder, pcm, QByteArray()), 0U);

    // A packet that fills the block to its last frame is decoded as a whole.
    const int most = pcmBlockSize / static_cast<int>(frameSize);
    QCOMPARE(decodeAudio(decoder, pcm, frame.repeated(most)), static_cast<std::uint32_t>(most) * frameSize);
    QCOMPARE(decodeAudio(decoder, pcm, frame.repeated(most + 1), -1),
             static_cast<std::uint32_t>(pcmBlockSize));
    QCOMPARE(decodeAudio(decoder, pcm, frame), frameSize);
}

void TestFFmpegDecoder::framesThatDidNotFitStay()
{
    const QByteArray frame = AacStream::silentFrame();
    const Decoder decoder(CreateDecoder_AAC(16000, 1));
    std::vector<std::uint8_t> pcm(2048);
    QCOMPARE(decodeAudio(decoder, pcm, frame.repeated(4), -1), 2048U); // one heard in vain, one dropped
    pcm.resize(pcmBlockSize);
    QCOMPARE(decodeAudio(decoder, pcm, frame), 3 * 2048U); // two of the packet before, and this one
}

void TestFFmpegDecoder::heldFramesAreBounded_data()
{
    QTest::addColumn<unsigned>("channels");
    QTest::addColumn<QByteArray>("frame");
    QTest::newRow("mono") << 1U << AacStream::silentFrame();
    QTest::newRow("stereo") << 2U << AacStream::silentStereoFrame();
}

void TestFFmpegDecoder::heldFramesAreBounded()
{
    // A caller whose room is never enough makes the decoder hold a block and a frame at most.
    QFETCH(unsigned, channels);
    QFETCH(QByteArray, frame);
    const std::uint32_t frameSize = 2048 * channels; // bytes of PCM
    const Decoder decoder(CreateDecoder_AAC(16000, channels));
    std::vector<std::uint8_t> none(1);
    for (int i = 0; i < 10; ++i) {
        QCOMPARE(decodeAudio(decoder, none, frame.repeated(100), -1), 1U);
    }
    std::vector<std::uint8_t> pcm(10 * pcmBlockSize);
    const std::uint32_t size = decodeAudio(decoder, pcm, QByteArray());
    QVERIFY2(size <= pcmBlockSize + frameSize, qPrintable(QString::number(size)));
    QVERIFY(size >= pcmBlockSize - 2 * frameSize);
}

void TestFFmpegDecoder::pictures_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("sampling"); // of brightness and colours; 0 for the encoder's own
    QTest::newRow("4:2:0 full range, as it is") << static_cast<int>(AV_PIX_FMT_YUVJ420P) << 0;
    QTest::newRow("4:2:2 full range, scaled") << static_cast<int>(AV_PIX_FMT_YUVJ422P) << 0;
    QTest::newRow("4:4:4 full range, scaled") << static_cast<int>(AV_PIX_FMT_YUVJ444P) << 0;
    // No encoder makes these two.
    QTest::newRow("4:4:0 full range, scaled") << static_cast<int>(AV_PIX_FMT_YUVJ422P) << 0x2221;
    QTest::newRow("4:1:1 full range, scaled") << static_cast<int>(AV_PIX_FMT_YUVJ420P) << 0x4111;
}

void TestFFmpegDecoder::pictures()
{
    QFETCH(int, format);
    QFETCH(int, sampling);
    QList<QByteArray> stream = PictureStream::motionJpeg(static_cast<AVPixelFormat>(format), 64, 48, 5);
    if (sampling != 0) {
        for (QByteArray& picture : stream) {
            PictureStream::setSampling(picture, static_cast<char>(sampling >> 8),
                                       static_cast<char>(sampling));
        }
    }
    QCOMPARE(stream.size(), 5);
    const Decoder decoder(CreateDecoderFFmpeg(AV_CODEC_ID_MJPEG, 0, 0, 0));
    QVERIFY(decoder);
    for (int i = 0; i < stream.size(); ++i) {
        const EncodedChunk chunk = chunkOf(stream[i]);
        DecodedPicture picture;
        std::uint32_t state = 7;
        QCOMPARE(decoder->DecodeVideo(&picture, &state, &chunk), stream[i].size());
        QCOMPARE(state, 2U);
        QCOMPARE(picture.width, 64);
        QCOMPARE(picture.height, 48);
        QVERIFY(picture.strides[0] >= 64);
        QVERIFY(picture.strides[1] >= 32);
        // Each picture of the stream is a flat grey of its own.
        for (int y = 0; y < 48; y += 7) {
            for (int x = 0; x < 64; x += 9) {
                const int luma = picture.planes[0][y * picture.strides[0] + x];
                QVERIFY(std::abs(luma - PictureStream::luma(i)) <= 3);
            }
        }
        for (int plane = 1; plane < 3; ++plane) {
            QVERIFY(std::abs(picture.planes[plane][23 * picture.strides[plane] + 31] - 128) <= 3);
        }
    }
}

void TestFFmpegDecoder::pictureOfAnotherSize()
{
    const Decoder decoder(CreateDecoderFFmpeg(AV_CODEC_ID_MJPEG, 0, 0, 0));
    const std::pair<int, int> sizes[] = {{64, 48}, {128, 96}, {32, 16}};
    for (const auto& [width, height] : sizes) {
        const auto stream = PictureStream::motionJpeg(AV_PIX_FMT_YUVJ422P, width, height, 1);
        const EncodedChunk chunk = chunkOf(stream[0]);
        DecodedPicture picture;
        std::uint32_t state = 0;
        QCOMPARE(decoder->DecodeVideo(&picture, &state, &chunk), stream[0].size());
        QCOMPARE(state, 2U);
        QCOMPARE(picture.width, width);
        QCOMPARE(picture.height, height);
    }
}

void TestFFmpegDecoder::noPictureYet()
{
    const Decoder decoder(CreateDecoderFFmpeg(AV_CODEC_ID_MJPEG, 0, 0, 0));
    DecodedPicture picture;
    std::uint32_t state = 7;
    const QByteArray junk(100, 'x');
    const EncodedChunk chunk = chunkOf(junk);
    QCOMPARE(decoder->DecodeVideo(&picture, &state, &chunk), 100);
    QCOMPARE(state, 0U);
}

void TestFFmpegDecoder::queryFrame()
{
    const auto stream = PictureStream::motionJpeg(AV_PIX_FMT_YUVJ422P, 64, 48, 2);
    const Decoder decoder(CreateDecoderFFmpeg(AV_CODEC_ID_MJPEG, 0, 0, 0));
    DecodedPicture picture;
    std::uint32_t state = 0;
    QCOMPARE(decoder->QueryFrame(&picture, 2), -1);
    const EncodedChunk first = chunkOf(stream[0]);
    decoder->DecodeVideo(&picture, &state, &first);
    QCOMPARE(decoder->QueryFrame(&picture, 2), 0);
    auto* frame = static_cast<Frame*>(picture.frame);
    QCOMPARE(frame->references.load(), 2U); // the decoder's and ours
    picture.addReference(picture.frame);
    QCOMPARE(frame->references.load(), 3U);
    picture.release(picture.frame);
    // The next picture does not overwrite a held one.
    const std::uint8_t* plane = picture.planes[0];
    const EncodedChunk second = chunkOf(stream[1]);
    DecodedPicture next;
    decoder->DecodeVideo(&next, &state, &second);
    QVERIFY(next.planes[0] != plane);
    QCOMPARE(frame->references.load(), 1U);
    QVERIFY(std::abs(plane[0] - PictureStream::luma(0)) <= 3);
    picture.release(picture.frame);
}

void TestFFmpegDecoder::queryFrameVersions()
{
    const Decoder decoder(CreateDecoderFFmpeg(AV_CODEC_ID_MJPEG, 0, 0, 0));
    const auto stream = PictureStream::motionJpeg(AV_PIX_FMT_YUVJ420P, 64, 48, 1);
    for (const bool holdsFrame : {false, true}) {
        DecodedPicture picture;
        if (holdsFrame) {
            std::uint32_t state = 0;
            const EncodedChunk chunk = chunkOf(stream[0]);
            decoder->DecodeVideo(&picture, &state, &chunk);
        }
        for (const int version : {-1, 0, 1}) {
            QCOMPARE(static_cast<std::uint32_t>(decoder->QueryFrame(&picture, version)), 0x80000005U);
        }
        QCOMPARE(decoder->QueryFrame(&picture, 3), holdsFrame ? 0 : -1);
        if (holdsFrame) {
            picture.release(picture.frame);
        }
    }
}

void TestFFmpegDecoder::heldFrameOutlivesTheDecoder()
{
    DecodedPicture picture;
    for (const auto format : {AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_YUVJ422P}) {
        Decoder decoder(CreateDecoderFFmpeg(AV_CODEC_ID_MJPEG, 0, 0, 0));
        const auto stream = PictureStream::motionJpeg(format, 64, 48, 1);
        const EncodedChunk chunk = chunkOf(stream[0]);
        std::uint32_t state = 0;
        decoder->DecodeVideo(&picture, &state, &chunk);
        QCOMPARE(decoder->QueryFrame(&picture, 2), 0);
        decoder.reset();
        QVERIFY(std::abs(picture.planes[0][20] - PictureStream::luma(0)) <= 3);
        picture.release(picture.frame);
    }
}

void TestFFmpegDecoder::openingAndReleasingInParallel()
{
    std::vector<std::thread> threads;
    std::atomic<int> decoded{0};
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&decoded] {
            std::vector<std::uint8_t> pcm(4000);
            const QByteArray bytes(160, 'x');
            const EncodedChunk chunk = chunkOf(bytes);
            for (int i = 0; i < 50; ++i) {
                const Decoder decoder(i % 2 == 0 ? CreateDecoder_MuLaw(8000, 1)
                                                 : CreateDecoder_AAC(16000, 1));
                std::uint32_t size = 4000;
                decoded += decoder && decoder->DecodeAudio(pcm.data(), &size, &chunk) == 0 ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    QCOMPARE(decoded.load(), 200);
}

void TestFFmpegDecoder::slotsOfTheTable()
{
    // The operations stand in their documented order, without a destructor among them.
    struct Probe final : DecoderContext
    {
        std::int32_t DecodeVideo(DecodedPicture*, std::uint32_t*, const EncodedChunk*) override
        {
            return 101;
        }
        std::int32_t DecodeAudio(std::uint8_t*, std::uint32_t*, const EncodedChunk*) override { return 102; }
        void Release() override { released = true; }
        std::int32_t QueryFrame(DecodedPicture*, std::int32_t) override { return 104; }
        bool released = false;
    };
    Probe probe;
    using Slot = std::int32_t (*)(void*, void*, void*, void*);
    DecoderContext* decoder = &probe;
    const Slot* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(decoder), sizeof table);
    QCOMPARE(table[0](&probe, nullptr, nullptr, nullptr), 101);
    QCOMPARE(table[1](&probe, nullptr, nullptr, nullptr), 102);
    table[2](&probe, nullptr, nullptr, nullptr);
    QVERIFY(probe.released);
    QCOMPARE(table[3](&probe, nullptr, nullptr, nullptr), 104);
}

QTEST_GUILESS_MAIN(TestFFmpegDecoder)
#include "tst_ffmpegdecoder.moc"
