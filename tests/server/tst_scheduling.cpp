// Schedules by a clock of the test's: weeks go by in milliseconds.

#include "protocol/ScheduleRule.h"
#include "tests/server/ServerHarness.h"
#include "tests/support/WavFiles.h"

#include <QDir>
#include <QScopeGuard>

class TestScheduling : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void runs_data();
    void runs();
    void beforeTheZonesFirstChange();
    void skippedByTheZoneOfTheProcess();
    void endIsTheLastStart();
    void badRecords();
    void schedulesReallyPlay();
    void groupsAndDevicesPlayOnce();
    void disabledSchedulesRest();
    void isSwitchedOffWhateverWasDeleted();
    void neverRuns();
    void missedRunsAreNotMadeUpFor();
    void clockSetBack();
    void madeAfterItsTime();
    void wakesUpForARun();
    void restartInBetween();
    void deletedFileIsReported();
    void brokenFileIsReportedOnce();

private:
    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_folder;
};

namespace {

const QTimeZone berlin("Europe/Berlin");

QDateTime local(const QString& text)
{
    const QDateTime plain = QDateTime::fromString(text, Qt::ISODate);
    return QDateTime(plain.date(), plain.time(), berlin);
}

QVariantMap record(int type, const QString& start, const QVariantList& weekdays = {},
                   const QString& end = QString())
{
    return {{"scheduleType", type},
            {"scheduleStartTime", start},
            {"scheduleSettings", QVariantMap{{"weekdays", weekdays}}},
            {"scheduleEndTime", end},
            {"enableScheduleEndTime", !end.isEmpty()}};
}

/** A server with a clock that the test sets, one device and one file. */
struct Scheduled : ServerHarness
{
    Scheduled(const QString& now, const QString& sound, const QString& dataDirectory = QString())
        : Scheduled(std::make_shared<QDateTime>(local(now)), sound, dataDirectory)
    {
    }

    Scheduled(const std::shared_ptr<QDateTime>& clock, const QString& sound, const QString& dataDirectory)
        : ServerHarness(configOf(dataDirectory, clock), offlineAt("10.0.0.66")), time(*clock), m_clock(clock)
    {
        if (ask("GetAudioFile").result.toList().isEmpty()) {
            addDevice("a", "10.0.0.66"); // offline: each attempt to play is told at once, and takes no time
            upload(sound);
        }
    }

    static ServerConfig configOf(const QString& dataDirectory, const std::shared_ptr<QDateTime>& clock)
    {
        ServerConfig config;
        config.dataDirectory = dataDirectory;
        config.clock.zone = berlin;
        config.clock.now = [clock] { return *clock; };
        return config;
    }

    QVariantMap schedule(const QVariantMap& times)
    {
        QVariantMap made = times;
        made["scheduleName"] = "s";
        made["enableSchedule"] = true;
        made["audioID"] = 1;
        made["networkAudioIDList"] = "1";
        made["groupIDList"] = "";
        return made;
    }

    /** Lets the time pass until then in steps; how often something was to be played. */
    int runsUntil(const QString& text, int stepSeconds = 20)
    {
        const std::size_t before = events.size();
        const QDateTime end = local(text);
        while (time < end) {
            time = std::min(time.addSecs(stepSeconds), end);
            server->checkDueSchedules();
        }
        QCoreApplication::processEvents();
        return static_cast<int>(events.size() - before);
    }

    QDateTime& time; ///< Of the server.

private:
    std::shared_ptr<QDateTime> m_clock;
};

} // namespace

void TestScheduling::initTestCase()
{
    QVERIFY(WavFiles::write(path("tone.wav"), WavFiles::sine(440, 0.5, 0.5, 16000), 16000));
}

void TestScheduling::runs_data()
{
    QTest::addColumn<QVariantMap>("times");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QStringList>("expected"); // UTC, as many as given; an empty text for no more
    QTest::newRow("once") << record(0, "2026-05-04T08:30:00") << "2026-01-01T00:00:00"
                          << QStringList{"2026-05-04T06:30:00Z", ""};
    QTest::newRow("once, gone by") << record(0, "2026-05-04T08:30:00") << "2026-05-04T08:30:00"
                                   << QStringList{""};
    QTest::newRow("daily") << record(1, "2026-05-04T08:30:00") << "2026-05-04T09:00:00"
                           << QStringList{"2026-05-05T06:30:00Z", "2026-05-06T06:30:00Z"};
    QTest::newRow("daily, from its first day")
        << record(1, "2026-05-04T08:30:00") << "2026-01-01T00:00:00" << QStringList{"2026-05-04T06:30:00Z"};
    QTest::newRow("daily, just after midnight")
        << record(1, "2026-05-04T00:00:00") << "2026-05-04T23:59:59" << QStringList{"2026-05-04T22:00:00Z"};
    QTest::newRow("weekly") << record(2, "2026-05-04T08:30:00", {1, 5}) << "2026-05-04T08:30:00"
                            << QStringList{"2026-05-08T06:30:00Z", "2026-05-11T06:30:00Z",
                                           "2026-05-15T06:30:00Z"};
    QTest::newRow("weekly, Sunday alone") << record(2, "2026-05-04T08:30:00", {7}) << "2026-05-04T00:00:00"
                                          << QStringList{"2026-05-10T06:30:00Z", "2026-05-17T06:30:00Z"};
    QTest::newRow("daily, with an end")
        << record(1, "2026-05-04T08:30:00", {}, "2026-05-06T08:30:00") << "2026-05-04T09:00:00"
        << QStringList{"2026-05-05T06:30:00Z", "2026-05-06T06:30:00Z", ""};
    QTest::newRow("weekly, with an end") << record(2, "2026-05-04T08:30:00", {1}, "2026-05-11T08:29:59")
                                         << "2026-05-04T00:00:00" << QStringList{"2026-05-04T06:30:00Z", ""};
    // The clock goes from 02:00 to 03:00 on 29 March 2026, and from 03:00 back to 02:00 on 25 October.
    QTest::newRow("daily, into summer time") << record(1, "2026-03-01T08:30:00") << "2026-03-28T00:00:00"
                                             << QStringList{"2026-03-28T07:30:00Z", "2026-03-29T06:30:00Z"};
    QTest::newRow("daily, out of summer time") << record(1, "2026-03-01T08:30:00") << "2026-10-24T00:00:00"
                                               << QStringList{"2026-10-24T06:30:00Z", "2026-10-25T07:30:00Z"};
    QTest::newRow("skipped by the clock") << record(1, "2026-03-01T02:30:00") << "2026-03-28T12:00:00"
                                          << QStringList{"2026-03-29T01:00:00Z", "2026-03-30T00:30:00Z"};
    QTest::newRow("once, skipped by the clock") << record(0, "2026-03-29T02:30:00") << "2026-03-28T12:00:00"
                                                << QStringList{"2026-03-29T01:00:00Z", ""};
    QTest::newRow("twice on the clock") << record(1, "2026-03-01T02:30:00") << "2026-10-24T12:00:00"
                                        << QStringList{"2026-10-25T00:30:00Z", "2026-10-26T01:30:00Z"};
}

void TestScheduling::runs()
{
    QFETCH(QVariantMap, times);
    QFETCH(QString, after);
    QFETCH(QStringList, expected);
    QString error;
    const auto rule = ScheduleRule::fromRecord(times, &error);
    QVERIFY2(rule, qPrintable(error));
    QDateTime moment = local(after);
    for (const QString& wanted : expected) {
        const auto run = rule->nextRun(moment, berlin);
        QCOMPARE(run ? run->toUTC().toString(Qt::ISODate) : QString(), wanted);
        if (run) {
            moment = *run;
        }
    }
}

void TestScheduling::beforeTheZonesFirstChange()
{
    QString error;
    const auto rule = ScheduleRule::fromRecord(record(0, "1013-05-04T08:30:00"), &error);
    QVERIFY2(rule, qPrintable(error));
    const auto run = rule->nextRun(local("1013-05-04T08:29:59"), berlin);
    QVERIFY(run);
    QCOMPARE(*run, local("1013-05-04T08:30:00"));
}

/** 02:30 does not exist on that day where the server is; the rule counts it as the moment of the change. */
void TestScheduling::skippedByTheZoneOfTheProcess()
{
    const QByteArray zone = qgetenv("TZ");
    qputenv("TZ", "Europe/Berlin");
    const auto back = qScopeGuard([&] { zone.isNull() ? qunsetenv("TZ") : qputenv("TZ", zone); });
    QString error;
    const auto rule =
        ScheduleRule::fromRecord(record(0, "2026-03-29T02:30:00", {}, "2026-03-29T02:45:00"), &error);
    QVERIFY2(rule, qPrintable(error));
    QCOMPARE(rule->timeOfDay, QTime(2, 30));
    const auto run = rule->nextRun(local("2026-03-29T01:59:59"), berlin);
    QVERIFY(run);
    QCOMPARE(*run, local("2026-03-29T03:00:00"));
    QVERIFY(!ScheduleRule::fromRecord(record(0, "2026-03-29T02:60:00"), &error));
}

void TestScheduling::endIsTheLastStart()
{
    QString error;
    const auto rule =
        ScheduleRule::fromRecord(record(0, "2026-05-04T08:30:00", {}, "2026-05-04T08:30:00"), &error);
    QVERIFY(rule);
    QVERIFY(rule->nextRun(local("2026-05-04T08:29:59"), berlin));
}

void TestScheduling::badRecords()
{
    for (const QVariantMap& bad :
         {QVariantMap(), record(5, "2026-05-04T08:30:00"), record(-1, "2026-05-04T08:30:00"),
          record(0, "tomorrow"), record(2, "2026-05-04T08:30:00"), record(2, "2026-05-04T08:30:00", {0}),
          record(2, "2026-05-04T08:30:00", {"Monday"}),
          record(1, "2026-05-04T08:30:00", {}, "2026-05-04T08:00:00"),
          record(1, "2026-05-04T08:30:00+02:00")}) {
        QString error;
        QVERIFY(!ScheduleRule::fromRecord(bad, &error));
        QVERIFY(!error.isEmpty());
    }
}

void TestScheduling::schedulesReallyPlay()
{
    Scheduled server("2026-05-04T08:00:00", path("tone.wav"));
    const int loudspeaker = server.addDevice("online");
    QVariantMap schedule = server.schedule(record(1, "2026-05-04T08:30:00"));
    schedule["networkAudioIDList"] = QString::number(loudspeaker);
    QCOMPARE(server.ask("AddNetworkAudioSchedule", schedule).returnCode, QString("0"));
    QCOMPARE(server.runsUntil("2026-05-04T08:29:59"), 0);
    QVERIFY(!QFile::exists(server.speakerRecording(loudspeaker)));
    server.runsUntil("2026-05-04T08:30:00");
    QVERIFY(ServerHarness::waitFor(
        [&] { return WavFiles::read(server.speakerRecording(loudspeaker)).size() >= 8000; }));
    QVERIFY(server.events.empty());
}

void TestScheduling::groupsAndDevicesPlayOnce()
{
    Scheduled server("2026-05-04T08:00:00", path("tone.wav"));
    server.addDevice("b", "10.0.0.66");
    server.addGroup("g", "1,2");
    QVariantMap schedule = server.schedule(record(0, "2026-05-04T08:30:00"));
    schedule["groupIDList"] = "1";
    QCOMPARE(server.ask("AddNetworkAudioSchedule", schedule).returnCode, QString("0"));
    QCOMPARE(server.runsUntil("2026-05-05T08:00:00"), 2); // each of the two, though one is named twice
    QCOMPARE(server.events[0].payload["alarmName"], QVariant("s"));
}

void TestScheduling::disabledSchedulesRest()
{
    Scheduled server("2026-05-04T08:00:00", path("tone.wav"));
    QVariantMap schedule = server.schedule(record(1, "2026-05-04T08:30:00"));
    schedule["enableSchedule"] = false;
    server.ask("AddNetworkAudioSchedule", schedule);
    QCOMPARE(server.runsUntil("2026-05-06T09:00:00"), 0);
    schedule["enableSchedule"] = true;
    schedule["scheduleID"] = 1;
    server.ask("UpdateNetworkAudioSchedule", schedule);
    QCOMPARE(server.runsUntil("2026-05-08T09:00:00"), 2);
}

void TestScheduling::isSwitchedOffWhateverWasDeleted()
{
    Scheduled server("2026-05-04T08:00:00", path("tone.wav"));
    server.ask("AddNetworkAudioSchedule", server.schedule(record(1, "2026-05-04T08:30:00")));
    const auto stored = [&] { return server.ask("GetNetworkAudioSchedule").result.toList()[0].toMap(); };
    const auto enable = [&](bool on) {
        QVariantMap schedule = stored();
        schedule["enableSchedule"] = on;
        return server.ask("UpdateNetworkAudioSchedule", schedule);
    };
    server.ask("DeleteFile", 1);
    const ServerReply off = enable(false);
    QCOMPARE(off.returnCode, ReturnCode::success);
    QCOMPARE(off.result.toMap()["audioID"], QVariant(0));
    QCOMPARE(stored(), off.result.toMap());
    QCOMPARE(enable(true).returnCode, ReturnCode::noSuchFile);
    QVariantMap unknownFile = stored();
    unknownFile["audioID"] = 9;
    QCOMPARE(server.ask("UpdateNetworkAudioSchedule", unknownFile).returnCode, ReturnCode::noSuchFile);
    server.upload(path("tone.wav"));
    QVariantMap again = stored();
    again["audioID"] = 2;
    again["enableSchedule"] = true;
    QCOMPARE(server.ask("UpdateNetworkAudioSchedule", again).returnCode, ReturnCode::success);
    server.ask("DeleteIPAudio", 1);
    QCOMPARE(enable(false).returnCode, ReturnCode::success);
    QCOMPARE(enable(true).returnCode, ReturnCode::nothingToPlayOn);
    QCOMPARE(stored()["enableSchedule"], QVariant(false));
    // A new one is for something.
    QVariantMap fresh = stored();
    fresh.remove("scheduleID");
    QCOMPARE(server.ask("AddNetworkAudioSchedule", fresh).returnCode, ReturnCode::nothingToPlayOn);
}

void TestScheduling::neverRuns()
{
    Scheduled server("2026-05-04T08:00:00", path("tone.wav"));
    // From Monday to Tuesday, on Wednesdays.
    QVariantMap schedule = server.schedule(record(2, "2026-05-04T08:30:00", {3}, "2026-05-05T08:30:00"));
    const ServerReply refused = server.ask("AddNetworkAudioSchedule", schedule);
    QCOMPARE(refused.returnCode, ReturnCode::badSchedule);
    QVERIFY2(refused.errorText.contains("weekdays"), qPrintable(refused.errorText));
    schedule["enableSchedule"] = false;
    QCOMPARE(server.ask("AddNetworkAudioSchedule", schedule).returnCode, ReturnCode::success);
    schedule["scheduleID"] = 1;
    schedule["enableSchedule"] = true;
    QCOMPARE(server.ask("UpdateNetworkAudioSchedule", schedule).returnCode, ReturnCode::badSchedule);
    schedule["scheduleEndTime"] = "2026-05-06T08:30:00"; // with its one run
    QCOMPARE(server.ask("UpdateNetworkAudioSchedule", schedule).returnCode, ReturnCode::success);
}

void TestScheduling::missedRunsAreNotMadeUpFor()
{
    Scheduled server("2026-05-04T08:00:00", path("tone.wav"));
    server.ask("AddNetworkAudioSchedule", server.schedule(record(1, "2026-05-04T08:30:00")));
    QCOMPARE(server.runsUntil("2026-05-04T12:00:00", 4 * 3600), 0); // asleep over it
    QCOMPARE(server.runsUntil("2026-05-05T08:30:10", 25), 1);       // a little late is in time
}

void TestScheduling::clockSetBack()
{
    Scheduled server("2026-05-04T08:00:00", path("tone.wav"));
    server.ask("AddNetworkAudioSchedule", server.schedule(record(0, "2026-05-04T08:30:00")));
    QCOMPARE(server.runsUntil("2026-05-04T08:31:00"), 1);
    server.time = local("2026-05-04T08:20:00");
    server.server->checkDueSchedules();
    QCOMPARE(server.runsUntil("2026-05-04T08:31:00"), 1); // the moment comes again, by this clock
}

void TestScheduling::madeAfterItsTime()
{
    Scheduled server("2026-05-04T08:29:00", path("tone.wav"));
    server.time = local("2026-05-04T08:30:10"); // nothing to wake up for until now
    server.ask("AddNetworkAudioSchedule", server.schedule(record(1, "2026-05-04T08:30:00")));
    QCOMPARE(server.runsUntil("2026-05-04T12:00:00"), 0);
    QCOMPARE(server.runsUntil("2026-05-05T12:00:00"), 1);
}

/** By the server's own timer: the test's clock is the true one. */
void TestScheduling::wakesUpForARun()
{
    ServerConfig config;
    config.clock.zone = QTimeZone::utc();
    ServerHarness server(config, ServerHarness::offlineAt("10.0.0.66"));
    server.addDevice("a", "10.0.0.66");
    server.upload(path("tone.wav"));
    const QDateTime run = QDateTime::currentDateTimeUtc().addSecs(2);
    QVariantMap schedule = record(0, run.toString("yyyy-MM-ddTHH:mm:ss"));
    schedule.insert({{"scheduleName", "s"},
                     {"enableSchedule", true},
                     {"audioID", 1},
                     {"networkAudioIDList", "1"},
                     {"groupIDList", ""}});
    QCOMPARE(server.ask("AddNetworkAudioSchedule", schedule).returnCode, ReturnCode::success);
    QVERIFY(ServerHarness::waitFor([&] { return server.events.size() == 1; }));
    QVERIFY(QDateTime::currentDateTimeUtc().toSecsSinceEpoch() >= run.toSecsSinceEpoch());
}

void TestScheduling::restartInBetween()
{
    const QString data = path("restart");
    {
        Scheduled server("2026-05-04T08:00:00", path("tone.wav"), data);
        server.ask("AddNetworkAudioSchedule", server.schedule(record(1, "2026-05-04T08:30:00")));
        QCOMPARE(server.runsUntil("2026-05-05T08:29:50"), 1);
    }
    Scheduled server("2026-05-05T08:30:05", path("tone.wav"), data); // down over the moment
    QCOMPARE(server.runsUntil("2026-05-05T20:00:00"), 0);
    QCOMPARE(server.runsUntil("2026-05-06T20:00:00"), 1);
}

void TestScheduling::deletedFileIsReported()
{
    Scheduled server("2026-05-04T08:00:00", path("tone.wav"));
    server.ask("AddNetworkAudioSchedule", server.schedule(record(0, "2026-05-04T08:30:00")));
    server.ask("DeleteFile", 1);
    QCOMPARE(server.runsUntil("2026-05-04T09:00:00"), 1);
    QVERIFY(server.events[0].payload["error"].toString().contains("no audio file"));
}

void TestScheduling::brokenFileIsReportedOnce()
{
    const QString data = path("broken");
    Scheduled server("2026-05-04T08:00:00", path("tone.wav"), data);
    server.addDevice("b");
    QVariantMap schedule = server.schedule(record(0, "2026-05-04T08:30:00"));
    schedule["networkAudioIDList"] = "2";
    QCOMPARE(server.ask("AddNetworkAudioSchedule", schedule).returnCode, ReturnCode::success);
    const QDir files(data + "/files");
    QVERIFY(QFile::resize(files.filePath(files.entryList(QDir::Files)[0]), 10));
    QCOMPARE(server.runsUntil("2026-05-04T09:00:00"), 1);
    QCOMPARE(server.events[0].payload["deviceName"], QVariant("b"));
}

QTEST_GUILESS_MAIN(TestScheduling)
#include "tst_scheduling.moc"
