#pragma once

/**
 * @file
 * The bit reader of the speech engines: bits from the most significant on, from a buffer or a ring.
 *
 *   mode 1  buffer, byte stuffing (a 0x00 after 0xFF is skipped)     mode 2  ring, byte stuffing
 *   mode 3  buffer                                                   mode 4  ring
 *
 * A window holds the next 32 bits. In modes 1 and 3 it is ahead of the bytes taken, so up to three bytes
 * behind the buffer are read and must be readable; they have no effect while the input suffices. In modes 2
 * and 4 bytes may arrive at any time, pushed or by refill: an operation that needs more bytes calls refill up
 * to `retries` times. The bits do not depend on how the bytes arrive.
 */

#include <cstddef>
#include <cstdint>

struct GBEngine;

// Blocks for these records may be given at any multiple of 4, so no member may need more.
#pragma pack(push, 4)

/** The reader's state. */
struct GBEngine
{
    std::uint32_t available;  ///< Bytes held.
    std::uint32_t consumed;   ///< Bytes taken since the last release.
    std::uint32_t writeIndex; ///< Place of the next byte to write; in a ring, modulo its size.
    std::uint32_t readIndex;  ///< Place of the next byte to load into the window.
    std::uint32_t bitOffset;  ///< Bits used of the window's top byte.
    std::int32_t guard; ///< -1 until the window is loaded; then 0, or 1 when the byte to come may be stuffed.
    std::uint32_t window;                  ///< The next 32 bits.
    std::uint32_t ringMask;                ///< Ring size - 1.
    std::uint32_t retries;                 ///< Calls of refill left while a ring is empty.
    std::uint32_t retriesInit;             ///< Value of retries at the start of an operation.
    void* ownBlock;                        ///< The block to free.
    void* lockContext;                     ///< Argument of lock and unlock.
    void* refillContext;                   ///< Argument of refill.
    std::uint32_t external;                ///< Whether the block is the caller's.
    std::uint32_t needsPrime;              ///< Whether the window must be loaded.
    std::int32_t (*refill)(void* context); ///< Appends bytes.
    void (*lock)(void* context);           ///< Locks the ring.
    void (*unlock)(void* context);         ///< Unlocks the ring.
    std::uint8_t* buffer;                  ///< The buffer or ring.
    // The operations of the mode; those that it does not have return -1.
    std::int32_t (*pushBytes)(GBEngine*, const std::uint8_t* data, std::uint32_t size); ///< GB_PushBytes.
    std::int32_t (*setBuffer)(GBEngine*, std::uint8_t* data, std::uint32_t size);       ///< GB_SetBuffer.
    std::int32_t (*prime)(GBEngine*);                                                   ///< GB_Prime.
    std::int32_t (*align)(GBEngine*);                                                   ///< GB_Align.
    std::int32_t (*skipBits)(GBEngine*, std::uint32_t bits);                            ///< GB_SkipBits.
    std::int32_t (*skipBytes)(GBEngine*, std::uint32_t bytes);                          ///< GB_SkipBytes.
    std::int32_t (*readBits)(GBEngine*, std::uint32_t bits, std::uint32_t* out);        ///< GB_ReadBits.
    std::int32_t (*peek16)(GBEngine*, std::uint32_t* out);                              ///< GB_Peek16.
    std::int32_t (*peek32)(GBEngine*, std::uint32_t* out);                              ///< GB_Peek32.
    std::int32_t (*peek8)(GBEngine*, std::uint32_t* out);                               ///< GB_Peek8.
    std::int32_t (*peek24)(GBEngine*, std::uint32_t* out);                              ///< GB_Peek24.
};
static_assert(sizeof(void*) != 8 || sizeof(GBEngine) == 192);
static_assert(sizeof(void*) != 8 || offsetof(GBEngine, buffer) == 96);
static_assert(alignof(GBEngine) == 4);

#pragma pack(pop)

/** The options of a reader. */
struct GBOptions
{
    std::uint32_t type;                            ///< SpeechTypeWord::GB; bits 8 to 15 are 0.
    std::uint32_t ringSize;                        ///< Bytes; 0 or a power of two.
    std::uint32_t retries;                         ///< The most calls of refill in one operation.
    void* lockContext;                             ///< Argument of the lock callbacks.
    void* refillContext;                           ///< Argument of the refill callback.
    std::uint32_t mode;                            ///< 1 to 4.
    std::int32_t (*refillCallback)(void* context); ///< Null for one that returns 0.
    void (*lockCallback)(void* context);           ///< Null for none.
    void (*unlockCallback)(void* context);         ///< Null for none.
    void* memory; ///< Block for the reader, GB_MemorySize bytes at any address; null to allocate.
};
static_assert(sizeof(void*) != 8 || offsetof(GBOptions, lockContext) == 16);
static_assert(sizeof(void*) != 8 || offsetof(GBOptions, mode) == 32);
static_assert(sizeof(void*) != 8 || offsetof(GBOptions, refillCallback) == 40);
static_assert(sizeof(void*) != 8 || offsetof(GBOptions, memory) == 64);
static_assert(sizeof(void*) != 8 || sizeof(GBOptions) == 72);

/** Returns the bytes of a reader's block: the record, its alignment, and the ring in the ring modes. */
std::uint32_t GB_MemorySize(std::uint32_t mode, std::uint32_t ringSize);

/** Makes a reader; returns -1, and sets null, when the options are refused or there is no memory. */
std::int32_t GB_Create(GBEngine** reader, const GBOptions* options);

/** Frees a reader unless its block is the caller's, and sets the handle to null; -1 for a null handle. */
std::int32_t GB_Delete(GBEngine** reader);

/** Appends bytes to a ring; -1 when they do not fit, or in a buffer mode. */
std::int32_t GB_PushBytes(GBEngine* reader, const std::uint8_t* data, std::uint32_t size);

/** Sets the buffer to read; -1 in a ring mode. Deliberately keeps the bit offset. */
std::int32_t GB_SetBuffer(GBEngine* reader, std::uint8_t* data, std::uint32_t size);

/** Loads the window if needsPrime is set: in modes 1 and 3 from the start of the buffer. */
std::int32_t GB_Prime(GBEngine* reader);

/** Skips to the next whole byte; -1 when there is none. */
std::int32_t GB_Align(GBEngine* reader);

/** Skips bits, 0 to 24. */
std::int32_t GB_SkipBits(GBEngine* reader, std::uint32_t bits);

/** Skips whole bytes and keeps the bit offset. Returns -1, and skips nothing, when there are fewer. */
std::int32_t GB_SkipBytes(GBEngine* reader, std::uint32_t bytes);

/**
 * Reads 0 to 24 bits.
 *
 * @param reader of GB_Create
 * @param bits   how many
 * @param out    receives 32 bits: the wanted ones at the top, and those that follow
 * @return -1 when a byte beyond the input would be taken; the bit offset has then moved
 */
std::int32_t GB_ReadBits(GBEngine* reader, std::uint32_t bits, std::uint32_t* out);

/** Reads the next 8 bits and does not take them; bits beyond the input are 0, or those behind the buffer. */
std::int32_t GB_Peek8(GBEngine* reader, std::uint32_t* out);
/** Reads the next 16 bits and does not take them, like GB_Peek8. */
std::int32_t GB_Peek16(GBEngine* reader, std::uint32_t* out);
/** Reads the next 24 bits and does not take them, like GB_Peek8. */
std::int32_t GB_Peek24(GBEngine* reader, std::uint32_t* out);

/** Reads the next 32 bits and does not take them, like GB_Peek8; up to 7 low bits are not valid. */
std::int32_t GB_Peek32(GBEngine* reader, std::uint32_t* out);

/** Returns the bytes taken since the last release. */
std::uint32_t GB_Position(const GBEngine* reader);

/** Releases the bytes taken. */
void GB_Release(GBEngine* reader);
