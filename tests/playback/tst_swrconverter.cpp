#include "src/decoders/PcmBlock.h"
#include "src/playback/SwrConverter.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <QTest>

#include <cstring>

class TestSwrConverter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void equalFormatsPassUnchanged();
    void refusedFormats_data();
    void refusedFormats();
    void everyChannelCountHasALayout();
    void layoutsPlaceTheCentre_data();
    void layoutsPlaceTheCentre();
    void resamplesToSixTimesTheBytes();
    void widensSamplesInPlace_data();
    void widensSamplesInPlace();
    void samplesRunOnAcrossBlocks();
    void neverOverrunsTheBlock_data();
    void neverOverrunsTheBlock();
    void movedFromIsEmpty();
};

namespace {

constexpr int U8 = 0;
constexpr int S16 = 1;
constexpr int S32 = 2;
constexpr int Float = 3;

// Guarded behind its end: the address sanitizer watches the heap block, the pattern every build.
struct Block
{
    Block() : bytes(pcmBlockSize + 64, 0x5A) {}
    bool guardIntact() const
    {
        return std::all_of(bytes.begin() + pcmBlockSize, bytes.end(),
                           [](std::uint8_t b) { return b == 0x5A; });
    }
    void put(const WavFiles::Samples& samples)
    {
        std::memcpy(bytes.data(), samples.data(), samples.size() * 2);
    }
    std::vector<std::uint8_t> bytes;
};

} // namespace

void TestSwrConverter::equalFormatsPassUnchanged()
{
    SwrConverter converter;
    QCOMPARE(converter.Setup(S16, 8000, 1, S16, 8000, 1), 0);
    Block block;
    const auto samples = WavFiles::sine(440, 0.5, 0.1, 8000);
    block.put(samples);
    QCOMPARE(converter.ConvertInPlace(block.bytes.data(), 1600), 1600);
    QCOMPARE(std::memcmp(block.bytes.data(), samples.data(), 1600), 0);
}

void TestSwrConverter::refusedFormats_data()
{
    QTest::addColumn<QVector<int>>("arguments");
    QTest::newRow("unmapped output format") << QVector<int>{-1, 8000, 1, S16, 8000, 1};
    QTest::newRow("output format 4") << QVector<int>{4, 8000, 1, S16, 8000, 1};
    QTest::newRow("unmapped input format") << QVector<int>{S16, 8000, 1, -1, 8000, 1};
    QTest::newRow("input format 4") << QVector<int>{S16, 8000, 1, 4, 8000, 1};
    QTest::newRow("no output channel") << QVector<int>{S16, 8000, 0, S16, 8000, 1};
    QTest::newRow("nine output channels") << QVector<int>{S16, 8000, 9, S16, 8000, 1};
    QTest::newRow("no input channel") << QVector<int>{S16, 8000, 1, S16, 8000, 0};
    QTest::newRow("nine input channels") << QVector<int>{S16, 8000, 1, S16, 8000, 9};
    QTest::newRow("minus one channel") << QVector<int>{S16, 8000, -1, S16, 8000, 1};
    QTest::newRow("rate 0") << QVector<int>{S16, 8000, 1, S16, 0, 1};
    QTest::newRow("negative rate") << QVector<int>{S16, 8000, 1, S16, -5, 1};
    QTest::newRow("absurd input rate") << QVector<int>{S16, 48000, 1, S16, 2000000000, 1};
    QTest::newRow("absurd output rate") << QVector<int>{S16, 2000000000, 1, S16, 8000, 1};
}

void TestSwrConverter::refusedFormats()
{
    QFETCH(QVector<int>, arguments);
    SwrConverter converter;
    QCOMPARE(
        converter.Setup(arguments[0], arguments[1], arguments[2], arguments[3], arguments[4], arguments[5]),
        -1);
}

void TestSwrConverter::everyChannelCountHasALayout()
{
    for (int channels = 1; channels <= 8; ++channels) {
        SwrConverter same;
        QCOMPARE(same.Setup(S16, 16000, channels, S16, 16000, channels), 0);
        SwrConverter other;
        QCOMPARE(other.Setup(Float, 48000, channels, S16, 16000, 1), 1);
        Block block;
        block.put(WavFiles::sine(440, 0.5, 0.1, 16000));
        const int made = other.ConvertInPlace(block.bytes.data(), 3200);
        QCOMPARE(made % (4 * channels), 0);
        QVERIFY(made > 4 * channels * 4000);
    }
}

void TestSwrConverter::layoutsPlaceTheCentre_data()
{
    QTest::addColumn<int>("channels");
    QTest::addColumn<QVector<int>>("sounding"); // places in a frame that a single channel is heard at
    QTest::newRow("stereo") << 2 << QVector<int>{0, 1};
    QTest::newRow("2.1") << 3 << QVector<int>{0, 1};
    for (int channels = 4; channels <= 8; ++channels) {
        QTest::addRow("%d", channels) << channels << QVector<int>{2};
    }
}

void TestSwrConverter::layoutsPlaceTheCentre()
{
    QFETCH(int, channels);
    QFETCH(QVector<int>, sounding);
    SwrConverter converter;
    QCOMPARE(converter.Setup(S16, 8000, channels, S16, 8000, 1), 1);
    Block block;
    block.put(WavFiles::Samples(100, 10000));
    QCOMPARE(converter.ConvertInPlace(block.bytes.data(), 200), 200 * channels);
    for (int i = 0; i < 100 * channels; ++i) {
        std::int16_t sample = 0;
        std::memcpy(&sample, block.bytes.data() + 2 * i, 2);
        QCOMPARE(sample != 0, sounding.contains(i % channels));
    }
}

void TestSwrConverter::resamplesToSixTimesTheBytes()
{
    SwrConverter converter;
    QCOMPARE(converter.Setup(S16, 48000, 1, S16, 8000, 1), 1);
    const auto tone = WavFiles::sine(440, 0.5, 1.0, 8000);
    WavFiles::Samples heard;
    Block block;
    for (std::size_t i = 0; i < tone.size(); i += 640) {
        const WavFiles::Samples part(tone.begin() + static_cast<std::ptrdiff_t>(i),
                                     tone.begin() +
                                         static_cast<std::ptrdiff_t>(std::min(i + 640, tone.size())));
        block.put(part);
        const int made = converter.ConvertInPlace(block.bytes.data(), static_cast<int>(part.size()) * 2);
        const auto* samples = reinterpret_cast<const std::int16_t*>(block.bytes.data());
        heard.insert(heard.end(), samples, samples + made / 2);
    }
    // Six times the input, less what the filter still holds.
    QVERIFY(heard.size() <= tone.size() * 6);
    QVERIFY(heard.size() > tone.size() * 6 - 200);
    QVERIFY(std::abs(SignalMeasure::toneFrequency(heard, 48000) - 440) < 1);
    QVERIFY(std::abs(SignalMeasure::levelDbfs(heard) - SignalMeasure::levelDbfs(tone)) < 0.1);
}

void TestSwrConverter::widensSamplesInPlace_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("channels");
    for (const int channels : {1, 2}) {
        QTest::addRow("8 bits, %d", channels) << U8 << channels;
        QTest::addRow("32 bits, %d", channels) << S32 << channels;
        QTest::addRow("float, %d", channels) << Float << channels;
    }
}

void TestSwrConverter::widensSamplesInPlace()
{
    QFETCH(int, format);
    QFETCH(int, channels);
    SwrConverter converter;
    QCOMPARE(converter.Setup(format, 8000, channels, S16, 8000, channels), 1);
    const auto samples = WavFiles::sine(300, 0.9, 0.2, 8000);
    Block block;
    block.put(samples);
    const int made = converter.ConvertInPlace(block.bytes.data(), static_cast<int>(samples.size()) * 2);
    const int width = format == U8 ? 1 : 4;
    QCOMPARE(made, static_cast<int>(samples.size()) * width);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::uint8_t* at = block.bytes.data() + i * static_cast<std::size_t>(width);
        if (format == U8) {
            QCOMPARE(int{*at}, (samples[i] >> 8) + 128);
        } else if (format == S32) {
            std::int32_t value = 0;
            std::memcpy(&value, at, 4);
            QCOMPARE(value, samples[i] * 65536);
        } else {
            float value = 0;
            std::memcpy(&value, at, 4);
            QCOMPARE(value, static_cast<float>(samples[i]) / 32768.0F);
        }
    }
}

void TestSwrConverter::samplesRunOnAcrossBlocks()
{
    // One long block and many short ones give the same sound.
    const auto tone = WavFiles::sine(1000, 0.5, 0.5, 8000);
    const auto convert = [&tone](std::size_t step) {
        SwrConverter converter;
        converter.Setup(S16, 44100, 1, S16, 8000, 1);
        Block block;
        WavFiles::Samples heard;
        for (std::size_t i = 0; i < tone.size(); i += step) {
            const std::size_t count = std::min(step, tone.size() - i);
            std::memcpy(block.bytes.data(), tone.data() + i, count * 2);
            const int made = converter.ConvertInPlace(block.bytes.data(), static_cast<int>(count) * 2);
            const auto* samples = reinterpret_cast<const std::int16_t*>(block.bytes.data());
            heard.insert(heard.end(), samples, samples + made / 2);
        }
        return heard;
    };
    const auto whole = convert(tone.size());
    const auto pieces = convert(160);
    const auto common = static_cast<std::ptrdiff_t>(std::min(whole.size(), pieces.size()));
    QVERIFY(common > 21000);
    QVERIFY(std::equal(whole.begin(), whole.begin() + common, pieces.begin()));
}

void TestSwrConverter::neverOverrunsTheBlock_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<int>("outRate");
    QTest::addColumn<int>("outChannels");
    QTest::addColumn<int>("inRate");
    QTest::addColumn<int>("inChannels");
    QTest::newRow("8000 mono to 48000 stereo float") << Float << 48000 << 2 << 8000 << 1;
    QTest::newRow("8000 mono to 192000, 8 channels") << S32 << 192000 << 8 << 8000 << 1;
    QTest::newRow("1 Hz to 48000") << S16 << 48000 << 1 << 1 << 1;
    QTest::newRow("1 Hz to 768000") << Float << 768000 << 8 << 1 << 1;
    QTest::newRow("same rate, wider") << Float << 8000 << 1 << 8000 << 1;
    QTest::newRow("768000 to 8000") << S16 << 8000 << 1 << 768000 << 1;
}

void TestSwrConverter::neverOverrunsTheBlock()
{
    QFETCH(int, format);
    QFETCH(int, outRate);
    QFETCH(int, outChannels);
    QFETCH(int, inRate);
    QFETCH(int, inChannels);
    SwrConverter converter;
    QCOMPARE(converter.Setup(format, outRate, outChannels, S16, inRate, inChannels), 1);
    Block block;
    for (int i = 0; i < 3; ++i) {
        const int made = converter.ConvertInPlace(block.bytes.data(), pcmBlockSize);
        QVERIFY(made >= 0);
        QVERIFY(made <= pcmBlockSize);
        QVERIFY(block.guardIntact());
    }
    QVERIFY(converter.ConvertInPlace(block.bytes.data(), 0) >= 0);
    QCOMPARE(converter.ConvertInPlace(block.bytes.data(), -2) < 0, false);
}

void TestSwrConverter::movedFromIsEmpty()
{
    SwrConverter first;
    QCOMPARE(first.Setup(S16, 48000, 1, S16, 8000, 1), 1);
    SwrConverter second(std::move(first));
    Block block;
    QCOMPARE(first.ConvertInPlace(block.bytes.data(), 100), 100); // NOLINT(bugprone-use-after-move)
    QVERIFY(second.ConvertInPlace(block.bytes.data(), 1600) > 4000);
}

QTEST_GUILESS_MAIN(TestSwrConverter)
#include "tst_swrconverter.moc"
