#pragma once

#include <QByteArray>
#include <QString>

/**
 * Writes a file that nobody but the user who runs this program may read: a key, a list of passwords. It is
 * private from its first byte on, and takes the place of an older one at once and whole, when its bytes are
 * on the disk.
 *
 * @param error why not, unless null
 * @return false when it cannot be written, because the disk is full, say; an older one is then as it was
 */
bool writePrivateFile(const QString& path, const QByteArray& bytes, QString* error = nullptr);
