#include "server/devices/simulated/SimulatedCameras.h"

#include "audio/NumberedFile.h"
#include "protocol/ServerReply.h"
#include "server/devices/RefusedTalk.h"
#include "server/devices/simulated/SimulatedCameraTalk.h"
#include "server/devices/simulated/TestPicture.h"

#include <QDateTime>
#include <QRegularExpression>

#include <algorithm>

namespace {

const QString kind = simulatedKind();

QString fileNameOf(const QString& cameraId)
{
    static const QRegularExpression unsafe(QStringLiteral("[^A-Za-z0-9_-]"));
    return QString(cameraId).replace(unsafe, QStringLiteral("_"));
}

std::unique_ptr<DeviceTalk> refuse(const QString& returnCode, const QString& reason)
{
    return std::make_unique<RefusedTalk>(returnCode, reason);
}

} // namespace

void SimulatedCameras::setRecords(const QList<CameraRecord>& records)
{
    if (m_records != records) {
        m_records = records;
        Q_EMIT camerasChanged();
    }
}

/** The voice of a camera that is there; empty for any other. */
std::optional<CameraVoiceConfig> SimulatedCameras::voiceOf(const QString& camera) const
{
    const auto found = std::find_if(m_config.cameras.begin(), m_config.cameras.end(),
                                    [&](const SimulatedCamera& each) { return each.id == camera; });
    if (found != m_config.cameras.end()) {
        return found->online ? std::optional(found->voice) : std::nullopt;
    }
    const bool recorded = std::any_of(m_records.begin(), m_records.end(),
                                      [&](const CameraRecord& record) { return record.id == camera; });
    return recorded ? std::optional(echoingVoice()) : std::nullopt;
}

QList<Camera> SimulatedCameras::cameras() const
{
    QList<Camera> cameras;
    for (const SimulatedCamera& camera : m_config.cameras) {
        cameras.append({camera.id, camera.name, camera.online, kind, QString()});
    }
    for (const CameraRecord& record : m_records) {
        cameras.append({record.id, record.name, true, kind, record.address});
    }
    return cameras;
}

std::unique_ptr<DeviceTalk> SimulatedCameras::openTalk(const QString& camera)
{
    const auto voice = voiceOf(camera);
    if (!voice) {
        return refuse(ReturnCode::cameraOffline, QStringLiteral("camera \"%1\" is offline").arg(camera));
    }
    const QString path =
        NumberedFile::create(m_config.recordingDirectory, fileNameOf(camera), QStringLiteral("wav"));
    auto talk = path.isEmpty() ? nullptr : std::make_unique<SimulatedCameraTalk>(path, *voice, m_clock);
    if (!talk || !talk->isRecording()) {
        return refuse(ReturnCode::storageFailed,
                      QStringLiteral("the recording of camera \"%1\" cannot be written").arg(camera));
    }
    if (!talk->start()) {
        return refuse(ReturnCode::noVoice,
                      QStringLiteral("the voice of camera \"%1\" cannot be read or encoded").arg(camera));
    }
    QStringList& talks = m_config.recordings->talks;
    talks.append(path);
    if (talks.size() > SimulatedRecordings::maxTalks) {
        talks.removeFirst();
    }
    return talk;
}

bool SimulatedCameras::askCamera(const CameraRecord& /*camera*/, TakeReport take)
{
    CameraReport report;
    report.model = QStringLiteral("simulated camera");
    report.speaks = report.hears = CameraAbility::Yes;
    report.talkCodecs = report.voiceCodecs = QStringList{QStringLiteral("PCMU/8000")};
    QMetaObject::invokeMethod(
        this, [take, report] { take(report); }, Qt::QueuedConnection);
    return true;
}

bool SimulatedCameras::askPicture(const QString& camera, TakePicture take)
{
    const QList<Camera> all = cameras();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const Camera& each) { return each.id == camera; });
    if (found == all.end()) {
        return false;
    }
    CameraPicture picture;
    if (!found->online) {
        picture.returnCode = ReturnCode::cameraOffline;
        picture.reason = QStringLiteral("camera \"%1\" is offline").arg(found->name);
    } else {
        picture.jpeg = TestPicture::at(QDateTime::currentMSecsSinceEpoch());
    }
    if (found->online && picture.jpeg.isEmpty()) {
        picture.returnCode = ReturnCode::noPicture;
        picture.reason = QStringLiteral("the test picture cannot be encoded");
    }
    QMetaObject::invokeMethod(
        this, [take, picture] { take(picture); }, Qt::QueuedConnection);
    return true;
}
