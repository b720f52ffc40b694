#pragma once

#include "ServerReply.h"
#include "TalkService.h"

#include <QHash>

#include <functional>
#include <optional>
#include <vector>

class ServerSession;

/** How a reference recording server is set up. */
struct ServerConfig
{
    std::vector<CameraConfig> cameras;
    QString recordingDirectory; ///< Created when something is recorded.
    bool answers = true;        ///< False: takes commands and answers none, to try out a dead server.
};

/**
 * The cameras of a server that nobody configured: one that echoes what it hears after half a second, one that
 * listens or, if there is a file for it, speaks, and one that is offline.
 */
std::vector<CameraConfig> defaultCameras(const QString& speechFile = QString());

/**
 * The reference recording server: executes the commands of its sessions.
 *
 *   transport --> ServerSession::submit --> RecordingServer::execute --> service --> ServerReply
 *
 * A service owns one kind of thing (talks; later devices, files, groups, schedules) and registers its
 * commands here. Lives on one thread.
 */
class RecordingServer
{
public:
    explicit RecordingServer(ServerConfig config);

    const ServerConfig& config() const { return m_config; }

    /** The recordings written so far, in the order of the talks. */
    QStringList recordings() const { return m_talks.recordings(); }

    /** Executes one command; empty when this server answers nothing. Called by sessions. */
    std::optional<ServerReply> execute(ServerSession& session, const QString& command,
                                       const QVariant& payload);

    /** Frees what a session holds. Called by sessions. */
    void closeSession(ServerSession& session);

private:
    using Executor = std::function<ServerReply(ServerSession&, const QVariant&)>;

    ServerConfig m_config;
    TalkService m_talks;
    QHash<QString, Executor> m_executors; ///< By command.
};
