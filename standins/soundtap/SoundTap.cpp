#include "platform/SoundTap.h"
#include "standins/soundtap/WavHeader.h"

#include <fstream>

std::int32_t SoundTap_GetWAVInfo(SoundTapWavInfo* info)
{
    if (info == nullptr || info->path == nullptr) {
        return soundtap::WavUnreadable;
    }
    std::ifstream stream(info->path, std::ios::binary);
    if (!stream) {
        return soundtap::WavUnreadable;
    }
    soundtap::WavHeader header;
    const soundtap::WavError error = soundtap::readWavHeader(stream, header);
    if (error != soundtap::WavOk) {
        return error;
    }
    info->sampleRate = header.sampleRate;
    info->dataBegin = header.dataBegin;
    info->dataEnd = header.dataEnd;
    return soundtap::WavOk;
}
