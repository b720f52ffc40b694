// The reference server executes the commands of the table, and answers each in the table's shape.

#include "protocol/CommandTable.h"
#include "protocol/Limits.h"
#include "protocol/Words.h"
#include "tests/server/ServerHarness.h"
#include "tests/support/Variants.h"

#include <limits>

namespace {

namespace V = Vocabulary;

/** Payloads that the server of the test does, for each command; and ones that it refuses. */
struct Payloads
{
    QVariant done;
    QVariant refused; ///< Invalid for a command that refuses nothing.
};

constexpr int unknownId = 99;

QHash<QString, Payloads> payloadsFor(int device, int group, int file, int schedule)
{
    const QVariantMap newDevice = ServerHarness::device("new");
    const QVariantMap newSchedule{{V::scheduleName, "new"},
                                  {V::enableSchedule, false},
                                  {V::scheduleType, 1},
                                  {V::scheduleSettings, QVariantMap()},
                                  {V::scheduleStartTime, "2026-03-01T08:30:00"},
                                  {V::scheduleEndTime, ""},
                                  {V::enableScheduleEndTime, false},
                                  {V::audioID, file},
                                  {V::groupIDList, QString::number(group)},
                                  {V::networkAudioIDList, ""}};
    const auto with = [](QVariantMap map, const QString& key, const QVariant& value) {
        map[key] = value;
        return QVariant(map);
    };
    const QVariantMap play{{V::ipAudioId, device}, {V::audioFileId, file}, {V::ipAudioStatus, 1}};
    const QVariantMap playGroup{{V::groupID, group}, {V::audioFileId, file}};
    const QVariantMap newCamera{{Words::camName, "new"},
                                {Words::camKind, "simulated"},
                                {Words::camAddress, "127.0.0.1"},
                                {V::username, "u"},
                                {V::password, "p"},
                                {Words::camSettings, QVariantMap()}};
    QVariantMap question = newCamera;
    question.remove(Words::camName);
    const QVariantMap newGroup{{V::groupName, "new"}, {V::networkAudioIDList, QString::number(device)}};
    QFile sound(ANNOUNCEMENT_WAV);
    const QByteArray content = sound.open(QIODevice::ReadOnly) ? sound.readAll().toBase64() : QByteArray();
    return {
        {V::StartTalk,
         {QVariantMap{{V::camId, "camera-1"}, {V::relayPath, "relay"}}, QVariantMap{{V::camId, "none"}}}},
        {V::StopTalk, {QVariant(), QVariantMap{{V::talkToken, "none"}}}},
        {V::TalkData, {QVariant(), QVariantMap()}},
        {Words::GetCamera, {}},
        {Words::AddCamera, {newCamera, with(newCamera, Words::camName, "")}},
        {Words::UpdateCamera, {with(newCamera, V::camId, "1"), with(newCamera, V::camId, "77")}},
        {Words::DeleteCamera, {"1", "77"}},
        {Words::AskCamera, {with(question, V::camId, "1"), with(question, V::camId, "77")}},
        {V::AddIPAudio, {newDevice, ServerHarness::device("")}},
        {V::UpdateIPAudio,
         {with(newDevice, V::deviceID, device), with(ServerHarness::device("x"), V::deviceID, unknownId)}},
        {V::DeleteIPAudio, {device, unknownId}},
        {V::RetrieveIPAudioModel, {}},
        {V::StartTalkToIPAudio, {device, QVariant()}},
        {V::StopTalkToIPAudio, {device, unknownId}},
        {V::GetAudioFile, {}},
        {V::UploadFile,
         {QVariantMap{{Words::content, content}, {Words::filename, "a.wav"}, {Words::length, 1}},
          QVariantMap{{Words::content, "x"}, {Words::filename, "a.wav"}}}},
        {V::DeleteFile, {file, unknownId}},
        {V::PlayAudio, {play, with(play, V::ipAudioId, unknownId)}},
        {V::PlayGroupAudio, {playGroup, with(playGroup, V::groupID, unknownId)}},
        {V::AlarmPlayIPAudio, {with(play, V::alarmName, "Door"), with(play, V::ipAudioId, unknownId)}},
        {V::StopCurrentAudio, {device, unknownId}},
        {V::StopCurrentGroupAudio, {group, unknownId}},
        {V::AddNetworkAudioGroup, {newGroup, with(newGroup, V::groupName, "")}},
        {V::UpdateNetworkAudioGroup,
         {with(newGroup, V::groupID, group),
          with(with(newGroup, V::groupName, "x").toMap(), V::groupID, unknownId)}},
        {V::DeleteNetworkAudioGroup, {group, unknownId}},
        {V::GetNetworkAudioGroup, {}},
        {V::AddNetworkAudioSchedule, {newSchedule, with(newSchedule, V::scheduleName, "")}},
        {V::UpdateNetworkAudioSchedule,
         {with(newSchedule, V::scheduleID, schedule), with(newSchedule, V::scheduleID, unknownId)}},
        {V::DeleteNetworkAudioSchedule, {schedule, unknownId}},
        {V::GetNetworkAudioSchedule, {}},
    };
}

/**
 * Payloads of a command's shape, for a command that has none above: with values of those above where the keys
 * are the same. Its own test says what it does; here its answer or its refusal must have the table's shape.
 */
Payloads payloadsByShape(const PayloadShape& shape, const QHash<QString, Payloads>& known)
{
    QVariantMap values;
    for (const Payloads& payloads : known) {
        if (payloads.done.userType() == QMetaType::QVariantMap) {
            values.insert(payloads.done.toMap());
        }
    }
    QVariantMap map;
    for (const QString& key : shape.keys) {
        map[key] = values.value(key, "1");
    }
    switch (shape.kind) {
    case PayloadShape::Number:
        return {1, QVariant()};
    case PayloadShape::Text:
        return {"1", QVariant()};
    case PayloadShape::Map:
        return {map, QVariant()};
    case PayloadShape::Maps:
        return {QVariantList{map}, QVariant()};
    default:
        return {};
    }
}

/** What does not fit a shape; empty when all does. Keys that may be missing are not looked for. */
QString misfit(const PayloadShape& shape, const QVariant& value, const QStringList& optional = QStringList())
{
    const auto keysOf = [&](const QVariant& map) {
        QStringList keys = map.toMap().keys();
        for (const QString& key : optional) {
            if (shape.keys.contains(key) && !keys.contains(key)) {
                keys.append(key);
            }
        }
        keys.sort();
        return keys;
    };
    QStringList expected = shape.keys;
    expected.sort();
    const QString type = QString::fromLatin1(value.typeName());
    switch (shape.kind) {
    case PayloadShape::Nothing:
        return value.isValid() ? type : QString();
    case PayloadShape::Number:
        return value.userType() == QMetaType::Int ? QString() : type;
    case PayloadShape::Text:
        return value.userType() == QMetaType::QString ? QString() : type;
    case PayloadShape::Map:
        return value.userType() != QMetaType::QVariantMap ? type
               : keysOf(value) != expected                ? keysOf(value).join(' ')
                                                          : QString();
    case PayloadShape::Maps:
        if (value.userType() != QMetaType::QVariantList || value.toList().isEmpty()) {
            return type + " or an empty list";
        }
        for (const QVariant& entry : value.toList()) {
            if (keysOf(entry) != expected) {
                return keysOf(entry).join(' ');
            }
        }
        return QString();
    }
    return type;
}

} // namespace

class TestCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void serverExecutesTheTable();
    void unknownCommandsAreNamed();
    void answersHaveTheirShape_data();
    void answersHaveTheirShape();
    void payloadsThatAreTooLarge_data();
    void payloadsThatAreTooLarge();
    void largestPayloadsAreTaken();
    void unknownKeysAreNamed_data();
    void unknownKeysAreNamed();
    void otherTypesAreRefused();
    void otherTypesInsideAreNamed_data();
    void otherTypesInsideAreNamed();

private:
    static void addRows()
    {
        QTest::addColumn<QString>("command");
        for (const CommandTable::Row& row : CommandTable::rows()) {
            QTest::newRow(qPrintable(row.name)) << row.name;
        }
    }

    /** A server with a camera, a device, a group, a file and a schedule, and payloads that fit them. */
    static QHash<QString, Payloads> fill(ServerHarness& harness)
    {
        const int device = harness.addDevice("Gate");
        const int group = harness.addGroup("Yard", QString::number(device));
        const int file = harness.upload(ANNOUNCEMENT_WAV);
        harness.ask(Words::AddCamera, QVariantMap{{Words::camName, "kept"},
                                                  {Words::camKind, "simulated"},
                                                  {Words::camAddress, "127.0.0.1"}});
        const QVariantMap schedule =
            payloadsFor(device, group, file, 0)[V::AddNetworkAudioSchedule].done.toMap();
        const int id =
            harness.ask(V::AddNetworkAudioSchedule, schedule).result.toMap()[V::scheduleID].toInt();
        QHash<QString, Payloads> payloads = payloadsFor(device, group, file, id);
        return device > 0 && group > 0 && file > 0 && id > 0 ? payloads : QHash<QString, Payloads>();
    }

    static SimulatedConfig withCameras()
    {
        SimulatedConfig config;
        config.hasCameras = true;
        config.cameras = defaultCameras();
        return config;
    }
};

void TestCommands::serverExecutesTheTable()
{
    QStringList names;
    for (const CommandTable::Row& row : CommandTable::rows()) {
        names.append(row.name);
    }
    names.sort();
    const RecordingServer server{ServerConfig()};
    QStringList commands = server.commands();
    commands.sort();
    QCOMPARE(commands, names);
}

void TestCommands::unknownCommandsAreNamed()
{
    ServerHarness harness;
    for (const char* const command : {"Fly", "startTalk", "AudioReceived", ""}) {
        const ServerReply reply = harness.ask(command, 1);
        QCOMPARE(reply.returnCode, ReturnCode::unknownCommand);
        QVERIFY(reply.errorText.contains(QStringLiteral("\"%1\"").arg(command)));
    }
    const ServerReply reply = harness.ask(QString("\x1B[2J") + QString(1 << 20, 'x'));
    QCOMPARE(reply.returnCode, ReturnCode::unknownCommand);
    QCOMPARE(reply.errorText, "this server does not know the command \"?[2J" + QString(26, 'x') + "...\"");
}

void TestCommands::answersHaveTheirShape_data()
{
    addRows();
}

void TestCommands::answersHaveTheirShape()
{
    QFETCH(QString, command);
    ServerHarness harness(ServerConfig(), withCameras());
    const auto payloads = fill(harness);
    QVERIFY(!payloads.isEmpty());
    const CommandTable::Row& row = *CommandTable::find(command);
    const bool known = payloads.contains(command);
    Payloads payload = known ? payloads[command] : payloadsByShape(row.payload, payloads);

    if (payload.refused.isValid()) {
        const ServerReply reply = harness.ask(command, payload.refused);
        QVERIFY2(reply.returnCode != ReturnCode::success && !reply.errorText.isEmpty(),
                 qPrintable(reply.returnCode));
        QCOMPARE(misfit(row.refusal, reply.result), QString());
    }
    if (command == V::StopTalk || command == V::TalkData) {
        const QVariant token =
            harness.ask(V::StartTalk, payloads[V::StartTalk].done).result.toMap()[V::talkToken];
        payload.done = QVariantMap{{V::talkToken, token}, {V::relayPath, "relay"}};
        if (command == V::TalkData) {
            QByteArray packet("VDAP\x01\x20\x01", 7);
            packet.append(QByteArray(672 - packet.size(), '\0'));
            packet[9] = 0x20; // G.711 mu-law, 8192
            packet[12] = 0x40;
            packet[13] = 0x1F; // 8000 Hz
            payload.done = QVariantMap{{V::targets, QStringLiteral("<Dest>%1</Dest>").arg(token.toString())},
                                       {V::sequence, 1U},
                                       {V::talkData, QString::fromLatin1(packet.toBase64())}};
        }
    }
    if (command == V::DeleteFile) {
        QVERIFY(harness.upload(ANNOUNCEMENT_WAV) > 0); // one that is left
    }
    if (command == V::StopTalkToIPAudio) {
        QCOMPARE(harness.ask(V::StartTalkToIPAudio, payload.done).returnCode, ReturnCode::success);
    }
    const ServerReply reply = harness.ask(command, payload.done);
    if (!known && reply.returnCode != ReturnCode::success) {
        QVERIFY(!reply.errorText.isEmpty());
        QCOMPARE(misfit(row.refusal, reply.result), QString());
        return;
    }
    QVERIFY2(reply.returnCode == ReturnCode::success, qPrintable(reply.errorText));
    QCOMPARE(misfit(row.answer, reply.result, {V::error}), QString());
    QCOMPARE(misfit(row.payload, payload.done, {V::ipAudioStatus, V::alarmName}), QString());
}

void TestCommands::payloadsThatAreTooLarge_data()
{
    addRows();
}

void TestCommands::payloadsThatAreTooLarge()
{
    QFETCH(QString, command);
    ServerHarness harness(ServerConfig(), withCameras());
    const auto payloads = fill(harness);
    const CommandTable::Row& row = *CommandTable::find(command);
    QVariant payload = QByteArray(static_cast<int>(row.maxSize), '7');
    QVariant id(0);
    if (row.payload.kind == PayloadShape::Map) {
        QVariantMap map = payloads.value(command, payloadsByShape(row.payload, payloads)).done.toMap();
        map[QStringLiteral("more")] = payload;
        payload = map;
        id = map.value(row.refusal.kind == PayloadShape::Map ? row.refusal.keys.first()
                                                             : row.payload.keys.first());
        id =
            id.userType() == QMetaType::QString && command != Words::UpdateCamera ? QVariant(id.toInt()) : id;
    }
    const ServerReply reply = harness.ask(command, payload);
    QCOMPARE(reply.returnCode, row.malformed);
    QVERIFY(reply.errorText.contains(command));
    QCOMPARE(misfit(row.refusal, reply.result), QString());
    if (row.refusal.kind == PayloadShape::Map) {
        QCOMPARE(reply.result, QVariant(QVariantMap{{row.refusal.keys.first(), id}}));
        QCOMPARE(reply.result.toMap().first().userType(), id.userType());
        QCOMPARE(id.userType(), int{command == Words::UpdateCamera ? QMetaType::QString : QMetaType::Int});
    } else if (row.refusal.kind == PayloadShape::Number) {
        QCOMPARE(reply.result, QVariant(id.toInt()));
    }
}

/** A list of records may be as long as its own limit says, before the command's limit counts. */
void TestCommands::largestPayloadsAreTaken()
{
    ServerHarness harness(ServerConfig(), withCameras());
    QStringList cameras;
    for (int i = 0; i < Limits::maxListEntries; ++i) {
        cameras.append(QString::number(i).rightJustified(Limits::maxNameLength, QLatin1Char('c')));
    }
    QVariantMap record = ServerHarness::device(QString(Limits::maxNameLength, QLatin1Char('n')));
    record[V::bindingCameraList] = cameras.join(QLatin1Char('|'));
    const ServerReply reply = harness.ask(V::AddIPAudio, record);
    QVERIFY2(reply.returnCode == ReturnCode::success, qPrintable(reply.errorText));
    QCOMPARE(reply.result.toMap()[V::bindingCameraList], record[V::bindingCameraList]);
}

void TestCommands::unknownKeysAreNamed_data()
{
    addRows();
}

void TestCommands::unknownKeysAreNamed()
{
    QFETCH(QString, command);
    ServerHarness harness(ServerConfig(), withCameras());
    const auto payloads = fill(harness);
    const CommandTable::Row& row = *CommandTable::find(command);
    QVariantMap map = payloads[command].done.toMap();
    const int before = harness.ask(V::RetrieveIPAudioModel).result.toList().size();
    map["volume\n"] = 7;
    const ServerReply reply = harness.ask(command, map);
    QCOMPARE(reply.returnCode, row.malformed);
    QCOMPARE(reply.errorText, QStringLiteral("\"%1\" has no \"volume?\"").arg(command));
    QCOMPARE(misfit(row.refusal, reply.result), QString());
    QCOMPARE(harness.ask(V::RetrieveIPAudioModel).result.toList().size(), before);
}

void TestCommands::otherTypesAreRefused()
{
    ServerHarness harness(ServerConfig(), withCameras());
    fill(harness);
    const auto devices = [&] { return harness.ask(V::RetrieveIPAudioModel).result.toList(); };
    const QVariantList before = devices();
    for (const QVariant& id :
         {QVariant(true), QVariant("1"), QVariant(1.3), QVariant((1LL << 32) + 1), QVariant()}) {
        const ServerReply reply = harness.ask(V::DeleteIPAudio, id);
        QCOMPARE(reply.returnCode, ReturnCode::malformedRequest);
        QCOMPARE(reply.errorText, QStringLiteral("\"DeleteIPAudio\" has a payload of another type"));
    }
    QCOMPARE(devices(), before);
    QCOMPARE(harness.ask(Words::DeleteCamera, 1).returnCode, ReturnCode::malformedRequest);
    QCOMPARE(harness.ask(V::AddIPAudio, QVariantList()).returnCode, ReturnCode::malformedRequest);
}

namespace {

/** Values that are not of the type of a right one. */
QVariantList othersThan(const QVariant& right)
{
    switch (right.userType()) {
    case QMetaType::QString:
        return {7, true, QStringList{"one"}, QByteArray("one"), QVariant::fromValue(nullptr)};
    case QMetaType::Int:
        return {"7",
                7.5,
                true,
                QVariantList{7},
                (qint64{1} << 32) + 1,
                -(qint64{1} << 31) - 1,
                std::numeric_limits<uint>::max(),
                std::numeric_limits<double>::quiet_NaN(),
                1e300};
    case QMetaType::Bool:
        return {1, "true"};
    case QMetaType::QVariantMap:
        return {"",
                QVariantList(),
                QVariantMap{{"weekdays", "1"}},
                QVariantMap{{"weekdays", QVariantList{"1"}}},
                QVariantMap{{"weekdays", QVariantList{1.5}}},
                QVariantMap{{"weekdays", QStringList{"1"}}}};
    default:
        return {};
    }
}

} // namespace

void TestCommands::otherTypesInsideAreNamed_data()
{
    addRows();
}

void TestCommands::otherTypesInsideAreNamed()
{
    QFETCH(QString, command);
    ServerHarness harness(ServerConfig(), withCameras());
    const auto payloads = fill(harness);
    const CommandTable::Row& row = *CommandTable::find(command);
    const auto kept = [&harness] {
        QStringList lists;
        for (const QString& list : {V::RetrieveIPAudioModel, V::GetNetworkAudioGroup,
                                    V::GetNetworkAudioSchedule, V::GetAudioFile, Words::GetCamera}) {
            lists.append(Variants::describe(harness.ask(list).result));
        }
        return lists;
    };
    const QStringList before = kept();
    const QStringList free{V::talkToken, V::relayPath,  V::targets,       V::talkData,   V::sequence,
                           V::alarmName, Words::length, V::ipAudioStatus, Words::content};
    const QVariantMap good = payloads.value(command).done.toMap();
    for (auto field = good.begin(); field != good.end(); ++field) {
        const QVariantList others = free.contains(field.key()) ? QVariantList() : othersThan(field.value());
        QVERIFY2(free.contains(field.key()) || !others.isEmpty(), qPrintable(field.key()));
        for (const QVariant& other : others) {
            if (field.key() == Words::camSettings && other.userType() == QMetaType::QVariantMap) {
                continue; // they have rules of their own
            }
            QVariantMap map = good;
            map[field.key()] = other;
            const ServerReply reply = harness.ask(command, map);
            QVERIFY2(reply.returnCode == row.malformed, qPrintable(Variants::describe(map)));
            QVERIFY2(
                reply.errorText.startsWith(QStringLiteral("\"%1\" of \"%2\" is ").arg(field.key(), command)),
                qPrintable(reply.errorText));
            QCOMPARE(misfit(row.refusal, reply.result), QString());
        }
    }
    QCOMPARE(kept(), before);
}

QTEST_GUILESS_MAIN(TestCommands)
#include "tst_commands.moc"
