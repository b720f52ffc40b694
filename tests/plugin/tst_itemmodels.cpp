#include "src/models/ItemRows.h"
#include "src/models/NetworkAudioGroupTreeSortFilterModel.h"
#include "tests/plugin/RecordsFixture.h"

#include <QAbstractItemModelTester>
#include <QStandardItem>
#include <QStandardItemModel>
#include <QTest>

class TestItemModels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void roleNames();
    void rowsTakeTheirFieldsAsTheyAre();
    void missingKeysAreInvalid();
    void rowsHaveNoTextAndNoMore();
    void idsAreFoundAsPrefixes();
    void searchInAnEmptyModel();
    void proxiesOfTheDevices();
    void proxiesOfTheGroups();
    void proxiesOfTheSchedules();
    void eachCallMakesAProxy();
    void proxiesFollowTheModel();
    void modelsPassTheTester();
    void clearKeepsTheRoleNames();
};

namespace {

std::unique_ptr<QStandardItem> own(QStandardItem* item)
{
    return std::unique_ptr<QStandardItem>(item);
}

void appendIds(QStandardItemModel& model, const QList<int>& ids)
{
    for (const int id : ids) {
        model.appendRow(makeIPAudioRow({{"deviceID", id}}));
    }
}

int foundId(const QStandardItemModel& model, int id)
{
    const QModelIndexList hits = findRowById(&model, id);
    return hits.isEmpty() ? -1 : hits.at(0).data(257).toInt();
}

} // namespace

void TestItemModels::roleNames()
{
    // Written out: what QML binds to is these words.
    using Names = QHash<int, QByteArray>;
    QCOMPARE(ipAudioRoleNames(), (Names{{257, "idRole"},
                                        {258, "deviceNameRole"},
                                        {259, "ipRole"},
                                        {260, "portRole"},
                                        {261, "userRole"},
                                        {262, "passwordRole"},
                                        {263, "bindingCameraListRole"}}));
    QCOMPARE(networkAudioGroupRoleNames(), (Names{{257, "idRole"},
                                                  {258, "nameRole"},
                                                  {259, "networkAudioIDListRole"},
                                                  {260, "networkAudioNameListRole"}}));
    QCOMPARE(networkAudioScheduleRoleNames(), (Names{{257, "idRole"},
                                                     {258, "enableRole"},
                                                     {259, "nameRole"},
                                                     {260, "startTimeRole"},
                                                     {261, "scheduleTypeRole"},
                                                     {262, "scheduleSettingsRole"},
                                                     {263, "endTimeRole"},
                                                     {264, "enableEndTimeRole"},
                                                     {265, "audioFileIDRole"},
                                                     {266, "groupIDListRole"},
                                                     {267, "networkAudioIDListRole"}}));
    const RecordsFixture fixture;
    QCOMPARE(fixture.devices->roleNames(), ipAudioRoleNames());
    QCOMPARE(fixture.groups->roleNames(), networkAudioGroupRoleNames());
    QCOMPARE(fixture.schedules->roleNames(), networkAudioScheduleRoleNames());
}

void TestItemModels::rowsTakeTheirFieldsAsTheyAre()
{
    const auto device = own(makeIPAudioRow({{"deviceID", "7"},
                                            {"deviceName", "Gate"},
                                            {"ip", "10.0.0.1"},
                                            {"port", 80.5},
                                            {"username", "u"},
                                            {"password", "p"},
                                            {"bindingCameraList", QStringList{"a", "b"}}}));
    COMPARE_VARIANTS(device->data(257), QVariant("7"));
    COMPARE_VARIANTS(device->data(258), QVariant("Gate"));
    COMPARE_VARIANTS(device->data(259), QVariant("10.0.0.1"));
    COMPARE_VARIANTS(device->data(260), QVariant(80.5));
    COMPARE_VARIANTS(device->data(261), QVariant("u"));
    COMPARE_VARIANTS(device->data(262), QVariant("p"));
    COMPARE_VARIANTS(device->data(263), QVariant(QStringList{"a", "b"}));

    const auto group = own(makeNetworkAudioGroupRow({{"groupID", 1},
                                                     {"groupName", "Yard"},
                                                     {"networkAudioIDList", QVariantList{1, 2}},
                                                     {"networkAudioNameList", QVariantList{"x"}}}));
    COMPARE_VARIANTS(group->data(257), QVariant(1));
    COMPARE_VARIANTS(group->data(258), QVariant("Yard"));
    COMPARE_VARIANTS(group->data(259), QVariant(QVariantList{1, 2}));
    COMPARE_VARIANTS(group->data(260), QVariant(QVariantList{"x"}));

    const auto schedule = own(makeNetworkAudioScheduleRow({{"scheduleID", 1},
                                                           {"enableSchedule", true},
                                                           {"scheduleName", "Noon"},
                                                           {"scheduleStartTime", "s"},
                                                           {"scheduleType", 3},
                                                           {"scheduleSettings", "set"},
                                                           {"scheduleEndTime", "e"},
                                                           {"enableScheduleEndTime", false},
                                                           {"audioID", 9},
                                                           {"groupIDList", QVariantList{4}},
                                                           {"networkAudioIDList", QVariantList{5}}}));
    const QVariantList fields{
        1, true, "Noon", "s", 3, "set", "e", false, 9, QVariantList{4}, QVariantList{5}};
    for (int i = 0; i < fields.size(); ++i) {
        COMPARE_VARIANTS(schedule->data(257 + i), fields[i]);
    }
}

void TestItemModels::missingKeysAreInvalid()
{
    const auto row = own(makeIPAudioRow({{"deviceID", 1}}));
    for (int role = 258; role <= 263; ++role) {
        QVERIFY(!row->data(role).isValid());
    }
}

void TestItemModels::rowsHaveNoTextAndNoMore()
{
    const auto row =
        own(makeNetworkAudioGroupRow({{"groupID", 1}, {"groupName", "Yard"}, {"colour", "red"}}));
    QVERIFY(!row->data(Qt::DisplayRole).isValid());
    QVERIFY(!row->data(261).isValid());
    QCOMPARE(row->rowCount(), 0);
}

void TestItemModels::idsAreFoundAsPrefixes()
{
    QStandardItemModel longerFirst;
    appendIds(longerFirst, {12, 1});
    QCOMPARE(foundId(longerFirst, 1), 12);
    QCOMPARE(foundId(longerFirst, 12), 12);
    QCOMPARE(foundId(longerFirst, 2), -1);
    QStandardItemModel shorterFirst;
    appendIds(shorterFirst, {1, 12});
    QCOMPARE(foundId(shorterFirst, 1), 1);
    QCOMPARE(foundId(shorterFirst, 12), 12);
    QCOMPARE(findRowById(&shorterFirst, 1).size(), 1);
    QStandardItemModel texts;
    texts.appendRow(makeIPAudioRow({{"deviceID", "34"}}));
    QCOMPARE(foundId(texts, 3), 34);
}

void TestItemModels::searchInAnEmptyModel()
{
    const QStandardItemModel model;
    QVERIFY(findRowById(&model, 1).isEmpty());
}

void TestItemModels::proxiesOfTheDevices()
{
    RecordsFixture fixture;
    QCOMPARE(fixture.devices->metaObject()->className(), "QSortFilterProxyModel");
    QCOMPARE(fixture.devices->filterRole(), 258);
    QCOMPARE(fixture.devices->filterCaseSensitivity(), Qt::CaseInsensitive);
    QCOMPARE(fixture.devices->sortRole(), 258);
    QCOMPARE(fixture.devices->sortColumn(), 0);
    QCOMPARE(fixture.devices->sortOrder(), Qt::AscendingOrder);
    QCOMPARE(fixture.devices->sortCaseSensitivity(), Qt::CaseSensitive);
    QVERIFY(fixture.devices->dynamicSortFilter());
    fixture.addDevice(1, "Gate");
    fixture.addDevice(2, "dock");
    fixture.addDevice(3, "Alley");
    // Upper case stands before lower case: the sort's case sensitivity is Qt's default.
    COMPARE_VARIANTS(RecordsFixture::shown(*fixture.devices, 258), (QVariantList{"Alley", "Gate", "dock"}));
    fixture.devices->setFilterFixedString("GA");
    COMPARE_VARIANTS(RecordsFixture::shown(*fixture.devices, 258), QVariantList{"Gate"});
}

void TestItemModels::proxiesOfTheGroups()
{
    RecordsFixture fixture;
    QVERIFY(qobject_cast<NetworkAudioGroupTreeSortFilterModel*>(fixture.groups.get()) != nullptr);
    QCOMPARE(fixture.groups->sortRole(), 258);
    QCOMPARE(fixture.groups->sortCaseSensitivity(), Qt::CaseSensitive);
    QCOMPARE(fixture.groups->filterCaseSensitivity(), Qt::CaseSensitive);
    QCOMPARE(fixture.groups->filterRole(), static_cast<int>(Qt::DisplayRole));
    QCOMPARE(fixture.groups->sortColumn(), 0);
    QCOMPARE(fixture.groups->sortOrder(), Qt::AscendingOrder);
}

void TestItemModels::proxiesOfTheSchedules()
{
    RecordsFixture fixture;
    QCOMPARE(fixture.schedules->metaObject()->className(), "QSortFilterProxyModel");
    QCOMPARE(fixture.schedules->sortRole(), 259);
    QCOMPARE(fixture.schedules->sortColumn(), 0);
    QCOMPARE(fixture.schedules->sortOrder(), Qt::AscendingOrder);
    QCOMPARE(fixture.schedules->sortCaseSensitivity(), Qt::CaseSensitive);
    QCOMPARE(fixture.schedules->filterCaseSensitivity(), Qt::CaseSensitive);
    QCOMPARE(fixture.schedules->filterRole(), static_cast<int>(Qt::DisplayRole));
    fixture.reply("AddNetworkAudioSchedule", "0", QVariantMap{{"scheduleID", 1}, {"scheduleName", "b"}});
    fixture.reply("AddNetworkAudioSchedule", "0", QVariantMap{{"scheduleID", 2}, {"scheduleName", "a"}});
    COMPARE_VARIANTS(RecordsFixture::shown(*fixture.schedules, 257), (QVariantList{2, 1}));
}

void TestItemModels::eachCallMakesAProxy()
{
    RecordsFixture fixture;
    QObject parent;
    QObject* first = fixture.plugin->getNetworkAudioGroupModel(&parent);
    QObject* second = fixture.plugin->getNetworkAudioGroupModel(&parent);
    QVERIFY(first != second);
    QCOMPARE(first->parent(), &parent);
    QCOMPARE(fixture.plugin->getIPAudioModel(&parent)->parent(), &parent);
    QCOMPARE(fixture.plugin->getNetworkAudioScheduleModel(&parent)->parent(), &parent);
    delete first;
    fixture.addGroup(1, "Yard");
    QCOMPARE(qobject_cast<QAbstractItemModel*>(second)->rowCount(), 1);
    // A filter of one view is no other view's.
    qobject_cast<NetworkAudioGroupTreeSortFilterModel*>(second)->setFilter("none");
    QCOMPARE(qobject_cast<QAbstractItemModel*>(second)->rowCount(), 0);
    QCOMPARE(fixture.groups->rowCount(), 1);
}

void TestItemModels::proxiesFollowTheModel()
{
    RecordsFixture fixture;
    QCOMPARE(fixture.devices->rowCount(), 0);
    fixture.addDevice(1, "m");
    const QSignalSpy inserted(fixture.devices.get(), &QAbstractItemModel::rowsInserted);
    fixture.addDevice(2, "a");
    fixture.addDevice(3, "z");
    QCOMPARE(inserted.size(), 2);
    QCOMPARE(inserted[0][1].toInt(), 0); // its sorted place, at once
    QCOMPARE(inserted[1][1].toInt(), 2);
    COMPARE_VARIANTS(RecordsFixture::shown(*fixture.devices, 257), (QVariantList{2, 1, 3}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.devices, 257), (QVariantList{1, 2, 3}));
}

void TestItemModels::modelsPassTheTester()
{
    RecordsFixture fixture;
    using Tester = QAbstractItemModelTester;
    const Tester devices(fixture.devices->sourceModel(), Tester::FailureReportingMode::QtTest);
    const Tester shownDevices(fixture.devices.get(), Tester::FailureReportingMode::QtTest);
    const Tester groups(fixture.groups->sourceModel(), Tester::FailureReportingMode::QtTest);
    const Tester shownGroups(fixture.groups.get(), Tester::FailureReportingMode::QtTest);
    const Tester schedules(fixture.schedules.get(), Tester::FailureReportingMode::QtTest);
    for (int id = 1; id < 20; ++id) {
        fixture.addDevice(id, QString::number(id * 7 % 20));
        fixture.addGroup(id, QString::number(id * 3 % 20), "1,2");
        fixture.reply("AddNetworkAudioSchedule", "0", QVariantMap{{"scheduleID", id}, {"scheduleName", id}});
    }
    fixture.reply("UpdateIPAudio", "0", RecordsFixture::device(5, "zz"));
    fixture.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(5, "aa", "3"));
    fixture.reply("DeleteIPAudio", "0", 7);
    fixture.reply("DeleteNetworkAudioGroup", "0", 7);
    fixture.reply("DeleteNetworkAudioSchedule", "0", 7);
    fixture.reply("RetrieveIPAudioModel", "0", QVariantList{RecordsFixture::device(1, "x")});
    fixture.reply("GetNetworkAudioGroup", "0", QVariantList{RecordsFixture::group(1, "x")});
    fixture.reply("GetNetworkAudioSchedule", "0", QVariantList());
    QCOMPARE(fixture.devices->rowCount(), 1);
    QCOMPARE(fixture.groups->rowCount(), 1);
    QCOMPARE(fixture.schedules->rowCount(), 0);
}

void TestItemModels::clearKeepsTheRoleNames()
{
    RecordsFixture fixture;
    fixture.reply("RetrieveIPAudioModel", "9");
    fixture.reply("GetNetworkAudioGroup", "9");
    fixture.reply("GetNetworkAudioSchedule", "9");
    QCOMPARE(fixture.devices->roleNames()[263], QByteArray("bindingCameraListRole"));
    QCOMPARE(fixture.groups->roleNames()[260], QByteArray("networkAudioNameListRole"));
    QCOMPARE(fixture.schedules->roleNames()[267], QByteArray("networkAudioIDListRole"));
}

QTEST_GUILESS_MAIN(TestItemModels)
#include "tst_itemmodels.moc"
