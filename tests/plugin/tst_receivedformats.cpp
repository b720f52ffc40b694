// Received packets of every rate and channel count, through the plug-in to the real Qt and a real sound
// server.

#include "src/PluginVoiceDesk.h"
#include "src/playback/AudioRenderer.h"
#include "tests/support/MediaPackets.h"
#include "tests/support/PulseServer.h"
#include "tests/support/SoundTest.h"

#include <QTest>

#include <memory>

class TestReceivedFormats : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void lowRatesAreNotOpened_data();
    void lowRatesAreNotOpened();
    void lowestRateIsPlayed();
    void missingRate();
    void anyRateAndChannelCount();

private:
    QByteArray streams() const;

    std::unique_ptr<PulseServer> m_pulse;
};

namespace {

/** A plug-in with one open talk. */
struct Talk
{
    Talk()
    {
        plugin.InitialPluginBase(nullptr, nullptr, nullptr);
        QList<QVariant> targets{QVariantMap{{"camId", "cam"}, {"talkToken", "t"}, {"relayPath", ""}}};
        plugin.setTalkTargetList(targets);
    }

    void receive(QVariantMap fields)
    {
        const QByteArray packet(642, '\x55');
        fields.insert("Token", "t");
        fields.insert("AudioData", QString::fromLatin1(packet.toBase64()));
        fields.insert("BitstreamSize", 642U);
        fields.insert("FrameNumber", 1U);
        plugin.EventProcessor("AudioReceived", 0, 0, 0, QVariantMap{{"AudioReceived", fields}}, QString());
    }

    void receive(quint32 rate, quint32 channels, quint32 streamType = 8192)
    {
        receive({{"AudioSamplingFreq", rate}, {"AudioChannelNum", channels}, {"StreamType", streamType}});
    }

    PluginVoiceDesk plugin;
};

} // namespace

void TestReceivedFormats::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
}

/** What the sound server plays; empty for nothing. */
QByteArray TestReceivedFormats::streams() const
{
    return m_pulse->control({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sink-inputs")})
        .trimmed();
}

void TestReceivedFormats::lowRatesAreNotOpened_data()
{
    QTest::addColumn<quint32>("rate");
    for (const quint32 rate : {0U, 1U, 2U, 25U, 48U, 49U}) {
        QTest::addRow("%u Hz", rate) << rate;
    }
}

void TestReceivedFormats::lowRatesAreNotOpened()
{
    QFETCH(quint32, rate);
    {
        Talk talk;
        talk.receive(rate, 1);
        QCOMPARE(streams(), QByteArray());
        talk.receive(8000, 1); // sound that can be played is heard after it
        QTRY_VERIFY(streams().contains("8000Hz"));
    }
    QTRY_COMPARE(streams(), QByteArray());

    AudioRenderer renderer;
    renderer.SetAudioOn(true);
    for (int i = 0; i < 3; ++i) {
        renderer.Play(MediaPackets::make(QByteArray(640, 'x'), {8192, rate}), true);
        QVERIFY(renderer.state() == AudioRenderer::State::MuteSink);
    }
    renderer.Play(MediaPackets::make(QByteArray(640, 'x')), true);
    QVERIFY(renderer.state() == AudioRenderer::State::Playing);
}

void TestReceivedFormats::lowestRateIsPlayed()
{
    QTRY_COMPARE(streams(), QByteArray());
    Talk talk;
    talk.receive(50, 1);
    QTRY_VERIFY(streams().contains("50Hz"));
}

void TestReceivedFormats::missingRate()
{
    Talk talk;
    talk.receive({});
    talk.receive({{"AudioChannelNum", 1U}, {"StreamType", 8192U}});
    talk.receive({{"AudioSamplingFreq", "no number"}, {"AudioChannelNum", 1U}, {"StreamType", 8192U}});
    talk.receive(8000, 1);
    QTRY_VERIFY(streams().contains("8000Hz"));
}

void TestReceivedFormats::anyRateAndChannelCount()
{
    const quint32 rates[] = {0,      1,      49,         50,         51,         999,        7999,      48001,
                             384000, 768000, 0x7FFFFFFF, 0x80000000, 0x80000001, 0xFFFFFFCE, 0xFFFFFFFF};
    Talk talk;
    for (const quint32 rate : rates) {
        for (const quint32 channels : {0U, 1U, 2U, 8U, 9U, 32U, 33U, 255U, 256U, 257U, 0xFFFFFFFFU}) {
            for (const quint32 streamType : {1024U, 8192U, 3U}) {
                talk.receive(rate, channels, streamType);
                talk.receive(rate, channels, streamType);
            }
        }
    }
    talk.receive(8000, 1);
    QTRY_VERIFY(streams().contains("8000Hz"));
}

SOUND_TEST_MAIN(TestReceivedFormats)
#include "tst_receivedformats.moc"
