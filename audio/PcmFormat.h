#pragma once

#include "audio/PcmConverter.h"

#include <QAudioFormat>

#include <optional>

/** Returns Qt's description of signed 16-bit little-endian mono PCM; @p sampleRate is in Hz. */
QAudioFormat pcmFormat(int sampleRate);

/** Returns the sample format of little-endian PCM; empty for what PcmConverter cannot read. */
std::optional<SampleFormat> sampleFormatOf(const QAudioFormat& format);
