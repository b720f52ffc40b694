#include "server/devices/simulated/SimulatedSpeakers.h"

#include "protocol/ServerReply.h"
#include "server/devices/RefusedTalk.h"
#include "server/devices/simulated/SpeakerTalk.h"

#include <QPointer>

namespace {

/** A sound on the rack. */
class RackPlayback : public SpeakerPlayback
{
public:
    RackPlayback(SpeakerMixer& rack, int source) : m_rack(&rack), m_source(source)
    {
        connect(&rack, &SpeakerMixer::sourceEnded, this, [this](int number) {
            if (number == m_source) {
                Q_EMIT ended();
            }
        });
    }
    ~RackPlayback() override
    {
        if (m_rack) {
            m_rack->removeSource(m_source);
        }
    }
    RackPlayback(const RackPlayback&) = delete;
    RackPlayback& operator=(const RackPlayback&) = delete;

    void keepSpeakers(const QList<int>& speakers) override { m_rack->setSpeakers(m_source, speakers); }

private:
    QPointer<SpeakerMixer> m_rack;
    int m_source;
};

} // namespace

SimulatedSpeakers::SimulatedSpeakers(const SimulatedConfig& config)
    : m_offlineAddresses(config.offlineAddresses),
      m_rack(config.recordingDirectory, config.speakersAloud, config.recordings)
{
}

std::unique_ptr<DeviceTalk> SimulatedSpeakers::openTalk(const Speaker& speaker)
{
    if (!isOnline(speaker)) {
        return std::make_unique<RefusedTalk>(ReturnCode::speakerOffline,
                                             QStringLiteral("\"%1\" is offline").arg(speaker.name));
    }
    return std::make_unique<SpeakerTalk>(m_rack, speaker.id);
}

std::unique_ptr<SpeakerPlayback> SimulatedSpeakers::play(std::shared_ptr<SoundSource> source,
                                                         const QList<Speaker>& speakers, Time start)
{
    static_assert(SoundSource::sampleRate == SpeakerMixer::sampleRate, "the rack does not convert");
    QList<int> ids;
    for (const Speaker& speaker : speakers) {
        ids.append(speaker.id);
    }
    const int number = m_rack.addSource(
        ids, [source](std::size_t count, std::vector<std::int16_t>& out) { return source->read(count, out); },
        start);
    return std::make_unique<RackPlayback>(m_rack, number);
}
