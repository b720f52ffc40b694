// Any chunks into the decoder of the codec with the name FUZZED_CODEC, through DecoderSlot.

#include "src/MediaPacket.h"
#include "src/decoders/CodecTable.h"
#include "src/decoders/PcmBlock.h"
#include "src/playback/DecoderSlot.h"
#include "src/vocabulary/StreamType.h"

#include <fuzzer/FuzzedDataProvider.h>

#include <cstdlib>

extern "C" {
#include <libavutil/log.h>
}

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    av_log_set_level(AV_LOG_QUIET);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    TMediaDataPacketInfo record{};

    record.StreamType = Codec::byName(FUZZED_CODEC)->streamType;
    record.AudioSamplingFreq = input.PickValueInArray<std::uint32_t>({8000, 16000, 48000, 0, 1, 0xFFFFFFFF});
    record.AudioChannelNum = input.ConsumeIntegral<std::uint8_t>();
    record.AudioBitRate = input.PickValueInArray<std::uint32_t>({16000, 24000, 32000, 40000, 0, 1});
    record.AudioPackingMode = input.ConsumeIntegralInRange<std::uint8_t>(0, 1);
    DecoderSlot slot;
    static std::vector<std::uint8_t> block(pcmBlockSize);
    for (int packets = 0; packets < 8 && input.remaining_bytes() > 0; ++packets) {
        record.FrameNumber = input.ConsumeIntegralInRange(0U, 5U);
        std::string bytes = input.ConsumeRandomLengthString(1000);
        record.Buffer = reinterpret_cast<std::uint8_t*>(bytes.data());
        record.BitstreamSize = static_cast<std::uint32_t>(bytes.size());
        const MediaPacketPtr packet = makeMediaPacket(record);
        const auto room = input.PickValueInArray<std::uint32_t>({pcmBlockSize, 1281, 0});
        // G.726 fills the block whatever room is declared.
        const std::uint32_t most = record.StreamType == StreamType::G726 ? pcmBlockSize : room;
        std::uint32_t written = room;
        if (slot.Decode(block.data(), &written, *packet) < 0 ? written != room : written > most) {
            std::abort();
        }
    }
    return 0;
}
