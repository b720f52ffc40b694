#include "onvif/OnvifError.h"

QString onvifErrorText(OnvifError error)
{
    switch (error) {
    case OnvifError::None:
        break;
    case OnvifError::NotReachable:
        return QStringLiteral("the camera cannot be reached");
    case OnvifError::TimedOut:
        return QStringLiteral("the camera did not answer in time");
    case OnvifError::NotPicture:
        return QStringLiteral("what the camera sent is no picture");
    case OnvifError::NotOnvif:
        return QStringLiteral("what answered is no ONVIF camera");
    case OnvifError::TooLarge:
        return QStringLiteral("the camera's answer is too large");
    case OnvifError::Untrusted:
        return QStringLiteral("the camera's certificate is not trusted");
    case OnvifError::LoginNeeded:
        return QStringLiteral("the camera wants a login");
    case OnvifError::LoginRefused:
        return QStringLiteral("the camera refuses the login");
    case OnvifError::NotSupported:
        return QStringLiteral("the camera does not know the request");
    case OnvifError::Absent:
        return QStringLiteral("the camera has no such part");
    case OnvifError::Elsewhere:
        return QStringLiteral("the camera names an address of another host");
    case OnvifError::Refused:
        return QStringLiteral("the camera refuses the request");
    }
    return QString();
}
