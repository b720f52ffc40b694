// Changes of records: what is named changes, and nothing else; records by name; times of schedules.

#include "tests/support/ProgramRun.h"
#include "tests/support/WavFiles.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

class TestRecordChanges : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void deviceKeepsWhatIsNotNamed();
    void groupKeepsItsMembers();
    void scheduleKeepsWhatIsNotNamed();
    void scheduleTimes_data();
    void scheduleTimes();
    void impossibleSchedules_data();
    void impossibleSchedules();
    void pastScheduleIsNotEnabled();
    void names();
    void changesAsJson();
    void localFileIsPlayedAndDeleted();
    void refusedSpeakerOfTwo();

private:
    ProgramRun run(const QStringList& arguments) const
    {
        return ProgramRun::of("voicedesk", m_folder->path(), arguments + QStringList{"--data", "data"});
    }
    QJsonObject first(const char* kind) const { return run({kind, "list", "--json"}).json()[0].toObject(); }
    void addSpeakers() const
    {
        QCOMPARE(run({"devices", "add", "Gate", "10.0.0.5", "554", "--cameras", "camera-1,camera-2",
                      "--device-user", "admin", "--device-password", "secret"})
                     .status,
                 0);
        QCOMPARE(run({"devices", "add", "Dock", "10.0.0.6", "555"}).status, 0);
    }
    void addTone() const
    {
        QVERIFY(WavFiles::write(m_folder->filePath("tone.wav"), WavFiles::sine(440, 0.5, 0.5, 16000), 16000));
        QCOMPARE(run({"files", "add", "tone.wav"}).status, 0);
    }

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestRecordChanges::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
}

void TestRecordChanges::deviceKeepsWhatIsNotNamed()
{
    addSpeakers();
    const QJsonObject before = run({"devices", "list", "--json"}).json()[1].toObject();
    QCOMPARE(before["name"].toString(), QString("Gate"));
    QCOMPARE(run({"devices", "update", "1", "Zone"}).out, QString("updated device 1\n"));
    QJsonObject expected = before;
    expected["name"] = "Zone";
    QCOMPARE(run({"devices", "list", "--json"}).json()[1].toObject(), expected);
    QCOMPARE(run({"devices", "update", "1", "--port", "80"}).status, 0);
    expected["port"] = 80;
    QCOMPARE(run({"devices", "update", "1", "--no-cameras"}).status, 0);
    expected["cameras"] = QJsonArray();
    QCOMPARE(run({"devices", "list", "--json"}).json()[1].toObject(), expected);
    QCOMPARE(run({"devices", "update", "1", "--no-login"}).status, 0);
    expected["username"] = "";
    QCOMPARE(run({"devices", "list", "--json"}).json()[1].toObject(), expected);
    QCOMPARE(run({"devices", "update", "9", "x"}).status, 4);
}

void TestRecordChanges::groupKeepsItsMembers()
{
    addSpeakers();
    QCOMPARE(run({"groups", "add", "Yard", "--devices", "2,1"}).status, 0);
    QCOMPARE(run({"groups", "update", "1", "Court"}).out, QString("updated group 1\n"));
    QCOMPARE(first("groups")["name"].toString(), QString("Court"));
    QCOMPARE(first("groups")["devices"].toArray(), (QJsonArray{2, 1}));
    QCOMPARE(run({"groups", "update", "1", "--devices", "1"}).status, 0);
    QCOMPARE(first("groups")["name"].toString(), QString("Court"));
    QCOMPARE(first("groups")["devices"].toArray(), QJsonArray{1});
    QCOMPARE(run({"groups", "update", "1", "--no-devices"}).status, 0);
    QCOMPARE(first("groups")["devices"].toArray(), QJsonArray());
}

void TestRecordChanges::scheduleKeepsWhatIsNotNamed()
{
    addSpeakers();
    addTone();
    QCOMPARE(run({"schedules", "add", "Morning", "--at", "2099-03-01 08:30", "--weekdays", "1,2", "--until",
                  "2099-12-31", "--file", "1", "--devices", "1"})
                 .status,
             0);
    QJsonObject expected = first("schedules");
    QCOMPARE(expected["type"].toString(), QString("weekly"));
    QCOMPARE(expected["weekdays"].toArray(), (QJsonArray{1, 2}));
    QCOMPARE(expected["start"].toString(), QString("2099-03-01T08:30:00"));
    QCOMPARE(run({"schedules", "disable", "Morning"}).out, QString("disabled schedule 1\n"));
    expected["enabled"] = false;
    QCOMPARE(first("schedules"), expected);
    QCOMPARE(run({"schedules", "enable", "1"}).out, QString("enabled schedule 1\n"));
    expected["enabled"] = true;
    QCOMPARE(first("schedules"), expected);
    QCOMPARE(run({"schedules", "update", "1", "--disabled"}).status, 0);
    expected["enabled"] = false;
    QCOMPARE(first("schedules"), expected);
    QCOMPARE(run({"schedules", "update", "1", "Evening", "--no-until", "--daily"}).status, 0);
    expected["name"] = "Evening";
    expected["end"] = QJsonValue();
    expected["type"] = "daily";
    expected["weekdays"] = QJsonArray();
    QCOMPARE(first("schedules"), expected);
}

void TestRecordChanges::scheduleTimes_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("stored");
    QTest::newRow("the protocol's form") << "at"
                                         << "2099-12-01T08:00:00"
                                         << "2099-12-01T08:00:00";
    QTest::newRow("a blank") << "at"
                             << "2099-12-01 08:00:00"
                             << "2099-12-01T08:00:00";
    QTest::newRow("no seconds") << "at"
                                << "2099-12-01T08:00"
                                << "2099-12-01T08:00:00";
    QTest::newRow("an hour that some clocks skip") << "at"
                                                   << "2099-03-29T02:30"
                                                   << "2099-03-29T02:30:00";
    QTest::newRow("the whole last day") << "until"
                                        << "2099-12-31"
                                        << "2099-12-31T23:59:59";
    QTest::newRow("a moment of the last day") << "until"
                                              << "2099-12-31T12:00"
                                              << "2099-12-31T12:00:00";
    QTest::newRow("a bare date") << "at"
                                 << "2099-12-01"
                                 << "";
    QTest::newRow("no such day") << "at"
                                 << "2099-02-30T08:00"
                                 << "";
    QTest::newRow("an offset") << "at"
                               << "2099-12-01T08:00:00+01:00"
                               << "";
    QTest::newRow("universal time") << "until"
                                    << "2099-12-01T08:00:00Z"
                                    << "";
    QTest::newRow("words") << "until"
                           << "tomorrow"
                           << "";
}

void TestRecordChanges::scheduleTimes()
{
    QFETCH(QString, option);
    QFETCH(QString, text);
    QFETCH(QString, stored);
    addSpeakers();
    addTone();
    QStringList arguments{"schedules", "add",       "x",    "--daily",     "--file",
                          "tone.wav",  "--devices", "Gate", "--" + option, text};
    if (option == "until") {
        arguments += QStringList{"--at", "2099-01-01T00:00:00"};
    }
    const ProgramRun added = run(arguments);
    QCOMPARE(added.status, stored.isEmpty() ? 1 : 0);
    QCOMPARE(added.err.contains("--" + option), stored.isEmpty());
    QCOMPARE(first("schedules")[option == "at" ? "start" : "end"].toString(), stored);
}

void TestRecordChanges::impossibleSchedules_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("status");
    QTest::newRow("once, in the past") << QStringList{"--at", "2020-01-01T08:00:00"} << 1;
    QTest::newRow("daily since then") << QStringList{"--at", "2020-01-01T08:00:00", "--daily"} << 0;
    QTest::newRow("ended") << QStringList{"--at", "2020-01-01T08:00:00", "--daily", "--until", "2021-01-01"}
                           << 1;
    QTest::newRow("switched off") << QStringList{"--at", "2020-01-01T08:00:00", "--disabled"} << 0;
    QTest::newRow("the end before the start")
        << QStringList{"--at", "2099-01-02T08:00:00", "--until", "2099-01-01"} << 1;
    QTest::newRow("daily and on weekdays")
        << QStringList{"--at", "2099-01-02T08:00:00", "--daily", "--weekdays", "1"} << 1;
    QTest::newRow("no weekday") << QStringList{"--at", "2099-01-02T08:00:00", "--weekdays", "Mon"} << 1;
    QTest::newRow("no day of the week") << QStringList{"--at", "2099-01-02T08:00:00", "--weekdays", "8"} << 1;
    QTest::newRow("no start") << QStringList{"--daily"} << 1;
}

void TestRecordChanges::impossibleSchedules()
{
    QFETCH(QStringList, options);
    QFETCH(int, status);
    addSpeakers();
    addTone();
    const ProgramRun added =
        run(QStringList{"schedules", "add", "x", "--file", "1", "--devices", "1"} + options);
    QVERIFY2(added.status == status, qPrintable(added.err));
    QCOMPARE(run({"schedules", "list", "--json"}).json().size(), status == 0 ? 1 : 0);
}

void TestRecordChanges::pastScheduleIsNotEnabled()
{
    addSpeakers();
    addTone();
    QCOMPARE(run({"schedules", "add", "x", "--file", "1", "--devices", "1", "--at", "2001-01-01T08:00:00",
                  "--disabled"})
                 .status,
             0);
    for (const QStringList& command :
         {QStringList{"schedules", "enable", "x"}, QStringList{"schedules", "update", "x", "--enabled"}}) {
        const ProgramRun enabled = run(command);
        QCOMPARE(enabled.status, 1);
        QVERIFY2(enabled.err.contains("would never run"), qPrintable(enabled.err));
        QCOMPARE(first("schedules")["enabled"].toBool(true), false);
    }
    QCOMPARE(run({"schedules", "disable", "x"}).status, 0);
}

void TestRecordChanges::names()
{
    addSpeakers();
    QCOMPARE(run({"groups", "add", "Yard", "--devices", "Gate,Dock"}).status, 0);
    QCOMPARE(first("groups")["devices"].toArray(), (QJsonArray{1, 2}));
    addTone();
    addTone(); // two files may have one name
    const ProgramRun two = run({"play", "--group", "Yard", "--file", "tone.wav"});
    QCOMPARE(two.status, 4);
    QVERIFY2(two.err.contains("2 records") && two.err.contains("\"tone.wav\""), qPrintable(two.err));
    QCOMPARE(run({"files", "delete", "2"}).status, 0);
    const ProgramRun played = run({"play", "--group", "Yard", "--file", "tone.wav", "--simulate"});
    QVERIFY2(played.status == 0, qPrintable(played.err));
    QVERIFY(!played.err.contains("Uploading")); // the server's comes first
    const ProgramRun absent = run({"devices", "delete", "Attic"});
    QCOMPARE(absent.status, 4);
    QVERIFY(absent.err.contains("\"Attic\""));
    QCOMPARE(run({"devices", "delete", "Gate"}).out, QString("deleted device 1\n"));
}

void TestRecordChanges::changesAsJson()
{
    const auto id = [](const ProgramRun& result) {
        const QJsonObject object = QJsonDocument::fromJson(result.out.toUtf8()).object();
        return object.keys() == QStringList{"id"} ? object["id"].toInt() : -1;
    };
    QCOMPARE(id(run({"devices", "add", "Gate", "10.0.0.5", "554", "--json"})), 1);
    QCOMPARE(id(run({"devices", "update", "1", "Dock", "--json"})), 1);
    QCOMPARE(id(run({"groups", "add", "Yard", "--devices", "1", "--json"})), 1);
    QCOMPARE(id(run({"groups", "update", "1", "Hall", "--json"})), 1);
    QVERIFY(WavFiles::write(m_folder->filePath("tone.wav"), WavFiles::sine(440, 0.5, 0.5, 16000), 16000));
    QCOMPARE(id(run({"files", "add", "tone.wav", "--json"})), 1);
    QCOMPARE(id(run({"schedules", "add", "x", "--at", "2099-01-01T08:00:00", "--file", "1", "--groups", "1",
                     "--json"})),
             1);
    QVERIFY(first("schedules")["end"].isNull());
    QCOMPARE(id(run({"schedules", "disable", "1", "--json"})), 1);
    QCOMPARE(id(run({"schedules", "delete", "1", "--json"})), 1);
    QCOMPARE(id(run({"files", "delete", "1", "--json"})), 1);
    const ProgramRun refused = run({"groups", "delete", "9", "--json"});
    QCOMPARE(refused.status, 4);
    QCOMPARE(refused.out, QString());
    const QJsonArray cameras = run({"cameras", "--simulate", "--json"}).json();
    QCOMPARE(cameras.size(), 3);
    QCOMPARE(cameras[2].toObject()["online"].toBool(true), false);
    const ProgramRun talk =
        run({"talk", "--source", "tone.wav", "--seconds", "0.5", "--output", "out", "--json"});
    const QJsonObject summary = QJsonDocument::fromJson(talk.out.toUtf8()).object();
    QVERIFY2(summary["packetsSent"].toInt() > 3, qPrintable(talk.out + talk.err));
    QCOMPARE(summary["recordings"].toArray().size(), 1);
    const ProgramRun said = run({"say", "--device", "Dock", "--source", "tone.wav", "--json", "--simulate"});
    const QJsonObject result = QJsonDocument::fromJson(said.out.toUtf8()).object();
    QVERIFY2(result["packetsSent"].toInt() > 3, qPrintable(said.out + said.err));
    QCOMPARE(result["devices"].toArray(), QJsonArray{1});
}

void TestRecordChanges::localFileIsPlayedAndDeleted()
{
    addSpeakers();
    QVERIFY(WavFiles::write(m_folder->filePath("here.wav"), WavFiles::sine(440, 0.5, 0.5, 16000), 16000));
    // A speaker of a kind that the server does not have is offline.
    const ProgramRun offline = run({"play", "--device", "Gate", "--file", "here.wav", "--output", "out"});
    QCOMPARE(offline.status, 4);
    QVERIFY2(offline.err.contains("offline"), qPrintable(offline.err));
    const ProgramRun played =
        run({"play", "--device", "Gate", "--file", "here.wav", "--output", "out", "--simulate"});
    QVERIFY2(played.status == 0, qPrintable(played.err));
    QVERIFY(WavFiles::read(m_folder->filePath("out/speaker-1-1.wav")).size() > 7000);
    QCOMPARE(run({"files", "list", "--json"}).json().size(), 0);
    QCOMPARE(run({"play", "--device", "Gate", "--file", "absent.wav"}).status, 4);
}

void TestRecordChanges::refusedSpeakerOfTwo()
{
    addSpeakers();
    QVERIFY(WavFiles::write(m_folder->filePath("here.wav"), WavFiles::sine(440, 0.5, 0.5, 16000), 16000));
    const ProgramRun said =
        run({"say", "--device", "2,99", "--source", "here.wav", "--output", "out", "--simulate"});
    QCOMPARE(said.status, 4);
    QVERIFY2(said.err.contains("device 99: no device has the id 99"), qPrintable(said.err));
    QVERIFY2(said.out.contains("packets sent"), qPrintable(said.out)); // the other one heard it
}

QTEST_GUILESS_MAIN(TestRecordChanges)
#include "tst_recordchanges.moc"
