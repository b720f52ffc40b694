#pragma once

#include <QByteArray>

/** One end of a talk: what a camera or a speaker hears. */
class TalkTarget
{
public:
    virtual ~TalkTarget() = default;

    /** Hears one packet; false when it is not a talk packet or cannot be stored. */
    virtual bool hear(const QByteArray& packet) = 0;
};
