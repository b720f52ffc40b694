#pragma once

/** Size of the PCM block of the playback path: 3 s of 48 kHz 16-bit stereo, bytes. */
inline constexpr int pcmBlockSize = 576000;
