// Asks a camera by a library that nobody of this project wrote: address, user and password are the arguments.

#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include <onvif.h>

namespace {

template<std::size_t N>
void copy(char (&to)[N], const char* from)
{
    std::snprintf(to, N, "%s", from);
}

int say(const char* what, int status, const char* text)
{
    std::printf("%s %d %s\n", what, status, text);
    return status;
}

} // namespace

int main(int count, char** words)
{
    if (count != 4) {
        return 1;
    }
    const auto camera = std::make_unique<OnvifData>();
    std::memset(camera.get(), 0, sizeof(OnvifData));
    copy(camera->xaddrs, words[1]);
    copy(camera->device_service, "POST /onvif/device_service HTTP/1.1\r\n"); // as the library keeps it
    copy(camera->username, words[2]);
    copy(camera->password, words[3]);
    int failures = say("time", getTimeOffset(camera.get()), "");
    failures += say("capabilities", getCapabilities(camera.get()), camera->last_error);
    failures += say("profile", getProfileToken(camera.get(), 1), camera->profileToken);
    failures += say("stream", getStreamUri(camera.get()), camera->stream_uri);
    return failures == 0 ? 0 : 2;
}
