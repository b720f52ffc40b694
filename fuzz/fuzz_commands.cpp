// Any commands, one after another, into the reference server.

#include "RecordingServer.h"
#include "ServerSession.h"
#include "VariantTree.h"

#include <QCoreApplication>

namespace {

const char* const commands[] = {"AddIPAudio",
                                "UpdateIPAudio",
                                "DeleteIPAudio",
                                "RetrieveIPAudioModel",
                                "AddNetworkAudioGroup",
                                "UpdateNetworkAudioGroup",
                                "DeleteNetworkAudioGroup",
                                "GetNetworkAudioGroup",
                                "AddNetworkAudioSchedule",
                                "UpdateNetworkAudioSchedule",
                                "GetNetworkAudioSchedule",
                                "DeleteFile",
                                "PlayAudio",
                                "PlayGroupAudio",
                                "StopCurrentAudio",
                                "StartTalkToIPAudio",
                                "StopTalkToIPAudio",
                                "StopTalk",
                                "TalkData"};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char* argv[] = {name, nullptr};
    static const QCoreApplication application(argc, argv);
    static RecordingServer server((ServerConfig()));
    FuzzedDataProvider input(data, size);
    ServerSession session(server);
    while (input.remaining_bytes() > 0) {
        session.submit(QString::fromLatin1(input.PickValueInArray(commands)), variantTree(input), nullptr);
    }
    QCoreApplication::processEvents();
    return 0;
}
