#pragma once

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

/** The options of the test camera's command line. */
class TestCameraOptions
{
public:
    /** Takes a command line. Returns what is wrong with it; empty when nothing is. */
    std::string parse(int argc, char** argv)
    {
        for (int i = 1; i < argc; ++i) {
            const std::string word = argv[i];
            const auto row = std::find_if(table.begin(), table.end(),
                                          [&](const Row& each) { return word == "--" + each.name; });
            if (row == table.end()) {
                return "unknown option: " + word;
            }
            if (!row->value.empty() && i + 1 == argc) {
                return "no value: " + word;
            }
            m_values[row->name] = row->value.empty() ? "" : argv[++i];
        }
        return std::string();
    }

    static void printUsage()
    {
        std::puts(
            "usage: test_camera [options]\n\n"
            "A camera with a loudspeaker at rtsp://127.0.0.1:PORT/talk. It ends when its standard input "
            "ends.\n");
        for (const Row& row : table) {
            std::printf("  %-26s%s\n", ("--" + row.name + " " + row.value).c_str(), row.meaning.c_str());
        }
    }

    bool has(const char* name) const { return m_values.count(name) != 0; }
    std::string text(const char* name, const char* fallback = "") const
    {
        const auto found = m_values.find(name);
        return found == m_values.end() ? fallback : found->second;
    }
    int number(const char* name, int fallback = 0) const
    {
        return has(name) ? std::atoi(text(name).c_str()) : fallback;
    }

private:
    struct Row
    {
        std::string name;
        std::string value; ///< Empty for a switch.
        std::string meaning;
    };

    inline static const std::array<Row, 22> table{{
        {"port", "NUMBER", "where it listens; without it a free port, which the first line names"},
        {"codec", "NAME", "of its voice, and of what it hears"},
        {"back-codec", "NAME", "of what it hears alone"},
        {"voice", "KIND", "echo (without it), tone, silent, or mute: nothing after the first packets"},
        {"jitter", "MS", "its jitter buffer"},
        {"transport", "NAME", "tcp or udp alone"},
        {"user", "NAME", "a login, with --password"},
        {"password", "TEXT", ""},
        {"auth", "METHOD", "digest (without it) or basic"},
        {"certificate", "FILE", "TLS"},
        {"record", "FILE", "what it hears, samples of 16 bits"},
        {"log", "FILE", "a line for each packet: microseconds, timestamp, bytes, marker"},
        {"video", "FILE", "H.264 with start codes, which it shows over and over"},
        {"video-rate", "NUMBER", "its pictures a second"},
        {"slow-describe", "MS", "before DESCRIBE is answered"},
        {"refuse-describe", "STATUS", "an RTSP status"},
        {"refuse-setup", "STATUS", ""},
        {"refuse-play", "STATUS", ""},
        {"video-first", "", "its video is described before its voice"},
        {"no-backchannel", "", "it has no loudspeaker"},
        {"hides-backchannel", "", "it does not describe its loudspeaker"},
        {"help", "", "prints this"},
    }};

    std::map<std::string, std::string> m_values;
};
