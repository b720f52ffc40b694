#pragma once

/** What GStreamer writes to the standard error of the program. */
namespace GstLog {

constexpr int maxMessages = 20; ///< In a minute; the rest is dropped.
constexpr int maxMessage = 200; ///< Characters of one.

/**
 * Takes the warnings of GStreamer's libraries from now on. A camera can cause any number of them, with any
 * text: a few go to Qt's log, without what commands a terminal. Any thread, any number of times.
 */
void tame();

} // namespace GstLog
