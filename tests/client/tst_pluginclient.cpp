// The plug-in with types: over the real one, and over one that has next to nothing.

#include "client/PluginClient.h"
#include "client/PluginHost.h"
#include "tests/support/BuiltLibraries.h"

#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

class TestPluginClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void everyRequestArrives();
    void talks();
    void answersToChanges_data();
    void answersToChanges();
    void playbacks();
    void files();
    void devices();
    void groups();
    void schedules();
    void whatIsMissingIsNamed();
    void wrongTypesAreMissing();
    void withoutAPlugin();

private:
    /** A link whose other end is the test. */
    class TestLink : public ServerLink
    {
    public:
        void open() override {}
        bool send(const QString& command, const QVariant& payload, quint64 request) override
        {
            commands.append(command);
            payloads.append(payload);
            requests.append(request);
            return accepts;
        }
        void answer(const QString& command, const QVariant& result, const QString& code = QStringLiteral("0"))
        {
            const int at = commands.lastIndexOf(command);
            QVERIFY2(at >= 0, qPrintable(command));
            Q_EMIT replied(command, result, requests[at], code, QString());
        }

        bool accepts = true;
        QStringList commands;
        QVariantList payloads;
        QVector<quint64> requests;
    };

    QVariantMap lastRecord() const { return m_link->payloads.last().toMap(); }
    /** Lists two devices in the plug-in. */
    void listDevices();

    std::unique_ptr<TestLink> m_link;
    std::unique_ptr<PluginHost> m_host;
    std::unique_ptr<PluginClient> m_plugin;
};

/** A plug-in of another time: one call, one signal, a property of another type. */
class OldPlugin : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString talking READ talking CONSTANT)

public:
    QString talking() const { return QStringLiteral("no"); }
    Q_INVOKABLE bool deleteIPAudio(int id)
    {
        deleted.append(id);
        return true;
    }
    Q_INVOKABLE int stopTalk() { return 1; }
    Q_INVOKABLE QObject* getNetworkAudioGroupModel(QObject* parent) const
    {
        auto* model = new QStandardItemModel(parent);
        model->setItemRoleNames({{Qt::UserRole + 7, "idRole"}});
        auto* item = new QStandardItem;
        item->setData(5, Qt::UserRole + 7);
        model->appendRow(item);
        return model;
    }
    Q_INVOKABLE QObject* getIPAudioModel(QObject* /*parent*/) const { return nullptr; }

    QList<int> deleted;

Q_SIGNALS:
    void talkDisconnected();
};

void TestPluginClient::init()
{
    m_link = std::make_unique<TestLink>();
    m_host = std::make_unique<PluginHost>(*m_link);
    QVERIFY2(m_host->load(BuiltLibraries::path("VoiceDesk")), qPrintable(m_host->errorString()));
    m_plugin = std::make_unique<PluginClient>();
    QVERIFY2(m_plugin->attach(m_host->plugin()), qPrintable(m_plugin->errorString()));
    QCOMPARE(m_plugin->errorString(), QString());
}

void TestPluginClient::cleanup()
{
    m_plugin.reset();
    m_host.reset();
    m_link.reset();
}

void TestPluginClient::everyRequestArrives()
{
    QVERIFY(m_plugin->addIPAudio("Hall", "10.0.0.1", 80, "admin", "secret", {"gate", "dock"}));
    QCOMPARE(lastRecord(), (QVariantMap{{"deviceName", "Hall"},
                                        {"ip", "10.0.0.1"},
                                        {"port", 80},
                                        {"username", "admin"},
                                        {"password", "secret"},
                                        {"bindingCameraList", "gate|dock"}}));
    QVERIFY(m_plugin->updateIPAudio(7, "Roof", "10.0.0.2", 81, "u", "p", {}));
    QCOMPARE(lastRecord()["deviceID"], QVariant(7));
    QCOMPARE(lastRecord()["deviceName"], QVariant("Roof"));
    QVERIFY(m_plugin->deleteIPAudio(8));
    QCOMPARE(m_link->payloads.last(), QVariant(8));
    m_plugin->retrieveIPAudioModel();
    m_plugin->playAudio(3, 4);
    QCOMPARE(lastRecord()["ipAudioId"], QVariant(3));
    QCOMPARE(lastRecord()["audioFileId"], QVariant(4));
    m_plugin->playGroupAudio(5, 6);
    QCOMPARE(lastRecord()["groupID"], QVariant(5));
    m_plugin->stopCurrentAudio(3);
    m_plugin->stopCurrentGroupAudio(5);
    m_plugin->deleteAudioFile(9);
    m_plugin->getNetworkAudioGroup();
    QVERIFY(m_plugin->addNetworkAudioGroup("Yard", QVariantList{1, 2}));
    QCOMPARE(lastRecord()["groupName"], QVariant("Yard"));
    QVERIFY(m_plugin->updateNetworkAudioGroup(4, "Yards", QVariantList{2}));
    QCOMPARE(lastRecord()["groupID"], QVariant(4));
    QVERIFY(m_plugin->deleteNetworkAudioGroup(4));
    m_plugin->getNetworkAudioSchedule();
    QVERIFY(m_plugin->addNetworkAudioSchedule({{"scheduleName", "Bell"}}));
    QCOMPARE(lastRecord()["scheduleName"], QVariant("Bell"));
    QVERIFY(m_plugin->updateNetworkAudioSchedule(2, {{"scheduleName", "Gong"}}));
    QCOMPARE(lastRecord()["scheduleID"], QVariant(2));
    QVERIFY(m_plugin->deleteNetworkAudioSchedule(2));
    QCOMPARE(m_link->commands,
             (QStringList{"AddIPAudio", "UpdateIPAudio", "DeleteIPAudio", "RetrieveIPAudioModel", "PlayAudio",
                          "PlayGroupAudio", "StopCurrentAudio", "StopCurrentGroupAudio", "DeleteFile",
                          "GetNetworkAudioGroup", "AddNetworkAudioGroup", "UpdateNetworkAudioGroup",
                          "DeleteNetworkAudioGroup", "GetNetworkAudioSchedule", "AddNetworkAudioSchedule",
                          "UpdateNetworkAudioSchedule", "DeleteNetworkAudioSchedule"}));
    m_link->accepts = false;
    QVERIFY(!m_plugin->deleteIPAudio(8));
}

void TestPluginClient::talks()
{
    QSignalSpy started(m_plugin.get(), &PluginClient::startTalkResponse);
    QSignalSpy startedToDevice(m_plugin.get(), &PluginClient::startTalkToIPAudioResponse);
    QSignalSpy talking(m_plugin.get(), &PluginClient::talkingChanged);
    QSignalSpy disconnected(m_plugin.get(), &PluginClient::talkDisconnected);
    qputenv("FRAMESMITH_CAPTURE_FILE", ANNOUNCEMENT_WAV);
    QVERIFY(m_plugin->startAudioCapture());
    m_plugin->setMicVolume(70);
    m_plugin->setMicMute(true);
    m_plugin->stopAudioCapture();
    QVERIFY(m_plugin->startTalk("gate"));
    QCOMPARE(m_link->commands.last(), QString("StartTalk"));
    QCOMPARE(lastRecord()["camId"], QVariant("gate"));
    QCOMPARE(lastRecord()["relayPath"], QVariant(""));
    m_link->answer("StartTalk", QVariantMap{{"camId", "gate"}, {"talkToken", "t"}});
    QCOMPARE(started, (QList<QVariantList>{{true}}));
    QVERIFY(m_plugin->talking());
    QVERIFY(m_plugin->startTalkToIPAudio(4));
    m_link->answer("StartTalkToIPAudio",
                   QVariantMap{{"deviceID", 4}, {"talkToken", "u"}, {"error", "it is offline"}});
    QCOMPARE(startedToDevice, (QList<QVariantList>{{false, QString("it is offline"), 4}}));
    QVERIFY(m_plugin->stopTalkToIPAudio(4));
    QCOMPARE(m_link->commands.last(), QString("StopTalkToIPAudio"));
    Q_EMIT m_link->eventRaised("TalkDisconnected",
                               QVariantMap{{"TalkDisconnected", QVariantMap{{"Token", "t"}}}});
    QCOMPARE(disconnected.count(), 1);
    QVERIFY(!m_plugin->talking());
    QCOMPARE(talking.count(), 2);
    QVERIFY(m_plugin->stopTalk());
    QVERIFY(!m_plugin->audioInDevAvailable());
    qunsetenv("FRAMESMITH_CAPTURE_FILE");
}

using ChangeAnswer = void (PluginClient::*)(bool, const QString&, int);

void TestPluginClient::answersToChanges_data()
{
    // Each command has a signal of its own.
    QTest::addColumn<QString>("command");
    QTest::addColumn<int>("signal");
    int row = 0;
    for (const char* command :
         {"AddIPAudio", "UpdateIPAudio", "DeleteIPAudio", "AddNetworkAudioGroup", "UpdateNetworkAudioGroup",
          "DeleteNetworkAudioGroup", "AddNetworkAudioSchedule", "UpdateNetworkAudioSchedule",
          "DeleteNetworkAudioSchedule"}) {
        QTest::newRow(command) << QString(command) << row++;
    }
}

void TestPluginClient::answersToChanges()
{
    QFETCH(QString, command);
    QFETCH(int, signal);
    static constexpr std::array<ChangeAnswer, 9> answers = {
        &PluginClient::addIPAudioResponse,
        &PluginClient::updateIPAudioResponse,
        &PluginClient::deleteIPAudioResponse,
        &PluginClient::addNetworkAudioGroupResponse,
        &PluginClient::updateNetworkAudioGroupResponse,
        &PluginClient::deleteNetworkAudioGroupResponse,
        &PluginClient::addNetworkAudioScheduleResponse,
        &PluginClient::updateNetworkAudioScheduleResponse,
        &PluginClient::deleteNetworkAudioScheduleResponse,
    };
    std::vector<std::unique_ptr<QSignalSpy>> spies;
    for (const ChangeAnswer answer : answers) {
        spies.push_back(std::make_unique<QSignalSpy>(m_plugin.get(), answer));
    }
    Q_EMIT m_link->replied(command, QVariant(), 0, "412", "the name is taken");
    for (int i = 0; i < static_cast<int>(spies.size()); ++i) {
        QCOMPARE(spies[static_cast<std::size_t>(i)]->count(), i == signal ? 1 : 0);
    }
    const QVariantList values = spies[static_cast<std::size_t>(signal)]->first();
    QCOMPARE(values[0], QVariant(false));
    QCOMPARE(values[1], QVariant("412"));
}

void TestPluginClient::playbacks()
{
    QSignalSpy played(m_plugin.get(), &PluginClient::playAudioResponse);
    QSignalSpy stopped(m_plugin.get(), &PluginClient::stopCurrentAudioResponse);
    QSignalSpy failed(m_plugin.get(), &PluginClient::playAudioError);
    m_plugin->playAudio(3, 4);
    m_link->answer("PlayAudio", QVariantMap{{"progress", 40}, {"error", "e"}});
    QCOMPARE(played.count(), 1);
    QCOMPARE(played[0].size(), 4);
    m_plugin->stopCurrentAudio(3);
    m_link->answer("StopCurrentAudio", QVariant());
    QCOMPARE(stopped.count(), 1);
    Q_EMIT m_link->eventRaised("PlayAudioFailed",
                               QVariantMap{{"PlayAudioFailed", QVariantMap{{"deviceName", "Hall"},
                                                                           {"audioName", "bell.wav"},
                                                                           {"error", "offline"},
                                                                           {"alarmName", "Fire"}}}});
    QCOMPARE(failed.count(), 1);
}

void TestPluginClient::files()
{
    QSignalSpy changed(m_plugin.get(), &PluginClient::audioFileListChanged);
    Q_EMIT m_link->connected();
    const QVariantList records{
        QVariantMap{{"audioID", 4}, {"audioName", "bell.wav"}, {"audioLength", 1500}, {"audioStatus", 2}}};
    m_link->answer("GetAudioFile", records);
    QCOMPARE(changed.count(), 1);
    QCOMPARE(m_plugin->audioFileList(), records);
    const QList<AudioFileRow> files = m_plugin->audioFiles();
    QCOMPARE(files.size(), 1);
    QCOMPARE(files[0].id, 4);
    QCOMPARE(files[0].name, QString("bell.wav"));
    QCOMPARE(files[0].length, 1500);
    QCOMPARE(files[0].status, 2);
    QVERIFY(m_plugin->uploadFile(QUrl::fromLocalFile(ANNOUNCEMENT_WAV)));
    QCOMPARE(m_link->commands.last(), QString("UploadFile"));
    QCOMPARE(m_plugin->audioFiles().size(), 2);
    QVERIFY(m_plugin->audioFiles().last().id < 0);
    QCOMPARE(m_plugin->audioFiles().last().status, 1);
}

void TestPluginClient::listDevices()
{
    Q_EMIT m_link->connected();
    m_link->answer("RetrieveIPAudioModel",
                   QVariantList{QVariantMap{{"deviceID", 1},
                                            {"deviceName", "Roof (old)"},
                                            {"ip", "10.0.0.1"},
                                            {"port", 80},
                                            {"username", "admin"},
                                            {"password", "secret"},
                                            {"bindingCameraList", QStringList{"gate"}}},
                                QVariantMap{{"deviceID", 2}, {"deviceName", "Hall"}}});
}

void TestPluginClient::devices()
{
    QSignalSpy listed(m_plugin.get(), &PluginClient::ipAudioModelChanged);
    listDevices();
    QCOMPARE(listed.count(), 1);
    QObject owner;
    DeviceModel* model = m_plugin->getIPAudioModel(&owner);
    QCOMPARE(model->parent(), &owner);
    QCOMPARE(model->rowCount(), 2);
    QCOMPARE(model->device(0).name, QString("Hall")); // sorted
    const DeviceRow roof = model->device(1);
    QCOMPARE(roof.id, 1);
    QCOMPARE(roof.name, QString("Roof (old)"));
    QCOMPARE(roof.address, QString("10.0.0.1"));
    QCOMPARE(roof.port, 80);
    QCOMPARE(roof.user, QString("admin"));
    QCOMPARE(roof.password, QString("secret"));
    QCOMPARE(roof.cameras, QStringList{"gate"});
    // QML reads the same under the plug-in's names.
    const int nameRole = model->roleNames().key("deviceNameRole");
    QCOMPARE(model->index(1, 0).data(nameRole), QVariant("Roof (old)"));
    // A text is searched as it is, in either case; another model's view stays.
    const DeviceModel* other = m_plugin->getIPAudioModel(&owner);
    model->setFilter("F (OLD");
    QCOMPARE(model->rowCount(), 1);
    QCOMPARE(model->device(0).id, 1);
    QCOMPARE(other->rowCount(), 2);
    model->setFilter(QString());
    QCOMPARE(model->rowCount(), 2);
    QCOMPARE(model->device(9).id, 0);
    QCOMPARE(m_plugin->queryBindingIPAudio("gate"), (QVariantMap{{"id", 1}, {"name", "Roof (old)"}}));
}

void TestPluginClient::groups()
{
    listDevices();
    m_plugin->getNetworkAudioGroup();
    m_link->answer(
        "GetNetworkAudioGroup",
        QVariantList{QVariantMap{{"groupID", 3}, {"groupName", "Yard"}, {"networkAudioIDList", "1,2"}},
                     QVariantMap{{"groupID", 4}, {"groupName", "Inside"}, {"networkAudioIDList", "2"}}});
    QObject owner;
    GroupModel* model = m_plugin->getNetworkAudioGroupModel(&owner);
    QCOMPARE(model->rowCount(), 2);
    QCOMPARE(model->group(0).name, QString("Inside"));
    QCOMPARE(model->group(1).id, 3);
    QCOMPARE(model->group(1).devices, (QList<int>{1, 2}));
    QCOMPARE(model->group(1).deviceNames, (QStringList{"Roof (old)", "Hall"}));
    model->setSort(Qt::DescendingOrder);
    QCOMPARE(model->group(0).name, QString("Yard"));
    model->setFilter("roof");
    QCOMPARE(model->rowCount(), 1);
    QCOMPARE(model->group(0).id, 3);
}

void TestPluginClient::schedules()
{
    const QVariantMap settings{{"weekdays", QVariantList{1, 3}}, {"colour", "red"}};
    m_plugin->getNetworkAudioSchedule();
    m_link->answer("GetNetworkAudioSchedule", QVariantList{QVariantMap{
                                                  {"scheduleID", 5},
                                                  {"enableSchedule", true},
                                                  {"scheduleName", "Bell"},
                                                  {"scheduleStartTime", "2026-03-01T08:00:00"},
                                                  {"scheduleType", 2},
                                                  {"scheduleSettings", settings},
                                                  {"scheduleEndTime", "2026-12-31T00:00:00"},
                                                  {"enableScheduleEndTime", true},
                                                  {"audioID", 4},
                                                  {"groupIDList", "3"},
                                                  {"networkAudioIDList", "1,2"},
                                              }});
    QObject owner;
    const ScheduleModel* model = m_plugin->getNetworkAudioScheduleModel(&owner);
    QCOMPARE(model->rowCount(), 1);
    const ScheduleRow bell = model->schedule(0);
    QCOMPARE(bell.id, 5);
    QCOMPARE(bell.enabled, true);
    QCOMPARE(bell.name, QString("Bell"));
    QCOMPARE(bell.start, QString("2026-03-01T08:00:00"));
    QCOMPARE(bell.type, 2);
    QCOMPARE(bell.settings, settings);
    QCOMPARE(bell.end, QString("2026-12-31T00:00:00"));
    QCOMPARE(bell.endEnabled, true);
    QCOMPARE(bell.file, 4);
    QCOMPARE(bell.groups, QList<int>{3});
    QCOMPARE(bell.devices, (QList<int>{1, 2}));
    const QVariantMap record = model->record(0);
    QCOMPARE(record.size(), 11);
    QCOMPARE(record["scheduleID"], QVariant(5));
    QCOMPARE(record["scheduleName"], QVariant("Bell"));
    QCOMPARE(record["scheduleSettings"].toMap(), settings); // what is not known here included
    QCOMPARE(record["enableScheduleEndTime"], QVariant(true));
    QCOMPARE(record["audioID"], QVariant(4));
    QVERIFY(model->record(1).isEmpty());
    QVERIFY(model->record(-1).isEmpty());
}

void TestPluginClient::whatIsMissingIsNamed()
{
    OldPlugin old;
    PluginClient plugin;
    QVERIFY(!plugin.attach(&old));
    const QString error = plugin.errorString();
    QVERIFY2(error.startsWith("the plug-in lacks "), qPrintable(error));
    for (const char* missing :
         {"void setMicVolume(int)", "bool startTalk(QString,QString)", "signal startTalkResponse(bool)",
          "signal playAudioError(QString,QString,QString,QString)", "property audioFileList",
          "QObject* getNetworkAudioScheduleModel(QObject*)", "role nameRole of getNetworkAudioGroupModel",
          "setFilter(QString) of getNetworkAudioGroupModel", "a model from getIPAudioModel"}) {
        QVERIFY2(error.contains(QLatin1String(missing)), qPrintable(missing + error));
    }
    for (const char* there : {"deleteIPAudio(", "signal talkDisconnected()", "role idRole"}) {
        QVERIFY2(!error.contains(QLatin1String(there)), there);
    }
    // The rest works, and what is missing does nothing.
    QVERIFY(plugin.deleteIPAudio(7));
    QCOMPARE(old.deleted, QList<int>{7});
    QSignalSpy disconnected(&plugin, &PluginClient::talkDisconnected);
    Q_EMIT old.talkDisconnected();
    QCOMPARE(disconnected.count(), 1);
    QVERIFY(!plugin.startTalk("gate"));
    plugin.setMicVolume(3);
    QVERIFY(plugin.audioFileList().isEmpty());
    QCOMPARE(plugin.getIPAudioModel(this), nullptr);
    QCOMPARE(plugin.getNetworkAudioScheduleModel(this), nullptr);
    QObject owner;
    GroupModel* groups = plugin.getNetworkAudioGroupModel(&owner);
    QCOMPARE(groups->group(0).id, 5); // by its name, under another number
    QCOMPARE(groups->group(0).name, QString());
    groups->setFilter("x");
    QCOMPARE(groups->rowCount(), 1);
}

void TestPluginClient::wrongTypesAreMissing()
{
    OldPlugin old;
    PluginClient plugin;
    QVERIFY(!plugin.attach(&old));
    QVERIFY(plugin.errorString().contains("bool stopTalk()")); // it returns a number there
    QVERIFY(plugin.errorString().contains("property talking"));
    QVERIFY(!plugin.stopTalk());
}

void TestPluginClient::withoutAPlugin()
{
    QObject owner;
    DeviceModel* devices = m_plugin->getIPAudioModel(&owner);
    m_host->unload();
    QVERIFY(!m_plugin->talking());
    QVERIFY(!m_plugin->deleteIPAudio(1));
    m_plugin->setMicMute(true);
    QCOMPARE(m_plugin->getIPAudioModel(&owner), nullptr);
    QCOMPARE(devices->rowCount(), 0);
    devices->setFilter("x");
}

QTEST_GUILESS_MAIN(TestPluginClient)
#include "tst_pluginclient.moc"
