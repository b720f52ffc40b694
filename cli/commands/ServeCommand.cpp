#include "cli/InterruptFlag.h"
#include "cli/PluginSession.h"
#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "client/ExitStatus.h"
#include "server/access/ServerCertificate.h"
#include "server/access/SocketServer.h"
#include "system/OpenFiles.h"

#include <QCoreApplication>
#include <QDir>
#include <QTimer>

#include <cstdio>

namespace {

constexpr int lookInterval = 100; // ms

int serve(const CommandArguments& arguments)
{
    const QString listen = arguments.value("listen");
    const int colon = listen.lastIndexOf(QLatin1Char(':'));
    bool validPort = false;
    SocketConfig config;
    config.port = listen.mid(colon + 1).toUShort(&validPort);
    if (colon < 0 || !validPort || !config.address.setAddress(listen.left(colon))) {
        return arguments.usage(QStringLiteral("--listen takes an address and a port, like 127.0.0.1:8440"));
    }
    if (arguments.isSet("add-user")) {
        const QString name = arguments.value("add-user");
        if (name == UserStore::tokenName()) {
            return arguments.usage(
                QStringLiteral(
                    "--add-user takes no user named \"%1\": the file of users has the token under this name; "
                    "--add-user \"\" adds a token")
                    .arg(name));
        }
        if (!UserStore::isName(name)) {
            return arguments.usage(
                QStringLiteral("--add-user takes a name without blanks, not \"%1\"").arg(name));
        }
        if (arguments.client().secret.isEmpty()) {
            return arguments.usage(
                QStringLiteral("--add-user needs a password in --secret-file or VOICEDESK_SECRET"));
        }
    }
    ClientOptions options = arguments.client();
    options.simulated.speakersAloud = arguments.isSet("aloud");
    const auto offline = arguments.list("offline");
    if (!offline) {
        return ExitUsage;
    }
    for (const QString& address : *offline) {
        options.simulated.offlineAddresses.insert(address);
    }
    OpenFiles::raiseLimit(); // each talk to a camera has some
    const ServerConfig serverConfig = options.serverConfig();
    RecordingServer server(serverConfig);
    if (!server.isOpen()) {
        return PluginSession::fail(ExitServerFailed, server.errorString());
    }
    const QString usersFile = QDir(serverConfig.dataDirectory).filePath(QStringLiteral("users"));
    if (!config.users.load(usersFile)) {
        return PluginSession::fail(ExitServerFailed, QStringLiteral("%1 cannot be read").arg(usersFile));
    }
    if (arguments.isSet("add-user")) {
        if (!config.users.setPassword(arguments.value("add-user"), arguments.client().secret)) {
            return PluginSession::fail(ExitServerFailed, QStringLiteral("the user cannot be added"));
        }
        QString error;
        if (!config.users.save(usersFile, &error)) {
            return PluginSession::fail(
                ExitServerFailed,
                QStringLiteral("the user is not added, %1 cannot be written: %2; it is as it was")
                    .arg(usersFile, error));
        }
    }
    if (config.users.isEmpty()) {
        return PluginSession::fail(ExitUsage,
                                   QStringLiteral("nobody may log in yet; add a user with --add-user NAME"));
    }
    std::optional<ServerCertificate> certificate;
    if (arguments.isSet("tls")) {
        QString error;
        certificate = ServerCertificate::loadOrCreate(serverConfig.dataDirectory, &error);
        if (!certificate) {
            return PluginSession::fail(ExitServerFailed, error);
        }
    }
    SocketServer sockets(server, config, certificate ? &*certificate : nullptr);
    if (!sockets.listen()) {
        return PluginSession::fail(
            ExitServerFailed, QStringLiteral("cannot listen at %1: %2").arg(listen, sockets.errorString()));
    }
    std::printf("serving at %s\n", qUtf8Printable(sockets.url().toString()));
    if (certificate) {
        std::printf("certificate %s\n",
                    qUtf8Printable(ServerCertificate::fingerprint(certificate->certificate)));
    }
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        // Nobody would know where the server is.
        return PluginSession::fail(ExitOutputFailed, QStringLiteral("the output cannot be written"));
    }
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [] {
        if (InterruptFlag::raised()) {
            QCoreApplication::quit();
        }
    });
    ticker.start(lookInterval);
    QCoreApplication::exec();
    return ExitSuccess;
}

} // namespace

std::vector<Command> serveCommands()
{
    return {{
        "serve",
        "",
        "run the server alone, for other programs",
        "Who may log in is in the file \"users\" of the data folder; --add-user adds a name, or\n"
        "without one a token, with the password from --secret-file or VOICEDESK_SECRET.\n"
        "While the server runs, no other program may use the data folder; commands reach it by its address.",
        {
            {"listen", "ADDRESS:PORT", "Address and port (default: 127.0.0.1:8440; port 0 takes a free one).",
             "127.0.0.1:8440"},
            {"tls", nullptr, "Encrypt; a certificate is made in the data folder at the first start.", ""},
            {"add-user", "NAME", "Add this user (\"\" for a token), then serve.", "", true},
            {"offline", "ADDRESS,...", "Addresses of devices that are not there.", ""},
            {"aloud", nullptr, "Play what the simulated speakers play on this machine, too.", ""},
        },
        Command::Records,
        serve,
    }};
}
