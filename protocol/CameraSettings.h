#pragma once

#include <QString>

/** How the RTP packets of a talk reach a camera. */
enum class CameraTransport
{
    Tcp, ///< Inside the RTSP connection (RFC 2326, clause 10.12).
    Udp, ///< Datagrams of their own.
};

/** What can be set for one camera of the records. The defaults suit most cameras. */
struct CameraSettings
{
    CameraTransport transport = CameraTransport::Tcp; ///< Of both directions.
    int packetTime = 20;         ///< ms of sound in a packet to the camera: 20, 40 or 80.
    QString talkCodec;           ///< RTP name of the codec to the camera, as "PCMA"; empty: as offered.
    int readinessDelay = 0;      ///< ms from the open line to its first packet.
    bool evenPace = false;       ///< Packets leave one packet time apart, however they come.
    bool halfDuplex = false;     ///< The camera is not heard while somebody talks to it.
    bool noDelay = true;         ///< TCP_NODELAY on the connection.
    int dscp = 46;               ///< Differentiated services code point of what is sent, 0 to 63; RFC 3246.
    int openTimeout = 10 * 1000; ///< ms until a talk that does not open is refused.
    bool severalTalks = false;   ///< Several clients may talk to it at a time.
    bool anyCertificate = false; ///< With rtsps, a certificate that nobody known has signed will do.

    static constexpr int maxReadinessDelay = 10 * 1000; ///< ms
    static constexpr int minOpenTimeout = 1000;         ///< ms
    static constexpr int maxOpenTimeout = 25 * 1000;    ///< ms
    static constexpr int maxDscp = 63;                  ///< RFC 2474

    /** Compares all settings. */
    bool operator==(const CameraSettings& other) const
    {
        return transport == other.transport && packetTime == other.packetTime &&
               talkCodec == other.talkCodec && readinessDelay == other.readinessDelay &&
               evenPace == other.evenPace && halfDuplex == other.halfDuplex && noDelay == other.noDelay &&
               dscp == other.dscp && openTimeout == other.openTimeout &&
               anyCertificate == other.anyCertificate && severalTalks == other.severalTalks;
    }
    /** Returns the opposite. */
    bool operator!=(const CameraSettings& other) const { return !(*this == other); }
};
