#pragma once

#include "src/decoders/g729a/G729A.h"

/** Reads the parameters of a frame from its bits (ITU-T G.729, clause 4; Annex B, clause B.4). */
namespace G729AFrameBits {

/** Indices of G729AState::parm in a speech frame. */
enum SpeechParameter
{
    LspFirst,     ///< L0 and L1, 8 bits.
    LspSecond,    ///< L2 and L3, 10 bits.
    Lag1,         ///< P1, 8 bits.
    LagParity,    ///< P0, 1 bit; replaced by the bad-pitch flag.
    Code1,        ///< C1, 13 bits.
    Sign1,        ///< S1, 4 bits.
    Gain1,        ///< GA1 and GB1, 7 bits.
    Lag2,         ///< P2, 5 bits.
    Code2,        ///< C2, 13 bits.
    Sign2,        ///< S2, 4 bits.
    Gain2,        ///< GA2 and GB2, 7 bits.
    PerSubframe = ///< From a code, sign or gain to that of the second subframe.
    Code2 - Code1,
};

/** Indices of G729AState::parm in a SID frame. */
enum SidParameter
{
    SidSwitch, ///< Switch of the LSF predictor, 1 bit.
    SidFirst,  ///< First stage of the LSF, 5 bits.
    SidSecond, ///< Second stage of the LSF, 4 bits.
    SidGain,   ///< Gain, 5 bits.
};

/**
 * Reads a frame into parm, ftyp and bfi. An unknown type byte counts as no transmission.
 *
 * @return 0; -1 when the input ends inside the frame. The reader is then at a whole byte.
 */
std::int32_t unpack(G729AState& state);

/** Returns 1 when bits 2 to 7 of the first lag do not match their parity bit, else 0. */
std::int16_t parityError(std::int16_t lag, std::int16_t parityBit);

} // namespace G729AFrameBits
