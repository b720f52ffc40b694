#pragma once

#include "src/decoders/g729a/G729A.h"
#include "tests/decoders/VectorFiles.h"

#include <QByteArray>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

/** Frames of G.729A with their type byte, and an engine to put them through. */
namespace G729AFrames {

inline int frameSize(char type)
{
    switch (type) {
    case 1:
    case 4:
        return 11;
    case 2:
    case 5:
        return 3;
    default:
        return 1;
    }
}

/** Cuts a row of frames. */
inline std::vector<QByteArray> cut(const QByteArray& stream)
{
    std::vector<QByteArray> frames;
    for (int at = 0; at < stream.size(); at += frames.back().size()) {
        frames.push_back(stream.mid(at, frameSize(stream[at])));
    }
    return frames;
}

struct Delete
{
    void operator()(G729AState* engine) const { G729A_Delete(&engine); }
};
using Engine = std::unique_ptr<G729AState, Delete>;

inline SpeechEngineOptions usualOptions()
{
    SpeechEngineOptions options{};
    options.g729a.type = SpeechTypeWord::G729A;
    options.g729a.fields = G729AOptionPostFilter;
    options.g729a.postFilter = 1;
    return options;
}

inline Engine makeEngine(const SpeechEngineOptions& options = usualOptions())
{
    G729AState* engine = nullptr;
    G729A_Create(&engine, &options);
    return Engine(engine);
}

struct Decoded
{
    std::int32_t status;
    std::uint32_t consumed;
    QByteArray pcm;
};

/** Decodes one frame; the reader may look at zeros behind it. */
inline Decoded decode(G729AState* engine, const QByteArray& frame, bool typed = true)
{
    std::uint8_t input[16] = {};
    std::memcpy(input, frame.constData(), static_cast<std::size_t>(std::min(frame.size(), 12)));
    alignas(4) std::int16_t pcm[G729AFrameSamples] = {};
    SpeechFrameSetup setup{};
    setup.type = SpeechTypeWord::G729A;
    setup.fields = SpeechSetupInput | SpeechSetupOutput | SpeechSetupMode;
    setup.input = input;
    setup.inputSize = static_cast<std::uint32_t>(frame.size());
    setup.output = pcm;
    setup.mode = typed ? 1 : 0;
    Decoded decoded{-1, 0, QByteArray()};
    decoded.status = G729A_SetupFrame(engine, &setup);
    if (decoded.status == 0) {
        decoded.status = G729A_DecodeFrame(engine, &decoded.consumed);
    }
    decoded.pcm = QByteArray(reinterpret_cast<const char*>(pcm), sizeof pcm);
    return decoded;
}

/** Decodes frames that all succeed; "failed" otherwise. */
inline QByteArray decodeAll(G729AState* engine, const std::vector<QByteArray>& frames)
{
    QByteArray pcm;
    for (const QByteArray& frame : frames) {
        const Decoded decoded = decode(engine, frame);
        if (decoded.status != 0 || static_cast<int>(decoded.consumed) != frame.size()) {
            return QByteArray("failed");
        }
        pcm += decoded.pcm;
    }
    return pcm;
}

/** A stream of frames of speech only, 11 bytes each. */
inline QByteArray speech()
{
    return VectorFiles::data("g729a/speech1_dtx0.g729f");
}

/** A frame of one kind, its fields written from the first bit on. */
class BitWriter
{
public:
    explicit BitWriter(char type) : m_bytes(1, type) {}

    BitWriter& put(int bits, int value)
    {
        for (int bit = bits - 1; bit >= 0; --bit) {
            if (m_used % 8 == 0) {
                m_bytes.append('\0');
            }
            const int set = ((value >> bit) & 1) << (7 - m_used % 8);
            m_bytes[m_bytes.size() - 1] =
                static_cast<char>(static_cast<unsigned char>(m_bytes[m_bytes.size() - 1]) | set);
            ++m_used;
        }
        return *this;
    }

    const QByteArray& bytes() const { return m_bytes; }

private:
    QByteArray m_bytes;
    int m_used = 0;
};

inline QByteArray sidFrame(int predictor, int first, int second, int gain)
{
    return BitWriter(2).put(1, predictor).put(5, first).put(4, second).put(5, gain).bytes();
}

} // namespace G729AFrames
