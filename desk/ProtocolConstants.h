#pragma once

#include "protocol/CameraSettings.h"
#include "protocol/Limits.h"
#include "protocol/ScheduleRule.h"
#include "protocol/Words.h"
#include "src/vocabulary/AudioStatus.h"

#include <QObject>

/** The words, values and limits of the protocol that the pages need; QML has them as "desk.protocol". */
class ProtocolConstants : public QObject
{
    Q_OBJECT
    Q_PROPERTY(int maxNameLength READ maxNameLength CONSTANT)             ///< Characters.
    Q_PROPERTY(int maxCredentialLength READ maxCredentialLength CONSTANT) ///< Characters.
    /** The largest port number. */
    Q_PROPERTY(int maxPort READ maxPort CONSTANT)
    Q_PROPERTY(int maxReadinessDelay READ maxReadinessDelay CONSTANT) ///< Of a camera, ms.
    Q_PROPERTY(int minOpenTimeout READ minOpenTimeout CONSTANT)       ///< Of a camera, ms.
    Q_PROPERTY(int maxOpenTimeout READ maxOpenTimeout CONSTANT)       ///< Of a camera, ms.
    Q_PROPERTY(int maxDscp READ maxDscp CONSTANT)                     ///< Of a camera.

    /** "audioStatus" of a file that is being sent. */
    Q_PROPERTY(int uploading READ uploading CONSTANT)
    /** "audioStatus" of a file that can be played. */
    Q_PROPERTY(int ready READ ready CONSTANT)
    /** "audioStatus" of a file that the server has refused. */
    Q_PROPERTY(int refusedWithOutput READ refusedWithOutput CONSTANT)
    /** "audioStatus" of a refused file on a computer without a sound output. */
    Q_PROPERTY(int refusedWithoutOutput READ refusedWithoutOutput CONSTANT)

    /** "scheduleType" of a schedule that runs once. */
    Q_PROPERTY(int once READ once CONSTANT)
    /** "scheduleType" of a schedule that runs on days of the week. */
    Q_PROPERTY(int weekly READ weekly CONSTANT)

public:
    /** Returns the property maxNameLength. */
    int maxNameLength() const { return Limits::maxNameLength; }
    /** Returns the property maxCredentialLength. */
    int maxCredentialLength() const { return Limits::maxCredentialLength; }
    /** Returns the property maxPort. */
    int maxPort() const { return Limits::maxPort; }
    /** Returns the property maxReadinessDelay. */
    int maxReadinessDelay() const { return CameraSettings::maxReadinessDelay; }
    /** Returns the property minOpenTimeout. */
    int minOpenTimeout() const { return CameraSettings::minOpenTimeout; }
    /** Returns the property maxOpenTimeout. */
    int maxOpenTimeout() const { return CameraSettings::maxOpenTimeout; }
    /** Returns the property maxDscp. */
    int maxDscp() const { return CameraSettings::maxDscp; }

    /** Returns the property uploading. */
    int uploading() const { return static_cast<int>(AudioStatus::Uploading); }
    /** Returns the property ready. */
    int ready() const { return static_cast<int>(AudioStatus::Ready); }
    /** Returns the property refusedWithOutput. */
    int refusedWithOutput() const { return static_cast<int>(AudioStatus::RefusedWithOutput); }
    /** Returns the property refusedWithoutOutput. */
    int refusedWithoutOutput() const { return static_cast<int>(AudioStatus::RefusedWithoutOutput); }

    /** Returns the property once. */
    int once() const { return ScheduleRule::Once; }
    /** Returns the property weekly. */
    int weekly() const { return ScheduleRule::Weekly; }
};
