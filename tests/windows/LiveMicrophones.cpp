// Qt's sound plug-in asks waveInGetNumDevs how many microphones there are. Here it is made to ask this file
// instead, which knows from a child process.

#include "tests/windows/LiveMicrophones.h"

#include <QAudioDeviceInfo>
#include <QCoreApplication>
#include <QDir>
#include <QProcess>

#include <atomic>
#include <cstring>
#include <stdexcept>
#include <thread>

#include <windows.h>

namespace {

std::atomic<unsigned> microphones{0};

UINT WINAPI numberOfMicrophones()
{
    return microphones;
}

/** The place where a library keeps the address of a function that it imports; null without one. */
void** importOf(HMODULE library, const char* function)
{
    auto* base = reinterpret_cast<char*>(library);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const auto& directory = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    const auto* imports = reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(base + directory.VirtualAddress);
    for (; imports->Name != 0; ++imports) {
        const auto* names = reinterpret_cast<const IMAGE_THUNK_DATA*>(base + imports->OriginalFirstThunk);
        auto* addresses = reinterpret_cast<IMAGE_THUNK_DATA*>(base + imports->FirstThunk);
        for (; names->u1.AddressOfData != 0; ++names, ++addresses) {
            if (IMAGE_SNAP_BY_ORDINAL(names->u1.Ordinal)) {
                continue;
            }
            const auto* import =
                reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(base + names->u1.AddressOfData);
            if (std::strcmp(reinterpret_cast<const char*>(import->Name), function) == 0) {
                return reinterpret_cast<void**>(&addresses->u1.Function);
            }
        }
    }
    return nullptr;
}

void replace(void** place, void* function)
{
    DWORD before = 0;
    VirtualProtect(place, sizeof(void*), PAGE_READWRITE, &before);
    *place = function;
    VirtualProtect(place, sizeof(void*), before, &before);
}

} // namespace

struct LiveMicrophones::Private
{
    void** place = nullptr;
    void* original = nullptr;
    std::atomic<bool> ending{false};
    std::thread watcher;

    void watch() const
    {
        while (!ending) {
            QProcess probe;
            probe.start(QDir(QStringLiteral(TESTS_DIR)).filePath(QStringLiteral("wave_inputs.exe")),
                        QStringList());
            if (probe.waitForFinished() && probe.exitStatus() == QProcess::NormalExit) {
                microphones = static_cast<unsigned>(probe.exitCode());
            }
        }
    }
};

LiveMicrophones::LiveMicrophones() : m_private(std::make_unique<Private>())
{
    QAudioDeviceInfo::availableDevices(QAudio::AudioInput); // loads the plug-in
    const HMODULE plugin = GetModuleHandleA("qtaudio_windows.dll");
    m_private->place = plugin != nullptr ? importOf(plugin, "waveInGetNumDevs") : nullptr;
    if (m_private->place == nullptr) {
        throw std::runtime_error("Qt's sound plug-in does not ask waveInGetNumDevs");
    }
    m_private->original = *m_private->place;
    replace(m_private->place, reinterpret_cast<void*>(&numberOfMicrophones));
    m_private->watcher = std::thread([this] { m_private->watch(); });
}

LiveMicrophones::~LiveMicrophones()
{
    m_private->ending = true;
    m_private->watcher.join();
    replace(m_private->place, m_private->original);
}

int LiveMicrophones::count() const
{
    return static_cast<int>(microphones);
}
