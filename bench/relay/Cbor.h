#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/** As much of CBOR (RFC 8949) as a message of a talk has. */
namespace Cbor {

/** Major types. */
enum Major
{
    Unsigned = 0,
    Negative = 1,
    Bytes = 2,
    Text = 3,
    Array = 4,
    Map = 5,
    Tag = 6,
    Simple = 7,
};

/** Appends the head of an item. */
void appendHead(std::string& out, Major major, std::uint64_t value);

/** Appends a text. */
inline void appendText(std::string& out, std::string_view text)
{
    appendHead(out, Text, text.size());
    out += text;
}

/** Appends a number. */
inline void appendNumber(std::string& out, std::uint64_t value)
{
    appendHead(out, Unsigned, value);
}

/** Reads items one after the other. Throws std::runtime_error where there is none of definite length. */
class Reader
{
public:
    explicit Reader(std::string_view bytes) : m_bytes(bytes) {}

    /** Reads the head of an item behind its tags. */
    std::uint64_t head(Major expected);
    /** Reads a text. */
    std::string_view text();
    /** Reads past an item with all that is inside it. @return its bytes */
    std::string_view skip();

private:
    struct Head
    {
        Major major;
        std::uint64_t value;
    };

    Head next();
    std::string_view take(std::uint64_t size);

    std::string_view m_bytes;
};

} // namespace Cbor
