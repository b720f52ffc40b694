#pragma once

#include "client/ServerLink.h"
#include "server/RecordingServer.h"
#include "server/devices/simulated/SimulatedConfig.h"

#include <QCommandLineParser>
#include <QStringList>

#include <memory>
#include <optional>

/** The options that all commands share: which server, and how to be let in. */
class ClientOptions
{
public:
    static void addTo(QCommandLineParser& parser);

    /** Empty, and an error, when they make no sense. */
    static std::optional<ClientOptions> read(const QCommandLineParser& parser, QString* error);

    /** How the embedded server is set up, with its devices. */
    ServerConfig serverConfig() const;

    /** A link to the chosen server; by default one of its own inside this process. */
    std::unique_ptr<ServerLink> makeLink() const;

    QString pluginPath; ///< Empty: found beside the program.
    QString serverUrl;  ///< Empty for the embedded server.
    QString user;
    QString secret;
    QString fingerprint;
    ServerConfig embedded;     ///< Of the embedded server, but for its devices.
    SimulatedConfig simulated; ///< Its devices.
    int timeout = 5000;        ///< For the connection and for each answer, ms.
    bool json = false;
};
