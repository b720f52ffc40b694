#include "bench/relay/MumbleClient.h"

#include <array>
#include <cstring>
#include <stdexcept>

namespace {

// Types of messages of the control channel.
constexpr unsigned versionMessage = 0;
constexpr unsigned tunnelMessage = 1;
constexpr unsigned authenticateMessage = 2;
constexpr unsigned rejectMessage = 4;
constexpr unsigned serverSyncMessage = 5;

constexpr std::size_t headerBytes = 6; // u16 type, u32 length, big endian
constexpr unsigned opusToLoopback = 4U << 5U | 31U;

std::string bigEndian(std::uint32_t value, unsigned bytes)
{
    std::string made;
    while (bytes-- != 0) {
        made += static_cast<char>(value >> (8U * bytes));
    }
    return made;
}

/** A number below 2^28 as voice packets have them. */
std::string voiceNumber(std::uint32_t value)
{
    if (value < 0x80) {
        return bigEndian(value, 1);
    }
    if (value < 0x4000) {
        return bigEndian(value | 0x8000U, 2);
    }
    return value < 0x200000 ? bigEndian(value | 0xC00000U, 3) : bigEndian(value | 0xE0000000U, 4);
}

} // namespace

MumbleClient::MumbleClient(std::uint16_t port, SSL_CTX* tls, Listener& listener, unsigned number)
    : RelayClient(port, tls, listener)
{
    using namespace std::string_literals;
    const std::string name = "talker" + std::to_string(number);
    // Fields of Protocol Buffers: version = 1.3.4; user name, opus = true.
    sendMessage(versionMessage, "\x08\x84\x86\x04"s);
    sendMessage(authenticateMessage, "\x0A"s + static_cast<char>(name.size()) + name + "\x28\x01"s);
    waitFor([this] { return m_welcome; });
}

/** There is nothing to be opened: a client talks as it likes. */
void MumbleClient::openTalk(std::uint32_t) {}

void MumbleClient::sendPacket(std::uint32_t talk, std::uint32_t packet)
{
    std::array<char, packetBytes> sound{};
    std::memcpy(sound.data(), &talk, sizeof(talk));
    std::memcpy(sound.data() + sizeof(talk), &packet, sizeof(packet));
    std::string body(1, static_cast<char>(opusToLoopback));
    body += voiceNumber(m_sequence++);
    body += voiceNumber(packetBytes);
    body.append(sound.data(), sound.size());
    sendMessage(tunnelMessage, body);
}

void MumbleClient::sendMessage(unsigned type, std::string_view body)
{
    std::string message = bigEndian(type, 2) + bigEndian(static_cast<std::uint32_t>(body.size()), 4);
    message += body;
    socket().send(message);
}

void MumbleClient::takeMessages()
{
    for (;;) {
        const std::string_view bytes = socket().received();
        if (bytes.size() < headerBytes) {
            return;
        }
        const auto at = [&bytes](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
        const unsigned type = static_cast<unsigned>(at(0)) << 8U | at(1);
        const std::size_t size =
            std::size_t{at(2)} << 24U | std::size_t{at(3)} << 16U | std::size_t{at(4)} << 8U | at(5);
        if (bytes.size() - headerBytes < size) {
            return;
        }
        const std::string_view body = bytes.substr(headerBytes, size);
        if (type == rejectMessage) {
            throw std::runtime_error("mumble-server refuses a client");
        }
        m_welcome = m_welcome || type == serverSyncMessage;
        if (type == tunnelMessage && size > packetBytes) {
            std::uint32_t talk = 0;
            std::uint32_t packet = 0;
            const char* sound = body.data() + size - packetBytes;
            std::memcpy(&talk, sound, sizeof(talk));
            std::memcpy(&packet, sound + sizeof(talk), sizeof(packet));
            listener().echoed(talk, packet);
        }
        socket().take(headerBytes + size);
    }
}
