// Lists of a server that is broken or means ill: every page and dialog shows what it can, and complains of
// nothing.

#include "system/ProgramEnd.h"
#include "tests/desk/HostileServer.h"
#include "tests/desk/QmlComplaints.h"
#include "tests/desk/WindowFixture.h"

class TestDeskHostile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();
    void lists_data();
    void lists();

private:
    std::unique_ptr<PulseServer> m_pulse;
};

namespace {

constexpr int longName = 100000; // characters

/** A record of each kind that is as it should be; the others are made from it. */
QVariantMap goodRecord(const QString& command)
{
    if (command == "RetrieveIPAudioModel") {
        return {{"deviceID", 900},    {"deviceName", "Hall"}, {"ip", "10.0.0.1"},          {"port", 80},
                {"username", "anna"}, {"password", "secret"}, {"bindingCameraList", "a|b"}};
    }
    if (command == "GetNetworkAudioGroup") {
        return {{"groupID", 900}, {"groupName", "Yard"}, {"networkAudioIDList", "900"}};
    }
    if (command == "GetAudioFile") {
        return {{"audioID", 900}, {"audioName", "bell.wav"}, {"audioLength", 1200}, {"audioStatus", 2}};
    }
    if (command == "GetNetworkAudioSchedule") {
        return {{"scheduleID", 900},
                {"scheduleName", "Closing"},
                {"enableSchedule", true},
                {"scheduleType", 2},
                {"scheduleSettings", QVariantMap{{"weekdays", QVariantList{1, 7}}}},
                {"scheduleStartTime", "2026-01-01T17:45:00"},
                {"scheduleEndTime", ""},
                {"enableScheduleEndTime", false},
                {"audioID", 900},
                {"groupIDList", "900"},
                {"networkAudioIDList", "900"}};
    }
    return {{"camId", "gate"},
            {"camName", "Gate"},
            {"online", true},
            {"camKind", "onvif"},
            {"camAddress", "rtsp://10.0.0.3/live"},
            {"username", "anna"},
            {"camSettings", QVariantMap{{"dscp", 46}}}};
}

QString idOf(const QString& command)
{
    const QMap<QString, QString> ids{{"RetrieveIPAudioModel", "deviceID"},
                                     {"GetNetworkAudioGroup", "groupID"},
                                     {"GetAudioFile", "audioID"},
                                     {"GetNetworkAudioSchedule", "scheduleID"},
                                     {"GetCamera", "camId"}};
    return ids[command];
}

/** Records that lack a key each, that have a value of another kind in it, and what is no record at all. */
QVariantList hostileRecords(const QString& command, const QVariantList& values)
{
    const QVariantMap good = goodRecord(command);
    QVariantList records{QVariantMap(), 7, "text", QVariant(), QVariantList{1, 2}};
    int id = 0;
    for (const QString& key : good.keys()) {
        for (const QVariant& value : values) {
            QVariantMap record = good;
            if (idOf(command) != "camId") {
                record[idOf(command)] = ++id;
            } else {
                record[idOf(command)] = QString("camera %1").arg(++id);
            }
            record[key] = value;
            records.append(record);
        }
        QVariantMap record = good;
        record.remove(key);
        records.append(record);
    }
    records.append(good);
    return records;
}

} // namespace

void TestDeskHostile::initTestCase()
{
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY(m_pulse->ready());
}

void TestDeskHostile::cleanup()
{
    QCOMPARE(QmlComplaints::take(), QStringList());
}

void TestDeskHostile::lists_data()
{
    QTest::addColumn<QVariantList>("values");
    QTest::newRow("types") << QVariantList{
        7, -1, 1e300, true, QVariant(), QVariantList{"a"}, QVariantMap{{"a", 1}}, QByteArray("\0\xff", 2)};
    QTest::newRow("texts") << QVariantList{"",
                                           QString(longName, 'x'),
                                           QString(longName, '\n'),
                                           QString::fromUtf8("\u202egpj.exe\u2066\u200f"),
                                           "<img src=\"http://127.0.0.1:1/x.png\"><b>bold</b>&amp;",
                                           QString(QChar(0)),
                                           QString(QChar(0xd800))};
}

void TestDeskHostile::lists()
{
    QFETCH(QVariantList, values);
    HostileServer server;
    for (const char* command : {"RetrieveIPAudioModel", "GetNetworkAudioGroup", "GetAudioFile",
                                "GetNetworkAudioSchedule", "GetCamera"}) {
        server.answer(command, hostileRecords(command, values));
    }
    WindowFixture desk([&server](ClientOptions& options) { server.applyTo(options); });
    QTRY_COMPARE(desk.desk().connection()->state(), DeskConnection::Online);
    QTRY_VERIFY(desk.desk().targets()->find("speaker:900") != nullptr);
    QTRY_VERIFY(desk.desk().targets()->find("camera:gate") != nullptr);
    const QMap<QString, QString> lists{{"talk", "targets"},         {"cameras", "cameraList"},
                                       {"speakers", "speakerList"}, {"files", "fileList"},
                                       {"groups", "groupList"},     {"schedules", "scheduleList"}};
    for (const QString& page : desk.pages()) {
        desk.page(page);
        desk.window()->grabWindow();
        QQuickItem* list = lists.contains(page) ? desk.item(lists[page]) : nullptr;
        if (list != nullptr) {
            QTRY_VERIFY2(list->property("count").toInt() > 0, qPrintable(page));
            // Through all rows: each is drawn, and opened where it can be.
            const int count = list->property("count").toInt();
            auto* view = list->property("list").value<QQuickItem*>();
            QVERIFY(view != nullptr);
            view->forceActiveFocus();
            for (int row = 0; row < count; ++row) {
                view->setProperty("currentIndex", row);
                desk.window()->grabWindow();
                if (page == "talk") {
                    continue;
                }
                desk.key(Qt::Key_Return);
                desk.window()->grabWindow();
                desk.key(Qt::Key_Escape);
                desk.key(Qt::Key_Delete);
                desk.key(Qt::Key_Escape);
            }
        }
        if (desk.openPage()->property("editor").value<QObject*>() != nullptr) {
            desk.key(Qt::Key_N, Qt::ControlModifier);
            desk.window()->grabWindow();
            desk.key(Qt::Key_Escape);
            QVERIFY(desk.gone("save"));
        }
        desk.shoot(QString("hostile-%1-%2").arg(QTest::currentDataTag(), page));
    }
    desk.page("schedules");
    desk.click("Week");
    desk.window()->grabWindow();
    // The record that is as it should be is there in each list.
    desk.click("List");
    const PluginClient& plugin = *desk.desk().plugin();
    const auto files = plugin.audioFiles();
    QVERIFY(std::any_of(files.begin(), files.end(), [](const AudioFileRow& file) { return file.id == 900; }));
}

int main(int argc, char** argv)
{
    endProgram(runWindowTest<TestDeskHostile>(argc, argv));
}

#include "tst_deskhostile.moc"
