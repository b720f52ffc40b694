// Playbacks on devices that fail, end and are stopped at any moment.

#include "tests/server/AwkwardServer.h"
#include "tests/support/SoundFiles.h"
#include "tests/support/WavFiles.h"

#include <QDir>

/** A server with the speakers Hall and Roof in one group, and a file that plays on the group. */
struct Playing : Awkward
{
    explicit Playing(const QString& sound)
    {
        hall = addSpeaker("Hall");
        roof = addSpeaker("Roof");
        harness->upload(sound);
        group = harness->addGroup("all", QString("%1,%2").arg(hall).arg(roof));
        harness->replies.clear();
        request = harness->submit("PlayGroupAudio", QVariantMap{{"groupID", group}, {"audioFileId", 1}});
        harness->waitForReply(request);
    }

    AwkwardPlayback& playback() { return *devices->playbacks.at(0); }
    quint64 playOn(int device)
    {
        return harness->submit("PlayAudio", QVariantMap{{"ipAudioId", device}, {"audioFileId", 1}});
    }

    /** Waits for the end of the playback, and returns its last reply; all others are successes before it. */
    ServerReply lastReply()
    {
        ServerHarness::waitFor([&] { return devices->playbacks.at(0).isNull(); });
        QCoreApplication::processEvents();
        std::vector<ServerReply> own;
        for (const auto& answer : harness->replies) {
            if (answer.request == request) {
                own.push_back(answer.reply);
            }
        }
        for (std::size_t i = 0; i + 1 < own.size(); ++i) {
            if (own[i].returnCode != ReturnCode::success || own[i].result.toMap()["progress"].toInt() > 99) {
                return {"not the last", QVariant(), QString()};
            }
        }
        return own.empty() ? ServerReply() : own.back();
    }

    int hall = 0;
    int roof = 0;
    int group = 0;
    quint64 request = 0;
};

using End = std::function<void(Playing&)>; ///< What ends a playback.
Q_DECLARE_METATYPE(End)

class TestPlaybacks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void groupOfTwoKinds();
    void speakerFailsWhilePlaying();
    void groupWithoutADeletedDevice();
    void startsInStepAfterTheLeadTime();
    void stopsOneOfTwo();
    void lastReply_data();
    void lastReply();
    void lastReplyGoesToWhoAsked();
    void partlyTakenGoesOn();
    void progressIsTheFurthest();
    void sameProgressIsNotRepeated();
    void brokenInOnePart();

private:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_folder;
};

void TestPlaybacks::initTestCase()
{
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.5, 1.0, 16000), 16000));
}

void TestPlaybacks::groupOfTwoKinds()
{
    Awkward server;
    ServerHarness& harness = *server.harness;
    const int awkward = server.addSpeaker("Hall");
    const int simulated = harness.addDevice("Stairs");
    harness.upload(path("tone.wav"));
    harness.addGroup("all", QString("%1,%2").arg(awkward).arg(simulated));
    const auto before = std::chrono::steady_clock::now();
    QCOMPARE(harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}}).returnCode,
             ReturnCode::success);
    AwkwardPlayback& playback = *server.devices->playbacks.at(0);
    QCOMPARE(playback.speakers, QList<int>{awkward});
    QCOMPARE(server.devices->passwords, QStringList{"p"});
    QVERIFY(playback.start >= before && playback.start <= std::chrono::steady_clock::now());
    // The whole file for each kind; it has ended when it has ended everywhere.
    QVERIFY(ServerHarness::waitFor(
        [&] { return WavFiles::read(harness.speakerRecording(simulated)).size() >= 16000; }));
    QVERIFY(playback.take(15000));
    QVERIFY(!playback.take(15000));
    const auto progress = [&] { return harness.replies.back().reply.result.toMap()["progress"].toInt(); };
    QVERIFY(ServerHarness::waitFor([&] { return progress() == 99; }));
    playback.end();
    QVERIFY(ServerHarness::waitFor([&] { return progress() == 100; }));
    QVERIFY(ServerHarness::waitFor([&] { return server.devices->playbacks.at(0).isNull(); }));
    QVERIFY(harness.events.empty());
}

void TestPlaybacks::groupWithoutADeletedDevice()
{
    Awkward server;
    ServerHarness& harness = *server.harness;
    const int gone = server.addSpeaker("Hall");
    const int stays = server.addSpeaker("Stairs");
    harness.upload(path("tone.wav"));
    harness.addGroup("all", QString("%1,%2").arg(gone).arg(stays));
    QCOMPARE(harness.ask("DeleteIPAudio", gone).returnCode, ReturnCode::success);
    QCOMPARE(harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}}).returnCode,
             ReturnCode::success);
    QCOMPARE(server.devices->playbacks.at(0)->speakers, QList<int>{stays});
    QCOMPARE(harness.ask("DeleteNetworkAudioGroup", 1).returnCode, ReturnCode::success);
    QCOMPARE(harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}}).returnCode,
             ReturnCode::noSuchGroup);
}

void TestPlaybacks::startsInStepAfterTheLeadTime()
{
    Awkward server;
    ServerHarness& harness = *server.harness;
    server.devices->leadTime = std::chrono::milliseconds(400);
    const int awkward = server.addSpeaker("Hall");
    const int simulated = harness.addDevice("Stairs");
    harness.upload(path("tone.wav"));
    harness.addGroup("all", QString("%1,%2").arg(awkward).arg(simulated));
    const auto before = std::chrono::steady_clock::now();
    harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}});
    const auto after = std::chrono::steady_clock::now();
    const auto start = server.devices->playbacks.at(0)->start;
    QVERIFY(start >= before + server.devices->leadTime && start <= after + server.devices->leadTime);
    // Nobody begins before it.
    QVERIFY(ServerHarness::waitFor([&] { return QFile::exists(harness.speakerRecording(simulated)); }));
    QVERIFY(std::chrono::steady_clock::now() >= start);
}

void TestPlaybacks::speakerFailsWhilePlaying()
{
    Playing server(path("tone.wav"));
    ServerHarness& harness = *server.harness;
    AwkwardPlayback& playback = server.playback();
    playback.fail(server.roof, "it hangs");
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(harness.events[0].name, QString("PlayAudioFailed"));
    QCOMPARE(harness.events[0].payload["deviceName"], QVariant("Roof"));
    QCOMPARE(harness.events[0].payload["error"], QVariant("it hangs"));
    QCOMPARE(playback.speakers, QList<int>{server.hall});
    playback.fail(server.roof, "it hangs"); // it has been said
    playback.fail(4711, "nobody");
    QCOMPARE(server.settled(), std::size_t{1});
    playback.fail(server.hall, "it hangs, too");
    QVERIFY(server.waitForEvents(2));
    QVERIFY(ServerHarness::waitFor([&] { return server.devices->playbacks.at(0).isNull(); }));
}

void TestPlaybacks::stopsOneOfTwo()
{
    Playing server(path("tone.wav"));
    ServerHarness& harness = *server.harness;
    QCOMPARE(harness.ask("StopCurrentAudio", server.hall).returnCode, ReturnCode::success);
    QCOMPARE(server.devices->playbacks.at(0)->speakers, QList<int>{server.roof});
    QCOMPARE(server.devices->stoppedPlaybacks, 0);
    harness.submit("StopCurrentAudio", server.roof);
    QCOMPARE(server.devices->stoppedPlaybacks, 1); // at once, whenever it is deleted
    QVERIFY(ServerHarness::waitFor([&] { return server.devices->playbacks.at(0).isNull(); }));
}

void TestPlaybacks::lastReply_data()
{
    QTest::addColumn<End>("end");
    QTest::addColumn<QString>("code");
    const auto row = [](const char* name, const End& end, const QString& code) {
        QTest::newRow(name) << end << code;
    };
    row(
        "to the end", [](Playing& on) { on.playback().end(); }, ReturnCode::success);
    row(
        "stopped", [](Playing& on) { on.harness->submit("StopCurrentGroupAudio", on.group); },
        ReturnCode::playbackStopped);
    row(
        "stopped one by one",
        [](Playing& on) {
            on.harness->submit("StopCurrentAudio", on.hall);
            on.harness->submit("StopCurrentAudio", on.roof);
        },
        ReturnCode::playbackStopped);
    row(
        "stopped by another client",
        [](Playing& on) {
            ServerSession other(*on.harness->server);
            other.submit("StopCurrentGroupAudio", on.group, 1);
        },
        ReturnCode::playbackStopped);
    row(
        "deleted",
        [](Playing& on) {
            on.harness->submit("DeleteIPAudio", on.hall);
            on.harness->submit("DeleteIPAudio", on.roof);
        },
        ReturnCode::playbackStopped);
    row(
        "taken",
        [](Playing& on) {
            on.playOn(on.hall);
            on.playOn(on.roof);
        },
        ReturnCode::speakerTaken);
    row(
        "lost",
        [](Playing& on) {
            on.playback().fail(on.hall, "it hangs");
            on.playback().fail(on.roof, "it hangs");
        },
        ReturnCode::speakerOffline);
    row(
        "one lost, one to the end",
        [](Playing& on) {
            on.playback().fail(on.hall, "it hangs");
            on.playback().end();
        },
        ReturnCode::success);
}

void TestPlaybacks::lastReply()
{
    QFETCH(End, end);
    QFETCH(QString, code);
    Playing server(path("tone.wav"));
    end(server);
    const ServerReply last = server.lastReply();
    QCOMPARE(last.returnCode, code);
    const bool success = code == ReturnCode::success;
    QCOMPARE(last.errorText.isEmpty(), success);
    const QVariant expected = success ? QVariant(QVariantMap{{"progress", 100}}) : QVariant(server.group);
    QCOMPARE(last.result, expected);
    QCOMPARE(last.result.type(), expected.type());
    server.harness->ask("GetAudioFile");
    QCOMPARE(server.harness->replies.size(), std::size_t{1}); // no progress comes behind it
}

void TestPlaybacks::lastReplyGoesToWhoAsked()
{
    Playing server(path("tone.wav"));
    ServerHarness& harness = *server.harness;
    const quint64 hall = server.playOn(server.hall);
    const quint64 roof = server.playOn(server.roof);
    QCOMPARE(server.lastReply().returnCode, ReturnCode::speakerTaken);
    harness.waitForReply(roof);
    harness.replies.clear();
    harness.submit("StopCurrentGroupAudio", server.group);
    const ServerReply ofHall = harness.waitForReply(hall);
    QCOMPARE(ofHall.returnCode, ReturnCode::playbackStopped);
    QCOMPARE(ofHall.result, QVariant(server.hall));
    QCOMPARE(harness.waitForReply(roof).result, QVariant(server.roof));
    // A client that has left gets none.
    const quint64 last = server.playOn(server.hall);
    QCOMPARE(harness.waitForReply(last).returnCode, ReturnCode::success);
    harness.session.reset();
    harness.replies.clear();
    server.devices->playbacks.back()->end();
    QVERIFY(ServerHarness::waitFor([&] { return server.devices->playbacks.back().isNull(); }));
    QVERIFY(harness.replies.empty());
}

void TestPlaybacks::partlyTakenGoesOn()
{
    Playing server(path("tone.wav"));
    server.playOn(server.hall);
    QCOMPARE(server.playback().speakers, QList<int>{server.roof});
    QVERIFY(server.playback().take(15000));
    server.playback().end();
    QCOMPARE(server.lastReply().returnCode, ReturnCode::success);
}

void TestPlaybacks::progressIsTheFurthest()
{
    Awkward server;
    ServerHarness& harness = *server.harness;
    server.devices->leadTime = std::chrono::minutes(10); // the simulated one does not begin
    const int awkward = server.addSpeaker("Hall");
    const int simulated = harness.addDevice("Stairs");
    harness.upload(path("tone.wav"));
    harness.addGroup("all", QString("%1,%2").arg(awkward).arg(simulated));
    harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}});
    QVERIFY(server.devices->playbacks.at(0)->take(8000));
    QVERIFY(ServerHarness::waitFor(
        [&] { return harness.replies.back().reply.result.toMap()["progress"].toInt() == 50; }));
}

void TestPlaybacks::sameProgressIsNotRepeated()
{
    Playing server(path("tone.wav"));
    ServerHarness& harness = *server.harness;
    const quint64 hall = server.playOn(server.hall);
    const quint64 roof = server.playOn(server.roof);
    const auto halves = [&](quint64 request) {
        return std::count_if(harness.replies.begin(), harness.replies.end(), [&](const auto& answer) {
            return answer.request == request && answer.reply.result.toMap()["progress"].toInt() == 50;
        });
    };
    QVERIFY(server.devices->playbacks.at(1)->take(8000));
    QVERIFY(ServerHarness::waitFor([&] { return halves(hall) > 0; }));
    QVERIFY(server.devices->playbacks.at(2)->take(8000));
    QVERIFY(ServerHarness::waitFor([&] { return halves(roof) > 0; })); // with the next look at both
    QCOMPARE(static_cast<int>(halves(hall)), 1);
}

namespace {

/** Fills what is in the later half of the frames of an ADTS file (ISO/IEC 13818-7), but not their headers. */
void damageLaterFrames(const QString& path)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    constexpr int headerSize = 7;
    int size = 0;
    for (int at = 0; at + headerSize <= bytes.size(); at += size) {
        const auto byte = [&](int index) { return static_cast<quint8>(bytes.at(at + index)); };
        size = (byte(3) & 3) << 11 | byte(4) << 3 | byte(5) >> 5;
        QVERIFY(size > headerSize && at + size <= bytes.size());
        if (at > bytes.size() / 2) {
            bytes.replace(at + headerSize, size - headerSize, QByteArray(size - headerSize, '\xFF'));
        }
    }
    QVERIFY(file.seek(0));
    QCOMPARE(file.write(bytes), qint64{bytes.size()});
}

} // namespace

void TestPlaybacks::brokenInOnePart()
{
    ServerConfig config;
    config.dataDirectory = path("broken");
    Awkward server(TalkLimits(), config);
    ServerHarness& harness = *server.harness;
    const int awkward = server.addSpeaker("Hall");
    const int simulated = harness.addDevice("Stairs");
    QVERIFY(SoundFiles::write(path("tone.aac"), WavFiles::sine(440, 0.3, 3.0, 44100), 44100));
    QCOMPARE(harness.upload(path("tone.aac")), 1);
    const QDir files(config.dataDirectory + "/files");
    damageLaterFrames(files.filePath(files.entryList(QDir::Files)[0]));
    harness.addGroup("all", QString("%1,%2").arg(awkward).arg(simulated));
    QCOMPARE(harness.ask("PlayGroupAudio", QVariantMap{{"groupID", 1}, {"audioFileId", 1}}).returnCode,
             ReturnCode::success);
    QVERIFY(server.waitForEvents(1));
    QCOMPARE(harness.events[0].payload["deviceName"], QVariant("Stairs"));
    // The other has not come to the damage.
    server.devices->playbacks.at(0)->end();
    QVERIFY(ServerHarness::waitFor([&] { return server.devices->playbacks.at(0).isNull(); }));
    QCOMPARE(harness.replies.back().reply.returnCode, ReturnCode::brokenFile);
    QCOMPARE(server.settled(), std::size_t{1});
}

QTEST_GUILESS_MAIN(TestPlaybacks)
#include "tst_playbacks.moc"
