#pragma once

/**
 * @file
 * One factory for each codec. Each returns null on failure. The decoder is freed by its Release. Any thread.
 */

#include <cstdint>

class DecoderContext;

/** G.722.1, 16 kHz mono (ITU-T G.722.1). */
DecoderContext* CreateDecoderSorvixG7221();

/** G.729 Annex A with Annex B, 8 kHz mono (ITU-T G.729). */
DecoderContext* CreateDecoderSorvixG729A();

/** AAC with ADTS headers (ISO/IEC 13818-7). @param sampleRate Hz */
DecoderContext* CreateDecoder_AAC(std::uint32_t sampleRate, std::uint32_t channels);

/** AMR narrow band, 8 kHz mono, one frame a chunk with its type byte first (RFC 4867 clause 5.3). */
DecoderContext* CreateDecoder_AMR();

/** G.711 mu-law (ITU-T G.711). @param sampleRate Hz */
DecoderContext* CreateDecoder_MuLaw(std::uint32_t sampleRate, std::uint32_t channels);

/** G.711 A-law (ITU-T G.711). @param sampleRate Hz */
DecoderContext* CreateDecoder_ALaw(std::uint32_t sampleRate, std::uint32_t channels);

/** G.726, codewords packed from the most significant bit (packing 1). @param bitRate bit/s */
DecoderContext* CreateDecoderG726Left(std::uint32_t bitRate);

/** G.726, codewords packed from the least significant bit (packing 2). @param bitRate bit/s */
DecoderContext* CreateDecoderG726Right(std::uint32_t bitRate);
