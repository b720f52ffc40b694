#pragma once

#include <QByteArray>

/** What simulated cameras see: bars in eight colours, and below them a light that moves. Any thread. */
namespace TestPicture {

inline constexpr int width = 640;  ///< Pixels.
inline constexpr int height = 360; ///< Pixels.

/**
 * Returns the picture of a moment as a JPEG.
 *
 * @param time ms; the light crosses the picture once in a minute
 * @return empty where libavcodec has no encoder for it
 */
QByteArray at(qint64 time);

} // namespace TestPicture
