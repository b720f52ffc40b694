// Commands through the socket, there and back, by the number of clients that ask at once.

#include "client/SocketLink.h"
#include "protocol/Words.h"
#include "server/RecordingServer.h"
#include "server/access/SocketServer.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace {

void commandsThroughTheSocket(benchmark::State& state)
{
    RecordingServer server((ServerConfig()));
    SocketConfig config;
    config.users.setPassword(QStringLiteral("u"), QStringLiteral("p"));
    SocketServer door(server, config, nullptr);
    if (!door.listen()) {
        state.SkipWithError("cannot listen");
        return;
    }
    QUrl url = door.url();
    url.setHost(QStringLiteral("127.0.0.1"));
    std::vector<std::unique_ptr<SocketLink>> links;
    int connected = 0;
    int answered = 0;
    for (std::int64_t i = 0; i < state.range(0); ++i) {
        links.push_back(std::make_unique<SocketLink>(
            SocketLinkConfig{url, QStringLiteral("u"), QStringLiteral("p"), QString()}));
        QObject::connect(links.back().get(), &ServerLink::connected, [&connected] { ++connected; });
        QObject::connect(links.back().get(), &ServerLink::replied, [&answered] { ++answered; });
        links.back()->open();
    }
    while (connected < state.range(0)) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    for (auto _ : state) {
        answered = 0;
        for (const auto& link : links) {
            link->send(Vocabulary::GetAudioFile, QVariant(), 1);
        }
        while (answered < state.range(0)) {
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

} // namespace

BENCHMARK(commandsThroughTheSocket)->Arg(1)->Arg(50)->Unit(benchmark::kMicrosecond)->UseRealTime();

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
