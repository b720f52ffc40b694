#pragma once

#include "client/ServerLink.h"
#include "server/RecordingServer.h"
#include "server/devices/onvif/OnvifConfig.h"
#include "server/devices/simulated/SimulatedConfig.h"

#include <QCommandLineParser>
#include <QStringList>

#include <memory>
#include <optional>

/** The options that all commands share: which server, and the login. */
class ClientOptions
{
public:
    /** Returns the options of the connection to a server, and of the plug-in. */
    static QList<QCommandLineOption> serverOptions();
    /** Returns the options of a server's own files, and of the secret. */
    static QList<QCommandLineOption> recordsOptions();
    /** Adds both to a parser. */
    static void addTo(QCommandLineParser& parser);

    /** Returns the name of an option with one value that a parser was given several times; empty for none. */
    static QString repeated(const QCommandLineParser& parser);

    /**
     * Reads the options of a parser that has parsed its arguments, and the secret.
     *
     * @param parser has the options of addTo
     * @param error  receives the reason of a failure
     * @return empty for a wrong value, for an option that is repeated or needs --server, and when the file of
     *         the secret cannot be read
     */
    static std::optional<ClientOptions> read(const QCommandLineParser& parser, QString* error);

    /** How the embedded server is set up, with its devices. */
    ServerConfig serverConfig() const;

    /** A link to the chosen server; by default one of its own inside this process. */
    std::unique_ptr<ServerLink> makeLink() const;

    QString pluginPath;        ///< Empty: found beside the program.
    QString serverUrl;         ///< ws://host:port or wss://host:port; empty for the embedded server.
    QString user;              ///< Empty for a token.
    QString secret;            ///< Password or token.
    QString fingerprint;       ///< SHA-256 of the server's certificate, hexadecimal; may be empty.
    ServerConfig embedded;     ///< Of the embedded server, but for its devices.
    SimulatedConfig simulated; ///< Its devices that are played.
    OnvifConfig onvif;         ///< Its real cameras.
    int timeout = 5000;        ///< For the connection and for each answer, ms.
};
