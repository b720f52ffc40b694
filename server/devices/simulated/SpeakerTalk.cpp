#include "server/devices/simulated/SpeakerTalk.h"

#include "audio/TalkPacketDecoder.h"

#include <algorithm>

namespace {

constexpr std::size_t maxQueue = 2U * SpeakerMixer::sampleRate; // samples; a talk is not played late

} // namespace

SpeakerTalk::SpeakerTalk(SpeakerMixer& rack, int speaker)
    : m_rack(&rack),
      m_converter(SampleFormat::S16, TalkPacketDecoder::sampleRate, 1, SpeakerMixer::sampleRate),
      m_queue(std::make_shared<std::vector<std::int16_t>>())
{
    m_source =
        rack.addSource({speaker}, [queue = m_queue](std::size_t count, std::vector<std::int16_t>& out) {
            const auto taken = static_cast<std::ptrdiff_t>(std::min(count, queue->size()));
            out.insert(out.end(), queue->begin(), queue->begin() + taken);
            queue->erase(queue->begin(), queue->begin() + taken);
            return true; // until the talk is closed
        });
    QMetaObject::invokeMethod(this, &DeviceTalk::opened, Qt::QueuedConnection);
}

SpeakerTalk::~SpeakerTalk()
{
    if (m_rack) {
        m_rack->removeSource(m_source);
    }
}

void SpeakerTalk::close()
{
    if (m_rack) {
        m_rack->removeSource(m_source);
    }
    QMetaObject::invokeMethod(this, &DeviceTalk::closed, Qt::QueuedConnection);
}

bool SpeakerTalk::hear(const QByteArray& packet)
{
    const auto talk = TalkPacketDecoder::decode(packet);
    if (!talk) {
        return false;
    }
    m_converter.convert(talk->samples.data(), talk->samples.size(), *m_queue);
    if (m_queue->size() > maxQueue) {
        m_queue->erase(m_queue->begin(), m_queue->end() - static_cast<std::ptrdiff_t>(maxQueue));
    }
    return true;
}
