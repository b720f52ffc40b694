// Network audio groups: the replies that change their model.

#include "src/PluginVoiceDesk.h"
#include "src/models/ItemRoles.h"
#include "src/models/ItemRows.h"
#include "src/models/RowsById.h"
#include "src/vocabulary/PluginWords.h"
#include "src/vocabulary/Vocabulary.h"

using ReturnCode::success;

QVariantList PluginVoiceDesk::toList(const QString& text)
{
    QVariantList list;
    const QStringList pieces = text.split(QLatin1Char(','), Qt::SkipEmptyParts, Qt::CaseSensitive);
    for (const QString& piece : pieces) {
        list.append(piece.toInt(nullptr, 10)); // deliberate: a piece that is not a number becomes 0
    }
    return list;
}

QVariantList PluginVoiceDesk::getNetworkAudioName(const QVariantList& idList) const
{
    RowsById devices(m_ipAudioModel.data());
    return getNetworkAudioName(idList, devices);
}

QVariantList PluginVoiceDesk::getNetworkAudioName(const QVariantList& idList, RowsById& devices) const
{
    QVariantList names;
    for (const QVariant& id : idList) {
        const int row = devices.find(id.toInt());
        if (row >= 0) { // deliberate: an unknown id leaves no gap, so the lists may not correspond
            names.append(m_ipAudioModel->index(row, 0).data(IPAudioRole::deviceNameRole));
        }
    }
    return names;
}

QStandardItem* PluginVoiceDesk::makeGroupRow(QVariantMap record, RowsById& devices) const
{
    const QVariantList ids = toList(record.value(Vocabulary::networkAudioIDList).toString());
    record[Vocabulary::networkAudioIDList] = ids;
    record[Vocabulary::networkAudioNameList] = getNetworkAudioName(ids, devices);
    return makeNetworkAudioGroupRow(record);
}

void PluginVoiceDesk::handleAddNetworkAudioGroup(const QVariant& result, const QString& returnCode)
{
    const QVariantMap record = result.toMap();
    if (returnCode == success) {
        RowsById devices(m_ipAudioModel.data());
        m_networkAudioGroupModel->appendRow(makeGroupRow(record, devices));
    }
    Q_EMIT addNetworkAudioGroupResponse(returnCode == success, returnCode,
                                        record.value(Vocabulary::groupID).toInt());
}

void PluginVoiceDesk::handleUpdateNetworkAudioGroup(const QVariant& result, const QString& returnCode)
{
    const QVariantMap record = result.toMap();
    const int id = record.value(Vocabulary::groupID).toInt();
    const QModelIndexList hits =
        returnCode == success ? findRowById(m_networkAudioGroupModel.data(), id) : QModelIndexList();
    if (!hits.isEmpty()) {
        const QPersistentModelIndex row = hits.at(0);
        const auto set = [&](int role, const QVariant& value) {
            m_networkAudioGroupModel->setData(row, value, role);
        };
        const QVariantList ids = toList(record.value(Vocabulary::networkAudioIDList).toString());
        const QVariantList names = getNetworkAudioName(ids); // before a slot can change the devices
        set(NetworkAudioGroupRole::nameRole, record.value(Vocabulary::groupName).toString());
        set(NetworkAudioGroupRole::networkAudioIDListRole, ids);
        set(NetworkAudioGroupRole::networkAudioNameListRole, names);
    }
    Q_EMIT updateNetworkAudioGroupResponse(returnCode == success, returnCode, id);
}

void PluginVoiceDesk::handleDeleteNetworkAudioGroup(const QVariant& result, const QString& returnCode)
{
    const int id = result.toInt();
    const QModelIndexList hits =
        returnCode == success ? findRowById(m_networkAudioGroupModel.data(), id) : QModelIndexList();
    if (!hits.isEmpty()) {
        m_networkAudioGroupModel->removeRow(hits.at(0).row());
    }
    Q_EMIT deleteNetworkAudioGroupResponse(returnCode == success, returnCode, id);
}

void PluginVoiceDesk::handleGetNetworkAudioGroup(const QVariant& result, const QString& /*returnCode*/)
{
    m_networkAudioGroupModel->clear(); // deliberate: whatever the code, so a failure leaves an empty model
    RowsById devices(m_ipAudioModel.data());
    const QVariantList records = result.toList();
    for (const QVariant& record : records) {
        m_networkAudioGroupModel->appendRow(makeGroupRow(record.toMap(), devices));
    }
}
