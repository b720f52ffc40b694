#include "desk/CameraModel.h"
#include "protocol/CameraSettingsRecord.h"

#include <QSignalSpy>
#include <QTest>

class TestCameraModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rows();
    void whatEverTheServerSends();
    void rowsThatStay();
    void search();
};

namespace {

QVariantMap camera(const QString& id, const QString& name)
{
    return {{"camId", id},
            {"camName", name},
            {"online", true},
            {"camKind", "onvif"},
            {"camAddress", "10.0.0." + id},
            {"username", "anna"},
            {"camSettings", QVariantMap{{"packetTime", 40}}}};
}

QVariant value(const CameraModel& model, int row, CameraModel::Role role)
{
    return model.data(model.index(row), role);
}

QStringList names(const CameraModel& model)
{
    QStringList list;
    for (int row = 0; row < model.rowCount(); ++row) {
        list.append(value(model, row, CameraModel::NameRole).toString());
    }
    return list;
}

} // namespace

void TestCameraModel::rows()
{
    CameraModel model;
    QVariantMap own = camera("camera-1", "Gate");
    own["camAddress"] = "";
    own["online"] = false;
    model.setCameras({camera("7", "Hall"), own});
    QCOMPARE(model.rowCount(), 2);
    QVariantMap settings = CameraSettingsRecord::toMap(CameraSettings());
    settings["packetTime"] = 40;
    const std::vector<QPair<CameraModel::Role, QVariant>> fields{{CameraModel::IdRole, "7"},
                                                                 {CameraModel::NameRole, "Hall"},
                                                                 {CameraModel::KindRole, "onvif"},
                                                                 {CameraModel::AddressRole, "10.0.0.7"},
                                                                 {CameraModel::UserRole, "anna"},
                                                                 {CameraModel::OnlineRole, true},
                                                                 {CameraModel::SettingsRole, settings},
                                                                 {CameraModel::RecordRole, true}};
    QCOMPARE(static_cast<int>(fields.size()), model.roleNames().size());
    for (const auto& [role, expected] : fields) {
        const QVariant actual = value(model, 0, role);
        QCOMPARE(actual, expected);
        QCOMPARE(actual.userType(), expected.userType());
    }
    QCOMPARE(value(model, 1, CameraModel::RecordRole), QVariant(false));
    QCOMPARE(value(model, 1, CameraModel::OnlineRole), QVariant(false));
    QVERIFY(!model.data(model.index(2), CameraModel::NameRole).isValid());
    model.forgetServer();
    QCOMPARE(model.rowCount(), 0);
}

void TestCameraModel::whatEverTheServerSends()
{
    CameraModel model;
    QVariantMap bad = camera("1", QString(100000, 'x'));
    bad["camAddress"] = QString(100000, 'y');
    bad["username"] = QString(100000, 'z');
    bad["online"] = QVariantList{1};
    bad["camSettings"] = QVariantMap{
        {"packetTime", "often"}, {"dscp", 64}, {"evenPace", 1}, {"newer", 7}, {"halfDuplex", true}};
    model.setCameras({bad, QVariant(), 7, QVariantMap()});
    QCOMPARE(model.rowCount(), 4);
    QCOMPARE(value(model, 0, CameraModel::NameRole).toString().size(), 128);
    QCOMPARE(value(model, 0, CameraModel::AddressRole).toString().size(), 1024);
    QCOMPARE(value(model, 0, CameraModel::UserRole).toString().size(), 256);
    QVariantMap settings = CameraSettingsRecord::toMap(CameraSettings());
    settings["halfDuplex"] = true; // what is valid counts, beside what is not
    QCOMPARE(value(model, 0, CameraModel::SettingsRole), QVariant(settings));
}

void TestCameraModel::rowsThatStay()
{
    CameraModel model;
    model.setCameras({camera("1", "A"), camera("2", "B"), camera("4", "D")});
    const QPersistentModelIndex last = model.index(2);
    QSignalSpy removed(&model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy changed(&model, &QAbstractItemModel::dataChanged);
    QSignalSpy reset(&model, &QAbstractItemModel::modelReset);
    model.setCameras({camera("1", "A"), camera("2", "Bee"), camera("3", "C"), camera("4", "D")});
    QCOMPARE(names(model), (QStringList{"A", "Bee", "C", "D"}));
    QCOMPARE(last.row(), 3); // a cursor on it stays with it
    QCOMPARE(removed.size(), 0);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(changed[0][0].toModelIndex().row(), 1);
    model.setCameras({camera("2", "Bee"), camera("4", "D")});
    QCOMPARE(names(model), (QStringList{"Bee", "D"}));
    QCOMPARE(last.row(), 1);
    QCOMPARE(reset.size(), 0);
    model.setCameras({camera("4", "D"), camera("2", "Bee")});
    QCOMPARE(names(model), (QStringList{"D", "Bee"}));
}

void TestCameraModel::search()
{
    CameraModel model;
    QSignalSpy changed(&model, &CameraModel::searchChanged);
    model.setCameras({camera("1", "Gate"), camera("2", "Hall")});
    model.setSearch("GATE");
    QCOMPARE(names(model), QStringList{"Gate"});
    QCOMPARE(changed.size(), 1);
    model.setSearch("0.0.2");
    QCOMPARE(names(model), QStringList{"Hall"});
    model.setCameras({camera("1", "Gate"), camera("2", "Hall"), camera("22", "Hallway")});
    QCOMPARE(names(model), (QStringList{"Hall", "Hallway"}));
    model.setSearch("");
    QCOMPARE(model.rowCount(), 3);
}

QTEST_GUILESS_MAIN(TestCameraModel)
#include "tst_cameramodel.moc"
