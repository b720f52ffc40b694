#pragma once

#include <QByteArray>

/** Streams of AAC, written bit by bit (ISO/IEC 14496-3). */
namespace AacStream {

/** The bits of a stream, most significant first. */
struct BitWriter
{
    void put(unsigned value, int count)
    {
        for (int bit = count - 1; bit >= 0; --bit, ++used) {
            if (used % 8 == 0) {
                bytes.append('\0');
            }
            bytes.back() = static_cast<char>(bytes.back() | (value >> bit & 1) << (7 - used % 8));
        }
    }
    QByteArray bytes;
    int used = 0;
};

/** An ADTS header for 16 kHz. @param channels configuration @param size bytes of the frame with its header */
inline void putHeader(BitWriter& bits, unsigned channels, unsigned size)
{
    bits.put(0xFFF, 12); // sync word
    bits.put(0x1, 4);    // MPEG-4, no checksum
    bits.put(1, 2);      // low complexity
    bits.put(8, 4);      // 16 kHz
    bits.put(0, 1);
    bits.put(channels, 3);
    bits.put(0, 4);
    bits.put(size, 13);
    bits.put(0x7FF, 11); // variable rate
    bits.put(0, 2);      // one raw data block
}

/** A silent channel of an element. */
inline void putSilence(BitWriter& bits)
{
    bits.put(100, 8);               // gain
    bits.put(0, 1 + 2 + 1 + 6 + 1); // one long window without a band
    bits.put(0, 3);                 // no pulses, no noise shaping, no gain control
}

/** The shortest AAC frame: an ADTS header and one silent channel, 16 kHz, 1024 samples. @param channels as
 * the header has it */
inline QByteArray silentFrame(unsigned channels = 1)
{
    BitWriter bits;
    putHeader(bits, channels, 11);
    bits.put(0, 3 + 4); // single channel element 0
    putSilence(bits);
    bits.put(7, 3); // end
    return bits.bytes;
}

/** A frame of two silent channels, 16 kHz, 1024 samples each. */
inline QByteArray silentStereoFrame()
{
    BitWriter bits;
    putHeader(bits, 2, 14);
    bits.put(1, 3);     // channel pair element
    bits.put(0, 4 + 1); // 0, each channel with a window of its own
    putSilence(bits);
    putSilence(bits);
    bits.put(7, 3); // end
    return bits.bytes;
}

} // namespace AacStream
