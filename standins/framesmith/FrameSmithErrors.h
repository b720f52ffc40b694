#pragma once

#include <cstdint>

/** The stand-in for the capture library. */
namespace framesmith {

/** Results of this library's functions. */
enum Code : std::int32_t
{
    Success = 0,             ///< Done.
    InvalidArgument = -1,    ///< A null pointer, or a value out of its range.
    InvalidHandle = -2,      ///< Null, stale, or a handle of another kind.
    UnsupportedVersion = -3, ///< FrameSmith_Initial was asked for another interface.
    WrongState = -4,         ///< Out of order: a second start, a stop without one, an open channel.
    NoInputDevice = -5,      ///< No microphone, or it does not open.
    CodecFailed = -6,        ///< The encoder failed.
    BufferTooSmall = -7,     ///< The packet does not fit into the caller's buffer.
    WrongThread = -8,        ///< A stop or delete from inside the packet callback would wait for itself.
    FileFailed = -9,         ///< The file that replaces the microphone does not open.
};

} // namespace framesmith
