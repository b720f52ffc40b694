#pragma once

#include <QByteArray>
#include <QString>

class QSaveFile;

/**
 * Writes a file that replaces an older one as a whole, after its bytes are on the disk.
 *
 * @param path  the file
 * @param bytes its contents
 * @param error receives the reason of a failure, unless null
 * @return false when the file cannot be written; an older one is then unchanged
 */
bool writeWholeFile(const QString& path, const QByteArray& bytes, QString* error = nullptr);

/** Writes and commits a file that is open already, unbuffered; otherwise like writeWholeFile. */
bool saveWhole(QSaveFile& file, const QByteArray& bytes, QString* error);
