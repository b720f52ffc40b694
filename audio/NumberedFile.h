#pragma once

#include <QString>

/** Names like "camera-1-7.wav" for files that never take the place of others. */
namespace NumberedFile {

/**
 * Makes an empty file "STEM-N.SUFFIX" with a number N, from 1 on, that is free while the one before is taken;
 * programs that do so at the same moment get different ones. Looks at no more names than twice the binary
 * digits of N, however many files there are.
 *
 * @param folder made when missing
 * @return its path; empty when it cannot be made
 */
QString create(const QString& folder, const QString& stem, const QString& suffix);

} // namespace NumberedFile
