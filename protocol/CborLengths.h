#pragma once

#include <QByteArray>

/**
 * Returns whether the lengths in CBOR bytes (RFC 8949) can be true: each text and byte string ends within the
 * bytes, and all arrays and maps together have no more entries than there are bytes. A reader that trusts
 * lengths would allocate gigabytes for a few bytes. Checks nothing else; any thread.
 */
bool cborLengthsFit(const QByteArray& bytes);
