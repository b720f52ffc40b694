#include "cli/commands/CommandArguments.h"
#include "cli/commands/Commands.h"
#include "cli/commands/Table.h"
#include "client/ExitStatus.h"

#include <QAudioDeviceInfo>
#include <QSet>

#include <cstdio>

namespace {

int listMicrophones(const CommandArguments& arguments)
{
    const QString defaultName = QAudioDeviceInfo::defaultInputDevice().deviceName();
    Table table({{"name", "name"}, {"default", "default"}});
    QSet<QString> listed;
    const auto inputs = QAudioDeviceInfo::availableDevices(QAudio::AudioInput);
    for (const QAudioDeviceInfo& input : inputs) {
        const QString name = input.deviceName();
        if (!name.isEmpty() && !listed.contains(name)) { // several sound systems may list one device
            listed.insert(name);
            table.add({name, name == defaultName});
        }
    }
    std::fputs(qUtf8Printable(table.text(arguments.json())), stdout);
    return ExitSuccess;
}

} // namespace

std::vector<Command> microphoneCommands()
{
    return {{"microphones",
             "",
             "list the names for --microphone",
             "",
             {jsonOption},
             Command::Nothing,
             listMicrophones}};
}
