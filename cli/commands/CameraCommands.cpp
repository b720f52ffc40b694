#include "cli/RecordFinder.h"
#include "cli/commands/CameraOptions.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "protocol/PrintableName.h"
#include "protocol/Words.h"

#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

namespace {

constexpr char defaultKind[] = "onvif";
constexpr int presenceTime = 3500; // ms that cameras have to answer a server that has just started

bool isOnline(const QVariant& camera)
{
    return camera.toMap().value(Words::online).toBool();
}

bool isAsked(const QVariant& camera)
{
    return camera.toMap().value(Words::camKind).toString() == QLatin1String(defaultKind);
}

/**
 * Reads the cameras. A server inside this program has just started: those that it asks whether they are there
 * have some time to answer.
 */
ExitStatus readCameras(PluginSession& session, QVariantList* cameras)
{
    bool changed = false;
    const QObject context; // of the connection, which ends here
    QObject::connect(&session.host(), &PluginHost::eventArrived, &context, [&changed](const QString& event) {
        changed = changed || event == Words::CamerasChanged;
    });
    QElapsedTimer clock;
    clock.start();
    for (;;) {
        changed = false;
        PluginSession::Reply reply;
        const ExitStatus status = session.receive(session.sendOwn(Words::GetCamera), &reply);
        if (status != ExitSuccess) {
            return status;
        }
        *cameras = reply.result.toList();
        const bool allKnown = session.embeddedServer() == nullptr ||
                              std::all_of(cameras->begin(), cameras->end(), [](const QVariant& camera) {
                                  return isOnline(camera) || !isAsked(camera);
                              });
        const int left = presenceTime - static_cast<int>(clock.elapsed());
        if (allKnown || left <= 0 || !session.wait([&changed] { return changed; }, left)) {
            return ExitSuccess;
        }
    }
}

int list(const CommandArguments& arguments, const ClientOptions& client)
{
    PluginSession session(client);
    QVariantList cameras;
    ExitStatus status = session.open();
    status = status == ExitSuccess ? readCameras(session, &cameras) : status;
    if (status != ExitSuccess) {
        return status;
    }
    Table table({{"id", "id"},
                 {"name", "name"},
                 {"kind", "kind"},
                 {"address", "address"},
                 {"user", "user"},
                 {Words::online, Words::online},
                 {"settings", "settings"}});
    for (const QVariant& entry : qAsConst(cameras)) {
        const QVariantMap camera = entry.toMap();
        const auto text = [&camera](const QString& key) { return camera.value(key).toString(); };
        const QVariantMap settings = camera.value(Words::camSettings).toMap();
        table.add({text(Vocabulary::camId), text(Words::camName), text(Words::camKind),
                   text(Words::camAddress), text(Vocabulary::username), isOnline(camera),
                   arguments.json() ? QVariant(settings) : CameraOptions::otherThanUsual(settings)});
    }
    std::fputs(qUtf8Printable(table.text(arguments.json())), stdout);
    return ExitSuccess;
}

int listCameras(const CommandArguments& arguments)
{
    ClientOptions client = arguments.client();
    if (!arguments.isSet("data")) {
        client.embedded.dataDirectory.clear(); // a look that needs no records
        client.simulated.hasCameras = true;    // as a talk has them
    }
    return list(arguments, client);
}

int listRecords(const CommandArguments& arguments)
{
    return list(arguments, arguments.client());
}

/** Sends a change of a record, and prints the camera's id. */
int change(PluginSession& session, const CommandArguments& arguments, const QString& command,
           const QVariant& payload, const char* done)
{
    PluginSession::Reply reply;
    const ExitStatus status = session.receive(session.sendOwn(command, payload), &reply);
    if (status != ExitSuccess) {
        return status;
    }
    const QString id = reply.result.userType() == QMetaType::QVariantMap
                           ? reply.result.toMap().value(Vocabulary::camId).toString()
                           : reply.result.toString();
    if (arguments.json()) {
        printJson({{QStringLiteral("id"), id}});
    } else {
        std::printf("%s %s\n", done, qUtf8Printable(printableText(id)));
    }
    return ExitSuccess;
}

int addCamera(const CommandArguments& arguments)
{
    const QString address = arguments.word(1);
    const auto settings = CameraOptions::settings(arguments);
    QVariantMap record{{Words::camName, arguments.word(0)},
                       {Words::camKind, arguments.value("kind")},
                       {Words::camAddress, address}};
    if (!settings || !CameraOptions::hasNoLogin(arguments, address) ||
        !CameraOptions::addLogin(arguments, address, &record)) {
        return ExitUsage;
    }
    record.insert(Words::camSettings, *settings);
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    return change(session, arguments, Words::AddCamera, record, "added camera");
}

int updateCamera(const CommandArguments& arguments)
{
    if (arguments.words() > 2 && arguments.isSet("address")) {
        return arguments.usage(QStringLiteral("the address is given twice"));
    }
    const auto settings = CameraOptions::settings(arguments);
    const QString address = arguments.words() > 2 ? arguments.word(2) : arguments.value("address");
    if (!settings || !CameraOptions::hasNoLogin(arguments, address) ||
        !arguments.onlyOne("camera-user", "no-login") || !arguments.onlyOne("camera-password", "no-login")) {
        return ExitUsage;
    }
    bool changes = arguments.words() > 1 || CameraOptions::hasSettings(arguments);
    for (const char* option : {"address", "kind", "camera-user", "camera-password", "no-login"}) {
        changes = changes || arguments.isSet(option);
    }
    if (!changes) {
        return arguments.usage(QStringLiteral("nothing is named that is to be changed"));
    }
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto before = finder.cameraRecord(arguments.word(0));
    if (!before) {
        return finder.status();
    }
    // An update needs name, kind and address; of login and settings it changes what it has.
    QVariantMap record{{Vocabulary::camId, before->value(Vocabulary::camId)},
                       {Words::camName, before->value(Words::camName)},
                       {Words::camKind, before->value(Words::camKind)},
                       {Words::camAddress, before->value(Words::camAddress)},
                       {Words::camSettings, *settings}};
    if (arguments.words() > 1) {
        record.insert(Words::camName, arguments.word(1));
    }
    if (!address.isEmpty()) {
        record.insert(Words::camAddress, address);
    }
    if (arguments.isSet("kind")) {
        record.insert(Words::camKind, arguments.value("kind"));
    }
    const QString at = record.value(Words::camAddress).toString();
    if (!CameraOptions::addLogin(arguments, at, &record)) {
        return ExitUsage;
    }
    if (arguments.isSet("camera-password") && !arguments.isSet("camera-user")) {
        const auto secret =
            CameraOptions::password(arguments, before->value(Vocabulary::username).toString(), at);
        if (!secret) {
            return ExitUsage;
        }
        record.insert(Vocabulary::password, *secret);
    }
    if (arguments.isSet("no-login")) {
        record.insert(Vocabulary::username, QString());
        record.insert(Vocabulary::password, QString());
    }
    return change(session, arguments, Words::UpdateCamera, record, "updated camera");
}

int deleteCamera(const CommandArguments& arguments)
{
    PluginSession session(arguments.client());
    if (const ExitStatus status = session.open(); status != ExitSuccess) {
        return status;
    }
    RecordFinder finder(session);
    const auto id = finder.camera(arguments.word(0));
    return id ? change(session, arguments, Words::DeleteCamera, *id, "deleted camera") : finder.status();
}

} // namespace

std::vector<Command> cameraCommands()
{
    std::vector<CommandOption> add{
        {"kind", "name", "How the camera is reached: onvif, or simulated with --simulate (default: onvif).",
         defaultKind},
    };
    const std::vector<CommandOption> options = CameraOptions::options();
    add.insert(add.end(), options.begin(), options.end());
    add.push_back(jsonOption);
    std::vector<CommandOption> update{
        {"address", "address", "New address.", ""},
        {"camera-password", nullptr, "New password: it is asked for, or read from VOICEDESK_CAMERA_SECRET.",
         ""},
        {"no-login", nullptr, "Without login and password.", ""},
        {"kind", "name", "How the camera is reached: onvif, or simulated with --simulate.", ""},
    };
    update.insert(update.end(), options.begin(), options.end());
    update.push_back(jsonOption);
    return {
        {"cameras",
         "",
         "list the cameras of the server",
         "Without --server and --data the simulated ones that voicedesk talk has. \"voicedesk help cameras "
         "VERB\"\n"
         "is about the commands beside this one: list, add, update, delete, test, find, ask.",
         {jsonOption},
         Command::Server,
         listCameras},
        {"cameras list",
         "",
         "list the cameras of the records",
         "Without --server those in the folder of --data, which have three seconds to answer. Of the "
         "settings\n"
         "those are listed that are not the defaults; with --json all.",
         {jsonOption},
         Command::Server,
         listRecords},
        {"cameras add", "NAME ADDRESS", "add a camera",
         "ADDRESS is that of a stream, rtsp://host:port/path, or of the camera's device service: a host,\n"
         "host:port, or http://host:port/path.",
         add, Command::Server, addCamera},
        {"cameras update", "CAMERA [NAME [ADDRESS]]", "change a camera",
         "What is not named stays as it is, the password too.", update, Command::Server, updateCamera},
        {"cameras delete", "CAMERA", "delete a camera", "", {jsonOption}, Command::Server, deleteCamera},
    };
}
