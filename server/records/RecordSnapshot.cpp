#include "server/records/RecordSnapshot.h"

#include "protocol/RecordChecks.h"
#include "protocol/Words.h"

#include <algorithm>

void RecordSnapshot::putDevice(const QVariantMap& record)
{
    Speaker speaker;
    speaker.id = record.value(Vocabulary::deviceID).toInt();
    speaker.name = record.value(Vocabulary::deviceName).toString();
    speaker.address = record.value(Vocabulary::ip).toString();
    speaker.port = record.value(Vocabulary::port).toInt();
    speaker.username = record.value(Vocabulary::username).toString();
    speaker.password = record.value(Vocabulary::password).toString();
    m_devices.insert(speaker.id, speaker);
}

void RecordSnapshot::putGroup(const QVariantMap& record)
{
    m_groups.insert(
        record.value(Vocabulary::groupID).toInt(),
        RecordChecks::ids(record.value(Vocabulary::networkAudioIDList).toString()).value_or(QList<int>()));
}

std::optional<Speaker> RecordSnapshot::device(int id, ServerReply* refusal) const
{
    const auto found = m_devices.constFind(id);
    if (found == m_devices.constEnd()) {
        *refusal = DeviceStore::noSuchDevice(id);
        return std::nullopt;
    }
    return *found;
}

std::optional<QList<int>> RecordSnapshot::members(int group, ServerReply* refusal) const
{
    const auto found = m_groups.constFind(group);
    if (found == m_groups.constEnd()) {
        *refusal = GroupStore::noSuchGroup(group);
        return std::nullopt;
    }
    QList<int> there;
    std::copy_if(found->begin(), found->end(), std::back_inserter(there),
                 [this](int device) { return m_devices.contains(device); });
    return there;
}

std::optional<FileStore::File> RecordSnapshot::file(int id, ServerReply* refusal) const
{
    const auto found = m_files.constFind(id);
    if (found == m_files.constEnd()) {
        *refusal = FileStore::noSuchFile(id);
        return std::nullopt;
    }
    return *found;
}
