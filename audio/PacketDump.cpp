#include "audio/PacketDump.h"

#include <QFile>
#include <QtEndian>

namespace {

constexpr int lengthSize = 4; // bytes

} // namespace

std::optional<PacketDump> PacketDump::parse(const QByteArray& bytes, QString* error)
{
    PacketDump dump;
    int position = 0;
    while (position < bytes.size()) {
        if (bytes.size() - position < lengthSize) {
            *error = QStringLiteral("the dump ends in the length of the record at byte %1").arg(position);
            return std::nullopt;
        }
        const auto length = qFromLittleEndian<quint32>(bytes.constData() + position);
        const int left = bytes.size() - position - lengthSize;
        if (length > static_cast<quint32>(left)) {
            *error = QStringLiteral("the record at byte %1 is %2 bytes long, but only %3 follow")
                         .arg(position)
                         .arg(length)
                         .arg(left);
            return std::nullopt;
        }
        dump.packets.push_back(bytes.mid(position + lengthSize, static_cast<int>(length)));
        position += lengthSize + static_cast<int>(length);
    }
    return dump;
}

std::optional<PacketDump> PacketDump::read(const QString& path, QString* error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return std::nullopt;
    }
    const QByteArray bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *error = file.errorString();
        return std::nullopt;
    }
    return parse(bytes, error);
}
