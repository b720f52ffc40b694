#pragma once

#include <QMetaType>
#include <QString>

/** Why a camera did not answer a question. */
enum class OnvifError
{
    None,         ///< It answered.
    NotReachable, ///< No connection, or no such host.
    TimedOut,     ///< No answer, or no whole one, in time.
    NotPicture,   ///< What should be a still is no JPEG.
    NotOnvif,     ///< Something answered, but not with a message of ONVIF.
    TooLarge,     ///< An answer beyond the limits.
    Untrusted,    ///< The certificate of an https address is not trusted.
    LoginNeeded,  ///< It wants a login, and none was given.
    LoginRefused, ///< It does not accept the login.
    NotSupported, ///< It does not know the request.
    Absent,       ///< It says that it has no such part.
    Elsewhere,    ///< It named an address of another host.
    Refused,      ///< Any other fault.
};

/** Returns words for people, in English; empty for None. */
QString onvifErrorText(OnvifError error);

Q_DECLARE_METATYPE(OnvifError)
