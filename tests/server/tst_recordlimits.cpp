// How many records a server keeps, and that its lists fit into what a client takes.

#include "protocol/Limits.h"
#include "protocol/WireMessage.h"
#include "tests/server/ServerHarness.h"
#include "tests/server/SqlFile.h"
#include "tests/support/WavFiles.h"

class TestRecordLimits : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void fullKind_data();
    void fullKind();
    void fullFiles();
    void overfullKindMayBeChanged_data();
    void overfullKindMayBeChanged();
    void longLists_data();
    void longLists();
    void settingsCountForTheirNumbers();
    void fullListsFitTogether();

private:
    /** A server's folder, whose database then gets what the statements put into it. */
    ServerConfig filled(const QStringList& statements)
    {
        ServerConfig config;
        config.dataDirectory = m_folder.filePath(QString("data-%1").arg(++m_folders));
        {
            const RecordingServer server(config);
        }
        runSql(config.dataDirectory + "/records.sqlite", statements);
        return config;
    }

    QTemporaryDir m_folder;
    int m_folders = 0;
};

namespace {

/** A statement that inserts so many rows, whose number is i. */
QString rows(int count, const QString& insert)
{
    return QString("WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < %1) %2 FROM n")
        .arg(count)
        .arg(insert);
}

QString repeated(const QString& text, int count)
{
    return QString("replace(hex(zeroblob(%1)), '00', '%2')").arg(count).arg(text);
}

QVariantMap group(const QString& name, const QString& devices)
{
    return {{"groupName", name}, {"networkAudioIDList", devices}};
}

QVariantMap schedule(const QVariantMap& settings)
{
    return {{"scheduleName", "s"},
            {"scheduleType", 1},
            {"scheduleSettings", settings},
            {"scheduleStartTime", "2026-03-01T12:00:00"},
            {"audioID", 1},
            {"groupIDList", ""},
            {"networkAudioIDList", "1"}};
}

QVariantMap camera(const QString& name)
{
    return {{"camName", name}, {"camKind", "simulated"}, {"camAddress", "10.0.0.1"}};
}

QVariantMap with(QVariantMap record, const char* key, const QVariant& value)
{
    record[key] = value;
    return record;
}

const QString device =
    "INSERT INTO devices (name, ip, port, username, password) SELECT 'd' || i, '::', 1, '', ''";
const QString plainCamera = "INSERT INTO cameras (name, kind, address) SELECT 'c' || i, 'simulated', '::'";
const QString plainSchedule =
    "INSERT INTO schedules (name, enabled, type, settings, start, end, end_enabled) "
    "SELECT 's', 0, 1, '{}', '', '', 0";
const QString file = "INSERT INTO files (name, length, status, content) SELECT 'f' || i, 1, 2, i";

/** A reply as it is on the wire. */
QByteArray replyBytes(const QString& command, const QVariant& result)
{
    WireMessage message;
    message.kind = WireMessage::Reply;
    message.id = 1;
    message.name = command;
    message.payload = result;
    message.code = "0";
    return message.toBytes();
}

} // namespace

void TestRecordLimits::fullKind_data()
{
    QTest::addColumn<QString>("insert");
    QTest::addColumn<QString>("add");
    QTest::addColumn<QVariant>("record");
    QTest::addColumn<QString>("change");
    QTest::addColumn<QVariant>("changed");
    QTest::addColumn<QString>("remove");
    QTest::addColumn<QVariant>("id");
    QTest::addColumn<QString>("limit");
    QTest::newRow("cameras") << plainCamera << "AddCamera" << QVariant(camera("c")) << "UpdateCamera"
                             << QVariant(with(camera("other"), "camId", "1")) << "DeleteCamera"
                             << QVariant("1") << "maxCameras";
    QTest::newRow("devices") << device << "AddIPAudio" << QVariant(ServerHarness::device("d"))
                             << "UpdateIPAudio"
                             << QVariant(with(ServerHarness::device("other"), "deviceID", 1))
                             << "DeleteIPAudio" << QVariant(1) << "maxDevices";
    QTest::newRow("groups") << "INSERT INTO groups (name) SELECT 'g' || i"
                            << "AddNetworkAudioGroup" << QVariant(group("g", "")) << "UpdateNetworkAudioGroup"
                            << QVariant(with(group("other", ""), "groupID", 1)) << "DeleteNetworkAudioGroup"
                            << QVariant(1) << "maxGroups";
    const QVariantMap one = schedule({});
    QTest::newRow("schedules") << plainSchedule << "AddNetworkAudioSchedule" << QVariant(one)
                               << "UpdateNetworkAudioSchedule" << QVariant(with(one, "scheduleID", 1))
                               << "DeleteNetworkAudioSchedule" << QVariant(1) << "maxSchedules";
}

void TestRecordLimits::fullKind()
{
    QFETCH(QString, insert);
    QFETCH(QString, add);
    QFETCH(QVariant, record);
    QFETCH(QString, change);
    QFETCH(QVariant, changed);
    QFETCH(QString, remove);
    QFETCH(QVariant, id);
    QFETCH(QString, limit);
    const bool schedules = limit == "maxSchedules";
    QStringList statements{rows(9999, insert)};
    if (schedules) {
        statements += QStringList{rows(1, device), rows(1, file)};
    }
    ServerHarness harness(filled(statements));
    QCOMPARE(harness.ask(add, record).returnCode, ReturnCode::success);
    QVariantMap another = record.toMap();
    if (!schedules) {
        another[another.contains("camName") ? "camName"
                : another.contains("ip")    ? "deviceName"
                                            : "groupName"] = "another";
    }
    const ServerReply full = harness.ask(add, another);
    QCOMPARE(full.returnCode, ReturnCode::tooManyRecords);
    QVERIFY2(full.errorText.contains("10000") && full.errorText.contains(limit), qPrintable(full.errorText));
    QCOMPARE(harness.ask(change, changed).returnCode, ReturnCode::success); // one of those that are there
    QCOMPARE(harness.ask(remove, id).returnCode, ReturnCode::success);
    QCOMPARE(harness.ask(add, another).returnCode, ReturnCode::success);
}

void TestRecordLimits::fullFiles()
{
    ServerHarness harness(filled({rows(9999, file)}));
    const QVariantMap upload{
        {"filename", "a.wav"},
        {"content", WavFiles::riff(WavFiles::chunk("fmt ", WavFiles::pcmFormat(1, 8000, 16)) +
                                   WavFiles::chunk("data", QByteArray(20000, 'x')))
                        .toBase64()}};
    QCOMPARE(harness.ask("UploadFile", upload).returnCode, ReturnCode::success);
    const ServerReply full = harness.ask("UploadFile", upload);
    QCOMPARE(full.returnCode, ReturnCode::fileRefused);
    QVERIFY2(full.errorText.contains("10000") && full.errorText.contains("maxFiles"),
             qPrintable(full.errorText));
    QCOMPARE(harness.ask("GetAudioFile").result.toList().size(), 10000);
}

void TestRecordLimits::overfullKindMayBeChanged_data()
{
    QTest::addColumn<QStringList>("statements");
    QTest::newRow("records") << QStringList{rows(10005, plainCamera)};
    QTest::newRow("bytes") << QStringList{rows(2, plainCamera),
                                          "INSERT INTO cameras (name, kind, address) SELECT " +
                                              repeated("x", 4194400) + ", '', ''"};
}

// From a version without the limits.
void TestRecordLimits::overfullKindMayBeChanged()
{
    QFETCH(QStringList, statements);
    ServerHarness harness(filled(statements));
    QVariantMap same = with(camera("c1"), "camId", "1");
    same["camAddress"] = "::";
    QCOMPARE(harness.ask("UpdateCamera", same).returnCode, ReturnCode::success);
    QCOMPARE(harness.ask("UpdateCamera", with(same, "camName", "c")).returnCode, ReturnCode::success);
    QCOMPARE(harness.ask("AddCamera", camera("new")).returnCode, ReturnCode::tooManyRecords);
    QCOMPARE(harness.ask("DeleteCamera", "2").returnCode, ReturnCode::success);
}

void TestRecordLimits::longLists_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QVariant>("small");
    QTest::addColumn<QVariant>("large");
    QTest::addColumn<QVariant>("result");
    QStringList cameras;
    for (int i = 0; i < 5000; ++i) {
        cameras.append(QString::number(i) + QString(120, QChar(0x20AC)));
    }
    QString ids;
    for (int i = 1; i <= 9000; ++i) {
        ids += QString::number(i) + ',';
    }
    ids.chop(1);
    const auto gate = ServerHarness::device("Gate");
    QTest::newRow("device") << "AddIPAudio" << QVariant(gate)
                            << QVariant(with(with(gate, "deviceName", "Dock"), "bindingCameraList",
                                             cameras.mid(0, 3000).join('|')))
                            << QVariant();
    QTest::newRow("change of a device")
        << "UpdateIPAudio" << QVariant(with(gate, "deviceID", 1))
        << QVariant(with(with(gate, "deviceID", 1), "bindingCameraList", cameras.mid(0, 3000).join('|')))
        << QVariant(QVariantMap{{"deviceID", 1}});
    QTest::newRow("group") << "AddNetworkAudioGroup" << QVariant(group("a", "1")) << QVariant(group("b", ids))
                           << QVariant();
    const QString longName(128, QChar(0x20AC));
    QTest::newRow("camera") << "AddCamera" << QVariant(camera("a")) << QVariant(camera(longName))
                            << QVariant();
    QTest::newRow("change of a camera")
        << "UpdateCamera" << QVariant(with(camera("a"), "camId", "1"))
        << QVariant(with(camera(longName), "camId", "1")) << QVariant(QVariantMap{{"camId", "1"}});
    const QVariantMap settings{{"x", QString(1000, 'x')}};
    QTest::newRow("schedule") << "AddNetworkAudioSchedule" << QVariant(schedule({}))
                              << QVariant(schedule(settings)) << QVariant();
    QTest::newRow("change of a schedule")
        << "UpdateNetworkAudioSchedule" << QVariant(with(schedule({}), "scheduleID", 1))
        << QVariant(with(schedule(settings), "scheduleID", 1)) << QVariant(QVariantMap{{"scheduleID", 1}});
    QTest::newRow("change of a group")
        << "UpdateNetworkAudioGroup" << QVariant(with(group("a", ""), "groupID", 1))
        << QVariant(with(group("a", ids), "groupID", 1)) << QVariant(QVariantMap{{"groupID", 1}});
}

// The limit counts the bytes of all records together, of which these have nearly all.
void TestRecordLimits::longLists()
{
    QFETCH(QString, command);
    QFETCH(QVariant, small);
    QFETCH(QVariant, large);
    QFETCH(QVariant, result);
    ServerHarness harness(
        filled({rows(9000, device), rows(1, file), rows(1, plainCamera), rows(1, plainSchedule),
                "INSERT INTO cameras (name, kind, address) SELECT " + repeated("x", 4194000) + ", '', ''",
                "INSERT INTO schedules (name, enabled, type, settings, start, end, end_enabled) SELECT " +
                    repeated("x", 4190000) + ", 0, 1, '{}', '', '', 0",
                rows(2, "INSERT INTO groups (name) SELECT 'g' || i"),
                rows(40, "INSERT INTO groups (name) SELECT 'full' || i || " + repeated("x", 104000)),
                "INSERT INTO devices (id, name, ip, port, username, password) SELECT 9500, " +
                    repeated("x", 3300000) + ", '::', 1, '', ''"}));
    QCOMPARE(harness.ask(command, small).returnCode, ReturnCode::success);
    const ServerReply refused = harness.ask(command, large);
    QCOMPARE(refused.returnCode, ReturnCode::tooManyRecords);
    QVERIFY2(refused.errorText.contains("maxListBytes"), qPrintable(refused.errorText));
    QCOMPARE(refused.result, result);
}

void TestRecordLimits::settingsCountForTheirNumbers()
{
    QVariantList ones;
    for (int i = 0; i < 30000; ++i) {
        ones.append(1);
    }
    ServerHarness harness(filled({rows(1, device), rows(1, file)}));
    int added = 0;
    while (added < 100 && harness.ask("AddNetworkAudioSchedule", schedule({{"x", ones}})).returnCode ==
                              ReturnCode::success) {
        ++added;
    }
    QVERIFY2(added > 4 && added < 20, qPrintable(QString::number(added)));
    const QByteArray list =
        replyBytes("GetNetworkAudioSchedule", harness.ask("GetNetworkAudioSchedule").result);
    QVERIFY2(list.size() < Limits::maxListBytes, qPrintable(QString::number(list.size())));
}

void TestRecordLimits::fullListsFitTogether()
{
    const QString text = repeated("\u20AC", 136); // 408 bytes, so that 10,000 have nearly maxListBytes
    const QString unique = "i || " + text;
    ServerHarness harness(filled(
        {rows(10000, "INSERT INTO cameras (name, kind, address) SELECT " + unique + ", 'simulated', '::'"),
         rows(10000, "INSERT INTO devices (name, ip, port, username, password) SELECT " + unique +
                         ", '::', 65535, '', ''"),
         rows(10000, "INSERT INTO groups (name) SELECT " + unique),
         rows(10000,
              "INSERT INTO files (name, length, status, content) SELECT " + unique + ", 86400000, 2, i"),
         rows(10000, "INSERT INTO schedules (name, enabled, type, settings, start, end, end_enabled, file) "
                     "SELECT " +
                         repeated("x", 180) +
                         ", 1, 2, '{\"weekdays\":[1,2]}', '2026-03-01T12:00:00', "
                         "'2026-03-01T12:00:00', 1, i")}));
    qint64 bytes = 0;
    for (const char* command : {"GetCamera", "RetrieveIPAudioModel", "GetNetworkAudioGroup", "GetAudioFile",
                                "GetNetworkAudioSchedule"}) {
        const ServerReply reply = harness.ask(command);
        QCOMPARE(reply.result.toList().size(), 10000);
        bytes += replyBytes(command, reply.result).size();
    }
    QVERIFY2(bytes < Limits::maxWaitingBytes, qPrintable(QString::number(bytes)));
    QVERIFY2(bytes > Limits::maxWaitingBytes / 2, qPrintable(QString::number(bytes)));
}

QTEST_GUILESS_MAIN(TestRecordLimits)
#include "tst_recordlimits.moc"
