#include "client/RecordModels.h"
#include "desk/TargetModel.h"

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <QStandardItemModel>
#include <QTest>

class TestTargetModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void camerasThenSpeakers();
    void search();
    void oneCameraManySpeakers();
    void choiceOutlivesALaterList();
    void statesOutliveAList();
    void camerasComeAndGo();
    void staleRows();
    void rowsThatStayAreLeftAlone();
    void anotherServer();

private:
    void addSpeaker(int id, const QString& name, const QString& address);
    QStringList names() const;

    std::unique_ptr<QStandardItemModel> m_speakers;
    std::unique_ptr<TargetModel> m_targets;
};

namespace {

QVariantMap camera(const char* id, const char* name, bool online = true)
{
    return {{"camId", id},
            {"camName", name},
            {"camAddress", QString("rtsp://%1.example/talk").arg(id)},
            {"online", online}};
}

} // namespace

void TestTargetModel::addSpeaker(int id, const QString& name, const QString& address)
{
    auto* item = new QStandardItem;
    item->setData(id, Qt::UserRole + 1);
    item->setData(name, Qt::UserRole + 2);
    item->setData(address, Qt::UserRole + 3);
    m_speakers->appendRow(item);
}

QStringList TestTargetModel::names() const
{
    QStringList list;
    for (int row = 0; row < m_targets->rowCount(); ++row) {
        list.append(m_targets->index(row).data(TargetModel::NameRole).toString());
    }
    return list;
}

void TestTargetModel::init()
{
    m_targets = std::make_unique<TargetModel>();
    m_speakers = std::make_unique<QStandardItemModel>();
    new QAbstractItemModelTester(m_targets.get(), QAbstractItemModelTester::FailureReportingMode::QtTest,
                                 m_targets.get());
    addSpeaker(1, "Hall", "10.0.0.1");
    addSpeaker(12, "Stairs", "10.0.0.2");
    m_speakers->setItemRoleNames(
        {{Qt::UserRole + 1, "idRole"}, {Qt::UserRole + 2, "deviceNameRole"}, {Qt::UserRole + 3, "ipRole"}});
    m_targets->setSpeakers(new DeviceModel(m_speakers.get(), m_speakers.get()));
    m_targets->setCameras({camera("gate", "Gate"), camera("park", "Park", false)});
}

void TestTargetModel::camerasThenSpeakers()
{
    QCOMPARE(names(), (QStringList{"Gate", "Park", "Hall", "Stairs"}));
    QCOMPARE(m_targets->index(1).data(TargetModel::StateRole).toInt(), int{TargetModel::Offline});
    QCOMPARE(m_targets->index(2).data(TargetModel::KeyRole).toString(), QString("speaker:1"));
    QCOMPARE(m_targets->index(2).data(TargetModel::KindRole).toString(), QString("speaker"));
    QCOMPARE(m_targets->index(2).data(TargetModel::DetailRole).toString(), QString("10.0.0.1"));
    addSpeaker(13, "Roof", "10.0.0.3");
    QTRY_COMPARE(m_targets->total(), 5);
    m_speakers->clear();
    QTRY_COMPARE(names(), (QStringList{"Gate", "Park"}));
    QCOMPARE(m_targets->cameras().size(), 2);
    QCOMPARE(m_targets->cameras()[0].toMap()["name"].toString(), QString("Gate"));
}

void TestTargetModel::search()
{
    m_targets->setSearch("AIR");
    QCOMPARE(names(), QStringList{"Stairs"});
    m_targets->setSearch("10.0.0.1");
    QCOMPARE(names(), QStringList{"Hall"});
    m_targets->setSearch("GATE.example");
    QCOMPARE(names(), QStringList{"Gate"});
    QCOMPARE(m_targets->index(0).data(TargetModel::DetailRole).toString(),
             QString("rtsp://gate.example/talk"));
    m_targets->setSearch(".*"); // no pattern
    QCOMPARE(names(), QStringList());
    QCOMPARE(m_targets->total(), 4);
    m_targets->setSearch("");
    QCOMPARE(m_targets->rowCount(), 4);
}

void TestTargetModel::oneCameraManySpeakers()
{
    m_targets->choose("camera:gate", true);
    m_targets->choose("speaker:12", true);
    m_targets->choose("speaker:1", true);
    QCOMPARE(m_targets->chosenNames(), QString("Gate, Hall, Stairs"));
    m_targets->choose("camera:park", true); // in the place of the other one
    QCOMPARE(m_targets->chosenNames(), QString("Park, Hall, Stairs"));
    QCOMPARE(m_targets->chosenCount(), 3);
    m_targets->chooseOnly("speaker:12");
    QCOMPARE(m_targets->chosenNames(), QString("Stairs"));
    m_targets->choose("speaker:999", true);
    QCOMPARE(m_targets->chosenCount(), 1);
    m_targets->choose("speaker:12", false);
    QCOMPARE(m_targets->chosenCount(), 0);
}

void TestTargetModel::choiceOutlivesALaterList()
{
    m_targets->choose("speaker:12", true);
    m_targets->choose("speaker:1", true);
    m_targets->setSearch("hall"); // what is not shown stays chosen
    QCOMPARE(m_targets->chosenCount(), 2);
    m_speakers->removeRow(0);
    QTRY_COMPARE(m_targets->chosenNames(), QString("Stairs"));
}

void TestTargetModel::statesOutliveAList()
{
    QSignalSpy changed(m_targets.get(), &QAbstractItemModel::dataChanged);
    m_targets->setState("speaker:1", TargetModel::Talking);
    m_targets->setState("speaker:12", TargetModel::Failed);
    QCOMPARE(changed.size(), 2);
    addSpeaker(13, "Roof", "10.0.0.3");
    QTRY_COMPARE(m_targets->total(), 5);
    QCOMPARE(m_targets->find("speaker:1")->state, TargetModel::Talking);
    m_targets->endStates();
    QCOMPARE(m_targets->find("speaker:1")->state, TargetModel::Ready);
    QCOMPARE(m_targets->find("speaker:12")->state, TargetModel::Failed);
    QCOMPARE(m_targets->find("speaker:77"), nullptr);
}

void TestTargetModel::camerasComeAndGo()
{
    m_targets->setCameras({camera("gate", "Gate", false), camera("park", "Park")});
    QCOMPARE(m_targets->find("camera:gate")->state, TargetModel::Offline);
    QCOMPARE(m_targets->find("camera:park")->state, TargetModel::Ready);
}

void TestTargetModel::staleRows()
{
    const QModelIndex last = m_targets->index(3);
    m_targets->setSearch("gate");
    QCOMPARE(m_targets->data(last, TargetModel::NameRole), QVariant());
    QCOMPARE(m_targets->data(QModelIndex(), TargetModel::NameRole), QVariant());
}

void TestTargetModel::rowsThatStayAreLeftAlone()
{
    QSignalSpy reset(m_targets.get(), &QAbstractItemModel::modelReset);
    QSignalSpy inserted(m_targets.get(), &QAbstractItemModel::rowsInserted);
    QSignalSpy removed(m_targets.get(), &QAbstractItemModel::rowsRemoved);
    QSignalSpy changed(m_targets.get(), &QAbstractItemModel::dataChanged);
    QSignalSpy rearranged(m_targets.get(), &TargetModel::rearranged);
    const QPersistentModelIndex stairs = m_targets->index(3);
    m_targets->setCameras({camera("gate", "Gate"), camera("yard", "Yard"), camera("park", "Park", false)});
    QCOMPARE(inserted.size(), 1);
    QCOMPARE(inserted[0][1].toInt(), 1);
    QCOMPARE(inserted[0][2].toInt(), 1);
    QCOMPARE(stairs.data(TargetModel::NameRole).toString(), QString("Stairs"));
    QCOMPARE(m_targets->keyAt(4), QString("speaker:12"));
    QCOMPARE(m_targets->rowOf("speaker:12"), 4);
    // A name alone moves nothing.
    m_targets->setCameras(
        {camera("gate", "Main gate"), camera("yard", "Yard"), camera("park", "Park", false)});
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed[0][0].toModelIndex().row(), 0);
    QCOMPARE(rearranged.size(), 1);
    m_targets->setCameras({camera("yard", "Yard"), camera("park", "Park", false)});
    QCOMPARE(removed.size(), 1);
    QCOMPARE(m_targets->rowOf("camera:gate"), -1);
    QCOMPARE(m_targets->keyAt(-1), QString());
    QCOMPARE(stairs.row(), 3);
    // Changed places.
    m_targets->setCameras({camera("park", "Park", false), camera("yard", "Yard")});
    QCOMPARE(names(), (QStringList{"Park", "Yard", "Hall", "Stairs"}));
    QCOMPARE(stairs.row(), 3);
    m_targets->setCameras({});
    QCOMPARE(names(), (QStringList{"Hall", "Stairs"}));
    QCOMPARE(reset.size(), 0);
}

void TestTargetModel::anotherServer()
{
    m_targets->choose("camera:gate", true);
    m_targets->choose("speaker:1", true);
    m_targets->forgetServer();
    QCOMPARE(m_targets->chosenCount(), 0);
    QCOMPARE(m_targets->total(), 0);
    // Its cameras may come first; the speakers' model is still the last server's.
    m_targets->setCameras({camera("gate", "Another gate")});
    addSpeaker(13, "Roof", "10.0.0.3");
    QCoreApplication::processEvents();
    QCOMPARE(names(), QStringList{"Another gate"});
    m_targets->choose("speaker:1", true);
    QCOMPARE(m_targets->chosenCount(), 0);
    m_targets->speakersListed();
    QCOMPARE(names(), (QStringList{"Another gate", "Hall", "Stairs", "Roof"}));
}

QTEST_GUILESS_MAIN(TestTargetModel)
#include "tst_targetmodel.moc"
