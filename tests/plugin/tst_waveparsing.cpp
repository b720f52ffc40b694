#include "src/FrameSmithWrapper.h"
#include "tests/support/FakeFrameSmith.h"
#include "tests/support/FakeSoundTap.h"

#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <cstdlib>
#include <cstring>

#ifdef Q_OS_LINUX
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#endif

class TestWaveParsing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void askedAsTheLibraryExpects();
    void packetsOfAFile();
    void shortFileIsPaddedAndRepeats();
    void lastBlockThatFits();
    void lastBlockCarriesWhatFollowsTheSamples();
    void resetStartsAnew();
    void bufferIsReplaced();
    void returnedTime_data();
    void returnedTime();
    void answersAboveZeroAreGood();
    void packetsAreMadeOnTheirChannel();
    void unreadableHeader();
    void missingFile();
    void seekThatFails();
    void truncatedFile();
    void failingPacketMaker();
    void nullPacket();

private:
    /** Writes @p head bytes of anything, then samples with the values 1, 2, 3 ... and makes the header say
     * so. */
    void makeFile(int head, int samples, int tail = 0, std::uint32_t sampleRate = 8000);
    DWORD parse() { return m_wrapper->ParseWaveToPacket(&m_packet, m_path); }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    std::unique_ptr<FrameSmithWrapper> m_wrapper;

    struct Packet : TMediaDataPacketInfo
    {
        Packet() : TMediaDataPacketInfo{} {}
        ~Packet() { std::free(Buffer); }
    } m_packet;
};

namespace {

std::vector<std::int16_t> lastSamples()
{
    const QByteArray pcm = FakeFrameSmith::lastPcm();
    std::vector<std::int16_t> samples(static_cast<std::size_t>(pcm.size()) / 2);
    std::memcpy(samples.data(), pcm.constData(), samples.size() * 2);
    return samples;
}

} // namespace

void TestWaveParsing::init()
{
    FakeFrameSmith::reset();
    m_folder = std::make_unique<QTemporaryDir>();
    m_path = m_folder->filePath(QStringLiteral("sound \u00e9.wav"));
    m_wrapper = std::make_unique<FrameSmithWrapper>();
    FakeFrameSmith::clearCalls();
    std::free(m_packet.Buffer);
    m_packet.Buffer = nullptr;
}

void TestWaveParsing::makeFile(int head, int samples, int tail, std::uint32_t sampleRate)
{
    QFile file(m_path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(head, '\xEE'));
    for (int i = 1; i <= samples; ++i) {
        const auto sample = static_cast<std::int16_t>(i);
        file.write(reinterpret_cast<const char*>(&sample), 2);
    }
    file.write(QByteArray(tail, '\xDD'));
    FakeSoundTap::answer(0, sampleRate, static_cast<std::uint32_t>(head),
                         static_cast<std::uint32_t>(head + samples * 2));
}

void TestWaveParsing::askedAsTheLibraryExpects()
{
    makeFile(44, 10);
    parse();
    const SoundTapWavInfo request = FakeSoundTap::lastRequest();
    QVERIFY(request.path != nullptr);
    QCOMPARE(request.reserved8, 0U);
    QCOMPARE(request.sampleRate, 0U);
    QCOMPARE(request.dataBegin, 0U);
    QCOMPARE(request.dataEnd, 0U);
    QCOMPARE(request.reserved28, 0U);
}

void TestWaveParsing::packetsOfAFile()
{
    makeFile(44, 1500);
    for (int turn = 0; turn < 2; ++turn) { // the file repeats
        QCOMPARE(parse(), DWORD{72});
        QCOMPARE(lastSamples().size(), std::size_t{640});
        QCOMPARE(lastSamples().front(), std::int16_t{1});
        QCOMPARE(lastSamples().back(), std::int16_t{640});
        QCOMPARE(FakeFrameSmith::calls().back().arguments, (std::vector<qint64>{1280, 1400}));
        parse();
        QCOMPARE(lastSamples().front(), std::int16_t{641});
        QCOMPARE(lastSamples().back(), std::int16_t{1280});
        QCOMPARE(parse(), DWORD{72});
        QCOMPARE(lastSamples().size(), std::size_t{640});
        QCOMPARE(lastSamples()[219], std::int16_t{1500});
        QCOMPARE(lastSamples()[220], std::int16_t{0});
        QCOMPARE(lastSamples().back(), std::int16_t{0});
    }
    QCOMPARE(m_packet.BitstreamSize, 640U);
}

void TestWaveParsing::shortFileIsPaddedAndRepeats()
{
    makeFile(44, 5);
    for (int turn = 0; turn < 3; ++turn) {
        QCOMPARE(parse(), DWORD{72});
        std::vector<std::int16_t> expected{1, 2, 3, 4, 5};
        expected.resize(640);
        QCOMPARE(lastSamples(), expected);
    }
}

void TestWaveParsing::lastBlockThatFits()
{
    makeFile(44, 1280);
    parse();
    QCOMPARE(parse(), DWORD{72});
    QCOMPARE(lastSamples().size(), std::size_t{640});
    QCOMPARE(lastSamples().back(), std::int16_t{1280});
    parse(); // and the file starts again, without an empty packet
    QCOMPARE(lastSamples().front(), std::int16_t{1});
}

void TestWaveParsing::lastBlockCarriesWhatFollowsTheSamples()
{
    // Deliberate: a block is read whole, also where other parts of the file follow the samples.
    makeFile(44, 5, 20);
    parse();
    QCOMPARE(lastSamples()[4], std::int16_t{5});
    QCOMPARE(lastSamples()[5], static_cast<std::int16_t>(0xDDDD));
    QCOMPARE(lastSamples()[14], static_cast<std::int16_t>(0xDDDD));
    QCOMPARE(lastSamples()[15], std::int16_t{0});
}

void TestWaveParsing::resetStartsAnew()
{
    makeFile(44, 2000);
    parse();
    parse();
    QCOMPARE(lastSamples().front(), std::int16_t{641});
    m_wrapper->Reset();
    parse();
    QCOMPARE(lastSamples().front(), std::int16_t{1});
}

void TestWaveParsing::bufferIsReplaced()
{
    makeFile(44, 2000);
    m_packet.Buffer = static_cast<std::uint8_t*>(std::malloc(1)); // freed by the call; the sanitizer watches
    parse();
    QVERIFY(m_packet.Buffer != nullptr);
    QCOMPARE(int{m_packet.Buffer[0]}, 0x5A);
    parse();
    QCOMPARE(int{m_packet.Buffer[659]}, 0x5A);
}

void TestWaveParsing::returnedTime_data()
{
    QTest::addColumn<unsigned>("sampleRate");
    QTest::addColumn<unsigned>("milliseconds");
    QTest::newRow("8000") << 8000U << 72U;      // 80 / 1.1
    QTest::newRow("16000") << 16000U << 36U;    // 40 / 1.1
    QTest::newRow("44100") << 44100U << 12U;    // 14 / 1.1
    QTest::newRow("1") << 1U << 581818U;        // 640000 / 1.1
    QTest::newRow("640001") << 640001U << 0U;   // under a millisecond
    QTest::newRow("0") << 0U << 0U;             // no division by it
    QTest::newRow("2^31") << 0x80000000U << 0U; // twice this is 0 in 32 bits
}

void TestWaveParsing::returnedTime()
{
    QFETCH(unsigned, sampleRate);
    QFETCH(unsigned, milliseconds);
    makeFile(44, 640, 0, sampleRate);
    QCOMPARE(parse(), DWORD{milliseconds});
}

void TestWaveParsing::answersAboveZeroAreGood()
{
    makeFile(44, 10);
    FakeSoundTap::answer(1, 8000, 44, 64);
    QVERIFY(parse() > 0);
}

void TestWaveParsing::packetsAreMadeOnTheirChannel()
{
    m_wrapper->StartAudioCapture(); // another channel
    makeFile(44, 10);
    parse();
    const FakeFrameSmith::Call made = FakeFrameSmith::calls().back();
    QCOMPARE(made.function, QStringLiteral("FrameSmith_MakeAudioPacket"));
    FakeFrameSmith::clearCalls();
    m_wrapper.reset();
    QCOMPARE(FakeFrameSmith::functions().first(), QStringLiteral("FrameSmith_DeleteChannel"));
    QVERIFY(made.handle != nullptr);
    QCOMPARE(made.handle, FakeFrameSmith::calls().front().handle);
}

void TestWaveParsing::unreadableHeader()
{
    makeFile(44, 640);
    FakeSoundTap::answer(-2, 8000, 44, 1324);
    auto* buffer = static_cast<std::uint8_t*>(std::malloc(1));
    m_packet.Buffer = buffer;
    QCOMPARE(parse(), DWORD{0});
    QCOMPARE(m_packet.Buffer, buffer); // untouched so far
    QVERIFY(FakeFrameSmith::functions().isEmpty());
}

void TestWaveParsing::missingFile()
{
    FakeSoundTap::answer(0, 8000, 44, 1324);
    QCOMPARE(parse(), DWORD{0});
    QCOMPARE(m_packet.Buffer, nullptr);
    QVERIFY(FakeFrameSmith::functions().isEmpty());
}

void TestWaveParsing::seekThatFails()
{
#ifdef Q_OS_LINUX
    const QByteArray path = m_path.toLocal8Bit();
    QCOMPARE(mkfifo(path.constData(), 0600), 0);
    const int keeper = open(path.constData(), O_RDWR); // so that opening the pipe does not wait
    QVERIFY(keeper >= 0);
    FakeSoundTap::answer(0, 8000, 44, 1324);
    QCOMPARE(parse(), DWORD{0});
    QCOMPARE(parse(), DWORD{0}); // the file left open is not lost: the sanitizer watches
    QVERIFY(FakeFrameSmith::functions().isEmpty());
    close(keeper);
    QVERIFY(QFile::remove(m_path));
    makeFile(44, 640);
    QCOMPARE(parse(), DWORD{72});
#else
    QSKIP("needs a file that cannot be sought");
#endif
}

void TestWaveParsing::truncatedFile()
{
    makeFile(44, 700);
    FakeSoundTap::answer(0, 8000, 44, 100000);
    QCOMPARE(parse(), DWORD{72});
    parse();
    QCOMPARE(lastSamples().size(), std::size_t{60});
    FakeFrameSmith::fail("FrameSmith_MakeAudioPacket", -1); // as the library answers an empty block
    for (int turn = 0; turn < 3; ++turn) {
        QCOMPARE(parse(), DWORD{0}); // the rest of the file is not there: a failure, not an endless wait
    }
}

void TestWaveParsing::failingPacketMaker()
{
    makeFile(44, 640);
    FakeFrameSmith::fail("FrameSmith_MakeAudioPacket", -6);
    QCOMPARE(parse(), DWORD{0});
}

void TestWaveParsing::nullPacket()
{
    makeFile(44, 640);
    QCOMPARE(m_wrapper->ParseWaveToPacket(nullptr, m_path), DWORD{0});
}

QTEST_APPLESS_MAIN(TestWaveParsing)
#include "tst_waveparsing.moc"
