#pragma once

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <vector>

/** Sounds and WAV files for tests. */
namespace WavFiles {

using Samples = std::vector<std::int16_t>;

/** A sine. @param amplitude 0 to 1 @param seconds length */
Samples sine(double frequency, double amplitude, double seconds, int sampleRate);

/** Writes mono 16-bit samples as a plain WAV file. */
bool write(const QString& path, const Samples& samples, int sampleRate);

/** Reads a mono file as 16-bit samples; empty on failure. */
Samples read(const QString& path, int* sampleRate = nullptr);

/** Converts mono samples to another rate, by libswresample. */
Samples resample(const Samples& samples, int fromRate, int toRate);

/** The samples after they went through G.711 mu-law, by libavcodec. */
Samples throughMuLaw(const Samples& samples);

/** The mu-law bytes of samples, by libavcodec. */
QByteArray toMuLaw(const Samples& samples);

// Pieces of hand-made files.
QByteArray chunk(const char* id, const QByteArray& body);
QByteArray chunkOfSize(const char* id, std::uint32_t size, const QByteArray& body);
QByteArray pcmFormat(int channels, int sampleRate, int bits);
QByteArray extensibleFormat(int channels, int sampleRate, int bits);
QByteArray riff(const QByteArray& chunks);

} // namespace WavFiles
