#include "protocol/FieldTypes.h"

#include "protocol/HostCommands.h"
#include "protocol/Words.h"
#include "src/vocabulary/Vocabulary.h"

#include <QHash>

#include <algorithm>
#include <cmath>
#include <limits>

namespace {

enum class Type
{
    Text,
    Number,
    Flag,
    Time,
    Map,
    ScheduleSettings,
};

const QHash<QString, Type>& types()
{
    namespace V = Vocabulary;
    namespace W = Words;
    static const QHash<QString, Type> all{
        {V::camId, Type::Text},
        {W::camName, Type::Text},
        {W::camKind, Type::Text},
        {W::camAddress, Type::Text},
        {W::camSettings, Type::Map},
        {V::deviceID, Type::Number},
        {V::deviceName, Type::Text},
        {V::ip, Type::Text},
        {V::port, Type::Number},
        {V::username, Type::Text},
        {V::password, Type::Text},
        {V::bindingCameraList, Type::Text},
        {V::groupID, Type::Number},
        {V::groupName, Type::Text},
        {V::groupIDList, Type::Text},
        {V::networkAudioIDList, Type::Text},
        {V::scheduleID, Type::Number},
        {V::scheduleName, Type::Text},
        {V::enableSchedule, Type::Flag},
        {V::scheduleType, Type::Number},
        {V::scheduleSettings, Type::ScheduleSettings},
        {V::scheduleStartTime, Type::Time},
        {V::scheduleEndTime, Type::Time},
        {V::enableScheduleEndTime, Type::Flag},
        {V::audioID, Type::Number},
        {V::ipAudioId, Type::Number},
        {V::audioFileId, Type::Number},
        {W::filename, Type::Text},
    };
    return all;
}

bool isScheduleSettings(const QVariant& value)
{
    const QVariant weekdays = value.toMap().value(Words::weekdays);
    const QVariantList days = weekdays.toList();
    return value.userType() == QMetaType::QVariantMap &&
           (!weekdays.isValid() || weekdays.userType() == QMetaType::QVariantList) &&
           std::all_of(days.begin(), days.end(),
                       [](const QVariant& day) { return FieldTypes::wholeNumber(day).has_value(); });
}

bool isOf(Type type, const QVariant& value)
{
    const int given = value.userType();
    switch (type) {
    case Type::Text:
        return given == QMetaType::QString;
    case Type::Number:
        return FieldTypes::wholeNumber(value).has_value();
    case Type::Flag:
        return given == QMetaType::Bool;
    case Type::Time:
        return given == QMetaType::QString || given == QMetaType::QDateTime;
    case Type::Map:
        return given == QMetaType::QVariantMap;
    case Type::ScheduleSettings:
        return isScheduleSettings(value);
    }
    return false;
}

QString wordsOf(Type type)
{
    switch (type) {
    case Type::Text:
        return QStringLiteral("a text");
    case Type::Number:
        return QStringLiteral("a whole number");
    case Type::Flag:
        return QStringLiteral("true or false");
    case Type::Time:
        return QStringLiteral("a time as text");
    case Type::Map:
        return QStringLiteral("a map");
    case Type::ScheduleSettings:
        return QStringLiteral("a map, and its \"weekdays\" a list of whole numbers");
    }
    return QString();
}

} // namespace

std::optional<FieldTypes::Mistyped> FieldTypes::firstMistyped(const QVariantMap& fields)
{
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        const auto type = types().constFind(field.key());
        if (type != types().constEnd() && field.value().isValid() && !isOf(*type, field.value())) {
            return Mistyped{field.key(), wordsOf(*type)};
        }
    }
    return std::nullopt;
}

std::optional<int> FieldTypes::wholeNumber(const QVariant& value)
{
    switch (static_cast<QMetaType::Type>(value.userType())) {
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double: {
        const double number = value.toDouble();
        const bool fits = number >= std::numeric_limits<int>::min() &&
                          number <= std::numeric_limits<int>::max() && std::floor(number) == number;
        return fits ? std::optional(static_cast<int>(number)) : std::nullopt;
    }
    default:
        return std::nullopt;
    }
}
