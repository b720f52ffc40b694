#pragma once

#include <QString>

/** Words of the protocol that are between a host and a server alone; the plug-in's are in Vocabulary.h. */
namespace Words {

/**
 * Event: one of several targets of a talk is lost, the others go on. A map: "Token", "error" (a text for
 * people), and "camId" or "deviceID".
 */
inline const QString TalkTargetLost = QStringLiteral("TalkTargetLost");

/** Whether an event is for the host: the plug-in does not see it. */
inline bool isHostEvent(const QString& event)
{
    return event == TalkTargetLost;
}

} // namespace Words
