#include "server/devices/onvif/OnvifPictures.h"

#include "onvif/OnvifDevice.h"
#include "onvif/SnapshotClient.h"
#include "protocol/Limits.h"
#include "server/devices/onvif/OnvifInquiries.h"
#include "server/devices/onvif/OnvifRefusal.h"

namespace {

CameraPicture refusedPicture(const QString& returnCode, const QString& reason)
{
    return {QByteArray(), returnCode, reason};
}

/** Why there is no picture. */
CameraPicture refusedPicture(OnvifError error, const QString& words)
{
    return refusedPicture(returnCodeOf(error, ReturnCode::noPicture), words);
}

QString wordsOf(const Snapshot& snapshot)
{
    const QString words = snapshot.error == OnvifError::NotReachable
                              ? QStringLiteral("nobody answers at the address of the camera's picture")
                              : onvifErrorText(snapshot.error);
    return snapshot.detail.isEmpty() ? words : QStringLiteral("%1: %2").arg(words, snapshot.detail);
}

} // namespace

OnvifPictures::OnvifPictures(const OnvifConfig& config)
    : m_times(config.pictures), m_servicePort(config.servicePort)
{
    m_clock.start();
}

void OnvifPictures::setRecords(const QList<CameraRecord>& records)
{
    QHash<QString, Known> cameras;
    for (const CameraRecord& record : records) {
        const Known before = m_cameras.value(record.id);
        cameras.insert(record.id, before.record == record ? before : Known{record, QUrl()});
    }
    m_cameras = cameras;
}

bool OnvifPictures::ask(const QString& camera, const CameraBackend::TakePicture& take)
{
    const auto known = m_cameras.constFind(camera);
    if (known == m_cameras.constEnd()) {
        return false;
    }
    if (m_clock.elapsed() < known->refusedUntil) {
        QMetaObject::invokeMethod(
            this, [take, refused = known->refused] { take(refused); }, Qt::QueuedConnection);
    } else if (known->still.isEmpty()) {
        askAddress(known->record, take);
    } else {
        askStill(known->record, known->still, take);
    }
    return true;
}

void OnvifPictures::askAddress(const CameraRecord& record, const CameraBackend::TakePicture& take)
{
    QString error;
    const auto service = OnvifInquiries::deviceService(record.address, m_servicePort, &error);
    if (!service) {
        QMetaObject::invokeMethod(
            this,
            [this, record, error, take] {
                finish(record, refusedPicture(ReturnCode::noPicture, error), take);
            },
            Qt::QueuedConnection);
        return;
    }
    OnvifDevice::Options options;
    options.anyCertificate = record.settings.anyCertificate;
    auto* device = new OnvifDevice(*service, {record.username, record.password}, options, this);
    connect(
        device, &OnvifDevice::abilitiesKnown, this,
        [this, device, record, take](const CameraAbilities& abilities) {
            device->deleteLater();
            if (!abilities.snapshot.isEmpty()) {
                askStill(record, abilities.snapshot, take);
            } else if (abilities.error != OnvifError::None) {
                finish(record, refusedPicture(abilities.error, OnvifInquiries::errorOf(record, abilities)),
                       take);
            } else {
                finish(record,
                       refusedPicture(ReturnCode::noPicture,
                                      QStringLiteral("the camera names no address of its own for a picture")),
                       take);
            }
        });
    device->askAbilities();
}

void OnvifPictures::askStill(const CameraRecord& record, const QUrl& url,
                             const CameraBackend::TakePicture& take)
{
    auto* client = new SnapshotClient({record.username, record.password}, m_times.question,
                                      Limits::maxPictureBytes, this);
    client->setAnyCertificate(record.settings.anyCertificate);
    client->get(url, [this, client, record, url, take](const Snapshot& snapshot) {
        client->deleteLater();
        const auto known = m_cameras.find(record.id);
        if (known != m_cameras.end() && known->record == record) {
            known->still = snapshot.error == OnvifError::None ? url : QUrl();
        }
        finish(record,
               snapshot.error == OnvifError::None
                   ? CameraPicture{snapshot.jpeg, ReturnCode::success, QString()}
                   : refusedPicture(snapshot.error, wordsOf(snapshot)),
               take);
    });
}

/** Remembers a refusal, unless the record has changed meanwhile, and hands the picture on. */
void OnvifPictures::finish(const CameraRecord& record, const CameraPicture& picture,
                           const CameraBackend::TakePicture& take)
{
    const auto known = m_cameras.find(record.id);
    if (picture.returnCode != ReturnCode::success && known != m_cameras.end() && known->record == record) {
        const bool isSilent = picture.returnCode == ReturnCode::cameraOffline ||
                              picture.returnCode == ReturnCode::cameraTimedOut;
        known->refused = picture;
        known->refusedUntil = m_clock.elapsed() + (isSilent ? m_times.afterSilence : m_times.afterRefusal);
    }
    take(picture);
}
