#include "PulseServer.h"

#include <QElapsedTimer>
#include <QStandardPaths>
#include <QThread>

namespace {

constexpr int startTimeout = 20000; // ms
constexpr int commandTimeout = 10000;

} // namespace

PulseServer::PulseServer()
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
    m_server.start(
        QStringLiteral("pulseaudio"),
        {QStringLiteral("--daemonize=no"), QStringLiteral("--exit-idle-time=-1"), QStringLiteral("-n"),
         QStringLiteral("--log-level=error"), QStringLiteral("--use-pid-file=no"), QStringLiteral("-L"),
         QStringLiteral("module-null-sink sink_name=out rate=48000"), QStringLiteral("-L"),
         QStringLiteral("module-null-sink sink_name=mic"), QStringLiteral("-L"),
         QStringLiteral("module-remap-source master=mic.monitor source_name=virtmic"), QStringLiteral("-L"),
         QStringLiteral("module-native-protocol-unix auth-anonymous=1 socket=") + socket});
    if (!m_server.waitForStarted()) {
        return;
    }
    QElapsedTimer clock;
    clock.start();
    while (clock.elapsed() < startTimeout && m_server.state() == QProcess::Running) {
        if (control({QStringLiteral("list"), QStringLiteral("short"), QStringLiteral("sources")})
                .contains("virtmic")) {
            control({QStringLiteral("set-default-source"), QStringLiteral("virtmic")});
            control({QStringLiteral("set-default-sink"), QStringLiteral("out")});
            m_ready = true;
            return;
        }
        QThread::msleep(20);
    }
}

PulseServer::~PulseServer()
{
    m_server.terminate();
    if (!m_server.waitForFinished(commandTimeout)) {
        m_server.kill();
        m_server.waitForFinished(commandTimeout);
    }
}

QByteArray PulseServer::control(const QStringList& arguments) const
{
    QProcess pactl;
    pactl.start(QStringLiteral("pactl"), arguments);
    if (!pactl.waitForFinished(commandTimeout) || pactl.exitCode() != 0) {
        return QByteArray();
    }
    return pactl.readAllStandardOutput();
}

std::unique_ptr<QProcess> PulseServer::speak(const QString& wavFile) const
{
    // Without a wish for less, a null sink works in steps of two seconds.
    auto paplay = std::make_unique<QProcess>();
    paplay->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    paplay->start(QStringLiteral("paplay"),
                  {QStringLiteral("--device=mic"), QStringLiteral("--latency-msec=20"), wavFile});
    paplay->waitForStarted();
    return paplay;
}
