#pragma once

/**
 * @file
 * The interface of all decoders.
 */

#include <cstddef>
#include <cstdint>

/** The codec data of one media packet, the input of a decoder. */
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
        NoPicture = 0,   ///< There is no picture yet.
        PictureReady = 2 ///< The picture is set.
    };

    /** Result of QueryFrame: the decoder has no pictures. */
    static constexpr std::int32_t unsupported = static_cast<std::int32_t>(0x80000004U);
    /** Result of QueryFrame: the version of the record is not known. */
    static constexpr std::int32_t unsupportedVersion = static_cast<std::int32_t>(0x80000005U);

    /**
     * Decodes a chunk of a stream of pictures.
     *
     * @param picture receives planes, strides and size; valid until the next call
     * @param state   receives PictureReady or NoPicture
     * @param chunk   the data
     * @return the chunk's size; -1 on failure
     */
    virtual std::int32_t DecodeVideo(DecodedPicture* picture, std::uint32_t* state,
                                     const EncodedChunk* chunk) = 0;

    /**
     * Decodes a chunk to 16-bit little-endian interleaved samples at the stream's own rate and channels.
     *
     * @param pcm   receives the samples
     * @param size  in: room in @p pcm, bytes; out: bytes written, unchanged on failure
     * @param chunk the data
     * @return 0; negative on failure
     */
    virtual std::int32_t DecodeAudio(std::uint8_t* pcm, std::uint32_t* size, const EncodedChunk* chunk) = 0;

    /**
     * Frees the decoder and all that it holds. The implementations accept a null object, which only a call by
     * the place in the table can pass.
     */
    virtual void Release() = 0;

    /**
     * Passes the frame of the last picture to the caller, with a reference that it drops by picture->release.
     *
     * @param picture receives frame, addReference and release
     * @param version version of the record, 2 or above
     * @return 0; unsupportedVersion; unsupported; -1 when there is no frame
     */
    virtual std::int32_t QueryFrame(DecodedPicture* picture, std::int32_t version) = 0;

protected:
    ~DecoderContext() = default;

    /** Returns the object of a Release, which may be null. Volatile, as compilers assume that `this` is not
     * null. */
    template<class Decoder>
    static Decoder* releasedObject(Decoder* self)
    {
        Decoder* volatile object = self;
        return object;
    }
};
