#pragma once

#include <QString>
#include <QUrl>

#include <optional>

/** Addresses of cameras: those that people type, and those that a camera reports. */
namespace CameraAddress {

/** What an address is for. */
enum Purpose
{
    Service,  ///< Requests, by http or https.
    Stream,   ///< Sound and picture, by rtsp or rtsps.
    Snapshot, ///< A still, by http or https.
};

inline constexpr int maxLength = 2048; ///< Characters of an address.

/**
 * Makes the address of a camera's device service of what a person typed: a host, a host and a port, or a
 * whole http or https address. Without a path it is ONVIF's own, /onvif/device_service.
 *
 * @param error receives what is wrong, without the address
 * @return empty for anything else, and for an address with a user or a password in it
 */
std::optional<QUrl> deviceService(const QString& typed, QString* error);

/**
 * Takes an address that a camera reported. One of its own host stays as it is, but for a login in it, which
 * is removed. A private, loopback or unspecified address of another host is what a camera behind address
 * translation (NAT) reports: the camera's own host takes its place, and for http its port. Any other host is
 * refused, so that a camera cannot make this system send requests and logins to somebody else.
 *
 * @param device the address by which the camera was asked
 * @return empty when it is refused
 */
std::optional<QUrl> reported(const QString& address, const QUrl& device, Purpose purpose);

/** Whether two hosts are the same: as addresses, else as names in any case. */
bool isSameHost(const QString& one, const QString& other);

} // namespace CameraAddress
