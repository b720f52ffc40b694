#include "ItemRoles.h"

QHash<int, QByteArray> ipAudioRoleNames()
{
    return {
        {IPAudioIdRole, "idRole"},
        {IPAudioDeviceNameRole, "deviceNameRole"},
        {IPAudioIpRole, "ipRole"},
        {IPAudioPortRole, "portRole"},
        {IPAudioUserRole, "userRole"},
        {IPAudioPasswordRole, "passwordRole"},
        {IPAudioBindingCameraListRole, "bindingCameraListRole"},
    };
}

QHash<int, QByteArray> networkAudioGroupRoleNames()
{
    return {
        {NetworkAudioGroupIdRole, "idRole"},
        {NetworkAudioGroupNameRole, "nameRole"},
        {NetworkAudioGroupNetworkAudioIDListRole, "networkAudioIDListRole"},
        {NetworkAudioGroupNetworkAudioNameListRole, "networkAudioNameListRole"},
    };
}

QHash<int, QByteArray> networkAudioScheduleRoleNames()
{
    return {
        {NetworkAudioScheduleIdRole, "idRole"},
        {NetworkAudioScheduleEnableRole, "enableRole"},
        {NetworkAudioScheduleNameRole, "nameRole"},
        {NetworkAudioScheduleStartTimeRole, "startTimeRole"},
        {NetworkAudioScheduleScheduleTypeRole, "scheduleTypeRole"},
        {NetworkAudioScheduleScheduleSettingsRole, "scheduleSettingsRole"},
        {NetworkAudioScheduleEndTimeRole, "endTimeRole"},
        {NetworkAudioScheduleEnableEndTimeRole, "enableEndTimeRole"},
        {NetworkAudioScheduleAudioFileIDRole, "audioFileIDRole"},
        {NetworkAudioScheduleGroupIDListRole, "groupIDListRole"},
        {NetworkAudioScheduleNetworkAudioIDListRole, "networkAudioIDListRole"},
    };
}
