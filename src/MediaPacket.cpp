#include "src/MediaPacket.h"

#include <atomic>
#include <cstdlib>
#include <cstring>
#include <new>

namespace {

constexpr std::size_t alignment = 16;     // of the bitstream, bytes
constexpr std::size_t paddingSize = 32;   // zero bytes behind the bitstream
constexpr std::size_t itemSize = 32;      // one side item
constexpr std::size_t selfRefOffset = 56; // where SelfRef points to in the record

struct BlockHeader
{
    std::atomic<std::uint32_t> references;
    std::uint32_t units; // size of the block in units of 16 bytes
};
static_assert(sizeof(BlockHeader) == 8);

BlockHeader* headerOf(TMediaDataPacketInfo* packet)
{
    return reinterpret_cast<BlockHeader*>(packet) - 1;
}

std::int32_t addReference(TMediaDataPacketInfo* packet)
{
    headerOf(packet)->references.fetch_add(1, std::memory_order_relaxed);
    return 0;
}

std::int32_t releaseReference(TMediaDataPacketInfo* packet)
{
    BlockHeader* header = headerOf(packet);
    if (header->references.fetch_sub(1, std::memory_order_acq_rel) == 1) {
        std::free(header);
    }
    return 0;
}

constexpr MediaPacketRefOps refOps{addReference, releaseReference};

// The capture library allocates so, too: its fixed part is larger than the header and the record need.
constexpr std::size_t fixedSize = 311;
constexpr std::size_t slack = 31;

} // namespace

void intrusive_ptr_add_ref(_TMediaDataPacketInfoV3* packet)
{
    packet->RefOps->addReference(packet);
}

void intrusive_ptr_release(_TMediaDataPacketInfoV3* packet)
{
    packet->RefOps->release(packet);
}

MediaPacketPtr makeMediaPacket(const TMediaDataPacketInfo& record)
{
    const std::size_t extraSize = record.ExtraData != nullptr ? record.ExtraDataSize : 0;
    const std::size_t itemsSize = record.Items != nullptr ? record.ItemCount * itemSize : 0;
    const std::size_t contents = std::size_t{record.Offset} + record.BitstreamSize + extraSize + itemsSize;
    const std::size_t blockSize = (fixedSize + contents + slack) / alignment * alignment;

    void* block = std::malloc(blockSize);
    if (block == nullptr) {
        return nullptr;
    }
    auto* header = new (block) BlockHeader{{1}, static_cast<std::uint32_t>(blockSize / alignment)};
    auto* packet = new (header + 1) _TMediaDataPacketInfoV3{record};
    packet->RefOps = &refOps;

    auto* end = reinterpret_cast<std::uint8_t*>(packet + 1);
    if (record.ExtraData != nullptr) {
        std::memcpy(end, record.ExtraData, extraSize);
        packet->ExtraData = end;
        end += extraSize;
    }

    const auto unaligned = reinterpret_cast<std::uintptr_t>(end) + record.Offset;
    const std::size_t gap = (alignment - unaligned % alignment) % alignment;
    std::uint8_t* bitstream = end + gap + record.Offset;
    // The padding starts inside the last word of the bitstream, so it is cleared before the bitstream comes.
    std::uint8_t* padding = bitstream + std::size_t{record.BitstreamSize / 4} * 4;
    std::memset(padding, 0, paddingSize);
    packet->Buffer = bitstream - record.Offset;
    if (record.Buffer != nullptr) {
        std::memcpy(bitstream, record.Buffer + record.Offset, record.BitstreamSize);
        std::memcpy(packet->Buffer, record.Buffer, record.Offset);
    } else {
        std::memset(packet->Buffer, 0, std::size_t{record.Offset} + record.BitstreamSize);
    }

    if (record.SelfRef != nullptr) {
        packet->SelfRef = reinterpret_cast<std::uint8_t*>(packet) + selfRefOffset;
    }
    if (record.BitstreamRef != nullptr) {
        packet->BitstreamRef = packet->Buffer + record.Offset - record.BitstreamRefBase;
    }
    if (itemsSize > 0) {
        packet->Items = padding + paddingSize;
        std::memcpy(packet->Items, record.Items, itemsSize);
    }

    MediaPacketPtr holder(packet); // takes a reference of its own
    packet->RefOps->release(packet);
    return holder;
}
