#include "tests/support/PulseServer.h"

#include <QElapsedTimer>
#include <QFile>

namespace {

constexpr int startTimeout = 20000; // ms
constexpr int commandTimeout = 10000;

} // namespace

PulseServer::PulseServer()
{
    if (!start()) {
        return;
    }
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < startTimeout) {
        if (control({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sources")})
                .contains("virtmic")) {
            control({QStringLiteral("set-default-source"), QStringLiteral("virtmic")});
            control({QStringLiteral("set-default-sink"), QStringLiteral("out")});
            m_ready = true;
            return;
        }
    }
}

#ifdef Q_OS_WIN

bool PulseServer::start()
{
    return qEnvironmentVariableIsSet("VOICEDESK_TEST_HOST");
}

PulseServer::~PulseServer()
{
    control({QStringLiteral("exit")});
}

#else

bool PulseServer::start()
{
    const QString socket = m_folder.filePath(QStringLiteral("pulse.sock"));
    qputenv("XDG_RUNTIME_DIR", m_folder.path().toUtf8());
    qputenv("PULSE_RUNTIME_PATH", m_folder.path().toUtf8());
    qputenv("PULSE_SERVER", "unix:" + socket.toUtf8());
    qputenv("ALSA_CONFIG_PATH", "/dev/null");
    // The sanitizers' settings are for the program under test.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("PULSE_SERVER"));
    environment.insert(QStringLiteral("HOME"), m_folder.path());
    m_server.setProcessEnvironment(environment);
    m_server.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // With srbchannel libpulse may abort a host at its end, see lifetime/ApplicationEnd.cpp.
    // On Windows the descriptions are the devices' names, and their order is that of the alphabet.
    m_server.start(
        QStringLiteral("pulseaudio"),
        {QStringLiteral("--daemonize=no"), QStringLiteral("--exit-idle-time=-1"), QStringLiteral("-n"),
         QStringLiteral("--log-level=error"), QStringLiteral("--use-pid-file=no"), QStringLiteral("-L"),
         QStringLiteral("module-null-sink sink_name=out rate=48000 norewinds=1 "
                        "sink_properties=device.description=Loudspeaker"),
         QStringLiteral("-L"),
         QStringLiteral(
             "module-null-sink sink_name=mic norewinds=1 sink_properties=device.description=Mouth"),
         QStringLiteral("-L"),
         QStringLiteral("module-remap-source master=mic.monitor source_name=virtmic "
                        "source_properties=device.description=virtmic"),
         QStringLiteral("-L"),
         QStringLiteral("module-native-protocol-unix auth-anonymous=1 srbchannel=no socket=") + socket});
    QElapsedTimer clock;
    clock.start();
    while (m_server.state() != QProcess::NotRunning && clock.elapsed() < startTimeout) {
        if (QFile::exists(socket)) {
            return true;
        }
        m_server.waitForFinished(20);
    }
    return false;
}

PulseServer::~PulseServer()
{
    m_server.terminate();
    if (!m_server.waitForFinished(commandTimeout)) {
        m_server.kill();
        m_server.waitForFinished(commandTimeout);
    }
}

#endif

QByteArray PulseServer::control(const QStringList& arguments) const
{
    HostCommand pactl(QStringLiteral("pactl"), arguments);
    return pactl.waitForEnd(commandTimeout) ? pactl.takeOutput() : QByteArray();
}

std::unique_ptr<HostCommand> PulseServer::speak(const QString& wavFile) const
{
    // Without a wish for less, a null sink works in steps of two seconds.
    return std::make_unique<HostCommand>(
        QStringLiteral("paplay"),
        QStringList{QStringLiteral("--device=mic"), QStringLiteral("--latency-msec=20"), wavFile});
}
