#include "cli/RecordFinder.h"
#include "cli/commands/CameraOptions.h"
#include "cli/commands/CameraSearch.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "client/ExitStatus.h"
#include "onvif/CameraAddress.h"
#include "onvif/OnvifDevice.h"
#include "onvif/XmlElement.h"
#include "protocol/Words.h"

#include <QEventLoop>

#include <cstdio>

namespace {

constexpr int msPerSecond = 1000;
constexpr int clockTolerance = 5000; // ms that a camera's clock may be off without a word
constexpr int labelWidth = 18;       // characters

QString wordOf(Ability ability)
{
    switch (ability) {
    case Ability::No:
        return QStringLiteral("no");
    case Ability::Unknown:
        break;
    case Ability::Yes:
        return QStringLiteral("yes");
    }
    return QStringLiteral("unknown");
}

QVariantList codecList(const std::vector<CameraCodec>& codecs)
{
    QVariantList list;
    for (const CameraCodec& codec : codecs) {
        list.append(QVariantMap{{QStringLiteral("name"), codec.name},
                                {QStringLiteral("ratesHz"), toVariants(codec.rates)}});
    }
    return list;
}

QVariantMap jsonOf(const CameraAbilities& abilities)
{
    QVariantList streams;
    for (const CameraStream& stream : abilities.streams) {
        streams.append(QVariantMap{{QStringLiteral("name"), stream.name},
                                   {QStringLiteral("profile"), stream.token},
                                   {QStringLiteral("address"), CameraSearch::textOf(stream.address)},
                                   {Words::picture, stream.hasPicture},
                                   {QStringLiteral("voice"), stream.hasVoice},
                                   {QStringLiteral("loudspeaker"), stream.hasLoudspeaker}});
    }
    return {{QStringLiteral("address"), CameraSearch::textOf(abilities.device)},
            {Words::manufacturer, abilities.manufacturer},
            {Words::model, abilities.model},
            {Words::firmware, abilities.firmware},
            {QStringLiteral("clockOffsetMs"), abilities.clockOffset},
            {Words::speaks, wordOf(abilities.speaks)},
            {Words::speaksReason, abilities.speaksReason},
            {Words::voiceCodecs, codecList(abilities.voiceCodecs)},
            {Words::hears, wordOf(abilities.hears)},
            {Words::hearsReason, abilities.hearsReason},
            {Words::talkCodecs, codecList(abilities.talkCodecs)},
            {Words::streams, streams},
            {QStringLiteral("snapshot"), CameraSearch::textOf(abilities.snapshot)},
            {Words::remarks, abilities.remarks}};
}

void printLine(const char* label, const QString& text)
{
    const QString line = QString::fromLatin1(label).leftJustified(labelWidth) + text;
    std::puts(qUtf8Printable(line.trimmed()));
}

/** Codecs as SDP names them (RFC 8866, clause 6.6): "PCMU/8000, MPEG4-GENERIC/16000". */
QString codecText(const std::vector<CameraCodec>& codecs)
{
    QStringList texts;
    for (const CameraCodec& codec : codecs) {
        for (const int rate : codec.rates) {
            texts.append(QStringLiteral("%1/%2").arg(codec.name).arg(rate));
        }
        if (codec.rates.isEmpty()) {
            texts.append(codec.name);
        }
    }
    return texts.join(QStringLiteral(", "));
}

/** A stream with what is in it, as far as it is known. */
void printStream(const QString& address, const QString& name, QStringList parts)
{
    parts.removeAll(QString());
    QStringList more{name, parts.join(QStringLiteral(", "))};
    more.removeAll(QString());
    printLine("stream", more.isEmpty()
                            ? address
                            : QStringLiteral("%1 (%2)").arg(address, more.join(QStringLiteral(": "))));
}

void printAbility(const char* label, Ability ability, const QString& reason,
                  const std::vector<CameraCodec>& codecs)
{
    QStringList more{codecText(codecs), reason};
    more.removeAll(QString());
    printLine(label, more.isEmpty()
                         ? wordOf(ability)
                         : wordOf(ability) + QStringLiteral(": ") + more.join(QStringLiteral("; ")));
}

void print(const CameraAbilities& abilities)
{
    QStringList names{abilities.manufacturer, abilities.model};
    names.removeAll(QString());
    printLine("camera", names.join(QLatin1Char(' ')));
    if (!abilities.firmware.isEmpty()) {
        printLine(qUtf8Printable(Words::firmware), abilities.firmware);
    }
    printAbility("is heard", abilities.speaks, abilities.speaksReason, abilities.voiceCodecs);
    printAbility("plays talks", abilities.hears, abilities.hearsReason, abilities.talkCodecs);
    for (const CameraStream& stream : abilities.streams) {
        if (stream.address.isEmpty()) {
            continue;
        }
        printStream(CameraSearch::textOf(stream.address), stream.name,
                    {stream.hasPicture ? Words::picture : QString(),
                     stream.hasVoice ? QStringLiteral("voice") : QString(),
                     stream.hasLoudspeaker ? QStringLiteral("loudspeaker") : QString()});
    }
    if (!abilities.snapshot.isEmpty()) {
        printLine("snapshot", CameraSearch::textOf(abilities.snapshot));
    }
    if (qAbs(abilities.clockOffset) > clockTolerance) {
        printLine("clock",
                  QStringLiteral("%1 s %2")
                      .arg(qAbs(abilities.clockOffset) / msPerSecond)
                      .arg(abilities.clockOffset > 0 ? QStringLiteral("ahead") : QStringLiteral("behind")));
    }
    for (const QString& remark : abilities.remarks) {
        printLine(qUtf8Printable(Words::remark), remark);
    }
}

/** The login of the options, the variable and the terminal; empty, and an error printed, without a password.
 */
std::optional<OnvifLogin> chosenLogin(const CommandArguments& arguments)
{
    // With --server --user is the login there.
    const bool isNamed = arguments.isSet("camera-user") || arguments.isSet("server");
    OnvifLogin login{arguments.value(isNamed ? "camera-user" : "user"), QString()};
    if (login.user.isEmpty()) {
        return login;
    }
    const auto password = CameraOptions::password(arguments, login.user, arguments.word(0));
    login.password = password.value_or(QString());
    return password ? std::optional(login) : std::nullopt;
}

ExitStatus statusOf(OnvifError error)
{
    switch (error) {
    case OnvifError::None:
        return ExitSuccess;
    case OnvifError::NotReachable:
    case OnvifError::TimedOut:
    case OnvifError::NotOnvif:
    case OnvifError::TooLarge:
    case OnvifError::Untrusted:
        return ExitNoAnswer;
    default:
        return ExitRefused;
    }
}

void printAnswer(const QVariantMap& answer)
{
    const auto text = [&answer](const QString& key) { return plainText(answer.value(key).toString()); };
    const auto joined = [](QStringList texts, const QString& separator) {
        texts.removeAll(QString());
        return texts.join(separator);
    };
    const auto ability = [&](const QString& key, const QString& codecs, const QString& reason) {
        const QString more =
            joined({plainText(answer.value(codecs).toStringList().join(QStringLiteral(", "))), text(reason)},
                   QStringLiteral("; "));
        return joined({text(key), more}, QStringLiteral(": "));
    };
    printLine("camera", joined({text(Words::manufacturer), text(Words::model)}, QStringLiteral(" ")));
    printLine(qUtf8Printable(Words::firmware), text(Words::firmware));
    printLine("is heard", ability(Words::speaks, Words::voiceCodecs, Words::speaksReason));
    printLine("plays talks", ability(Words::hears, Words::talkCodecs, Words::hearsReason));
    const QVariantList streams = answer.value(Words::streams).toList();
    for (const QVariant& entry : streams) {
        const QVariantMap stream = entry.toMap();
        const auto has = [&stream](const QString& key) {
            return stream.value(key).toString() == QLatin1String("yes");
        };
        printStream(plainText(stream.value(Words::camAddress).toString()),
                    plainText(stream.value(Words::camName).toString()),
                    {has(Words::speaks) ? QStringLiteral("voice") : QString(),
                     has(Words::hears) ? QStringLiteral("loudspeaker") : QString()});
    }
    const QStringList remarks = answer.value(Words::remarks).toStringList();
    for (const QString& remark : remarks) {
        printLine(qUtf8Printable(Words::remark), plainText(remark));
    }
}

/** The answer as JSON: the keys are those of a camera that is asked from here, as far as it has them. */
QVariantMap jsonOf(QVariantMap answer)
{
    QVariantList streams;
    const QVariantList given = answer.value(Words::streams).toList();
    for (const QVariant& entry : given) {
        const QVariantMap stream = entry.toMap();
        streams.append(QVariantMap{{QStringLiteral("name"), stream.value(Words::camName)},
                                   {QStringLiteral("address"), stream.value(Words::camAddress)},
                                   {Words::speaks, stream.value(Words::speaks)},
                                   {Words::hears, stream.value(Words::hears)}});
    }
    answer.insert(Words::streams, streams);
    answer.insert(QStringLiteral("address"), answer.take(Words::camAddress));
    answer.insert(QStringLiteral("id"), answer.take(Vocabulary::camId));
    answer.remove(Vocabulary::error);
    return answer;
}

/** Sends a question about a camera to a server, and prints the answer. */
int askIn(PluginSession& session, const CommandArguments& arguments, const QVariantMap& question)
{
    PluginSession::Reply reply;
    const ExitStatus status = session.receive(session.sendOwn(Words::AskCamera, question), &reply,
                                              session.options().timeout + CameraSearch::serverTime);
    if (status != ExitSuccess) {
        return status;
    }
    const QVariantMap answer = reply.result.toMap();
    if (const QString error = answer.value(Vocabulary::error).toString(); !error.isEmpty()) {
        return PluginSession::fail(ExitRefused, plainText(error));
    }
    if (arguments.json()) {
        printJson(jsonOf(answer));
    } else {
        printAnswer(answer);
    }
    return ExitSuccess;
}

/** What a server is asked about a camera, but for which one; empty, and an error printed, without a password.
 */
std::optional<QVariantMap> questionOf(const CommandArguments& arguments)
{
    QVariantMap question;
    const auto login = chosenLogin(arguments);
    if (!login) {
        return std::nullopt;
    }
    if (!login->user.isEmpty()) {
        question.insert(Vocabulary::username, login->user);
        question.insert(Vocabulary::password, login->password);
    }
    if (arguments.isSet("any-certificate")) {
        question.insert(Words::camSettings, QVariantMap{{Words::anyCertificate, true}});
    }
    return question;
}

/** Lets a server ask a camera: one of its records, else the address. */
int askByServer(const CommandArguments& arguments)
{
    const QString operand = arguments.word(0);
    if (!CameraOptions::hasNoLogin(arguments, operand)) {
        return ExitUsage;
    }
    auto question = questionOf(arguments);
    if (!question) {
        return ExitUsage;
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    if (CameraOptions::isAddress(operand)) {
        question->insert(Words::camKind, QStringLiteral("onvif"));
        question->insert(Words::camAddress, operand);
    } else if (const auto id = finder.camera(operand)) {
        question->insert(Vocabulary::camId, *id);
    } else {
        return finder.status();
    }
    return askIn(session, arguments, *question);
}

/** Asks a camera of the records in the default folder; empty when none has this id or name, so that it is a
 * host. */
std::optional<int> askRecord(const CommandArguments& arguments)
{
    const QString operand = arguments.word(0);
    if (!CameraOptions::mayBeRecord(arguments, operand)) {
        return std::nullopt;
    }
    PluginSession session(arguments.client());
    if (session.open() != ExitSuccess) {
        return std::nullopt; // the reason is printed
    }
    RecordFinder finder(session);
    const auto found = finder.cameras(operand);
    if (!found || found->isEmpty()) {
        return std::nullopt;
    }
    const auto id = finder.camera(operand);
    auto question = id ? questionOf(arguments) : std::nullopt;
    if (!question) {
        return id ? ExitUsage : finder.status();
    }
    question->insert(Vocabulary::camId, *id);
    return askIn(session, arguments, *question);
}

int askCamera(const CommandArguments& arguments)
{
    if (!arguments.isSet("server") && !arguments.onlyOne("camera-user", "user")) {
        return ExitUsage;
    }
    if (CameraSearch::isForServer(arguments)) {
        return askByServer(arguments);
    }
    if (const auto status = askRecord(arguments)) {
        return *status;
    }
    QString error;
    const auto address = CameraAddress::deviceService(arguments.word(0), &error);
    if (!address) {
        return arguments.usage(error);
    }
    const auto login = chosenLogin(arguments);
    if (!login) {
        return ExitUsage;
    }
    OnvifDevice::Options options;
    options.anyCertificate = arguments.isSet("any-certificate");
    OnvifDevice device(*address, *login, options);
    CameraAbilities abilities;
    QEventLoop loop;
    QObject::connect(&device, &OnvifDevice::abilitiesKnown, &loop, [&](const CameraAbilities& known) {
        abilities = known;
        loop.quit();
    });
    device.askAbilities();
    if (!CameraSearch::runLoop(loop)) {
        return ExitNoAnswer;
    }
    if (abilities.error != OnvifError::None) {
        std::fprintf(stderr, "voicedesk: %s%s\n", qUtf8Printable(errorSentence(abilities)),
                     abilities.error == OnvifError::Untrusted ? "; --any-certificate accepts it" : "");
    } else if (arguments.json()) {
        printJson(jsonOf(abilities));
    } else {
        print(abilities);
    }
    return statusOf(abilities.error);
}

} // namespace

std::vector<Command> cameraAskCommands()
{
    return {
        {"cameras ask",
         "ADDRESS",
         "ask an ONVIF camera what it can do",
         "ADDRESS is a host, host:port or http://host:port/path, or the id or name of a camera in the "
         "records\n"
         "of the default folder, which comes first. The password is asked for, or read from the environment\n"
         "variable VOICEDESK_CAMERA_SECRET. With --server or --data the server asks, and ADDRESS may be the\n"
         "id or name of one of its cameras, or the URL of a stream. Without --server --user is the same as\n"
         "--camera-user.",
         {{"camera-user", "name", "Name to log in with at the camera.", ""},
          {"any-certificate", nullptr, "Take the certificate of an https address, whoever signed it.", ""},
          jsonOption},
         Command::Server,
         askCamera,
         false,
         true},
    };
}
