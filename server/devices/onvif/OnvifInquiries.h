#pragma once

#include "onvif/CameraAbilities.h"
#include "server/devices/CameraBackend.h"
#include "server/devices/onvif/OnvifConfig.h"

#include <QObject>

#include <optional>

struct CameraAbilities;

/**
 * Looks for cameras, and asks them what they can do, for a back end. All calls are on the server's thread.
 */
class OnvifInquiries : public QObject
{
public:
    /** Does nothing yet. */
    explicit OnvifInquiries(const OnvifConfig& config);

    /** Returns what clients are told of what a camera says that it can do, and this server with it. */
    static CameraReport reportOf(const CameraRecord& camera, const CameraAbilities& abilities);

    /** Searches once; what a call during a search takes is what that search finds. */
    void find(const CameraBackend::TakeFound& take);

    /** Asks one camera. */
    void ask(const CameraRecord& camera, const CameraBackend::TakeReport& take);

    /**
     * Returns the address of a camera's device service: the one that its record has, else, for the URL of a
     * stream, the usual one at its host.
     *
     * @param port  of the usual one
     * @param error says what is wrong with the address, for people
     */
    static std::optional<QUrl> deviceService(const QString& address, int port, QString* error);

    /**
     * Says why a camera could not be asked, or not all; empty without an error. A camera that is no ONVIF
     * camera, or has its device service elsewhere, may well be online.
     *
     * @param camera that was asked
     */
    static QString errorOf(const CameraRecord& camera, const CameraAbilities& abilities);

private:
    void finishSearch(const FoundCameras& found);

    OnvifSearch m_search;
    int m_servicePort;
    OnvifDiscovery m_discovery;
    QList<CameraBackend::TakeFound> m_waiting; ///< For the search.
};
