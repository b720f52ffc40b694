#include "tests/support/FakeSoundTap.h"

namespace {

std::int32_t nextResult = -1;
SoundTapWavInfo nextAnswer{};
SoundTapWavInfo request{};

} // namespace

namespace FakeSoundTap {

void answer(std::int32_t result, std::uint32_t sampleRate, std::uint32_t dataBegin, std::uint32_t dataEnd)
{
    nextResult = result;
    nextAnswer.sampleRate = sampleRate;
    nextAnswer.dataBegin = dataBegin;
    nextAnswer.dataEnd = dataEnd;
}

SoundTapWavInfo lastRequest()
{
    return request;
}

} // namespace FakeSoundTap

std::int32_t SoundTap_GetWAVInfo(SoundTapWavInfo* info)
{
    request = *info;
    info->sampleRate = nextAnswer.sampleRate;
    info->dataBegin = nextAnswer.dataBegin;
    info->dataEnd = nextAnswer.dataEnd;
    return nextResult;
}
