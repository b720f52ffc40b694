#pragma once

/** Values of "audioStatus" in an entry of the list of audio files. */
enum class AudioStatus
{
    Uploading = 1,            ///< Given by the client, until the server has answered.
    Ready = 2,                ///< Given by the server: the file can be played.
    RefusedWithOutput = 4,    ///< Given by the client: refused by the server.
    RefusedWithoutOutput = 5, ///< As RefusedWithOutput, on a client without a sound output.
};
