#include "bench/relay/Cbor.h"

#include <stdexcept>

namespace {

constexpr unsigned oneByte = 24; // the count of bytes that follow, as a code in the head
constexpr unsigned eightBytes = 27;

} // namespace

void Cbor::appendHead(std::string& out, Major major, std::uint64_t value)
{
    const auto first = static_cast<unsigned>(major) << 5U;
    if (value < oneByte) {
        out += static_cast<char>(first | value);
        return;
    }
    const unsigned code = value <= 0xFF ? 0 : value <= 0xFFFF ? 1 : value <= 0xFFFFFFFF ? 2 : 3;
    out += static_cast<char>(first | (oneByte + code));
    for (unsigned left = 1U << code; left-- != 0;) {
        out += static_cast<char>(value >> (8U * left));
    }
}

std::string_view Cbor::Reader::take(std::uint64_t size)
{
    if (size > m_bytes.size()) {
        throw std::runtime_error("a message is cut off");
    }
    const std::string_view taken = m_bytes.substr(0, size);
    m_bytes.remove_prefix(size);
    return taken;
}

Cbor::Reader::Head Cbor::Reader::next()
{
    const auto first = static_cast<unsigned char>(take(1).front());
    const unsigned code = first & 0x1FU;
    std::uint64_t value = code;
    if (code > eightBytes) {
        throw std::runtime_error("a message is not as this client knows them");
    }
    if (code >= oneByte) {
        value = 0;
        for (const char byte : take(std::uint64_t{1} << (code - oneByte))) {
            value = value << 8U | static_cast<unsigned char>(byte);
        }
    }
    return {static_cast<Major>(first >> 5U), value};
}

std::uint64_t Cbor::Reader::head(Major expected)
{
    Head found = next();
    while (found.major == Tag) {
        found = next();
    }
    if (found.major != expected) {
        throw std::runtime_error("a message has a value of another type");
    }
    return found.value;
}

std::string_view Cbor::Reader::text()
{
    return take(head(Text));
}

std::string_view Cbor::Reader::skip()
{
    const std::string_view before = m_bytes;
    for (std::uint64_t left = 1; left != 0; --left) {
        const Head found = next();
        switch (found.major) {
        case Bytes:
        case Text:
            take(found.value);
            break;
        case Array:
            left += found.value;
            break;
        case Map:
            left += 2 * found.value;
            break;
        case Tag:
            ++left;
            break;
        case Unsigned:
        case Negative:
        case Simple:
            break;
        }
    }
    return before.substr(0, before.size() - m_bytes.size());
}
