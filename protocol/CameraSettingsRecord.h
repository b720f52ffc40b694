#pragma once

#include "protocol/CameraSettings.h"

#include <QStringList>
#include <QVariantMap>

#include <optional>

/** The settings of a camera as a record of the protocol: a map whose keys are those of Words. */
namespace CameraSettingsRecord {

/** Returns all settings: "transport" and "talkCodec" are QString, numbers int, the rest bool. */
QVariantMap toMap(const CameraSettings& settings);

/**
 * Reads settings; what the map does not name stays as it is in @p before.
 *
 * @param error says what is wrong, for people
 * @return empty for an unknown key, and for a value of another type or beyond its range
 */
std::optional<CameraSettings> fromMap(const QVariantMap& map, const CameraSettings& before, QString* error);

/**
 * Returns the codecs that clients offer for "talkCodec", by their RTP names. The setting may have others:
 * servers differ, and a camera takes what it takes.
 */
QStringList talkCodecs();

/** Returns the settings as they are stored: an empty text for the defaults. */
QString toText(const CameraSettings& settings);

/** Reads what toText returned; the defaults for anything else. */
CameraSettings fromText(const QString& text);

} // namespace CameraSettingsRecord
