#pragma once

/**
 * @file
 * The roles of the three item models. A record is one item; each of its fields has a role. The numbers start
 * again in each model; QML binds to the enumerators' names. Values are as the server sent them where nothing
 * else is said.
 */

#include <QByteArray>
#include <QHash>
#include <Qt>

/** Roles of the model of IP audio devices. */
namespace IPAudioRole {

/** The fields of a device. */
enum Role
{
    idRole = Qt::UserRole + 1, ///< "deviceID".
    deviceNameRole,            ///< "deviceName".
    ipRole,                    ///< "ip".
    portRole,                  ///< "port"; a QString once the row was updated.
    userRole,                  ///< "username".
    passwordRole,              ///< "password", in clear text.
    bindingCameraListRole,     ///< "bindingCameraList" as a QStringList of camera ids.
};

} // namespace IPAudioRole

/** Roles of the model of groups. */
namespace NetworkAudioGroupRole {

/** The fields of a group. */
enum Role
{
    idRole = Qt::UserRole + 1, ///< "groupID".
    nameRole,                  ///< "groupName".
    networkAudioIDListRole,    ///< "networkAudioIDList" as a QVariantList of ints.
    networkAudioNameListRole,  ///< Names of the devices that are known; may be shorter than the list of ids.
};

} // namespace NetworkAudioGroupRole

/** Roles of the model of schedules. */
namespace NetworkAudioScheduleRole {

/** The fields of a schedule. */
enum Role
{
    idRole = Qt::UserRole + 1, ///< "scheduleID".
    enableRole,                ///< "enableSchedule".
    nameRole,                  ///< "scheduleName".
    startTimeRole,             ///< "scheduleStartTime".
    scheduleTypeRole,          ///< "scheduleType".
    scheduleSettingsRole,      ///< "scheduleSettings".
    endTimeRole,               ///< "scheduleEndTime".
    enableEndTimeRole,         ///< "enableScheduleEndTime".
    audioFileIDRole,           ///< "audioID".
    groupIDListRole,           ///< "groupIDList" as a QVariantList of ints.
    networkAudioIDListRole,    ///< "networkAudioIDList" as a QVariantList of ints.
};

} // namespace NetworkAudioScheduleRole

/** Returns the names of IPAudioRole by number. */
QHash<int, QByteArray> ipAudioRoleNames();
/** Returns the names of NetworkAudioGroupRole by number. */
QHash<int, QByteArray> networkAudioGroupRoleNames();
/** Returns the names of NetworkAudioScheduleRole by number. */
QHash<int, QByteArray> networkAudioScheduleRoleNames();
