// IP audio devices: the replies that change their model, and what the model knows of cameras.

#include "src/PluginVoiceDesk.h"
#include "src/models/ItemRoles.h"
#include "src/models/ItemRows.h"
#include "src/vocabulary/PluginWords.h"
#include "src/vocabulary/Vocabulary.h"

using ReturnCode::success;

namespace {

QStringList splitBindingCameraList(const QString& text)
{
    return text.isEmpty() ? QStringList()
                          : text.split(QLatin1Char('|'), Qt::KeepEmptyParts, Qt::CaseSensitive);
}

QStandardItem* rowOf(QVariantMap record)
{
    QVariant& bindings = record[Vocabulary::bindingCameraList];
    bindings = splitBindingCameraList(bindings.toString());
    return makeIPAudioRow(record);
}

} // namespace

QVariantMap PluginVoiceDesk::queryBindingIPAudio(const QString& nodeId)
{
    if (m_ipAudioModel.isNull()) {
        return {};
    }
    for (int row = 0; row < m_ipAudioModel->rowCount(); ++row) {
        const QModelIndex index = m_ipAudioModel->index(row, 0);
        if (index.data(IPAudioRole::bindingCameraListRole)
                .toStringList()
                .contains(nodeId, Qt::CaseSensitive)) {
            // Deliberate: these keys are not the record's.
            return {{QStringLiteral("id"), index.data(IPAudioRole::idRole).toInt()},
                    {QStringLiteral("name"), index.data(IPAudioRole::deviceNameRole).toString()}};
        }
    }
    return {};
}

void PluginVoiceDesk::handleAddIPAudioData(QVariant result, void* /*userData*/, QString returnCode,
                                           QString /*errorCode*/, bool /*flag*/, const QString& /*extra*/)
{
    const QVariantMap record = result.toMap();
    if (returnCode == success) {
        m_ipAudioModel->appendRow(rowOf(record));
        Q_EMIT ipAudioModelChanged();
    }
    Q_EMIT addIPAudioResponse(returnCode == success, returnCode, record.value(Vocabulary::deviceID).toInt());
}

void PluginVoiceDesk::handleUpdateIPAudioData(QVariant result, void* /*userData*/, QString returnCode,
                                              QString /*errorCode*/, bool /*flag*/, const QString& /*extra*/)
{
    const QVariantMap record = result.toMap();
    const int id = record.value(Vocabulary::deviceID).toInt();
    const QModelIndexList hits =
        returnCode == success ? findRowById(m_ipAudioModel.data(), id) : QModelIndexList();
    if (!hits.isEmpty()) {
        const QPersistentModelIndex row = hits.at(0);
        const auto set = [&](int role, const QVariant& value) { m_ipAudioModel->setData(row, value, role); };
        set(IPAudioRole::deviceNameRole, record.value(Vocabulary::deviceName).toString());
        set(IPAudioRole::ipRole, record.value(Vocabulary::ip).toString());
        set(IPAudioRole::portRole,
            record.value(Vocabulary::port).toString()); // deliberate: text from here on
        set(IPAudioRole::userRole, record.value(Vocabulary::username).toString());
        set(IPAudioRole::passwordRole, record.value(Vocabulary::password).toString());
        set(IPAudioRole::bindingCameraListRole,
            splitBindingCameraList(record.value(Vocabulary::bindingCameraList).toString()));
        Q_EMIT ipAudioModelChanged();
    }
    Q_EMIT updateIPAudioResponse(returnCode == success, returnCode, id);
}

void PluginVoiceDesk::handleDeleteIPAudioData(QVariant result, void* /*userData*/, QString returnCode,
                                              QString /*errorCode*/, bool /*flag*/, const QString& /*extra*/)
{
    const int id = result.toInt();
    const QModelIndexList hits =
        returnCode == success ? findRowById(m_ipAudioModel.data(), id) : QModelIndexList();
    if (!hits.isEmpty()) {
        m_ipAudioModel->removeRow(hits.at(0).row());
        Q_EMIT ipAudioModelChanged();
    }
    Q_EMIT deleteIPAudioResponse(returnCode == success, returnCode, id);
}

void PluginVoiceDesk::handleRetrieveIPAudioData(QVariant result, void* /*userData*/, QString /*returnCode*/,
                                                QString /*errorCode*/, bool /*flag*/,
                                                const QString& /*extra*/)
{
    m_ipAudioModel->clear(); // deliberate: whatever the code, so a failure leaves an empty model
    const QVariantList records = result.toList();
    for (const QVariant& record : records) {
        m_ipAudioModel->appendRow(rowOf(record.toMap()));
    }
    Q_EMIT ipAudioModelChanged();
}
