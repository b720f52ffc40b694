// Any bytes as a message on the socket. What is a message is one again after it was written.

#include "protocol/WireMessage.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto message =
        WireMessage::fromBytes(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));
    if (message && !WireMessage::fromBytes(message->toBytes())) {
        std::abort();
    }
    return 0;
}
