// The one clock of all simulated voices, with a time that the test sets, and what voices say by it.

#include "server/devices/simulated/AlarmClock.h"
#include "server/devices/simulated/CameraVoice.h"
#include "tests/support/WavFiles.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QStringList>
#include <QTest>

#include <optional>

using namespace std::chrono_literals;

class TestAlarmClock : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void earliestFirst();
    void oncePerSetting();
    void clearedAndMoved();
    void ringingChangesOthers();
    void ringingDestroysOthers();
    void timerWaitsForTheEarliest();
    void echoesComeAtTheirTimes();
    void voicesOfOneClock();
    void endDropsWhatWaits();
    void waitingSoundIsBounded();
    void fileIsSaidInWholeFrames();

private:
    std::shared_ptr<AlarmClock> clock()
    {
        return std::make_shared<AlarmClock>([this] { return m_now; });
    }

    void setTime(AlarmClock& clock, std::chrono::nanoseconds sinceStart)
    {
        m_now = m_start + sinceStart;
        clock.ring();
    }

    const AlarmClock::Time m_start = AlarmClock::Time() + 1000s;
    AlarmClock::Time m_now;
};

namespace {

const std::vector<std::int16_t> sound = WavFiles::sine(440, 0.5, 0.08, 8000); // a frame of mu-law

CameraVoiceConfig echo(int delay)
{
    CameraVoiceConfig config;
    config.kind = CameraVoiceConfig::Echo;
    config.echoDelay = delay;
    return config;
}

VoicePacket packet(const QSignalSpy& spy, int index)
{
    return spy[index][0].value<VoicePacket>();
}

} // namespace

void TestAlarmClock::init()
{
    m_now = m_start;
}

void TestAlarmClock::earliestFirst()
{
    const auto clock = this->clock();
    QStringList rung;
    AlarmClock::Alarm late(clock, [&] { rung << "late"; });
    AlarmClock::Alarm early(clock, [&] { rung << "early"; });
    AlarmClock::Alarm never(clock, [&] { rung << "never"; });
    late.setTo(m_start + 2ms);
    early.setTo(m_start + 1ms);
    never.setTo(m_start + 3ms);
    setTime(*clock, 999us);
    QCOMPARE(rung, QStringList());
    setTime(*clock, 2ms);
    QCOMPARE(rung, (QStringList{"early", "late"}));
}

void TestAlarmClock::oncePerSetting()
{
    const auto clock = this->clock();
    int rung = 0;
    AlarmClock::Alarm alarm(clock, [&] { ++rung; });
    alarm.setTo(m_start);
    setTime(*clock, 1ms);
    setTime(*clock, 2ms);
    QCOMPARE(rung, 1);
    alarm.setTo(m_start + 3ms);
    setTime(*clock, 3ms);
    QCOMPARE(rung, 2);
}

void TestAlarmClock::clearedAndMoved()
{
    const auto clock = this->clock();
    QStringList rung;
    AlarmClock::Alarm cleared(clock, [&] { rung << "cleared"; });
    AlarmClock::Alarm moved(clock, [&] { rung << "moved"; });
    auto gone = std::make_unique<AlarmClock::Alarm>(clock, [&] { rung << "gone"; });
    cleared.setTo(m_start + 1ms);
    moved.setTo(m_start + 1ms);
    gone->setTo(m_start + 1ms);
    cleared.clear();
    moved.setTo(m_start + 2ms);
    gone.reset();
    setTime(*clock, 1ms);
    QCOMPARE(rung, QStringList());
    setTime(*clock, 2ms);
    QCOMPARE(rung, QStringList("moved"));
}

void TestAlarmClock::ringingChangesOthers()
{
    const auto clock = this->clock();
    QStringList rung;
    AlarmClock::Alarm second(clock, [&] { rung << "second"; });
    AlarmClock::Alarm third(clock, [&] { rung << "third"; });
    AlarmClock::Alarm first(clock, [&] {
        rung << "first";
        second.clear();
        third.setTo(m_now); // due at once
    });
    first.setTo(m_start + 1ms);
    second.setTo(m_start + 1ms + 1ns);
    setTime(*clock, 2ms);
    QCOMPARE(rung, (QStringList{"first", "third"}));
}

void TestAlarmClock::ringingDestroysOthers()
{
    const auto clock = this->clock();
    auto other = std::make_unique<AlarmClock::Alarm>(clock, [] { QFAIL("it is gone"); });
    AlarmClock::Alarm first(clock, [&] { other.reset(); });
    first.setTo(m_start);
    other->setTo(m_start + 1ns);
    setTime(*clock, 1ms);
    QVERIFY(!other);
}

void TestAlarmClock::timerWaitsForTheEarliest()
{
    const auto clock = std::make_shared<AlarmClock>();
    QElapsedTimer elapsed;
    elapsed.start();
    std::optional<qint64> early;
    std::optional<qint64> late;
    AlarmClock::Alarm hour(clock, [] { QFAIL("an hour early"); });
    AlarmClock::Alarm first(clock, [&] { early = elapsed.nsecsElapsed(); });
    AlarmClock::Alarm second(clock, [&] { late = elapsed.nsecsElapsed(); });
    hour.setTo(clock->now() + 1h);
    second.setTo(clock->now() + 80ms);
    first.setTo(clock->now() + 40ms);
    QTRY_VERIFY(late);
    QVERIFY(early && *early >= 40000000 && *early < *late);
    QVERIFY(*late >= 80000000);
}

void TestAlarmClock::echoesComeAtTheirTimes()
{
    const auto clock = this->clock();
    CameraVoice voice(echo(500), clock);
    QVERIFY(voice.start());
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    voice.hear(640, sound);
    m_now += 80ms;
    voice.hear(1280, sound);
    setTime(*clock, 499999us);
    QCOMPARE(spy.size(), 0);
    setTime(*clock, 500ms);
    QCOMPARE(spy.size(), 1);
    setTime(*clock, 579999us);
    QCOMPARE(spy.size(), 1);
    setTime(*clock, 580ms);
    QCOMPARE(spy.size(), 2);
    QCOMPARE(packet(spy, 0).position, 640U);
    QCOMPARE(packet(spy, 1).position, 1280U);
    QCOMPARE(packet(spy, 1).captureTime - packet(spy, 0).captureTime, std::uint64_t{80000});
}

void TestAlarmClock::voicesOfOneClock()
{
    const auto clock = this->clock();
    CameraVoice slow(echo(200), clock);
    CameraVoice quick(echo(100), clock);
    QStringList said;
    connect(&slow, &CameraVoice::spoke, [&] { said << "slow"; });
    connect(&quick, &CameraVoice::spoke, [&] { said << "quick"; });
    slow.hear(0, sound);
    quick.hear(0, sound);
    m_now += 150ms;
    quick.hear(640, sound);
    setTime(*clock, 1s); // late: all of it at once, and in the order of its times
    QCOMPARE(said, (QStringList{"quick", "slow", "quick"}));
}

void TestAlarmClock::endDropsWhatWaits()
{
    const auto clock = this->clock();
    CameraVoice voice(echo(100), clock);
    CameraVoice other(echo(100), clock);
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    QSignalSpy otherSpy(&other, &CameraVoice::spoke);
    voice.hear(0, sound);
    other.hear(0, sound);
    voice.stop();
    voice.hear(640, sound);
    setTime(*clock, 1s);
    QCOMPARE(spy.size(), 0);
    QCOMPARE(otherSpy.size(), 1);
}

void TestAlarmClock::waitingSoundIsBounded()
{
    const auto clock = this->clock();
    CameraVoice voice(echo(1000), clock);
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    const std::vector<std::int16_t> second(8000);
    for (int i = 0; i < 100; ++i) {
        voice.hear(static_cast<std::uint32_t>(i) * 8000, second);
    }
    setTime(*clock, 1s);
    QCOMPARE(spy.size(), (1000 + CameraVoice::maxAhead) / 80); // the oldest
    QCOMPARE(packet(spy, 0).position, 0U);
    voice.hear(0, second); // there is room again
    setTime(*clock, 2s);
    QVERIFY(spy.size() > (1000 + CameraVoice::maxAhead) / 80);
}

void TestAlarmClock::fileIsSaidInWholeFrames()
{
    const auto clock = this->clock();
    CameraVoiceConfig config;
    config.kind = CameraVoiceConfig::File;
    config.file = ANNOUNCEMENT_WAV;
    CameraVoice voice(config, clock);
    QSignalSpy spy(&voice, &CameraVoice::spoke);
    QVERIFY(voice.start());
    setTime(*clock, 79999us);
    QCOMPARE(spy.size(), 0);
    setTime(*clock, 80ms);
    QCOMPARE(spy.size(), 1);
    setTime(*clock, 159999us);
    QCOMPARE(spy.size(), 1);
    setTime(*clock, 400ms);
    QCOMPARE(spy.size(), 5);
}

QTEST_GUILESS_MAIN(TestAlarmClock)
#include "tst_alarmclock.moc"
