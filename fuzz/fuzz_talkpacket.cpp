// Any bytes as a talk packet at the server.

#include "audio/TalkPacketDecoder.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto talk =
        TalkPacketDecoder::decode(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    if (talk && talk->samples.size() + data[5] != size) {
        std::abort();
    }
    return 0;
}
