// Which lists the desk asks a server for, and when: with thousands of speakers each is dear.

#include "desk/Desk.h"
#include "protocol/ReturnCode.h"
#include "src/vocabulary/Vocabulary.h"
#include "tests/support/BuiltLibraries.h"

#include <QTemporaryDir>
#include <QTest>

class TestDeskFetches : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();
    void eachListOnceAtTheStart();
    void afterAChange_data();
    void afterAChange();
    void refusalsChangeNothing();
    void groupsHaveTheNewName();

private:
    /** A server with two speakers, a file, a group and a schedule, which does what it is asked for. */
    class CountingLink : public ServerLink
    {
    public:
        void open() override
        {
            QMetaObject::invokeMethod(this, &CountingLink::connected, Qt::QueuedConnection);
        }
        bool send(const QString& command, const QVariant& payload, quint64 request) override
        {
            asked.append(command);
            ++waiting;
            const QVariant result = lists.value(command, payload);
            QMetaObject::invokeMethod(
                this,
                [this, command, result, request, given = code] {
                    --waiting;
                    Q_EMIT replied(command, result, request, given, QString());
                },
                Qt::QueuedConnection);
            return true;
        }
        bool atRest() const { return waiting == 0; }

        QStringList asked;
        QMap<QString, QVariant> lists;
        QString code = ReturnCode::success;
        int waiting = 0; ///< For its answer.
    };

    static QVariantMap speaker(int id, const QString& name)
    {
        return {{Vocabulary::deviceID, id}, {Vocabulary::deviceName, name}, {Vocabulary::ip, "10.0.0.1"}};
    }
    /** Waits until nothing more is asked for. */
    void rest()
    {
        QTRY_VERIFY(m_link->atRest());
        for (int asked = -1; asked != m_link->asked.size();) {
            asked = m_link->asked.size();
            QCoreApplication::sendPostedEvents();
            QCoreApplication::processEvents();
            QTRY_VERIFY(m_link->atRest());
        }
    }
    QStringList take() { return std::exchange(m_link->asked, {}); }
    /** What is asked for after a change that the server has done. */
    QStringList after(const QString& change);

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<Desk> m_desk;
    CountingLink* m_link = nullptr;
};

void TestDeskFetches::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    ClientOptions options;
    options.pluginPath = BuiltLibraries::path("VoiceDesk");
    options.embedded.dataDirectory = m_folder->path();
    options.simulated.recordingDirectory = m_folder->path();
    m_desk = std::make_unique<Desk>(options, m_folder->filePath("desk.ini"));
    QVERIFY(m_desk->load());
    auto link = std::make_unique<CountingLink>();
    m_link = link.get();
    link->lists = {{Vocabulary::RetrieveIPAudioModel, QVariantList{speaker(12, "Yard"), speaker(1, "Hall")}},
                   {Vocabulary::GetAudioFile,
                    QVariantList{QVariantMap{{Vocabulary::audioID, 1}, {Vocabulary::audioName, "a.wav"}}}},
                   {Vocabulary::GetNetworkAudioGroup,
                    QVariantList{QVariantMap{{Vocabulary::groupID, 1},
                                             {Vocabulary::groupName, "All"},
                                             {Vocabulary::networkAudioIDList, "1,12"}}}},
                   {Vocabulary::GetNetworkAudioSchedule, QVariantList()}};
    m_desk->connection()->link().use(std::move(link));
    QTRY_COMPARE(m_desk->targets()->total(), 2);
    rest();
}

void TestDeskFetches::cleanup()
{
    m_desk.reset();
}

void TestDeskFetches::eachListOnceAtTheStart()
{
    for (const QString& list : {Vocabulary::RetrieveIPAudioModel, Vocabulary::GetAudioFile,
                                Vocabulary::GetNetworkAudioGroup, Vocabulary::GetNetworkAudioSchedule}) {
        QVERIFY2(m_link->asked.count(list) == 1, qPrintable(m_link->asked.join(' ')));
    }
    // Groups show the names of devices.
    QVERIFY(m_link->asked.indexOf(Vocabulary::RetrieveIPAudioModel) <
            m_link->asked.indexOf(Vocabulary::GetNetworkAudioGroup));
}

QStringList TestDeskFetches::after(const QString& change)
{
    take();
    PluginClient& plugin = *m_desk->plugin();
    if (change == "speaker added") {
        plugin.addIPAudio("New", "10.0.0.3", 80, "", "", {});
    } else if (change == "speaker changed") {
        plugin.updateIPAudio(1, "Gate", "10.0.0.1", 80, "", "", {});
    } else if (change == "speaker deleted") {
        plugin.deleteIPAudio(1);
    } else if (change == "group deleted") {
        plugin.deleteNetworkAudioGroup(1);
    } else if (change == "file deleted") {
        plugin.deleteAudioFile(1);
    } else if (change == "file gone") {
        plugin.deleteAudioFile(-1); // a change of the list that no server knows of
    }
    rest();
    return take();
}

void TestDeskFetches::afterAChange_data()
{
    const QString groups = Vocabulary::GetNetworkAudioGroup;
    const QString schedules = Vocabulary::GetNetworkAudioSchedule;
    QTest::addColumn<QStringList>("fetched");
    QTest::newRow("speaker added") << QStringList{Vocabulary::AddIPAudio};
    QTest::newRow("speaker changed") << QStringList{Vocabulary::UpdateIPAudio, groups};
    QTest::newRow("speaker deleted") << QStringList{Vocabulary::DeleteIPAudio, groups, schedules};
    QTest::newRow("group deleted") << QStringList{Vocabulary::DeleteNetworkAudioGroup, groups, schedules};
    QTest::newRow("file deleted") << QStringList{Vocabulary::DeleteFile, schedules};
    QTest::newRow("file gone") << QStringList();
}

void TestDeskFetches::afterAChange()
{
    QFETCH(QStringList, fetched);
    QCOMPARE(after(QTest::currentDataTag()), fetched);
}

void TestDeskFetches::refusalsChangeNothing()
{
    m_link->code = ReturnCode::malformedRequest;
    QCOMPARE(after("speaker changed"), QStringList{Vocabulary::UpdateIPAudio});
    QCOMPARE(after("speaker deleted"), QStringList{Vocabulary::DeleteIPAudio});
    QCOMPARE(after("file deleted"), QStringList{Vocabulary::DeleteFile});
}

void TestDeskFetches::groupsHaveTheNewName()
{
    const std::unique_ptr<GroupModel> groups(m_desk->plugin()->getNetworkAudioGroupModel(nullptr));
    QTRY_COMPARE(groups->rowCount(), 1);
    const auto names = [&] { return groups->group(0).deviceNames; };
    // Deliberate in the plug-in: the id 1 finds the first row whose id begins with it, that of 12.
    QCOMPARE(names(), (QStringList{"Yard", "Yard"}));
    QCOMPARE(after("speaker changed").count(Vocabulary::GetNetworkAudioGroup), 1);
    QCOMPARE(names(), (QStringList{"Gate", "Gate"}));
}

QTEST_GUILESS_MAIN(TestDeskFetches)
#include "tst_deskfetches.moc"
