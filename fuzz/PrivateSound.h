#pragma once

/**
 * A sound server of this process's own with an output that nobody hears. It ends with the process, however
 * that ends: it lives as long as a pipe to it does.
 */
namespace PrivateSound {

/** Starts the server and points this process at it; prints why and returns false when that fails. */
bool start();

/** Lets the process end without static destructors, which Qt's PulseAudio plug-in cannot always bear; call
 * after that plug-in was loaded. The exit status stays. */
void endWithoutDestructors();

} // namespace PrivateSound
