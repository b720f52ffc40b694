#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <vector>

/** Messages of WS-Discovery (WS-Discovery 2005/04, as ONVIF Core, clause 7, uses it). */
namespace ProbeMessage {

inline constexpr int maxAnswerBytes = 16 << 10; ///< Of a datagram that is read.
inline constexpr int maxMatches = 16;           ///< That are read of one datagram.
inline constexpr int maxEndpointLength = 256;   ///< Characters of an endpoint's address.

/** A device in an answer. */
struct Match
{
    QString endpoint;         ///< Its lasting address, as "urn:uuid:...".
    QUrl address;             ///< Of its device service, at the sender's own host; empty when there is none.
    bool isElsewhere = false; ///< Whether it named addresses of other hosts only.
    bool isCamera = false;    ///< Whether its types have NetworkVideoTransmitter.
    QString name;             ///< Of its scopes, for people; as the next two.
    QString hardware;         ///< May be empty.
    QString location;         ///< May be empty.
};

/**
 * Makes a probe.
 *
 * @param id    "urn:uuid:..." by which answers name the probe
 * @param type of the devices that shall answer: "dn:NetworkVideoTransmitter" for video, "tds:Device" for all
 * of ONVIF, "wsdp:Device" for those of Devices Profile for Web Services; all for an empty one
 */
QByteArray probe(const QString& id, const QString& type);

/**
 * Reads an answer, which may come from anybody.
 *
 * @param ids    of the probes that it may answer
 * @param sender the host that sent it; only addresses of this host are taken from it
 * @return the devices in it; none for what is no answer to these probes
 */
std::vector<Match> matches(const QByteArray& datagram, const QStringList& ids, const QHostAddress& sender);

} // namespace ProbeMessage
