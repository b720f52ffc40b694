#pragma once

#include "audio/PcmConverter.h"
#include "standins/framesmith/CaptureSource.h"
#include "standins/framesmith/PacketClock.h"

#include <QString>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

struct sf_private_tag;

namespace framesmith {

/** A sound file in place of a microphone: it is played once, in real time, and silence follows. */
class WaveFileSource : public CaptureSource
{
public:
    /** @param path opened by start */
    explicit WaveFileSource(QString path);
    ~WaveFileSource() override;

    Code start() override;
    bool read(std::int16_t* samples, std::size_t count) override;
    void stop() override;

private:
    /** Decodes until @p count samples are ready or the file has ended. */
    void fill(std::size_t count);

    QString m_path;
    sf_private_tag* m_file = nullptr;
    bool m_reads16Bit = false;
    std::unique_ptr<PcmConverter> m_converter;
    std::vector<std::int16_t> m_ready;
    std::vector<char> m_input;
    std::optional<PacketClock> m_clock;
    std::uint64_t m_packets = 0;

    std::mutex m_mutex;
    std::condition_variable m_stopCondition;
    bool m_stopped = false;
};

} // namespace framesmith
