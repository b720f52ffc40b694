// Any bytes as a sound file that a client uploads: read for some seconds, and measured.

#include "audio/AudioFileReader.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdlib>

extern "C" {
#include <libavutil/log.h>
}

namespace {

constexpr int maxPieces = 20; // pieces of a second

} // namespace

extern "C" int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/)
{
    av_log_set_level(AV_LOG_QUIET);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("sound"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) ||
        file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size)) !=
            static_cast<qint64>(size)) {
        std::abort();
    }
    file.close();
    AudioFileReader reader;
    if (!reader.open(path)) {
        return 0;
    }
    std::vector<std::int16_t> samples;
    for (int pieces = 0; pieces < maxPieces; ++pieces) {
        samples.clear();
        reader.read(AudioFileReader::sampleRate, samples);
        if (samples.size() > AudioFileReader::sampleRate) {
            std::abort();
        }
        if (samples.empty()) {
            // An end within the limit: measuring the file reads no more than that.
            const auto duration = AudioFileReader::duration(path);
            if (duration && *duration < 1) {
                std::abort();
            }
            break;
        }
    }
    return 0;
}
