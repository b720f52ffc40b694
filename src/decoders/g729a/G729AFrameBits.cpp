#include "src/decoders/g729a/G729AFrameBits.h"

#include <algorithm>

namespace G729AFrameBits {

namespace {

constexpr std::uint32_t speechBytes = 10;
constexpr std::uint32_t sidBytes = 2;

/** The byte in front of a frame. */
enum TypeByte
{
    Active = 1,
    Sid = 2,
    Erased = 3,       ///< Nothing follows.
    ActiveErased = 4, ///< The bytes that follow are not to be trusted.
    SidErased = 5,
};

/** Reads up to 24 bits and cuts them into fields, the first one on top. */
template<class... Fields>
bool read(GBEngine* reader, std::uint32_t bits, const Fields&... fields)
{
    std::uint32_t window = 0;
    if (GB_ReadBits(reader, bits, &window) < 0) {
        return false;
    }
    const auto cut = [&window](const auto& field) {
        *field.target = static_cast<std::int16_t>(window >> (32U - field.bits));
        window <<= field.bits;
    };
    (cut(fields), ...);
    return true;
}

struct Field
{
    std::int16_t* target;
    std::uint32_t bits;
};

bool readSpeech(G729AState& state)
{
    std::int16_t* parm = state.parm;
    state.ftyp = G729ASpeech;
    return read(state.reader, 18, Field{parm + LspFirst, 8}, Field{parm + LspSecond, 10}) &&
           read(state.reader, 22, Field{parm + Lag1, 8}, Field{parm + LagParity, 1},
                Field{parm + Code1, 13}) &&
           read(state.reader, 16, Field{parm + Sign1, 4}, Field{parm + Gain1, 7}, Field{parm + Lag2, 5}) &&
           read(state.reader, 24, Field{parm + Code2, 13}, Field{parm + Sign2, 4}, Field{parm + Gain2, 7});
}

bool readSid(G729AState& state)
{
    std::int16_t* parm = state.parm;
    state.ftyp = G729ASid;
    return read(state.reader, 15, Field{parm + SidSwitch, 1}, Field{parm + SidFirst, 5},
                Field{parm + SidSecond, 4}, Field{parm + SidGain, 5}) &&
           GB_Align(state.reader) >= 0;
}

bool skipErased(G729AState& state, G729AFrameType type, std::uint32_t bytes, int parameters)
{
    state.ftyp = type;
    state.bfi = 1;
    if (GB_SkipBytes(state.reader, bytes) < 0) {
        return false;
    }
    std::fill_n(state.parm, parameters, static_cast<std::int16_t>(0));
    return true;
}

bool readTyped(G729AState& state)
{
    std::int16_t type = 0;
    if (!read(state.reader, 8, Field{&type, 8})) {
        return false;
    }
    switch (type) {
    case Active:
        return readSpeech(state);
    case Sid:
        return readSid(state);
    case Erased:
        state.bfi = 1;
        return true;
    case ActiveErased:
        return skipErased(state, G729ASpeech, speechBytes, G729AParameters);
    case SidErased:
        return skipErased(state, G729ASid, sidBytes, SidGain + 1);
    default:
        return true;
    }
}

} // namespace

std::int32_t unpack(G729AState& state)
{
    state.bfi = 0;
    state.ftyp = G729ANoTransmission;
    if (state.frameHeader != 0 ? readTyped(state) : readSpeech(state)) {
        return SpeechSuccess;
    }
    // Deliberate: a failed read has moved the bit offset, which goes back here, as all history stays as it
    // was; left where it is, it would garble every frame to come.
    state.reader->bitOffset = 0;
    return SpeechFailure;
}

std::int16_t parityError(std::int16_t lag, std::int16_t parityBit)
{
    int sum = parityBit + 1;
    for (int bit = 2; bit <= 7; ++bit) {
        sum += (lag >> bit) & 1;
    }
    return static_cast<std::int16_t>(sum & 1);
}

} // namespace G729AFrameBits
