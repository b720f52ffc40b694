#pragma once

#include "onvif/OnvifError.h"
#include "protocol/ReturnCode.h"

/** Returns the code for a camera that did not answer a question. @param otherwise for all that has no own */
inline QString returnCodeOf(OnvifError error, const QString& otherwise)
{
    switch (error) {
    case OnvifError::NotReachable:
        return ReturnCode::cameraOffline;
    case OnvifError::TimedOut:
        return ReturnCode::cameraTimedOut;
    case OnvifError::LoginNeeded:
    case OnvifError::LoginRefused:
        return ReturnCode::loginRefused;
    default:
        return otherwise;
    }
}
