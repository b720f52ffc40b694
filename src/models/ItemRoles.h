#pragma once

/**
 * The roles of the three item models. A record is one item; each of its fields stands under a role. The
 * numbers start anew in each model; the role names are what QML binds to.
 */

#include <QByteArray>
#include <QHash>
#include <Qt>

enum IPAudioRole
{
    IPAudioIdRole = Qt::UserRole + 1,
    IPAudioDeviceNameRole,
    IPAudioIpRole,
    IPAudioPortRole,
    IPAudioUserRole,
    IPAudioPasswordRole,
    IPAudioBindingCameraListRole,
};

enum NetworkAudioGroupRole
{
    NetworkAudioGroupIdRole = Qt::UserRole + 1,
    NetworkAudioGroupNameRole,
    NetworkAudioGroupNetworkAudioIDListRole,
    NetworkAudioGroupNetworkAudioNameListRole,
};

enum NetworkAudioScheduleRole
{
    NetworkAudioScheduleIdRole = Qt::UserRole + 1,
    NetworkAudioScheduleEnableRole,
    NetworkAudioScheduleNameRole,
    NetworkAudioScheduleStartTimeRole,
    NetworkAudioScheduleScheduleTypeRole,
    NetworkAudioScheduleScheduleSettingsRole,
    NetworkAudioScheduleEndTimeRole,
    NetworkAudioScheduleEnableEndTimeRole,
    NetworkAudioScheduleAudioFileIDRole,
    NetworkAudioScheduleGroupIDListRole,
    NetworkAudioScheduleNetworkAudioIDListRole,
};

QHash<int, QByteArray> ipAudioRoleNames();
QHash<int, QByteArray> networkAudioGroupRoleNames();
QHash<int, QByteArray> networkAudioScheduleRoleNames();
