#pragma once

#include <QByteArray>

/**
 * Whether the lengths in CBOR bytes (RFC 8949) can be true: each text and byte string ends within the bytes,
 * and all arrays and maps together promise no more entries than there are bytes. A reader that trusts lengths
 * would reserve gigabytes for a few bytes. Says nothing else about the bytes; any thread.
 */
bool cborLengthsFit(const QByteArray& bytes);
