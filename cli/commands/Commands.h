#pragma once

#include "cli/Command.h"

/**
 * @file
 * The commands of voicedesk, by kind.
 */

std::vector<Command> talkCommands();       ///< Returns the talk to a camera.
std::vector<Command> cameraCommands();     ///< Returns lists and changes of cameras.
std::vector<Command> cameraTestCommands(); ///< Returns the test of a camera.
std::vector<Command> cameraFindCommands(); ///< Returns what finds cameras of the network.
std::vector<Command> cameraAskCommands();  ///< Returns what asks one what it can do.
std::vector<Command> deviceCommands();     ///< Returns lists and changes of IP audio devices.
std::vector<Command> fileCommands();       ///< Returns lists and changes of audio files.
std::vector<Command> groupCommands();      ///< Returns lists and changes of groups.
std::vector<Command> scheduleCommands();   ///< Returns lists and changes of schedules.
std::vector<Command> playCommands();       ///< Returns start and stop of playbacks.
std::vector<Command> sayCommands();        ///< Returns the talk to IP audio devices.
std::vector<Command> microphoneCommands(); ///< Returns the list of microphones.
std::vector<Command> serveCommands();      ///< Returns the server for other processes.

/** All of them, in the order of the help. */
inline constexpr std::vector<Command> (*commandKinds[])() = {
    talkCommands,   cameraCommands,     cameraTestCommands, cameraFindCommands, cameraAskCommands,
    deviceCommands, fileCommands,       groupCommands,      scheduleCommands,   playCommands,
    sayCommands,    microphoneCommands, serveCommands,
};
