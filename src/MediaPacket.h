#pragma once

/**
 * @file
 * The reference-counted media packet: one allocation that holds everything the packet refers to.
 *
 *   | count, size | record, 264 | extra block | header | bitstream | 32 zero bytes | side items |
 *                                                      ^ 16-byte boundary
 *                                                                  ^ from the size rounded down to 4
 *
 * References may be taken and dropped on any thread.
 */

#include "platform/MediaDataPacketInfo.h"

#include <boost/intrusive_ptr.hpp>

/** The record at the head of a reference-counted packet; the name is the host interface's. */
struct _TMediaDataPacketInfoV3 : TMediaDataPacketInfo // NOLINT(bugprone-reserved-identifier)
{
};
static_assert(sizeof(_TMediaDataPacketInfoV3) == 264);

/** Holds one reference to a packet. */
using MediaPacketPtr = boost::intrusive_ptr<_TMediaDataPacketInfoV3>;

/** Takes a reference; called by MediaPacketPtr. */
void intrusive_ptr_add_ref(_TMediaDataPacketInfoV3* packet);
/** Drops a reference and frees the packet with the last one; called by MediaPacketPtr. */
void intrusive_ptr_release(_TMediaDataPacketInfoV3* packet);

/**
 * Copies a filled record with its packet, extra block and side items.
 *
 * @param record Buffer holds Offset + BitstreamSize bytes, ExtraData (if set) ExtraDataSize bytes, Items (if
 *               set) ItemCount * 32 bytes
 * @return null when there is no memory for it
 */
MediaPacketPtr makeMediaPacket(const TMediaDataPacketInfo& record);
