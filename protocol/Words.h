#pragma once

#include <QString>

/** Words of the protocol that are between a host and a server alone; the plug-in's are in Vocabulary.h. */
namespace Words {

// Commands about the cameras of a server's records; GetCamera lists all cameras.
inline const QString GetCamera = QStringLiteral("GetCamera");
inline const QString AddCamera = QStringLiteral("AddCamera");
inline const QString UpdateCamera = QStringLiteral("UpdateCamera");
inline const QString DeleteCamera = QStringLiteral("DeleteCamera");

inline const QString camKind = QStringLiteral("camKind");       ///< How a camera is reached.
inline const QString camAddress = QStringLiteral("camAddress"); ///< Empty for one that is not in the records.

/** Event: a camera came, went, or changed its name or whether it is online. An empty map. */
inline const QString CamerasChanged = QStringLiteral("CamerasChanged");

/**
 * Event: one of several targets of a talk is lost, the others go on. A map: "Token", "error" (a text for
 * people), and "camId" or "deviceID".
 */
inline const QString TalkTargetLost = QStringLiteral("TalkTargetLost");

/** Whether an event is for the host: the plug-in does not see it. */
inline bool isHostEvent(const QString& event)
{
    return event == TalkTargetLost || event == CamerasChanged;
}

} // namespace Words
