// Any file as a packet dump, and its first packet as one with an ADTS header.

#include "audio/AdtsHeader.h"
#include "audio/PacketDump.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QString error;
    const auto dump =
        PacketDump::parse(QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)), &error);
    if (dump && !dump->packets.empty()) {
        AdtsHeader::parse(dump->packets.front());
    }
    return 0;
}
