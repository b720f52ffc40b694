#pragma once

#include <optional>

/**
 * Encodes Base64 (RFC 4648, clause 4): standard alphabet, "=" padding, no line breaks.
 *
 * @param in          inLength bytes
 * @param inLength    bytes to encode
 * @param out         room for the text; no terminator is written
 * @param outCapacity characters after which no further group of three bytes is encoded. The last, padded
 *                    group is not checked against it: out needs room for four characters more.
 * @return characters written
 */
int Base64Encode(const unsigned char* in, unsigned inLength, char* out, unsigned outCapacity);

/** Room that Base64Encode needs for any input of this length, without a terminator. */
constexpr unsigned Base64EncodeCapacity(unsigned inLength)
{
    return inLength / 3 * 4 + 4;
}

/**
 * Decodes Base64 text without looking for errors: a character outside the alphabet counts as "A", and so
 * does one that is missing at the end of the last group. "=" ends a group in its third and fourth place.
 *
 * @param in          inLength characters
 * @param out         room for outCapacity bytes
 * @param outCapacity at least inLength / 4 * 3, the quotient rounded down; bytes beyond it are not written
 * @return bytes written; 4294967295, and nothing written, when the capacity is too small
 */
unsigned Base64Decode(const char* in, unsigned inLength, unsigned char* out, unsigned outCapacity);

/**
 * Decodes Base64 text and refuses errors (RFC 4648, clause 3.3): a character outside the alphabet, and "="
 * but for one or two that fill the last group of four. The padding may be missing, and bits without a byte
 * are not looked at.
 *
 * @param out room for inLength / 4 * 3 + 2 bytes
 * @return bytes written; empty for a text with an error, of which some may have been written
 */
std::optional<unsigned> Base64DecodeStrict(const char* in, unsigned inLength, unsigned char* out);
