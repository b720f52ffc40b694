#pragma once

#include "audio/PacketDump.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <cstdint>
#include <vector>

/** Test streams, and the numbers by which decoded sound is compared. */
namespace VectorFiles {

inline QByteArray contents(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline QByteArray data(const QString& name)
{
    return contents(QStringLiteral(TEST_DATA_DIR "/") + name);
}

inline std::vector<QByteArray> packets(const QString& name)
{
    QString error;
    const auto dump = PacketDump::parse(data(name), &error);
    return dump ? dump->packets : std::vector<QByteArray>();
}

/** The usual CRC-32, reflected, start and end inverted. */
inline std::uint32_t crc32(const QByteArray& bytes)
{
    std::uint32_t crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<std::uint8_t>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = (crc >> 1U) ^ ((crc & 1U) != 0 ? 0xEDB88320U : 0U);
        }
    }
    return ~crc;
}

/** Bytes that are the same on every machine. */
class Generator
{
public:
    explicit Generator(std::uint32_t seed) : m_value(seed) {}

    QByteArray take(int count)
    {
        QByteArray bytes;
        for (int i = 0; i < count; ++i) {
            m_value = m_value * 1664525U + 1013904223U;
            bytes.append(static_cast<char>(m_value >> 24U));
        }
        return bytes;
    }

private:
    std::uint32_t m_value;
};

} // namespace VectorFiles
