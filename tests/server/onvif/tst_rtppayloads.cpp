// Payloads of a camera's codecs, both ways, without a camera.

#include "audio/AdtsHeader.h"
#include "audio/G711.h"
#include "audio/PcmConverter.h"
#include "protocol/CameraSettingsRecord.h"
#include "server/devices/onvif/LineWatchdog.h"
#include "server/devices/onvif/PacketPace.h"
#include "server/devices/onvif/RtpDecoder.h"
#include "server/devices/onvif/RtpEncoder.h"
#include "server/devices/onvif/TalkRecorder.h"
#include "server/devices/onvif/TalkSender.h"
#include "src/vocabulary/StreamType.h"
#include "tests/support/SignalMeasure.h"

#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <atomic>
#include <cmath>

Q_DECLARE_METATYPE(RtpFormat)

class TestRtpPayloads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void goThereAndBack_data();
    void goThereAndBack();
    void g726IsPackedFromTheLowestBit();
    void codecsThatAreOffered();
    void formatsWithoutAnEncoder();
    void timestampsGoByTheClock();
    void positionsGoByTheRtpTime();
    void everyRemainderOfAPacket();
    void aacConfigurations();
    void framesThatShareAPacket();
    void channelsOfASound();
    void framesInParts();
    void brokenAac();
    void senderDropsWhatIsOld();
    void senderHolds();
    void recordingGoesByTheClock();
    void pausesAtAnotherRate();
    void senderBoundsItsQueue();
    void senderHoldsInTheTurn();
    void senderStopsAtOnce();
    void evenPace_data();
    void evenPace();
    void delaysAreWorkedOff();
    void watchdog();
};

namespace {

constexpr std::int64_t second = 1000000; // microseconds

RtpFormat narrow(const QString& encoding)
{
    return {encoding, 96, 8000};
}

RtpFormat aac(int rate, const char* config)
{
    return {"MPEG4-GENERIC", 97, rate, 1, 13, 3, 3, QByteArray::fromHex(config)};
}

WavFiles::Samples tone(std::size_t count)
{
    WavFiles::Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / 8000;
        samples[i] = static_cast<std::int16_t>(9000 * std::sin(6.2832 * (400 + 300 * t) * t));
    }
    return samples;
}

std::vector<RtpPayload> encodeAll(RtpEncoder& encoder, const WavFiles::Samples& samples)
{
    std::vector<RtpPayload> payloads;
    for (std::size_t at = 0; at < samples.size(); at += 640) {
        const std::vector<std::int16_t> part(samples.begin() + static_cast<std::ptrdiff_t>(at),
                                             samples.begin() + static_cast<std::ptrdiff_t>(at + 640));
        encoder.encode(static_cast<std::uint32_t>(at), static_cast<std::int64_t>(at) * 125,
                       G711::encodeMuLaw(part), payloads);
    }
    return payloads;
}

/** An AAC packet of frames (RFC 3640): sizes of 13 bits and indices of 3. */
QByteArray aacPacket(const std::vector<QByteArray>& frames)
{
    QByteArray headers;
    QByteArray data;
    for (const QByteArray& frame : frames) {
        headers.append(static_cast<char>(frame.size() >> 5)).append(static_cast<char>(frame.size() << 3));
        data += frame;
    }
    const int bits = headers.size() * 8;
    return QByteArray().append(static_cast<char>(bits >> 8)).append(static_cast<char>(bits)) + headers + data;
}

} // namespace

void TestRtpPayloads::goThereAndBack_data()
{
    QTest::addColumn<RtpFormat>("format");
    QTest::addColumn<int>("packetTime");
    QTest::addColumn<int>("bytes");
    QTest::addColumn<double>("likeness");
    const auto row = [](const char* name, const RtpFormat& format, int time, int bytes, double likeness) {
        QTest::newRow(name) << format << time << bytes << likeness;
    };
    row("mu-law", narrow("PCMU"), 20, 160, 0.999);
    row("A-law", narrow("PCMA"), 40, 320, 0.999);
    row("16 kbit/s", narrow("G726-16"), 20, 40, 0.95);
    row("24 kbit/s", narrow("G726-24"), 20, 60, 0.98);
    row("32 kbit/s", narrow("G726-32"), 20, 80, 0.99);
    row("40 kbit/s", narrow("G726-40"), 80, 400, 0.99);
    row("AAL2 at 24 kbit/s", narrow("AAL2-G726-24"), 20, 60, 0.98);
    row("AAL2 at 40 kbit/s", narrow("AAL2-G726-40"), 20, 100, 0.99);
    row("L16 at 8 kHz", {"L16", 98, 8000}, 20, 320, 0.999);
    row("L16 at 48 kHz, stereo", {"L16", 98, 48000, 2}, 20, 3840, 0.999);
}

void TestRtpPayloads::goThereAndBack()
{
    QFETCH(RtpFormat, format);
    QFETCH(int, packetTime);
    QFETCH(int, bytes);
    QFETCH(double, likeness);
    const auto encoder = RtpEncoder::create(format, packetTime);
    const auto decoder = RtpDecoder::create(format);
    QVERIFY(encoder && decoder);
    const WavFiles::Samples said = tone(16000);
    WavFiles::Samples heard;
    std::vector<VoicePacket> packets;
    for (const RtpPayload& payload : encodeAll(*encoder, said)) {
        QCOMPARE(payload.bytes.size(), bytes);
        QCOMPARE(payload.duration, packetTime);
        decoder->decode({payload.bytes, payload.timestamp, payload.marker, 0}, packets);
    }
    for (const VoicePacket& packet : packets) {
        const auto samples = packet.streamType == StreamType::G711ALaw ? G711::decodeALaw(packet.bitstream)
                                                                       : G711::decodeMuLaw(packet.bitstream);
        heard.insert(heard.end(), samples.begin(), samples.end());
    }
    const auto alignment = SignalMeasure::align(said, heard, 100);
    QVERIFY2(alignment.correlation > likeness, qPrintable(QString::number(alignment.correlation)));
    QVERIFY(std::abs(alignment.gainDb) < 0.5);
}

void TestRtpPayloads::g726IsPackedFromTheLowestBit()
{
    const WavFiles::Samples samples = tone(640);
    const auto low = RtpEncoder::create(narrow("G726-32"), 20);
    const auto high = RtpEncoder::create(narrow("AAL2-G726-32"), 20);
    const QByteArray first = encodeAll(*low, samples).front().bytes;
    QByteArray swapped = encodeAll(*high, samples).front().bytes;
    QVERIFY(first != swapped);
    for (char& byte : swapped) {
        byte = static_cast<char>(static_cast<std::uint8_t>(byte) >> 4 | static_cast<std::uint8_t>(byte) << 4);
    }
    QCOMPARE(first, swapped);
}

/** What clients offer for the setting "talkCodec" is what there is. */
void TestRtpPayloads::codecsThatAreOffered()
{
    for (const QString& name : CameraSettingsRecord::talkCodecs()) {
        const RtpFormat format = name == "MPEG4-GENERIC" ? aac(16000, "1408") : narrow(name);
        QVERIFY2(RtpEncoder::existsFor(format), qPrintable(name));
    }
}

void TestRtpPayloads::formatsWithoutAnEncoder()
{
    for (const RtpFormat& format :
         {RtpFormat(), narrow("OPUS"), narrow("G726-48"), RtpFormat{"PCMU", 0, 16000},
          RtpFormat{"PCMU", 0, 8000, 2}, RtpFormat{"L16", 98, 96000}, RtpFormat{"L16", 98, 8000, 0},
          RtpFormat{"L16", 98, 0}, aac(16000, "1188"), aac(16000, ""), aac(16000, "f8"),
          RtpFormat{"MPEG4-GENERIC", 97, 16000},
          RtpFormat{"MPEG4-GENERIC", 97, 16000, 1, 1, 3, 3, QByteArray::fromHex("1408")},
          RtpFormat{"MPEG4-GENERIC", 97, 16000, 1, 9, 3, 3, QByteArray::fromHex("1408")}}) {
        QVERIFY2(!RtpEncoder::existsFor(format), qPrintable(format.encoding));
        QCOMPARE(RtpEncoder::create(format, 20).get(), nullptr);
    }
    QVERIFY(RtpEncoder::existsFor(aac(16000, "1408")));
}

/** A pause is one in the timestamps; what does not fit the clock is not believed. */
void TestRtpPayloads::timestampsGoByTheClock()
{
    const auto encoder = RtpEncoder::create(narrow("PCMU"), 20);
    const QByteArray sound(640, 'x');
    std::vector<RtpPayload> out;
    const auto say = [&](std::uint32_t position, std::int64_t time) {
        out.clear();
        encoder->encode(position, time, sound, out);
        return std::pair(out.front().timestamp, out.front().marker);
    };
    using Start = std::pair<std::uint32_t, bool>;
    QCOMPARE(say(4000000000U, 5 * second), Start(0, true));
    QCOMPARE(say(4000000640U, 5 * second + 80000), Start(640, false));
    QCOMPARE(out.back().timestamp, 640U + 480U);
    QCOMPARE(say(4000009280U, 6 * second + 160000), Start(9280, true));              // after a second
    QCOMPARE(say(100, 7 * second + 160000), Start(9920 + 8000, true));               // of another microphone
    QCOMPARE(say(1000000740, 8 * second + 160000), Start(9920 + 8000 + 8640, true)); // a day ahead
    // 0.1 s early: sound comes in bursts
    QCOMPARE(say(1000001380 + 8000, 9 * second + 60000), Start(9920 + 8000 + 8640 + 640 + 8000, true));
}

void TestRtpPayloads::positionsGoByTheRtpTime()
{
    const auto muLaw = RtpDecoder::create(narrow("PCMU"));
    const auto wide = RtpDecoder::create({"L16", 98, 16000});
    std::vector<VoicePacket> out;
    const std::uint32_t start = 0xFFFFFF00U; // wraps
    muLaw->decode({QByteArray(160, 'x'), start, false, 7}, out);
    muLaw->decode({QByteArray(160, 'x'), start + 160, false, 8}, out);
    muLaw->decode({QByteArray(160, 'x'), start + 1600, false, 9}, out);
    muLaw->decode({QByteArray(160, 'x'), start + 320, false, 9}, out); // late
    wide->decode({QByteArray(640, 'x'), start, false, 10}, out);
    wide->decode({QByteArray(640, 'x'), start + 3200, false, 11}, out);
    const std::vector<std::uint32_t> expected{0, 160, 1600, 320, 0, 1600};
    QCOMPARE(out.size(), expected.size());
    for (std::size_t i = 0; i < out.size(); ++i) {
        QCOMPARE(out[i].position, expected[i]);
    }
    QCOMPARE(out[2].captureTime, std::uint64_t{9});
    QCOMPARE(out[0].bitstream, QByteArray(160, 'x')); // untouched
}

void TestRtpPayloads::everyRemainderOfAPacket()
{
    for (int size = 0; size < 700; ++size) {
        VoicePacket packet{QByteArray(size, 'x'), StreamType::G711MuLaw, 8000};
        const QVariantMap fields = packet.toFields();
        const int offset = fields["Offset"].toInt();
        QCOMPARE((offset + fields["BitstreamSize"].toInt()) % 3, 0);
        const QByteArray whole = QByteArray::fromBase64(fields["AudioData"].toString().toLatin1());
        QCOMPARE(whole.mid(offset), packet.bitstream);
        QVERIFY(!fields["AudioData"].toString().contains('='));
    }
}

void TestRtpPayloads::aacConfigurations()
{
    const auto config = [](const char* hex) { return AacConfig::parse(QByteArray::fromHex(hex)); };
    QCOMPARE(config("1408")->sampleRate, 16000);
    QCOMPARE(config("1408")->channels, 1);
    QCOMPARE(config("1190")->sampleRate, 48000);
    QCOMPARE(config("1190")->channels, 2);
    QCOMPARE(config("2b8a08")->sampleRate, 22050); // with band replication: the core's rate
    QCOMPARE(config("2b8a08")->objectType, 2);
    QCOMPARE(config("2b8a08")->soundRate, 44100);
    QCOMPARE(config("2b8a08")->soundChannels, 1);
    QCOMPARE(config("eb8a08")->soundRate, 44100); // and parametric stereo
    QCOMPARE(config("eb8a08")->channels, 1);
    QCOMPARE(config("eb8a08")->soundChannels, 2);
    QCOMPARE(config("1190")->soundRate, 48000);
    QCOMPARE(config("1190")->soundChannels, 2);
    QCOMPARE(config("11b8")->channels, 7);
    QCOMPARE(config("11b8")->soundChannels, 8);
    QCOMPARE(config("2b8908")->soundRate, 44100); // whatever it says
    for (const char* broken : {"", "14", "f808", "1400", "1788", "00", "ffffffffff"}) {
        QVERIFY2(!config(broken), broken);
    }
}

void TestRtpPayloads::framesThatShareAPacket()
{
    const auto decoder = RtpDecoder::create(aac(16000, "1408"));
    std::vector<VoicePacket> out;
    decoder->decode({aacPacket({QByteArray(100, 'a')}), 5000, true, 0}, out);
    decoder->decode({aacPacket({QByteArray(200, 'b'), QByteArray(300, 'c')}), 6024, true, 0}, out);
    QCOMPARE(out.size(), std::size_t{3});
    for (std::size_t i = 0; i < 3; ++i) {
        QCOMPARE(out[i].position, static_cast<std::uint32_t>(i * 1024));
        QCOMPARE(out[i].sampleRate, 16000);
        QCOMPARE(out[i].bitstream.size(), static_cast<int>(i + 1) * 100 + AdtsHeader::size);
        const auto header = AdtsHeader::parse(out[i].bitstream);
        QVERIFY(header);
        QCOMPARE(header->sampleRate, 16000U);
        QCOMPARE(header->channels, std::uint8_t{1});
        const auto byte = [&](int at) { return static_cast<std::uint8_t>(out[i].bitstream[at]); };
        QCOMPARE((byte(3) & 3) << 11 | byte(4) << 3 | byte(5) >> 5, out[i].bitstream.size());
        QCOMPARE(out[i].bitstream.back(), static_cast<char>('a' + i));
    }
}

/** What a client plays by: the rate and the channels of the decoded sound. */
void TestRtpPayloads::channelsOfASound()
{
    const auto fields = [](const char* config, int clockRate) {
        std::vector<VoicePacket> out;
        const auto decoder = RtpDecoder::create(aac(clockRate, config));
        decoder->decode({aacPacket({QByteArray(100, 'a'), QByteArray(100, 'b')}), 0, true, 0}, out);
        QVariantMap result = out.at(1).toFields();
        result["position"] = out.at(1).position;
        return result;
    };
    const QVariantMap stereo = fields("1410", 16000);
    QCOMPARE(stereo["AudioChannelNum"], QVariant(2U));
    QCOMPARE(stereo["AudioSamplingFreq"], QVariant(16000U));
    QCOMPARE(QByteArray::fromBase64(stereo["AudioData"].toString().toLatin1())[6], '\x02');
    QCOMPARE(stereo["position"].toUInt(), 1024U);
    const QVariantMap mono = fields("1408", 16000);
    QCOMPARE(mono["AudioChannelNum"], QVariant(1U));
    for (const int clockRate : {22050, 44100}) { // cameras differ in what they count
        const QVariantMap replicated = fields("2b8a08", clockRate);
        QCOMPARE(replicated["AudioSamplingFreq"], QVariant(44100U));
        QCOMPARE(replicated["AudioChannelNum"], QVariant(1U));
        QCOMPARE(replicated["position"].toUInt(), 2048U);
    }
}

void TestRtpPayloads::framesInParts()
{
    const auto decoder = RtpDecoder::create(aac(16000, "1408"));
    const QByteArray whole = aacPacket({QByteArray(1000, 'a')});
    const QByteArray header = whole.left(4);
    std::vector<VoicePacket> out;
    decoder->decode({header + QByteArray(600, 'a'), 0, false, 0}, out);
    QVERIFY(out.empty());
    decoder->decode({header + QByteArray(400, 'a'), 0, true, 0}, out);
    QCOMPARE(out.size(), std::size_t{1});
    QCOMPARE(out[0].bitstream.mid(AdtsHeader::size), QByteArray(1000, 'a'));
    decoder->decode({header + QByteArray(600, 'b'), 1024, false, 0}, out); // its end is lost
    decoder->decode({header + QByteArray(400, 'c'), 2048, false, 0}, out);
    decoder->decode({header + QByteArray(600, 'd'), 2048, true, 0}, out);
    QCOMPARE(out.size(), std::size_t{2});
    QCOMPARE(out[1].bitstream.mid(AdtsHeader::size), QByteArray(400, 'c') + QByteArray(600, 'd'));
}

void TestRtpPayloads::brokenAac()
{
    const auto decoder = RtpDecoder::create(aac(16000, "1408"));
    std::vector<VoicePacket> out;
    for (const QByteArray& payload :
         {QByteArray(), QByteArray(1, '\0'), QByteArray(2, '\xFF'), QByteArray(2, '\0'),
          QByteArray("\0\x10", 2), QByteArray(20000, '\0'), aacPacket({QByteArray()})}) {
        decoder->decode({payload, 0, true, 0}, out);
        QVERIFY(out.empty());
    }
    QCOMPARE(RtpDecoder::create(aac(0, "1408")).get(), nullptr);
    QCOMPARE(RtpDecoder::create({"MPEG4-GENERIC", 97, 16000, 1, 40, 3, 3, QByteArray::fromHex("1408")}).get(),
             nullptr);
}

void TestRtpPayloads::senderDropsWhatIsOld()
{
    std::atomic<int> sent{0};
    std::atomic<bool> blocked{true};
    TalkSender sender(RtpEncoder::create(narrow("PCMU"), 80), false, [&](const RtpPayload&) {
        ++sent;
        while (blocked) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1)); // a camera that does not read
        }
    });
    std::uint32_t position = 0;
    const auto say = [&] { sender.say(std::exchange(position, position + 640), QByteArray(640, 'x')); };
    say();
    QTRY_COMPARE(sent, 1);
    for (int i = 0; i < 1000; ++i) {
        say();
    }
    const auto start = TalkSender::Clock::now();
    QTRY_VERIFY(TalkSender::Clock::now() - start > TalkSender::maxAge);
    blocked = false;
    say();
    QTRY_COMPARE(sent, 2); // the newest alone
}

void TestRtpPayloads::senderHolds()
{
    std::atomic<int> sent{0};
    TalkSender sender(RtpEncoder::create(narrow("PCMU"), 80), false, [&](const RtpPayload&) { ++sent; });
    sender.hold(true);
    sender.say(0, QByteArray(640, 'x'));
    sender.say(640, QByteArray(640, 'x'));
    const auto start = TalkSender::Clock::now();
    QTRY_VERIFY(TalkSender::Clock::now() - start > std::chrono::milliseconds(50));
    QCOMPARE(sent, 0);
    sender.hold(false);
    QTRY_COMPARE(sent, 2); // a short question costs nothing
}

/** Sound whose position leaves the clock is kept where it was said. */
void TestRtpPayloads::recordingGoesByTheClock()
{
    QTemporaryDir folder;
    const QString path = folder.filePath("talk.wav");
    {
        TalkRecorder recorder(path, 0);
        QVERIFY(recorder.isOpen());
        recorder.say(0, QByteArray(800, 'x'), 200000);
        recorder.say(800 + 40000, QByteArray(800, 'x'), 300000); // five seconds on, it says
    }
    // What came at 0.3 s ends at 0.4 s: the file starts 0.1 s before the talk.
    QCOMPARE(QFileInfo(path).size(), qint64{44 + 3200 * 4});
}

/** The gap in the timestamps has the clock's rate, and the rest before it is not put behind it. */
void TestRtpPayloads::pausesAtAnotherRate()
{
    const auto encoder = RtpEncoder::create({"L16", 98, 16000}, 20);
    std::vector<RtpPayload> out;
    encoder->encode(0, 0, QByteArray(640, 'x'), out);
    QCOMPARE(out.at(0).timestamp, 0U);
    encoder->encode(640, 80000, QByteArray(100, 'x'), out); // a rest
    out.clear();
    encoder->encode(740 + 8000, 1092500, QByteArray(300, 'x'), out);
    QCOMPARE(out.size(), std::size_t{1}); // of the 600 samples behind the pause
    QCOMPARE(out[0].timestamp, 2U * (740 + 8000));
    out.clear();
    encoder->encode(9040 + 20 * 8000, 1130000, QByteArray(300, 'x'), out); // 20 s in 37.5 ms: not believed
    QCOMPARE(out.at(0).timestamp, 2U * (9040 + 300));
}

void TestRtpPayloads::senderBoundsItsQueue()
{
    std::atomic<int> sent{0};
    TalkSender sender(RtpEncoder::create(narrow("PCMU"), 20), false, [&](const RtpPayload&) { ++sent; });
    sender.hold(true);
    const auto start = TalkSender::Clock::now();
    for (std::uint32_t i = 0; i < 1000; ++i) {
        sender.say(i * 160, QByteArray(160, 'x'));
    }
    sender.hold(false);
    sender.say(160000, QByteArray(160, 'x'));
    QTRY_VERIFY(sent >= 256 || TalkSender::Clock::now() - start > TalkSender::maxAge);
    QVERIFY(sent <= 257);
}

/** What waits for its turn when the camera grows silent waits on, and is dropped when it is old. */
void TestRtpPayloads::senderHoldsInTheTurn()
{
    std::atomic<int> sent{0};
    TalkSender sender(RtpEncoder::create(narrow("PCMU"), 80), true, [&](const RtpPayload&) { ++sent; });
    sender.say(0, QByteArray(640, 'x'));
    sender.say(640, QByteArray(640, 'x'));
    QTRY_COMPARE(sent, 1);
    sender.hold(true); // the second has 80 ms to wait
    const auto start = TalkSender::Clock::now();
    QTRY_VERIFY(TalkSender::Clock::now() - start > TalkSender::maxAge);
    QCOMPARE(sent, 1);
    sender.hold(false);
    sender.say(1280, QByteArray(640, 'x'));
    QTRY_COMPARE(sent, 2); // the third alone
    const auto end = TalkSender::Clock::now();
    QTRY_VERIFY(TalkSender::Clock::now() - end > std::chrono::milliseconds(100));
    QCOMPARE(sent, 2);
}

void TestRtpPayloads::senderStopsAtOnce()
{
    std::atomic<int> sent{0};
    const auto start = TalkSender::Clock::now();
    {
        TalkSender sender(RtpEncoder::create(narrow("PCMU"), 80), true, [&](const RtpPayload&) { ++sent; });
        for (std::uint32_t i = 0; i < 5; ++i) {
            sender.say(i * 640, QByteArray(640, 'x'));
        }
        QTRY_COMPARE(sent, 1);
    }
    QVERIFY(TalkSender::Clock::now() - start < std::chrono::milliseconds(70));
    QCOMPARE(sent, 1);
}

void TestRtpPayloads::evenPace_data()
{
    QTest::addColumn<int>("packets"); // of 20 ms that are said at once
    QTest::addColumn<int>("period");  // ms, from one stop of the sender to the next
    QTest::addColumn<int>("stop");    // ms
    QTest::addColumn<int>("late");    // ms that the last packets may be late
    QTest::newRow("all is well") << 1 << 1000 << 0 << 0;
    QTest::newRow("bursts") << 4 << 1000 << 0 << 0;
    QTest::newRow("one stop") << 4 << 100000 << 300 << 0;
    QTest::newRow("stops") << 4 << 400 << 120 << 120;
}

/** Time is counted, not waited for. */
void TestRtpPayloads::evenPace()
{
    QFETCH(int, packets);
    QFETCH(int, period);
    QFETCH(int, stop);
    QFETCH(int, late);
    using std::chrono::milliseconds;
    const milliseconds duration(20);
    PacketPace pace;
    PacketPace::Time last{};
    PacketPace::Time free{};
    const PacketPace::Time start = PacketPace::Time{} + std::chrono::hours(1);
    for (int i = 0; i < 400; ++i) { // 8 seconds
        const PacketPace::Time turn = start + i * duration;
        const PacketPace::Time said = start + i / packets * packets * duration;
        PacketPace::Time sent = std::max(pace.due(said, duration), free);
        const int inPeriod =
            static_cast<int>(std::chrono::duration_cast<milliseconds>(sent - start).count()) % period;
        if (inPeriod < stop) {
            sent += milliseconds(stop - inPeriod);
        }
        pace.left(sent);
        free = sent; // the sender has one thread
        QVERIFY2(sent >= turn, qPrintable(QString::number(i)));
        QVERIFY2(sent - last >= duration / 2, qPrintable(QString::number(i)));
        QVERIFY2(sent - said < milliseconds(500), qPrintable(QString::number(i))); // else it is dropped
        if (i >= 300) {
            QVERIFY2(sent - turn <= milliseconds(late), qPrintable(QString::number((sent - turn).count())));
        }
        last = sent;
    }
}

/** Sound that came late once, as the network had it, is no reason to be late for ever. */
void TestRtpPayloads::delaysAreWorkedOff()
{
    using std::chrono::milliseconds;
    const milliseconds duration(20);
    PacketPace pace;
    const PacketPace::Time start = PacketPace::Time{} + std::chrono::hours(1);
    PacketPace::Time sent{};
    for (int i = 0; i < 400; ++i) {
        const PacketPace::Time said = start + i * duration + milliseconds(i == 10 ? 200 : 0);
        sent = pace.due(said, duration);
        pace.left(sent);
    }
    QCOMPARE(sent - start - 399 * duration, PacketPace::Duration(0));
}

void TestRtpPayloads::watchdog()
{
    using Verdict = LineWatchdog::Verdict;
    using std::chrono::milliseconds;
    const LineWatchdog::Time start{};
    LineWatchdog dog(milliseconds(3000), start);
    const auto at = [&](int ms) { return dog.check(start + milliseconds(ms)); };
    QCOMPARE(at(399), Verdict::Alive);
    QCOMPARE(at(400), Verdict::Ask);
    QCOMPARE(at(401), Verdict::Wait); // one question for each silence
    QCOMPARE(at(2999), Verdict::Wait);
    dog.alive(start + milliseconds(2999));
    QCOMPARE(at(3000), Verdict::Alive);
    QCOMPARE(at(3400), Verdict::Ask);
    QCOMPARE(at(5998), Verdict::Wait);
    QCOMPARE(at(5999), Verdict::Lost);
}

QTEST_GUILESS_MAIN(TestRtpPayloads)
#include "tst_rtppayloads.moc"
