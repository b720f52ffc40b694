#pragma once

#include <QByteArray>
#include <QHostAddress>
#include <QString>
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
 * @param types of the devices that shall answer: "dn:NetworkVideoTransmitter"; all for an empty one
 */
QByteArray probe(const QString& id, const QString& types);

/**
 * Reads an answer, which may come from anybody.
 *
 * @param sender the host that sent it, without a doubt or not: only addresses of this host are taken from it
 * @return the devices in it; none for what is no answer to this probe
 */
std::vector<Match> matches(const QByteArray& datagram, const QString& id, const QHostAddress& sender);

} // namespace ProbeMessage
