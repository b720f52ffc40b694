#pragma once

#include "cli/commands/CommandArguments.h"

#include <QString>
#include <QVariantMap>

#include <optional>
#include <vector>

/** The login and the settings of a camera as options of commands. Errors are printed. */
namespace CameraOptions {

/** Returns the options of a new camera: its login, and a setting each. */
std::vector<CommandOption> options();

/** Returns the settings that are given, as "camSettings"; empty for a value that makes no sense. */
std::optional<QVariantMap> settings(const CommandArguments& arguments);

/** Returns the settings of a record that are not the defaults, as the options have them: "packet-time 40". */
QString otherThanUsual(const QVariantMap& settings);

/** Returns whether a setting is given. */
bool hasSettings(const CommandArguments& arguments);

/** Returns whether a text can only be the address of a camera: a URL, an IP address, or a host and a port. */
bool isAddress(const QString& text);

/**
 * Returns whether a name may be that of a camera in the records of the default folder: it is no address, no
 * option names other records, and the folder is there.
 */
bool mayBeRecord(const CommandArguments& arguments, const QString& text);

/** Returns whether an address has no login in it, which others could read; prints an error otherwise. */
bool hasNoLogin(const CommandArguments& arguments, const QString& address);

/**
 * Reads the password of a camera: of the variable VOICEDESK_CAMERA_SECRET, or from the terminal.
 *
 * @param user and @p address of the camera, for the question
 * @return empty when there is none
 */
std::optional<QString> password(const CommandArguments& arguments, const QString& user,
                                const QString& address);

/** Puts the login of --camera-user into a record; false without its password. */
bool addLogin(const CommandArguments& arguments, const QString& address, QVariantMap* record);

} // namespace CameraOptions
