// Talks to cameras over RTSP on this machine: how late what is said and heard comes, and what many talks
// cost.

#include "server/devices/onvif/CameraPresence.h"
#include "tests/server/onvif/TalkProbe.h"

#include <QTcpServer>
#include <QTcpSocket>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <ctime>

namespace {

constexpr double microsecondsPerMs = 1000;

void report(benchmark::State& state, std::vector<double> values)
{
    if (values.empty()) {
        state.SkipWithError("nothing was heard");
        return;
    }
    std::sort(values.begin(), values.end());
    state.counters["median_ms"] = values[values.size() / 2];
    state.counters["p95_ms"] = values[values.size() * 95 / 100];
    state.counters["worst_ms"] = values.back();
    state.counters["count"] = static_cast<double>(values.size());
}

/** From the call of the back end to the camera's depayloader, after the first second. */
void fromBackEndToCamera(benchmark::State& state)
{
    CameraSettings settings;
    settings.transport = state.range(0) != 0 ? CameraTransport::Udp : CameraTransport::Tcp;
    settings.packetTime = static_cast<int>(state.range(1));
    std::vector<double> late;
    for (auto _ : state) {
        TestCamera camera({"--voice", "silent", "--jitter", "20"});
        TalkProbe probe(camera.address(), settings);
        if (!probe.open() || !probe.say(140) || !probe.close()) {
            state.SkipWithError("the talk does not work");
            return;
        }
        const auto packets = camera.packets();
        for (const TestCamera::Packet& packet : packets) {
            const std::size_t block = (packet.timestamp - packets.front().timestamp) / 640;
            if (block >= 13 && block < probe.saidAt.size()) {
                late.push_back(static_cast<double>(packet.time - probe.saidAt[block]) / microsecondsPerMs);
            }
        }
        state.counters["lost"] =
            static_cast<double>(140 * 80 / settings.packetTime) - static_cast<double>(packets.size());
    }
    report(state, late);
}

/** From the call of the back end to the event out of it, at a camera that echoes. */
void thereAndBack(benchmark::State& state)
{
    CameraSettings settings;
    settings.packetTime = static_cast<int>(state.range(0));
    std::vector<double> late;
    for (auto _ : state) {
        TestCamera camera({"--jitter", "20"});
        TalkProbe probe(camera.address(), settings);
        if (!probe.open()) {
            state.SkipWithError("the talk does not work");
            return;
        }
        // A click every 400 ms in silence: when it goes, and when it comes back. It is said in packets as
        // they are sent.
        const int samples = settings.packetTime * 8;
        const int packets = 6000 / settings.packetTime;
        qint64 clicked = 0;
        std::size_t seen = probe.heard.size();
        const qint64 start = probe.clock.elapsed();
        for (int i = 0; i < packets; ++i) {
            const bool click = i % (400 / settings.packetTime) == 0;
            if (click) {
                clicked = TalkProbe::microseconds();
            }
            probe.talk->hear(TalkProbe::packet(static_cast<std::uint32_t>(i * samples),
                                               QByteArray(samples, click ? '\x10' : '\xFF')));
            TalkProbe::waitFor(
                [&] { return probe.clock.elapsed() >= start + (i + 1) * settings.packetTime; });
            for (; seen < probe.heard.size(); ++seen) {
                if (clicked != 0 && probe.heard[seen].bitstream.contains('\x10')) {
                    late.push_back(
                        (static_cast<double>(probe.heard[seen].captureTime) - static_cast<double>(clicked)) /
                        microsecondsPerMs);
                    clicked = 0;
                }
            }
        }
        probe.close();
    }
    report(state, late);
}

/** Questions to 100 cameras, at ten times their pace: processor time of this process at the usual pace. */
void presenceOf100Cameras(benchmark::State& state)
{
    constexpr int cameras = 100;
    constexpr int periods = 3;
    constexpr int faster = 10;
    QTcpServer server;
    server.listen(QHostAddress::LocalHost);
    int asked = 0;
    QObject::connect(&server, &QTcpServer::newConnection, [&] {
        while (QTcpSocket* socket = server.nextPendingConnection()) {
            ++asked;
            QObject::connect(socket, &QTcpSocket::readyRead, [socket] {
                socket->write(socket->readAll().startsWith("OPTIONS")
                                  ? QByteArray("RTSP/1.0 200 OK\r\nCSeq: 1\r\n\r\n")
                                  : QByteArray("HTTP/1.1 400 Bad Request\r\nContent-Length: 0\r\n\r\n"));
            });
            QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        }
    });
    for (auto _ : state) {
        PresencePace pace;
        pace.period /= faster;
        CameraPresence presence(pace);
        QList<CameraRecord> records;
        const bool rtsp = state.range(0) == 0;
        for (int i = 0; i < cameras; ++i) {
            records.append({QString::number(i + 1), QString(), onvifKind(),
                            (rtsp ? QStringLiteral("rtsp://127.0.0.1:%1/") : QStringLiteral("127.0.0.1:%1"))
                                .arg(server.serverPort())});
        }
        presence.setRecords(records);
        TalkProbe::waitFor([&] { return asked >= cameras; });
        asked = 0;
        QElapsedTimer clock;
        clock.start();
        QEventLoop loop;
        QTimer::singleShot(pace.period * periods, &loop, &QEventLoop::quit);
        const std::clock_t before = std::clock();
        loop.exec();
        const double used = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
        state.counters["asked"] = asked;
        state.counters["core_percent"] =
            used * 100 * 1000 / static_cast<double>(clock.elapsed()) / faster; // with the cameras' own part
    }
}

/** From the request to the open line. */
void untilTheLineIsOpen(benchmark::State& state)
{
    std::vector<double> times;
    TestCamera camera({"--voice", "silent"});
    for (auto _ : state) {
        TalkProbe probe(camera.address());
        if (!probe.open()) {
            state.SkipWithError("the talk does not work");
            return;
        }
        times.push_back(static_cast<double>(probe.openedAfter));
        probe.close();
    }
    report(state, times);
}

/** Talks at once, ten to a camera: processor time of this process as part of the time of the talks. */
void talksAtOnce(benchmark::State& state)
{
    for (auto _ : state) {
        std::vector<std::unique_ptr<TestCamera>> cameras;
        std::vector<std::unique_ptr<TalkProbe>> probes;
        for (int i = 0; i < state.range(0); ++i) {
            if (i % 10 == 0) {
                cameras.push_back(
                    std::make_unique<TestCamera>(QStringList{"--voice", "silent", "--jitter", "20"}));
            }
            probes.push_back(std::make_unique<TalkProbe>(cameras.back()->address()));
        }
        for (const auto& probe : probes) {
            if (!probe->open()) {
                state.SkipWithError("a talk does not open");
                return;
            }
        }
        QElapsedTimer clock;
        clock.start();
        const std::clock_t before = std::clock();
        constexpr int blocks = 60;
        for (int i = 0; i < blocks; ++i) {
            for (const auto& probe : probes) {
                probe->talk->hear(
                    TalkProbe::packet(static_cast<std::uint32_t>(i) * 640, QByteArray(640, '\x2A')));
            }
            TalkProbe::waitFor([&] { return clock.elapsed() >= (i + 1) * 80; });
        }
        const double used = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
        state.counters["cores"] = used * microsecondsPerMs / static_cast<double>(clock.elapsed());
        for (const auto& probe : probes) {
            probe->close();
        }
        double lost = 0;
        for (const auto& camera : cameras) {
            for (int session = 1; session <= 10; ++session) {
                lost += blocks * 4 - static_cast<double>(camera->packets(session).size());
            }
        }
        state.counters["lost"] = lost;
    }
}

} // namespace

BENCHMARK(fromBackEndToCamera)
    ->ArgNames({"udp", "packet_ms"})
    ->Args({0, 20})
    ->Args({1, 20})
    ->Args({0, 80})
    ->Iterations(1)
    ->UseRealTime();
BENCHMARK(thereAndBack)->ArgName("packet_ms")->Arg(20)->Arg(80)->Iterations(1)->UseRealTime();
BENCHMARK(untilTheLineIsOpen)->Iterations(20)->UseRealTime();
BENCHMARK(presenceOf100Cameras)->ArgName("service")->Arg(0)->Arg(1)->Iterations(1)->UseRealTime();
BENCHMARK(talksAtOnce)->Arg(50)->Iterations(1)->UseRealTime();

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
