#include "protocol/VariantCbor.h"

#include "protocol/CborReader.h"
#include "protocol/CborWriter.h"
#include "protocol/Limits.h"

#include <QDateTime>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

#include <limits>

namespace {

constexpr quint64 uintTag = 65536;
constexpr quint64 longLongTag = 65537;
constexpr quint64 unsignedLongLongTag = 65538;
constexpr quint64 stringListTag = 65539;
constexpr quint64 dateTimeTag = 65540;
constexpr quint64 urlTag = 65541;

std::optional<QVariant> decodeValue(CborReader& reader, int depth);

bool isInteger(CborReader::Type type)
{
    return type == CborReader::Unsigned || type == CborReader::Negative;
}

std::optional<QVariant> decodeStringList(CborReader& reader)
{
    QStringList list;
    for (CborReader::Entries entries = reader.enter(); reader.hasNext(entries);) {
        if (reader.type() != CborReader::Text) {
            return std::nullopt;
        }
        list.append(reader.text());
    }
    return QVariant(list);
}

std::optional<QVariant> decodeTagged(CborReader& reader)
{
    const quint64 tag = reader.argument();
    const CborReader::Type type = reader.type();
    if ((tag == uintTag || tag == longLongTag) && isInteger(type)) {
        double rounded = 0;
        const auto number = reader.integer(&rounded);
        if (!number || (tag == uintTag && (*number < 0 || *number > std::numeric_limits<quint32>::max()))) {
            return std::nullopt;
        }
        return tag == uintTag ? QVariant(static_cast<quint32>(*number))
                              : QVariant(static_cast<qlonglong>(*number));
    }
    if (tag == unsignedLongLongTag && type == CborReader::Bytes) {
        bool valid = false;
        const qulonglong number = reader.string().toULongLong(&valid);
        return valid ? std::optional(QVariant(number)) : std::nullopt;
    }
    if (tag == stringListTag && type == CborReader::Array) {
        return decodeStringList(reader);
    }
    if (tag == dateTimeTag && type == CborReader::Text) {
        return QVariant(QDateTime::fromString(reader.text(), Qt::ISODateWithMs));
    }
    if (tag == urlTag && type == CborReader::Text) {
        return QVariant(QUrl(reader.text(), QUrl::StrictMode));
    }
    return std::nullopt;
}

std::optional<QVariant> decodeArray(CborReader& reader, int depth)
{
    QVariantList list;
    for (CborReader::Entries entries = reader.enter(); reader.hasNext(entries);) {
        auto decoded = decodeValue(reader, depth);
        if (!decoded) {
            return std::nullopt;
        }
        list.append(*std::move(decoded));
    }
    return QVariant(list);
}

std::optional<QVariant> decodeMap(CborReader& reader, int depth)
{
    QVariantMap map;
    for (CborReader::Entries entries = reader.enter(); reader.hasNext(entries);) {
        if (reader.type() != CborReader::Text) {
            return std::nullopt;
        }
        const QString key = reader.text();
        auto decoded = decodeValue(reader, depth);
        if (!decoded) {
            return std::nullopt;
        }
        map.insert(key, *std::move(decoded));
    }
    return QVariant(map);
}

std::optional<QVariant> decodeInteger(CborReader& reader)
{
    double rounded = 0;
    const auto number = reader.integer(&rounded);
    if (!number) {
        return QVariant(rounded); // deliberate: as messages have always been read
    }
    if (*number < std::numeric_limits<int>::min() || *number > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return QVariant(static_cast<int>(*number));
}

std::optional<QVariant> decodeSimple(CborReader& reader)
{
    switch (reader.argument()) {
    case CborReader::undefinedValue:
        return QVariant();
    case CborReader::trueValue:
        return QVariant(true);
    case CborReader::falseValue:
        return QVariant(false);
    default:
        return std::nullopt;
    }
}

/** @param depth of the lists and maps that the value is in */
std::optional<QVariant> decodeValue(CborReader& reader, int depth)
{
    switch (reader.type()) {
    case CborReader::Unsigned:
    case CborReader::Negative:
        return decodeInteger(reader);
    case CborReader::Bytes: {
        const QByteArray bytes = reader.string();
        return QVariant(QByteArray(bytes.constData(), bytes.size())); // which may outlive the message
    }
    case CborReader::Text:
        return QVariant(reader.text());
    case CborReader::Array:
        return depth < Limits::maxNesting ? decodeArray(reader, depth + 1) : std::nullopt;
    case CborReader::Map:
        return depth < Limits::maxNesting ? decodeMap(reader, depth + 1) : std::nullopt;
    case CborReader::Tag:
        return decodeTagged(reader);
    case CborReader::Simple:
        return decodeSimple(reader);
    case CborReader::Real:
        return QVariant(reader.real());
    }
    return std::nullopt;
}

} // namespace

void VariantCbor::encode(uint value, CborWriter& writer)
{
    writer.tag(uintTag);
    writer.integer(value);
}

void VariantCbor::encode(const QVariant& value, CborWriter& writer)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::Bool:
        writer.boolean(value.toBool());
        break;
    case QMetaType::Int:
    case QMetaType::Short:
    case QMetaType::UShort:
    case QMetaType::SChar:
    case QMetaType::UChar:
        writer.integer(value.toInt());
        break;
    case QMetaType::UInt:
        encode(value.toUInt(), writer);
        break;
    case QMetaType::Long:
    case QMetaType::LongLong:
        writer.tag(longLongTag);
        writer.integer(value.toLongLong());
        break;
    case QMetaType::ULong:
    case QMetaType::ULongLong:
        writer.tag(unsignedLongLongTag);
        writer.bytes(QByteArray::number(value.toULongLong()));
        break;
    case QMetaType::Float:
    case QMetaType::Double:
        writer.real(value.toDouble());
        break;
    case QMetaType::QString:
        writer.text(value.toString());
        break;
    case QMetaType::QByteArray:
        writer.bytes(value.toByteArray());
        break;
    case QMetaType::QStringList: {
        const QStringList list = value.toStringList();
        writer.tag(stringListTag);
        writer.array(list.size());
        for (const QString& entry : list) {
            writer.text(entry);
        }
        break;
    }
    case QMetaType::QDateTime:
        writer.tag(dateTimeTag);
        writer.text(value.toDateTime().toString(Qt::ISODateWithMs));
        break;
    case QMetaType::QUrl:
        writer.tag(urlTag);
        writer.text(value.toUrl().toString(QUrl::FullyEncoded));
        break;
    case QMetaType::QVariantList: {
        const QVariantList list = value.toList();
        writer.array(list.size());
        for (const QVariant& entry : list) {
            encode(entry, writer);
        }
        break;
    }
    case QMetaType::QVariantMap: {
        const QVariantMap entries = value.toMap();
        writer.map(entries.size());
        for (auto entry = entries.begin(); entry != entries.end(); ++entry) {
            writer.text(entry.key());
            encode(entry.value(), writer);
        }
        break;
    }
    default:
        writer.undefined();
    }
}

std::optional<QVariant> VariantCbor::decode(CborReader& reader)
{
    return decodeValue(reader, 0);
}
