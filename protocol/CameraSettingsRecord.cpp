#include "protocol/CameraSettingsRecord.h"

#include "protocol/FieldTypes.h"
#include "protocol/Words.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>

namespace {

const QString tcp = QStringLiteral("tcp");
const QString udp = QStringLiteral("udp");

bool readNumber(const QVariant& value, int least, int most, int& setting)
{
    const auto number = FieldTypes::wholeNumber(value);
    if (!number || *number < least || *number > most) {
        return false;
    }
    setting = *number;
    return true;
}

bool readFlag(const QVariant& value, bool& setting)
{
    setting = value.toBool();
    return value.userType() == QMetaType::Bool;
}

bool readTransport(const QVariant& value, CameraTransport& setting)
{
    setting = value == QVariant(udp) ? CameraTransport::Udp : CameraTransport::Tcp;
    return value == QVariant(udp) || value == QVariant(tcp);
}

bool readPacketTime(const QVariant& value, int& setting)
{
    constexpr int longest = 80;
    return readNumber(value, 1, longest, setting) && (setting == 20 || setting == 40 || setting == longest);
}

bool readCodec(const QVariant& value, QString& setting)
{
    static const QRegularExpression name(QStringLiteral("^[A-Za-z0-9-]{0,32}$"));
    setting = value.toString();
    return value.userType() == QMetaType::QString && name.match(setting).hasMatch();
}

bool readSetting(const QString& key, const QVariant& value, CameraSettings& settings)
{
    using Limit = CameraSettings;
    if (key == Words::transport) {
        return readTransport(value, settings.transport);
    }
    if (key == Words::packetTime) {
        return readPacketTime(value, settings.packetTime);
    }
    if (key == Words::talkCodec) {
        return readCodec(value, settings.talkCodec);
    }
    if (key == Words::readinessDelay) {
        return readNumber(value, 0, Limit::maxReadinessDelay, settings.readinessDelay);
    }
    if (key == Words::openTimeout) {
        return readNumber(value, Limit::minOpenTimeout, Limit::maxOpenTimeout, settings.openTimeout);
    }
    if (key == Words::dscp) {
        return readNumber(value, 0, Limit::maxDscp, settings.dscp);
    }
    return (key == Words::evenPace && readFlag(value, settings.evenPace)) ||
           (key == Words::halfDuplex && readFlag(value, settings.halfDuplex)) ||
           (key == Words::noDelay && readFlag(value, settings.noDelay)) ||
           (key == Words::severalTalks && readFlag(value, settings.severalTalks)) ||
           (key == Words::anyCertificate && readFlag(value, settings.anyCertificate));
}

} // namespace

QVariantMap CameraSettingsRecord::toMap(const CameraSettings& settings)
{
    return {
        {Words::transport, settings.transport == CameraTransport::Udp ? udp : tcp},
        {Words::packetTime, settings.packetTime},
        {Words::talkCodec, settings.talkCodec},
        {Words::readinessDelay, settings.readinessDelay},
        {Words::evenPace, settings.evenPace},
        {Words::halfDuplex, settings.halfDuplex},
        {Words::noDelay, settings.noDelay},
        {Words::dscp, settings.dscp},
        {Words::openTimeout, settings.openTimeout},
        {Words::anyCertificate, settings.anyCertificate},
        {Words::severalTalks, settings.severalTalks},
    };
}

std::optional<CameraSettings> CameraSettingsRecord::fromMap(const QVariantMap& map,
                                                            const CameraSettings& before, QString* error)
{
    CameraSettings settings = before;
    for (auto setting = map.begin(); setting != map.end(); ++setting) {
        if (setting.value().isValid() && !readSetting(setting.key(), setting.value(), settings)) {
            constexpr int shown = 64; // characters
            *error = QStringLiteral("the camera's setting \"%1\" is unknown, or has no such value")
                         .arg(setting.key().left(shown));
            return std::nullopt;
        }
    }
    return settings;
}

QStringList CameraSettingsRecord::talkCodecs()
{
    QStringList names{QStringLiteral("PCMU"), QStringLiteral("PCMA")};
    for (const QString& packing : {QString(), QStringLiteral("AAL2-")}) {
        for (const int rate : {16, 24, 32, 40}) {
            names.append(QStringLiteral("%1G726-%2").arg(packing).arg(rate));
        }
    }
    return names + QStringList{QStringLiteral("L16"), QStringLiteral("MPEG4-GENERIC")};
}

QString CameraSettingsRecord::toText(const CameraSettings& settings)
{
    if (settings == CameraSettings()) {
        return QString(); // as of a record that is older than the settings, which must not grow by a change
    }
    return QString::fromUtf8(
        QJsonDocument(QJsonObject::fromVariantMap(toMap(settings))).toJson(QJsonDocument::Compact));
}

CameraSettings CameraSettingsRecord::fromText(const QString& text)
{
    QString error;
    const QVariantMap map = QJsonDocument::fromJson(text.toUtf8()).object().toVariantMap();
    return fromMap(map, CameraSettings(), &error).value_or(CameraSettings());
}
