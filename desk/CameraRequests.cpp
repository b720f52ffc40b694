#include "desk/CameraRequests.h"

#include "client/PluginHost.h"
#include "desk/CameraAnswers.h"
#include "desk/RequestTimeouts.h"
#include "protocol/CameraSettingsRecord.h"
#include "protocol/RecordChecks.h"
#include "protocol/ReturnCode.h"
#include "protocol/Words.h"

namespace {

/** Whether the address has the login in it, and no other is given. */
bool hasLoginInAddress(const QVariantMap& camera)
{
    return camera.value(Vocabulary::username).toString().isEmpty() &&
           camera.value(Words::camAddress).toString().contains(QLatin1Char('@'));
}

/** A record with the settings in the types of the protocol: QML has other numbers. */
QVariantMap typed(QVariantMap camera)
{
    QString error;
    QVariant& settings = camera[Words::camSettings];
    if (const auto valid = CameraSettingsRecord::fromMap(settings.toMap(), CameraSettings(), &error)) {
        settings = CameraSettingsRecord::toMap(*valid);
    }
    return camera;
}

} // namespace

CameraRequests::CameraRequests(PluginHost& host, RequestTimeouts& watch) : m_host(host), m_watch(watch) {}

void CameraRequests::replyArrived(const QString& command, const QString& returnCode,
                                  const QString& /*errorText*/, quint64 /*request*/, const QVariant& result)
{
    static const QStringList own{Words::AddCamera, Words::UpdateCamera, Words::DeleteCamera,
                                 Words::FindCameras, Words::AskCamera};
    if (!own.contains(command)) {
        return;
    }
    const bool success = returnCode == ReturnCode::success;
    if (success && command == Words::FindCameras) {
        Q_EMIT found(CameraAnswers::found(result));
    } else if (success && command == Words::AskCamera) {
        Q_EMIT known(CameraAnswers::abilities(result));
    }
    Q_EMIT answered(success, returnCode);
}

bool CameraRequests::add(const QVariantMap& camera)
{
    QVariantMap record = typed(camera);
    if (hasLoginInAddress(record)) {
        record.remove(Vocabulary::username);
        record.remove(Vocabulary::password);
    }
    return send(Words::AddCamera, record);
}

/** The payload that changes a camera: without what the record is to keep. */
QVariantMap CameraRequests::changed(const QString& id, const QVariantMap& camera)
{
    QVariantMap record = typed(camera);
    record[Vocabulary::camId] = id;
    const bool hasUser = !record.value(Vocabulary::username).toString().isEmpty();
    if (hasLoginInAddress(record)) {
        record.remove(Vocabulary::username);
        record.remove(Vocabulary::password);
    } else if (!hasUser) {
        record[Vocabulary::password] = QString();
    } else if (record.value(Vocabulary::password).toString().isEmpty()) {
        record.remove(Vocabulary::password); // the camera keeps its own
    }
    return record;
}

bool CameraRequests::update(const QString& id, const QVariantMap& camera)
{
    return send(Words::UpdateCamera, changed(id, camera));
}

bool CameraRequests::find()
{
    return send(Words::FindCameras, QVariant());
}

bool CameraRequests::ask(const QString& id, const QVariantMap& camera)
{
    QVariantMap question = changed(id, camera);
    question.remove(Words::camName);
    if (id.isEmpty()) {
        question.remove(Vocabulary::camId);
    }
    return send(Words::AskCamera, question);
}

bool CameraRequests::remove(const QString& id)
{
    return send(Words::DeleteCamera, id);
}

bool CameraRequests::send(const QString& command, const QVariant& payload)
{
    const quint64 request = m_host.sendOwn(command, payload);
    m_watch.commandSent(command, payload, request != 0, request);
    return request != 0;
}

QVariantMap CameraRequests::defaultSettings() const
{
    return CameraSettingsRecord::toMap(CameraSettings());
}

QStringList CameraRequests::talkCodecs() const
{
    return CameraSettingsRecord::talkCodecs();
}

bool CameraRequests::areValid(const QVariantMap& settings) const
{
    QString error;
    return CameraSettingsRecord::fromMap(settings, CameraSettings(), &error).has_value();
}

bool CameraRequests::isAddress(const QString& text) const
{
    return !RecordChecks::cameraAddress(text);
}
