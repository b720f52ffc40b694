#include "protocol/WireMessage.h"

#include "protocol/CborReader.h"
#include "protocol/CborWriter.h"
#include "protocol/PrintableName.h"
#include "protocol/VariantCbor.h"
#include "src/vocabulary/Vocabulary.h"

#include <algorithm>
#include <array>
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
    KeyCount = 8,
};

constexpr Key textKeys[] = {NameKey, SecretKey, CodeKey, TextKey};

bool isInteger(CborReader::Type type)
{
    return type == CborReader::Unsigned || type == CborReader::Negative;
}

/** Reads an item as an integer; empty for anything else, and beyond 64 bits with a sign. */
std::optional<qint64> integerOf(CborReader value)
{
    double rounded = 0;
    return isInteger(value.type()) ? value.integer(&rounded) : std::nullopt;
}

/** Where the values of a message are, by their keys; empty for those that it does not have. */
class Values
{
public:
    /** Notes where the values are. @return the first key that no message has, for a text; empty for none */
    QString find(CborReader map)
    {
        QString unknown;
        for (CborReader::Entries entries = map.enter(); map.hasNext(entries);) {
            const CborReader key = map;
            map.skip();
            const auto number = integerOf(key);
            if (!number || *number < VersionKey || *number >= KeyCount) {
                unknown = unknown.isEmpty() ? shown(key) : unknown;
            } else if (auto& value = m_values[static_cast<std::size_t>(*number)]; !value) {
                value = map;
            }
            map.skip();
        }
        return unknown;
    }

    /** Returns the value of a key; empty for one that is not there, or undefined. */
    std::optional<CborReader> at(Key key) const
    {
        const auto& value = m_values[key];
        CborReader reader = value.value_or(CborReader(QByteArray()));
        const bool undefined =
            value && reader.type() == CborReader::Simple && reader.argument() == CborReader::undefinedValue;
        return undefined ? std::nullopt : value;
    }

    /** Returns an integer; 0 for anything else. */
    qint64 integerAt(Key key) const
    {
        const auto value = at(key);
        return value ? integerOf(*value).value_or(0) : 0;
    }

    QString textAt(Key key) const
    {
        auto value = at(key);
        return value ? value->text() : QString();
    }

    /** A number or a name from a message, for a text. */
    static QString shown(std::optional<CborReader> value)
    {
        const auto number = value ? integerOf(*value) : std::nullopt;
        return number                                       ? QString::number(*number)
               : value && value->type() == CborReader::Text ? printableName(value->text())
                                                            : QStringLiteral("(not a number)");
    }

private:
    std::array<std::optional<CborReader>, KeyCount> m_values;
};

/** What is wrong with a message apart from its payload; empty when nothing is. */
QString faultOf(const Values& values, const QString& unknownKey)
{
    if (values.integerAt(VersionKey) != WireMessage::version) {
        return QStringLiteral("unknown version %1").arg(Values::shown(values.at(VersionKey)));
    }
    const qint64 kind = values.integerAt(KindKey);
    if (kind < WireMessage::Login || kind > WireMessage::Event) {
        return QStringLiteral("unknown kind %1").arg(Values::shown(values.at(KindKey)));
    }
    if (!unknownKey.isEmpty()) {
        return QStringLiteral("unknown key %1").arg(unknownKey);
    }
    for (const Key key : textKeys) {
        if (const auto value = values.at(key); value && value->type() != CborReader::Text) {
            return QStringLiteral("key %1 is not a text").arg(key);
        }
    }
    const auto id = values.at(IdKey);
    const auto number = id ? integerOf(*id) : std::optional<qint64>(0);
    if (!number || *number < 0 || *number > std::numeric_limits<quint32>::max()) {
        return QStringLiteral("key %1 is not a number of a command").arg(IdKey);
    }
    return QString();
}

} // namespace

QByteArray WireMessage::toBytes() const
{
    constexpr int headsOfMessage = 64; // bytes; a guess that saves time
    const std::pair<Key, const QString&> texts[] = {
        {NameKey, name}, {SecretKey, secret}, {CodeKey, code}, {TextKey, text}};
    const bool hasPayload = payload.isValid() || !encodedPayload.isEmpty();
    const auto textCount = std::count_if(std::begin(texts), std::end(texts),
                                         [](const auto& each) { return !each.second.isEmpty(); });
    QByteArray bytes;
    bytes.reserve(headsOfMessage + encodedPayload.size());
    CborWriter writer(bytes);
    writer.map(2 + (id != 0 ? 1 : 0) + (hasPayload ? 1 : 0) + static_cast<int>(textCount));
    writer.integer(VersionKey);
    writer.integer(version);
    writer.integer(KindKey);
    writer.integer(kind);
    if (id != 0) {
        writer.integer(IdKey);
        writer.integer(id);
    }
    if (hasPayload) {
        writer.integer(PayloadKey);
        if (encodedPayload.isEmpty()) {
            VariantCbor::encode(payload, writer);
        } else {
            writer.encoded(encodedPayload);
        }
    }
    for (const auto& [key, value] : texts) {
        if (!value.isEmpty()) {
            writer.integer(key);
            writer.text(value);
        }
    }
    return bytes;
}

std::optional<WireMessage> WireMessage::fromBytes(const QByteArray& bytes, QString* error, TalkDataAs as)
{
    const auto fail = [error](const QString& reason) {
        if (error != nullptr) {
            *error = reason;
        }
        return std::nullopt;
    };
    const CborReader message(bytes);
    if (!isCbor(bytes) || message.type() != CborReader::Map) {
        return fail(QStringLiteral("not a message"));
    }
    Values values;
    const QString unknownKey = values.find(message);
    if (const QString fault = faultOf(values, unknownKey); !fault.isEmpty()) {
        return fail(fault);
    }
    WireMessage read;
    read.kind = static_cast<Kind>(values.integerAt(KindKey));
    read.id = static_cast<quint32>(values.integerAt(IdKey));
    read.name = values.textAt(NameKey);
    read.secret = values.textAt(SecretKey);
    read.code = values.textAt(CodeKey);
    read.text = values.textAt(TextKey);
    const auto payload = values.at(PayloadKey);
    if (payload && as == Texts && read.kind == Command && read.name == Vocabulary::TalkData) {
        CborReader reader = *payload;
        read.talkData = TalkDataPayload::read(reader, bytes);
    }
    if (payload && !read.talkData) {
        CborReader reader = *payload;
        auto decoded = VariantCbor::decode(reader);
        if (!decoded) {
            return fail(QStringLiteral("unknown type in the payload"));
        }
        read.payload = *std::move(decoded);
    }
    return read;
}
