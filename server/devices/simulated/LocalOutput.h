#pragma once

#include <QAudioOutput>

#include <cstdint>
#include <memory>
#include <vector>

/** The machine's own sound output, for simulated speakers that are to be heard. Silent where there is none.
 */
class LocalOutput
{
public:
    /** @param sampleRate Hz, mono */
    explicit LocalOutput(int sampleRate);
    ~LocalOutput();

    /** Queues samples; what does not fit the output's buffer is dropped. */
    void play(const std::vector<std::int16_t>& samples);

private:
    std::unique_ptr<QAudioOutput> m_output;
    QIODevice* m_stream = nullptr; ///< Owned by the output.
};
