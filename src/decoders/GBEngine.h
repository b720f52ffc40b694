#pragma once

/**
 * The bit reader of the speech engines: bits from the most significant on, from a buffer or a ring.
 *
 *   mode 1  buffer, byte stuffing (a 0x00 behind 0xFF is skipped)    mode 2  ring, byte stuffing
 *   mode 3  buffer                                                   mode 4  ring
 *
 * A window holds the next 32 bits. In modes 1 and 3 it runs ahead of what has been taken, so a reader looks
 * at up to three bytes behind its buffer, which are to be readable; they never decide anything while the
 * input suffices. In modes 2 and 4 bytes may arrive at any time, pushed or by refill: an operation that lacks
 * bytes calls refill up to `retries` times, and bits are the same however the bytes arrive.
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
    std::uint32_t writeIndex; ///< Where the next byte is put; of a ring, modulo its size.
    std::uint32_t readIndex;  ///< Where the window is loaded from next.
    std::uint32_t bitOffset;  ///< Bits used of the window's top byte.
    std::int32_t guard; ///< -1 until the window is loaded; then 0, or 1 when the byte to come may be stuffed.
    std::uint32_t window;   ///< The next 32 bits.
    std::uint32_t ringMask; ///< Ring size - 1.
    std::uint32_t retries;  ///< Calls of refill left while a ring is empty.
    std::uint32_t retriesInit;
    void* ownBlock; ///< What to free.
    void* lockContext;
    void* refillContext;
    std::uint32_t external; ///< Whether the block is the caller's.
    std::uint32_t needsPrime;
    std::int32_t (*refill)(void* context);
    void (*lock)(void* context);
    void (*unlock)(void* context);
    std::uint8_t* buffer;
    // The operations of the mode; those that it has no use for return -1.
    std::int32_t (*pushBytes)(GBEngine*, const std::uint8_t* data, std::uint32_t size);
    std::int32_t (*setBuffer)(GBEngine*, std::uint8_t* data, std::uint32_t size);
    std::int32_t (*prime)(GBEngine*);
    std::int32_t (*align)(GBEngine*);
    std::int32_t (*skipBits)(GBEngine*, std::uint32_t bits);
    std::int32_t (*skipBytes)(GBEngine*, std::uint32_t bytes);
    std::int32_t (*readBits)(GBEngine*, std::uint32_t bits, std::uint32_t* out);
    std::int32_t (*peek16)(GBEngine*, std::uint32_t* out);
    std::int32_t (*peek32)(GBEngine*, std::uint32_t* out);
    std::int32_t (*peek8)(GBEngine*, std::uint32_t* out);
    std::int32_t (*peek24)(GBEngine*, std::uint32_t* out);
};
static_assert(sizeof(void*) != 8 || sizeof(GBEngine) == 192);
static_assert(sizeof(void*) != 8 || offsetof(GBEngine, buffer) == 96);
static_assert(alignof(GBEngine) == 4);

#pragma pack(pop)

/** How a reader is made. */
struct GBOptions
{
    std::uint32_t type;     ///< SpeechTypeWord::GB; bits 8 to 15 are 0.
    std::uint32_t ringSize; ///< Bytes; 0 or a power of two.
    std::uint32_t retries;
    void* lockContext;
    void* refillContext;
    std::uint32_t mode;                            ///< 1 to 4.
    std::int32_t (*refillCallback)(void* context); ///< Null for one that returns 0.
    void (*lockCallback)(void* context);           ///< Null for none.
    void (*unlockCallback)(void* context);
    void* memory; ///< Block for the reader, GB_MemorySize bytes at any address; null to allocate.
};
static_assert(sizeof(void*) != 8 || offsetof(GBOptions, lockContext) == 16);
static_assert(sizeof(void*) != 8 || offsetof(GBOptions, mode) == 32);
static_assert(sizeof(void*) != 8 || offsetof(GBOptions, refillCallback) == 40);
static_assert(sizeof(void*) != 8 || offsetof(GBOptions, memory) == 64);
static_assert(sizeof(void*) != 8 || sizeof(GBOptions) == 72);

/** Bytes that a reader's block takes: the record, its alignment, and the ring in the ring modes. */
std::uint32_t GB_MemorySize(std::uint32_t mode, std::uint32_t ringSize);

/** Makes a reader; -1, and null, when the options are refused or there is no memory. */
std::int32_t GB_Create(GBEngine** reader, const GBOptions* options);

/** Frees a reader unless its block is the caller's, and nulls the handle; -1 for a null handle. */
std::int32_t GB_Delete(GBEngine** reader);

/** Appends bytes to a ring; -1 when they do not fit, or in a buffer mode. */
std::int32_t GB_PushBytes(GBEngine* reader, const std::uint8_t* data, std::uint32_t size);

/** Sets the buffer to read; -1 in a ring mode. The bit offset stays, deliberately. */
std::int32_t GB_SetBuffer(GBEngine* reader, std::uint8_t* data, std::uint32_t size);

/** Loads the window, if that is due: in modes 1 and 3 from the start of the buffer. */
std::int32_t GB_Prime(GBEngine* reader);

/** Goes on to the next whole byte; -1 when there is none. */
std::int32_t GB_Align(GBEngine* reader);

/** Skips bits, 0 to 24. */
std::int32_t GB_SkipBits(GBEngine* reader, std::uint32_t bits);

/** Skips whole bytes; the bit offset stays. -1, and nothing skipped, when there are fewer. */
std::int32_t GB_SkipBytes(GBEngine* reader, std::uint32_t bytes);

/**
 * Reads 0 to 24 bits.
 *
 * @param out 32 bits, of which the wanted ones are the top; the rest is what follows
 * @return -1 when a byte beyond the input would be taken in; the bit offset has moved all the same
 */
std::int32_t GB_ReadBits(GBEngine* reader, std::uint32_t bits, std::uint32_t* out);

/** Looks at the next bits without taking them; bits beyond the input are 0, or what lies behind the buffer.
 */
std::int32_t GB_Peek8(GBEngine* reader, std::uint32_t* out);
std::int32_t GB_Peek16(GBEngine* reader, std::uint32_t* out);
std::int32_t GB_Peek24(GBEngine* reader, std::uint32_t* out);

/** As 16, with up to 7 bits fewer valid at the low end. */
std::int32_t GB_Peek32(GBEngine* reader, std::uint32_t* out);

/** Bytes taken since the last release. */
std::uint32_t GB_Position(const GBEngine* reader);

/** Lets go of the bytes taken. */
void GB_Release(GBEngine* reader);
