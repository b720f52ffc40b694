#pragma once

#include "tests/support/WavFiles.h"

/** Sound files in the formats that users have, by libavformat and libavcodec. */
namespace SoundFiles {

/** Writes mono samples; the file's ending tells the format (mp3, aac, m4a). False when that fails. */
bool write(const QString& path, const WavFiles::Samples& samples, int sampleRate);

} // namespace SoundFiles
