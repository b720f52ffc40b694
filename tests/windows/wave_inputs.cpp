// How many microphones Windows has, as the exit status. What Wine lists besides does not count: its default
// device, which is always there, and the monitors of outputs.

#include <windows.h>

#include <mmsystem.h>

#include <string>

int main()
{
    int microphones = 0;
    for (UINT i = 0; i < waveInGetNumDevs(); ++i) {
        WAVEINCAPSA caps{};
        if (waveInGetDevCapsA(i, &caps, sizeof(caps)) != MMSYSERR_NOERROR) {
            continue;
        }
        const std::string name = caps.szPname;
        if (name != "PulseAudio" && name.rfind("Monitor of", 0) != 0) {
            ++microphones;
        }
    }
    return microphones;
}
