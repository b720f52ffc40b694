#pragma once

#include <QtGlobal>

/** The largest values that servers and clients of this protocol take. docs/PROTOCOL.md lists them. */
namespace Limits {

// Records.
inline constexpr int maxNameLength = 128; ///< Characters of a device's, group's, schedule's or file's name.
inline constexpr int maxCredentialLength = 256; ///< Characters of a device's user name, and of its password.
inline constexpr int maxUrlLength = 1024;       ///< Characters of a camera's address that is a URL.
inline constexpr int maxPort = 65535;           ///< Port number of a device.
inline constexpr int maxAddressLength = 253;    ///< Characters of an address, as of a host name in RFC 1123.
inline constexpr int maxListEntries = 10000;    ///< Ids or cameras in one list of a record.
inline constexpr int maxSettingsBytes = 65536;  ///< Bytes of a schedule's settings as JSON.
inline constexpr int maxFileBytes = 32 << 20;   ///< Bytes of an audio file.
inline constexpr int maxProgressPercent = 100;  ///< Percent; the progress of a playback that has ended.

// Lists of all records of a kind, each of which is one reply.
inline constexpr int maxCameras = 10000;     ///< Cameras of the records.
inline constexpr int maxDevices = 10000;     ///< IP audio devices.
inline constexpr int maxGroups = 10000;      ///< Groups of devices.
inline constexpr int maxSchedules = 10000;   ///< Schedules.
inline constexpr int maxFiles = 10000;       ///< Audio files.
inline constexpr int maxWaitingUploads = 64; ///< Uploads that are read at a time, of all clients.
inline constexpr int maxListBytes = 4 << 20; ///< Bytes of the texts of one list.

// Talks.
inline constexpr int maxTargetsLength = 1 << 20;  ///< Characters of "targets".
inline constexpr int maxTalkDataLength = 1 << 16; ///< Characters of "talkData".
inline constexpr int maxTalksPerSession = 4096;   ///< Open talks of one client.
inline constexpr int maxTalkOpeningTime = 30000;  ///< Milliseconds from the request of a talk to its answer.

// Pictures.
inline constexpr int maxPictureBytes = 512 << 10; ///< Bytes of a camera's picture.

// Videos.
inline constexpr int maxVideoUnitBytes = 1 << 20;    ///< Bytes of one access unit, which is one picture.
inline constexpr int maxVideosPerSession = 4;        ///< Cameras that one client watches at once.
inline constexpr int maxVideosAtOnce = 50;           ///< Cameras that all clients watch at once.
inline constexpr int maxWaitingForVideo = 512 << 10; ///< Bytes that wait for a client which still gets video.

// Payloads.
inline constexpr int maxShortPayload =
    65536;                            ///< Size of a payload without a list, see CommandTable::Row::maxSize.
inline constexpr int maxNesting = 16; ///< Lists and maps inside each other.

// Connections.
inline constexpr int maxLoginBytes = 16384;   ///< Bytes of a message before the login; enough for a password.
inline constexpr int maxPasswordBytes = 1024; ///< Bytes of a password or token of a login in UTF-8.
inline constexpr int maxLoginTime = 10000;    ///< Milliseconds from the connection to the login.
inline constexpr int maxIdleTime = 45000;     ///< Milliseconds without a sign of life of the other side.
inline constexpr int maxClients = 256;        ///< Clients that are served at once.
inline constexpr int maxWaitingBytes = 32
                                       << 20; ///< Bytes that wait for a client; a slower one is disconnected.

/**
 * Bytes of a message to a server, after the login: the largest file in Base64 with what is around it. A
 * server holds one for each client at once, so there is no room to spare.
 */
inline constexpr int maxMessageToServerBytes = 48 << 20;

/**
 * Bytes of a message to a client. A client has one server and must take its list of records whole, however
 * many a server keeps: the limit only bounds memory. The reference server never sends as much, because of
 * maxListBytes. All its lists together stay below maxWaitingBytes.
 */
inline constexpr int maxMessageToClientBytes = 256 << 20;

} // namespace Limits
