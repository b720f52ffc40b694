#include "GBEngine.h"

#include "SpeechEngine.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::uint32_t alignmentSlack = 3; // bytes
constexpr std::uint32_t longestRead = 24;   // bits
constexpr std::uint32_t secondByteMask = 0x0000FF00;

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
    static std::uint8_t at(const GBEngine& reader, std::uint32_t index) { return reader.buffer[index]; }

    /** Whether so many bytes can be taken; asks for more when not, which helps the next read at the earliest.
     */
    static bool has(GBEngine& reader, std::uint32_t bytes)
    {
        if (reader.consumed + bytes <= reader.available) {
            return true;
        }
        reader.refill(reader.refillContext);
        return false;
    }
};

/** Where the bytes come from: a ring that refill fills. */
struct Ring
{
    static std::uint8_t at(const GBEngine& reader, std::uint32_t index)
    {
        return reader.buffer[index & reader.ringMask];
    }

    /** Whether so many bytes can be taken; calls refill until they can, or the retries are used up. */
    static bool has(GBEngine& reader, std::uint32_t bytes)
    {
        reader.retries = reader.retriesInit;
        while (reader.consumed + bytes > reader.available) {
            if (reader.retries == 0) {
                return false;
            }
            --reader.retries;
            reader.refill(reader.refillContext);
        }
        return true;
    }
};

/** The operations on a source, with or without byte stuffing. */
template<class Source, bool Stuffed>
struct Operations
{
    /** Takes the byte at readIndex into the window. */
    static void take(GBEngine& reader)
    {
        const std::uint8_t byte = Source::at(reader, reader.readIndex);
        reader.window = reader.window << 8U | byte;
        ++reader.readIndex;
        if (Stuffed && byte == 0xFF && Source::at(reader, reader.readIndex) == 0) {
            ++reader.readIndex;
            ++reader.consumed; // the skipped byte is taken with the one before it
        }
    }

    static std::int32_t prime(GBEngine* reader)
    {
        if (reader->needsPrime != 1) {
            return SpeechSuccess;
        }
        for (int i = 0; i < 4; ++i) {
            take(*reader);
        }
        reader->needsPrime = 0;
        reader->guard = reader->guard == -1 ? 0 : reader->guard;
        return SpeechSuccess;
    }

    static std::int32_t advance(GBEngine& reader, std::uint32_t bits)
    {
        const std::uint32_t total = reader.bitOffset + bits;
        reader.bitOffset = total & 7U;
        const std::uint32_t bytes = total >> 3U;
        if (bytes == 0) {
            return SpeechSuccess;
        }
        if (!Source::has(reader, bytes)) {
            return SpeechFailure; // deliberate: the bit offset has moved
        }
        reader.consumed += bytes;
        for (std::uint32_t i = 0; i < bytes; ++i) {
            take(reader);
        }
        return SpeechSuccess;
    }

    static std::int32_t readBits(GBEngine* reader, std::uint32_t bits, std::uint32_t* out)
    {
        *out = reader->window << reader->bitOffset;
        return bits > longestRead ? static_cast<std::int32_t>(SpeechFailure) : advance(*reader, bits);
    }

    static std::int32_t skipBits(GBEngine* reader, std::uint32_t bits)
    {
        return bits > longestRead ? static_cast<std::int32_t>(SpeechFailure) : advance(*reader, bits);
    }

    static std::int32_t align(GBEngine* reader)
    {
        if (reader->bitOffset == 0) {
            return SpeechSuccess;
        }
        if (!Source::has(*reader, 1)) {
            return SpeechFailure;
        }
        reader->consumed += 1;
        take(*reader);
        reader->bitOffset = 0;
        return SpeechSuccess;
    }

    static std::int32_t skipBytes(GBEngine* reader, std::uint32_t bytes)
    {
        if (reader->available < reader->consumed || bytes > reader->available - reader->consumed) {
            return SpeechFailure;
        }
        reader->consumed += bytes;
        if (Stuffed) {
            for (std::uint32_t i = 0; i < bytes; ++i) {
                take(*reader);
            }
            return SpeechSuccess;
        }
        reader->readIndex += bytes;
        for (std::uint32_t i = 0; i < 4; ++i) {
            reader->window = reader->window << 8U | Source::at(*reader, reader->readIndex - 4 + i);
        }
        return SpeechSuccess;
    }

    template<unsigned Bits>
    static std::int32_t peek(GBEngine* reader, std::uint32_t* out)
    {
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
    return static_cast<std::uint32_t>(sizeof(GBEngine)) + alignmentSlack + (isRing(mode) ? ringSize : 0);
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
    auto* made = new (block) GBEngine{};
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
        made->buffer = static_cast<std::uint8_t*>(block) + sizeof(GBEngine);
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
        reader->guard = -1;
        reader->needsPrime = 1;
    }
    reader->available -= reader->consumed;
    reader->unlock(reader->lockContext);
    reader->consumed = 0;
}
