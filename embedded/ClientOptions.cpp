#include "embedded/ClientOptions.h"

#include "client/SocketLink.h"
#include "embedded/EmbeddedLink.h"
#include "server/devices/onvif/OnvifDevices.h"
#include "server/devices/simulated/SimulatedDevices.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>

namespace {

constexpr double maxTimeoutSeconds = 3600; // s
constexpr int msPerSecond = 1000;

QCommandLineOption valueOption(const char* name, const char* description, const char* value,
                               const QString& fallback = QString())
{
    return QCommandLineOption(QString::fromLatin1(name), QString::fromLatin1(description),
                              QString::fromLatin1(value), fallback);
}

QString defaultDataDirectory()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        .filePath(QStringLiteral("voicedesk"));
}

} // namespace

QList<QCommandLineOption> ClientOptions::serverOptions()
{
    return {
        valueOption("server",
                    "Use the server at this address, ws://host:port or wss://host:port (default: one inside "
                    "of this program).",
                    "url"),
        valueOption("user", "Name to log in with; without one VOICEDESK_SECRET is a token.", "name"),
        valueOption("fingerprint", "SHA-256 of the server's certificate, as \"voicedesk serve\" shows it.",
                    "hex"),
        valueOption("timeout", "Wait for the server (default: 5).", "seconds", QStringLiteral("5")),
        valueOption("plugin", "The plug-in (default: found beside this program).", "file"),
    };
}

QList<QCommandLineOption> ClientOptions::recordsOptions()
{
    return {
        valueOption("secret-file",
                    "File with the password or token (default: the environment variable VOICEDESK_SECRET).",
                    "file"),
        valueOption("data",
                    "Where the server inside this program keeps its records; for one program at a time "
                    "(default: voicedesk in the user's data folder).",
                    "folder", defaultDataDirectory()),
        valueOption("output", "Folder of recordings (default: recordings).", "folder",
                    QStringLiteral("recordings")),
        QCommandLineOption(
            QStringLiteral("simulate"),
            QStringLiteral(
                "Give the server of this program simulated cameras and speakers; that of "
                "voicedesk talk has the cameras anyway, that of voicedesk cameras without --data.")),
    };
}

void ClientOptions::addTo(QCommandLineParser& parser)
{
    parser.addOptions(serverOptions());
    parser.addOptions(recordsOptions());
}

QString ClientOptions::repeated(const QCommandLineParser& parser)
{
    const QStringList given = parser.optionNames();
    for (const QString& name : given) {
        if (parser.values(name).size() > 1) {
            return name;
        }
    }
    return QString();
}

std::optional<ClientOptions> ClientOptions::read(const QCommandLineParser& parser, QString* error)
{
    ClientOptions options;
    const QStringList given = parser.optionNames();
    for (const QString& name : given) {
        // An unset variable in a script: neither the current folder nor the default is meant.
        const QStringList values = parser.values(name);
        if (!values.isEmpty() && values.contains(QString())) {
            *error = QStringLiteral("the value of --%1 is empty").arg(name);
            return std::nullopt;
        }
    }
    if (const QString twice = repeated(parser); !twice.isEmpty()) {
        *error = QStringLiteral("--%1 is given more than once").arg(twice);
        return std::nullopt;
    }
    // Else a change that is meant for another server would be made in the records here.
    for (const QString& name : {QStringLiteral("user"), QStringLiteral("fingerprint")}) {
        if (parser.isSet(name) && !parser.isSet(QStringLiteral("server"))) {
            *error = QStringLiteral("--%1 is for another server: give --server, too").arg(name);
            return std::nullopt;
        }
    }
    bool valid = false;
    const double timeout = parser.value(QStringLiteral("timeout")).toDouble(&valid);
    if (!valid || !(timeout > 0 && timeout <= maxTimeoutSeconds)) {
        *error = QStringLiteral("--timeout takes a number of seconds up to %1").arg(maxTimeoutSeconds);
        return std::nullopt;
    }
    options.timeout = static_cast<int>(timeout * msPerSecond);
    options.pluginPath = parser.value(QStringLiteral("plugin"));
    options.serverUrl = parser.value(QStringLiteral("server"));
    const QUrl url(options.serverUrl, QUrl::StrictMode);
    const bool socketUrl = url.scheme() == QLatin1String("ws") || url.scheme() == QLatin1String("wss");
    if (!options.serverUrl.isEmpty() && (!url.isValid() || !socketUrl || url.host().isEmpty())) {
        *error = QStringLiteral("--server takes an address like ws://host:port or wss://host:port");
        return std::nullopt;
    }
    options.user = parser.value(QStringLiteral("user"));
    if (parser.isSet(QStringLiteral("fingerprint"))) {
        const auto digits = SocketLink::fingerprintDigits(parser.value(QStringLiteral("fingerprint")));
        if (!digits) {
            *error = QStringLiteral("--fingerprint takes the 64 hexadecimal digits of a SHA-256");
            return std::nullopt;
        }
        options.fingerprint = *digits;
    }
    options.secret = qEnvironmentVariable("VOICEDESK_SECRET");
    if (parser.isSet(QStringLiteral("secret-file"))) {
        QFile file(parser.value(QStringLiteral("secret-file")));
        if (!file.open(QIODevice::ReadOnly)) {
            *error = QStringLiteral("%1 cannot be read").arg(file.fileName());
            return std::nullopt;
        }
        options.secret = QString::fromUtf8(file.readAll()).trimmed();
    }
    options.simulated.hasCameras = parser.isSet(QStringLiteral("simulate"));
    options.simulated.hasSpeakers = options.simulated.hasCameras;
    options.simulated.cameras = defaultCameras();
    options.embedded.dataDirectory = QDir(parser.value(QStringLiteral("data"))).absolutePath();
    options.simulated.recordingDirectory = QDir(parser.value(QStringLiteral("output"))).absolutePath();
    options.onvif.recordingDirectory = options.simulated.recordingDirectory;
    return options;
}

ServerConfig ClientOptions::serverConfig() const
{
    ServerConfig config = embedded;
    // Of the kinds that serve a speaker the first counts, and simulated speakers serve any: they are last.
    for (const DeviceKinds& kinds : {
             onvifDevices(onvif),
             simulatedDevices(simulated),
         }) {
        DeviceKinds& all = config.devices;
        all.cameras.insert(all.cameras.end(), kinds.cameras.begin(), kinds.cameras.end());
        all.speakers.insert(all.speakers.end(), kinds.speakers.begin(), kinds.speakers.end());
        all.absentCameras.insert(all.absentCameras.end(), kinds.absentCameras.begin(),
                                 kinds.absentCameras.end());
    }
    return config;
}

std::unique_ptr<ServerLink> ClientOptions::makeLink() const
{
    if (serverUrl.isEmpty()) {
        return std::make_unique<EmbeddedLink>(serverConfig());
    }
    return std::make_unique<SocketLink>(SocketLinkConfig{QUrl(serverUrl), user, secret, fingerprint});
}
