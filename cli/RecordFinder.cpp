#include "cli/RecordFinder.h"

#include "protocol/Words.h"

#include <algorithm>

namespace {

QString wordOf(RecordFinder::Kind kind)
{
    switch (kind) {
    case RecordFinder::Device:
        return QStringLiteral("device");
    case RecordFinder::File:
        return QStringLiteral("audio file");
    case RecordFinder::Group:
        return QStringLiteral("group");
    default:
        return QStringLiteral("schedule");
    }
}

} // namespace

void RecordFinder::failed(ExitStatus status, const QString& message)
{
    m_status = PluginSession::fail(status, message);
}

void RecordFinder::absent(Kind kind, int id)
{
    failed(ExitRefused, QStringLiteral("no %1 has the id %2").arg(wordOf(kind)).arg(id));
}

void RecordFinder::notOne(const QString& word, const QString& text, int count)
{
    m_isAbsent = count == 0;
    failed(ExitRefused, count == 0
                            ? QStringLiteral("no %1 has the id or name \"%2\"").arg(word, text)
                            : QStringLiteral("%1 records of the kind %2 have the name \"%3\"; give an id")
                                  .arg(count)
                                  .arg(word, text));
}

bool RecordFinder::read(Kind kind)
{
    switch (kind) {
    case Device:
        m_status = m_session.readDevices();
        break;
    case File:
        m_status = m_session.readFiles();
        break;
    case Group:
        m_status = m_session.readGroups();
        break;
    default:
        m_status = m_session.readSchedules();
        break;
    }
    return m_status == ExitSuccess;
}

QList<QPair<int, QString>> RecordFinder::namesOf(Kind kind)
{
    QList<QPair<int, QString>> names;
    PluginClient& plugin = m_session.plugin();
    if (kind == File) {
        const QList<AudioFileRow> files = plugin.audioFiles();
        for (const AudioFileRow& file : files) {
            names.append({file.id, file.name});
        }
        return names;
    }
    const auto append = [&](const auto& model, const auto& rowOf) {
        for (int row = 0; row < model->rowCount(); ++row) {
            const auto record = rowOf(*model, row);
            names.append({record.id, record.name});
        }
        delete model;
    };
    if (kind == Device) {
        append(plugin.getIPAudioModel(nullptr),
               [](const DeviceModel& model, int row) { return model.device(row); });
    } else if (kind == Group) {
        append(plugin.getNetworkAudioGroupModel(nullptr),
               [](const GroupModel& model, int row) { return model.group(row); });
    } else {
        append(plugin.getNetworkAudioScheduleModel(nullptr),
               [](const ScheduleModel& model, int row) { return model.schedule(row); });
    }
    return names;
}

std::optional<int> RecordFinder::find(Kind kind, const QString& text)
{
    bool isNumber = false;
    const int id = text.toInt(&isNumber);
    if (isNumber && id >= 0) {
        return id;
    }
    if (!read(kind)) {
        return std::nullopt;
    }
    QList<int> found;
    const auto names = namesOf(kind);
    for (const auto& [number, name] : names) {
        if (name == text) {
            found.append(number);
        }
    }
    if (found.size() != 1) {
        notOne(wordOf(kind), text, found.size());
        return std::nullopt;
    }
    return found.first();
}

std::optional<QVariantList> RecordFinder::cameras(const QString& text)
{
    PluginSession::Reply reply;
    m_status = m_session.receive(m_session.sendOwn(Words::GetCamera), &reply);
    if (m_status != ExitSuccess) {
        return std::nullopt;
    }
    QVariantList found;
    const QVariantList cameras = reply.result.toList();
    for (const QVariant& camera : cameras) {
        if (camera.toMap().value(Vocabulary::camId).toString() == text) {
            return QVariantList{camera};
        }
        if (camera.toMap().value(Words::camName).toString() == text) {
            found.append(camera);
        }
    }
    return found;
}

std::optional<QVariantMap> RecordFinder::cameraRecord(const QString& text)
{
    const auto found = cameras(text);
    if (found && found->size() != 1) {
        notOne(QStringLiteral("camera"), text, found->size());
    }
    return found && found->size() == 1 ? std::optional(found->first().toMap()) : std::nullopt;
}

std::optional<QString> RecordFinder::camera(const QString& text)
{
    const auto record = cameraRecord(text);
    return record ? std::optional(record->value(Vocabulary::camId).toString()) : std::nullopt;
}

bool RecordFinder::has(Kind kind, const QString& text)
{
    if (!read(kind)) {
        return false;
    }
    const auto names = namesOf(kind);
    return std::any_of(names.begin(), names.end(), [&](const auto& entry) {
        return entry.second == text || QString::number(entry.first) == text;
    });
}

std::optional<QVariantList> RecordFinder::findAll(Kind kind, const QStringList& texts)
{
    QVariantList ids;
    for (const QString& text : texts) {
        const auto id = find(kind, text);
        if (!id) {
            return std::nullopt;
        }
        ids.append(*id);
    }
    return ids;
}

std::optional<DeviceRow> RecordFinder::device(int id)
{
    if (!read(Device)) {
        return std::nullopt;
    }
    const std::unique_ptr<DeviceModel> model(m_session.plugin().getIPAudioModel(nullptr));
    for (int row = 0; row < model->rowCount(); ++row) {
        if (DeviceRow device = model->device(row); device.id == id) {
            return device;
        }
    }
    absent(Device, id);
    return std::nullopt;
}

std::optional<GroupRow> RecordFinder::group(int id)
{
    if (!read(Group)) {
        return std::nullopt;
    }
    const std::unique_ptr<GroupModel> model(m_session.plugin().getNetworkAudioGroupModel(nullptr));
    for (int row = 0; row < model->rowCount(); ++row) {
        if (GroupRow group = model->group(row); group.id == id) {
            return group;
        }
    }
    absent(Group, id);
    return std::nullopt;
}

std::optional<QVariantMap> RecordFinder::schedule(int id)
{
    if (!read(Schedule)) {
        return std::nullopt;
    }
    const std::unique_ptr<ScheduleModel> model(m_session.plugin().getNetworkAudioScheduleModel(nullptr));
    for (int row = 0; row < model->rowCount(); ++row) {
        if (model->schedule(row).id == id) {
            return model->record(row);
        }
    }
    absent(Schedule, id);
    return std::nullopt;
}
