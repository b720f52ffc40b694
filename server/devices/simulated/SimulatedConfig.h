#pragma once

#include "server/devices/simulated/CameraVoice.h"

#include <QMap>
#include <QSet>
#include <QStringList>

#include <memory>
#include <vector>

/** What a simulated camera is and how it behaves. */
struct SimulatedCamera
{
    QString id;                ///< Unique.
    QString name;              ///< For people.
    bool online = true;        ///< An offline camera refuses every talk.
    CameraVoiceConfig voice{}; ///< What it says.
};

/** Where simulated devices have written what they heard and played. */
struct SimulatedRecordings
{
    static constexpr int maxTalks = 1000; ///< The latest; their files stay.

    QStringList talks;           ///< Of cameras, in the order of the talks.
    QMap<int, QString> speakers; ///< By the speaker's id; of the server that was made last.
};

/** How the simulated devices of a server are set up. */
struct SimulatedConfig
{
    bool hasCameras = true;               ///< Whether there are simulated cameras.
    bool hasSpeakers = true;              ///< Whether there are simulated speakers.
    std::vector<SimulatedCamera> cameras; ///< Beside those of the server's records.
    QString recordingDirectory;           ///< Created when something is recorded.
    QSet<QString> offlineAddresses;       ///< Speakers at these addresses are not there.
    bool speakersAloud = false;           ///< Speakers are also heard on this machine.
    std::shared_ptr<SimulatedRecordings> recordings =
        std::make_shared<SimulatedRecordings>(); ///< Filled by the devices.
};

/** The kind of simulated devices, as camera records give it. */
inline QString simulatedKind()
{
    return QStringLiteral("simulated");
}

/** The voice of a camera that echoes what it hears after half a second. */
CameraVoiceConfig echoingVoice();

/**
 * Three cameras to try things out with: one that echoes what it hears after half a second, one that listens
 * or, if there is a file for it, speaks, and one that is offline.
 */
std::vector<SimulatedCamera> defaultCameras(const QString& speechFile = QString());
