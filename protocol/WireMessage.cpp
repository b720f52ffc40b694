#include "protocol/WireMessage.h"

#include "protocol/CborLengths.h"
#include "protocol/PrintableName.h"
#include "protocol/VariantCbor.h"

#include <QCborMap>
#include <QCborStreamReader>

#include <limits>

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

constexpr Key textKeys[] = {NameKey, SecretKey, CodeKey, TextKey};

// 0 for anything but an integer: QCborValue would convert a double that no integer can hold.
qint64 integerAt(const QCborMap& map, Key key)
{
    const QCborValue value = map.value(key);
    return value.isInteger() ? value.toInteger() : 0;
}

/** A number or a name from a message, for a text. */
QString shown(const QCborValue& value)
{
    return value.isInteger()  ? QString::number(value.toInteger())
           : value.isString() ? printableName(value.toString())
                              : QStringLiteral("(not a number)");
}

bool isKnown(const QCborValue& key)
{
    return key.isInteger() && key.toInteger() >= VersionKey && key.toInteger() <= TextKey;
}

/** What is wrong with a message apart from its payload; empty when nothing is. */
QString faultOf(const QCborMap& map)
{
    if (integerAt(map, VersionKey) != WireMessage::version) {
        return QStringLiteral("unknown version %1").arg(shown(map.value(VersionKey)));
    }
    const qint64 kind = integerAt(map, KindKey);
    if (kind < WireMessage::Login || kind > WireMessage::Event) {
        return QStringLiteral("unknown kind %1").arg(shown(map.value(KindKey)));
    }
    for (const auto entry : map) {
        if (!isKnown(entry.first)) {
            return QStringLiteral("unknown key %1").arg(shown(entry.first));
        }
    }
    for (const Key key : textKeys) {
        if (!map.value(key).isUndefined() && !map.value(key).isString()) {
            return QStringLiteral("key %1 is not a text").arg(key);
        }
    }
    const QCborValue id = map.value(IdKey);
    const qint64 number = integerAt(map, IdKey);
    if ((!id.isUndefined() && !id.isInteger()) || number < 0 ||
        number > std::numeric_limits<quint32>::max()) {
        return QStringLiteral("key %1 is not a number of a command").arg(IdKey);
    }
    return QString();
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

std::optional<WireMessage> WireMessage::fromBytes(const QByteArray& bytes, QString* error)
{
    const auto fail = [error](const QString& reason) {
        if (error != nullptr) {
            *error = reason;
        }
        return std::nullopt;
    };
    if (!cborLengthsFit(bytes)) {
        return fail(QStringLiteral("not a message"));
    }
    QCborParserError problem;
    const QCborValue value = QCborValue::fromCbor(bytes, &problem);
    if (problem.error != QCborError::NoError || problem.offset != bytes.size() || !value.isMap()) {
        return fail(QStringLiteral("not a message"));
    }
    const QCborMap map = value.toMap();
    if (const QString fault = faultOf(map); !fault.isEmpty()) {
        return fail(fault);
    }
    auto payload = VariantCbor::decode(map.value(PayloadKey));
    if (!payload) {
        return fail(QStringLiteral("unknown type in the payload"));
    }
    WireMessage message;
    message.kind = static_cast<Kind>(integerAt(map, KindKey));
    message.id = static_cast<quint32>(integerAt(map, IdKey));
    message.name = map.value(NameKey).toString();
    message.secret = map.value(SecretKey).toString();
    message.payload = std::move(*payload);
    message.code = map.value(CodeKey).toString();
    message.text = map.value(TextKey).toString();
    return message;
}
