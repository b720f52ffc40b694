#pragma once

#include "protocol/ReturnCode.h"

#include <QByteArray>
#include <QString>

/** A still of a camera, or why there is none. */
struct CameraPicture
{
    QByteArray jpeg;                          ///< At most Limits::maxPictureBytes; empty without success.
    QString returnCode = ReturnCode::success; ///< See ReturnCode.
    QString reason;                           ///< For people; empty for success.
};
