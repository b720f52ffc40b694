// What Qt's sound is asked for, what can be read of what it offers, and samples in planes.

#include "audio/PcmConverter.h"
#include "audio/PcmFormat.h"

#include <QTest>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/samplefmt.h>
}

class TestPcmFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneChannelOfSixteenBits();
    void formatsThatCanBeRead();
    void planesAreMixed();
    void impossibleRatesAreRefused();
};

void TestPcmFormat::oneChannelOfSixteenBits()
{
    const QAudioFormat format = pcmFormat(16000);
    QVERIFY(format.isValid());
    QCOMPARE(format.sampleRate(), 16000);
    QCOMPARE(format.channelCount(), 1);
    QCOMPARE(format.sampleSize(), 16);
    QCOMPARE(format.sampleType(), QAudioFormat::SignedInt);
    QCOMPARE(format.byteOrder(), QAudioFormat::LittleEndian);
    QCOMPARE(format.codec(), QStringLiteral("audio/pcm"));
}

void TestPcmFormat::formatsThatCanBeRead()
{
    const auto read = [](int bits, QAudioFormat::SampleType type) {
        QAudioFormat format = pcmFormat(8000);
        format.setSampleSize(bits);
        format.setSampleType(type);
        return sampleFormatOf(format);
    };
    QVERIFY(read(16, QAudioFormat::SignedInt) == SampleFormat::S16);
    QVERIFY(read(32, QAudioFormat::SignedInt) == SampleFormat::S32);
    QVERIFY(read(8, QAudioFormat::UnSignedInt) == SampleFormat::U8);
    QVERIFY(read(32, QAudioFormat::Float) == SampleFormat::Float);
    QVERIFY(!read(8, QAudioFormat::SignedInt));
    QVERIFY(!read(16, QAudioFormat::UnSignedInt));
    QVERIFY(!read(24, QAudioFormat::SignedInt));
    QAudioFormat format = pcmFormat(8000);
    format.setByteOrder(QAudioFormat::BigEndian);
    QVERIFY(!sampleFormatOf(format));
    format = pcmFormat(8000);
    format.setCodec(QStringLiteral("audio/x-adpcm"));
    QVERIFY(!sampleFormatOf(format));
    QVERIFY(!sampleFormatOf(QAudioFormat()));
}

void TestPcmFormat::planesAreMixed()
{
    AVChannelLayout stereo{};
    av_channel_layout_default(&stereo, 2);
    PcmConverter converter(AV_SAMPLE_FMT_S16P, 8000, stereo, 8000);
    QVERIFY(converter.valid());
    const std::vector<std::int16_t> left(100, 1000);
    const std::vector<std::int16_t> right(100, 3000);
    const std::uint8_t* planes[] = {reinterpret_cast<const std::uint8_t*>(left.data()),
                                    reinterpret_cast<const std::uint8_t*>(right.data())};
    std::vector<std::int16_t> mixed{7}; // what is there stays
    converter.convertPlanes(planes, left.size(), mixed);
    QCOMPARE(mixed.size(), std::size_t{101});
    QCOMPARE(mixed[0], std::int16_t{7});
    QCOMPARE(mixed[50], std::int16_t{2000});
}

void TestPcmFormat::impossibleRatesAreRefused()
{
    AVChannelLayout mono{};
    av_channel_layout_default(&mono, 1);
    PcmConverter converter(AV_SAMPLE_FMT_S16, 0, mono, 8000);
    QVERIFY(!converter.valid());
    std::vector<std::int16_t> out;
    const std::uint8_t silence[20] = {};
    const std::uint8_t* plane = silence;
    converter.convertPlanes(&plane, 10, out);
    converter.flush(out);
    QVERIFY(out.empty());
}

QTEST_GUILESS_MAIN(TestPcmFormat)
#include "tst_pcmformat.moc"
