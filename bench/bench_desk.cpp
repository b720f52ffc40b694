// The window with 10,000 speakers and 5,000 groups: a frame while a list scrolls, a letter of a search, and
// the start. A frame is to be drawn in less than 16 ms; the software renderer draws, as on a machine without
// graphics.

#include "desk/DeskWindow.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

#include <benchmark/benchmark.h>

#include <QApplication>
#include <QEventLoop>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTemporaryDir>

#include <functional>

namespace {

constexpr int speakers = 10000;
constexpr int groups = 5000;

/** A server that has much to list. */
class FullLink : public ServerLink
{
public:
    void open() override { QMetaObject::invokeMethod(this, &FullLink::connected, Qt::QueuedConnection); }
    bool send(const QString& command, const QVariant&, quint64 request) override
    {
        QVariantList list;
        if (command == Vocabulary::RetrieveIPAudioModel) {
            for (int i = 1; i <= speakers; ++i) {
                list.append(QVariantMap{
                    {Vocabulary::deviceID, i},
                    {Vocabulary::deviceName, QStringLiteral("Speaker %1").arg(i, 5, 10, QLatin1Char('0'))},
                    {Vocabulary::ip, QStringLiteral("10.%1.%2.1").arg(i / 250).arg(i % 250)},
                    {Vocabulary::port, 80}});
            }
        } else if (command == Vocabulary::GetNetworkAudioGroup) {
            for (int i = 1; i <= groups; ++i) {
                list.append(QVariantMap{
                    {Vocabulary::groupID, i},
                    {Vocabulary::groupName, QStringLiteral("Group %1").arg(i, 4, 10, QLatin1Char('0'))},
                    {Vocabulary::networkAudioIDList, QStringLiteral("%1,%2").arg(i).arg(i + 1)}});
            }
        }
        QMetaObject::invokeMethod(
            this,
            [this, command, list, request] {
                Q_EMIT replied(command, list, request, ReturnCode::success, QString());
            },
            Qt::QueuedConnection);
        return true;
    }
};

ClientOptions options(const QString& folder)
{
    ClientOptions made;
    made.embedded.dataDirectory = folder;
    made.embedded.recordingDirectory = folder;
    return made;
}

void wait(const std::function<bool()>& condition)
{
    while (!condition()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

struct FullDesk
{
    FullDesk() : desk(options(folder.path()), folder.filePath("desk.ini"))
    {
        desk.load();
        desk.connection()->link().use(std::make_unique<FullLink>());
        window.emplace(desk);
        window->show();
        wait([this] { return desk.targets()->total() == speakers; });
    }

    QQuickItem* list(const char* name) const
    {
        const auto* frame = window->window()->findChild<QQuickItem*>(QLatin1String(name));
        return qvariant_cast<QQuickItem*>(frame->property("list"));
    }

    /** Waits for the picture of what has been changed. */
    void frame() const
    {
        bool drawn = false;
        const auto connection =
            QObject::connect(window->window(), &QQuickWindow::frameSwapped, [&drawn] { drawn = true; });
        window->window()->update();
        wait([&drawn] { return drawn; });
        QObject::disconnect(connection);
    }

    QTemporaryDir folder;
    Desk desk;
    std::optional<DeskWindow> window;
};

FullDesk& fullDesk()
{
    static auto* desk = new FullDesk; // for the life of the process
    return *desk;
}

void scroll(benchmark::State& state, int page, const char* listName)
{
    FullDesk& full = fullDesk();
    full.window->window()->setProperty("page", page);
    full.frame();
    QQuickItem* list = full.list(listName);
    const qreal step = 130; // two and a half rows a frame: a fast wheel
    for (auto _ : state) {
        const qreal end = list->property("contentHeight").toReal() - list->height();
        const qreal next = list->property("contentY").toReal() + step;
        list->setProperty("contentY", next < end ? next : 0);
        full.frame();
    }
}

void BM_ScrollTargets(benchmark::State& state)
{
    scroll(state, 0, "targets");
}

void BM_ScrollSpeakers(benchmark::State& state)
{
    scroll(state, 2, "speakerList");
}

void BM_ScrollGroups(benchmark::State& state)
{
    scroll(state, 4, "groupList");
}

/** The yardstick: a frame in which nothing has moved. */
void BM_StillFrame(benchmark::State& state)
{
    FullDesk& full = fullDesk();
    full.window->window()->setProperty("page", 2);
    full.frame();
    for (auto _ : state) {
        full.frame();
    }
}

void BM_LetterOfASearch(benchmark::State& state)
{
    FullDesk& full = fullDesk();
    full.window->window()->setProperty("page", 0);
    full.frame();
    int digit = 0;
    for (auto _ : state) {
        full.desk.targets()->setSearch(QString::number(digit = (digit + 1) % 10));
        full.frame();
    }
    full.desk.targets()->setSearch(QString());
}

BENCHMARK(BM_StillFrame)->Unit(benchmark::kMillisecond)->MinTime(1);
BENCHMARK(BM_ScrollTargets)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_ScrollSpeakers)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_ScrollGroups)->Unit(benchmark::kMillisecond)->MinTime(2);
BENCHMARK(BM_LetterOfASearch)->Unit(benchmark::kMillisecond)->MinTime(2);

} // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_QPA_UPDATE_IDLE_TIME", "0");
    QApplication application(argc, argv);
    DeskWindow::registerTypes();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
