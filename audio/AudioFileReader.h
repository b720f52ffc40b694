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
    static constexpr int sampleRate = 16000; // Hz

    AudioFileReader();
    ~AudioFileReader();
    AudioFileReader(const AudioFileReader&) = delete;
    AudioFileReader& operator=(const AudioFileReader&) = delete;

    /** False when the file holds no sound that can be decoded. */
    bool open(const QString& path);

    /** Appends up to @p count samples; fewer, and in the end none, at the file's end. */
    void read(std::size_t count, std::vector<std::int16_t>& out);

    /** Whether the file was found broken; what was before that has been read. */
    bool isBroken() const;

    /** Length of a file in ms, 1 at least; empty when it cannot be decoded. */
    static std::optional<int> duration(const QString& path);

private:
    struct Private;
    std::unique_ptr<Private> m_private;
};
