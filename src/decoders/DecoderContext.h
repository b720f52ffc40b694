#pragma once

/** What a decoder is, whatever the codec. */

#include <cstddef>
#include <cstdint>

/** What a decoder is given: the codec data of one media packet. */
struct EncodedChunk
{
    const std::uint8_t* data = nullptr; ///< The first bitstream byte.
    std::uint32_t size = 0;             ///< Bytes.
    std::uint32_t frames = 0;           ///< Codec frames in it, as the sender counts them.
};
static_assert(sizeof(void*) != 8 || offsetof(EncodedChunk, size) == 8);
static_assert(sizeof(void*) != 8 || offsetof(EncodedChunk, frames) == 12);
static_assert(sizeof(void*) != 8 || sizeof(EncodedChunk) == 16);

/** One decoded picture, 4:2:0 with 8 bits a sample. */
struct DecodedPicture
{
    std::uint8_t* planes[3] = {};          ///< Y, U, V.
    std::int32_t strides[3] = {};          ///< Bytes per line of each plane.
    std::int32_t width = 0;                ///< Pixels.
    std::int32_t height = 0;               ///< Pixels.
    void* frame = nullptr;                 ///< Holds the planes' memory; set by QueryFrame.
    void (*addReference)(void*) = nullptr; ///< Takes one more reference to frame.
    void (*release)(void*) = nullptr;      ///< Drops one reference to frame; on any thread.
};
static_assert(sizeof(void*) != 8 || offsetof(DecodedPicture, strides) == 24);
static_assert(sizeof(void*) != 8 || offsetof(DecodedPicture, width) == 36);
static_assert(sizeof(void*) != 8 || offsetof(DecodedPicture, frame) == 48);
static_assert(sizeof(void*) != 8 || offsetof(DecodedPicture, release) == 64);
static_assert(sizeof(void*) != 8 || sizeof(DecodedPicture) == 72);

/**
 * A decoder. Used by one thread at a time. The order of the operations is a binary contract; there is no
 * virtual destructor, because Release is how a decoder ends.
 */
class DecoderContext
{
public:
    /** State values of DecodeVideo. */
    enum PictureState : std::uint32_t
    {
        NoPicture = 0,
        PictureReady = 2
    };

    /** Codes of QueryFrame. */
    static constexpr std::int32_t unsupported = static_cast<std::int32_t>(0x80000004U);
    static constexpr std::int32_t unsupportedVersion = static_cast<std::int32_t>(0x80000005U);

    /**
     * Decodes a chunk of a stream of pictures.
     *
     * @param picture planes, strides and size; valid until the next call
     * @param state   PictureReady or NoPicture
     * @return the chunk's size; -1 on failure
     */
    virtual std::int32_t DecodeVideo(DecodedPicture* picture, std::uint32_t* state,
                                     const EncodedChunk* chunk) = 0;

    /**
     * Decodes a chunk to 16-bit little-endian interleaved samples at the stream's own rate and channels.
     *
     * @param size in: room in @p pcm, bytes; out: bytes written, untouched on failure
     * @return 0; negative on failure
     */
    virtual std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) = 0;

    /**
     * Frees all that the decoder holds, and the decoder itself. The implementations tolerate a null object,
     * as far as a call can reach them with one: by the place in the table, not by its lookup in the object.
     */
    virtual void Release() = 0;

    /**
     * Hands out the frame of the last picture, with a reference that the caller drops by picture->release.
     *
     * @param version of the record, 2 or above
     * @return 0; unsupportedVersion; unsupported; -1 when there is no frame
     */
    virtual std::int32_t QueryFrame(DecodedPicture* picture, std::int32_t version) = 0;

protected:
    ~DecoderContext() = default;

    /** The object of a Release, which may be null. Volatile, as compilers take `this` for never null. */
    template<class Decoder>
    static Decoder* releasedObject(Decoder* self)
    {
        Decoder* volatile object = self;
        return object;
    }
};
