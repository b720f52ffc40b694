#include "protocol/EventTable.h"

#include "protocol/Words.h"
#include "src/vocabulary/Vocabulary.h"

#include <algorithm>

namespace EventTable {

const std::vector<Row>& rows()
{
    namespace V = Vocabulary;
    namespace W = Words;
    static const std::vector<Row> all{
        {V::AudioReceived,
         true,
         {W::Token, W::AudioData, W::Offset, W::BitstreamSize, W::StreamType, W::AudioSamplingFreq,
          W::AudioChannelNum, W::FrameNumber},
         Receiver::Plugin},
        {V::TalkDisconnected, true, {W::Token}, Receiver::Plugin},
        {V::PlayAudioFailed, false, {V::deviceName, V::audioName, V::error, V::alarmName}, Receiver::Plugin},
        {W::CamerasChanged, false, {}, Receiver::Host},
        {W::TalkTargetLost, false, {W::Token, V::error, V::camId, V::deviceID}, Receiver::Host},
        {W::CameraVideo, false, {V::camId, W::accessUnit, W::keyFrame, W::position}, Receiver::Host},
        {W::CameraVideoEnded, false, {V::camId, V::error}, Receiver::Host},
    };
    return all;
}

bool isForPlugin(const QString& event)
{
    return std::any_of(rows().begin(), rows().end(),
                       [&](const Row& row) { return row.name == event && row.receiver == Receiver::Plugin; });
}

} // namespace EventTable
