#pragma once

/** The exit statuses of voicedesk; its --help tells them. */
enum ExitStatus
{
    ExitSuccess = 0,
    ExitUsage = 1,
    ExitPluginFailed = 2,
    ExitMicrophoneFailed = 3,
    ExitRefused = 4,
    ExitNoAnswer = 5,
    ExitTalkLost = 6,
    ExitNothingSent = 7,
    ExitServerFailed = 8,
};
