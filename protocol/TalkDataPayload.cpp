#include "protocol/TalkDataPayload.h"

#include "protocol/CborReader.h"
#include "protocol/Limits.h"
#include "protocol/VariantCbor.h"
#include "src/vocabulary/Vocabulary.h"

#include <algorithm>

namespace {

/** Reads a text of ASCII in one piece that is not too long; empty for anything else. */
std::optional<std::string_view> readText(CborReader& reader, int longest)
{
    const auto text =
        reader.type() == CborReader::Text ? reader.wholeString() : std::optional<std::string_view>();
    const bool fits = text && text->size() <= static_cast<std::size_t>(longest) &&
                      std::all_of(text->begin(), text->end(),
                                  [](char each) { return static_cast<signed char>(each) >= 0; });
    return fits ? text : std::nullopt;
}

/** Reads a number that is none yet. */
bool readSequence(CborReader& reader, QVariant& sequence)
{
    const CborReader::Type type = reader.type();
    if (sequence.isValid() || (type != CborReader::Unsigned && type != CborReader::Tag)) {
        return false;
    }
    const auto number = VariantCbor::decode(reader);
    if (!number || (number->userType() != QMetaType::Int && number->userType() != QMetaType::UInt)) {
        return false;
    }
    sequence = *number;
    return true;
}

bool isWord(std::string_view key, const QString& word)
{
    return word == QLatin1String(key.data(), static_cast<int>(key.size()));
}

} // namespace

std::optional<TalkDataPayload> TalkDataPayload::read(CborReader& reader, const QByteArray& message)
{
    if (reader.type() != CborReader::Map) {
        return std::nullopt;
    }
    std::optional<std::string_view> targets;
    std::optional<std::string_view> talkData;
    QVariant sequence;
    for (CborReader::Entries entries = reader.enter(); reader.hasNext(entries);) {
        const auto key =
            reader.type() == CborReader::Text ? reader.wholeString() : std::optional<std::string_view>();
        if (!key) {
            return std::nullopt;
        }
        bool read = false;
        if (isWord(*key, Vocabulary::talkData) && !talkData) {
            read = (talkData = readText(reader, Limits::maxTalkDataLength)).has_value();
        } else if (isWord(*key, Vocabulary::targets) && !targets) {
            read = (targets = readText(reader, Limits::maxTargetsLength)).has_value();
        } else if (isWord(*key, Vocabulary::sequence)) {
            read = readSequence(reader, sequence);
        }
        if (!read) {
            return std::nullopt;
        }
    }
    if (!targets || !talkData) {
        return std::nullopt;
    }
    return TalkDataPayload{message, *targets, *talkData, sequence};
}

QVariantMap TalkDataPayload::toMap() const
{
    const auto text = [](std::string_view ascii) {
        return QString::fromLatin1(ascii.data(), static_cast<int>(ascii.size()));
    };
    QVariantMap map{{Vocabulary::targets, text(targets)}, {Vocabulary::talkData, text(talkData)}};
    if (sequence.isValid()) {
        map.insert(Vocabulary::sequence, sequence);
    }
    return map;
}
