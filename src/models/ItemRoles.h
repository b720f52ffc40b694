#pragma once

/**
 * The roles of the three item models. A record is one item; each of its fields stands under a role. The
 * numbers start anew in each model; QML binds to the enumerators' names.
 */

#include <QByteArray>
#include <QHash>
#include <Qt>

namespace IPAudioRole {

enum Role
{
    idRole = Qt::UserRole + 1,
    deviceNameRole,
    ipRole,
    portRole,
    userRole,
    passwordRole,
    bindingCameraListRole,
};

} // namespace IPAudioRole

namespace NetworkAudioGroupRole {

enum Role
{
    idRole = Qt::UserRole + 1,
    nameRole,
    networkAudioIDListRole,
    networkAudioNameListRole,
};

} // namespace NetworkAudioGroupRole

namespace NetworkAudioScheduleRole {

enum Role
{
    idRole = Qt::UserRole + 1,
    enableRole,
    nameRole,
    startTimeRole,
    scheduleTypeRole,
    scheduleSettingsRole,
    endTimeRole,
    enableEndTimeRole,
    audioFileIDRole,
    groupIDListRole,
    networkAudioIDListRole,
};

} // namespace NetworkAudioScheduleRole

QHash<int, QByteArray> ipAudioRoleNames();
QHash<int, QByteArray> networkAudioGroupRoleNames();
QHash<int, QByteArray> networkAudioScheduleRoleNames();
