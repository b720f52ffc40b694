#pragma once

#include "onvif/CameraAbilities.h"
#include "onvif/OnvifAnswers.h"
#include "onvif/SoapClient.h"

#include <QObject>
#include <QTimer>
#include <QUrl>

#include <functional>
#include <optional>

/**
 * Asks a camera what it can do, before anybody talks to it.
 *
 *   GetSystemDateAndTime ─▶ GetServices ─────▶ GetDeviceInformation ─▶ GetProfiles ─▶ GetStreamUri ...
 *   (the clock of the       └▶ GetCapabilities                         (media2, else media)
 *    login)
 *   ... ─▶ audio sources ─▶ audio outputs ─▶ decoder options ─▶ encoders ─▶ GetSnapshotUri ─▶ abilitiesKnown
 *
 * One question at a time, each with a time limit and all together with one, too. All requests go to the host
 * of the given address, whatever the camera answers. Used on the thread that made it.
 */
class OnvifDevice : public QObject
{
    Q_OBJECT

public:
    /** How it is asked. */
    struct Options
    {
        int question = 3000;         ///< Time limit of one question, ms.
        int all = 10000;             ///< Of all questions of askAbilities, ms.
        bool anyCertificate = false; ///< Whether https takes one that this system does not trust.
    };

    static constexpr int maxStreams = 4; ///< Profiles whose stream's address is asked for.

    /**
     * @param address of the device service, see CameraAddress::deviceService; chosen by a person or a record.
     *                An address that only a probe named is given together with a login only when a person
     *                wants it so
     * @param login   without a user, nothing that wants a login is answered
     */
    OnvifDevice(const QUrl& address, const OnvifLogin& login, const Options& options,
                QObject* parent = nullptr);
    /** The same with the usual options. */
    OnvifDevice(const QUrl& address, const OnvifLogin& login, QObject* parent = nullptr);

    /** Asks all; abilitiesKnown follows. Gives up what was asked before. */
    void askAbilities();

    /** Asks for the time alone, which needs no login; presenceKnown follows. Gives up what was asked before.
     */
    void askPresence();

Q_SIGNALS:
    /** All is asked, or the camera cannot be asked. The receiver may delete the object. */
    void abilitiesKnown(const CameraAbilities& abilities);

    /**
     * The camera has answered, or not. The receiver may delete the object.
     *
     * @param online whether an ONVIF camera answered, if only to refuse
     * @param error  why there was no answer
     */
    void presenceKnown(bool online, OnvifError error);

private:
    /** What is to be done with the body of an answer; null when there was an error. */
    using Use = std::function<void(const XmlElement* body, const SoapAnswer& answer)>;

    void askDevice(const char* request, const QString& inside, bool withLogin, const Use& use);
    void askMedia(const char* request, const QString& inside, const Use& use);

    void askTime();
    void askServices();
    void askCapabilities();
    bool useServices(const OnvifAnswers::Services& services);
    void askInformation();
    void askProfiles();
    void askStream(std::size_t index);
    void askSources();
    void askOutputs();
    void askDecoders();
    void askEncoders();
    void askSnapshot();
    void judge();
    void judgeVoice();
    void judgeLoudspeaker();
    void finish(OnvifError error, const QString& detail = QString());

    const QUrl m_address;
    SoapClient m_client;
    QTimer m_timer;                                ///< Of all questions.
    QUrl m_media;                                  ///< Empty for a camera without the service.
    QUrl m_media2;                                 ///< The same.
    MediaService m_service = MediaService::Media2; ///< The one that is asked.
    bool m_profilesKnown = false;
    std::optional<int> m_sources; ///< Of sound; empty when the camera did not say.
    std::optional<int> m_outputs; ///< The same.
    CameraAbilities m_abilities;
};
