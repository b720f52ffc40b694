#include "protocol/WireMessage.h"

#include "protocol/CborLengths.h"
#include "protocol/VariantCbor.h"

#include <QCborMap>
#include <QCborStreamReader>

namespace {

// Keys of the map; numbers keep the messages short.
enum Key
{
    VersionKey = 0,
    KindKey = 1,
    IdKey = 2,
    NameKey = 3,
    SecretKey = 4,
    PayloadKey = 5,
    CodeKey = 6,
    TextKey = 7,
};

// 0 for anything but an integer: QCborValue would convert a double that no integer can hold.
qint64 integerAt(const QCborMap& map, Key key)
{
    const QCborValue value = map.value(key);
    return value.isInteger() ? value.toInteger() : 0;
}

} // namespace

QByteArray WireMessage::toBytes() const
{
    QCborMap map;
    map.insert(VersionKey, version);
    map.insert(KindKey, static_cast<int>(kind));
    if (id != 0) {
        map.insert(IdKey, static_cast<qint64>(id));
    }
    if (payload.isValid()) {
        map.insert(PayloadKey, VariantCbor::encode(payload));
    }
    const std::pair<Key, const QString&> texts[] = {
        {NameKey, name}, {SecretKey, secret}, {CodeKey, code}, {TextKey, text}};
    for (const auto& [key, value] : texts) {
        if (!value.isEmpty()) {
            map.insert(key, value);
        }
    }
    return QCborValue(map).toCbor();
}

std::optional<WireMessage> WireMessage::fromBytes(const QByteArray& bytes)
{
    if (!cborLengthsFit(bytes)) {
        return std::nullopt;
    }
    QCborParserError error;
    const QCborValue value = QCborValue::fromCbor(bytes, &error);
    if (error.error != QCborError::NoError || error.offset != bytes.size() || !value.isMap()) {
        return std::nullopt;
    }
    const QCborMap map = value.toMap();
    const qint64 kind = integerAt(map, KindKey);
    const qint64 id = integerAt(map, IdKey);
    if (integerAt(map, VersionKey) != version || kind < Login || kind > Event || id < 0 ||
        id > 0xFFFFFFFFLL) {
        return std::nullopt;
    }
    auto payload = VariantCbor::decode(map.value(PayloadKey));
    if (!payload) {
        return std::nullopt;
    }
    WireMessage message;
    message.kind = static_cast<Kind>(kind);
    message.id = static_cast<quint32>(id);
    message.name = map.value(NameKey).toString();
    message.secret = map.value(SecretKey).toString();
    message.payload = std::move(*payload);
    message.code = map.value(CodeKey).toString();
    message.text = map.value(TextKey).toString();
    return message;
}
