#pragma once

#include "server/devices/SpeakerBackend.h"
#include "server/devices/simulated/SimulatedConfig.h"
#include "server/devices/simulated/SpeakerMixer.h"

/** Speakers that this project plays itself: each writes what it plays to a file. Serves any address. */
class SimulatedSpeakers : public SpeakerBackend
{
public:
    /** Makes speakers for any addresses; those of the configuration are offline. */
    explicit SimulatedSpeakers(const SimulatedConfig& config);

    bool serves(const Speaker& /*speaker*/) const override { return true; }
    bool isOnline(const Speaker& speaker) const override
    {
        return !m_offlineAddresses.contains(speaker.address);
    }
    std::unique_ptr<DeviceTalk> openTalk(const Speaker& speaker) override;
    std::unique_ptr<SpeakerPlayback> play(std::shared_ptr<SoundSource> source, const QList<Speaker>& speakers,
                                          Time start) override;

private:
    QSet<QString> m_offlineAddresses;
    SpeakerMixer m_rack;
};
