#pragma once

/** The exit statuses of voicedesk, which its --help lists. */
enum ExitStatus
{
    ExitSuccess = 0,          ///< Done.
    ExitUsage = 1,            ///< Wrong arguments.
    ExitPluginFailed = 2,     ///< The plug-in does not load.
    ExitMicrophoneFailed = 3, ///< The microphone, or the file in its place, does not open.
    ExitRefused = 4,          ///< The server refused a command.
    ExitNoAnswer = 5,         ///< The server did not answer, or there is no connection to it.
    ExitTalkLost = 6,         ///< The talk was ended by the server.
    ExitNothingSent = 7,      ///< The talk ended without a packet.
    ExitServerFailed = 8,     ///< The server does not start.
    ExitOutputFailed = 9,     ///< Standard output cannot be written.
    ExitNotHeard = 10,        ///< A camera is heard, but not the tone that it was sent.
};
