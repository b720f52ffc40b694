#pragma once

#include <QString>

#include <cstdint>
#include <vector>

/** The loudness of 16-bit PCM. */
namespace SoundLevel {

/** Level of digital silence, dBFS. */
inline constexpr double silence = -96.0;

/** Returns the root mean square in dBFS, 0 for a full-scale square wave; not below `silence`. */
double rmsDbfs(const std::vector<std::int16_t>& samples);

/** Returns a bar of @p width characters that is full at 0 dBFS and empty at -60 dBFS. */
QString bar(double dbfs, int width);

} // namespace SoundLevel
