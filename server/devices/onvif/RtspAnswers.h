#pragma once

/** What rtspsrc makes of the answers of cameras. */
namespace RtspAnswers {

/**
 * Makes a session fail when the camera does not know PLAY or RECORD (405 Method Not Allowed, 501 Not
 * Implemented; RFC 2326, clause 11): rtspsrc takes these answers for consent, and shows them to nobody but
 * its extensions. Here an extension gives them to it as 455, which it reports as an error. Call it once,
 * after GStreamer was initialised and before the first rtspsrc is made.
 */
void install();

} // namespace RtspAnswers
