#include "protocol/VariantCbor.h"

#include "protocol/Limits.h"

#include <QCborArray>
#include <QCborMap>
#include <QDateTime>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <limits>

namespace {

constexpr auto uintTag = static_cast<QCborTag>(65536);
constexpr auto longLongTag = static_cast<QCborTag>(65537);
constexpr auto unsignedLongLongTag = static_cast<QCborTag>(65538);
constexpr auto stringListTag = static_cast<QCborTag>(65539);
constexpr auto dateTimeTag = static_cast<QCborTag>(65540);
constexpr auto urlTag = static_cast<QCborTag>(65541);

std::optional<QVariant> decodeValue(const QCborValue& value, int depth);

std::optional<QVariant> decodeTagged(const QCborValue& value)
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

std::optional<QVariant> decodeContainer(const QCborValue& value, int depth)
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

std::optional<QVariant> decodeValue(const QCborValue& value, int depth)
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

} // namespace

QCborValue VariantCbor::encode(const QVariant& value)
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

std::optional<QVariant> VariantCbor::decode(const QCborValue& value)
{
    return decodeValue(value, 0);
}
