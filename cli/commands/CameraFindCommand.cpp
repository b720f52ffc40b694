#include "cli/PluginSession.h"
#include "cli/commands/CameraSearch.h"
#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "client/ExitStatus.h"
#include "onvif/OnvifDiscovery.h"
#include "onvif/XmlElement.h"
#include "protocol/Words.h"

#include <QEventLoop>

#include <cstdio>

namespace {

constexpr double maxSearchSeconds = 60; // s
constexpr int msPerSecond = 1000;

/** The interfaces that the option names, or the usual ones; empty, and an error printed, for unknown ones. */
QList<QNetworkInterface> chosenInterfaces(const CommandArguments& arguments)
{
    if (!arguments.isSet("interface")) {
        return OnvifDiscovery::usualInterfaces();
    }
    const QNetworkInterface chosen = QNetworkInterface::interfaceFromName(arguments.value("interface"));
    if (chosen.isValid()) {
        return {chosen};
    }
    QStringList names;
    const QList<QNetworkInterface> all = QNetworkInterface::allInterfaces();
    for (const QNetworkInterface& interface : all) {
        names.append(interface.name());
    }
    arguments.usage(QStringLiteral("--interface takes one of: %1").arg(names.join(QStringLiteral(", "))));
    return {};
}

QString remarkOf(const FoundCamera& camera)
{
    return camera.addresses.isEmpty() && camera.isElsewhere
               ? QStringLiteral("names only addresses of other hosts")
               : QString();
}

Table tableOf(const std::vector<FoundCamera>& cameras)
{
    Table table({{QStringLiteral("address"), QStringLiteral("addresses")},
                 {QStringLiteral("name"), QStringLiteral("name")},
                 {Words::hardware, Words::hardware},
                 {Words::location, Words::location},
                 {QStringLiteral("host"), QStringLiteral("hosts")},
                 {QStringLiteral("interface"), QStringLiteral("interface")},
                 {QStringLiteral("camera"), QStringLiteral("camera")},
                 {QStringLiteral("endpoint"), QStringLiteral("endpoint")},
                 {Words::remark, Words::remark}});
    for (const FoundCamera& camera : cameras) {
        QStringList addresses;
        for (const QUrl& address : camera.addresses) {
            addresses.append(CameraSearch::textOf(address));
        }
        table.add({addresses, camera.name, camera.hardware, camera.location, camera.senders,
                   camera.interfaceName, camera.isCamera, camera.endpoint, remarkOf(camera)});
    }
    return table;
}

/** Asks a server for the cameras of its networks. */
int findByServer(const CommandArguments& arguments)
{
    for (const char* option : {"interface", "seconds", "all"}) {
        if (arguments.isSet(option)) {
            return arguments.usage(
                QStringLiteral("a server looks by itself: --%1 is not for it").arg(QLatin1String(option)));
        }
    }
    PluginSession session(arguments.client());
    PluginSession::Reply reply;
    ExitStatus status = session.open();
    status = status == ExitSuccess ? session.receive(session.sendOwn(Words::FindCameras), &reply,
                                                     session.options().timeout + CameraSearch::serverTime)
                                   : status;
    if (status != ExitSuccess) {
        return status;
    }
    Table table({{QStringLiteral("address"), QStringLiteral("addresses")},
                 {QStringLiteral("name"), QStringLiteral("name")},
                 {Words::hardware, Words::hardware},
                 {Words::location, Words::location},
                 {Words::remark, Words::remark}});
    const QVariantList found = reply.result.toList();
    for (const QVariant& entry : found) {
        const QVariantMap camera = entry.toMap();
        const auto text = [&camera](const QString& key) { return plainText(camera.value(key).toString()); };
        QStringList addresses{text(Words::camAddress)};
        addresses.removeAll(QString());
        table.add({addresses, text(Words::camName), text(Words::hardware), text(Words::location),
                   text(Words::remark)});
    }
    std::fputs(qUtf8Printable(table.text(arguments.json())), stdout);
    if (found.isEmpty()) {
        std::fputs("voicedesk: nothing answered\n", stderr);
    }
    return found.isEmpty() ? ExitNoAnswer : ExitSuccess;
}

int findCameras(const CommandArguments& arguments)
{
    if (CameraSearch::isForServer(arguments)) {
        return findByServer(arguments);
    }
    const auto seconds = arguments.numberBetween("seconds", 0, maxSearchSeconds);
    if (!seconds) {
        return ExitUsage;
    }
    const QList<QNetworkInterface> interfaces = chosenInterfaces(arguments);
    if (interfaces.isEmpty() && arguments.isSet("interface")) {
        return ExitUsage;
    }
    OnvifDiscovery::Options options;
    options.time = static_cast<int>(*seconds * msPerSecond);
    if (arguments.isSet("all")) {
        options.types = QStringList{QString(), QStringLiteral("wsdp:Device")}; // some want to be named
    }
    OnvifDiscovery discovery;
    QEventLoop loop;
    QObject::connect(&discovery, &OnvifDiscovery::finished, &loop, &QEventLoop::quit);
    if (!discovery.start(interfaces, options)) {
        std::fputs("voicedesk: no network interface to look for cameras on\n", stderr);
        return ExitNoAnswer;
    }
    if (!CameraSearch::runLoop(loop)) {
        return ExitNoAnswer;
    }
    std::fputs(qUtf8Printable(tableOf(discovery.found()).text(arguments.json())), stdout);
    if (discovery.dropped() > 0) {
        std::fprintf(stderr, "voicedesk: %d answers were too many or too large\n", discovery.dropped());
    }
    if (discovery.found().empty()) {
        std::fputs("voicedesk: nothing answered\n", stderr);
        return ExitNoAnswer;
    }
    return ExitSuccess;
}

} // namespace

std::vector<Command> cameraFindCommands()
{
    return {
        {"cameras find",
         "",
         "look for ONVIF cameras in the networks of this machine",
         "What they answer is not checked, and they get no login. Ends with 5 when nothing answers. With\n"
         "--server, the cameras in the networks of that server.",
         {{"interface", "name", "Look on this network interface only (default: on all that are up).", ""},
          {"seconds", "n", "How long to wait for answers (default: 3).", "3"},
          {"all", nullptr, "Look for devices of any kind, not of ONVIF alone.", ""},
          jsonOption},
         Command::Server,
         findCameras},
    };
}
