// Simulated speakers: what they play is measured in their recordings.

#include "audio/PacketHeader.h"
#include "tests/server/ServerHarness.h"
#include "tests/support/SignalMeasure.h"
#include "tests/support/WavFiles.h"

#include <cmath>

class TestSpeakers : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void fileIsPlayedWhole();
    void progressRises();
    void groupsPlayInStep();
    void stopEndsIt();
    void groupStopLeavesOthers();
    void newFileTakesThePlace();
    void offlineSpeaker();
    void kindThatIsNotThere();
    void offlineMember();
    void brokenFile();
    void emptyGroup();
    void talkToSpeakers();
    void refusedTalks();
    void talkAndFileAreMixed();
    void alarmNameComesAlong();
    void clientMayLeave();

private:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }
    static bool ended(const ServerHarness& harness)
    {
        return !harness.replies.empty() &&
               harness.replies.back().reply.result.toMap()["progress"].toInt() == 100;
    }

    QTemporaryDir m_folder;
};

namespace {

QVariantMap play(int device, int file)
{
    return {{"ipAudioId", device}, {"audioFileId", file}, {"ipAudioStatus", 1}};
}

/** Where the sound begins, samples. */
int onset(const WavFiles::Samples& samples)
{
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (std::abs(samples[i]) > 1000) {
            return static_cast<int>(i);
        }
    }
    return -1;
}

double loudSeconds(const WavFiles::Samples& samples)
{
    int loud = 0;
    for (std::size_t i = 0; i + 160 <= samples.size(); i += 160) {
        const auto begin = samples.begin() + static_cast<std::ptrdiff_t>(i);
        loud += SignalMeasure::levelDbfs(WavFiles::Samples(begin, begin + 160)) > -40 ? 1 : 0;
    }
    return loud * 0.01;
}

/** What a speaker has played: its recording is complete when the server ends. */
WavFiles::Samples recordingOf(ServerHarness& harness, int speaker, int* rate = nullptr)
{
    harness.session.reset();
    harness.server.reset();
    return WavFiles::read(harness.speakerRecording(speaker), rate);
}

QString talkPacket(int number, double frequency)
{
    PacketHeader header;
    header.channels = 1;
    header.streamType = 8192;
    header.sampleRate = 8000;
    header.position = static_cast<std::uint32_t>(number) * 640;
    const auto bytes = header.toBytes();
    const auto tone = WavFiles::sine(frequency, 0.3, 0.08 * (number + 1), 8000);
    const QByteArray bitstream = WavFiles::toMuLaw(WavFiles::Samples(tone.end() - 640, tone.end()));
    return QString::fromLatin1(
        (QByteArray(reinterpret_cast<const char*>(bytes.data()), static_cast<int>(bytes.size())) + bitstream)
            .toBase64());
}

} // namespace

void TestSpeakers::initTestCase()
{
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.5, 1.0, 16000), 16000));
    QVERIFY(WavFiles::write(path("other.wav"), WavFiles::sine(1500, 0.5, 1.0, 16000), 16000));
    QVERIFY(WavFiles::write(path("long.wav"), WavFiles::sine(440, 0.5, 20.0, 16000), 16000));
}

void TestSpeakers::fileIsPlayedWhole()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.upload(path("tone.wav"));
    const ServerReply started = harness.ask("PlayAudio", play(1, 1));
    QCOMPARE(started.returnCode, QString("0"));
    QCOMPARE(started.result.toMap(), (QVariantMap{{"progress", 0}}));
    QVERIFY(ServerHarness::waitFor([&] { return ended(harness); }));
    int rate = 0;
    const auto heard = recordingOf(harness, 1, &rate);
    QCOMPARE(rate, 16000);
    const int begin = onset(heard);
    QVERIFY(begin >= 0);
    QVERIFY(std::abs(loudSeconds(heard) - 1.0) < 0.03);
    const WavFiles::Samples tone(heard.begin() + begin, heard.begin() + begin + 15000);
    QVERIFY(std::abs(SignalMeasure::toneFrequency(tone, 16000) - 440) < 0.5);
}

void TestSpeakers::progressRises()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.upload(path("tone.wav"));
    harness.ask("PlayAudio", play(1, 1));
    QVERIFY(ServerHarness::waitFor([&] { return ended(harness); }));
    QVERIFY(harness.replies.size() >= 4);
    int last = -1;
    for (const auto& answer : harness.replies) {
        QCOMPARE(answer.command, QString("PlayAudio"));
        QCOMPARE(answer.reply.returnCode, QString("0"));
        const int progress = answer.reply.result.toMap()["progress"].toInt();
        QVERIFY(progress > last);
        last = progress;
    }
    QCOMPARE(last, 100);
    QVERIFY(harness.events.empty());
}

void TestSpeakers::groupsPlayInStep()
{
    ServerHarness harness;
    for (int i = 0; i < 8; ++i) {
        harness.addDevice(QString::number(i));
    }
    harness.upload(path("tone.wav"));
    harness.upload(path("other.wav"));
    harness.addGroup("all", "1,2,3,4,5,6,7,8");
    // One of them has played before, so its file has a past.
    harness.ask("PlayAudio", play(1, 2));
    QVERIFY(ServerHarness::waitFor([&] { return ended(harness); }));
    harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}});
    QVERIFY(ServerHarness::waitFor([&] { return ended(harness); }));
    QList<int> onsets;
    for (int id = 1; id <= 8; ++id) {
        auto heard = recordingOf(harness, id);
        if (id == 1) {
            std::fill(heard.begin(), heard.begin() + onset(heard) + 16000, std::int16_t{0}); // the other file
        }
        onsets.append(onset(heard));
    }
    const auto [first, last] = std::minmax_element(onsets.begin(), onsets.end());
    QVERIFY(*first > 0);
    // 20 ms are asked for; one clock drives them all, so they are together to the sample.
    QVERIFY2(*last - *first <= 16, qPrintable(QString::number(*last - *first)));
}

void TestSpeakers::stopEndsIt()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.addDevice("b");
    harness.upload(path("long.wav"));
    const quint64 stopped = harness.submit("PlayAudio", play(1, 1));
    harness.ask("PlayAudio", play(2, 1));
    const auto size = [&](int id) { return WavFiles::read(harness.speakerRecording(id)).size(); };
    QVERIFY(ServerHarness::waitFor([&] { return size(1) > 8000; }));
    QCOMPARE(harness.ask("StopCurrentAudio", 1).returnCode, QString("0"));
    const auto played = size(1);
    const auto other = size(2);
    harness.replies.clear();
    QVERIFY(ServerHarness::waitFor([&] { return size(2) > other + 4000; })); // half a second
    QCOMPARE(size(1), played);
    QVERIFY(std::none_of(harness.replies.begin(), harness.replies.end(), [&](const auto& answer) {
        return answer.request == stopped; // no progress of what was stopped
    }));
    QCOMPARE(harness.ask("StopCurrentAudio", 1).returnCode, QString("0")); // nothing plays: nothing to refuse
}

void TestSpeakers::groupStopLeavesOthers()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.addDevice("b");
    harness.addDevice("c");
    harness.upload(path("long.wav"));
    harness.addGroup("all", "1,2,3");
    harness.addGroup("some", "1,2");
    harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}});
    const auto size = [&](int id) { return WavFiles::read(harness.speakerRecording(id)).size(); };
    QVERIFY(ServerHarness::waitFor([&] { return size(3) > 4000; }));
    QCOMPARE(harness.ask("StopCurrentGroupAudio", 2).returnCode, QString("0"));
    const auto stopped = size(1);
    const auto running = size(3);
    QVERIFY(ServerHarness::waitFor([&] { return size(3) > running + 4000; }));
    QCOMPARE(size(1), stopped);
    QCOMPARE(size(2), stopped);
}

void TestSpeakers::newFileTakesThePlace()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.upload(path("long.wav"));
    harness.upload(path("other.wav"));
    harness.ask("PlayAudio", play(1, 1));
    QVERIFY(
        ServerHarness::waitFor([&] { return WavFiles::read(harness.speakerRecording(1)).size() > 8000; }));
    harness.ask("PlayAudio", play(1, 2));
    QVERIFY(ServerHarness::waitFor([&] { return ended(harness); }));
    const auto heard = WavFiles::read(harness.speakerRecording(1));
    const WavFiles::Samples tail(heard.end() - 12000, heard.end() - 2000);
    QVERIFY(std::abs(SignalMeasure::toneFrequency(tail, 16000) - 1500) < 2);
}

void TestSpeakers::offlineSpeaker()
{
    ServerHarness harness(ServerConfig(), ServerHarness::offlineAt("10.0.0.66"));
    harness.addDevice("Gate", "10.0.0.66");
    harness.upload(path("tone.wav"));
    const ServerReply reply = harness.ask("PlayAudio", play(1, 1));
    QCOMPARE(reply.returnCode, QString("206"));
    QCOMPARE(reply.result, QVariant(1)); // a refusal carries the device's id
    QVERIFY(ServerHarness::waitFor([&] { return !harness.events.empty(); }));
    QCOMPARE(harness.events[0].name, QString("PlayAudioFailed"));
    QCOMPARE(harness.events[0].payload, (QVariantMap{{"deviceName", "Gate"},
                                                     {"audioName", "tone.wav"},
                                                     {"error", "the device is offline"},
                                                     {"alarmName", ""}}));
}

void TestSpeakers::kindThatIsNotThere()
{
    SimulatedConfig none;
    none.hasSpeakers = false;
    ServerHarness harness(ServerConfig(), none);
    harness.addDevice("Gate");
    harness.upload(path("tone.wav"));
    QCOMPARE(harness.ask("RetrieveIPAudioModel").result.toList().size(), 1); // its record is kept
    const ServerReply played = harness.ask("PlayAudio", play(1, 1));
    QCOMPARE(played.returnCode, QString("206"));
    QVERIFY(ServerHarness::waitFor([&] { return !harness.events.empty(); }));
    QCOMPARE(harness.events[0].payload["error"], QVariant("the device is offline"));
    const ServerReply talk = harness.ask("StartTalkToIPAudio", 1);
    QCOMPARE(talk.returnCode, QString("0"));
    QCOMPARE(talk.result.toMap(), (QVariantMap{{"error", "\"Gate\" is offline"}}));
}

void TestSpeakers::offlineMember()
{
    ServerHarness harness(ServerConfig(), ServerHarness::offlineAt("10.0.0.66"));
    harness.addDevice("Gate", "10.0.0.66");
    harness.addDevice("Dock");
    harness.upload(path("tone.wav"));
    harness.addGroup("g", "1,2");
    QCOMPARE(harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}}).returnCode,
             QString("0"));
    QVERIFY(ServerHarness::waitFor([&] { return ended(harness); }));
    QCOMPARE(harness.events.size(), std::size_t{1});
    QCOMPARE(harness.events[0].payload["deviceName"], QVariant("Gate"));
    QVERIFY(!QFile::exists(harness.speakerRecording(1)));
    QVERIFY(loudSeconds(recordingOf(harness, 2)) > 0.9);
}

void TestSpeakers::brokenFile()
{
    ServerConfig config;
    config.dataDirectory = path("data");
    ServerHarness harness(config);
    harness.addDevice("Gate");
    harness.upload(path("tone.wav"));
    const QDir files(config.dataDirectory + "/files");
    QFile content(files.filePath(files.entryList(QDir::Files)[0]));
    QVERIFY(content.open(QIODevice::WriteOnly));
    content.write("not a sound any more");
    content.close();
    const ServerReply reply = harness.ask("PlayAudio", play(1, 1));
    QCOMPARE(reply.returnCode, QString("422"));
    QCOMPARE(reply.result, QVariant(1));
    QVERIFY(ServerHarness::waitFor([&] { return !harness.events.empty(); }));
    QCOMPARE(harness.events[0].payload["error"], QVariant("the file cannot be decoded"));
}

void TestSpeakers::emptyGroup()
{
    ServerHarness harness;
    harness.upload(path("tone.wav"));
    harness.addGroup("g", "");
    QCOMPARE(harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}}).returnCode,
             QString("421"));
}

void TestSpeakers::talkToSpeakers()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.addDevice("b");
    QStringList tokens;
    for (int id = 1; id <= 2; ++id) {
        const ServerReply reply = harness.ask("StartTalkToIPAudio", id);
        QCOMPARE(reply.returnCode, QString("0"));
        QCOMPARE(reply.result.toMap()["deviceID"], QVariant(id));
        tokens.append(reply.result.toMap()["talkToken"].toString());
    }
    const QString targets = "<Dest>" + tokens[0] + "</Dest><Dest>" + tokens[1] + "</Dest>";
    for (int i = 0; i < 12; ++i) {
        QCOMPARE(harness.ask("TalkData", QVariantMap{{"targets", targets}, {"talkData", talkPacket(i, 700)}})
                     .returnCode,
                 QString("0"));
    }
    for (int id = 1; id <= 2; ++id) {
        QVERIFY(ServerHarness::waitFor(
            [&] { return loudSeconds(WavFiles::read(harness.speakerRecording(id))) > 0.9; }));
        const auto heard = WavFiles::read(harness.speakerRecording(id));
        const int begin = onset(heard);
        QVERIFY(std::abs(SignalMeasure::medianFrequency(
                             WavFiles::Samples(heard.begin() + begin, heard.begin() + begin + 12000), 16000) -
                         700) < 5);
    }
    QCOMPARE(harness.ask("StopTalkToIPAudio", 1).returnCode, QString("0"));
    QCOMPARE(harness.ask("StopTalk", QVariantMap{{"talkToken", tokens[1]}}).returnCode, QString("0"));
    QCOMPARE(harness.ask("StopTalkToIPAudio", 2).returnCode, QString("203"));
}

void TestSpeakers::refusedTalks()
{
    ServerHarness harness(ServerConfig(), ServerHarness::offlineAt("10.0.0.66"));
    harness.addDevice("Gate", "10.0.0.66");
    const ServerReply offline = harness.ask("StartTalkToIPAudio", 1);
    QCOMPARE(offline.returnCode, QString("0")); // the client tells people what stands in "error"
    QCOMPARE(offline.result.toMap()["error"], QVariant("\"Gate\" is offline"));
    QVERIFY(!harness.ask("StartTalkToIPAudio", 9).result.toMap()["error"].toString().isEmpty());
    const ServerReply text = harness.ask("StartTalkToIPAudio", "x");
    QCOMPARE(text.returnCode, ReturnCode::malformedRequest);
    QVERIFY(!text.errorText.isEmpty());
}

void TestSpeakers::talkAndFileAreMixed()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.upload(path("long.wav"));
    harness.ask("PlayAudio", play(1, 1));
    const QString token = harness.ask("StartTalkToIPAudio", 1).result.toMap()["talkToken"].toString();
    for (int i = 0; i < 12; ++i) {
        harness.ask("TalkData", QVariantMap{{"targets", "<Dest>" + token + "</Dest>"},
                                            {"talkData", talkPacket(i, 1700)}});
    }
    // Louder than the file alone while both sound.
    QVERIFY(ServerHarness::waitFor([&] {
        const auto heard = WavFiles::read(harness.speakerRecording(1));
        return std::any_of(heard.begin(), heard.end(), [](std::int16_t s) { return s > 20000; });
    }));
}

void TestSpeakers::alarmNameComesAlong()
{
    ServerHarness harness(ServerConfig(), ServerHarness::offlineAt("10.0.0.66"));
    harness.addDevice("Gate", "10.0.0.66");
    harness.upload(path("tone.wav"));
    QVariantMap payload = play(1, 1);
    payload["alarmName"] = "Fire";
    harness.ask("AlarmPlayIPAudio", payload);
    QVERIFY(ServerHarness::waitFor([&] { return !harness.events.empty(); }));
    QCOMPARE(harness.events[0].payload["alarmName"], QVariant("Fire"));
}

void TestSpeakers::clientMayLeave()
{
    ServerHarness harness;
    harness.addDevice("a");
    harness.upload(path("tone.wav"));
    harness.ask("PlayAudio", play(1, 1));
    harness.session.reset();
    QVERIFY(ServerHarness::waitFor(
        [&] { return loudSeconds(WavFiles::read(harness.speakerRecording(1))) > 0.95; }));
}

QTEST_GUILESS_MAIN(TestSpeakers)
#include "tst_speakers.moc"
