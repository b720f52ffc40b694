// Microphones that are plugged in and out while the plug-in runs in a host, with a server. The microphones
// are the sound server's. Elsewhere than on Windows Qt's list is never empty, and the plug-in does not look.

#include "client/PluginHost.h"
#include "embedded/EmbeddedLink.h"
#include "server/devices/simulated/SimulatedDevices.h"
#include "tests/support/BuiltLibraries.h"
#include "tests/support/PulseServer.h"
#include "tests/windows/LiveMicrophones.h"

#include <QElapsedTimer>
#include <QSignalSpy>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QTest>

class TestMicrophonePoll : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void comesAndGoes();

private:
    QString plug() const;

    std::unique_ptr<PulseServer> m_pulse;
    QTemporaryDir m_folder;
};

namespace {

constexpr int twoTicks = 2100;  // ms; a coarse timer may be 5 % late
constexpr int slack = 400;      // ms, for a machine that is busy
constexpr int listTime = 30000; // ms, until this process can know of a change

} // namespace

void TestMicrophonePoll::initTestCase()
{
    qunsetenv("FRAMESMITH_CAPTURE_FILE");
    qunsetenv("FRAMESMITH_CAPTURE_DEVICE");
    QCOMPARE(QSysInfo::productType(), QStringLiteral("windows"));
    m_pulse = std::make_unique<PulseServer>();
    QVERIFY2(m_pulse->ready(), "no PulseAudio server; is pulseaudio installed?");
    // A machine without any microphone: an output's monitor would count as one.
    for (const char* module : {"module-remap-source", "module-null-sink"}) {
        m_pulse->control({QStringLiteral("unload-module"), QString::fromLatin1(module)});
    }
}

QString TestMicrophonePoll::plug() const
{
    return QString::fromLatin1(
        m_pulse
            ->control({QStringLiteral("load-module"), QStringLiteral("module-null-source"),
                       QStringLiteral("source_name=headset"), QStringLiteral("description=Headset")})
            .trimmed());
}

void TestMicrophonePoll::comesAndGoes()
{
    const LiveMicrophones microphones;
    QTRY_COMPARE_WITH_TIMEOUT(microphones.count(), 0, listTime);
    SimulatedConfig simulated;
    simulated.cameras = defaultCameras();
    simulated.recordingDirectory = m_folder.filePath(QStringLiteral("recordings"));
    ServerConfig config;
    config.devices = simulatedDevices(simulated);
    config.dataDirectory = m_folder.filePath(QStringLiteral("data"));
    EmbeddedLink link(config);
    PluginHost host(link);
    QVERIFY2(host.load(BuiltLibraries::path("VoiceDesk")), qPrintable(host.errorString()));
    QObject* plugin = host.plugin();
    QStringList order;
    QSignalSpy available(plugin, SIGNAL(audioInDevAvailableChanged()));
    QSignalSpy talking(plugin, SIGNAL(talkingChanged()));
    QSignalSpy disconnected(plugin, SIGNAL(talkDisconnected()));
    int talkPackets = 0;
    connect(&host, &PluginHost::commandSent, this, [&](const QString& command) {
        talkPackets += command == QLatin1String("TalkData") ? 1 : 0;
        if (command == QLatin1String("StopTalk")) {
            order << QStringLiteral("StopTalk, microphone %1")
                         .arg(plugin->property("audioInDevAvailable").toBool());
        }
    });
    QVERIFY(!plugin->property("audioInDevAvailable").toBool());
    QVERIFY2(!available.wait(twoTicks + slack), "without a microphone nothing changes");

    QElapsedTimer clock;
    for (int round = 0; round < 2; ++round) {
        available.clear();
        const QString headset = plug();
        QVERIFY(!headset.isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(microphones.count(), 1, listTime);
        clock.start();
        QTRY_COMPARE_WITH_TIMEOUT(available.count(), 1, listTime);
        QVERIFY2(clock.elapsed() <= twoTicks + slack, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(plugin->property("audioInDevAvailable").toBool());

        talking.clear();
        talkPackets = 0;
        QMetaObject::invokeMethod(plugin, "startTalk", Q_ARG(QString, QStringLiteral("camera-1")),
                                  Q_ARG(QString, QString()));
        QTRY_COMPARE_WITH_TIMEOUT(talking.count(), 1, 10000);
        QVERIFY(plugin->property("talking").toBool());
        QTRY_VERIFY_WITH_TIMEOUT(talkPackets >= 3, 20000);

        order.clear();
        m_pulse->control({QStringLiteral("unload-module"), headset});
        QTRY_COMPARE_WITH_TIMEOUT(microphones.count(), 0, listTime);
        clock.start();
        QTRY_COMPARE_WITH_TIMEOUT(available.count(), 2, listTime);
        QVERIFY2(clock.elapsed() <= twoTicks + slack, qPrintable(QString::number(clock.elapsed())));
        QVERIFY(!plugin->property("audioInDevAvailable").toBool());
        QVERIFY(!plugin->property("talking").toBool());
        QCOMPARE(talking.count(), 2);
        QCOMPARE(order, QStringList{"StopTalk, microphone 1"}); // the talk ends before the front end hears
        QCOMPARE(disconnected.count(), 0);
    }
}

QTEST_GUILESS_MAIN(TestMicrophonePoll)
#include "tst_microphonepoll.moc"
