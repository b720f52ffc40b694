#pragma once

#include "protocol/Limits.h"
#include "protocol/PrintableName.h"
#include "protocol/WireMessage.h"

#include <QCborArray>
#include <QCborMap>
#include <QCborStreamReader>
#include <QCborValue>
#include <QDateTime>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <limits>
#include <optional>

/**
 * The messages of the socket by Qt's own classes for CBOR, QCborValue and its relatives: another make that
 * ours is compared with, in bytes, in what is refused and why, and in time.
 */
namespace QtWireMessage {

enum MajorType // RFC 8949, clause 3.1
{
    ByteString = 2,
    TextString = 3,
    Array = 4,
    Map = 5,
};

inline constexpr quint8 oneByteArgument = 24; // and 25, 26, 27 for two, four, eight bytes
inline constexpr quint8 eightByteArgument = 27;
inline constexpr quint8 indefiniteLength = 31;

/** Whether no length is beyond the bytes: Qt reserves what it reads. */
inline bool lengthsFit(const QByteArray& bytes)
{
    const auto size = static_cast<quint64>(bytes.size());
    quint64 position = 0;
    quint64 promised = 0; // entries of all arrays and maps so far, each of which takes a byte or more
    while (position < size) {
        const auto head = static_cast<quint8>(bytes.at(static_cast<int>(position)));
        ++position;
        const int type = head >> 5U;
        quint64 argument = head & 0x1FU;
        if (argument == indefiniteLength) {
            continue;
        }
        if (argument > eightByteArgument) {
            return false;
        }
        if (argument >= oneByteArgument) {
            const quint64 length = quint64{1} << (argument - oneByteArgument);
            if (size - position < length) {
                return false;
            }
            argument = 0;
            for (quint64 i = 0; i < length; ++i, ++position) {
                argument = argument << 8U | static_cast<quint8>(bytes.at(static_cast<int>(position)));
            }
        }
        if (type == ByteString || type == TextString) {
            if (argument > size - position) {
                return false;
            }
            position += argument;
        } else if (type == Array || type == Map) {
            if (argument > size - promised) {
                return false;
            }
            promised += argument;
        }
    }
    return true;
}

inline constexpr auto uintTag = static_cast<QCborTag>(65536);
inline constexpr auto longLongTag = static_cast<QCborTag>(65537);
inline constexpr auto unsignedLongLongTag = static_cast<QCborTag>(65538);
inline constexpr auto stringListTag = static_cast<QCborTag>(65539);
inline constexpr auto dateTimeTag = static_cast<QCborTag>(65540);
inline constexpr auto urlTag = static_cast<QCborTag>(65541);

inline std::optional<QVariant> decodeValue(const QCborValue& value, int depth);

inline std::optional<QVariant> decodeTagged(const QCborValue& value)
{
    const QCborValue inner = value.taggedValue();
    const QCborTag tag = value.tag();
    if (tag == uintTag && inner.isInteger() && inner.toInteger() >= 0 &&
        inner.toInteger() <= std::numeric_limits<quint32>::max()) {
        return QVariant(static_cast<quint32>(inner.toInteger()));
    }
    if (tag == longLongTag && inner.isInteger()) {
        return QVariant(static_cast<qlonglong>(inner.toInteger()));
    }
    if (tag == unsignedLongLongTag && inner.isByteArray()) {
        bool valid = false;
        const qulonglong number = inner.toByteArray().toULongLong(&valid);
        return valid ? std::optional(QVariant(number)) : std::nullopt;
    }
    if (tag == stringListTag && inner.isArray()) {
        QStringList list;
        const QCborArray array = inner.toArray();
        for (const QCborValue& entry : array) {
            if (!entry.isString()) {
                return std::nullopt;
            }
            list.append(entry.toString());
        }
        return QVariant(list);
    }
    if (tag == dateTimeTag && inner.isString()) {
        return QVariant(QDateTime::fromString(inner.toString(), Qt::ISODateWithMs));
    }
    if (tag == urlTag && inner.isString()) {
        return QVariant(QUrl(inner.toString(), QUrl::StrictMode));
    }
    return std::nullopt;
}

inline std::optional<QVariant> decodeContainer(const QCborValue& value, int depth)
{
    if (depth >= Limits::maxNesting) {
        return std::nullopt;
    }
    if (value.isArray()) {
        QVariantList list;
        const QCborArray array = value.toArray();
        for (const QCborValue& entry : array) {
            auto decoded = decodeValue(entry, depth + 1);
            if (!decoded) {
                return std::nullopt;
            }
            list.append(*decoded);
        }
        return QVariant(list);
    }
    QVariantMap map;
    const QCborMap entries = value.toMap();
    for (const auto entry : entries) {
        auto decoded = decodeValue(entry.second, depth + 1);
        if (!entry.first.isString() || !decoded) {
            return std::nullopt;
        }
        map.insert(entry.first.toString(), *decoded);
    }
    return QVariant(map);
}

inline std::optional<QVariant> decodeValue(const QCborValue& value, int depth)
{
    switch (value.type()) {
    case QCborValue::Undefined:
        return QVariant();
    case QCborValue::Integer:
        if (value.toInteger() < std::numeric_limits<int>::min() ||
            value.toInteger() > std::numeric_limits<int>::max()) {
            return std::nullopt;
        }
        return QVariant(static_cast<int>(value.toInteger()));
    case QCborValue::String:
        return QVariant(value.toString());
    case QCborValue::ByteArray:
        return QVariant(value.toByteArray());
    case QCborValue::True:
    case QCborValue::False:
        return QVariant(value.toBool());
    case QCborValue::Double:
        return QVariant(value.toDouble());
    case QCborValue::Array:
    case QCborValue::Map:
        return decodeContainer(value, depth);
    default:
        return value.isTag() ? decodeTagged(value) : std::nullopt;
    }
}

/** Converts a value. */
inline QCborValue encode(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::Bool:
        return QCborValue(value.toBool());
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::SChar:
    case QMetaType::UChar:
        return QCborValue(value.toInt());
    case QMetaType::UInt:
        return QCborValue(uintTag, QCborValue(static_cast<qint64>(value.toUInt())));
    case QMetaType::Long:
    case QMetaType::LongLong:
        return QCborValue(longLongTag, QCborValue(value.toLongLong()));
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        return QCborValue(unsignedLongLongTag, QCborValue(QByteArray::number(value.toULongLong())));
    case QMetaType::Float:
    case QMetaType::Double:
        return QCborValue(value.toDouble());
    case QMetaType::QString:
        return QCborValue(value.toString());
    case QMetaType::QByteArray:
        return QCborValue(value.toByteArray());
    case QMetaType::QStringList:
        return QCborValue(stringListTag, QCborValue(QCborArray::fromStringList(value.toStringList())));
    case QMetaType::QDateTime:
        return QCborValue(dateTimeTag, QCborValue(value.toDateTime().toString(Qt::ISODateWithMs)));
    case QMetaType::QUrl:
        return QCborValue(urlTag, QCborValue(value.toUrl().toString(QUrl::FullyEncoded)));
    case QMetaType::QVariantList: {
        QCborArray array;
        const QVariantList list = value.toList();
        for (const QVariant& entry : list) {
            array.append(encode(entry));
        }
        return array;
    }
    case QMetaType::QVariantMap: {
        QCborMap map;
        const QVariantMap entries = value.toMap();
        for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
            map.insert(entry.key(), encode(entry.value()));
        }
        return map;
    }
    default:
        return QCborValue(QCborValue::Undefined);
    }
}

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

inline constexpr Key textKeys[] = {NameKey, SecretKey, CodeKey, TextKey};

// 0 for anything but an integer: QCborValue would convert a double that no integer can hold.
inline qint64 integerAt(const QCborMap& map, Key key)
{
    const QCborValue value = map.value(key);
    return value.isInteger() ? value.toInteger() : 0;
}

/** A number or a name from a message, for a text. */
inline QString shown(const QCborValue& value)
{
    return value.isInteger()  ? QString::number(value.toInteger())
           : value.isString() ? printableName(value.toString())
                              : QStringLiteral("(not a number)");
}

inline bool isKnown(const QCborValue& key)
{
    return key.isInteger() && key.toInteger() >= VersionKey && key.toInteger() <= TextKey;
}

/** What is wrong with a message apart from its payload; empty when nothing is. */
inline QString faultOf(const QCborMap& map)
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

/** What WireMessage::toBytes returns. */
inline QByteArray toBytes(const WireMessage& message)
{
    QCborMap map;
    map.insert(VersionKey, WireMessage::version);
    map.insert(KindKey, static_cast<int>(message.kind));
    if (message.id != 0) {
        map.insert(IdKey, static_cast<qint64>(message.id));
    }
    if (message.payload.isValid()) {
        map.insert(PayloadKey, encode(message.payload));
    }
    const std::pair<Key, const QString&> texts[] = {{NameKey, message.name},
                                                    {SecretKey, message.secret},
                                                    {CodeKey, message.code},
                                                    {TextKey, message.text}};
    for (const auto& [key, value] : texts) {
        if (!value.isEmpty()) {
            map.insert(key, value);
        }
    }
    return QCborValue(map).toCbor();
}

/** What WireMessage::fromBytes returns. */
inline std::optional<WireMessage> fromBytes(const QByteArray& bytes, QString* error)
{
    const auto fail = [error](const QString& reason) {
        if (error != nullptr) {
            *error = reason;
        }
        return std::nullopt;
    };
    if (!lengthsFit(bytes)) {
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
    auto payload = decodeValue(map.value(PayloadKey), 0);
    if (!payload) {
        return fail(QStringLiteral("unknown type in the payload"));
    }
    WireMessage message;
    message.kind = static_cast<WireMessage::Kind>(integerAt(map, KindKey));
    message.id = static_cast<quint32>(integerAt(map, IdKey));
    message.name = map.value(NameKey).toString();
    message.secret = map.value(SecretKey).toString();
    message.payload = std::move(*payload);
    message.code = map.value(CodeKey).toString();
    message.text = map.value(TextKey).toString();
    return message;
}

} // namespace QtWireMessage
