#pragma once

#include <cstdint>

/** The codes with which this library's functions answer. */
namespace framesmith {

enum Code : std::int32_t
{
    Success = 0,
    InvalidArgument = -1,
    InvalidHandle = -2,      ///< Null, stale, or a handle of another kind.
    UnsupportedVersion = -3, ///< FrameSmith_Initial was asked for another interface.
    WrongState = -4,         ///< Out of order: a second start, a stop without one, an open channel.
    NoInputDevice = -5,      ///< No microphone, or it does not open.
    CodecFailed = -6,
    BufferTooSmall = -7,
    WrongThread = -8, ///< A stop or delete from inside of the packet callback would wait for itself.
    FileFailed = -9,  ///< The file in the microphone's place does not open.
};

} // namespace framesmith
