// The records in the plug-in: looking up, adding, updating, whole lists, and a keystroke in the search of
// groups, by the number of rows.

#include "protocol/ReturnCode.h"
#include "protocol/Words.h"
#include "src/PluginVoiceDesk.h"
#include "src/models/ItemRows.h"
#include "src/models/NetworkAudioGroupTreeSortFilterModel.h"
#include "src/models/RowsById.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSortFilterProxyModel>

#include <benchmark/benchmark.h>

namespace {

QVariantMap device(int id)
{
    return {
        {Vocabulary::deviceID, id},
        {Vocabulary::deviceName, QStringLiteral("Speaker %1").arg(id * 7919 % 100000)},
        {Vocabulary::ip, QStringLiteral("10.0.0.1")},
        {Vocabulary::port, 554},
        {Vocabulary::username, QStringLiteral("u")},
        {Vocabulary::password, QStringLiteral("p")},
        {Vocabulary::bindingCameraList, QStringLiteral("a|b")},
    };
}

QVariantList devices(std::int64_t count)
{
    QVariantList list;
    for (int id = 1; id <= count; ++id) {
        list.append(device(id));
    }
    return list;
}

QVariantList groups(std::int64_t count)
{
    QVariantList list;
    for (int id = 1; id <= count; ++id) {
        list.append(QVariantMap{
            {Vocabulary::groupID, id},
            {Vocabulary::groupName, QStringLiteral("Group %1").arg(id * 7919 % 100000)},
            {Vocabulary::networkAudioIDList, QStringLiteral("1,2,3,4")},
        });
    }
    return list;
}

/** A plug-in that answers come to, and a proxy on its devices. */
struct Fixture
{
    explicit Fixture(std::int64_t count = 0)
    {
        plugin.InitialPluginBase(nullptr, nullptr, nullptr);
        proxy = qobject_cast<QSortFilterProxyModel*>(plugin.getIPAudioModel(&plugin));
        if (count > 0) {
            reply(Vocabulary::RetrieveIPAudioModel, devices(count));
        }
    }

    void reply(const QString& command, const QVariant& result)
    {
        plugin.CommandProcessor(command, result, nullptr, ReturnCode::success, QString(), false, QString());
    }

    PluginVoiceDesk plugin;
    QSortFilterProxyModel* proxy;
};

void findLastRow(benchmark::State& state)
{
    const Fixture fixture(state.range(0));
    const QAbstractItemModel* model = fixture.proxy->sourceModel();
    for (auto _ : state) {
        benchmark::DoNotOptimize(findRowById(model, static_cast<int>(state.range(0))));
    }
    state.SetComplexityN(state.range(0));
}

/** A group of 1000 members that no device has: read once, against a search for each, which "ratio" compares.
 */
void findUnknownMembers(benchmark::State& state)
{
    constexpr int members = 1000;
    const Fixture fixture(state.range(0));
    const QAbstractItemModel* model = fixture.proxy->sourceModel();
    const int first = static_cast<int>(state.range(0)) + 1;
    QElapsedTimer clock;
    clock.start();
    for (int id = first; id < first + members; ++id) {
        benchmark::DoNotOptimize(findRowById(model, id));
    }
    const qint64 single = clock.nsecsElapsed();
    clock.start();
    for (auto _ : state) {
        RowsById rows(model);
        for (int id = first; id < first + members; ++id) {
            benchmark::DoNotOptimize(rows.find(id));
        }
    }
    const double once = static_cast<double>(clock.nsecsElapsed()) / static_cast<double>(state.iterations());
    state.counters["ratio"] = static_cast<double>(single) / once;
}

void addToList(benchmark::State& state)
{
    Fixture fixture(state.range(0));
    int id = static_cast<int>(state.range(0));
    for (auto _ : state) {
        fixture.reply(Vocabulary::AddIPAudio, device(++id));
        state.PauseTiming();
        if (id % 100 == 0) {
            fixture.reply(Vocabulary::RetrieveIPAudioModel, devices(state.range(0)));
            id = static_cast<int>(state.range(0));
        }
        state.ResumeTiming();
    }
    state.SetComplexityN(state.range(0));
}

void updateLastRow(benchmark::State& state)
{
    Fixture fixture(state.range(0));
    const QVariantMap record = device(static_cast<int>(state.range(0)));
    for (auto _ : state) {
        fixture.reply(Vocabulary::UpdateIPAudio, record);
    }
    state.SetComplexityN(state.range(0));
}

void fullListIntoSortedProxy(benchmark::State& state)
{
    Fixture fixture;
    const QVariantList list = devices(state.range(0));
    for (auto _ : state) {
        fixture.reply(Vocabulary::RetrieveIPAudioModel, list);
        benchmark::DoNotOptimize(fixture.proxy->index(0, 0).data(258));
    }
    state.SetComplexityN(state.range(0));
}

void groupFilterKeystroke(benchmark::State& state)
{
    Fixture fixture(10);
    fixture.reply(Vocabulary::GetNetworkAudioGroup, groups(state.range(0)));
    auto* proxy = qobject_cast<NetworkAudioGroupTreeSortFilterModel*>(
        fixture.plugin.getNetworkAudioGroupModel(&fixture.plugin));
    const QString typed = QStringLiteral("group 12");
    int length = 0;
    for (auto _ : state) {
        length = length % typed.size() + 1;
        proxy->setFilter(typed.left(length));
        benchmark::DoNotOptimize(proxy->rowCount());
    }
    state.SetComplexityN(state.range(0));
}

} // namespace

BENCHMARK(findLastRow)->Arg(100)->Arg(1000)->Arg(10000)->Complexity()->Unit(benchmark::kMicrosecond);
BENCHMARK(findUnknownMembers)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);
BENCHMARK(addToList)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Complexity()
    ->Unit(benchmark::kMicrosecond)
    ->Iterations(1000);
BENCHMARK(updateLastRow)->Arg(100)->Arg(1000)->Arg(10000)->Complexity()->Unit(benchmark::kMicrosecond);
BENCHMARK(fullListIntoSortedProxy)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(10000)
    ->Complexity()
    ->Unit(benchmark::kMillisecond);
BENCHMARK(groupFilterKeystroke)->Arg(100)->Arg(1000)->Arg(10000)->Complexity()->Unit(benchmark::kMillisecond);

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
