#include "src/models/ItemRows.h"
#include "src/models/RowsById.h"
#include "tests/plugin/RecordsFixture.h"

#include <QRandomGenerator>
#include <QStandardItemModel>
#include <QStringListModel>
#include <QTest>

#include <limits>

class TestRowsById : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findsWhatASearchFinds_data();
    void findsWhatASearchFinds();
    void manyModels();
    void followsTheModel();
    void followsMovedRows();
    void namesAreComputedBeforeTheFieldsAreSet();
    void devicesThatChangeBetweenTheGroups();
    void idsAreReadOnceForAReply();
};

namespace {

void append(QStandardItemModel& model, const QVariant& id)
{
    auto* item = new QStandardItem;
    item->setData(id, idRole);
    model.appendRow(item);
}

int search(const QStandardItemModel& model, int id)
{
    const QModelIndexList hits = findRowById(&model, id);
    return hits.isEmpty() ? -1 : hits.at(0).row();
}

QList<int> idsToLookFor()
{
    QList<int> ids{std::numeric_limits<int>::min(),
                   std::numeric_limits<int>::max(),
                   2147483646,
                   214748364,
                   -214748364,
                   1000000};
    for (int id = -130; id <= 1300; ++id) {
        ids.append(id);
    }
    return ids;
}

} // namespace

void TestRowsById::findsWhatASearchFinds_data()
{
    QTest::addColumn<QVariantList>("ids");
    QTest::addColumn<int>("wanted");
    QTest::addColumn<int>("row");
    const QVariant none;
    QTest::newRow("empty model") << QVariantList{} << 1 << -1;
    QTest::newRow("longer id first") << QVariantList{12, 1} << 1 << 0;
    QTest::newRow("shorter id first") << QVariantList{1, 12} << 1 << 0;
    QTest::newRow("the whole id") << QVariantList{1, 12} << 12 << 1;
    QTest::newRow("longer than any") << QVariantList{1, 12} << 123 << -1;
    QTest::newRow("twice") << QVariantList{3, 7, 7} << 7 << 1;
    QTest::newRow("zero") << QVariantList{10, 0} << 0 << 1;
    QTest::newRow("no id") << QVariantList{none, "", 5} << 0 << -1;
    QTest::newRow("text") << QVariantList{"x12", "12x"} << 12 << 1;
    QTest::newRow("leading zeros") << QVariantList{"0012", "12"} << 12 << 1;
    QTest::newRow("leading zeros for zero") << QVariantList{"0012", 0} << 0 << 0;
    QTest::newRow("spaces") << QVariantList{" 12", "12"} << 12 << 1;
    QTest::newRow("plus") << QVariantList{"+12"} << 12 << -1;
    QTest::newRow("negative") << QVariantList{1, -12} << -1 << 1;
    QTest::newRow("minus alone") << QVariantList{"-", "-0"} << 0 << -1;
    QTest::newRow("double") << QVariantList{12.5} << 12 << 0;
    QTest::newRow("bool") << QVariantList{true} << 1 << -1;
    QTest::newRow("larger than int") << QVariantList{"21474836470"} << 2147483647 << 0;
    QTest::newRow("much larger") << QVariantList{QString(100000, '9')} << 999999999 << 0;
    QTest::newRow("other digits") << QVariantList{QString(QChar(0x0661))} << 1 << -1;
    QTest::newRow("code of another digit") << QVariantList{QString(QChar(0x0661))} << 0x0661 - '0' << -1;
}

void TestRowsById::findsWhatASearchFinds()
{
    QFETCH(QVariantList, ids);
    QFETCH(int, wanted);
    QFETCH(int, row);
    QStandardItemModel model;
    for (const QVariant& id : qAsConst(ids)) {
        append(model, id);
    }
    QCOMPARE(search(model, wanted), row);
    QCOMPARE(RowsById(&model).find(wanted), row);
}

void TestRowsById::manyModels()
{
    QRandomGenerator random(7);
    const QString characters = QStringLiteral("0123456789- x");
    for (int round = 0; round < 20; ++round) {
        QStandardItemModel model;
        for (int i = 0; i < 40; ++i) {
            if (random.bounded(2) == 0) {
                append(model, random.bounded(-200, 2000));
            } else {
                QString text;
                for (int k = random.bounded(5); k > 0; --k) {
                    text.append(characters.at(random.bounded(characters.size())));
                }
                append(model, text);
            }
        }
        RowsById rows(&model);
        for (const int id : idsToLookFor()) {
            QCOMPARE(rows.find(id), search(model, id));
        }
    }
}

void TestRowsById::followsTheModel()
{
    QStandardItemModel model;
    RowsById rows(&model);
    QCOMPARE(rows.find(1), -1);
    append(model, 2);
    append(model, 1);
    QCOMPARE(rows.find(1), 1);
    model.removeRow(0);
    QCOMPARE(rows.find(1), 0);
    model.item(0)->setData(3, idRole);
    QCOMPARE(rows.find(1), -1);
    QCOMPARE(rows.find(3), 0);
    append(model, 1);
    model.setSortRole(idRole);
    QCOMPARE(rows.find(3), 0);
    model.sort(0);
    QCOMPARE(rows.find(3), 1);
    model.clear();
    QCOMPARE(rows.find(1), -1);
}

namespace {

/** Ids in a model whose rows can be moved. */
class MovableIds : public QStringListModel
{
public:
    using QStringListModel::QStringListModel;

    QVariant data(const QModelIndex& index, int role) const override
    {
        return QStringListModel::data(index, role == idRole ? Qt::DisplayRole : role);
    }
};

} // namespace

void TestRowsById::followsMovedRows()
{
    MovableIds model({"1", "2", "3"});
    RowsById rows(&model);
    QCOMPARE(rows.find(1), 0);
    QVERIFY(model.moveRow(QModelIndex(), 0, QModelIndex(), 3));
    QCOMPARE(rows.find(1), 2);
    QCOMPARE(rows.find(2), 0);
}

void TestRowsById::namesAreComputedBeforeTheFieldsAreSet()
{
    RecordsFixture f;
    f.addDevice(1, "Gate");
    f.addGroup(5, "Yard", "1");
    QAbstractItemModel* groups = f.groups->sourceModel();
    // A slot that looks at the new fields, and meets another reply while it does.
    bool first = true;
    connect(groups, &QAbstractItemModel::dataChanged, this, [&] {
        if (first) {
            first = false;
            f.reply("UpdateIPAudio", "0", RecordsFixture::device(1, "Door"));
        }
    });
    f.reply("UpdateNetworkAudioGroup", "0", RecordsFixture::group(5, "Dock", "1,1"));
    QVERIFY(!first);
    const QModelIndex row = groups->index(0, 0);
    QCOMPARE(row.data(NetworkAudioGroupRole::nameRole).toString(), QStringLiteral("Dock"));
    QCOMPARE(row.data(NetworkAudioGroupRole::networkAudioNameListRole).toList(),
             (QVariantList{"Gate", "Gate"}));
    QCOMPARE(f.devices->index(0, 0).data(IPAudioRole::deviceNameRole).toString(), QStringLiteral("Door"));
}

void TestRowsById::devicesThatChangeBetweenTheGroups()
{
    RecordsFixture f;
    f.addDevice(1, "Gate");
    f.addDevice(2, "Door");
    QAbstractItemModel* groups = f.groups->sourceModel();
    connect(groups, &QAbstractItemModel::rowsInserted, this, [&] {
        if (groups->rowCount() == 1) {
            f.reply("DeleteIPAudio", "0", 1);
        }
    });
    f.reply("GetNetworkAudioGroup", "0",
            QVariantList{RecordsFixture::group(5, "Yard", "1,2"), RecordsFixture::group(6, "Dock", "1,2")});
    QCOMPARE(RecordsFixture::column(*f.groups, NetworkAudioGroupRole::networkAudioNameListRole),
             (QVariantList{QVariantList{"Gate", "Door"}, QVariantList{"Door"}}));
}

namespace {

/** A device that counts how often its id is read. */
class CountingDevice : public QStandardItem
{
public:
    CountingDevice(int id, int& reads) : m_reads(reads) { setData(id, idRole); }

    QVariant data(int role) const override
    {
        m_reads += role == idRole ? 1 : 0;
        return QStandardItem::data(role);
    }

private:
    int& m_reads;
};

} // namespace

void TestRowsById::idsAreReadOnceForAReply()
{
    int reads = 0; // outlives the item
    RecordsFixture f;
    auto* devices = qobject_cast<QStandardItemModel*>(f.devices->sourceModel());
    QVERIFY(devices != nullptr);
    devices->appendRow(new CountingDevice(1, reads));
    QVariantList groups;
    for (int id = 1; id <= 20; ++id) {
        groups.append(RecordsFixture::group(id, "Yard", "1,1,1"));
    }
    reads = 0;
    f.reply("GetNetworkAudioGroup", "0", groups);
    QCOMPARE(reads, 1);
    QCOMPARE(f.groups->sourceModel()->rowCount(), 20);
}

QTEST_GUILESS_MAIN(TestRowsById)
#include "tst_rowsbyid.moc"
