#include "bench/relay/DeskClient.h"

#include "audio/PacketHeader.h"
#include "bench/relay/Cbor.h"
#include "protocol/ReturnCode.h"
#include "protocol/WireMessage.h"
#include "protocol/Words.h"
#include "src/vocabulary/StreamType.h"

#include <openssl/evp.h>

#include <array>
#include <chrono>
#include <stdexcept>

namespace {

// The keys of a message (docs/PROTOCOL.md).
enum Key
{
    VersionKey = 0,
    KindKey = 1,
    IdKey = 2,
    NameKey = 3,
    SecretKey = 4,
    PayloadKey = 5,
    CodeKey = 6,
    TextKey = 7,
};

// RFC 6455, 5.2.
constexpr unsigned binaryFrame = 2;
constexpr unsigned closeFrame = 8;
constexpr unsigned pingFrame = 9;
constexpr unsigned pongFrame = 10;
constexpr unsigned finalFragment = 0x80;
constexpr unsigned masked = 0x80;
constexpr std::array<char, 4> mask{'\x5A', '\x11', '\x7C', '\x3E'}; // hides nothing on loopback

// The number of a command says which packet it carries.
constexpr unsigned packetBits = 20;
constexpr std::uint32_t openingRequest = 1;

constexpr char silence = '\x7F'; // of G.711 mu-law

std::uint32_t requestOf(std::uint32_t talk, std::uint32_t packet)
{
    return (talk + 1) << packetBits | packet;
}

std::string word(const QString& text)
{
    return text.toStdString();
}

/** A talk packet in Base64. */
std::string talkData(std::uint32_t packet)
{
    PacketHeader header;
    header.channels = 1;
    header.streamType = StreamType::G711MuLaw;
    header.sampleRate = 8000;
    header.position = packet * RelayClient::packetSamples;
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    header.captureTime =
        static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(now).count());
    const auto bytes = header.toBytes();
    std::array<unsigned char, RelayClient::packetBytes> whole{};
    whole.fill(static_cast<unsigned char>(silence));
    std::copy(bytes.begin(), bytes.end(), whole.begin());
    std::string text(whole.size() / 3 * 4 + 1, '\0'); // and a terminator
    text.resize(static_cast<std::size_t>(EVP_EncodeBlock(reinterpret_cast<unsigned char*>(text.data()),
                                                         whole.data(), static_cast<int>(whole.size()))));
    return text;
}

} // namespace

const std::string DeskClient::user = "talker";
const std::string DeskClient::password = "relay";

DeskClient::DeskClient(std::uint16_t port, SSL_CTX* tls, Listener& listener)
    : RelayClient(port, tls, listener)
{
    shakeHands();
    std::string login;
    Cbor::appendHead(login, Cbor::Map, 4);
    Cbor::appendNumber(login, VersionKey);
    Cbor::appendNumber(login, WireMessage::version);
    Cbor::appendNumber(login, KindKey);
    Cbor::appendNumber(login, WireMessage::Login);
    Cbor::appendNumber(login, NameKey);
    Cbor::appendText(login, user);
    Cbor::appendNumber(login, SecretKey);
    Cbor::appendText(login, password);
    sendFrame(binaryFrame, login);
    waitFor([this] { return m_welcome; });
}

void DeskClient::shakeHands()
{
    socket().send("GET / HTTP/1.1\r\nHost: localhost\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                  "Sec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nSec-WebSocket-Version: 13\r\n\r\n");
    constexpr std::string_view end = "\r\n\r\n";
    std::size_t found = std::string_view::npos;
    while ((found = socket().received().find(end)) == std::string_view::npos) {
        socket().waitAndReceive();
    }
    socket().take(found + end.size());
}

void DeskClient::openTalk(std::uint32_t talk)
{
    static const std::string camera = "camera-1";
    std::string payload;
    Cbor::appendHead(payload, Cbor::Map, 2);
    Cbor::appendText(payload, word(Vocabulary::camId));
    Cbor::appendText(payload, camera);
    Cbor::appendText(payload, word(Vocabulary::relayPath));
    Cbor::appendText(payload, "");
    m_opened.clear();
    sendCommand(openingRequest, word(Vocabulary::StartTalk), payload);
    waitFor([this] { return !m_opened.empty(); });
    m_talks.emplace(m_opened, talk);
    m_targets.emplace(talk, "<Dest>" + m_opened + "</Dest>");
}

void DeskClient::sendPacket(std::uint32_t talk, std::uint32_t packet)
{
    static const std::string command = word(Vocabulary::TalkData);
    static const std::string targets = word(Vocabulary::targets);
    static const std::string sequence = word(Vocabulary::sequence);
    static const std::string data = word(Vocabulary::talkData);
    std::string payload;
    Cbor::appendHead(payload, Cbor::Map, 3);
    Cbor::appendText(payload, targets);
    Cbor::appendText(payload, m_targets.at(talk));
    Cbor::appendText(payload, sequence);
    Cbor::appendNumber(payload, packet + 1);
    Cbor::appendText(payload, data);
    Cbor::appendText(payload, talkData(packet));
    sendCommand(requestOf(talk, packet), command, payload);
}

void DeskClient::sendCommand(std::uint32_t request, std::string_view name, std::string_view payload)
{
    std::string message;
    Cbor::appendHead(message, Cbor::Map, 5);
    Cbor::appendNumber(message, VersionKey);
    Cbor::appendNumber(message, WireMessage::version);
    Cbor::appendNumber(message, KindKey);
    Cbor::appendNumber(message, WireMessage::Command);
    Cbor::appendNumber(message, IdKey);
    Cbor::appendNumber(message, request);
    Cbor::appendNumber(message, NameKey);
    Cbor::appendText(message, name);
    Cbor::appendNumber(message, PayloadKey);
    message += payload;
    sendFrame(binaryFrame, message);
}

void DeskClient::sendFrame(unsigned opcode, std::string_view payload)
{
    constexpr std::size_t shortSize = 125;
    std::string frame(1, static_cast<char>(finalFragment | opcode));
    if (payload.size() <= shortSize) {
        frame += static_cast<char>(masked | payload.size());
    } else { // none has 64 KiB
        frame += static_cast<char>(masked | (shortSize + 1));
        frame += static_cast<char>(payload.size() >> 8U);
        frame += static_cast<char>(payload.size());
    }
    frame.append(mask.data(), mask.size());
    const std::size_t start = frame.size();
    frame += payload;
    for (std::size_t i = 0; i < payload.size(); ++i) {
        frame[start + i] = static_cast<char>(frame[start + i] ^ mask[i % mask.size()]);
    }
    socket().send(frame);
}

void DeskClient::takeMessages()
{
    for (;;) {
        const std::string_view bytes = socket().received();
        const auto at = [&bytes](std::size_t index) { return static_cast<unsigned char>(bytes[index]); };
        if (bytes.size() < 2) {
            return;
        }
        std::size_t header = 2;
        std::size_t size = at(1);
        if (size > 125) {
            header += size == 126 ? 2 : 8;
            if (bytes.size() < header) {
                return;
            }
            size = 0;
            for (std::size_t i = 2; i < header; ++i) {
                size = size << 8U | at(i);
            }
        }
        if (bytes.size() - header < size) {
            return;
        }
        const std::string_view payload = bytes.substr(header, size);
        switch (at(0)) {
        case finalFragment | binaryFrame:
            takeMessage(payload);
            break;
        case finalFragment | pingFrame:
            sendFrame(pongFrame, payload);
            break;
        case finalFragment | closeFrame:
            throw std::runtime_error("the server closes: " + std::string(payload));
        default:
            throw std::runtime_error("a frame that is not expected");
        }
        socket().take(header + size);
    }
}

void DeskClient::takeMessage(std::string_view message)
{
    Cbor::Reader reader(message);
    std::uint64_t kind = 0;
    std::uint64_t id = 0;
    std::string_view name;
    std::string_view payload;
    std::string_view code;
    std::string_view text;
    for (std::uint64_t left = reader.head(Cbor::Map); left-- != 0;) {
        switch (reader.head(Cbor::Unsigned)) {
        case KindKey:
            kind = reader.head(Cbor::Unsigned);
            break;
        case IdKey:
            id = reader.head(Cbor::Unsigned);
            break;
        case NameKey:
            name = reader.text();
            break;
        case CodeKey:
            code = reader.text();
            break;
        case TextKey:
            text = reader.text();
            break;
        case PayloadKey:
            payload = reader.skip();
            break;
        default:
            reader.skip();
        }
    }
    static const std::string audioReceived = word(Vocabulary::AudioReceived);
    m_welcome = m_welcome || kind == WireMessage::Welcome;
    if (kind == WireMessage::Refused) {
        throw std::runtime_error("the server refuses the login: " + std::string(text));
    }
    if (kind == WireMessage::Reply) {
        takeReply(static_cast<std::uint32_t>(id), payload, code, text);
    } else if (kind == WireMessage::Event && name == audioReceived) {
        takeEcho(payload);
    }
}

void DeskClient::takeReply(std::uint32_t request, std::string_view payload, std::string_view code,
                           std::string_view text)
{
    static const std::string done = word(ReturnCode::success);
    static const std::string token = word(Vocabulary::talkToken);
    if (code != done) {
        throw std::runtime_error("the server refuses a command: " + std::string(text));
    }
    if (request != openingRequest) {
        listener().answered((request >> packetBits) - 1, request & ((1U << packetBits) - 1));
        return;
    }
    Cbor::Reader reader(payload);
    for (std::uint64_t left = reader.head(Cbor::Map); left-- != 0;) {
        if (reader.text() == token) {
            m_opened = reader.text();
        } else {
            reader.skip();
        }
    }
}

void DeskClient::takeEcho(std::string_view payload)
{
    static const std::string tokenKey = word(Words::Token);
    static const std::string dataKey = word(Words::AudioData);
    Cbor::Reader reader(payload);
    std::string token;
    std::string_view data;
    reader.head(Cbor::Map); // the fields are in a map under the event's own name
    reader.text();
    for (std::uint64_t left = reader.head(Cbor::Map); left-- != 0;) {
        const std::string_view key = reader.text();
        if (key == tokenKey) {
            token = reader.text();
        } else if (key == dataKey) {
            data = reader.text();
        } else {
            reader.skip();
        }
    }
    constexpr std::size_t headerText = 48; // characters: a header has up to 36 bytes
    std::array<unsigned char, headerText / 4 * 3> bytes{};
    if (data.size() < headerText ||
        EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(data.data()), headerText) < 0) {
        throw std::runtime_error("an echo without a packet");
    }
    const auto header = PacketHeader::fromBytes(bytes.data(), bytes.size());
    const auto talk = m_talks.find(token);
    if (header && talk != m_talks.end()) {
        listener().echoed(talk->second, header->position / packetSamples);
    }
}
