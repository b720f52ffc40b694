#pragma once

#include <QString>

/**
 * @file
 * Words that the plug-in sends or reads and that the vocabulary has no constants for.
 */

namespace Words {

/**
 * @name Uploads
 * @{
 */
/** A key of an upload. */
inline const QString content = QStringLiteral("content");
inline const QString filename = QStringLiteral("filename");
inline const QString length = QStringLiteral("length");
/** @} */

/** Key of a playback's replies. */
inline const QString progress = QStringLiteral("progress");

} // namespace Words

namespace ReturnCode {

/** The return code of a command that was executed. */
inline const QString success = QStringLiteral("0");

} // namespace ReturnCode
