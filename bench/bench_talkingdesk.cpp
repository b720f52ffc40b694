// What drawing costs while the desk talks to the camera that echoes, on a machine without a graphics
// processor: the processor time of the window's thread, the one that renders and OpenGL's, in percent of a
// core. Beside it, in the same run: the window with OpenGL, as Qt would choose; the same talk with another
// page open; and the least that there is, a window of the same size with one bar that changes as often. Each
// in a process of its own, in turns.

#include "desk/DeskWindow.h"
#include "desk/SceneRenderer.h"
#include "tests/support/VirtualDisplay.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QQmlComponent>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <cstdio>
#include <functional>

namespace {

constexpr int measured = 4000;  // ms
constexpr int settling = 1500;  // ms
constexpr int patience = 20000; // ms
constexpr int barInterval = 50; // ms, as the meters
constexpr int pageOfFiles = 3;

void waitUntil(const std::function<bool()>& condition, int timeout)
{
    QElapsedTimer clock;
    clock.start();
    while (!condition() && clock.elapsed() < timeout) {
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents);
    }
}

void pass(int ms)
{
    QTimer wakeUp;
    wakeUp.start(ms);
    QElapsedTimer clock;
    clock.start();
    waitUntil([&] { return clock.elapsed() >= ms; }, ms);
}

/** The processor time of the threads that draw, ns; of OpenGL's workers, too. */
qint64 drawingTime()
{
    qint64 sum = 0;
    const QDir tasks(QStringLiteral("/proc/self/task"));
    const QString own = QString::number(QCoreApplication::applicationPid());
    for (const QString& task : tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile name(tasks.filePath(task + QStringLiteral("/comm")));
        QFile time(tasks.filePath(task + QStringLiteral("/schedstat")));
        if (!name.open(QIODevice::ReadOnly) || !time.open(QIODevice::ReadOnly)) {
            continue;
        }
        const QByteArray thread = name.readAll();
        if (task == own || thread.startsWith("QSGRender") || thread.startsWith("llvmpipe")) {
            sum += time.readAll().split(' ').first().toLongLong();
        }
    }
    return sum;
}

/** Prints percent of a core and frames a second, once what is to be measured runs. */
int measure(QQuickWindow* window)
{
    pass(settling);
    int frames = 0;
    QObject::connect(window, &QQuickWindow::frameSwapped, window, [&frames] { ++frames; });
    const qint64 before = drawingTime();
    QElapsedTimer clock;
    clock.start();
    pass(measured);
    const auto ns = static_cast<double>(clock.nsecsElapsed());
    std::printf("%f %f\n", 100 * static_cast<double>(drawingTime() - before) / ns, frames * 1e9 / ns);
    std::fflush(stdout);
    return 0;
}

int measureBar()
{
    QQmlEngine engine;
    QQmlComponent component(&engine);
    component.setData("import QtQuick 2.15\nimport QtQuick.Window 2.15\n"
                      "Window { width: 1160; height: 760; visible: true\n"
                      "  Rectangle { objectName: 'bar'; x: 20; y: 20; height: 12; color: 'green' } }",
                      QUrl());
    const std::unique_ptr<QObject> made(component.create());
    auto* window = qobject_cast<QQuickWindow*>(made.get());
    auto* bar = window->findChild<QQuickItem*>(QStringLiteral("bar"));
    QTimer timer;
    int step = 0;
    QObject::connect(&timer, &QTimer::timeout, [&] { bar->setWidth(20 + 7 * (++step % 40)); });
    timer.start(barInterval);
    return measure(window);
}

int measureDesk(bool elsewhere)
{
    DeskWindow::registerTypes();
    QTemporaryDir folder;
    ClientOptions options;
    options.simulated.cameras = defaultCameras();
    options.embedded.dataDirectory = folder.path();
    options.simulated.recordingDirectory = folder.path();
    Desk desk(options, folder.filePath(QStringLiteral("desk.ini")));
    if (!desk.load()) {
        return 1;
    }
    DeskWindow window(desk);
    if (!window.show()) {
        return 1;
    }
    waitUntil([&] { return desk.targets()->total() > 0; }, patience);
    desk.targets()->choose(QStringLiteral("camera:camera-1"), true);
    if (elsewhere) {
        window.window()->setProperty("page", pageOfFiles);
    }
    desk.talk()->start();
    waitUntil([&] { return desk.meters()->captured() > 0; }, patience);
    return desk.talk()->phase() == TalkControl::Talking ? measure(window.window()) : 1;
}

struct Cost
{
    double percent = 0;
    double frames = 0; ///< A second.
};

Cost run(const char* what, bool openGl)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_QUICK_BACKEND"));
    if (openGl) {
        environment.insert(QStringLiteral("QT_QUICK_BACKEND"), QString()); // Qt's own choice
    }
    environment.insert(QStringLiteral("FRAMESMITH_CAPTURE_FILE"), QStringLiteral(ANNOUNCEMENT_WAV));
    environment.insert(QStringLiteral("ALSA_CONFIG_PATH"), QStringLiteral("/dev/null"));
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--measure"), QLatin1String(what)});
    process.waitForFinished(2 * patience);
    const QList<QByteArray> figures = process.readAllStandardOutput().trimmed().split(' ');
    return figures.size() == 2 ? Cost{figures[0].toDouble(), figures[1].toDouble()} : Cost();
}

void BM_TalkingDesk(benchmark::State& state)
{
    Cost desk;
    Cost elsewhere;
    Cost bar;
    Cost deskOpenGl;
    Cost barOpenGl;
    const auto add = [&state](Cost& sum, const char* what, bool openGl) {
        const Cost cost = run(what, openGl);
        if (cost.frames <= 0 && what != std::string("elsewhere")) {
            state.SkipWithError("nothing was drawn");
        }
        sum.percent += cost.percent;
        sum.frames += cost.frames;
    };
    for (auto _ : state) {
        add(desk, "desk", false);
        add(deskOpenGl, "desk", true);
        add(elsewhere, "elsewhere", false);
        add(bar, "bar", false);
        add(barOpenGl, "bar", true);
        state.SetIterationTime(desk.percent / 100);
    }
    const auto runs = static_cast<double>(state.iterations());
    state.counters["desk_percent"] = desk.percent / runs;
    state.counters["desk_frames/s"] = desk.frames / runs;
    state.counters["elsewhere_percent"] = elsewhere.percent / runs;
    state.counters["bar_percent"] = bar.percent / runs;
    state.counters["desk_opengl_percent"] = deskOpenGl.percent / runs;
    state.counters["bar_opengl_percent"] = barOpenGl.percent / runs;
    state.counters["desk/desk_opengl"] = desk.percent / deskOpenGl.percent;
    state.counters["desk/bar_opengl"] = desk.percent / barOpenGl.percent;
}

BENCHMARK(BM_TalkingDesk)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(3);

} // namespace

int main(int argc, char** argv)
{
    if (argc == 3 && argv[1] == std::string("--measure")) {
        const std::string what = argv[2];
        int count = 1;
        const QApplication application(count, argv);
        SceneRenderer::choose();
        return what == "bar" ? measureBar() : measureDesk(what == "elsewhere");
    }
    constexpr int width = 1280;
    constexpr int height = 800;
    const VirtualDisplay display(width, height);
    if (!display.ready()) {
        std::fputs("Xvfb does not start. Is the package xvfb installed?\n", stderr);
        return 1;
    }
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
