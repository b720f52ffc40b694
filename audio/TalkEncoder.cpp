#include "audio/TalkEncoder.h"

#include "audio/AmrTalkEncoder.h"
#include "audio/AvTalkEncoder.h"

std::unique_ptr<TalkEncoder> TalkEncoder::create(TalkCodec codec)
{
    if (codec == TalkCodec::AmrNb) {
        auto encoder = std::make_unique<AmrTalkEncoder>();
        return encoder->valid() ? std::move(encoder) : nullptr;
    }
    if (codec == TalkCodec::G726 || codec == TalkCodec::G7221 || codec == TalkCodec::G729A) {
        return nullptr;
    }
    auto encoder = std::make_unique<AvTalkEncoder>(codec);
    return encoder->valid() ? std::move(encoder) : nullptr;
}
