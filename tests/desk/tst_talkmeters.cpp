// Levels and lines, measured on the packets that pass the host.

#include "audio/PacketHeader.h"
#include "desk/TalkMeters.h"

#include <QSignalSpy>
#include <QTest>

#include <algorithm>

class TestTalkMeters : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void capturedIsMeasured();
    void receivedIsMeasured();
    void restsWithoutATalk();
    void lineHasNoGaps();
    void hostilePackets_data();
    void hostilePackets();
    void manyTokens();
};

namespace {

/** A packet of mu-law with a header; 0x00 is the loudest code, 0xFF silence. */
QByteArray packet(char code)
{
    PacketHeader header{};
    header.streamType = 8192;
    header.sampleRate = 8000;
    header.channels = 1;
    const auto bytes = header.toBytes();
    return QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())) +
           QByteArray(640, code);
}

QVariant talkData(char code)
{
    return QVariantMap{{"talkData", QString::fromLatin1(packet(code).toBase64())}};
}

QVariantMap received(char code)
{
    return {{"Token", "t"},         {"AudioData", QString::fromLatin1(packet(code).toBase64())},
            {"Offset", 32},         {"BitstreamSize", 640},
            {"StreamType", 8192},   {"AudioSamplingFreq", 8000},
            {"AudioChannelNum", 1}, {"FrameNumber", 1}};
}

void hear(TalkMeters& meters, const QVariantMap& fields)
{
    meters.eventArrived("AudioReceived", QVariantMap{{"AudioReceived", fields}});
}

float highest(const TalkMeters& meters, TalkMeters::Direction direction)
{
    const auto& peaks = meters.history(direction).peaks;
    return *std::max_element(peaks.begin(), peaks.end());
}

} // namespace

void TestTalkMeters::capturedIsMeasured()
{
    TalkMeters meters;
    QSignalSpy sent(&meters, &TalkMeters::packetSent);
    meters.setActive(true);
    meters.commandSent("StartTalk", QVariant(), true);
    QCOMPARE(sent.size(), 0);
    meters.commandSent("TalkData", talkData('\xFF'), true);
    QCOMPARE(meters.captured(), 0.0);
    meters.commandSent("TalkData", talkData('\0'), true);
    meters.commandSent("TalkData", talkData('\0'), true);
    QCOMPARE(sent.size(), 3);
    QVERIFY(meters.captured() > 0.95);
    QTRY_VERIFY(highest(meters, TalkMeters::Captured) > 0.95F);
    QCOMPARE(highest(meters, TalkMeters::Received), 0.0F);
    QTRY_COMPARE(meters.captured(), 0.0); // and falls by itself
}

void TestTalkMeters::receivedIsMeasured()
{
    TalkMeters meters;
    meters.setActive(true);
    hear(meters, received('\0'));
    hear(meters, received('\0'));
    QVERIFY(meters.received() > 0.95);
    QTRY_VERIFY(highest(meters, TalkMeters::Received) > 0.95F);
}

void TestTalkMeters::restsWithoutATalk()
{
    QTimer clock;
    TalkMeters meters(&clock);
    QSignalSpy ticked(&meters, &TalkMeters::ticked);
    hear(meters, received('\0'));
    QCOMPARE(meters.received(), 0.0);
    QVERIFY(!clock.isActive()); // no work while nobody talks
    meters.setActive(true);
    QVERIFY(clock.isActive());
    QVERIFY(ticked.wait());
    meters.commandSent("TalkData", talkData('\0'), true);
    meters.setActive(false);
    QVERIFY(clock.isActive()); // the meter has to come down
    QTRY_COMPARE(meters.captured(), 0.0);
    QVERIFY(!clock.isActive());
}

void TestTalkMeters::lineHasNoGaps()
{
    // 80 ms of sound at a time, a peak each 50 ms: once it flows, it flows.
    TalkMeters meters;
    meters.setActive(true);
    QTimer speaker;
    connect(&speaker, &QTimer::timeout, &meters,
            [&meters] { meters.commandSent("TalkData", talkData('\0'), true); });
    speaker.start(80);
    const auto loud = [&meters] {
        const auto& peaks = meters.history(TalkMeters::Captured).peaks;
        return std::count_if(peaks.begin(), peaks.end(), [](float peak) { return peak > 0.5F; });
    };
    QTRY_VERIFY(loud() > 25);
    const auto& history = meters.history(TalkMeters::Captured);
    int quiet = 0;
    for (std::size_t back = 1; back <= 20; ++back) {
        quiet +=
            history.peaks[(history.next + history.peaks.size() - back) % history.peaks.size()] > 0.5F ? 0 : 1;
    }
    QVERIFY2(quiet <= 2, qPrintable(QString::number(quiet))); // a machine may stumble
}

void TestTalkMeters::hostilePackets_data()
{
    QTest::addColumn<QVariantMap>("fields");
    const auto with = [](const char* name, const QVariant& value) {
        QVariantMap fields = received('\0');
        fields[name] = value;
        return fields;
    };
    QTest::newRow("nothing") << QVariantMap();
    QTest::newRow("offset behind the end") << with("Offset", 4000000000U);
    QTest::newRow("size beyond the end") << with("BitstreamSize", 4000000000U);
    QTest::newRow("both") << QVariantMap{
        {"Offset", 0xFFFFFFFFU}, {"BitstreamSize", 0xFFFFFFFFU}, {"AudioData", "AAAA"}};
    QTest::newRow("no such codec") << with("StreamType", 7);
    QTest::newRow("rate 0") << with("AudioSamplingFreq", 0);
    QTest::newRow("rate of 4 GHz") << with("AudioSamplingFreq", 4000000000U);
    QTest::newRow("no channels") << with("AudioChannelNum", 0);
    QTest::newRow("no text") << with("AudioData", QVariantList{1, 2});
}

void TestTalkMeters::hostilePackets()
{
    QFETCH(QVariantMap, fields);
    TalkMeters meters;
    meters.setActive(true);
    for (int i = 0; i < 3; ++i) {
        hear(meters, fields);
    }
    meters.eventArrived("AudioReceived", QVariant());
    meters.commandSent("TalkData", QVariant(), true);
    meters.commandSent("TalkData", QVariantMap{{"talkData", "%%%"}}, true);
    QSignalSpy ticked(&meters, &TalkMeters::ticked);
    QVERIFY(ticked.wait());
    QVERIFY(meters.received() >= 0 && meters.received() <= 1);
}

void TestTalkMeters::manyTokens()
{
    TalkMeters meters;
    meters.setActive(true);
    for (int i = 0; i < 1000; ++i) {
        QVariantMap fields = received('\xFF');
        fields["Token"] = QString::number(i);
        hear(meters, fields);
    }
    QCOMPARE(meters.received(), 0.0);
}

QTEST_GUILESS_MAIN(TestTalkMeters)
#include "tst_talkmeters.moc"
