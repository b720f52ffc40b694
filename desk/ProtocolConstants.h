#pragma once

#include "protocol/AudioStatus.h"
#include "protocol/Limits.h"
#include "protocol/ScheduleRule.h"
#include "protocol/Words.h"

#include <QObject>

/** The words, values and limits of the protocol that the pages need; QML has them as "desk.protocol". */
class ProtocolConstants : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int maxNameLength READ maxNameLength CONSTANT)             ///< Characters.
    Q_PROPERTY(int maxCredentialLength READ maxCredentialLength CONSTANT) ///< Characters.
    Q_PROPERTY(int maxPort READ maxPort CONSTANT)

    // Values of "audioStatus".
    Q_PROPERTY(int uploading READ uploading CONSTANT)
    Q_PROPERTY(int ready READ ready CONSTANT)
    Q_PROPERTY(int refusedWithOutput READ refusedWithOutput CONSTANT)
    Q_PROPERTY(int refusedWithoutOutput READ refusedWithoutOutput CONSTANT)

    // Values of "scheduleType".
    Q_PROPERTY(int once READ once CONSTANT)
    Q_PROPERTY(int weekly READ weekly CONSTANT)

    // Commands.
    Q_PROPERTY(QString addDevice READ addDevice CONSTANT)
    Q_PROPERTY(QString updateDevice READ updateDevice CONSTANT)
    Q_PROPERTY(QString deleteDevice READ deleteDevice CONSTANT)
    Q_PROPERTY(QString addGroup READ addGroup CONSTANT)
    Q_PROPERTY(QString updateGroup READ updateGroup CONSTANT)
    Q_PROPERTY(QString deleteGroup READ deleteGroup CONSTANT)
    Q_PROPERTY(QString addSchedule READ addSchedule CONSTANT)
    Q_PROPERTY(QString updateSchedule READ updateSchedule CONSTANT)
    Q_PROPERTY(QString deleteSchedule READ deleteSchedule CONSTANT)

public:
    int maxNameLength() const { return Limits::maxNameLength; }
    int maxCredentialLength() const { return Limits::maxCredentialLength; }
    int maxPort() const { return Limits::maxPort; }

    int uploading() const { return static_cast<int>(AudioStatus::Uploading); }
    int ready() const { return static_cast<int>(AudioStatus::Ready); }
    int refusedWithOutput() const { return static_cast<int>(AudioStatus::RefusedWithOutput); }
    int refusedWithoutOutput() const { return static_cast<int>(AudioStatus::RefusedWithoutOutput); }

    int once() const { return ScheduleRule::Once; }
    int weekly() const { return ScheduleRule::Weekly; }

    QString addDevice() const { return Vocabulary::AddIPAudio; }
    QString updateDevice() const { return Vocabulary::UpdateIPAudio; }
    QString deleteDevice() const { return Vocabulary::DeleteIPAudio; }
    QString addGroup() const { return Vocabulary::AddNetworkAudioGroup; }
    QString updateGroup() const { return Vocabulary::UpdateNetworkAudioGroup; }
    QString deleteGroup() const { return Vocabulary::DeleteNetworkAudioGroup; }
    QString addSchedule() const { return Vocabulary::AddNetworkAudioSchedule; }
    QString updateSchedule() const { return Vocabulary::UpdateNetworkAudioSchedule; }
    QString deleteSchedule() const { return Vocabulary::DeleteNetworkAudioSchedule; }
};
