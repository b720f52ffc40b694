#pragma once

#include <QByteArray>
#include <QImage>
#include <QSize>

/** Decodes pictures of cameras, which may be anything. Any thread. */
namespace PictureDecoder {

inline constexpr int maxSide = 8192;          ///< Pixels of the width, and of the height.
inline constexpr qint64 maxPixels = 16 << 20; ///< Of the whole picture.

/**
 * Scans of a picture. A progressive JPEG has about ten; each may cost as much time as the whole picture
 * (ISO/IEC 10918-1, annex G).
 */
inline constexpr int maxScans = 32;

/**
 * Decodes a JPEG.
 *
 * @param fitting the result is scaled down to fit into it, and never up; its proportions stay
 * @return null for anything but a whole JPEG, and for one beyond a limit, of which no pixel is decoded
 */
QImage decode(const QByteArray& jpeg, const QSize& fitting);

} // namespace PictureDecoder
