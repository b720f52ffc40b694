#pragma once

#include "server/devices/DeviceTalk.h"

/** A talk that a back end refuses at once. */
class RefusedTalk : public DeviceTalk
{
public:
    /** Emits refused later. @param returnCode see ReturnCode @param reason for people */
    RefusedTalk(const QString& returnCode, const QString& reason)
    {
        QMetaObject::invokeMethod(
            this, [this, returnCode, reason] { Q_EMIT refused(returnCode, reason); }, Qt::QueuedConnection);
    }

    bool hear(const QByteArray& /*packet*/) override { return false; }
    void close() override { QMetaObject::invokeMethod(this, &DeviceTalk::closed, Qt::QueuedConnection); }
};
