// Any bytes as a message on the socket. What is a message is one again after it was written; Qt's classes for
// CBOR read the same or refuse the same; a talk packet that is not made a QVariant says what it says as one.

#include "protocol/WireMessage.h"
#include "tests/support/QtWireMessage.h"

#include <cstdlib>

namespace {

void require(bool condition)
{
    if (!condition) {
        std::abort();
    }
}

/** Whether -2^64 may be in it, which Qt takes for 0. */
bool hasLeastInteger(const QByteArray& bytes)
{
    return bytes.contains(QByteArray::fromHex("3bffffffffffffffff"));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<int>(size));
    QString error;
    const auto message = WireMessage::fromBytes(bytes, &error);
    require(!message || WireMessage::fromBytes(message->toBytes()));
    if (!hasLeastInteger(bytes)) {
        QString qtError;
        const auto qtMessage = QtWireMessage::fromBytes(bytes, &qtError);
        require(message.has_value() == qtMessage.has_value() && error == qtError);
        require(!message || message->toBytes() == QtWireMessage::toBytes(*qtMessage));
    }
    const auto talk = WireMessage::fromBytes(bytes, nullptr, WireMessage::Texts);
    require(talk.has_value() == message.has_value());
    require(!talk || !talk->talkData || talk->talkData->toMap() == message->payload.toMap());
    return 0;
}
