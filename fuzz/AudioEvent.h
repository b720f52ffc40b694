#pragma once

#include "protocol/Words.h"
#include "src/decoders/CodecTable.h"

#include <QString>
#include <QVariantMap>

#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <string>

/** The format of a fuzzed stream; what a change of it reopens the output for. */
struct FuzzedStream
{
    std::uint32_t type = 0;
    std::uint32_t rate = 0;     ///< Hz.
    std::uint32_t channels = 0; ///< As in the event; packets carry its low byte.

    static FuzzedStream from(FuzzedDataProvider& input)
    {
        FuzzedStream stream;
        const auto row = input.ConsumeIntegralInRange<std::size_t>(0, codecTable.size());
        stream.type = row == 0 ? 0 : codecTable.begin()[row - 1].streamType;
        switch (input.ConsumeIntegralInRange(0, 3)) {
        case 0:
            stream.rate = input.ConsumeIntegral<std::uint32_t>();
            break;
        case 1:
            stream.rate = input.ConsumeIntegralInRange(0U, 100U);
            break;
        default:
            stream.rate = input.PickValueInArray<std::uint32_t>({8000, 16000, 48000, 44100, 11025, 192000});
        }
        stream.channels = input.ConsumeBool() ? input.ConsumeIntegralInRange(0U, 9U)
                                              : input.ConsumeIntegral<std::uint16_t>();
        return stream;
    }
};

/** The payload of an AudioReceived event with one packet of a stream; sizes and text may lie. */
inline QVariantMap audioEvent(FuzzedDataProvider& input, const FuzzedStream& stream, const QString& token)
{
    const bool wild = input.ConsumeIntegral<std::uint8_t>() < 26;
    const auto offset = wild ? input.ConsumeIntegral<std::uint32_t>() : input.ConsumeIntegralInRange(0U, 40U);
    const auto frames = input.ConsumeIntegralInRange(0U, 5U);
    const std::string bytes = input.ConsumeRandomLengthString(2000);
    const auto length =
        wild ? input.ConsumeIntegral<std::uint32_t>()
             : static_cast<std::uint32_t>(std::max<std::size_t>(bytes.size(), offset)) - offset;
    const bool text = input.ConsumeIntegral<std::uint8_t>() < 26;
    const QByteArray raw = QByteArray::fromStdString(bytes);
    return {
        {Vocabulary::AudioReceived, QVariantMap{
                                        {Words::Token, token},
                                        {Words::BitstreamSize, length},
                                        {Words::Offset, offset},
                                        {Words::AudioData, QString::fromLatin1(text ? raw : raw.toBase64())},
                                        {Words::StreamType, stream.type},
                                        {Words::AudioSamplingFreq, stream.rate},
                                        {Words::AudioChannelNum, stream.channels},
                                        {Words::FrameNumber, frames},
                                    }}};
}
