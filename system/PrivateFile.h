#pragma once

#include <QByteArray>
#include <QString>

/**
 * Writes a file that only the user who runs this program may read, such as a key. It is private from its
 * first byte on. It replaces an older file as a whole, after its bytes are on the disk.
 *
 * @param path  the file
 * @param bytes its contents
 * @param error receives the reason of a failure, unless null
 * @return false when the file cannot be written; an older one is then unchanged
 */
bool writePrivateFile(const QString& path, const QByteArray& bytes, QString* error = nullptr);
