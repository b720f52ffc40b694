// From an AudioReceived event to the packet that AudioRenderer gets. AudioRenderer is replaced here by one
// that remembers its calls.

#include "tests/plugin/PluginFixture.h"

#include <QTest>

namespace {

struct Call
{
    enum
    {
        AudioOn,
        Volume,
        Play
    } kind;
    bool flag = false;
    double volume = 0;
    MediaPacketPtr packet;
};

std::vector<Call> calls;

QByteArray bytesOf(const MediaPacketPtr& packet)
{
    return QByteArray(reinterpret_cast<const char*>(packet->Buffer),
                      static_cast<int>(packet->Offset + packet->BitstreamSize));
}

QVariant received(QVariantMap fields)
{
    return QVariantMap{{"AudioReceived", fields}};
}

QVariantMap fieldsOf(const QString& token, const QByteArray& packet, unsigned offset)
{
    return {
        {"Token", token},        {"BitstreamSize", static_cast<unsigned>(packet.size()) - offset},
        {"Offset", offset},      {"AudioData", QString::fromLatin1(packet.toBase64())},
        {"StreamType", 8192U},   {"AudioSamplingFreq", 8000U},
        {"AudioChannelNum", 1U}, {"FrameNumber", 1U},
    };
}

QByteArray pattern(int size)
{
    QByteArray bytes(size, 0);
    for (int i = 0; i < size; ++i) {
        bytes[i] = static_cast<char>(i * 7 + 1);
    }
    return bytes;
}

} // namespace

class AudioDevice
{
};
class AudioOutput
{
};
AudioRenderer::AudioRenderer() = default;
AudioRenderer::~AudioRenderer() = default;
void AudioRenderer::SetAudioOn(bool on)
{
    calls.push_back({Call::AudioOn, on, 0, nullptr});
}
void AudioRenderer::SetVolume(double volume)
{
    calls.push_back({Call::Volume, false, volume, nullptr});
}
void AudioRenderer::Play(const boost::intrusive_ptr<_TMediaDataPacketInfoV3>& packet, bool dropWhenFull)
{
    calls.push_back({Call::Play, dropWhenFull, 0, packet});
}

class TestTalkDownlink : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { calls.clear(); }
    void packetReachesTheRenderer();
    void callsComeInOrder();
    void unknownTokensAreDropped();
    void stoppedTalkDropsItsAudio();
    void emptyTokens();
    void allTargetsShareTheRenderer();
    void missingKeysAreZero();
    void nothingIsMappedOrChecked();
    void emptyPacket();
    void lengthsByRemainder_data();
    void lengthsByRemainder();
    void malformedText_data();
    void malformedText();
    void absurdSizes_data();
    void absurdSizes();
    void shortTextLeavesZeros();
    void maxUnfilledPacket();
    void manyPackets();
};

void TestTalkDownlink::packetReachesTheRenderer()
{
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    const QByteArray packet = pattern(660);
    auto fields = fieldsOf("t", packet, 20);
    fields["AudioSamplingFreq"] = 16000U;
    fields["AudioChannelNum"] = 2U;
    fields["FrameNumber"] = 3U;
    fixture.event("AudioReceived", received(fields));
    QCOMPARE(calls.size(), std::size_t{3});
    const MediaPacketPtr& made = calls[2].packet;
    QCOMPARE(bytesOf(made), packet);
    QCOMPARE(made->Offset, 20U);
    QCOMPARE(made->BitstreamSize, 640U);
    QCOMPARE(made->StreamType, 8192U);
    QCOMPARE(made->AudioSamplingFreq, 16000U);
    QCOMPARE(int{made->AudioChannelNum}, 2);
    QCOMPARE(made->FrameNumber, 3U);
    QCOMPARE(made->AudioBitRate, 0U);
    QCOMPARE(int{made->AudioPackingMode}, 0);
    QCOMPARE(made->ExtraData, nullptr);
    QCOMPARE(made->Items, nullptr);
    QCOMPARE(reinterpret_cast<const std::uint32_t*>(made.get())[-2], 1U); // nobody else holds it
}

void TestTalkDownlink::callsComeInOrder()
{
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    for (int i = 0; i < 3; ++i) {
        calls.clear();
        fixture.event("AudioReceived", received(fieldsOf("t", pattern(660), 20)));
        QCOMPARE(calls.size(), std::size_t{3});
        QVERIFY(calls[0].kind == Call::AudioOn && calls[0].flag);
        QVERIFY(calls[1].kind == Call::Volume);
        QCOMPARE(calls[1].volume, 100.0);
        QVERIFY(calls[2].kind == Call::Play && calls[2].flag);
    }
}

void TestTalkDownlink::unknownTokensAreDropped()
{
    PluginFixture fixture;
    fixture.event("AudioReceived", received(fieldsOf("t", pattern(660), 20)));
    fixture.openCameraTalk("t");
    fixture.event("AudioReceived", received(fieldsOf("u", pattern(660), 20)));
    fixture.event("AudioReceived", received(fieldsOf("", pattern(660), 20)));
    fixture.event("AudioReceived", QVariant());
    fixture.event("AudioReceived", QVariantMap{{"Other", 1}});
    fixture.event("AudioReceived", QStringLiteral("t"));
    QVERIFY(calls.empty());
}

void TestTalkDownlink::stoppedTalkDropsItsAudio()
{
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    fixture.plugin->stopTalk();
    fixture.event("AudioReceived", received(fieldsOf("t", pattern(660), 20)));
    QVERIFY(calls.empty());
}

void TestTalkDownlink::emptyTokens()
{
    PluginFixture fixture;
    fixture.openCameraTalk("");
    fixture.event("AudioReceived", received(fieldsOf("", pattern(660), 20)));
    QCOMPARE(calls.size(), std::size_t{3});
    // A payload without the map has an empty token, which passes now, and a packet of nothing.
    calls.clear();
    fixture.event("AudioReceived", QVariant());
    QCOMPARE(calls.size(), std::size_t{3});
    QCOMPARE(bytesOf(calls[2].packet), QByteArray());
}

void TestTalkDownlink::allTargetsShareTheRenderer()
{
    PluginFixture fixture;
    fixture.openCameraTalk("a");
    fixture.openCameraTalk("b");
    const QByteArray first(660, 'a');
    const QByteArray second(660, 'b');
    fixture.event("AudioReceived", received(fieldsOf("a", first, 20)));
    fixture.event("AudioReceived", received(fieldsOf("b", second, 20)));
    fixture.event("AudioReceived", received(fieldsOf("a", first, 20)));
    QCOMPARE(calls.size(), std::size_t{9});
    QCOMPARE(bytesOf(calls[2].packet), first);
    QCOMPARE(bytesOf(calls[5].packet), second);
    QCOMPARE(bytesOf(calls[8].packet), first);
}

void TestTalkDownlink::missingKeysAreZero()
{
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    fixture.event("AudioReceived", received({{"Token", "t"}}));
    QCOMPARE(calls.size(), std::size_t{3});
    const MediaPacketPtr& made = calls[2].packet;
    QCOMPARE(made->StreamType, 0U);
    QCOMPARE(made->AudioSamplingFreq, 0U);
    QCOMPARE(int{made->AudioChannelNum}, 0);
    QCOMPARE(made->FrameNumber, 0U);
    QCOMPARE(bytesOf(made), QByteArray());
}

void TestTalkDownlink::nothingIsMappedOrChecked()
{
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    auto fields = fieldsOf("t", pattern(660), 20);
    fields["AudioChannelNum"] = 258U;
    fields["StreamType"] = 0xFFFFFFFFU;
    fields["AudioSamplingFreq"] = 0xFFFFFFFEU;
    fields["FrameNumber"] = 0xFFFFFFFDU;
    fixture.event("AudioReceived", received(fields));
    const MediaPacketPtr& made = calls[2].packet;
    QCOMPARE(int{made->AudioChannelNum}, 2);
    QCOMPARE(made->StreamType, 0xFFFFFFFFU);
    QCOMPARE(made->AudioSamplingFreq, 0xFFFFFFFEU);
    QCOMPARE(made->FrameNumber, 0xFFFFFFFDU);
}

void TestTalkDownlink::emptyPacket()
{
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    fixture.event("AudioReceived", received(fieldsOf("t", QByteArray(), 0)));
    QCOMPARE(calls.size(), std::size_t{3});
    QCOMPARE(bytesOf(calls[2].packet), QByteArray());
}

void TestTalkDownlink::lengthsByRemainder_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("decoded");
    QTest::newRow("640, remainder 1") << 640 << false;
    QTest::newRow("641, remainder 2") << 641 << true;
    QTest::newRow("642, remainder 0") << 642 << true;
    QTest::newRow("660, remainder 0") << 660 << true;
    QTest::newRow("1, remainder 1") << 1 << false;
    QTest::newRow("2, remainder 2") << 2 << true;
    QTest::newRow("3, remainder 0") << 3 << true;
}

void TestTalkDownlink::lengthsByRemainder()
{
    QFETCH(int, length);
    QFETCH(bool, decoded);
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    const QByteArray packet = pattern(length);
    fixture.event("AudioReceived", received(fieldsOf("t", packet, 0)));
    QCOMPARE(calls.size(), std::size_t{3});
    QCOMPARE(bytesOf(calls[2].packet), decoded ? packet : QByteArray(length, '\0'));
}

void TestTalkDownlink::malformedText_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("none") << QString() << QByteArray(6, '\0');
    QTest::newRow("too long for the packet") << QString(100, 'Q') << QByteArray(6, '\0');
    QTest::newRow("characters off the alphabet")
        << QStringLiteral("QU\nD??? ") << QByteArray("A@\3\0\0\0", 6);
    QTest::newRow("not Latin") << QString(QChar(0x20AC)) << QByteArray(6, '\0');
    QTest::newRow("cut short") << QStringLiteral("QUJDRA") << QByteArray("ABCD\0\0", 6);
}

void TestTalkDownlink::malformedText()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, bytes);
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    auto fields = fieldsOf("t", QByteArray(6, 'x'), 0);
    fields["AudioData"] = text;
    fixture.event("AudioReceived", received(fields));
    QCOMPARE(calls.size(), std::size_t{3});
    QCOMPARE(bytesOf(calls[2].packet), bytes);
}

void TestTalkDownlink::absurdSizes_data()
{
    QTest::addColumn<unsigned>("offset");
    QTest::addColumn<unsigned>("size");
    QTest::newRow("gigabytes") << 0U << 0xF0000000U;
    QTest::newRow("all of them") << 0U << 0xFFFFFFFFU;
    QTest::newRow("both") << 0xFFFFFFFFU << 0xFFFFFFFFU;
    QTest::newRow("a sum that wraps to 16") << 0xFFFFFFF0U << 32U;
    QTest::newRow("a sum that wraps to 0") << 0x80000000U << 0x80000000U;
    QTest::newRow("one more than the limit") << 1U << 1048576U;
}

void TestTalkDownlink::absurdSizes()
{
    QFETCH(unsigned, offset);
    QFETCH(unsigned, size);
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    auto fields = fieldsOf("t", pattern(660), 20);
    fields["Offset"] = offset;
    fields["BitstreamSize"] = size;
    fixture.event("AudioReceived", received(fields));
    QVERIFY(calls.empty());
}

void TestTalkDownlink::shortTextLeavesZeros()
{
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    auto fields = fieldsOf("t", pattern(6), 0);
    fields["BitstreamSize"] = 1000U;
    fixture.event("AudioReceived", received(fields));
    QCOMPARE(bytesOf(calls[2].packet), pattern(6) + QByteArray(994, '\0'));
}

void TestTalkDownlink::maxUnfilledPacket()
{
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    auto fields = fieldsOf("t", QByteArray(), 0);
    fields["BitstreamSize"] = 1048576U;
    fixture.event("AudioReceived", received(fields));
    QCOMPARE(bytesOf(calls[2].packet), QByteArray(1048576, '\0'));
    // A larger packet passes when its text is there.
    calls.clear();
    const QByteArray large = pattern(1500000);
    fixture.event("AudioReceived", received(fieldsOf("t", large, 0)));
    QCOMPARE(bytesOf(calls[2].packet), large);
}

void TestTalkDownlink::manyPackets()
{
    PluginFixture fixture;
    fixture.openCameraTalk("t");
    const QVariant event = received(fieldsOf("t", pattern(660), 20));
    for (int i = 0; i < 1000; ++i) {
        fixture.event("AudioReceived", event);
    }
    QCOMPARE(calls.size(), std::size_t{3000});
    QCOMPARE(fixture.framework.names(), QStringList{"StartTalk"}); // the downlink sends nothing
}

QTEST_GUILESS_MAIN(TestTalkDownlink)
#include "tst_talkdownlink.moc"
