#pragma once

#include <QString>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

/**
 * Reads a sound file of any usual format (WAV, MP3, AAC, FLAC, Ogg) as 16-bit mono, piece by piece, by
 * libavformat and libavcodec. Used by one thread at a time.
 */
class AudioFileReader
{
public:
    static constexpr int sampleRate = 16000; ///< Of the samples read, Hz.

    AudioFileReader();
    ~AudioFileReader();
    AudioFileReader(const AudioFileReader&) = delete;
    AudioFileReader& operator=(const AudioFileReader&) = delete;

    /** Opens a file; returns false when it has no sound that can be decoded. */
    bool open(const QString& path);

    /** Appends up to @p count samples to @p out; fewer, and then none, at the file's end. */
    void read(std::size_t count, std::vector<std::int16_t>& out);

    /** Returns whether a broken place was found; the samples before it have been read. */
    bool isBroken() const;

    /** Returns the length of a file in ms, 1 at least; empty when it cannot be decoded. */
    static std::optional<int> duration(const QString& path);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
