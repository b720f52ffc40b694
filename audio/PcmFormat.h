#pragma once

#include "audio/PcmConverter.h"

#include <QAudioFormat>

#include <optional>

/** Signed 16-bit little-endian PCM of one channel, as Qt's sound names it. @param sampleRate Hz */
QAudioFormat pcmFormat(int sampleRate);

/** Returns the sample format of little-endian PCM; empty for what PcmConverter cannot read. */
std::optional<framesmith::SampleFormat> sampleFormatOf(const QAudioFormat& format);
