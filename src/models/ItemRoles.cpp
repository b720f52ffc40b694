#include "src/models/ItemRoles.h"

QHash<int, QByteArray> ipAudioRoleNames()
{
    return {
        {IPAudioRole::idRole, "idRole"},
        {IPAudioRole::deviceNameRole, "deviceNameRole"},
        {IPAudioRole::ipRole, "ipRole"},
        {IPAudioRole::portRole, "portRole"},
        {IPAudioRole::userRole, "userRole"},
        {IPAudioRole::passwordRole, "passwordRole"},
        {IPAudioRole::bindingCameraListRole, "bindingCameraListRole"},
    };
}

QHash<int, QByteArray> networkAudioGroupRoleNames()
{
    return {
        {NetworkAudioGroupRole::idRole, "idRole"},
        {NetworkAudioGroupRole::nameRole, "nameRole"},
        {NetworkAudioGroupRole::networkAudioIDListRole, "networkAudioIDListRole"},
        {NetworkAudioGroupRole::networkAudioNameListRole, "networkAudioNameListRole"},
    };
}

QHash<int, QByteArray> networkAudioScheduleRoleNames()
{
    return {
        {NetworkAudioScheduleRole::idRole, "idRole"},
        {NetworkAudioScheduleRole::enableRole, "enableRole"},
        {NetworkAudioScheduleRole::nameRole, "nameRole"},
        {NetworkAudioScheduleRole::startTimeRole, "startTimeRole"},
        {NetworkAudioScheduleRole::scheduleTypeRole, "scheduleTypeRole"},
        {NetworkAudioScheduleRole::scheduleSettingsRole, "scheduleSettingsRole"},
        {NetworkAudioScheduleRole::endTimeRole, "endTimeRole"},
        {NetworkAudioScheduleRole::enableEndTimeRole, "enableEndTimeRole"},
        {NetworkAudioScheduleRole::audioFileIDRole, "audioFileIDRole"},
        {NetworkAudioScheduleRole::groupIDListRole, "groupIDListRole"},
        {NetworkAudioScheduleRole::networkAudioIDListRole, "networkAudioIDListRole"},
    };
}
