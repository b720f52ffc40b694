#pragma once

#include "audio/PcmConverter.h"
#include "server/devices/DeviceTalk.h"
#include "server/devices/simulated/SpeakerMixer.h"

#include <QPointer>

#include <memory>
#include <vector>

/** A talk to a simulated speaker: what is said is mixed into what it plays, as soon as it comes. */
class SpeakerTalk : public DeviceTalk
{
public:
    /** Adds the talk to what a speaker plays. @param speaker its id */
    SpeakerTalk(SpeakerMixer& rack, int speaker);
    ~SpeakerTalk() override;
    SpeakerTalk(const SpeakerTalk&) = delete;
    SpeakerTalk& operator=(const SpeakerTalk&) = delete;

    bool hear(const QByteArray& packet) override;
    void close() override;

private:
    QPointer<SpeakerMixer> m_rack;
    int m_source;
    PcmConverter m_converter;
    std::shared_ptr<std::vector<std::int16_t>> m_queue; ///< Heard and not yet played, at the rack's rate.
};
