#include "platform/SoundTap.h"
#include "standins/soundtap/WavHeader.h"
#include "tests/support/WavFiles.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <sstream>

using namespace soundtap;
using WavFiles::chunk;
using WavFiles::chunkOfSize;
using WavFiles::extensibleFormat;
using WavFiles::pcmFormat;
using WavFiles::riff;

class TestSoundTap : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goodFiles_data();
    void goodFiles();
    void badFiles_data();
    void badFiles();
    void everyTruncation();
    void manyParts();
    void throughTheInterface();
};

namespace {

const QByteArray mono8k = pcmFormat(1, 8000, 16);
const QByteArray tenSamples(20, 's');

} // namespace

void TestSoundTap::goodFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<unsigned>("rate");
    QTest::addColumn<unsigned>("begin");
    QTest::addColumn<unsigned>("end");
    const QByteArray format = chunk("fmt ", mono8k);
    const QByteArray data = chunk("data", tenSamples);
    QTest::newRow("plain") << riff(format + data) << 8000U << 44U << 64U;
    QTest::newRow("stereo, 44.1 kHz")
        << riff(chunk("fmt ", pcmFormat(2, 44100, 16)) + data) << 44100U << 44U << 64U;
    QTest::newRow("8 bits") << riff(chunk("fmt ", pcmFormat(1, 8000, 8)) + data) << 8000U << 44U << 64U;
    QTest::newRow("longer format chunk")
        << riff(chunk("fmt ", mono8k + QByteArray(2, 0)) + data) << 8000U << 46U << 66U;
    QTest::newRow("extensible") << riff(chunk("fmt ", extensibleFormat(1, 16000, 16)) + data) << 16000U << 68U
                                << 88U;
    QTest::newRow("data before format") << riff(data + format) << 8000U << 20U << 40U;
    QTest::newRow("list before") << riff(chunk("LIST", "INFOhello") + format + data) << 8000U << 62U << 82U;
    QTest::newRow("list between and after")
        << riff(format + chunk("LIST", "INFO") + data + chunk("LIST", "INFOmore")) << 8000U << 56U << 76U;
    QTest::newRow("odd chunk is padded") << riff(chunk("junk", "odd") + format + data) << 8000U << 56U << 76U;
    QTest::newRow("data size 0: until the end")
        << riff(format + chunkOfSize("data", 0, tenSamples)) << 8000U << 44U << 64U;
    QTest::newRow("data size all ones: until the end")
        << riff(format + chunkOfSize("data", 0xFFFFFFFF, tenSamples)) << 8000U << 44U << 64U;
    QTest::newRow("data beyond the end")
        << riff(format + chunkOfSize("data", 1000000, tenSamples)) << 8000U << 44U << 64U;
    QTest::newRow("half a sample at the end")
        << riff(format + chunkOfSize("data", 21, tenSamples + 'x')) << 8000U << 44U << 64U;
    QTest::newRow("part of a stereo frame at the end")
        << riff(chunk("fmt ", pcmFormat(2, 8000, 16)) + chunk("data", QByteArray(22, 's'))) << 8000U << 44U
        << 64U;
    QTest::newRow("riff size wrong") << QByteArray("RIFF\1\0\0\0WAVE", 12) + format + data << 8000U << 44U
                                     << 64U;
    QTest::newRow("second data chunk is not ours")
        << riff(format + data + chunk("data", QByteArray(100, 'x'))) << 8000U << 44U << 64U;
    QTest::newRow("second format chunk is not ours")
        << riff(format + chunk("fmt ", pcmFormat(2, 96000, 24)) + data) << 8000U << 68U << 88U;
}

void TestSoundTap::goodFiles()
{
    QFETCH(QByteArray, file);
    QFETCH(unsigned, rate);
    QFETCH(unsigned, begin);
    QFETCH(unsigned, end);
    std::istringstream stream(file.toStdString());
    WavHeader header;
    QCOMPARE(readWavHeader(stream, header), WavOk);
    QCOMPARE(header.sampleRate, rate);
    QCOMPARE(header.dataBegin, begin);
    QCOMPARE(header.dataEnd, end);
    QCOMPARE(file.mid(static_cast<int>(begin), static_cast<int>(end - begin)), QByteArray(20, 's'));
}

void TestSoundTap::badFiles_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<int>("error");
    const QByteArray format = chunk("fmt ", mono8k);
    const QByteArray data = chunk("data", tenSamples);
    QByteArray floatFormat = mono8k;
    floatFormat[0] = 3;
    QByteArray foreignExtension = extensibleFormat(1, 8000, 16);
    foreignExtension[30] = 'x';
    QTest::newRow("empty") << QByteArray() << int{WavNotRiff};
    QTest::newRow("one byte") << QByteArray("R") << int{WavNotRiff};
    QTest::newRow("text") << QByteArray("RIFT\0\0\0\0WAVE", 12) << int{WavNotRiff};
    QTest::newRow("riff of another form") << QByteArray("RIFF\0\0\0\0AVI ", 12) << int{WavNotRiff};
    QTest::newRow("big endian riff") << QByteArray("RIFX\0\0\0\0WAVE", 12) << int{WavNotRiff};
    QTest::newRow("nothing inside") << riff("") << int{WavNoFormat};
    QTest::newRow("no format") << riff(data) << int{WavNoFormat};
    QTest::newRow("no data") << riff(format) << int{WavNoSamples};
    QTest::newRow("no sample") << riff(format + chunkOfSize("data", 0, "")) << int{WavNoSamples};
    QTest::newRow("not one whole sample") << riff(format + chunk("data", "x")) << int{WavNoSamples};
    QTest::newRow("short format") << riff(chunk("fmt ", mono8k.left(15)) + data) << int{WavNoFormat};
    QTest::newRow("format beyond the end")
        << riff(chunkOfSize("fmt ", 16, mono8k.left(10))) << int{WavNoFormat};
    QTest::newRow("extensible beyond the end")
        << riff(chunkOfSize("fmt ", 40, extensibleFormat(1, 8000, 16).left(30))) << int{WavNoFormat};
    QTest::newRow("float") << riff(chunk("fmt ", floatFormat) + data) << int{WavUnsupported};
    QTest::newRow("foreign extension") << riff(chunk("fmt ", foreignExtension) + data) << int{WavUnsupported};
    QTest::newRow("no channel") << riff(chunk("fmt ", pcmFormat(0, 8000, 16)) + data) << int{WavUnsupported};
    QTest::newRow("no rate") << riff(chunk("fmt ", pcmFormat(1, 0, 16)) + data) << int{WavUnsupported};
    QTest::newRow("no bits") << riff(chunk("fmt ", pcmFormat(1, 8000, 0)) + data) << int{WavUnsupported};
    QTest::newRow("64 bits") << riff(chunk("fmt ", pcmFormat(1, 8000, 64)) + data) << int{WavUnsupported};
    QTest::newRow("first chunk of 4 GiB")
        << riff(chunkOfSize("junk", 0xFFFFFFFF, format + data)) << int{WavNoFormat};
}

void TestSoundTap::badFiles()
{
    QFETCH(QByteArray, file);
    QFETCH(int, error);
    std::istringstream stream(file.toStdString());
    WavHeader header;
    QCOMPARE(int{readWavHeader(stream, header)}, error);
}

void TestSoundTap::everyTruncation()
{
    const QByteArray whole = riff(chunk("LIST", "INFOodd") + chunk("fmt ", extensibleFormat(1, 8000, 16)) +
                                  chunk("data", tenSamples) + chunk("LIST", "INFO"));
    for (int length = 0; length <= whole.size(); ++length) {
        std::istringstream stream(whole.left(length).toStdString());
        WavHeader header;
        if (readWavHeader(stream, header) == WavOk) {
            QVERIFY(header.dataEnd <= static_cast<unsigned>(length));
            QVERIFY(header.dataBegin < header.dataEnd);
        }
    }
}

void TestSoundTap::manyParts()
{
    QByteArray parts;
    for (int i = 0; i < 20000; ++i) {
        parts += chunk("junk", "");
    }
    std::istringstream stream(riff(parts + chunk("fmt ", mono8k) + chunk("data", tenSamples)).toStdString());
    WavHeader header;
    QCOMPARE(readWavHeader(stream, header), WavTooManyParts);
}

void TestSoundTap::throughTheInterface()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("gr\u00fc\u00df.wav"));
    QVERIFY(WavFiles::write(path, WavFiles::Samples(100, 5), 22050));
    const QByteArray localPath = path.toLocal8Bit();
    SoundTapWavInfo info{};
    info.path = localPath.constData();
    QCOMPARE(SoundTap_GetWAVInfo(&info), std::int32_t{0});
    QCOMPARE(info.sampleRate, 22050U);
    QCOMPARE(info.dataBegin, 44U);
    QCOMPARE(info.dataEnd, 244U);
    QCOMPARE(info.path, localPath.constData());

    info = SoundTapWavInfo{};
    info.path = "/nonexistent/file.wav";
    QVERIFY(SoundTap_GetWAVInfo(&info) < 0);
    QCOMPARE(info.sampleRate, 0U);
    info.path = "/";
    QVERIFY(SoundTap_GetWAVInfo(&info) < 0);
    info.path = nullptr;
    QVERIFY(SoundTap_GetWAVInfo(&info) < 0);
    QVERIFY(SoundTap_GetWAVInfo(nullptr) < 0);
}

QTEST_APPLESS_MAIN(TestSoundTap)
#include "tst_soundtap.moc"
