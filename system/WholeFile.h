#pragma once

#include <QByteArray>
#include <QString>

class QSaveFile;

/**
 * Writes a file that takes the place of an older one at once and whole, when its bytes are on the disk.
 *
 * @param error why not, unless null
 * @return false when it cannot be written, because the disk is full, say; an older one is then as it was
 */
bool writeWholeFile(const QString& path, const QByteArray& bytes, QString* error = nullptr);

/** The same for a file that is opened already, unbuffered. */
bool saveWhole(QSaveFile& file, const QByteArray& bytes, QString* error);
