// The commands against a server that answers what no good one would.

#include "tests/cli/ScriptedServer.h"
#include "tests/support/ProgramRun.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

class TestScriptedServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fileIsAddedButNotListed_data();
    void fileIsAddedButNotListed();
    void passwordIsKept_data();
    void passwordIsKept();
    void secondSpeakerNeverAnswers();
    void camerasUnderAnotherName();
    void speakerIsLost();
    void packetsAreRefused_data();
    void packetsAreRefused();
    void lossComesBeforeRefusedPackets();
    void namesInTables();
    void talkWithoutToken_data();
    void talkWithoutToken();
    void camerasThatAServerFinds();
    void cameraThatAServerAsks();
    void testThatIsLost();

private:
    using Replies = QList<WireMessage>;
    /** Runs a command against a server that follows a script. */
    static ProgramRun runWith(const QStringList& arguments, const ScriptedServer::Script& script);
    /** Runs a command against a server that answers each command with "0" and what stands here for it. */
    ProgramRun run(const QStringList& arguments, const QVariantMap& answers);

    QVariantMap m_asked; ///< The last payload of each command.
};

ProgramRun TestScriptedServer::run(const QStringList& arguments, const QVariantMap& answers)
{
    return runWith(arguments, [this, &answers](const WireMessage& command) {
        m_asked.insert(command.name, command.payload);
        return Replies{ScriptedServer::replyTo(command, answers.value(command.name))};
    });
}

ProgramRun TestScriptedServer::runWith(const QStringList& arguments, const ScriptedServer::Script& script)
{
    const ScriptedServer server(script);
    if (!server.listening) {
        return ProgramRun();
    }
    QProcess program;
    program.start(QStringLiteral(PROGRAM_DIR "/voicedesk"),
                  arguments + QStringList{QStringLiteral("--server"), server.url()});
    ProgramRun result;
    if (QTest::qWaitFor([&] { return program.state() == QProcess::NotRunning; }, 60000) &&
        program.exitStatus() == QProcess::NormalExit) {
        result.status = program.exitCode();
    }
    result.out = QString::fromUtf8(program.readAllStandardOutput()).remove('\r');
    result.err = QString::fromUtf8(program.readAllStandardError());
    program.kill();
    program.waitForFinished();
    return result;
}

void TestScriptedServer::fileIsAddedButNotListed_data()
{
    QTest::addColumn<QVariant>("list");
    QTest::addColumn<int>("status");
    QTest::newRow("no list") << QVariant() << 4;
    QTest::newRow("empty list") << QVariant(QVariantList()) << 4;
    QTest::newRow("a number") << QVariant(7) << 4;
    QTest::newRow("no records") << QVariant(QVariantList{"x"}) << 4;
    QTest::newRow("a list") << QVariant(QVariantList{QVariantMap{{"audioID", 7}}}) << 0;
}

void TestScriptedServer::fileIsAddedButNotListed()
{
    QFETCH(QVariant, list);
    QFETCH(int, status);
    const ProgramRun result = run({"files", "add", ANNOUNCEMENT_WAV}, {{"UploadFile", list}});
    QVERIFY2(result.status == status, qPrintable(QString::number(result.status) + result.err));
    QCOMPARE(result.out, status == 0 ? QStringLiteral("added file 7\n") : QString());
    QCOMPARE(result.err.contains("does not list it"), status != 0);
}

void TestScriptedServer::passwordIsKept_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("user");
    QTest::addColumn<QString>("password");
    QTest::newRow("not named") << QStringList{"Dock"} << "admin"
                               << "secret";
    QTest::newRow("only the user") << QStringList{"--device-user", "root"} << "root"
                                   << "secret";
    QTest::newRow("only the password") << QStringList{"--device-password", "new"} << "admin"
                                       << "new";
    QTest::newRow("taken away") << QStringList{"--no-login"} << ""
                                << "";
}

void TestScriptedServer::passwordIsKept()
{
    QFETCH(QStringList, options);
    QFETCH(QString, user);
    QFETCH(QString, password);
    const QVariantMap device{{"deviceID", 5},
                             {"deviceName", "Gate"},
                             {"ip", "10.0.0.5"},
                             {"port", 554},
                             {"username", "admin"},
                             {"password", "secret"},
                             {"bindingCameraList", "camera-1|camera-2"}};
    const ProgramRun result = run(QStringList{"devices", "update", "5"} + options,
                                  {{"RetrieveIPAudioModel", QVariantList{device}}});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QVariantMap expected = device;
    expected["deviceName"] = options.size() == 1 && options[0] == "Dock" ? "Dock" : "Gate";
    expected["username"] = user;
    expected["password"] = password;
    QCOMPARE(m_asked.value("UpdateIPAudio").toMap(), expected);
}

void TestScriptedServer::secondSpeakerNeverAnswers()
{
    // The plug-in ends the talk with the first when it is unloaded.
    const QVariantList devices{QVariantMap{{"deviceID", 1}, {"deviceName", "Gate"}},
                               QVariantMap{{"deviceID", 2}, {"deviceName", "Dock"}}};
    QStringList commands;
    const ProgramRun result =
        runWith({"say", "--device", "1,2", "--source", ANNOUNCEMENT_WAV, "--timeout", "1"},
                [&](const WireMessage& command) {
                    commands.append(command.name);
                    if (command.name == "RetrieveIPAudioModel") {
                        return Replies{ScriptedServer::replyTo(command, devices)};
                    }
                    return command.payload == QVariant(1)
                               ? Replies{ScriptedServer::replyTo(
                                     command, QVariantMap{{"deviceID", 1}, {"talkToken", "one"}})}
                               : Replies();
                });
    QVERIFY2(result.status == 5, qPrintable(QString::number(result.status) + result.err));
    QCOMPARE(commands.count("StartTalkToIPAudio"), 2);
}

void TestScriptedServer::camerasUnderAnotherName()
{
    QStringList commands;
    const ProgramRun result = runWith({"cameras"}, [&](const WireMessage& command) {
        commands.append(command.name);
        WireMessage reply =
            ScriptedServer::replyTo(command, QVariantMap{{"camId", "x"}, {"talkToken", "wire"}});
        if (command.name == "GetCamera") {
            reply.name = "StartTalk";
        }
        return Replies{reply};
    });
    QVERIFY2(result.status >= 0, qPrintable(result.err)); // it has not crashed
    QVERIFY(commands.contains("GetCamera"));
    QVERIFY(!commands.contains("StopTalk")); // the plug-in has not seen a talk in it
}

void TestScriptedServer::speakerIsLost()
{
    // Two speakers take the talk, one of them is lost after the first packet; a third one is not of the
    // talk.
    bool lost = false;
    const auto script = [&lost](const WireMessage& command) {
        QVariant payload;
        if (command.name == "StartTalkToIPAudio") {
            payload =
                QVariantMap{{"deviceID", command.payload}, {"talkToken", "t" + command.payload.toString()}};
        }
        QList<WireMessage> messages{ScriptedServer::replyTo(command, payload)};
        if (command.name == "TalkData" && !lost) {
            lost = true;
            for (const int id : {2, 9, 2}) {
                WireMessage event;
                event.kind = WireMessage::Event;
                event.name = QStringLiteral("TalkTargetLost");
                event.payload = QVariantMap{{"deviceID", id}, {"error", "its line broke"}};
                messages.append(event);
            }
        }
        return messages;
    };
    const ProgramRun result = runWith(
        {"say", "--device", "1,2", "--source", ANNOUNCEMENT_WAV, "--seconds", "0.5", "--json"}, script);
    QVERIFY2(result.status == 6, qPrintable(QString::number(result.status) + result.err));
    QCOMPARE(result.err.count("was lost"), 1);
    QVERIFY2(result.err.contains("device 2 was lost: its line broke"), qPrintable(result.err));
    const QJsonObject report = QJsonDocument::fromJson(result.out.toUtf8()).object();
    QCOMPARE(report["devices"].toArray(), QJsonArray{1});
    QCOMPARE(report["lost"].toArray(), QJsonArray{2});
}

void TestScriptedServer::packetsAreRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<bool>("all"); // else the second packet alone
    QTest::addColumn<QString>("notAccepted");
    const QStringList talk{"talk", "--camera", "gate"};
    const QStringList say{"say", "--device", "1"};
    QTest::newRow("talk, all") << talk << true << "[1-9][0-9]* of";
    QTest::newRow("talk, one") << talk << false << "1 of";
    QTest::newRow("say, all") << say << true << "[1-9][0-9]* of";
    QTest::newRow("say, one") << say << false << "1 of";
}

void TestScriptedServer::packetsAreRefused()
{
    QFETCH(QStringList, arguments);
    QFETCH(bool, all);
    QFETCH(QString, notAccepted);
    int packets = 0;
    const auto script = [&](const WireMessage& command) {
        const bool opens = command.name.startsWith("StartTalk");
        WireMessage reply =
            ScriptedServer::replyTo(command, opens ? QVariant(QVariantMap{{"talkToken", "t"}}) : QVariant());
        if (command.name == "TalkData" && (++packets == 2 || all)) {
            reply.code = QStringLiteral("204");
            reply.text = QStringLiteral("the disk is full");
        }
        if (command.name == "GetCamera") {
            reply.payload = QVariantList{QVariantMap{{"camId", "gate"}, {"camName", "Gate"}}};
        }
        return Replies{reply};
    };
    const ProgramRun result =
        runWith(arguments + QStringList{"--source", ANNOUNCEMENT_WAV, "--seconds", "1"}, script);
    QVERIFY2(result.status == 4, qPrintable(QString::number(result.status) + result.err));
    const QRegularExpression words(
        notAccepted + " [0-9]+ packets of sound were not accepted: the disk is full \\(code 204\\)\n");
    QVERIFY2(words.match(result.err).hasMatch(), qPrintable(result.err));
    QVERIFY(packets > 1);
    QVERIFY(!result.out.contains("not accepted 0"));
}

void TestScriptedServer::lossComesBeforeRefusedPackets()
{
    const auto script = [](const WireMessage& command) {
        const bool opens = command.name.startsWith("StartTalk");
        WireMessage reply =
            ScriptedServer::replyTo(command, opens ? QVariant(QVariantMap{{"talkToken", "t"}}) : QVariant());
        if (command.name != "TalkData") {
            return Replies{reply};
        }
        WireMessage event;
        event.kind = WireMessage::Event;
        event.name = QStringLiteral("TalkTargetLost");
        event.payload = QVariantMap{{"deviceID", 2}, {"error", "its line broke"}};
        reply.code = QStringLiteral("203");
        return Replies{event, reply, reply}; // twice, and still not accepted but once
    };
    const ProgramRun result =
        runWith({"say", "--device", "1,2", "--source", ANNOUNCEMENT_WAV, "--seconds", "0.5"}, script);
    QVERIFY2(result.status == 6, qPrintable(QString::number(result.status) + result.err));
}

/** What controls the terminal or the direction of the text is shown in a table and a message, and in JSON as
 * it is.
 */
void TestScriptedServer::namesInTables()
{
    const QString name = QStringLiteral("A\u202Eb\u2066c\u2028d\u001Be\nf \u05D0\u200F\u061C\u200D");
    const QString shown = QStringLiteral("A?b?c?d?e?f \u05D0\u200F\u061C\u200D");
    const QVariantMap lists{
        {"GetCamera", QVariantList{QVariantMap{{"camId", "gate"}, {"camName", name}, {"online", true}}}},
        {"RetrieveIPAudioModel", QVariantList{QVariantMap{{"deviceID", 1}, {"deviceName", name}}}},
        {"GetNetworkAudioGroup",
         QVariantList{
             QVariantMap{{"groupID", 1}, {"groupName", name}, {"networkAudioIDList", QVariantList{1}}}}}};
    for (const QStringList& command :
         {QStringList{"cameras"}, QStringList{"devices", "list"}, QStringList{"groups", "list"}}) {
        const ProgramRun table = run(command, lists);
        QVERIFY2(table.status == 0, qPrintable(table.err));
        QVERIFY2(table.out.contains(shown), qPrintable(table.out));
        QCOMPARE(table.out.count('\n'), 2);
        const ProgramRun json = run(command + QStringList{"--json"}, lists);
        const QJsonObject row = QJsonDocument::fromJson(json.out.toUtf8()).array().at(0).toObject();
        QCOMPARE(row["name"].toString(), name);
    }
    const ProgramRun refused = runWith({"groups", "delete", "1"}, [&](const WireMessage& command) {
        WireMessage reply = ScriptedServer::replyTo(command, lists.value(command.name));
        if (command.name.startsWith("Delete")) {
            reply.code = QStringLiteral("411");
            reply.text = name;
        }
        return Replies{reply};
    });
    QCOMPARE(refused.status, 4);
    QVERIFY2(refused.err.contains(shown + " (code 411)"), qPrintable(refused.err));
}

void TestScriptedServer::talkWithoutToken_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QVariant>("answer");
    const QStringList talk{"talk", "--camera", "gate"};
    const QStringList say{"say", "--device", "1"};
    for (const QStringList& arguments : {talk, say}) {
        QTest::addRow("%s, nothing", qPrintable(arguments[0])) << arguments << QVariant();
        QTest::addRow("%s, empty", qPrintable(arguments[0]))
            << arguments << QVariant(QVariantMap{{"camId", "gate"}, {"deviceID", 1}, {"talkToken", ""}});
        QTest::addRow("%s, a list", qPrintable(arguments[0]))
            << arguments << QVariant(QVariantMap{{"talkToken", QVariantList{1}}});
    }
}

void TestScriptedServer::talkWithoutToken()
{
    QFETCH(QStringList, arguments);
    QFETCH(QVariant, answer);
    const QVariantList cameras{QVariantMap{{"camId", "gate"}, {"camName", "Gate"}}};
    const ProgramRun result =
        run(arguments + QStringList{"--source", ANNOUNCEMENT_WAV, "--seconds", "1"},
            {{"GetCamera", cameras}, {"StartTalk", answer}, {"StartTalkToIPAudio", answer}});
    QVERIFY2(result.status == 4, qPrintable(QString::number(result.status) + result.err));
    QVERIFY2(result.err.contains("the server's answer has no talk token"), qPrintable(result.err));
    QVERIFY(!m_asked.contains("TalkData"));
    QCOMPARE(result.out, QString());
}

void TestScriptedServer::camerasThatAServerFinds()
{
    const QVariantMap found{{"camName", "Gate\x1b[2J"},
                            {"hardware", "X-1"},
                            {"location", "Yard"},
                            {"camAddress", "http://10.0.0.9/onvif/device_service"},
                            {"remark", ""}};
    ProgramRun result = run({"cameras", "find", "--json"}, {{"FindCameras", QVariantList{found}}});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QCOMPARE(result.json().size(), 1);
    QCOMPARE(result.json()[0].toObject()["addresses"],
             QJsonValue(QJsonArray{"http://10.0.0.9/onvif/device_service"}));
    QVERIFY(!result.json()[0].toObject()["name"].toString().contains('\x1b')); // it would command a terminal
    result = run({"cameras", "find"}, {{"FindCameras", QVariantList()}});
    QCOMPARE(result.status, 5);
    result = runWith({"cameras", "find"}, [](const WireMessage& command) {
        WireMessage reply = ScriptedServer::replyTo(command, QVariant());
        reply.code = command.name == "FindCameras" ? "418" : "0";
        reply.text = "built without it";
        return Replies{reply};
    });
    QCOMPARE(result.status, 4);
    QVERIFY2(result.err.contains("built without it (code 418)"), qPrintable(result.err));
}

void TestScriptedServer::cameraThatAServerAsks()
{
    const QVariantMap answer{{"camId", ""},
                             {"camAddress", "10.0.0.9:80"},
                             {"model", "X-1"},
                             {"speaks", "yes"},
                             {"hears", "no"},
                             {"hearsReason", "the camera has no loudspeaker"},
                             {"voiceCodecs", QVariantList{"PCMU/8000"}},
                             {"streams", QVariantList{QVariantMap{{"camName", "main"},
                                                                  {"camAddress", "rtsp://10.0.0.9/"},
                                                                  {"speaks", "no"},
                                                                  {"hears", "unknown"}}}},
                             {"error", ""}};
    qputenv("VOICEDESK_CAMERA_SECRET", "quiet");
    ProgramRun result = run({"cameras", "ask", "10.0.0.9:80", "--user", "otto", "--camera-user", "anna"},
                            {{"AskCamera", answer}});
    QVERIFY2(result.status == 0, qPrintable(result.err));
    QCOMPARE(result.line("is heard"), QString("yes: PCMU/8000"));
    QCOMPARE(result.line("stream"), QString("rtsp://10.0.0.9/ (main)"));
    QCOMPARE(result.line("plays talks"), QString("no: the camera has no loudspeaker"));
    QCOMPARE(m_asked["AskCamera"].toMap(), (QVariantMap{{"camKind", "onvif"},
                                                        {"camAddress", "10.0.0.9:80"},
                                                        {"username", "anna"},
                                                        {"password", "quiet"}}));
    // Without a login of its own the server has that of the record alone.
    const QVariantList cameras{QVariantMap{{"camId", "7"}, {"camName", "Gate"}}};
    result =
        run({"cameras", "ask", "Gate"},
            {{"GetCamera", cameras}, {"AskCamera", QVariantMap{{"error", "the camera refuses the login"}}}});
    QCOMPARE(result.status, 4);
    QVERIFY2(result.err.contains("refuses the login"), qPrintable(result.err));
    QCOMPARE(m_asked["AskCamera"].toMap(), (QVariantMap{{"camId", "7"}}));
}

void TestScriptedServer::testThatIsLost()
{
    const QVariantList cameras{QVariantMap{{"camId", "7"}, {"camName", "Gate"}}};
    bool stopped = false;
    int packets = 0;
    const ProgramRun result = runWith({"cameras", "test", "Gate"}, [&](const WireMessage& command) {
        stopped = stopped || command.name == "StopTalk";
        const QVariant answer = command.name == "GetCamera" ? QVariant(cameras)
                                : command.name == "StartTalk"
                                    ? QVariant(QVariantMap{{"camId", "7"}, {"talkToken", "wire"}})
                                    : QVariant();
        Replies replies{ScriptedServer::replyTo(command, answer)};
        if (command.name == "TalkData" && ++packets == 3) {
            WireMessage lost;
            lost.kind = WireMessage::Event;
            lost.name = "TalkDisconnected";
            lost.payload = QVariantMap{{"TalkDisconnected", QVariantMap{{"Token", "wire"}}}};
            replies.append(lost);
        }
        return replies;
    });
    QCOMPARE(result.status, 6);
    QVERIFY2(result.err.contains("lost"), qPrintable(result.err));
    QCOMPARE(result.out, QString());
    QVERIFY(stopped);
    QVERIFY(packets < 10);
}

QTEST_GUILESS_MAIN(TestScriptedServer)
#include "tst_scriptedserver.moc"
