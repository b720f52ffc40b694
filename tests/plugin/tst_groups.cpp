#include "src/models/NetworkAudioGroupTreeSortFilterModel.h"
#include "tests/plugin/RecordsFixture.h"

#include <QTest>

class TestGroups : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests();
    void idListsOfRequests_data();
    void idListsOfRequests();
    void addReply();
    void idListsOfReplies_data();
    void idListsOfReplies();
    void nameListShrinks();
    void namesAreASnapshot();
    void namesAreThePluginsOwn();
    void updateReply();
    void updateFindsThePrefix();
    void orderOfChangesAndSignals();
    void deleteReply();
    void getReply();
    void failures();
    void filterByName();
    void filterByDevice();
    void filterHasNoPatterns();
    void filterIsNotTrimmed();
    void changedNamesAreFilteredAnew();
    void sortOrders();
    void filterIsVirtual();
    void sortGoesThroughTheTable();
    void sortShowsEverythingAnew();
    void surfaceOfTheProxy();
};

void TestGroups::requests()
{
    RecordsFixture fixture;
    QVERIFY(fixture.plugin->addNetworkAudioGroup("Yard", QVariantList{1, 2}));
    QVERIFY(fixture.plugin->updateNetworkAudioGroup(7, "Dock", QVariantList{3}));
    QVERIFY(fixture.plugin->deleteNetworkAudioGroup(7));
    fixture.plugin->getNetworkAudioGroup();
    const auto& commands = fixture.framework.commands;
    QCOMPARE(fixture.framework.names(), (QStringList{"AddNetworkAudioGroup", "UpdateNetworkAudioGroup",
                                                     "DeleteNetworkAudioGroup", "GetNetworkAudioGroup"}));
    COMPARE_VARIANTS(commands[0].map(), (QVariantMap{{"groupName", "Yard"}, {"networkAudioIDList", "1,2"}}));
    COMPARE_VARIANTS(commands[1].map(),
                     (QVariantMap{{"groupID", 7}, {"groupName", "Dock"}, {"networkAudioIDList", "3"}}));
    COMPARE_VARIANTS(commands[2].param, QVariant(7));
    QVERIFY(!commands[3].param.isValid());
    QCOMPARE(fixture.groups->rowCount(), 0);
    PluginVoiceDesk orphan;
    QVERIFY(!orphan.addNetworkAudioGroup("n", {}));
    QVERIFY(!orphan.updateNetworkAudioGroup(1, "n", {}));
    QVERIFY(!orphan.deleteNetworkAudioGroup(1));
    orphan.getNetworkAudioGroup();
    fixture.framework.accepts = false;
    QVERIFY(!fixture.plugin->addNetworkAudioGroup("n", {}));
}

void TestGroups::idListsOfRequests_data()
{
    QTest::addColumn<QVariant>("list");
    QTest::addColumn<QString>("text");
    QTest::newRow("invalid") << QVariant() << "";
    QTest::newRow("empty") << QVariant(QVariantList()) << "";
    QTest::newRow("one") << QVariant(QVariantList{5}) << "5";
    QTest::newRow("ints") << QVariant(QVariantList{5, 0, -3}) << "5,0,-3";
    QTest::newRow("texts") << QVariant(QStringList{"5", "x"}) << "5,x";
}

void TestGroups::idListsOfRequests()
{
    QFETCH(QVariant, list);
    QFETCH(QString, text);
    RecordsFixture fixture;
    fixture.plugin->addNetworkAudioGroup("", list);
    const QVariant sent = fixture.framework.commands[0].map()["networkAudioIDList"];
    COMPARE_VARIANTS(sent, text);
}

void TestGroups::addReply()
{
    RecordsFixture fixture;
    fixture.addDevice(1, "Gate");
    fixture.addDevice(2, "Dock");
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::addNetworkAudioGroupResponse);
    fixture.addGroup(4, "Yard", "2,1");
    const QModelIndex row = fixture.groups->sourceModel()->index(0, 0);
    COMPARE_VARIANTS(row.data(257), QVariant(4));
    COMPARE_VARIANTS(row.data(258), QVariant("Yard"));
    COMPARE_VARIANTS(row.data(259), QVariant(QVariantList{2, 1}));
    COMPARE_VARIANTS(row.data(260), QVariant(QVariantList{"Dock", "Gate"}));
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 4}));
    fixture.reply("AddNetworkAudioGroup", "0"); // without a record
    COMPARE_VARIANTS(response[1], (QVariantList{true, "0", 0}));
    QVERIFY(!fixture.groups->sourceModel()->index(1, 0).data(258).isValid());
    COMPARE_VARIANTS(fixture.groups->sourceModel()->index(1, 0).data(259), QVariant(QVariantList()));
}

void TestGroups::idListsOfReplies_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QVariantList>("ids");
    QTest::newRow("empty") << "" << QVariantList();
    QTest::newRow("one") << "3" << QVariantList{3};
    QTest::newRow("two") << "3,4" << QVariantList{3, 4};
    QTest::newRow("doubled comma") << "3,,4" << QVariantList{3, 4};
    QTest::newRow("trailing comma") << "3,4," << QVariantList{3, 4};
    QTest::newRow("no number") << "3,x,4" << QVariantList{3, 0, 4};
    QTest::newRow("spaces") << " 3 , 4" << QVariantList{3, 4};
    QTest::newRow("beyond an int") << "99999999999" << QVariantList{0};
    QTest::newRow("hexadecimal") << "0x10" << QVariantList{0};
}

void TestGroups::idListsOfReplies()
{
    QFETCH(QString, text);
    QFETCH(QVariantList, ids);
    RecordsFixture fixture;
    fixture.addGroup(1, "a", text);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 259)[0], QVariant(ids));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260)[0], QVariant(QVariantList()));
    fixture.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(1, "a", text));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 259)[0], QVariant(ids));
    fixture.reply("GetNetworkAudioGroup", "0", QVariantList{RecordsFixture::group(1, "a", text)});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 259)[0], QVariant(ids));
}

void TestGroups::nameListShrinks()
{
    RecordsFixture fixture;
    fixture.addDevice(12, "twelve");
    fixture.addDevice(3, "three");
    fixture.addGroup(1, "a", "9,3");
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 259)[0], QVariant(QVariantList{9, 3}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260)[0], QVariant(QVariantList{"three"}));
    fixture.addGroup(2, "b", "1"); // found by its prefix
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260)[1], QVariant(QVariantList{"twelve"}));
    fixture.addDevice(0, "zero");
    fixture.addGroup(3, "c", "x"); // counts as 0
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260)[2], QVariant(QVariantList{"zero"}));
}

void TestGroups::namesAreASnapshot()
{
    RecordsFixture fixture;
    fixture.addGroup(1, "a", "5");
    fixture.addDevice(5, "Gate");
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260)[0], QVariant(QVariantList()));
    fixture.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(1, "a", "5"));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260)[0], QVariant(QVariantList{"Gate"}));
    fixture.reply("UpdateIPAudio", "0", RecordsFixture::device(5, "Dock"));
    fixture.reply("DeleteIPAudio", "0", 5);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260)[0], QVariant(QVariantList{"Gate"}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 259)[0], QVariant(QVariantList{5}));
}

void TestGroups::namesAreThePluginsOwn()
{
    RecordsFixture fixture;
    fixture.addDevice(5, "Gate");
    QVariantMap record = RecordsFixture::group(1, "a", "5");
    record["networkAudioNameList"] = QVariantList{"the server's"};
    const QVariantList names{QVariantList{"Gate"}};
    fixture.reply("AddNetworkAudioGroup", "0", record);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260), names);
    fixture.reply("UpdateNetworkAudioGroup", "0", record);
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260), names);
    fixture.reply("GetNetworkAudioGroup", "0", QVariantList{record});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 260), names);
}

void TestGroups::updateReply()
{
    RecordsFixture fixture;
    fixture.addGroup(1, "a", "5");
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::updateNetworkAudioGroupResponse);
    fixture.reply("UpdateNetworkAudioGroup", "0", QVariantMap{{"groupID", 1}});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 258)[0], QVariant(""));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 259)[0], QVariant(QVariantList()));
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 1}));
    fixture.reply("UpdateNetworkAudioGroup", "0", QVariantMap{{"groupID", 1}, {"groupName", 7}});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 258),
                     QVariantList{"7"}); // a text, unlike an add's
    fixture.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(1, ""));
    fixture.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(8, "other"));
    COMPARE_VARIANTS(response[3], (QVariantList{true, "0", 8}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 258), QVariantList{""});
}

void TestGroups::updateFindsThePrefix()
{
    RecordsFixture fixture;
    fixture.addGroup(12, "twelve");
    fixture.addGroup(1, "one");
    fixture.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(1, "changed"));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 257), (QVariantList{12, 1}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 258), (QVariantList{"changed", "one"}));
}

void TestGroups::orderOfChangesAndSignals()
{
    RecordsFixture fixture;
    fixture.addDevice(5, "Gate");
    QStringList notes;
    const PluginVoiceDesk* plugin = fixture.plugin.get();
    const QAbstractItemModel* source = fixture.groups->sourceModel();
    for (const auto response :
         {&PluginVoiceDesk::addNetworkAudioGroupResponse, &PluginVoiceDesk::updateNetworkAudioGroupResponse,
          &PluginVoiceDesk::deleteNetworkAudioGroupResponse}) {
        connect(plugin, response, this,
                [&] { notes << QStringLiteral("answer, rows %1").arg(source->rowCount()); });
    }
    fixture.addGroup(1, "Yard");
    QCOMPARE(notes, QStringList{"answer, rows 1"});
    notes.clear();
    RecordsFixture::noteRoles(*fixture.groups, notes);
    fixture.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(1, "Hall", "5"));
    QCOMPARE(notes, (QStringList{"258", "259", "260", "answer, rows 1"}));
    notes.clear();
    fixture.reply("DeleteNetworkAudioGroup", "0", 1);
    QCOMPARE(notes, QStringList{"answer, rows 0"});
}

void TestGroups::deleteReply()
{
    RecordsFixture fixture;
    fixture.addGroup(12, "twelve");
    fixture.addGroup(1, "one");
    const QSignalSpy response(fixture.plugin.get(), &PluginVoiceDesk::deleteNetworkAudioGroupResponse);
    fixture.reply("DeleteNetworkAudioGroup", "0", 1); // takes the first row whose id begins with 1
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 257), QVariantList{1});
    COMPARE_VARIANTS(response[0], (QVariantList{true, "0", 1}));
}

void TestGroups::getReply()
{
    RecordsFixture fixture;
    fixture.addGroup(1, "old");
    fixture.reply("GetNetworkAudioGroup", "0",
                  QVariantList{RecordsFixture::group(3, "z"), RecordsFixture::group(2, "a")});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 257), (QVariantList{3, 2}));
    fixture.reply("GetNetworkAudioGroup", "5");
    QCOMPARE(fixture.groups->rowCount(), 0);
    // The code is not read: what a failed reply brings along is shown.
    fixture.reply("GetNetworkAudioGroup", "5", QVariantList{RecordsFixture::group(4, "x")});
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 257), QVariantList{4});
}

void TestGroups::failures()
{
    RecordsFixture fixture;
    fixture.addGroup(1, "a");
    const QSignalSpy add(fixture.plugin.get(), &PluginVoiceDesk::addNetworkAudioGroupResponse);
    const QSignalSpy update(fixture.plugin.get(), &PluginVoiceDesk::updateNetworkAudioGroupResponse);
    const QSignalSpy remove(fixture.plugin.get(), &PluginVoiceDesk::deleteNetworkAudioGroupResponse);
    fixture.reply("AddNetworkAudioGroup", "8");
    fixture.reply("UpdateNetworkAudioGroup", "8", RecordsFixture::group(1, "b"));
    fixture.reply("DeleteNetworkAudioGroup", "8", 1);
    COMPARE_VARIANTS(add[0], (QVariantList{false, "8", 0}));
    COMPARE_VARIANTS(update[0], (QVariantList{false, "8", 1}));
    COMPARE_VARIANTS(remove[0], (QVariantList{false, "8", 1}));
    COMPARE_VARIANTS(RecordsFixture::column(*fixture.groups, 258), QVariantList{"a"});
}

namespace {

/** Groups "Yard" (of Gate), "Hall" (of Gate and Dock) and "Empty", and one without a name. */
struct Filtered : RecordsFixture
{
    Filtered()
    {
        addDevice(1, "Gate");
        addDevice(2, "Dock");
        addGroup(1, "Yard", "1");
        addGroup(2, "Hall", "1,2");
        addGroup(3, "Empty");
        reply("AddNetworkAudioGroup", "0", QVariantMap{{"groupID", 4}});
        proxy = qobject_cast<NetworkAudioGroupTreeSortFilterModel*>(groups.get());
    }

    QVariantList found(const QString& filter)
    {
        proxy->setFilter(filter);
        QVariantList ids = shown(*proxy, 257);
        std::sort(ids.begin(), ids.end(),
                  [](const QVariant& a, const QVariant& b) { return a.toInt() < b.toInt(); });
        return ids;
    }

    NetworkAudioGroupTreeSortFilterModel* proxy;
};

} // namespace

void TestGroups::filterByName()
{
    Filtered fixture;
    COMPARE_VARIANTS(fixture.found("ar"), QVariantList{1});
    COMPARE_VARIANTS(fixture.found("HALL"), QVariantList{2});
    COMPARE_VARIANTS(fixture.found("empty"), QVariantList{3});
    COMPARE_VARIANTS(fixture.found("nowhere"), QVariantList());
    COMPARE_VARIANTS(fixture.found(""), (QVariantList{1, 2, 3, 4})); // also the row without a name
    COMPARE_VARIANTS(fixture.found(QString()), (QVariantList{1, 2, 3, 4}));
}

void TestGroups::filterByDevice()
{
    Filtered fixture;
    COMPARE_VARIANTS(fixture.found("gate"), (QVariantList{1, 2}));
    COMPARE_VARIANTS(fixture.found("OCK"), QVariantList{2});
    COMPARE_VARIANTS(fixture.found("1"), QVariantList()); // ids are not searched
}

void TestGroups::filterHasNoPatterns()
{
    Filtered fixture;
    COMPARE_VARIANTS(fixture.found("G.te"), QVariantList());
    COMPARE_VARIANTS(fixture.found("*"), QVariantList());
    // The proxy's own filter has no effect.
    fixture.found("");
    fixture.proxy->setFilterFixedString("Hall");
    QCOMPARE(fixture.proxy->rowCount(), 4);
}

void TestGroups::filterIsNotTrimmed()
{
    Filtered fixture;
    COMPARE_VARIANTS(fixture.found(" "), QVariantList());
    COMPARE_VARIANTS(fixture.found("Hall "), QVariantList());
    fixture.addGroup(5, "Hall of cars");
    COMPARE_VARIANTS(fixture.found("hall "), QVariantList{5});
    COMPARE_VARIANTS(fixture.found(" "), QVariantList{5});
}

void TestGroups::changedNamesAreFilteredAnew()
{
    Filtered fixture;
    COMPARE_VARIANTS(fixture.found("dock"), QVariantList{2});
    const QSignalSpy inserted(fixture.proxy, &QAbstractItemModel::rowsInserted);
    const QSignalSpy removed(fixture.proxy, &QAbstractItemModel::rowsRemoved);
    fixture.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(3, "Empty", "2"));
    QCOMPARE(inserted.size(), 1);
    fixture.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(2, "Hall", "1"));
    QCOMPARE(removed.size(), 1);
    COMPARE_VARIANTS(RecordsFixture::shown(*fixture.proxy, 257), QVariantList{3});
}

void TestGroups::sortOrders()
{
    Filtered fixture;
    fixture.reply("DeleteNetworkAudioGroup", "0", 4);
    COMPARE_VARIANTS(RecordsFixture::shown(*fixture.proxy, 258), (QVariantList{"Empty", "Hall", "Yard"}));
    fixture.proxy->setSort(Qt::DescendingOrder);
    COMPARE_VARIANTS(RecordsFixture::shown(*fixture.proxy, 258), (QVariantList{"Yard", "Hall", "Empty"}));
    fixture.addGroup(9, "Jetty");
    COMPARE_VARIANTS(RecordsFixture::shown(*fixture.proxy, 258),
                     (QVariantList{"Yard", "Jetty", "Hall", "Empty"}));
    fixture.proxy->setSort(Qt::AscendingOrder);
    COMPARE_VARIANTS(RecordsFixture::shown(*fixture.proxy, 258),
                     (QVariantList{"Empty", "Hall", "Jetty", "Yard"}));
}

void TestGroups::filterIsVirtual()
{
    // Calls through the meta-object reach a subclass's override.
    struct Proxy : NetworkAudioGroupTreeSortFilterModel
    {
        using NetworkAudioGroupTreeSortFilterModel::NetworkAudioGroupTreeSortFilterModel;
        void setFilter(const QString& filter) override { text = filter; }
        void setSort(Qt::SortOrder sortOrder) override { order = sortOrder; }
        QString text;
        Qt::SortOrder order = Qt::AscendingOrder;
    };
    Proxy proxy(nullptr);
    QVERIFY(QMetaObject::invokeMethod(&proxy, "setFilter", Q_ARG(QString, "x")));
    QVERIFY(QMetaObject::invokeMethod(&proxy, "setSort", Q_ARG(Qt::SortOrder, Qt::DescendingOrder)));
    QCOMPARE(proxy.text, QString("x"));
    QCOMPARE(proxy.order, Qt::DescendingOrder);
}

void TestGroups::sortGoesThroughTheTable()
{
    struct Proxy : NetworkAudioGroupTreeSortFilterModel
    {
        using NetworkAudioGroupTreeSortFilterModel::NetworkAudioGroupTreeSortFilterModel;
        void sort(int column, Qt::SortOrder order) override { sorts.append({column, order}); }
        QVector<QPair<int, Qt::SortOrder>> sorts;
    };
    Proxy proxy(nullptr);
    proxy.setSort(Qt::DescendingOrder);
    QCOMPARE(proxy.sorts, (QVector<QPair<int, Qt::SortOrder>>{{0, Qt::DescendingOrder}}));
}

void TestGroups::sortShowsEverythingAnew()
{
    Filtered fixture;
    const QSignalSpy changed(fixture.proxy, &QAbstractItemModel::layoutChanged);
    fixture.proxy->setSort(Qt::AscendingOrder); // the order it has
    QCOMPARE(changed.size(), 1);
}

void TestGroups::surfaceOfTheProxy()
{
    const QMetaObject& meta = NetworkAudioGroupTreeSortFilterModel::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 2);
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), QByteArray("setFilter(QString)"));
    QCOMPARE(meta.method(meta.methodOffset() + 1).methodSignature(), QByteArray("setSort(Qt::SortOrder)"));
    QCOMPARE(meta.propertyCount(), QSortFilterProxyModel::staticMetaObject.propertyCount());
    QObject parent;
    const NetworkAudioGroupTreeSortFilterModel proxy(&parent);
    QCOMPARE(proxy.sortColumn(), 0); // sorted before it has a source
    QCOMPARE(proxy.sortOrder(), Qt::AscendingOrder);
    QCOMPARE(proxy.parent(), &parent);
}

QTEST_GUILESS_MAIN(TestGroups)
#include "tst_groups.moc"
