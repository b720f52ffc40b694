// Any bytes as a WAV file: the header's reader stays inside them and gives offsets that make sense.

#include "standins/soundtap/WavHeader.h"

#include <cstdlib>
#include <sstream>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    std::istringstream stream(std::string(reinterpret_cast<const char*>(data), size));
    soundtap::WavHeader header;
    if (soundtap::readWavHeader(stream, header) == soundtap::WavOk &&
        (header.dataBegin >= header.dataEnd || header.dataEnd > size || header.sampleRate == 0)) {
        std::abort();
    }
    return 0;
}
