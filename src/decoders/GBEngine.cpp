#include "src/decoders/GBEngine.h"

#include "src/decoders/SpeechEngine.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::uint32_t blockAlignment = 4; // bytes
constexpr std::uint32_t maxReadBits = 24;   // bits
constexpr std::uint32_t secondByteMask = 0x0000FF00;
constexpr std::uint8_t stuffedAfter = 0xFF;
constexpr std::int32_t stuffingMayFollow = 1; // of the guard

bool isRing(std::uint32_t mode)
{
    return mode == 2 || mode == 4;
}

std::int32_t noRefill(void* /*context*/)
{
    return 0;
}

void noLock(void* /*context*/) {}

/** Where the bytes come from: a plain buffer. */
struct Buffer
{
    static constexpr bool grows = false;
    static constexpr std::uint32_t lookAhead = 3; // bytes behind the buffer that may be read

    /** Index of the byte at the window's top. */
    static std::uint32_t position(const GBEngine& reader)
    {
        return reader.writeIndex - reader.available + reader.consumed;
    }

    /** Bytes from the position to the end. */
    static std::uint32_t left(const GBEngine& reader) { return reader.available - reader.consumed; }

    /** Whether the byte is part of the input. */
    static bool holds(const GBEngine& reader, std::uint32_t index) { return index < reader.writeIndex; }

    /** A byte of the input or just behind it; 0 farther away. */
    static std::uint8_t at(const GBEngine& reader, std::uint32_t index)
    {
        return index < std::uint64_t{reader.writeIndex} + lookAhead ? reader.buffer[index] : std::uint8_t{0};
    }

    static std::uint32_t start(const GBEngine& /*reader*/) { return 0; }
};

/** Where the bytes come from: a ring that is filled as time goes on, by another thread perhaps. */
struct Ring
{
    static constexpr bool grows = true;

    struct Filled
    {
        std::uint32_t begin; ///< Index of the first byte that has not been released.
        std::uint32_t size;
    };

    /** A push changes two fields, which are read under its lock. */
    static Filled filled(const GBEngine& reader)
    {
        reader.lock(reader.lockContext);
        const Filled now{reader.writeIndex - reader.available, reader.available};
        reader.unlock(reader.lockContext);
        return now;
    }

    static std::uint32_t position(const GBEngine& reader) { return filled(reader).begin + reader.consumed; }

    static std::uint32_t left(const GBEngine& reader) { return filled(reader).size - reader.consumed; }

    static bool holds(const GBEngine& reader, std::uint32_t index)
    {
        const Filled now = filled(reader);
        return index - now.begin < now.size;
    }

    static std::uint8_t at(const GBEngine& reader, std::uint32_t index)
    {
        return holds(reader, index) ? reader.buffer[index & reader.ringMask] : std::uint8_t{0};
    }

    static std::uint32_t start(const GBEngine& reader) { return position(reader); }
};

/** The operations on a source, with or without byte stuffing. */
template<class Source, bool Stuffed>
struct Operations
{
    /** Bytes of the input: how many there are, and what they take up together with stuffed ones. */
    struct Span
    {
        std::uint32_t bytes;
        std::uint32_t taken;
        bool open; ///< The last one is 0xFF, and what follows is not there yet.
    };

    /** Up to so many bytes from the position on. */
    static Span span(const GBEngine& reader, std::uint32_t wanted)
    {
        if constexpr (!Stuffed) {
            const std::uint32_t bytes = std::min(wanted, Source::left(reader));
            return {bytes, bytes, false};
        }
        const std::uint32_t from = Source::position(reader);
        std::uint32_t index = from + stuffingAt(reader, from, reader.guard == stuffingMayFollow);
        Span found{};
        while (found.bytes < wanted && Source::holds(reader, index)) {
            const bool marker = Source::at(reader, index) == stuffedAfter;
            ++index;
            ++found.bytes;
            found.open = Source::grows && marker && !Source::holds(reader, index);
            index += stuffingAt(reader, index, marker);
        }
        found.taken = index - from;
        return found;
    }

    /** Bytes to skip at an index: 1 where a zero follows a marker. */
    static std::uint32_t stuffingAt(const GBEngine& reader, std::uint32_t index, bool afterMarker)
    {
        return afterMarker && Source::holds(reader, index) && Source::at(reader, index) == 0 ? 1 : 0;
    }

    /** Loads the window from an index of the input. */
    static void load(GBEngine& reader, std::uint32_t index)
    {
        if (Stuffed) {
            index += stuffingAt(reader, index, reader.guard == stuffingMayFollow);
        }
        for (int i = 0; i < 4; ++i) {
            const std::uint8_t byte = Source::at(reader, index);
            ++index;
            reader.window = reader.window << 8U | byte;
            if (Stuffed) {
                index += stuffingAt(reader, index, byte == stuffedAfter);
            }
        }
        reader.readIndex = index;
    }

    /** Whether so many bytes are there; a ring is refilled until they are, or the retries are used up. */
    static bool fetch(GBEngine& reader, std::uint32_t bytes)
    {
        if constexpr (Source::grows) {
            reader.retries = reader.retriesInit;
            while (span(reader, bytes).bytes < bytes) {
                if (reader.retries == 0) {
                    return false;
                }
                --reader.retries;
                reader.refill(reader.refillContext);
            }
            return true;
        }
        return span(reader, bytes).bytes >= bytes;
    }

    /** Fetches the bytes of the next bits, as far as there are any, and puts them into a ring's window. */
    static void look(GBEngine& reader, std::uint32_t bits)
    {
        if constexpr (Source::grows) {
            fetch(reader, (reader.bitOffset + bits + 7U) >> 3U);
            load(reader, Source::position(reader));
        }
    }

    /** Takes bytes that are there. */
    static void take(GBEngine& reader, std::uint32_t bytes)
    {
        const Span taken = span(reader, bytes);
        if (bytes == 0) {
            return;
        }
        reader.consumed += taken.taken;
        if (Stuffed) {
            reader.guard = taken.open ? stuffingMayFollow : 0;
        }
        load(reader, Source::position(reader));
    }

    static std::int32_t prime(GBEngine* reader)
    {
        if (reader->needsPrime != 1) {
            return SpeechSuccess;
        }
        load(*reader, Source::start(*reader));
        reader->needsPrime = 0;
        reader->guard = reader->guard == -1 ? 0 : reader->guard;
        return SpeechSuccess;
    }

    static std::int32_t advance(GBEngine& reader, std::uint32_t bits)
    {
        const std::uint32_t total = reader.bitOffset + bits;
        reader.bitOffset = total & 7U;
        const std::uint32_t bytes = total >> 3U;
        if (span(reader, bytes).bytes < bytes) {
            if constexpr (!Source::grows) {
                reader.refill(reader.refillContext); // what it brings is there for the next read
            }
            return SpeechFailure; // deliberate: the bit offset has moved
        }
        take(reader, bytes);
        return SpeechSuccess;
    }

    static std::int32_t readBits(GBEngine* reader, std::uint32_t bits, std::uint32_t* out)
    {
        look(*reader, std::min(bits, maxReadBits));
        *out = reader->window << reader->bitOffset;
        return bits > maxReadBits ? static_cast<std::int32_t>(SpeechFailure) : advance(*reader, bits);
    }

    static std::int32_t skipBits(GBEngine* reader, std::uint32_t bits)
    {
        std::uint32_t skipped = 0;
        return readBits(reader, bits, &skipped);
    }

    static std::int32_t align(GBEngine* reader)
    {
        if (reader->bitOffset == 0) {
            return SpeechSuccess;
        }
        if (!fetch(*reader, 1)) {
            return SpeechFailure;
        }
        take(*reader, 1);
        reader->bitOffset = 0;
        return SpeechSuccess;
    }

    static std::int32_t skipBytes(GBEngine* reader, std::uint32_t bytes)
    {
        if (!fetch(*reader, bytes)) {
            return SpeechFailure;
        }
        take(*reader, bytes);
        return SpeechSuccess;
    }

    template<unsigned Bits>
    static std::int32_t peek(GBEngine* reader, std::uint32_t* out)
    {
        look(*reader, std::min(Bits, 32U - reader->bitOffset));
        *out = reader->window << reader->bitOffset >> (32U - Bits);
        return SpeechSuccess;
    }

    static void install(GBEngine& reader)
    {
        reader.prime = prime;
        reader.align = align;
        reader.skipBits = skipBits;
        reader.skipBytes = skipBytes;
        reader.readBits = readBits;
        reader.peek8 = peek<8>;
        reader.peek16 = peek<16>;
        reader.peek24 = peek<24>;
        reader.peek32 = peek<32>;
    }
};

std::int32_t setBuffer(GBEngine* reader, std::uint8_t* data, std::uint32_t size)
{
    reader->buffer = data;
    reader->available = size;
    reader->writeIndex = size;
    reader->consumed = 0;
    reader->readIndex = 0;
    reader->window = 0;
    reader->guard = -1;
    reader->needsPrime = 1;
    return SpeechSuccess;
}

std::int32_t noBuffer(GBEngine* /*reader*/, std::uint8_t* /*data*/, std::uint32_t /*size*/)
{
    return SpeechFailure;
}

std::int32_t pushIntoRing(GBEngine* reader, const std::uint8_t* data, std::uint32_t size)
{
    const std::uint32_t ringSize = reader->ringMask + 1;
    reader->lock(reader->lockContext);
    const bool fits = size <= ringSize && reader->available <= ringSize - size;
    if (fits) {
        for (std::uint32_t i = 0; i < size; ++i) {
            reader->buffer[(reader->writeIndex + i) & reader->ringMask] = data[i];
        }
        reader->writeIndex += size;
        reader->available += size;
    }
    reader->unlock(reader->lockContext);
    return fits ? SpeechSuccess : SpeechFailure;
}

std::int32_t noPush(GBEngine* /*reader*/, const std::uint8_t* /*data*/, std::uint32_t /*size*/)
{
    return SpeechFailure;
}

void installOperations(GBEngine& reader, std::uint32_t mode)
{
    switch (mode) {
    case 1:
        Operations<Buffer, true>::install(reader);
        break;
    case 2:
        Operations<Ring, true>::install(reader);
        break;
    case 3:
        Operations<Buffer, false>::install(reader);
        break;
    default:
        Operations<Ring, false>::install(reader);
    }
    reader.pushBytes = isRing(mode) ? pushIntoRing : noPush;
    reader.setBuffer = isRing(mode) ? noBuffer : setBuffer;
}

} // namespace

std::uint32_t GB_MemorySize(std::uint32_t mode, std::uint32_t ringSize)
{
    return static_cast<std::uint32_t>(sizeof(GBEngine)) + blockAlignment - 1 + (isRing(mode) ? ringSize : 0);
}

std::int32_t GB_Create(GBEngine** reader, const GBOptions* options)
{
    *reader = nullptr;
    const bool powerOfTwo = (options->ringSize & (options->ringSize - 1)) == 0;
    if ((options->type & (SpeechTypeWord::mask | secondByteMask)) != SpeechTypeWord::GB ||
        options->mode < 1 || options->mode > 4 || !powerOfTwo ||
        (isRing(options->mode) && options->ringSize == 0)) {
        return SpeechFailure;
    }
    void* block = options->memory != nullptr ? options->memory
                                             : std::malloc(GB_MemorySize(options->mode, options->ringSize));
    if (block == nullptr) {
        return SpeechFailure;
    }
    const auto misalignment =
        static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(block) % blockAlignment);
    std::uint8_t* place =
        static_cast<std::uint8_t*>(block) + (blockAlignment - misalignment) % blockAlignment;
    auto* made = new (place) GBEngine{};
    made->ownBlock = block;
    made->external = options->memory != nullptr ? 1 : 0;
    made->guard = -1;
    made->needsPrime = 1;
    made->retries = options->retries;
    made->retriesInit = options->retries;
    made->lockContext = options->lockContext;
    made->refillContext = options->refillContext;
    made->refill = options->refillCallback != nullptr ? options->refillCallback : noRefill;
    made->lock = options->lockCallback != nullptr ? options->lockCallback : noLock;
    made->unlock = options->unlockCallback != nullptr ? options->unlockCallback : noLock;
    if (isRing(options->mode)) {
        made->ringMask = options->ringSize - 1;
        made->buffer = place + sizeof(GBEngine);
        std::memset(made->buffer, 0, options->ringSize);
    }
    installOperations(*made, options->mode);
    *reader = made;
    return SpeechSuccess;
}

std::int32_t GB_Delete(GBEngine** reader)
{
    if (reader == nullptr || *reader == nullptr) {
        return SpeechFailure;
    }
    if ((*reader)->external == 0) {
        std::free((*reader)->ownBlock);
    }
    *reader = nullptr;
    return SpeechSuccess;
}

std::int32_t GB_PushBytes(GBEngine* reader, const std::uint8_t* data, std::uint32_t size)
{
    return reader->pushBytes(reader, data, size);
}

std::int32_t GB_SetBuffer(GBEngine* reader, std::uint8_t* data, std::uint32_t size)
{
    return reader->setBuffer(reader, data, size);
}

std::int32_t GB_Prime(GBEngine* reader)
{
    return reader->prime(reader);
}

std::int32_t GB_Align(GBEngine* reader)
{
    return reader->align(reader);
}

std::int32_t GB_SkipBits(GBEngine* reader, std::uint32_t bits)
{
    return reader->skipBits(reader, bits);
}

std::int32_t GB_SkipBytes(GBEngine* reader, std::uint32_t bytes)
{
    return reader->skipBytes(reader, bytes);
}

std::int32_t GB_ReadBits(GBEngine* reader, std::uint32_t bits, std::uint32_t* out)
{
    return reader->readBits(reader, bits, out);
}

std::int32_t GB_Peek8(GBEngine* reader, std::uint32_t* out)
{
    return reader->peek8(reader, out);
}

std::int32_t GB_Peek16(GBEngine* reader, std::uint32_t* out)
{
    return reader->peek16(reader, out);
}

std::int32_t GB_Peek24(GBEngine* reader, std::uint32_t* out)
{
    return reader->peek24(reader, out);
}

std::int32_t GB_Peek32(GBEngine* reader, std::uint32_t* out)
{
    return reader->peek32(reader, out);
}

std::uint32_t GB_Position(const GBEngine* reader)
{
    return reader->consumed;
}

void GB_Release(GBEngine* reader)
{
    reader->lock(reader->lockContext);
    if (reader->available == reader->consumed) {
        reader->guard = reader->guard == stuffingMayFollow ? stuffingMayFollow : -1;
        reader->needsPrime = 1;
    }
    reader->available -= reader->consumed;
    reader->unlock(reader->lockContext);
    reader->consumed = 0;
}
