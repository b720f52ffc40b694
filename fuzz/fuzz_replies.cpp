// Any replies and events, one after another, into the plug-in.

#include "PluginVoiceDesk.h"
#include "VariantTree.h"

#include <FrameworkWrapperBase.h>

#include <QSortFilterProxyModel>

namespace {

class Host : public FrameworkWrapperBase
{
public:
    virtual ~Host() = default;
    void reservedOperation() override {}
    bool SendCommand(void*, const QString&, const QString&, const QVariant&, void*, bool,
                     const QString&) override
    {
        return true;
    }
};

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
                                "DeleteNetworkAudioSchedule",
                                "GetNetworkAudioSchedule",
                                "GetAudioFile",
                                "UploadFile",
                                "DeleteFile",
                                "PlayAudio",
                                "PlayGroupAudio",
                                "StopCurrentAudio",
                                "StartTalk",
                                "StartTalkToIPAudio",
                                "StopTalk",
                                "StopTalkToIPAudio",
                                "TalkData",
                                "Nothing"};
const char* const codes[] = {"0", "-2", "1", ""};
const char* const events[] = {"TalkDisconnected", "PlayAudioFailed", "AudioReceived", "Nothing"};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    FuzzedDataProvider input(data, size);
    Host host;
    PluginVoiceDesk plugin;
    plugin.InitialPluginBase(nullptr, nullptr, &host);
    plugin.getIPAudioModel(&plugin);
    plugin.getNetworkAudioGroupModel(&plugin);
    plugin.getNetworkAudioScheduleModel(&plugin);
    while (input.remaining_bytes() > 0) {
        switch (input.ConsumeIntegralInRange(0, 3)) {
        case 0:
            plugin.EventProcessor(QString::fromLatin1(input.PickValueInArray(events)), 0, 0, 0,
                                  variantTree(input), QString());
            break;
        case 1:
            plugin.queryBindingIPAudio(QString::fromStdString(input.ConsumeRandomLengthString(10)));
            plugin.deleteAudioFile(input.ConsumeIntegral<int>());
            break;
        default:
            plugin.CommandProcessor(QString::fromLatin1(input.PickValueInArray(commands)), variantTree(input),
                                    nullptr, QString::fromLatin1(input.PickValueInArray(codes)), QString(),
                                    false, QString());
        }
    }
    return 0;
}
