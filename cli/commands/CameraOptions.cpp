#include "cli/commands/CameraOptions.h"

#include "onvif/XmlElement.h"
#include "protocol/CameraSettingsRecord.h"
#include "protocol/Words.h"
#include "system/Console.h"

#include <QFileInfo>
#include <QHostAddress>
#include <QRegularExpression>
#include <QUrl>

namespace {

constexpr char passwordVariable[] = "VOICEDESK_CAMERA_SECRET";

/** How the text of an option becomes a setting. */
enum class Kind
{
    Text,
    Codec,
    Number,
    YesOrNo,
    Certificate,
};

/** A setting as an option. */
struct Setting
{
    CommandOption option;
    const QString& key; ///< In "camSettings".
    Kind kind;
    const char* takes; ///< Values, for an error; null where the kind says it.
};

const std::vector<Setting>& allSettings()
{
    static const QByteArray codecHelp =
        QStringLiteral("Codec to the camera: %1; empty: the first that both have (the default).")
            .arg(CameraSettingsRecord::talkCodecs().join(QStringLiteral(", ")))
            .toLatin1();
    static const std::vector<Setting> all{
        {{"transport", "tcp|udp", "How sound reaches the camera (default: tcp).", ""},
         Words::transport,
         Kind::Text,
         "tcp or udp"},
        {{"packet-time", "ms", "Sound in a packet to the camera: 20, 40 or 80 ms (default: 20).", ""},
         Words::packetTime,
         Kind::Number,
         "20, 40 or 80"},
        {{"talk-codec", "name", codecHelp.constData(), "", true}, Words::talkCodec, Kind::Codec, nullptr},
        {{"readiness-delay", "ms", "Time after which an open line is ready, 0 to 10000 (default: 0).", ""},
         Words::readinessDelay,
         Kind::Number,
         "0 to 10000"},
        {{"even-pace", "yes|no", "Whether packets leave one packet time apart (default: no).", ""},
         Words::evenPace,
         Kind::YesOrNo,
         nullptr},
        {{"half-duplex", "yes|no",
          "Whether the camera is not heard while somebody talks to it (default: no).", ""},
         Words::halfDuplex,
         Kind::YesOrNo,
         nullptr},
        {{"tcp-no-delay", "yes|no", "TCP_NODELAY on the connection (default: yes).", ""},
         Words::noDelay,
         Kind::YesOrNo,
         nullptr},
        {{"dscp", "n", "DSCP of what is sent, 0 to 63 (default: 46).", ""},
         Words::dscp,
         Kind::Number,
         "0 to 63"},
        {{"open-timeout", "ms", "Time for a talk to open, 1000 to 25000 (default: 10000).", ""},
         Words::openTimeout,
         Kind::Number,
         "1000 to 25000"},
        {{"certificate", "any|known", "Which certificates do with rtsps and https (default: known).", ""},
         Words::anyCertificate,
         Kind::Certificate,
         nullptr},
        {{"several-talks", "yes|no",
          "Whether several clients may talk to the camera at a time (default: no).", ""},
         Words::severalTalks,
         Kind::YesOrNo,
         nullptr},
    };
    return all;
}

/** The value of a word for true or another one for false; empty, and an error printed, for any other. */
std::optional<QVariant> choice(const CommandArguments& arguments, const char* option, const char* yes,
                               const char* no)
{
    const QString text = arguments.value(option);
    if (text != QLatin1String(yes) && text != QLatin1String(no)) {
        arguments.usage(QStringLiteral("--%1 takes %2 or %3")
                            .arg(QLatin1String(option), QLatin1String(yes), QLatin1String(no)));
        return std::nullopt;
    }
    return QVariant(text == QLatin1String(yes));
}

/** The codec of an option, as it is written in RTP; empty, and an error printed, for one that nobody has. */
std::optional<QVariant> codec(const CommandArguments& arguments, const char* option)
{
    const QString text = arguments.value(option);
    const QStringList known = CameraSettingsRecord::talkCodecs();
    const int found = known.indexOf(
        QRegularExpression(QRegularExpression::anchoredPattern(QRegularExpression::escape(text)),
                           QRegularExpression::CaseInsensitiveOption));
    if (found < 0 && !text.isEmpty()) {
        arguments.usage(QStringLiteral("--%1 takes one of: %2")
                            .arg(QLatin1String(option), known.join(QStringLiteral(", "))));
        return std::nullopt;
    }
    return QVariant(known.value(found));
}

std::optional<QVariant> valueOf(const CommandArguments& arguments, const Setting& setting)
{
    const char* option = setting.option.name;
    QVariant value = arguments.value(option);
    switch (setting.kind) {
    case Kind::Text:
        break;
    case Kind::Codec:
        return codec(arguments, option);
    case Kind::Number: {
        bool isNumber = false;
        const int number = arguments.value(option).toInt(&isNumber);
        value = isNumber ? QVariant(number) : value;
        break;
    }
    case Kind::YesOrNo:
        return choice(arguments, option, "yes", "no");
    case Kind::Certificate:
        return choice(arguments, option, "any", "known");
    }
    QString error;
    if (!CameraSettingsRecord::fromMap({{setting.key, value}}, CameraSettings(), &error)) {
        arguments.usage(
            QStringLiteral("--%1 takes %2").arg(QLatin1String(option), QLatin1String(setting.takes)));
        return std::nullopt;
    }
    return value;
}

/** A setting as the value of its option. */
QString textOf(const Setting& setting, const QVariant& value)
{
    switch (setting.kind) {
    case Kind::YesOrNo:
        return value.toBool() ? QStringLiteral("yes") : QStringLiteral("no");
    case Kind::Certificate:
        return value.toBool() ? QStringLiteral("any") : QStringLiteral("known");
    default:
        return value.toString();
    }
}

} // namespace

namespace CameraOptions {

std::vector<CommandOption> options()
{
    std::vector<CommandOption> all{
        {"camera-user", "name",
         "Name to log in with at the camera; its password is asked for, or read from "
         "VOICEDESK_CAMERA_SECRET.",
         ""},
    };
    for (const Setting& setting : allSettings()) {
        all.push_back(setting.option);
    }
    return all;
}

std::optional<QVariantMap> settings(const CommandArguments& arguments)
{
    QVariantMap given;
    for (const Setting& setting : allSettings()) {
        if (!arguments.isSet(setting.option.name)) {
            continue;
        }
        const auto value = valueOf(arguments, setting);
        if (!value) {
            return std::nullopt;
        }
        given.insert(setting.key, *value);
    }
    return given;
}

QString otherThanUsual(const QVariantMap& settings)
{
    const QVariantMap usual = CameraSettingsRecord::toMap(CameraSettings());
    QStringList texts;
    for (const Setting& setting : allSettings()) {
        const QVariant value = settings.value(setting.key);
        if (value.isValid() && value != usual.value(setting.key)) {
            texts.append(
                QStringLiteral("%1 %2").arg(QLatin1String(setting.option.name), textOf(setting, value)));
        }
    }
    return texts.join(QStringLiteral(", "));
}

bool hasSettings(const CommandArguments& arguments)
{
    const auto& all = allSettings();
    return std::any_of(all.begin(), all.end(),
                       [&arguments](const Setting& setting) { return arguments.isSet(setting.option.name); });
}

bool isAddress(const QString& text)
{
    static const QRegularExpression hostAndPort(QStringLiteral("^(\\[[^\\s]+\\]|[^\\s:/]+):\\d{1,5}$"));
    static const QRegularExpression ipv4(QStringLiteral("^\\d+\\.\\d+\\.\\d+\\.\\d+$"));
    const bool isIpv6 = QHostAddress(text).protocol() == QAbstractSocket::IPv6Protocol;
    return text.contains(QStringLiteral("://")) || isIpv6 || ipv4.match(text).hasMatch() ||
           hostAndPort.match(text).hasMatch();
}

bool mayBeRecord(const CommandArguments& arguments, const QString& text)
{
    return !isAddress(text) && !arguments.isSet("server") && !arguments.isSet("data") &&
           QFileInfo(arguments.client().embedded.dataDirectory).isDir();
}

bool hasNoLogin(const CommandArguments& arguments, const QString& address)
{
    if (!address.contains(QLatin1Char('@'))) {
        return true;
    }
    arguments.usage(
        QStringLiteral("an address must not contain a user name or a password, because others can "
                       "read it; give the user name with --camera-user"));
    return false;
}

std::optional<QString> password(const CommandArguments& arguments, const QString& user,
                                const QString& address)
{
    if (qEnvironmentVariableIsSet(passwordVariable)) {
        return qEnvironmentVariable(passwordVariable);
    }
    auto typed = Console::readPassword(
        qUtf8Printable(QStringLiteral("Password of %1 at %2: ").arg(plainText(user), plainText(address))));
    if (!typed) {
        arguments.usage(QStringLiteral("the password of the camera is missing; put it into %1")
                            .arg(QLatin1String(passwordVariable)));
    }
    return typed;
}

bool addLogin(const CommandArguments& arguments, const QString& address, QVariantMap* record)
{
    const QString user = arguments.value("camera-user");
    if (user.isEmpty()) {
        return true;
    }
    const auto secret = password(arguments, user, address);
    record->insert(Vocabulary::username, user);
    record->insert(Vocabulary::password, secret.value_or(QString()));
    return secret.has_value();
}

} // namespace CameraOptions
