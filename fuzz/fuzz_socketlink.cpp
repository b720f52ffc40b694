// Any messages of a server to a desk: over a real connection through SocketLink and PluginHost into the
// plug-in, which has asked for things before.
//
//   input    messages, each behind a length of 16 bits, little endian

#include "client/PluginHost.h"
#include "client/SocketLink.h"
#include "protocol/WireMessage.h"
#include "tests/support/WebSocketPeer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

constexpr int timeout = 10000; // ms
constexpr int maxMessages = 64;

const QString lastEvent = QStringLiteral("The end of the input");

[[noreturn]] void fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

template<class Condition>
void waitFor(const char* what, Condition condition)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition()) {
        if (clock.elapsed() > timeout) {
            fail(what);
        }
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 100);
    }
}

QByteArray bytesOf(WireMessage::Kind kind, const QString& name)
{
    WireMessage message;
    message.kind = kind;
    message.name = name;
    return message.toBytes();
}

/** Requests whose replies find user data and numbers that are known: 1 to 6, after the host's own two. */
void ask(QObject* plugin)
{
    for (int id = 0; id < 4; ++id) {
        QMetaObject::invokeMethod(plugin, "startTalkToIPAudio", Q_ARG(int, id));
    }
    QMetaObject::invokeMethod(plugin, "deleteAudioFile", Q_ARG(int, 1));
    QMetaObject::invokeMethod(plugin, "stopTalkToIPAudio", Q_ARG(int, 1));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
    static const bool quiet = [] {
        QCoreApplication::setLibraryPaths({}); // no sound
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
        return true;
    }();
    static WebSocketListener server;
    if (!quiet || !server.isListening()) {
        fail("no server");
    }
    SocketLinkConfig config;
    config.url = server.url();
    SocketLink link(config);
    PluginHost host(link);
    bool up = false;
    bool over = false;
    QObject::connect(&link, &ServerLink::connected, &link, [&host, &up] {
        if (!up) {
            ask(host.plugin());
        }
        up = true;
    });
    QObject::connect(&link, &SocketLink::lost, [&over] { over = true; });
    QObject::connect(&host, &PluginHost::eventArrived,
                     [&over](const QString& event) { over = over || event == lastEvent; });
    if (!host.load(QStringLiteral(PLUGIN_PATH))) {
        fail(qPrintable(host.errorString()));
    }
    std::unique_ptr<WebSocketPeer> peer;
    waitFor("no connection", [&peer] {
        peer.reset(server.nextPeer());
        return peer != nullptr;
    });
    peer->sendBinaryMessage(bytesOf(WireMessage::Welcome, QString()));
    std::size_t at = 0;
    for (int messages = 0; messages < maxMessages && at + 2 <= size; ++messages) {
        const std::size_t wanted = data[at] | static_cast<std::size_t>(data[at + 1]) << 8U;
        at += 2;
        const std::size_t length = std::min(wanted, size - at);
        peer->sendBinaryMessage(
            QByteArray(reinterpret_cast<const char*>(data + at), static_cast<int>(length)));
        at += length;
    }
    peer->sendBinaryMessage(bytesOf(WireMessage::Event, lastEvent));
    waitFor("the messages do not arrive", [&over] { return over; });
    if (!up) {
        fail("no welcome");
    }
    host.unload();
    return 0;
}
